#include "cls_AgentMapKey2Obj.h"
#include "cls_AgentRequest.h"
#include "cls_Persistent.h"
#include "cls_ReadMapKey2Obj.h"
#include "cls_ReadMapKey2Prim.h"
#include "cls_Received.h"
#include "cls_WriteMapKey2Obj.h"
#include "cls_WriteMapKey2Prim.h"
#include "rfm_Array.h"
#include "rom_HeaderLayout.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {
rfm_File Create(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessCreate, false); }
rfm_File ReadOnly(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessRead, false); }

struct Part {
  static constexpr unsigned int kClassId = 0x01000301;
  cls_Uid uid;
  int id = 0;
};

// One member of every kind of map the typed helper stores.
struct Catalog {
  static constexpr unsigned int kClassId = 0x01000302;
  cls_Uid uid;
  std::map<int, double> intDoubles;
  std::map<int, float> intFloats;
  std::map<int, int> intInts;
  std::map<unsigned int, unsigned int> uintUints;
  std::map<int, cow_String> intStrings;
  std::map<cow_String, double> doubles;
  std::map<cow_String, float> floats;
  std::map<cow_String, int> ints;
  std::map<cow_String, unsigned int> uints;
  std::map<cow_String, cow_String> strings;
  std::map<int, cow_COW<Part>> partsById;
  std::map<cow_String, cow_COW<Part>> partsByName;

  bool operator==(Catalog const& o) const {
    return intDoubles == o.intDoubles && intFloats == o.intFloats && intInts == o.intInts && uintUints == o.uintUints &&
           intStrings == o.intStrings && doubles == o.doubles && floats == o.floats && ints == o.ints &&
           uints == o.uints && strings == o.strings && SameParts(partsById, o.partsById) &&
           SameParts(partsByName, o.partsByName);
  }
  template <class K>
  static bool SameParts(std::map<K, cow_COW<Part>> const& a, std::map<K, cow_COW<Part>> const& b) {
    if (a.size() != b.size()) return false;
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
      if (!(i->first == j->first) || i->second.HasValue() != j->second.HasValue()) return false;
      if (i->second.HasValue() && i->second.ConstGet()->id != j->second.ConstGet()->id) return false;
    }
    return true;
  }
};

void Register(cls_ClassRegistrar& registrar) {
  cls_Persistent<Part>("Part", Part::kClassId, 1).Identity(&Part::uid).Member(1, "Id", &Part::id).Register(registrar);
  cls_Persistent<Catalog>("Catalog", Catalog::kClassId, 1)
      .Identity(&Catalog::uid)
      .Member(1, "IntDoubles", &Catalog::intDoubles)
      .Member(2, "IntFloats", &Catalog::intFloats)
      .Member(3, "IntInts", &Catalog::intInts)
      .Member(4, "UintUints", &Catalog::uintUints)
      .Member(5, "IntStrings", &Catalog::intStrings)
      .Member(6, "Doubles", &Catalog::doubles)
      .Member(7, "Floats", &Catalog::floats)
      .Member(8, "Ints", &Catalog::ints)
      .Member(9, "Uints", &Catalog::uints)
      .Member(10, "Strings", &Catalog::strings)
      .Member(11, "PartsById", &Catalog::partsById)
      .Member(12, "PartsByName", &Catalog::partsByName)
      .Register(registrar);
}

cow_COW<Part> MakePart(int id) {
  cow_COW<Part> part(new Part);
  part.Get()->id = id;
  return part;
}

cow_COW<Catalog> MakeCatalog(cow_COW<Part> const& shared) {
  cow_COW<Catalog> catalog(new Catalog);
  Catalog& c = *catalog.Get();
  double const inf = std::numeric_limits<double>::infinity();
  c.intDoubles = {{INT_MIN, -0.5}, {0, inf}, {INT_MAX, 1e300}};
  c.intFloats = {{-3, 1.5f}, {7, -2.25f}};
  c.intInts = {{1, INT_MIN}, {2, INT_MAX}, {-1, 0}};
  c.uintUints = {{0u, 0xFFFFFFFFu}, {0x80000000u, 1u}, {0xFFFFFFFFu, 0x80000000u}};
  c.intStrings = {{5, cow_String("five")}, {6, cow_String("")}};
  c.doubles = {{cow_String(""), -inf}, {cow_String("young"), 2.1e11}};
  c.floats = {{cow_String("nu"), 0.3f}};
  c.ints = {{cow_String("a"), -7}, {cow_String("b"), 9}};
  c.uints = {{cow_String("mask"), 0xDEADBEEFu}};
  c.strings = {{cow_String("gr\xc3\xbc\xc3\x9f"), cow_String("\xe2\x82\xac")}, {cow_String("k"), cow_String("")}};
  c.partsById = {{-4, shared}, {0, cow_COW<Part>()}, {9, MakePart(9)}, {12, shared}};
  c.partsByName = {{cow_String("left"), shared}, {cow_String("none"), cow_COW<Part>()}, {cow_String(""), MakePart(2)}};
  return catalog;
}

