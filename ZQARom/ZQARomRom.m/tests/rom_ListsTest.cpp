#include "cls_AgentBlob.h"
#include "cls_AgentListObj.h"
#include "cls_AgentListPrim.h"
#include "cls_Persistent.h"
#include "cls_ReadListObj.h"
#include "cls_ReadListPrim.h"
#include "cls_Received.h"
#include "cls_WriteListObj.h"
#include "cls_WriteListPrim.h"
#include "rfm_Array.h"
#include "rom_HeaderLayout.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <cmath>
#include <limits>
#include <vector>

namespace {
rfm_File Create(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessCreate, false); }
rfm_File ReadOnly(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessRead, false); }

struct Item {
  static constexpr unsigned int kClassId = 0x01000201;
  cls_Uid uid;
  int id = 0;
};

struct Owner {
  static constexpr unsigned int kClassId = 0x01000202;
  cls_Uid uid;
  std::vector<int> ints;
  std::vector<unsigned int> uints;
  std::vector<double> doubles;
  std::vector<float> floats;
  std::vector<bool> flags;
  std::vector<cow_String> names;
  std::vector<cow_COW<Item>> items;
  std::vector<char> deck;
};

void Register(cls_ClassRegistrar& registrar) {
  cls_Persistent<Item>("Item", Item::kClassId, 1).Identity(&Item::uid).Member(1, "Id", &Item::id).Register(registrar);
  cls_Persistent<Owner>("Owner", Owner::kClassId, 1)
      .Identity(&Owner::uid)
      .Member(1, "Ints", &Owner::ints, 4)
      .Member(2, "Uints", &Owner::uints)
      .Member(3, "Doubles", &Owner::doubles)
      .Member(4, "Floats", &Owner::floats)
      .Member(5, "Flags", &Owner::flags)
      .Member(6, "Names", &Owner::names)
      .Member(7, "Items", &Owner::items)
      .Member(8, "Deck", &Owner::deck)
      .Register(registrar);
}

cow_COW<Item> MakeItem(int id) {
  cow_COW<Item> item(new Item);
  item.Get()->id = id;
  return item;
}

cow_COW<Owner> MakeOwner(cow_COW<Item> const& shared) {
  cow_COW<Owner> owner(new Owner);
  Owner& o = *owner.Get();
  o.ints = {1, -2, INT_MAX, INT_MIN, 5, 6, 7, 8};
  o.uints = {0u, 1u, 0x80000000u, 0xFFFFFFFFu};
  o.doubles = {0.5, -0.0, std::numeric_limits<double>::infinity(), 1e300};
  o.floats = {1.5f, -2.25f};
  o.flags = {true, false, false, true, true};
  o.names = {cow_String("alpha"), cow_String(""), cow_String("gr\xc3\xbc\xc3\x9f")};
  o.items = {shared, cow_COW<Item>(), MakeItem(7), shared};
  o.deck.assign(3000, 'x');
  for (std::size_t i = 0; i < o.deck.size(); ++i) o.deck[i] = static_cast<char>(i * 31);
  return owner;
}

void ExpectEqual(Owner const& expected, Owner const& actual) {
  EXPECT_EQ(actual.ints, expected.ints);
  EXPECT_EQ(actual.uints, expected.uints);
  ASSERT_EQ(actual.doubles.size(), expected.doubles.size());
  for (std::size_t i = 0; i < expected.doubles.size(); ++i) {
    EXPECT_EQ(actual.doubles[i], expected.doubles[i]);
    EXPECT_EQ(std::signbit(actual.doubles[i]), std::signbit(expected.doubles[i]));
  }
  EXPECT_EQ(actual.floats, expected.floats);
  EXPECT_EQ(actual.flags, expected.flags);
  EXPECT_EQ(actual.names, expected.names);
  ASSERT_EQ(actual.items.size(), expected.items.size());
  for (std::size_t i = 0; i < expected.items.size(); ++i) {
    ASSERT_EQ(actual.items[i].HasValue(), expected.items[i].HasValue()) << i;
    if (expected.items[i].HasValue()) {
      EXPECT_EQ(actual.items[i].ConstGet()->id, expected.items[i].ConstGet()->id);
    }
  }
  EXPECT_EQ(actual.deck, expected.deck);
}

