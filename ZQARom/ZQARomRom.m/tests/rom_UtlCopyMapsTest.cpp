// rom_UtlCopy on maps of every layout and on double collections, made by
// hand at the row level: every row arrives as it was, removed keys and
// repeated keys too, its references renumbered into the target.

#include "rfm_Row.h"
#include "rom_HeaderLayout.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "rom_UtlCopy.h"
#include "rom_UtlCopyTestFiles.h"
#include "rom_UtlDatabaseRom.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {
using namespace rom_TestModel;

constexpr char kMagic[] = "MDL";
// Owner's members refer to a map of each layout and to double collections.
constexpr unsigned int kOwner = 0x01000302;
// The member names of Owner's maps, one per layout of kRomMapLayouts, in
// that order.
char const* const kMapMembers[] = {"Names",  "Numbers", "Weights", "Scales", "Counts",
                                   "Labels", "Heights", "Ratios",  "Ids",    "Titles"};

rfm_FieldHandle Field(std::string const& name) { return rfm_FieldHandle(name.c_str(), -1); }
std::string Target(char const* suffix) { return std::string(kRomTargetName) + suffix; }

void Refer(rfm_Row const& row, std::string const& member, unsigned int cid, int oid) {
  row.WriteFieldInt(Field(member + kRomOidSuffix), oid);
  row.WriteFieldInt(Field(member + kRomClassIdSuffix), static_cast<int>(cid));
}

// A key or a value as a row field takes it.
struct Value {
  Value(int value) : m_Type(rfm_TypeInt), m_Int(value) {}
  Value(float value) : m_Type(rfm_TypeFloat), m_Float(value) {}
  Value(double value) : m_Type(rfm_TypeDouble), m_Double(value) {}
  Value(char const* value) : m_Type(rfm_TypeString), m_String(value) {}

  void Write(rfm_Row const& row, char const* field) const {
    switch (m_Type) {
      case rfm_TypeInt:
        return row.WriteFieldInt(Field(field), m_Int);
      case rfm_TypeFloat:
        return row.WriteFieldFloat(Field(field), m_Float);
      case rfm_TypeDouble:
        return row.WriteFieldDouble(Field(field), m_Double);
      default:
        return row.WriteFieldString(Field(field), m_String);
    }
  }

  rfm_Type m_Type;
  int m_Int = 0;
  float m_Float = 0;
  double m_Double = 0;
  char const* m_String = "";
};

// A row of a map's table: its key, and a value, or {oid, class id} of an
// object ({} for a row without data there, a null entry).
struct Entry {
  Entry(Value key, Value value) : m_Key(key), m_Value(value) {}
  Entry(Value key, std::vector<int> object) : m_Key(key), m_Value(0), m_Object(std::move(object)), m_IsObject(true) {}
  Value m_Key;
  Value m_Value;
  std::vector<int> m_Object;
  bool m_IsObject = false;
};

int const kNodeId = static_cast<int>(kNode);
int const kNoClassId = static_cast<int>(kRomNoClass);
int const kMarkerId = static_cast<int>(kMarker);

// The source maps, one per layout in the order of kRomMapLayouts: removed
// keys (oid -1, class id 1) and keys that come back, a tableless class's
// object, a row without an object, unsigned ints as the int of their bits,
// and an empty map.
std::vector<std::vector<Entry>> const kMaps = {
    {{"a", {2, kNodeId}}, {"b", {5, kNodeId}}, {"a", {-1, kNoClassId}}, {"m", {-1, kMarkerId}}, {"n", {}},
     {"a", {7, kNodeId}}, {"b", {2, kNodeId}}},
    {{10, {0, kNodeId}}, {-4, {-1, kNoClassId}}, {10, {3, kNodeId}}, {0, {}}},
    {{"x", 2.5}, {"y", -1e300}, {"x", 0.0}},
    {{"f", 3e10f}},
    {{"n", -7}, {"u", -1}},
    {{"k", "v"}, {"", "no key"}},
    {},
    {{1, 1.5f}, {1, -0.25f}},
    {{1, 1}, {2, 4}, {3, 9}, {-2147483647 - 1, 2147483647}},
    {{0, "zero"}, {1, ""}},
};