// The layout of the map table a catalog's member refers to.
cow_String StoredLayout(rom_Transporter& t, int catalogOid, char const* member) {
  rfm_Row const owner = t.GetClassBagForRead(Catalog::kClassId).Table().ReadRow(catalogOid);
  int const mapRow = owner.ReadFieldInt(rfm_FieldHandle(cow_String(member) + cow_String(kRomOidSuffix), -1));
  rfm_Row const map = t.GetClassBagForRead(kRomInternalMapClass).Table().ReadRow(mapRow);
  rfm_Table const entries = t.Database().Table(map.ReadFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn)), 8, -1);
  return entries.TableMetadata().TableName();
}

TEST(Maps, EveryLayoutRoundTripsAndReopensInAnotherProcess) {
  zqa_TestDir dir;
  cow_String const path = dir.File("maps.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  cow_COW<Part> const shared = MakePart(3);
  cow_COW<Catalog> const full = MakeCatalog(shared);
  cow_COW<Catalog> const empty(new Catalog);
  rom_CidOid fullRow, emptyRow;
  ASSERT_EQ(0, zqa_RunInChild([&] {
              rom_Transporter t(registrar, Create(path), "MDL", "maps", 0, -1);
              fullRow = rom_WriteObject(t, full);
              emptyRow = rom_WriteObject(t, empty);
              t.Flush();
              // The shared part is stored once, the null entries take no row.
              zqa_Require(t.GetTableSize(Part::kClassId) == 3, "parts stored once each");
            }));
  // The child's rows are the ones a write in this process would give.
  fullRow = rom_CidOid(Catalog::kClassId, 0);
  emptyRow = rom_CidOid(Catalog::kClassId, 1);
  EXPECT_EQ(0, zqa_RunInChild([&] {
              rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
              zqa_Require(*rom_ReadObject<Catalog>(t, fullRow).ConstGet() == *full.ConstGet(), "full catalog");
              zqa_Require(*rom_ReadObject<Catalog>(t, emptyRow).ConstGet() == *empty.ConstGet(), "empty catalog");
            }));
  rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
  cow_COW<Catalog> const read = rom_ReadObject<Catalog>(t, fullRow);
  EXPECT_TRUE(*read.ConstGet() == *full.ConstGet());
  EXPECT_EQ(read.ConstGet()->partsById.at(-4).ConstGet(), read.ConstGet()->partsByName.at(cow_String("left")).ConstGet());
  // Unsigned keys and values go to the int layouts.
  for (auto const& [member, layout] : std::vector<std::pair<char const*, char const*>>{
           {"IntDoubles", "##MapInt2Double"}, {"IntFloats", "##MapInt2Float"}, {"IntInts", "##MapInt2Int"},
           {"UintUints", "##MapInt2Int"}, {"IntStrings", "##MapInt2String"}, {"Doubles", "##MapString2Double"},
           {"Floats", "##MapString2Float"}, {"Ints", "##MapString2Int"}, {"Uints", "##MapString2Int"},
           {"Strings", "##MapString2String"}, {"PartsById", "##MapInt2Obj"}, {"PartsByName", "##Map"}}) {
    EXPECT_EQ(std::string(StoredLayout(t, fullRow.m_Oid, member).CStr()), layout) << member;
  }
}

TEST(Maps, RewritingAnOwnerWritesItsMapsOverInPlace) {
  zqa_TestDir dir;
  cow_String const path = dir.File("rewrite.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  cow_COW<Catalog> catalog = MakeCatalog(MakePart(1));
  rom_Transporter t(registrar, Create(path), "MDL", "maps", 0, -1);
  rom_CidOid const row = rom_WriteObject(t, catalog);
  int const maps = t.GetTableSize(kRomInternalMapClass);
  catalog.Get()->ints.erase(cow_String("a"));
  catalog.Get()->partsByName.clear();
  rom_WriteObject(t, catalog);
  t.Flush();
  EXPECT_EQ(t.GetTableSize(kRomInternalMapClass), maps);
  rom_Transporter again(registrar, ReadOnly(path), "MDL", -1);
  EXPECT_TRUE(*rom_ReadObject<Catalog>(again, row).ConstGet() == *catalog.ConstGet());
}

int IdOf(cls_CowValue const& value) {
  if (!value.HasValue()) return -1;
  cow_COW<Part> const part = value.As<Part>();
  return part.ConstGet()->id;
}

TEST(Maps, TheTypedHelperTakesTheFirstEntryOfAKeyThatHoldsAnObject) {
  zqa_TestDir dir;
  cow_String const path = dir.File("repeats.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_CidOid catalog, later;
  {
    rom_Transporter t(registrar, Create(path), "MDL", "repeats", 0, -1);
    catalog = rom_WriteObject(t, MakeCatalog(MakePart(1)));
    later = rom_WriteObject(t, MakePart(77));
    // Entries another writer may have left: a later object for a key whose
    // entry is null, and one for a key that has an object already.
    rfm_Row const owner = t.GetClassBagForRead(Catalog::kClassId).Table().ReadRow(catalog.m_Oid);
    int const mapRow = owner.ReadFieldInt(rfm_FieldHandle(cow_String("PartsByName") + cow_String(kRomOidSuffix), -1));
    rfm_Table const entries = t.Database().Table(
        t.GetClassBagForRead(kRomInternalMapClass).Table().ReadRow(mapRow).ReadFieldHandle(
            rfm_FieldHandle(kRomTargetHandleColumn)),
        8, -1);
    for (char const* key : {"none", "left"}) {
      rfm_Row const row = entries.NewRow();
      row.WriteFieldInt(rfm_FieldHandle(0), later.m_Oid);
      row.WriteFieldInt(rfm_FieldHandle(1), static_cast<int>(Part::kClassId));
      row.WriteFieldString(rfm_FieldHandle(kRomElementKeyName, -1), cow_String(key));
    }
    entries.Flush();
    t.Flush();
  }
  rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
  cow_COW<Catalog> const read = rom_ReadObject<Catalog>(t, catalog);
  auto const& parts = read.ConstGet()->partsByName;
  EXPECT_EQ(parts.size(), 3u);
  EXPECT_EQ(IdOf(cls_CowValue(parts.at(cow_String("none")))), 77);
  EXPECT_EQ(IdOf(cls_CowValue(parts.at(cow_String("left")))), 1);
}

// The row of a new map, and its memento, straight on the map class.
struct MapRow {
  explicit MapRow(rom_Transporter& t, unsigned int cid = kRomInternalMapClass)
      : memento(t, cid, -1, cls_MementoWrite::kOwnedByCreator) {}
  rom_MementoWrite memento;
};

void WritePart(cls_ClassRegistrar const& registrar, cls_AgentRequest const& entry, cow_COW<Part> const& part) {
  cls_CowValue const value(part);
  registrar.ConstGet(Part::kClassId).DBWrite(value.Address(), cls_WriteVisitor(entry, &value, nullptr));
}

TEST(Maps, WritersKeepOrderAndRepeatsAndTheSecondCollectionOfADoubleOne) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(dir.File("form.mdl")), "MDL", "form", 0, -1);
  MapRow pair(t, kRomInternalDblColClass);
  {
    cls_Received<cls_WriteMapKey2Prim<int, double>> first(pair.memento.MakeWriteMapInt2Prim(double()));
    first->Write(9, 1.5);
    first->Write(2, 2.5);
    first->Write(9, 3.5);
    std::unique_ptr<cls_WriteIntTableInt> second(pair.memento.MakeAltWriteIntTableInt(int()));
    second->Write(4, 40);
    second->Write(4, 41);
  }
  MapRow objects(t);
  {
    cls_Received<cls_WriteMapKey2Obj<cow_String>> writer(objects.memento.MakeWriteMapString2Obj());
    writer->MakeNullObj(cow_String("z"), Part::kClassId);
    WritePart(registrar, cls_WriteRequestMapString2Obj(*writer, cow_String("a")), MakePart(5));
  }
  t.Flush();
  rom_MementoRead pairRow(t, kRomInternalDblColClass, pair.memento.Oid(), cls_Uid());
  cls_Received<cls_ReadMapKey2Prim<int, double>> first(pairRow.MakeReadMapInt2Prim(double()));
  EXPECT_EQ(first->Size(), 3);
  std::vector<std::pair<int, double>> entries;
  while (first->Next()) entries.emplace_back(first->ReadKey(), first->Read());
  EXPECT_EQ(entries, (std::vector<std::pair<int, double>>{{9, 1.5}, {2, 2.5}, {9, 3.5}}));
  std::unique_ptr<cls_ReadIntTableInt> second(pairRow.MakeAltReadIntTableInt(int()));
  std::vector<std::pair<int, int>> pairs;
  while (second->Next()) pairs.emplace_back(second->ReadKey(), second->Read());
  EXPECT_EQ(pairs, (std::vector<std::pair<int, int>>{{4, 40}, {4, 41}}));

  rom_MementoRead objectRow(t, kRomInternalMapClass, objects.memento.Oid(), cls_Uid());
  cls_Received<cls_ReadMapKey2Obj<cow_String>> reader(objectRow.MakeReadMapString2Obj());
  ASSERT_TRUE(reader->Next());
  EXPECT_EQ(std::string(reader->ReadKey().CStr()), "z");
  EXPECT_FALSE(reader->ReadObjCow(Part::kClassId).HasValue());
  EXPECT_THROW(reader->MakeReadObj(), std::exception);
  ASSERT_TRUE(reader->Next());
  EXPECT_EQ(IdOf(reader->ReadObjCow(Part::kClassId)), 5);
  cls_Received<cls_MementoRead> partRow(reader->MakeReadObj());
  EXPECT_EQ(partRow->Read(cls_FieldHandle(1, "Id"), int()), 5);
  EXPECT_FALSE(reader->Next());
  // The int-keyed map of a row that holds a string-keyed one is refused.
  EXPECT_THROW(objectRow.MakeReadMapInt2Obj(), std::exception);
}

// The entries' table of a new, empty map of layout "##Map", for rows written
// straight: a key and a reference (oid, cid), the stored null reference
// (-1, 1) of a removed key, or a key alone (oid kKeyOnly).
constexpr int kKeyOnly = -2;
struct HandMadeMap {
  HandMadeMap(rom_Transporter& t) : transporter(t) {
    MapRow map(t);
    oid = map.memento.Oid();
    cls_Received<cls_WriteMapKey2Obj<cow_String>> writer(map.memento.MakeWriteMapString2Obj());
    t.Flush();
    rfm_Row const row = t.GetClassBagForRead(kRomInternalMapClass).Table().ReadRow(oid);
    handle = row.ReadFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn));
  }
  void Add(char const* key, int objectOid, unsigned int cid = Part::kClassId) const {
    rfm_Table const entries = transporter.Database().Table(handle, 8, -1);
    rfm_Row const row = entries.NewRow();
    row.WriteFieldString(rfm_FieldHandle(kRomElementKeyName, -1), cow_String(key));
    if (objectOid == kKeyOnly) return;
    row.WriteFieldInt(rfm_FieldHandle(0), objectOid);
    row.WriteFieldInt(rfm_FieldHandle(1), static_cast<int>(cid));
  }
  int Length() const { return transporter.Database().Table(handle, 8, -1).Length(); }
  std::unique_ptr<cls_AgentMapKey2Obj<cow_String>> Agent() const {
    rom_MementoRead row(transporter, kRomInternalMapClass, oid, cls_Uid());
    return std::unique_ptr<cls_AgentMapKey2Obj<cow_String>>(row.MakeAgentMapString2Obj());
  }
  rom_Transporter& transporter;
  int oid = -1;
  rfm_Handle handle;
};

