// zdb on the lists and blobs of the object layer's files: dump shows a
// list's handle with its length and element kind and a blob's with its
// bytes; check finds list and blob handles that name no store of their kind,
// bad column counts, and bad references in the ##List tables the lists lead
// to. The files are written through a transporter, whose class tables of
// ##InternalList and ##InternalBlob get their rows at the row level.

#include "cls_ClassRegistrar.h"
#include "rfm_Array.h"
#include "rfm_File.h"
#include "rfm_Space.h"
#include "rom_HeaderLayout.h"
#include "rom_Transporter.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using json = nlohmann::json;

constexpr unsigned kShape = 0x00050001;
constexpr unsigned kUnknown = 0x00099999;
constexpr int kBlobBytes = 1200;
// A handle of a group that a file of a few objects does not have.
constexpr int kNowhere = 999;

// Shape: a Name, and its Outline, a list held as the object layer holds
// one, by a reference to a row of ##InternalList.
void RegisterShape(cls_ClassRegistrar& registrar) {
  registrar.CreateClassMD("Shape", kShape, 1, nullptr, cls_kNoClass)
      .AddAttribute(cls_FieldHandle(1, "Name"), cls_AttrString)
      .AddAttribute(cls_FieldHandle(2, "Outline"), cls_AttrObjectCow, kRomInternalListClass);
}

std::string TargetField(char const* suffix) { return std::string(kRomTargetName) + suffix; }

// A transporter file being written: the class tables of Shape,
// ##InternalList and ##InternalBlob, and the stores their rows name.
class ListFileWriter {
public:
  explicit ListFileWriter(cow_String const& name)
      : m_Transporter(Registered(m_Registrar), rfm_File::Open(name, utl_FileAccessCreate, false), "LIST", "lists",
                      1700000000, 0),
        m_Database(m_Transporter.Database()),
        m_Shapes(m_Transporter.GetClassBagForWrite(kShape).Table()),
        m_Lists(m_Transporter.GetClassBagForWrite(kRomInternalListClass).Table()),
        m_Blobs(m_Transporter.GetClassBagForWrite(kRomInternalBlobClass).Table()) {}
  ~ListFileWriter() { m_Transporter.Flush(); }

  rfm_Database const& Database() const { return m_Database; }
  int Shapes() const { return m_Shapes.Handle().Value(); }
  int Lists() const { return m_Lists.Handle().Value(); }
  int Blobs() const { return m_Blobs.Handle().Value(); }

  void AddShape(char const* name, int outline) const {
    rfm_Row row = m_Shapes.NewRow();
    row.WriteFieldString(rfm_FieldHandle("Name", -1), name);
    bool null = outline < 0;
    row.WriteFieldInt(rfm_FieldHandle((std::string("Outline") + kRomOidSuffix).c_str(), -1), null ? -1 : outline);
    row.WriteFieldInt(rfm_FieldHandle((std::string("Outline") + kRomClassIdSuffix).c_str(), -1),
                      static_cast<int>(null ? kRomNoClass : kRomInternalListClass));
  }
  // A row of ##InternalList; a handle or a column count below kNoValue
  // leaves its field without data.
  static constexpr int kNoValue = -1000;
  void AddList(int handle, int columns) const {
    rfm_Row row = m_Lists.NewRow();
    if (handle > kNoValue) {
      row.WriteFieldHandle(rfm_FieldHandle(TargetField(kRomHandleSuffix).c_str(), -1), rfm_Handle(handle));
    }
    if (columns > kNoValue) row.WriteFieldInt(rfm_FieldHandle(TargetField(kRomColumnsSuffix).c_str(), -1), columns);
  }
  void AddBlob(int handle) const {
    m_Blobs.NewRow().WriteFieldHandle(rfm_FieldHandle(TargetField(kRomHandleSuffix).c_str(), -1), rfm_Handle(handle));
  }