// A row as the test compares it: Key, then the object or Data.
std::string Text(rfm_Row const& row, char const* field) {
  if (!row.DataIsPresent(Field(field))) return "-";
  std::ostringstream text;
  text << std::hexfloat;
  switch (row.FieldMetadataMap().ConstGet(field).Type()) {
    case rfm_TypeInt:
      text << row.ReadFieldInt(Field(field));
      break;
    case rfm_TypeFloat:
      text << row.ReadFieldFloat(Field(field));
      break;
    case rfm_TypeDouble:
      text << row.ReadFieldDouble(Field(field));
      break;
    default:
      text << std::quoted(row.ReadFieldString(Field(field)).CStr());
  }
  return text.str();
}

// A source Owner whose members name a map of every layout, double
// collections and an absent map; a target.
class UtlCopyMaps : public ::testing::TestWithParam<rom_CopyTarget> {
protected:
  UtlCopyMaps() {
    Register(m_Registrar);
    cls_ClassMetadata& owner = m_Registrar.CreateClassMD("Owner", kOwner, 1, nullptr, cls_kNoClass);
    int field = 0;
    for (char const* map : kMapMembers)
      owner.AddAttribute(cls_FieldHandle(++field, map), cls_AttrObjectCow, kRomInternalMapClass);
    owner.AddAttribute(cls_FieldHandle(++field, "Absent"), cls_AttrObjectCow, kRomInternalMapClass);
    for (char const* pair : {"Pair", "Half"})
      owner.AddAttribute(cls_FieldHandle(++field, pair), cls_AttrObjectCow, kRomInternalDblColClass);
    m_From.reset(new rom_Transporter(m_Registrar, rfm_File::Open(m_Source, utl_FileAccessCreate, false), kMagic,
                                     "source", 0, -1));
    m_To.reset(new rom_Transporter(m_Registrar, rom_CreateCopyTarget(GetParam(), m_Target), kMagic, "target", 0, -1));
    m_FromView.reset(new rom_UtlDatabaseRom(*m_From));
    m_ToView.reset(new rom_UtlDatabaseRom(*m_To));
    Write(*m_From, Make(8, 2, 3));
    WriteOwner();
  }

  ~UtlCopyMaps() override {
    m_ToView.reset();
    m_FromView.reset();
  }

  rfm_Row NewRow(unsigned int cid) const { return m_From->GetClassBagForWrite(cid).Table().NewRow(); }

  rfm_Handle NewMap(std::size_t layout) const {
    rfm_Table const table = m_From->Database().Table(kRomMapLayouts[layout].m_Name, -1, -1);
    for (Entry const& entry : kMaps[layout]) {
      rfm_Row const row = table.NewRow();
      entry.m_Key.Write(row, kRomElementKeyName);
      if (!entry.m_IsObject) {
        entry.m_Value.Write(row, kRomElementDataName);
      } else if (!entry.m_Object.empty()) {
        row.WriteFieldInt(Field(kRomElementOidName), entry.m_Object[0]);
        row.WriteFieldInt(Field(kRomElementClassIdName), entry.m_Object[1]);
      }
    }
    table.Flush();
    return table.Handle();
  }

