// zdb on the references of the object layer's files: dump shows a reference
// as one value, its class and row; check finds references that name no
// class or no row. The files are the object layer's sample, written through
// a transporter, and one made by hand (zdb_ObjectFileWriter) with every kind
// of reference, good and bad.

#include "rfm_File.h"
#include "rom_HeaderLayout.h"
#include "rom_SampleTransporterFile.h"
#include "rom_TestClasses.h"
#include "zdb_ObjectFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::json;

constexpr unsigned kShape = 0x00010001;
constexpr unsigned kCircle = 0x00010002;
constexpr unsigned kOwner = 0x00060001;
constexpr unsigned kOddName = 0x00070001;
constexpr unsigned kWreck = 0x00080001;
constexpr unsigned kUnknown = 0x00099999;
constexpr int kWreckRows = 7;

// The hand-made file and the handles of its tables:
//   Shape   2 rows
//   Circle  derives from Shape; ##BaseClassOID 0, 1, 2 (past Shape's end), -1
//   Owner   references Other and Part:
//     row  Other                        Part
//       0  no data                      Shape 1
//       1  Circle 2                     -1, class 1 (the null reference)
//       2  -1, unknown class            0, unknown class
//       3  -1, Shape                    Shape 5 (past the end)
//       4  ##InternalList 0 (no table)  class 1 with oid 3
//       5  "Odd Name" 0                 -1, ##InternalMap
//       6  oid 1, no class id           no oid, Shape
//   Odd Name  1 row
//   Wreck   kWreckRows rows, each referring to the unknown class
//   ##List  a collection's rows: Shape 0; -1, Circle; 7, unknown class
//   Pairs   an application's table with fields named as a reference's
struct ReferenceFile {
  std::string m_Name;
  int m_Shape = 0;
  int m_Circle = 0;
  int m_Owner = 0;
  int m_Wreck = 0;
  int m_List = 0;
  int m_Pairs = 0;
};

ReferenceFile MakeReferenceFile(zqa_TestDir const& dir) {
  ReferenceFile file;
  cow_String name = dir.File("references.zdb");
  file.m_Name = name.CStr();
  zdb_ObjectFileWriter writer(name, zdb_HeaderForm::TaggedStream);
  writer.WriteFullHeader();
  file.m_Shape = writer.AddClass(kShape, "Shape", kRomNoClass, 1, 2);

  rfm_Table circle = writer.AddReferenceClass(kCircle, "Circle", kShape, {});
  file.m_Circle = circle.Handle().Value();
  for (int base : {0, 1, 2, -1}) circle.NewRow().WriteFieldInt(rfm_FieldHandle(kRomBaseClassOidName, -1), base);

  rfm_Table owner = writer.AddReferenceClass(kOwner, "Owner", kRomNoClass, {"Other", "Part"});
  file.m_Owner = owner.Handle().Value();
  WriteReference(owner.NewRow(), "Part", 1, kShape);
  struct Pair {
    int m_Oid;
    unsigned m_ClassId;
  };
  Pair const rows[][2] = {
      {{2, kCircle}, {-1, kRomNoClass}},
      {{-1, kUnknown}, {0, kUnknown}},
      {{-1, kShape}, {5, kShape}},
      {{0, kRomInternalListClass}, {3, kRomNoClass}},
      {{0, kOddName}, {-1, kRomInternalMapClass}},
  };
  for (auto const& [other, part] : rows) {
    rfm_Row row = owner.NewRow();
    WriteReference(row, "Other", other.m_Oid, other.m_ClassId);
    WriteReference(row, "Part", part.m_Oid, part.m_ClassId);
  }
  // The object layer reads a pair either of whose fields holds no data as null.
  rfm_Row halves = owner.NewRow();
  halves.WriteFieldInt(rfm_FieldHandle((std::string("Other") + kRomOidSuffix).c_str(), -1), 1);
  halves.WriteFieldInt(rfm_FieldHandle((std::string("Part") + kRomClassIdSuffix).c_str(), -1), kShape);
  writer.AddClass(kOddName, "Odd Name", kRomNoClass, 1, 1);

  rfm_Table wreck = writer.AddReferenceClass(kWreck, "Wreck", kRomNoClass, {"Link"});
  file.m_Wreck = wreck.Handle().Value();
  for (int i = 0; i < kWreckRows; ++i) WriteReference(wreck.NewRow(), "Link", i, kUnknown);

  rfm_TableMetadata list("##List", 0);
  rfm_FieldHandle oid(list.DefineIntField(kRomElementOidName));
  rfm_FieldHandle classId(list.DefineIntField(kRomElementClassIdName));
  rfm_Table elements = writer.Database().Table(list, -1, -1);
  file.m_List = elements.Handle().Value();
  for (Pair element : {Pair{0, kShape}, Pair{-1, kCircle}, Pair{7, kUnknown}}) {
    rfm_Row row = elements.NewRow();
    row.WriteFieldInt(oid, element.m_Oid);
    row.WriteFieldInt(classId, static_cast<int>(element.m_ClassId));
  }

  rfm_TableMetadata pairs("Pairs", 1);
  pairs.DefineIntField((std::string("a") + kRomOidSuffix).c_str());
  pairs.DefineIntField((std::string("a") + kRomClassIdSuffix).c_str());
  rfm_Table application = writer.Database().Table(pairs, -1, -1);
  file.m_Pairs = application.Handle().Value();
  WriteReference(application.NewRow(), "a", 0, kShape);
  return file;
}