std::string Walk(cls_AgentMapKey2Obj<cow_String>& agent) {
  std::string keys;
  for (agent.First(); !agent.IsDone(); agent.Next()) keys += std::string(agent.Key().CStr()) + ",";
  return keys;
}

TEST(Maps, AnAgentLoadsTheFirstLiveRowOfAKeyAndRemovesInPlace) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(dir.File("agent.mdl")), "MDL", "agent", 0, -1);
  std::vector<int> parts;
  for (int id = 0; id < 4; ++id) parts.push_back(rom_WriteObject(t, MakePart(id)).m_Oid);
  HandMadeMap map(t);
  std::unique_ptr<cls_AgentMapKey2Obj<cow_String>> empty = map.Agent();
  empty->First();
  EXPECT_TRUE(empty->IsDone());

  map.Add("a", parts[1]);
  map.Add("a", parts[2]);
  map.Add("b", -1, kRomNoClass);
  map.Add("b", parts[3]);
  map.Add("c", -1, kRomNoClass);
  map.Add("d", kKeyOnly);
  t.Flush();
  std::unique_ptr<cls_AgentMapKey2Obj<cow_String>> agent = map.Agent();
  EXPECT_EQ(Walk(*agent), "a,b,c,d,");
  EXPECT_TRUE(agent->Present(cow_String("a")));
  EXPECT_TRUE(agent->Present(cow_String("b")));
  EXPECT_FALSE(agent->Present(cow_String("c")));
  EXPECT_FALSE(agent->Present(cow_String("d")));
  EXPECT_FALSE(agent->Present(cow_String("x")));
  EXPECT_EQ(IdOf(agent->Get(cow_String("a"), Part::kClassId)), 1);
  EXPECT_EQ(IdOf(agent->Get(cow_String("b"), Part::kClassId)), 3);
  EXPECT_EQ(IdOf(agent->Get(cow_String("c"), Part::kClassId)), -1);
  // A key the index lacks reads the row of the index's null entry, row 0.
  EXPECT_EQ(IdOf(agent->Get(cow_String("x"), Part::kClassId)), 1);

  EXPECT_FALSE(agent->DoWrite(cow_String("a")));
  EXPECT_TRUE(agent->DoWrite(cow_String("c")));
  EXPECT_TRUE(agent->DoWrite(cow_String("x")));
  agent->SetDirty(cow_String("a"));
  agent->SetDirty(cow_String("y"));
  EXPECT_TRUE(agent->DoWrite(cow_String("a")));
  EXPECT_EQ(Walk(*agent), "a,b,c,d,");

  // A key written again goes to its own row, and is clean after.
  WritePart(registrar, cls_WriteRequestAgentMap<cow_String>(*agent, cow_String("b")), MakePart(9));
  WritePart(registrar, cls_WriteRequestAgentMap<cow_String>(*agent, cow_String("e")), MakePart(8));
  agent->Flush();
  EXPECT_EQ(map.Length(), 7);
  EXPECT_EQ(IdOf(agent->Get(cow_String("b"), Part::kClassId)), 9);
  EXPECT_FALSE(agent->DoWrite(cow_String("b")));
  EXPECT_TRUE(agent->Present(cow_String("e")));

  // Removing writes the null reference into the key's row and keeps the key;
  // a removed key is not written again by this agent.
  agent->Remove(cow_String("a"));
  agent->Remove(cow_String("nothing"));
  agent->Flush();
  EXPECT_EQ(map.Length(), 7);
  EXPECT_FALSE(agent->Present(cow_String("a")));
  EXPECT_EQ(Walk(*agent), "a,b,c,d,e,");
  rfm_Row const removed = t.Database().Table(map.handle, 8, -1).ReadRow(0);
  EXPECT_EQ(removed.ReadFieldInt(rfm_FieldHandle(0)), -1);
  EXPECT_EQ(removed.ReadFieldInt(rfm_FieldHandle(1)), static_cast<int>(kRomNoClass));
  EXPECT_EQ(std::string(removed.ReadFieldString(rfm_FieldHandle(kRomElementKeyName, -1)).CStr()), "a");
  EXPECT_THROW(WritePart(registrar, cls_WriteRequestAgentMap<cow_String>(*agent, cow_String("a")), MakePart(4)),
               std::exception);

  // A new agent finds the key's later live row in place of the removed one.
  t.Flush();
  std::unique_ptr<cls_AgentMapKey2Obj<cow_String>> again = map.Agent();
  EXPECT_TRUE(again->Present(cow_String("a")));
  EXPECT_EQ(IdOf(again->Get(cow_String("a"), Part::kClassId)), 2);
  EXPECT_EQ(IdOf(again->Get(cow_String("e"), Part::kClassId)), 8);
}

