// zdb on the maps of the object layer's files: dump shows a map's handle
// with its entries and its kind, for ##InternalMap and both handles of
// ##InternalDblCol; check finds map handles that name no map's table, and
// bad references in the ##Map and ##MapInt2Obj tables the maps lead to.
// The files are written through a transporter, whose class tables of
// ##InternalMap and ##InternalDblCol get their rows at the row level, and
// the map tables theirs, as the object layer lays them out.

#include "cls_ClassRegistrar.h"
#include "rfm_Array.h"
#include "rfm_File.h"
#include "rom_HeaderLayout.h"
#include "rom_Transporter.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace {

using json = nlohmann::json;

constexpr unsigned kShape = 0x00050001;
constexpr unsigned kUnknown = 0x00099999;
// A class without a table: a map's entry stores its object as oid -1 and
// this id, which the catalogue does not hold.
constexpr unsigned kTableless = 0x00077777;
// A handle of a group that a file of a few objects does not have.
constexpr int kNowhere = 999;

// Shape: a Name, its Tags, a map held as the object layer holds one, by a
// reference to a row of ##InternalMap, and its Pair, a double collection.
void RegisterShape(cls_ClassRegistrar& registrar) {
  registrar.CreateClassMD("Shape", kShape, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Name"), cls_AttrString)
      .AddAttribute(cls_FieldHandle(2, "Tags"), cls_AttrObjectCow, kRomInternalMapClass)
      .AddAttribute(cls_FieldHandle(3, "Pair"), cls_AttrObjectCow, kRomInternalDblColClass);
}

rfm_FieldHandle Field(std::string const& name) { return rfm_FieldHandle(name.c_str(), -1); }
std::string TargetField(char const* suffix) { return std::string(kRomTargetName) + suffix; }

void Write(rfm_Row const& row, char const* field, int value) { row.WriteFieldInt(Field(field), value); }
void Write(rfm_Row const& row, char const* field, float value) { row.WriteFieldFloat(Field(field), value); }
void Write(rfm_Row const& row, char const* field, double value) { row.WriteFieldDouble(Field(field), value); }
void Write(rfm_Row const& row, char const* field, char const* value) { row.WriteFieldString(Field(field), value); }

// An entry of a map of objects: its key and {oid, class id}, or {} for a
// row without data there (a null entry, as a writer's MakeNullObj leaves).
template <class Key>
using ObjectEntries = std::vector<std::pair<Key, std::vector<int>>>;

// A transporter file being written: the class tables of Shape,
// ##InternalMap and ##InternalDblCol, and the tables their rows name.
class MapFileWriter {
public:
  // A handle below kNoHandle leaves its field without data.
  static constexpr int kNoHandle = -1000;

  explicit MapFileWriter(cow_String const& name)
      : m_Transporter(Registered(m_Registrar), rfm_File::Open(name, utl_FileAccessCreate, false), "MAPS", "maps",
                      1700000000, 0),
        m_Database(m_Transporter.Database()),
        m_Shapes(m_Transporter.GetClassBagForWrite(kShape).Table()),
        m_Maps(m_Transporter.GetClassBagForWrite(kRomInternalMapClass).Table()),
        m_Pairs(m_Transporter.GetClassBagForWrite(kRomInternalDblColClass).Table()) {}
  ~MapFileWriter() { m_Transporter.Flush(); }

  rfm_Database const& Database() const { return m_Database; }
  int Shapes() const { return m_Shapes.Handle().Value(); }
  int Maps() const { return m_Maps.Handle().Value(); }
  int Pairs() const { return m_Pairs.Handle().Value(); }

  // A Shape whose Tags and Pair are the rows tags and pair of their
  // tables, or null when negative.
  void AddShape(char const* name, int tags, int pair) const {
    rfm_Row row = m_Shapes.NewRow();
    Write(row, "Name", name);
    Refer(row, "Tags", kRomInternalMapClass, tags);
    Refer(row, "Pair", kRomInternalDblColClass, pair);
  }
  void AddMap(int handle) const { WriteHandle(m_Maps.NewRow(), kRomHandleSuffix, handle); }
  void AddPair(int first, int second) const {
    rfm_Row row = m_Pairs.NewRow();
    WriteHandle(row, kRomHandleSuffix, first);
    WriteHandle(row, kRomHandle2Suffix, second);
  }

  template <class Key>
  int AddObjectMap(char const* layout, ObjectEntries<Key> const& entries) const {
    rfm_Table table = m_Database.Table(layout, -1, -1);
    for (auto const& [key, object] : entries) {
      rfm_Row row = table.NewRow();
      Write(row, kRomElementKeyName, key);
      if (object.empty()) continue;
      Write(row, kRomElementOidName, object[0]);
      Write(row, kRomElementClassIdName, object[1]);
    }
    table.Flush();
    return table.Handle().Value();
  }
  template <class Key, class Value>
  int AddValueMap(char const* layout, std::vector<std::pair<Key, Value>> const& entries) const {
    rfm_Table table = m_Database.Table(layout, -1, -1);
    for (auto const& [key, value] : entries) {
      rfm_Row row = table.NewRow();
      Write(row, kRomElementKeyName, key);
      Write(row, kRomElementDataName, value);
    }
    table.Flush();
    return table.Handle().Value();
  }

private:
  static cls_ClassRegistrar const& Registered(cls_ClassRegistrar& registrar) {
    RegisterShape(registrar);
    return registrar;
  }
  static void Refer(rfm_Row const& row, std::string const& member, unsigned classId, int oid) {
    bool null = oid < 0;
    Write(row, (member + kRomOidSuffix).c_str(), null ? -1 : oid);
    Write(row, (member + kRomClassIdSuffix).c_str(), static_cast<int>(null ? kRomNoClass : classId));
  }
  static void WriteHandle(rfm_Row const& row, char const* suffix, int handle) {
    if (handle > kNoHandle) row.WriteFieldHandle(Field(TargetField(suffix)), rfm_Handle(handle));
  }

  // Declared first: the registrar outlives the transporter.
  cls_ClassRegistrar m_Registrar;
  rom_Transporter m_Transporter;
  rfm_Database m_Database;
  rfm_Table m_Shapes;
  rfm_Table m_Maps;
  rfm_Table m_Pairs;
};

int const kShapeId = static_cast<int>(kShape);
int const kNoClassId = static_cast<int>(kRomNoClass);

// A file whose maps are all sound, with the handles of its class tables and
// of the tables its maps name:
//   ##InternalMap  row  table                 entries (key: value)
//                    0  m_Names, ##Map        "a": Shape 0, "b": Shape 1, "a": removed,
//                                             "c": a tableless class's object, "d": no data,
//                                             "b": Shape 0 again
//                    1  m_Numbers, ##MapInt2Obj  7: Shape 1, -3: removed
//                    2  ##MapString2Double    "x": 2.5, "y": -1e300
//                    3  ##MapString2Float     "f": 0.5
//                    4  ##MapString2Int       "n": -7, "u": 4294967295 as -1
//                    5  ##MapString2String    "k": "v", "": "no key"
//                    6  m_Empty, ##MapInt2Double, empty
//                    7  ##MapInt2Float        1: 1.5
//                    8  ##MapInt2Int          1: 1, 2: 4, 3: 9
//                    9  ##MapInt2String       0: "zero"
//                   10  no handle: an absent map
//   ##InternalDblCol row 0: m_Pair1, ##Map "p": Shape 1; m_Pair2, ##MapString2Int "q": 3
//                    row 1: m_Names again; no second handle
//   Shape            "square" with Tags ##InternalMap[0] and Pair ##InternalDblCol[0];
//                    "dot" with neither
struct GoodFile {
  std::string m_Name;
  int m_Shapes = 0, m_Maps = 0, m_Pairs = 0;
  std::vector<int> m_Tables;  // the handles of rows 0 to 9 of ##InternalMap
  int m_Pair1 = 0, m_Pair2 = 0;
};

GoodFile MakeGoodFile(zqa_TestDir const& dir) {
  GoodFile file;
  cow_String name = dir.File("maps.zdb");
  file.m_Name = name.CStr();
  MapFileWriter writer(name);
  file.m_Shapes = writer.Shapes();
  file.m_Maps = writer.Maps();
  file.m_Pairs = writer.Pairs();
  writer.AddShape("square", 0, 0);
  writer.AddShape("dot", -1, -1);
  using Strings = std::vector<std::pair<char const*, char const*>>;
  file.m_Tables = {
      writer.AddObjectMap<char const*>(kRomMapTableName, {{"a", {0, kShapeId}},
                                                          {"b", {1, kShapeId}},
                                                          {"a", {-1, kNoClassId}},
                                                          {"c", {-1, static_cast<int>(kTableless)}},
                                                          {"d", {}},
                                                          {"b", {0, kShapeId}}}),
      writer.AddObjectMap<int>(kRomMapInt2ObjTableName, {{7, {1, kShapeId}}, {-3, {-1, kNoClassId}}}),
      writer.AddValueMap(kRomMapString2DoubleTableName,
                         std::vector<std::pair<char const*, double>>{{"x", 2.5}, {"y", -1e300}}),
      writer.AddValueMap(kRomMapString2FloatTableName, std::vector<std::pair<char const*, float>>{{"f", 0.5f}}),
      // An unsigned value is stored as the int of its bits.
      writer.AddValueMap(kRomMapString2IntTableName, std::vector<std::pair<char const*, int>>{{"n", -7}, {"u", -1}}),
      writer.AddValueMap(kRomMapString2StringTableName, Strings{{"k", "v"}, {"", "no key"}}),
      writer.AddValueMap(kRomMapInt2DoubleTableName, std::vector<std::pair<int, double>>{}),
      writer.AddValueMap(kRomMapInt2FloatTableName, std::vector<std::pair<int, float>>{{1, 1.5f}}),
      writer.AddValueMap(kRomMapInt2IntTableName, std::vector<std::pair<int, int>>{{1, 1}, {2, 4}, {3, 9}}),
      writer.AddValueMap(kRomMapInt2StringTableName, std::vector<std::pair<int, char const*>>{{0, "zero"}}),
  };
  for (int handle : file.m_Tables) writer.AddMap(handle);
  writer.AddMap(MapFileWriter::kNoHandle);
  file.m_Pair1 = writer.AddObjectMap<char const*>(kRomMapTableName, {{"p", {1, kShapeId}}});
  file.m_Pair2 = writer.AddValueMap(kRomMapString2IntTableName, std::vector<std::pair<char const*, int>>{{"q", 3}});
  writer.AddPair(file.m_Pair1, file.m_Pair2);
  writer.AddPair(file.m_Tables[0], MapFileWriter::kNoHandle);
  return file;
}

// A file whose maps are damaged:
//   ##InternalMap  row  Target#Handle
//                    0  kNowhere
//                    1  m_Ints, an int array
//                    2  Shape's table
//                    3  m_List, a ##List table
//                    4  m_Bad, ##Map
//                    5  the header's stream (4)
//                    6  m_BadInts, ##MapInt2Obj
//                    7  m_Bad again
//   m_Bad rows: "a" Shape 0; "b" Shape 2 (past the end); "c" 0 of an unknown
//     class; "d" -1 of an unknown class (null); "e" 5 of class 1
//   m_BadInts rows: keys 1 to 7, each Shape 9 (past the end)
//   ##InternalDblCol row 0: m_Good, ##MapString2Float; kNowhere
//   Shape            "square" and "dot", without maps
struct DamagedFile {
  std::string m_Name;
  int m_Shapes = 0, m_Maps = 0, m_Pairs = 0;
  int m_Ints = 0, m_List = 0, m_Bad = 0, m_BadInts = 0, m_Good = 0;
};

DamagedFile MakeDamagedFile(zqa_TestDir const& dir) {
  DamagedFile file;
  cow_String name = dir.File("damaged.zdb");
  file.m_Name = name.CStr();
  MapFileWriter writer(name);
  rfm_Database const& db = writer.Database();
  file.m_Shapes = writer.Shapes();
  file.m_Maps = writer.Maps();
  file.m_Pairs = writer.Pairs();
  writer.AddShape("square", -1, -1);
  writer.AddShape("dot", -1, -1);
  rfm_Array<int, rfm_TypeInt> ints = db.ArrayInt(1, -1, 0);
  int const values[] = {1, 2};
  ints.Write(values, 2);
  ints.Flush();
  file.m_Ints = ints.Handle().Value();
  rfm_Table list = db.Table(kRomListTableName, -1, -1);
  Write(list.NewRow(), kRomElementOidName, 0);
  list.Flush();
  file.m_List = list.Handle().Value();
  file.m_Bad = writer.AddObjectMap<char const*>(kRomMapTableName, {{"a", {0, kShapeId}},
                                                                   {"b", {2, kShapeId}},
                                                                   {"c", {0, static_cast<int>(kUnknown)}},
                                                                   {"d", {-1, static_cast<int>(kUnknown)}},
                                                                   {"e", {5, kNoClassId}}});
  ObjectEntries<int> pastTheEnd;
  for (int key = 1; key <= 7; ++key) pastTheEnd.push_back({key, {9, kShapeId}});
  file.m_BadInts = writer.AddObjectMap<int>(kRomMapInt2ObjTableName, pastTheEnd);
  file.m_Good = writer.AddValueMap(kRomMapString2FloatTableName, std::vector<std::pair<char const*, float>>{{"g", 1}});
  for (int handle : {kNowhere, file.m_Ints, file.m_Shapes, file.m_List, file.m_Bad, 4, file.m_BadInts, file.m_Bad}) {
    writer.AddMap(handle);
  }
  writer.AddPair(file.m_Good, kNowhere);
  return file;
}

std::string Dump(std::string const& name, int handle, bool asJson = false) {
  std::vector<std::string> arguments = {"dump", name, "--handle", std::to_string(handle)};
  if (asJson) arguments.push_back("--json");
  zdb_Run run = RunZdb(arguments);
  EXPECT_EQ(0, run.m_Status) << run.m_Err;
  EXPECT_EQ("", run.m_Err);
  return run.m_Out;
}

std::string Heading(char const* table, int handle, int rows) {
  return std::string("table \"") + table + "\" at handle " + std::to_string(handle) + ": " + std::to_string(rows) +
         (rows == 1 ? " row\n" : " rows\n");
}

// "  row N: Target#Handle=H (WHAT)"
std::string MapRow(int number, int handle, std::string const& what) {
  return "  row " + std::to_string(number) + ": Target#Handle=" + std::to_string(handle) + " (" + what + ")\n";
}

std::vector<json> RowValues(json const& object) {
  std::vector<json> values;
  for (json const& row : object.at("rows")) values.push_back(row.at("values"));
  return values;
}

json Target(int handle, int length, char const* kind) {
  return json{{"handle", handle}, {"length", length}, {"kind", kind}};
}

}  // namespace