TEST(Lists, EveryKindOfListAndABlobReadBackEqualAndSharedElementsStayShared) {
  zqa_TestDir dir;
  cow_String const path = dir.File("lists.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  cow_COW<Item> const shared = MakeItem(3);
  cow_COW<Owner> const full = MakeOwner(shared);
  cow_COW<Owner> const empty(new Owner);
  rom_CidOid fullRow, emptyRow;
  {
    rom_Transporter t(registrar, Create(path), "MDL", "lists", 0, -1);
    fullRow = rom_WriteObject(t, full);
    emptyRow = rom_WriteObject(t, empty);
    t.Flush();
    // The shared item is stored once, the null element takes no row.
    EXPECT_EQ(t.GetTableSize(Item::kClassId), 2);
  }
  rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
  cow_COW<Owner> const read = rom_ReadObject<Owner>(t, fullRow);
  ExpectEqual(*full.ConstGet(), *read.ConstGet());
  EXPECT_EQ(read.ConstGet()->items[0].ConstGet(), read.ConstGet()->items[3].ConstGet());
  ExpectEqual(*empty.ConstGet(), *rom_ReadObject<Owner>(t, emptyRow).ConstGet());
}

TEST(Lists, RewritingAnOwnerWritesItsListsOverInPlace) {
  zqa_TestDir dir;
  cow_String const path = dir.File("rewrite.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  cow_COW<Owner> owner = MakeOwner(MakeItem(1));
  rom_CidOid row;
  int listRows = 0;
  {
    rom_Transporter t(registrar, Create(path), "MDL", "lists", 0, -1);
    row = rom_WriteObject(t, owner);
    listRows = t.GetTableSize(kRomInternalListClass);
    EXPECT_EQ(listRows, 7);
    EXPECT_EQ(t.GetTableSize(kRomInternalBlobClass), 1);
    // Shorter lists and a shorter blob leave nothing of the longer ones.
    Owner& changed = *owner.Get();
    changed.ints.resize(2);
    changed.names.clear();
    changed.items.resize(1);
    changed.deck.resize(10);
    EXPECT_EQ(rom_WriteObject(t, owner), row);
    t.Flush();
    EXPECT_EQ(t.GetTableSize(kRomInternalListClass), listRows);
    EXPECT_EQ(t.GetTableSize(kRomInternalBlobClass), 1);
  }
  rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
  ExpectEqual(*owner.ConstGet(), *rom_ReadObject<Owner>(t, row).ConstGet());
}

// The row of a new list, and its memento, straight on the list class.
struct ListRow {
  explicit ListRow(rom_Transporter& t) : memento(t, kRomInternalListClass, -1, cls_MementoWrite::kOwnedByCreator) {}
  rom_MementoWrite memento;
};

TEST(Lists, StoredFormBoolsAsIntsColumnsAndNullElements) {
  zqa_TestDir dir;
  cow_String const path = dir.File("form.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(path), "MDL", "form", 0, -1);
  int boolRow = 0, objectRow = 0;
  {
    ListRow list(t);
    boolRow = list.memento.Oid();
    cls_Received<cls_WriteListPrim<bool>> writer(list.memento.MakeWriteListPrim(bool(), 3));
    bool const flags[] = {true, false, true};
    writer->Write(flags, 3);
    writer->Write(true);
  }
  {
    ListRow list(t);
    objectRow = list.memento.Oid();
    cls_Received<cls_WriteListObj> writer(list.memento.MakeWriteListObj(1));
    writer->MakeNullObj(Item::kClassId);
    cow_COW<Item> const item = MakeItem(9);
    cls_CowValue const value(item);
    cls_ClassMetadata const& md = registrar.ConstGet(Item::kClassId);
    md.DBWrite(value.Address(), cls_WriteVisitor(*writer, &value, nullptr));
    writer->MakeNullObj(Item::kClassId);
  }
  t.Flush();
  rfm_Table const lists = t.GetClassBagForRead(kRomInternalListClass).Table();
  rfm_Row const row = lists.ReadRow(boolRow);
  EXPECT_EQ(row.ReadFieldInt(rfm_FieldHandle(kRomTargetColumnsColumn)), 3);
  rfm_Handle const handle = row.ReadFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn));
  ASSERT_EQ(t.Database().HandleType(handle), rfm_TypeInt);
  rfm_Array<int, rfm_TypeInt> const ints = t.Database().ArrayInt(handle, 8, 0);
  EXPECT_EQ(ints.Length(), 4);
  EXPECT_EQ(ints.RowSize(), 4);

  rom_MementoRead reader(t, kRomInternalListClass, objectRow, cls_Uid());
  cls_Received<cls_ReadListObj> elements(reader.MakeReadListObj());
  EXPECT_EQ(elements->Size(), 3);
  EXPECT_EQ(elements->Columns(), 1);
  ASSERT_TRUE(elements->Next());
  EXPECT_EQ(elements->ReadObjPtr(Item::kClassId), nullptr);
  EXPECT_FALSE(elements->ReadObjCow(Item::kClassId).HasValue());
  ASSERT_TRUE(elements->Next());
  EXPECT_EQ(elements->ReadObjCow(Item::kClassId).As<Item>().ConstGet()->id, 9);
  cls_Received<cls_MementoRead> itemRow(elements->MakeReadObj());
  EXPECT_EQ(itemRow->Read(cls_FieldHandle(1, "Id"), int()), 9);
  ASSERT_TRUE(elements->Next());
  EXPECT_THROW(elements->MakeReadObj(), std::exception);
  EXPECT_FALSE(elements->Next());
}

TEST(Lists, AgentsChangeListsInPlaceAndAReaderSnapsInWhatAWriterAppended) {
  zqa_TestDir dir;
  cow_String const path = dir.File("agents.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter writer(registrar, Create(path), "MDL", "agents", 0, -1);
  ListRow list(writer);
  int const oid = list.memento.Oid();
  std::unique_ptr<cls_AgentListPrim<double>> agent(list.memento.MakeAgentListDouble(2));
  double const first[] = {1, 2, 3, 4};
  agent->Store(0, 4, first);
  double const replaced = 30;
  agent->Store(2, 1, &replaced);
  EXPECT_EQ(agent->Size(), 4);
  EXPECT_EQ(agent->Columns(), 2);
  writer.Flush();
  agent->Flush();

  rom_Transporter reader(registrar, ReadOnly(path), "MDL", -1);
  rom_MementoRead row(reader, kRomInternalListClass, oid, cls_Uid());
  std::unique_ptr<cls_AgentListPrim<double>> seen(row.MakeAgentListDouble());
  ASSERT_NE(seen, nullptr);
  EXPECT_TRUE(seen->ReadOnly());
  double values[6] = {};
  EXPECT_EQ(seen->Fetch(0, 4, values), 4);
  EXPECT_EQ(values[2], 30);
  double const more[] = {5, 6};
  agent->Store(agent->Size(), 2, more);
  agent->Flush();
  writer.Flush();
  // The reader's database takes in the writer's flush first, then the agent.
  EXPECT_EQ(reader.Snap(), 1);
  EXPECT_NE(seen->Snap(), 0);
  EXPECT_EQ(seen->Size(), 6);
  EXPECT_EQ(seen->Fetch(4, 2, values), 2);
  EXPECT_EQ(values[0], 5);
  EXPECT_EQ(values[1], 6);

  // Writing the list row again empties the list it holds.
  std::unique_ptr<cls_AgentListPrim<double>> again(list.memento.MakeAgentListDouble(2));
  EXPECT_EQ(again->Size(), 0);
}

TEST(Lists, ObjectAgentFlagsFollowTheirRules) {
  zqa_TestDir dir;
  cow_String const path = dir.File("flags.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(path), "MDL", "flags", 0, -1);
  ListRow list(t);
  std::unique_ptr<cls_AgentListObj> agent(list.memento.MakeAgentListObj());
  cls_ClassMetadata const& md = registrar.ConstGet(Item::kClassId);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(agent->DoWrite(i));
    cow_COW<Item> const item = MakeItem(10 + i);
    cls_CowValue const value(item);
    md.DBWrite(value.Address(), cls_WriteVisitor(*agent, i, &value, nullptr));
  }
  EXPECT_EQ(agent->Size(), 3);
  EXPECT_FALSE(agent->DoWrite(1));
  agent->SetDirty(1);
  EXPECT_TRUE(agent->DoWrite(1));
  agent->SetDirty(7);
  EXPECT_TRUE(agent->DoWrite(7));
  EXPECT_FALSE(agent->DoWrite(2));
  EXPECT_EQ(agent->Get(2, Item::kClassId).As<Item>().ConstGet()->id, 12);
  // Element 1 rewritten in place: the list keeps its length.
  cow_COW<Item> const other = MakeItem(40);
  cls_CowValue const value(other);
  md.DBWrite(value.Address(), cls_WriteVisitor(*agent, 1, &value, nullptr));
  EXPECT_EQ(agent->Size(), 3);
  EXPECT_FALSE(agent->DoWrite(1));
  EXPECT_EQ(agent->Get(1, Item::kClassId).As<Item>().ConstGet()->id, 40);
  agent->Release();
  EXPECT_FALSE(t.CowBarn().IsPresent(value));
}
}  // namespace

namespace {
// The "##InternalList" row oid's columns, written straight.
rfm_Row ListClassRow(rom_Transporter& t, int oid) {
  return t.GetClassBagForWrite(kRomInternalListClass).Table().UpdateRow(oid);
}

std::string MessageOf(std::function<void()> const& action) {
  try {
    action();
  } catch (std::exception const& e) {
    return e.what();
  }
  return "no error";
}

TEST(Lists, OldStringTablesAndRowsWithoutAColumnCountStillRead) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  rom_Transporter t(registrar, Create(dir.File("old.mdl")), "MDL", "old", 0, -1);
  int oid = 0;
  {
    ListRow list(t);
    oid = list.memento.Oid();
    rfm_Table const strings = t.Database().Table(cow_String(kRomStringArrayTableName), 8, -1);
    strings.NewRow().WriteFieldString(rfm_FieldHandle(0), "old");
    strings.NewRow().WriteFieldString(rfm_FieldHandle(0), "form");
    ListClassRow(t, oid).WriteFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn), strings.Handle());
  }
  rom_MementoRead row(t, kRomInternalListClass, oid, cls_Uid());
  cls_Received<cls_ReadListPrim<cow_String>> reader(row.MakeReadListPrim(cow_String()));
  ASSERT_EQ(reader->Size(), 2);
  EXPECT_EQ(reader->Columns(), 1);
  cow_String values[3];
  EXPECT_EQ(reader->Read(values, 3), 2);
  EXPECT_EQ(values[0], cow_String("old"));
  EXPECT_EQ(values[1], cow_String("form"));
  {
    std::unique_ptr<cls_AgentListPrim<cow_String>> agent(row.MakeAgentListString());
    EXPECT_EQ(agent->Columns(), 1);
    cow_String const more[] = {cow_String("rows"), cow_String("too")};
    agent->Store(2, 2, more);
    cow_String const replaced = cow_String("new");
    agent->Store(0, 1, &replaced);
    cow_String all[5];
    EXPECT_EQ(agent->Fetch(0, 5, all), 4);
    EXPECT_EQ(all[0], cow_String("new"));
    EXPECT_EQ(all[1], cow_String("form"));
    EXPECT_EQ(all[3], cow_String("too"));
  }
  // A writer empties the table and writes through its rows.
  {
    rom_MementoWrite rewrite(t, kRomInternalListClass, oid, cls_MementoWrite::kOwnedByCreator);
    cls_Received<cls_WriteListPrim<cow_String>> writer(rewrite.MakeWriteListPrim(cow_String(), 1));
    writer->Write(cow_String("only"));
  }
  cls_Received<cls_ReadListPrim<cow_String>> again(row.MakeReadListPrim(cow_String()));
  ASSERT_EQ(again->Size(), 1);
  again->Next();
  EXPECT_EQ(again->Read(), cow_String("only"));
}