TEST(Maps, AReaderBesideAWriterSnapsInNewKeysAndAWriteSideAgentEmptiesTheMap) {
  zqa_TestDir dir;
  cow_String const path = dir.File("snap.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter writer(registrar, Create(path), "MDL", "snap", 0, -1);
  MapRow map(writer);
  std::unique_ptr<cls_AgentMapKey2Obj<int>> agent(map.memento.MakeAgentMapInt2Obj());
  for (int key : {3, 1})
    WritePart(registrar, cls_WriteRequestAgentMap<int>(*agent, key), MakePart(10 * key));
  agent->Flush();
  writer.Flush();

  rom_Transporter reader(registrar, ReadOnly(path), "MDL", -1);
  rom_MementoRead row(reader, kRomInternalMapClass, map.memento.Oid(), cls_Uid());
  std::unique_ptr<cls_AgentMapKey2Obj<int>> seen(row.MakeAgentMapInt2Obj());
  ASSERT_NE(seen, nullptr);
  EXPECT_TRUE(seen->ReadOnly());
  EXPECT_TRUE(seen->Present(3));
  EXPECT_FALSE(seen->Present(5));
  EXPECT_EQ(seen->Snap(), 0);

  WritePart(registrar, cls_WriteRequestAgentMap<int>(*agent, 5), MakePart(50));
  agent->Flush();
  writer.Flush();
  EXPECT_EQ(reader.Snap(), 1);
  EXPECT_EQ(seen->Snap(), 1);
  EXPECT_TRUE(seen->Present(5));
  EXPECT_EQ(IdOf(seen->Get(5, Part::kClassId)), 50);
  std::vector<int> keys;
  for (seen->First(); !seen->IsDone(); seen->Next()) keys.push_back(seen->Key());
  EXPECT_EQ(keys, (std::vector<int>{1, 3, 5}));

  // The write side's agent of a map the row holds empties the table after
  // loading its index: known keys still say present, and writing one goes
  // to a row that is gone (key 1 was the second row).
  std::unique_ptr<cls_AgentMapKey2Obj<int>> rewrite(map.memento.MakeAgentMapInt2Obj());
  EXPECT_TRUE(rewrite->Present(1));
  EXPECT_THROW(WritePart(registrar, cls_WriteRequestAgentMap<int>(*rewrite, 1), MakePart(1)), std::exception);
}

// A writer process adds a key a round through its agent and removes the
// key two rounds old, while a reader process's agent snaps: after each
// round's flush the reader's index holds every key the writer has and reads
// each one's object. A Snap keeps what the index knew of a key present
// before, so a key removed since still says present; its row, read again,
// holds no object.
constexpr int kAgentRounds = 40;

void AgentWriter(cow_String const& path, zqa_Signal const& begin, zqa_Signal const& flushed) {
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(path), "MDL", "beside", 0, -1);
  MapRow map(t);
  std::unique_ptr<cls_AgentMapKey2Obj<int>> agent(map.memento.MakeAgentMapInt2Obj());
  agent->Flush();
  t.Flush();
  flushed.Send();
  for (int round = 0; round < kAgentRounds; ++round) {
    begin.Wait();
    WritePart(registrar, cls_WriteRequestAgentMap<int>(*agent, round), MakePart(1000 + round));
    if (round >= 2) agent->Remove(round - 2);
    agent->Flush();
    t.Flush();
    flushed.Send();
  }
}