TEST(ZdbMapsTest, DumpShowsEachMapsEntriesAndKindAndCheckFindsThemClean) {
  zqa_TestDir dir;
  GoodFile file = MakeGoodFile(dir);
  std::vector<int> const& maps = file.m_Tables;
  EXPECT_EQ(Heading("##InternalMap", file.m_Maps, 11) + MapRow(0, maps[0], "6 entries string to object") +
                MapRow(1, maps[1], "2 entries int to object") + MapRow(2, maps[2], "2 entries string to double") +
                MapRow(3, maps[3], "1 entry string to float") + MapRow(4, maps[4], "2 entries string to int") +
                MapRow(5, maps[5], "2 entries string to string") + MapRow(6, maps[6], "0 entries int to double") +
                MapRow(7, maps[7], "1 entry int to float") + MapRow(8, maps[8], "3 entries int to int") +
                MapRow(9, maps[9], "1 entry int to string") + "  row 10: Target#Handle=absent\n",
            Dump(file.m_Name, file.m_Maps));
  EXPECT_EQ(Heading("##InternalDblCol", file.m_Pairs, 2) + "  row 0: Target#Handle=" +
                std::to_string(file.m_Pair1) + " (1 entry string to object) Target#Handle2=" +
                std::to_string(file.m_Pair2) + " (1 entry string to int)\n" + "  row 1: Target#Handle=" +
                std::to_string(maps[0]) + " (6 entries string to object) Target#Handle2=absent\n",
            Dump(file.m_Name, file.m_Pairs));
  EXPECT_EQ(Heading("Shape", file.m_Shapes, 2) +
                "  row 0: Name=\"square\" Pair=##InternalDblCol[0] Tags=##InternalMap[0]\n" +
                "  row 1: Name=\"dot\" Pair=null Tags=null\n",
            Dump(file.m_Name, file.m_Shapes));
  // A map's own rows: a removed key, a tableless class's object and a row
  // without data are null entries; keys repeat as they were written.
  EXPECT_EQ(Heading("##Map", maps[0], 6) + "  row 0: OID=Shape[0] Key=\"a\"\n  row 1: OID=Shape[1] Key=\"b\"\n" +
                "  row 2: OID=null Key=\"a\"\n  row 3: OID=null Key=\"c\"\n  row 4: OID=null Key=\"d\"\n" +
                "  row 5: OID=Shape[0] Key=\"b\"\n",
            Dump(file.m_Name, maps[0]));
  EXPECT_EQ(Heading("##MapInt2Obj", maps[1], 2) + "  row 0: OID=Shape[1] Key=7\n  row 1: OID=null Key=-3\n",
            Dump(file.m_Name, maps[1]));
  EXPECT_EQ(Heading("##MapString2Int", maps[4], 2) + "  row 0: Data=-7 Key=\"n\"\n  row 1: Data=-1 Key=\"u\"\n",
            Dump(file.m_Name, maps[4]));

  // JSON: the handle fields are of type "map", their values objects of numbers.
  json internal = json::parse(Dump(file.m_Name, file.m_Maps, true)).at("objects").at(0);
  EXPECT_EQ(json::parse(R"([{"name":"Target#Handle","type":"map"}])"), internal.at("fields"));
  std::vector<json> expected;
  char const* const kinds[] = {"string to object", "int to object", "string to double", "string to float",
                               "string to int",    "string to string", "int to double", "int to float",
                               "int to int",       "int to string"};
  int const lengths[] = {6, 2, 2, 1, 2, 2, 0, 1, 3, 1};
  for (std::size_t i = 0; i < maps.size(); ++i) {
    expected.push_back({{"Target#Handle", Target(maps[i], lengths[i], kinds[i])}});
  }
  expected.push_back({{"Target#Handle", nullptr}});
  EXPECT_EQ(expected, RowValues(internal));
  json pairs = json::parse(Dump(file.m_Name, file.m_Pairs, true)).at("objects").at(0);
  EXPECT_EQ(json::parse(R"([{"name":"Target#Handle","type":"map"},{"name":"Target#Handle2","type":"map"}])"),
            pairs.at("fields"));
  EXPECT_EQ(
      (std::vector<json>{{{"Target#Handle", Target(file.m_Pair1, 1, "string to object")},
                          {"Target#Handle2", Target(file.m_Pair2, 1, "string to int")}},
                         {{"Target#Handle", Target(maps[0], 6, "string to object")}, {"Target#Handle2", nullptr}}}),
      RowValues(pairs));

  zdb_Run check = RunZdb({"check", file.m_Name});
  EXPECT_EQ(0, check.m_Status) << check.m_Out;
  EXPECT_EQ(file.m_Name + ": no problems found (plain file, 20 objects: 3 spaces, 1 stream, 16 tables; " +
                "object header (tagged stream), 3 classes)\n",
            check.m_Out);
}

TEST(ZdbMapsTest, DumpSaysWhatABadMapHandleNamesInsteadOfFailing) {
  zqa_TestDir dir;
  DamagedFile file = MakeDamagedFile(dir);
  EXPECT_EQ(Heading("##InternalMap", file.m_Maps, 8) + MapRow(0, kNowhere, "names no object") +
                MapRow(1, file.m_Ints, "names an int array, not a map") +
                MapRow(2, file.m_Shapes, "names table \"Shape\", not a map") +
                MapRow(3, file.m_List, "names table \"##List\", not a map") +
                MapRow(4, file.m_Bad, "5 entries string to object") + MapRow(5, 4, "names a stream, not a map") +
                MapRow(6, file.m_BadInts, "7 entries int to object") +
                MapRow(7, file.m_Bad, "5 entries string to object"),
            Dump(file.m_Name, file.m_Maps));
  EXPECT_EQ(Heading("##InternalDblCol", file.m_Pairs, 1) + "  row 0: Target#Handle=" + std::to_string(file.m_Good) +
                " (1 entry string to float) Target#Handle2=999 (names no object)\n",
            Dump(file.m_Name, file.m_Pairs));
  EXPECT_EQ(Heading("##Map", file.m_Bad, 5) + "  row 0: OID=Shape[0] Key=\"a\"\n  row 1: OID=Shape[2] Key=\"b\"\n" +
                "  row 2: OID=0x00099999[0] Key=\"c\"\n  row 3: OID=null Key=\"d\"\n" +
                "  row 4: OID=0x00000001[5] Key=\"e\"\n",
            Dump(file.m_Name, file.m_Bad));

  json maps = json::parse(Dump(file.m_Name, file.m_Maps, true)).at("objects").at(0);
  std::vector<json> rows = RowValues(maps);
  ASSERT_EQ(8u, rows.size());
  EXPECT_EQ((json{{"handle", kNowhere}, {"problem", "names no object"}}), rows[0].at("Target#Handle"));
  EXPECT_EQ((json{{"handle", file.m_Ints}, {"problem", "names an int array, not a map"}}), rows[1].at("Target#Handle"));
  EXPECT_FALSE(maps.contains("error"));
}

TEST(ZdbMapsTest, CheckReportsBadMapHandlesAndBadEntriesByTableAndRow) {
  zqa_TestDir dir;
  DamagedFile file = MakeDamagedFile(dir);
  zdb_Run run = RunZdb({"check", file.m_Name});
  EXPECT_EQ(1, run.m_Status);
  EXPECT_EQ("", run.m_Err);
  std::string const maps = "table \"##InternalMap\" at handle " + std::to_string(file.m_Maps) + ": ";
  std::string const bad = "table \"##Map\" at handle " + std::to_string(file.m_Bad) + ": ";
  std::string const badInts = "table \"##MapInt2Obj\" at handle " + std::to_string(file.m_BadInts) + ": ";
  std::string const pairs = "table \"##InternalDblCol\" at handle " + std::to_string(file.m_Pairs) + ": ";
  std::string const handle = "\"Target#Handle\": ";
  std::string const shapes = "table \"Shape\" at handle " + std::to_string(file.m_Shapes);
  auto pastTheEnd = [&](int row) {
    return badInts + "row " + std::to_string(row) + ", \"OID\": Shape[9] is past the end of " + shapes +
           ", which has 2 rows";
  };
  // Each table's lines stop at five and the rest are counted at the end;
  // the ##Map that two maps share is checked once, and its null entry of an
  // unknown class is fine.
  std::vector<std::string> expected = {
      maps + "row 0, " + handle + "999 names no object",
      maps + "row 1, " + handle + std::to_string(file.m_Ints) + " names an int array, not a map",
      maps + "row 2, " + handle + std::to_string(file.m_Shapes) + " names table \"Shape\", not a map",
      maps + "row 3, " + handle + std::to_string(file.m_List) + " names table \"##List\", not a map",
      maps + "row 5, " + handle + "4 names a stream, not a map",
      bad + "row 1, \"OID\": Shape[2] is past the end of " + shapes + ", which has 2 rows",
      bad + "row 2, \"OID\": class id 0x00099999 names no class of the catalogue",
      bad + "row 4, \"OID\": class id 0x00000001 means no class, but its oid 5 is not negative",
      pastTheEnd(0),
      pastTheEnd(1),
      pastTheEnd(2),
      pastTheEnd(3),
      pastTheEnd(4),
      pairs + "row 0, \"Target#Handle2\": 999 names no object",
      badInts + "2 more problems of this kind",
      file.m_Name + ": 15 problems (plain file, 13 objects: 1 array, 3 spaces, 1 stream, 8 tables; " +
          "object header (tagged stream), 3 classes)",
  };
  EXPECT_EQ(expected, Lines(run.m_Out));
}