std::string Dump(std::string const& name, int handle, bool asJson = false) {
  std::vector<std::string> arguments = {"dump", name, "--handle", std::to_string(handle)};
  if (asJson) arguments.push_back("--json");
  zdb_Run run = RunZdb(arguments);
  EXPECT_EQ(0, run.m_Status) << run.m_Err;
  return run.m_Out;
}

std::string Heading(char const* table, int handle, int rows) {
  return std::string("table \"") + table + "\" at handle " + std::to_string(handle) + ": " + std::to_string(rows) +
         (rows == 1 ? " row\n" : " rows\n");
}

}  // namespace

TEST(ZdbReferencesTest, ATransporterFileDumpsEachReferenceAsItsClassAndRowAndChecksClean) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  rom_SampleTransporterFile::Register(registrar);
  cow_String name = dir.File("sample.zdb");
  rom_SampleTransporterFile::Contents contents =
      rom_SampleTransporterFile::Write(registrar, rfm_File::Open(name, utl_FileAccessCreate, false));
  auto handleOf = [&](unsigned classId) {
    for (auto const& table : contents.m_Tables) {
      if (table.m_ClassId == classId) return table.m_Handle.Value();
    }
    ADD_FAILURE() << classId;
    return 0;
  };
  int const node = handleOf(rom_TestClasses::kNode);
  int const quad = handleOf(rom_TestClasses::kQuad4);

  // Node's Material#ClassID and Material#OID make the one column Material;
  // the last node's material is the null reference.
  EXPECT_EQ(Heading("Node", node, 6) +
                "  row 0: Id=100 Material=Material[0] X=0 Y=0 Z=0\n"
                "  row 1: Id=101 Material=Material[1] X=0.5 Y=-1.25 Z=1\n"
                "  row 2: Id=102 Material=Material[0] X=1 Y=-2.5 Z=absent\n"
                "  row 3: Id=103 Material=Material[1] X=1.5 Y=-3.75 Z=9\n"
                "  row 4: Id=104 Material=Material[0] X=2 Y=-5 Z=16\n"
                "  row 5: Id=105 Material=null X=2.5 Y=-6.25 Z=absent\n",
            Dump(name.CStr(), node));
  EXPECT_EQ(Heading("Quad4", quad, 1) +
                "  row 0: ##BaseClassOID=Element[2] Nodes#Columns=absent Nodes#Handle=absent Thickness=0.25\n",
            Dump(name.CStr(), quad));

  // The model the transporter wrote as objects checks clean too.
  zdb_Run check = RunZdb({"check", name.CStr()});
  EXPECT_EQ(0, check.m_Status);
  EXPECT_EQ(std::string(name.CStr()) + ": no problems found (plain file, 68 objects: 25 arrays, 7 spaces, 1 stream, " +
                "35 tables; object header (tagged stream), 14 classes)\n",
            check.m_Out);
}