void AgentReader(cow_String const& path, zqa_Signal const& begin, zqa_Signal const& flushed) {
  cls_ClassRegistrar registrar;
  Register(registrar);
  flushed.Wait();
  rom_Transporter reader(registrar, ReadOnly(path), "MDL", -1);
  rom_MementoRead row(reader, kRomInternalMapClass, 0, cls_Uid());
  std::unique_ptr<cls_AgentMapKey2Obj<int>> agent(row.MakeAgentMapInt2Obj());
  zqa_Require(agent != nullptr, "the map row holds a map");
  for (int round = 0; round < kAgentRounds; ++round) {
    begin.Send();
    flushed.Wait();
    reader.Snap();
    zqa_Require(agent->Snap() == 1, "round " + std::to_string(round) + " not snapped in");
    int keys = 0;
    for (agent->First(); !agent->IsDone(); agent->Next()) ++keys;
    zqa_Require(keys == round + 1, "round " + std::to_string(round) + ": " + std::to_string(keys) + " keys");
    for (int key = 0; key <= round; ++key) {
      bool const removed = key + 2 <= round;
      std::string const where = "key " + std::to_string(key) + " in round " + std::to_string(round);
      zqa_Require(agent->Present(key), where + " not present");
      zqa_Require(IdOf(agent->Get(key, Part::kClassId)) == (removed ? -1 : 1000 + key), where + ": wrong object");
    }
  }
}