TEST(Lists, DamagedListsEndInTheLibrarysErrors) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  int files = 0;
  // A fresh file holding an owner, damaged by damage in the list the owner's
  // member refers to, then read: answers the error's message.
  auto const readDamaged = [&](char const* member, std::function<void(rom_Transporter&, int listRow)> const& damage) {
    cow_String const path = dir.File(("damaged" + std::to_string(files++) + ".mdl").c_str());
    rom_CidOid row;
    {
      rom_Transporter t(registrar, Create(path), "MDL", "damaged", 0, -1);
      row = rom_WriteObject(t, MakeOwner(MakeItem(1)));
      rfm_Row const owner = t.GetClassBagForWrite(Owner::kClassId).Table().ReadRow(row.m_Oid);
      damage(t, owner.ReadFieldInt(rfm_FieldHandle((std::string(member) + kRomOidSuffix).c_str(), -1)));
      t.Flush();
    }
    rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
    std::string const message = MessageOf([&] { rom_ReadObject<Owner>(t, row); });
    return message + "\n" + path.CStr();
  };
  auto const names = [](std::string const& message, char const* text) {
    std::string const path = message.substr(message.rfind('\n') + 1);
    return message.find(text) != std::string::npos && message.find(path) < message.rfind('\n');
  };
  // A handle that names no array.
  std::string message = readDamaged("Doubles", [](rom_Transporter& t, int list) {
    ListClassRow(t, list).WriteFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn), rfm_Handle::Make(0, 300));
  });
  EXPECT_EQ(message.find("no error"), std::string::npos) << message;
  // A handle that names another list's store, of another element type.
  message = readDamaged("Doubles", [](rom_Transporter& t, int list) {
    rfm_Handle const ints = ListClassRow(t, list - 2).ReadFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn));
    ListClassRow(t, list).WriteFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn), ints);
  });
  EXPECT_EQ(message.find("no error"), std::string::npos) << message;
  // A column count of 0.
  message = readDamaged("Ints", [](rom_Transporter& t, int list) {
    ListClassRow(t, list).WriteFieldInt(rfm_FieldHandle(kRomTargetColumnsColumn), 0);
  });
  EXPECT_TRUE(names(message, "has 0 columns; a list has at least one.")) << message;
  // An element beyond its class's table.
  message = readDamaged("Items", [](rom_Transporter& t, int list) {
    rfm_Handle const elements = ListClassRow(t, list).ReadFieldHandle(rfm_FieldHandle(kRomTargetHandleColumn));
    t.Database().Table(elements, 8, -1).UpdateRow(2).WriteFieldInt(rfm_FieldHandle(0), 2);
  });
  EXPECT_NE(message.find("Object is not available in DB file: Item[2]"), std::string::npos) << message;
  // A list member that refers to the blob's row.
  message = readDamaged("Floats", [](rom_Transporter& t, int list) {
    (void)list;
    rfm_Row const owner = t.GetClassBagForWrite(Owner::kClassId).Table().UpdateRow(0);
    owner.WriteFieldInt(rfm_FieldHandle("Floats#ClassID", -1), static_cast<int>(kRomInternalBlobClass));
  });
  EXPECT_TRUE(names(message, "Member Floats of Owner[0] in ")) << message;
  EXPECT_NE(message.find("refers to ##InternalBlob[3], not to a collection of class ##InternalList."),
            std::string::npos)
      << message;
}
}  // namespace