  // A table of the ##List layout, one row per element: {oid, class id},
  // or {} for a row without data, a null element.
  int AddObjectList(std::vector<std::vector<int>> const& elements) const {
    rfm_Table table = m_Database.Table("##List", -1, -1);
    for (std::vector<int> const& element : elements) {
      rfm_Row row = table.NewRow();
      if (element.empty()) continue;
      row.WriteFieldInt(rfm_FieldHandle(kRomElementOidName, -1), element[0]);
      row.WriteFieldInt(rfm_FieldHandle(kRomElementClassIdName, -1), element[1]);
    }
    table.Flush();
    return table.Handle().Value();
  }
  // An array holding elements, FieldCount() of them a row.
  template <class Array, class T>
  static int Fill(Array const& array, std::vector<T> const& elements) {
    int rows = static_cast<int>(elements.size()) / array.FieldCount();
    if (rows > 0) array.Write(elements.data(), rows);
    array.Flush();
    return array.Handle().Value();
  }
  int AddSpace(int bytes) const {
    rfm_Space space = m_Database.Space(-1);
    std::vector<char> data(static_cast<std::size_t>(bytes), 'b');
    space.Write(data.data(), bytes);
    space.Flush();
    return space.Handle().Value();
  }

private:
  static cls_ClassRegistrar const& Registered(cls_ClassRegistrar& registrar) {
    RegisterShape(registrar);
    return registrar;
  }

  // Declared first: the registrar outlives the transporter.
  cls_ClassRegistrar m_Registrar;
  rom_Transporter m_Transporter;
  rfm_Database m_Database;
  rfm_Table m_Shapes;
  rfm_Table m_Lists;
  rfm_Table m_Blobs;
};

// A file whose lists and blobs are all sound, with the handles of its
// class tables and of the stores its lists and blobs name:
//   ##InternalList  row  store                                   Target#Columns
//                     0  m_Ints, 8 ints                          2
//                     1  m_Doubles, an empty double array        no data
//                     2  m_Objects, ##List: Shape 0, null, Shape 1  1
//                     3  m_Strings, 2 strings                    1
//                     4  m_Floats, 1 float                       1
//                     5  no handle: an absent list               no data
//                     6  m_OldStrings, ##StringArray of 2 rows   1
//                     7  m_One, ##List: Shape 1                  1
//   ##InternalBlob  row 0: m_Bytes, kBlobBytes bytes; row 1: m_Byte, 1 byte
//   Shape           "square" outlined by list 2, "dot" with a null outline
struct GoodFile {
  std::string m_Name;
  int m_Shapes = 0, m_Lists = 0, m_Blobs = 0;
  int m_Ints = 0, m_Doubles = 0, m_Objects = 0, m_Strings = 0, m_Floats = 0, m_OldStrings = 0, m_One = 0;
  int m_Bytes = 0, m_Byte = 0;
};