TEST(ZdbReferencesTest, DumpShowsNullsUnknownClassesAndCollectionRowsAndLeavesOtherTablesAsFields) {
  zqa_TestDir dir;
  ReferenceFile file = MakeReferenceFile(dir);
  EXPECT_EQ(Heading("Owner", file.m_Owner, 7) +
                "  row 0: Other=null Part=Shape[1]\n"
                "  row 1: Other=Circle[2] Part=null\n"
                "  row 2: Other=null Part=0x00099999[0]\n"
                "  row 3: Other=null Part=Shape[5]\n"
                "  row 4: Other=##InternalList[0] Part=0x00000001[3]\n"
                "  row 5: Other=\"Odd Name\"[0] Part=null\n"
                "  row 6: Other=null Part=null\n",
            Dump(file.m_Name, file.m_Owner));
  EXPECT_EQ(Heading("Circle", file.m_Circle, 4) +
                "  row 0: ##BaseClassOID=Shape[0]\n"
                "  row 1: ##BaseClassOID=Shape[1]\n"
                "  row 2: ##BaseClassOID=Shape[2]\n"
                "  row 3: ##BaseClassOID=null\n",
            Dump(file.m_Name, file.m_Circle));
  EXPECT_EQ(Heading("##List", file.m_List, 3) +
                "  row 0: OID=Shape[0]\n"
                "  row 1: OID=null\n"
                "  row 2: OID=0x00099999[7]\n",
            Dump(file.m_Name, file.m_List));
  EXPECT_EQ(Heading("Pairs", file.m_Pairs, 1) + "  row 0: a#ClassID=65537 a#OID=0\n", Dump(file.m_Name, file.m_Pairs));

  json owner = json::parse(Dump(file.m_Name, file.m_Owner, true)).at("objects").at(0);
  EXPECT_EQ(json::parse(R"([{"name":"Other","type":"reference"},{"name":"Part","type":"reference"}])"),
            owner.at("fields"));
  json rows = json::array();
  for (json const& row : owner.at("rows")) rows.push_back(row.at("values"));
  EXPECT_EQ(json::parse(R"([{"Other":null,"Part":"Shape[1]"},{"Other":"Circle[2]","Part":null},)"
                        R"({"Other":null,"Part":"0x00099999[0]"},{"Other":null,"Part":"Shape[5]"},)"
                        R"({"Other":"##InternalList[0]","Part":"0x00000001[3]"},)"
                        R"({"Other":"\"Odd Name\"[0]","Part":null},{"Other":null,"Part":null}])"),
            rows);
}

TEST(ZdbReferencesTest, CheckReportsEachBadReferenceOfTheClassTablesByTableRowAndColumn) {
  zqa_TestDir dir;
  ReferenceFile file = MakeReferenceFile(dir);
  zdb_Run run = RunZdb({"check", file.m_Name});
  EXPECT_EQ(1, run.m_Status);
  EXPECT_EQ("", run.m_Err);
  std::string const circle = "table \"Circle\" at handle " + std::to_string(file.m_Circle) + ": ";
  std::string const owner = "table \"Owner\" at handle " + std::to_string(file.m_Owner) + ": ";
  std::string const wreck = "table \"Wreck\" at handle " + std::to_string(file.m_Wreck) + ": ";
  std::string const pastShape =
      " is past the end of table \"Shape\" at handle " + std::to_string(file.m_Shape) + ", which has 2 rows";
  std::string const unknown = "class id 0x00099999 names no class of the catalogue";
  // A table's lines stop at five, and the rest are counted at the end; the
  // collection's unknown class and the application's table are not checked.
  std::vector<std::string> expected = {
      circle + "row 2, \"##BaseClassOID\": Shape[2]" + pastShape,
      owner + "row 2, \"Other\": " + unknown,
      owner + "row 2, \"Part\": " + unknown,
      owner + "row 3, \"Part\": Shape[5]" + pastShape,
      owner + "row 4, \"Other\": ##InternalList[0] lies in no table: the catalogue has no class 0x00230001",
      owner + "row 4, \"Part\": class id 0x00000001 means no class, but its oid 3 is not negative",
  };
  for (int row = 0; row < 5; ++row) expected.push_back(wreck + "row " + std::to_string(row) + ", \"Link\": " + unknown);
  expected.push_back(wreck + "2 more problems of this kind");
  expected.push_back(file.m_Name + ": 12 problems (plain file, 12 objects: 3 spaces, 1 stream, 8 tables; " +
                     "object header (tagged stream), 5 classes)");
  EXPECT_EQ(expected, Lines(run.m_Out));
}