  void WriteOwner() const {
    rfm_Row const owner = NewRow(kOwner);
    for (std::size_t layout = 0; layout < kMaps.size(); ++layout) {
      rfm_Row const map = NewRow(kRomInternalMapClass);
      map.WriteFieldHandle(Field(Target(kRomHandleSuffix)), NewMap(layout));
      Refer(owner, kMapMembers[layout], kRomInternalMapClass, map.Location());
    }
    Refer(owner, "Absent", kRomInternalMapClass, NewRow(kRomInternalMapClass).Location());
    // Both of a double collection's maps, or only its first.
    rfm_Row const pair = NewRow(kRomInternalDblColClass);
    pair.WriteFieldHandle(Field(Target(kRomHandleSuffix)), NewMap(1));
    pair.WriteFieldHandle(Field(Target(kRomHandle2Suffix)), NewMap(5));
    Refer(owner, "Pair", kRomInternalDblColClass, pair.Location());
    rfm_Row const half = NewRow(kRomInternalDblColClass);
    half.WriteFieldHandle(Field(Target(kRomHandleSuffix)), NewMap(8));
    Refer(owner, "Half", kRomInternalDblColClass, half.Location());
  }

  // The rows of the target's table at handle: "Key -> Node id" for an
  // object of the target's, whose id tells which source node it copies,
  // "Key -> oid/class id" for a null entry, "Key = Data" for a value.
  std::vector<std::string> Rows(rfm_Handle handle, char const* layout) const {
    rfm_Table const table = m_ToView->Table(handle);
    EXPECT_EQ(table.TableMetadata().TableName(), layout);
    std::vector<std::string> rows;
    for (int number = 0; table.RowExists(number); ++number) {
      rfm_Row const row = table.ReadRow(number);
      std::string text = Text(row, kRomElementKeyName);
      if (!table.TableMetadata().FieldMap().IsMember(kRomElementOidName)) {
        rows.push_back(text + " = " + Text(row, kRomElementDataName));
        continue;
      }
      std::string const oid = Text(row, kRomElementOidName);
      std::string const classId = Text(row, kRomElementClassIdName);
      if (oid != "-" && oid[0] != '-' && classId == std::to_string(kNodeId)) {
        rfm_Row const node = m_ToView->Object(kNode, row.ReadFieldInt(Field(kRomElementOidName)));
        rows.push_back(text + " -> Node " + std::to_string(node.ReadFieldInt(Field("Id"))));
      } else {
        rows.push_back(text + " -> " + oid + "/" + classId);
      }
    }
    return rows;
  }

  // The handle that the target's collection, referred to by owner's
  // member, holds in its field.
  rfm_Handle Handle(rfm_Row const& owner, char const* member, char const* suffix) const {
    rfm_Row const collection = m_ToView->Object(owner, member);
    EXPECT_FALSE(collection.IsNull()) << member;
    if (collection.IsNull() || !collection.DataIsPresent(Field(Target(suffix)))) return rfm_Handle();
    return collection.ReadFieldHandle(Field(Target(suffix)));
  }

  zqa_TestDir m_Dir;
  cow_String const m_Source = m_Dir.File("source.mdl");
  cow_String const m_Target = m_Dir.File("target.mdl");
  cls_ClassRegistrar m_Registrar;
  std::unique_ptr<rom_Transporter> m_From;
  std::unique_ptr<rom_Transporter> m_To;
  std::unique_ptr<rom_UtlDatabaseRom> m_FromView;
  std::unique_ptr<rom_UtlDatabaseRom> m_ToView;
};