GoodFile MakeGoodFile(zqa_TestDir const& dir) {
  GoodFile file;
  cow_String name = dir.File("lists.zdb");
  file.m_Name = name.CStr();
  ListFileWriter writer(name);
  rfm_Database const& db = writer.Database();
  file.m_Shapes = writer.Shapes();
  file.m_Lists = writer.Lists();
  file.m_Blobs = writer.Blobs();
  writer.AddShape("square", 2);
  writer.AddShape("dot", -1);
  // Bools are stored as 0 and 1, unsigned ints as the ints of their bits.
  file.m_Ints = ListFileWriter::Fill(db.ArrayInt(1, -1, 0), std::vector<int>{1, 0, 1, 7, -7, 0, 2147483647, -1});
  file.m_Doubles = ListFileWriter::Fill(db.ArrayDouble(1, -1, 0), std::vector<double>{});
  file.m_Objects = writer.AddObjectList({{0, static_cast<int>(kShape)}, {}, {1, static_cast<int>(kShape)}});
  file.m_Strings = ListFileWriter::Fill(db.ArrayString(1, -1, 0), std::vector<cow_String>{"north", "south"});
  file.m_Floats = ListFileWriter::Fill(db.ArrayFloat(1, -1, 0), std::vector<float>{0.5f});
  rfm_Table old = db.Table("##StringArray", -1, -1);
  for (char const* text : {"east", "west"}) old.NewRow().WriteFieldString(rfm_FieldHandle("Data", -1), text);
  old.Flush();
  file.m_OldStrings = old.Handle().Value();
  file.m_One = writer.AddObjectList({{1, static_cast<int>(kShape)}});
  int const none = ListFileWriter::kNoValue;
  for (auto [handle, columns] : std::vector<std::pair<int, int>>{{file.m_Ints, 2},
                                                                 {file.m_Doubles, none},
                                                                 {file.m_Objects, 1},
                                                                 {file.m_Strings, 1},
                                                                 {file.m_Floats, 1},
                                                                 {none, none},
                                                                 {file.m_OldStrings, 1},
                                                                 {file.m_One, 1}}) {
    writer.AddList(handle, columns);
  }
  file.m_Bytes = writer.AddSpace(kBlobBytes);
  file.m_Byte = writer.AddSpace(1);
  writer.AddBlob(file.m_Bytes);
  writer.AddBlob(file.m_Byte);
  return file;
}

// A file whose lists are damaged:
//   ##InternalList  row  Target#Handle                  Target#Columns
//                     0  kNowhere                       1
//                     1  the header's stream (4)        no data
//                     2  Shape's table                  1
//                     3  m_Ints, 2 ints                 0
//                     4  m_Bad, a ##List                -3
//                     5  m_Bad again                    1
//                     6  m_Space, a space               1
//                     7  -5                             1
//   m_Bad rows: Shape 0; Shape 2 (past the end); 0 of an unknown class;
//     null; 5 of class 1; ##InternalList 99 (past the end); -1 of Shape
//   ##InternalBlob  row 0: kNowhere; row 1: m_Space
//   Shape           two rows, their outlines null
struct DamagedFile {
  std::string m_Name;
  int m_Shapes = 0, m_Lists = 0, m_Blobs = 0;
  int m_Ints = 0, m_Bad = 0, m_Space = 0;
};

DamagedFile MakeDamagedFile(zqa_TestDir const& dir) {
  DamagedFile file;
  cow_String name = dir.File("damaged.zdb");
  file.m_Name = name.CStr();
  ListFileWriter writer(name);
  file.m_Shapes = writer.Shapes();
  file.m_Lists = writer.Lists();
  file.m_Blobs = writer.Blobs();
  writer.AddShape("square", -1);
  writer.AddShape("dot", -1);
  file.m_Ints = ListFileWriter::Fill(writer.Database().ArrayInt(1, -1, 0), std::vector<int>{3, 4});
  int const shape = static_cast<int>(kShape);
  file.m_Bad = writer.AddObjectList({{0, shape},
                                     {2, shape},
                                     {0, static_cast<int>(kUnknown)},
                                     {},
                                     {5, static_cast<int>(kRomNoClass)},
                                     {99, static_cast<int>(kRomInternalListClass)},
                                     {-1, shape}});
  file.m_Space = writer.AddSpace(16);
  int const none = ListFileWriter::kNoValue;
  for (auto [handle, columns] : std::vector<std::pair<int, int>>{{kNowhere, 1},
                                                                 {4, none},
                                                                 {file.m_Shapes, 1},
                                                                 {file.m_Ints, 0},
                                                                 {file.m_Bad, -3},
                                                                 {file.m_Bad, 1},
                                                                 {file.m_Space, 1},
                                                                 {-5, 1}}) {
    writer.AddList(handle, columns);
  }
  writer.AddBlob(kNowhere);
  writer.AddBlob(file.m_Space);
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

// "  row N: Target#Columns=C Target#Handle=H (WHAT)"
std::string ListRow(int number, std::string const& columns, int handle, std::string const& what) {
  return "  row " + std::to_string(number) + ": Target#Columns=" + columns + " Target#Handle=" +
         std::to_string(handle) + " (" + what + ")\n";
}

std::vector<json> RowValues(json const& object) {
  std::vector<json> values;
  for (json const& row : object.at("rows")) values.push_back(row.at("values"));
  return values;
}

}  // namespace