TEST(Maps, AnAgentInAnotherProcessSnapsInEachRoundOfAWritersAgent) {
  zqa_TestDir dir;
  cow_String const path = dir.File("beside.mdl");
  zqa_Signal begin, flushed;
  int const writer = zqa_StartChild([&] { AgentWriter(path, begin, flushed); });
  int const reader = zqa_StartChild([&] { AgentReader(path, begin, flushed); });
  EXPECT_EQ(0, zqa_WaitChild(reader));
  EXPECT_EQ(0, zqa_WaitChild(writer));
}

std::string MessageOf(std::function<void()> const& action) {
  try {
    action();
  } catch (std::exception const& e) {
    return e.what();
  }
  return "no error";
}

TEST(Maps, DamagedMapsEndInTheLibrarysErrorsNamingTheFile) {
  zqa_TestDir dir;
  cow_String const path = dir.File("damaged.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(path), "MDL", "damaged", 0, -1);
  rom_CidOid const catalog = rom_WriteObject(t, MakeCatalog(MakePart(1)));
  t.Flush();
  auto const mapRow = [&](char const* member) {
    rfm_Row const owner = t.GetClassBagForRead(Catalog::kClassId).Table().ReadRow(catalog.m_Oid);
    return owner.ReadFieldInt(rfm_FieldHandle(cow_String(member) + cow_String(kRomOidSuffix), -1));
  };
  auto const handleOf = [&](char const* member) {
    return t.GetClassBagForRead(kRomInternalMapClass)
        .Table()
        .ReadRow(mapRow(member))
        .ReadFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn));
  };
  auto const pointAt = [&](char const* member, rfm_Handle const& handle) {
    t.GetClassBagForWrite(kRomInternalMapClass)
        .Table()
        .UpdateRow(mapRow(member))
        .WriteFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn), handle);
  };
  // Each read is a fresh transporter's, which has nothing cached.
  auto const read = [&] {
    t.Flush();
    rom_Transporter reader(registrar, ReadOnly(path), "MDL", -1);
    rom_ReadObject<Catalog>(reader, catalog);
  };
  std::string const file(path.CStr());

  // An int-keyed map of doubles whose table is an array.
  rfm_Handle const doubles = handleOf("IntDoubles");
  pointAt("IntDoubles", t.Database().ArrayInt(1, -1, 0).Handle());
  std::string message = MessageOf(read);
  EXPECT_NE(message.find("is not a table"), std::string::npos) << message;
  EXPECT_NE(message.find(file), std::string::npos) << message;
  pointAt("IntDoubles", doubles);

  // A string-keyed map of doubles whose table holds int keys.
  rfm_Handle const stringDoubles = handleOf("Doubles");
  pointAt("Doubles", doubles);
  message = MessageOf(read);
  EXPECT_NE(message.find("has no field Key"), std::string::npos) << message;
  EXPECT_NE(message.find(file), std::string::npos) << message;
  // A map of objects whose table has no references.
  pointAt("Doubles", stringDoubles);
  rfm_Handle const parts = handleOf("PartsByName");
  pointAt("PartsByName", handleOf("Strings"));
  message = MessageOf(read);
  EXPECT_NE(message.find("does not begin with the int fields OID and ClassID"), std::string::npos) << message;
  EXPECT_NE(message.find(file), std::string::npos) << message;
  pointAt("PartsByName", parts);

  // An entry that refers past its class table.
  rfm_Table const byId = t.Database().Table(handleOf("PartsById"), 8, -1);
  int const first = byId.ReadRow(0).ReadFieldInt(rfm_FieldHandle(0));
  byId.UpdateRow(0).WriteFieldInt(rfm_FieldHandle(0), 1000);
  byId.Flush();
  EXPECT_THROW(read(), std::exception);
  byId.UpdateRow(0).WriteFieldInt(rfm_FieldHandle(0), first);
  byId.Flush();
  EXPECT_EQ(MessageOf(read), "no error");
}
}  // namespace