// A source node's id is its row plus one: "Node 3" is the copy of row 2.
TEST_P(UtlCopyMaps, EveryMapLayoutAndDoubleCollectionArrivesRowForRow) {
  rom_UtlCopy copy(*m_ToView);
  rfm_Row const owner = m_ToView->Object(kOwner, copy.CopyObject(kOwner, 0, *m_FromView, false));
  std::string const marker = "/" + std::to_string(kMarkerId);
  std::vector<std::vector<std::string>> const expected = {
      {"\"a\" -> Node 3", "\"b\" -> Node 6", "\"a\" -> -1/1", "\"m\" -> -1" + marker, "\"n\" -> -/-",
       "\"a\" -> Node 8", "\"b\" -> Node 3"},
      {"10 -> Node 1", "-4 -> -1/1", "10 -> Node 4", "0 -> -/-"},
      {"\"x\" = 0x1.4p+1", "\"y\" = -0x1.7e43c8800759cp+996", "\"x\" = 0x0p+0"},
      {"\"f\" = 0x1.bf08ecp+34"},
      {"\"n\" = -7", "\"u\" = -1"},
      {"\"k\" = \"v\"", "\"\" = \"no key\""},
      {},
      {"1 = 0x1.8p+0", "1 = -0x1p-2"},
      {"1 = 1", "2 = 4", "3 = 9", "-2147483648 = 2147483647"},
      {"0 = \"zero\"", "1 = \"\""},
  };
  for (std::size_t layout = 0; layout < kMaps.size(); ++layout) {
    char const* member = kMapMembers[layout];
    EXPECT_EQ(expected[layout], Rows(Handle(owner, member, kRomHandleSuffix), kRomMapLayouts[layout].m_Name))
        << member;
  }
  EXPECT_TRUE(m_ToView->ObjectIsPresent(owner, "Absent"));
  EXPECT_TRUE(Handle(owner, "Absent", kRomHandleSuffix).IsNull());
  EXPECT_EQ(expected[1], Rows(Handle(owner, "Pair", kRomHandleSuffix), kRomMapInt2ObjTableName));
  EXPECT_EQ(expected[5], Rows(Handle(owner, "Pair", kRomHandle2Suffix), kRomMapString2StringTableName));
  EXPECT_EQ(expected[8], Rows(Handle(owner, "Half", kRomHandleSuffix), kRomMapInt2IntTableName));
  EXPECT_TRUE(Handle(owner, "Half", kRomHandle2Suffix).IsNull());
  // Each node the maps reach is copied once, however many rows name it.
  EXPECT_EQ(m_ToView->Table(kNode).Length(), 5);

  m_ToView.reset();
  m_To.reset();
  EXPECT_EQ(rom_CheckProblems(m_Target), std::vector<std::string>());
}

TEST_P(UtlCopyMaps, AMapHandleNamingNoMapsTableRaisesNamingTheFileAndMakesNothing) {
  rfm_Table const list = m_From->Database().Table(kRomListTableName, -1, -1);
  list.NewRow();
  rfm_Table const maps = m_ToView->Table(kRomInternalMapClass);
  rfm_Table const pairs = m_ToView->Table(kRomInternalDblColClass);
  struct Case {
    unsigned int m_Class;
    char const* m_Field;
    rfm_Handle m_Handle;
  } const cases[] = {
      {kRomInternalMapClass, kRomHandleSuffix, list.Handle()},
      {kRomInternalDblColClass, kRomHandle2Suffix, list.Handle()},
      {kRomInternalDblColClass, kRomHandle2Suffix, rfm_Handle::Make(60, 5)},
  };
  for (Case const& c : cases) {
    rfm_Row const row = NewRow(c.m_Class);
    row.WriteFieldHandle(Field(Target(kRomHandleSuffix)), NewMap(0));
    row.WriteFieldHandle(Field(Target(c.m_Field)), c.m_Handle);
    rom_UtlCopy copy(*m_ToView);
    std::string const raised = rom_RaisedText([&] { copy.CopyObject(c.m_Class, row.Location(), *m_FromView, false); });
    EXPECT_NE(raised.find(m_Source.CStr()), std::string::npos) << raised;
    EXPECT_NE(raised.find(c.m_Handle == list.Handle() ? "\"##List\"" : "no object"), std::string::npos) << raised;
  }
  EXPECT_EQ(maps.Length(), 0);
  EXPECT_EQ(pairs.Length(), 0);
  EXPECT_EQ(m_ToView->Table(kNode).Length(), 0);
}

INSTANTIATE_TEST_SUITE_P(Targets, UtlCopyMaps, ::testing::Values(rom_CopyTarget::kPlain, rom_CopyTarget::kCompressed),
                         [](auto const& info) { return rom_CopyTargetName(info.param); });
}  // namespace