TEST(ZdbListsTest, DumpShowsEachListsLengthAndKindAndEachBlobsBytesAndCheckFindsThemClean) {
  zqa_TestDir dir;
  GoodFile file = MakeGoodFile(dir);
  EXPECT_EQ(Heading("##InternalList", file.m_Lists, 8) + ListRow(0, "2", file.m_Ints, "8 int") +
                ListRow(1, "absent", file.m_Doubles, "0 double") + ListRow(2, "1", file.m_Objects, "3 objects") +
                ListRow(3, "1", file.m_Strings, "2 string") + ListRow(4, "1", file.m_Floats, "1 float") +
                "  row 5: Target#Columns=absent Target#Handle=absent\n" +
                ListRow(6, "1", file.m_OldStrings, "2 string") + ListRow(7, "1", file.m_One, "1 object"),
            Dump(file.m_Name, file.m_Lists));
  EXPECT_EQ(Heading("##InternalBlob", file.m_Blobs, 2) + "  row 0: Target#Handle=" + std::to_string(file.m_Bytes) +
                " (1200 bytes)\n" + "  row 1: Target#Handle=" + std::to_string(file.m_Byte) + " (1 byte)\n",
            Dump(file.m_Name, file.m_Blobs));
  // The owner's reference to its list is a reference like any other.
  EXPECT_EQ(Heading("Shape", file.m_Shapes, 2) + "  row 0: Name=\"square\" Outline=##InternalList[2]\n" +
                "  row 1: Name=\"dot\" Outline=null\n",
            Dump(file.m_Name, file.m_Shapes));

  // JSON: the target field's type says what its value is, an object of numbers.
  json lists = json::parse(Dump(file.m_Name, file.m_Lists, true)).at("objects").at(0);
  EXPECT_EQ(json::parse(R"([{"name":"Target#Columns","type":"int"},{"name":"Target#Handle","type":"list"}])"),
            lists.at("fields"));
  auto target = [](int handle, int length, char const* kind) {
    return json{{"handle", handle}, {"length", length}, {"kind", kind}};
  };
  std::vector<json> expected = {
      {{"Target#Columns", 2}, {"Target#Handle", target(file.m_Ints, 8, "int")}},
      {{"Target#Columns", nullptr}, {"Target#Handle", target(file.m_Doubles, 0, "double")}},
      {{"Target#Columns", 1}, {"Target#Handle", target(file.m_Objects, 3, "objects")}},
      {{"Target#Columns", 1}, {"Target#Handle", target(file.m_Strings, 2, "string")}},
      {{"Target#Columns", 1}, {"Target#Handle", target(file.m_Floats, 1, "float")}},
      {{"Target#Columns", nullptr}, {"Target#Handle", nullptr}},
      {{"Target#Columns", 1}, {"Target#Handle", target(file.m_OldStrings, 2, "string")}},
      {{"Target#Columns", 1}, {"Target#Handle", target(file.m_One, 1, "objects")}},
  };
  EXPECT_EQ(expected, RowValues(lists));
  json blobs = json::parse(Dump(file.m_Name, file.m_Blobs, true)).at("objects").at(0);
  EXPECT_EQ(json::parse(R"([{"name":"Target#Handle","type":"blob"}])"), blobs.at("fields"));
  EXPECT_EQ((std::vector<json>{{{"Target#Handle", target(file.m_Bytes, kBlobBytes, "bytes")}},
                               {{"Target#Handle", target(file.m_Byte, 1, "bytes")}}}),
            RowValues(blobs));

  zdb_Run check = RunZdb({"check", file.m_Name});
  EXPECT_EQ(0, check.m_Status) << check.m_Out;
  EXPECT_EQ(file.m_Name + ": no problems found (plain file, 17 objects: 4 arrays, 5 spaces, 1 stream, 7 tables; " +
                "object header (tagged stream), 3 classes)\n",
            check.m_Out);
}

TEST(ZdbListsTest, DumpByHandleShowsAListsStoreWithItsNullElements) {
  zqa_TestDir dir;
  GoodFile file = MakeGoodFile(dir);
  EXPECT_EQ("int array at handle " + std::to_string(file.m_Ints) +
                ": 8 rows of 1\n  row 0: 1\n  row 1: 0\n  row 2: 1\n  row 3: 7\n  row 4: -7\n  row 5: 0\n"
                "  row 6: 2147483647\n  row 7: -1\n",
            Dump(file.m_Name, file.m_Ints));
  EXPECT_EQ("double array at handle " + std::to_string(file.m_Doubles) + ": 0 rows of 1\n",
            Dump(file.m_Name, file.m_Doubles));
  EXPECT_EQ(Heading("##List", file.m_Objects, 3) + "  row 0: OID=Shape[0]\n  row 1: OID=null\n  row 2: OID=Shape[1]\n",
            Dump(file.m_Name, file.m_Objects));
  EXPECT_EQ(Heading("##StringArray", file.m_OldStrings, 2) + "  row 0: Data=\"east\"\n  row 1: Data=\"west\"\n",
            Dump(file.m_Name, file.m_OldStrings));
  json objects = json::parse(Dump(file.m_Name, file.m_Objects, true)).at("objects").at(0);
  EXPECT_EQ((std::vector<json>{{{"OID", "Shape[0]"}}, {{"OID", nullptr}}, {{"OID", "Shape[1]"}}}),
            RowValues(objects));
}

TEST(ZdbListsTest, DumpSaysWhatABadListHandleNamesInsteadOfFailing) {
  zqa_TestDir dir;
  DamagedFile file = MakeDamagedFile(dir);
  EXPECT_EQ(Heading("##InternalList", file.m_Lists, 8) + ListRow(0, "1", kNowhere, "names no object") +
                ListRow(1, "absent", 4, "names a stream, not a list") +
                ListRow(2, "1", file.m_Shapes, "names table \"Shape\", not a list") +
                ListRow(3, "0", file.m_Ints, "2 int") + ListRow(4, "-3", file.m_Bad, "7 objects") +
                ListRow(5, "1", file.m_Bad, "7 objects") +
                ListRow(6, "1", file.m_Space, "names a space, not a list") +
                ListRow(7, "1", -5, "names no object"),
            Dump(file.m_Name, file.m_Lists));
  EXPECT_EQ(Heading("##InternalBlob", file.m_Blobs, 2) + "  row 0: Target#Handle=999 (names no object)\n" +
                "  row 1: Target#Handle=" + std::to_string(file.m_Space) + " (16 bytes)\n",
            Dump(file.m_Name, file.m_Blobs));

  json lists = json::parse(Dump(file.m_Name, file.m_Lists, true)).at("objects").at(0);
  std::vector<json> rows = RowValues(lists);
  ASSERT_EQ(8u, rows.size());
  EXPECT_EQ((json{{"handle", kNowhere}, {"problem", "names no object"}}), rows[0].at("Target#Handle"));
  EXPECT_EQ((json{{"handle", file.m_Shapes}, {"problem", "names table \"Shape\", not a list"}}),
            rows[2].at("Target#Handle"));
  EXPECT_FALSE(lists.contains("error"));
}

TEST(ZdbListsTest, CheckReportsBadListHandlesColumnCountsAndListElementsByTableAndRow) {
  zqa_TestDir dir;
  DamagedFile file = MakeDamagedFile(dir);
  zdb_Run run = RunZdb({"check", file.m_Name});
  EXPECT_EQ(1, run.m_Status);
  EXPECT_EQ("", run.m_Err);
  std::string const lists = "table \"##InternalList\" at handle " + std::to_string(file.m_Lists) + ": ";
  std::string const bad = "table \"##List\" at handle " + std::to_string(file.m_Bad) + ": ";
  std::string const blobs = "table \"##InternalBlob\" at handle " + std::to_string(file.m_Blobs) + ": ";
  std::string const handle = "\"Target#Handle\": ";
  // The list table's lines stop at five, and the rest are counted at the
  // end; the ##List that two lists share is checked once.
  std::vector<std::string> expected = {
      lists + "row 0, " + handle + "999 names no object",
      lists + "row 1, " + handle + "4 names a stream, not a list",
      lists + "row 2, " + handle + std::to_string(file.m_Shapes) + " names table \"Shape\", not a list",
      lists + "row 3, \"Target#Columns\": 0 elements per row; a list has 1 or more",
      lists + "row 4, \"Target#Columns\": -3 elements per row; a list has 1 or more",
      bad + "row 1, \"OID\": Shape[2] is past the end of table \"Shape\" at handle " + std::to_string(file.m_Shapes) +
          ", which has 2 rows",
      bad + "row 2, \"OID\": class id 0x00099999 names no class of the catalogue",
      bad + "row 4, \"OID\": class id 0x00000001 means no class, but its oid 5 is not negative",
      bad + "row 5, \"OID\": ##InternalList[99] is past the end of table \"##InternalList\" at handle " +
          std::to_string(file.m_Lists) + ", which has 8 rows",
      blobs + "row 0, " + handle + "999 names no object",
      lists + "2 more problems of this kind",
      file.m_Name + ": 11 problems (plain file, 11 objects: 1 array, 4 spaces, 1 stream, 5 tables; " +
          "object header (tagged stream), 3 classes)",
  };
  EXPECT_EQ(expected, Lines(run.m_Out));
}

TEST(ZdbListsTest, CheckReportsAListWhoseArrayHoldsMoreThanOneFieldARow) {
  zqa_TestDir dir;
  cow_String name = dir.File("pairs.zdb");
  int lists = 0, flat = 0, pairs = 0;
  {
    ListFileWriter writer(name);
    lists = writer.Lists();
    // Two elements a logical row, stored one a row of the array as the
    // object layer stores them, and in three rows of two, which it refuses.
    flat = ListFileWriter::Fill(writer.Database().ArrayInt(1, -1, 0), std::vector<int>{1, 2, 3, 4});
    pairs = ListFileWriter::Fill(writer.Database().ArrayInt(2, -1, 0), std::vector<int>{1, 2, 3, 4, 5, 6});
    writer.AddList(flat, 2);
    writer.AddList(pairs, 2);
  }
  // The dump shows every element the array holds all the same.
  EXPECT_EQ(Heading("##InternalList", lists, 2) + ListRow(0, "2", flat, "4 int") + ListRow(1, "2", pairs, "6 int"),
            Dump(name.CStr(), lists));
  zdb_Run run = RunZdb({"check", name.CStr()});
  EXPECT_EQ(1, run.m_Status);
  EXPECT_EQ((std::vector<std::string>{
                "table \"##InternalList\" at handle " + std::to_string(lists) + ": row 1, \"Target#Handle\": " +
                    std::to_string(pairs) + " names an array of 2 fields a row; a list's has 1",
                std::string(name.CStr()) + ": 1 problem (plain file, 10 objects: 2 arrays, 3 spaces, 1 stream, " +
                    "4 tables; object header (tagged stream), 3 classes)"}),
            Lines(run.m_Out));
}
