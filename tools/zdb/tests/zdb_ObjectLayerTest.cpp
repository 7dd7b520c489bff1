// zdb on files of the object layer: the header in info, the catalogue in
// classes, and the object layer's problems in check. The files are made by
// hand through the record store (zdb_ObjectFileWriter).

#include "rfm_Array.h"
#include "rom_HeaderLayout.h"
#include "zdb_ObjectFiles.h"
#include "zdb_TestFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

constexpr unsigned kShape = 0x00010001;
constexpr unsigned kCircle = 0x00010002;
constexpr unsigned kMesh = 0x00020001;

// Shape, a root class of version 3 with 2 objects; Circle, derived from
// Shape, version 1, 3 objects; Mesh, a root class whose row holds no
// version, 1 object. Their tables follow the catalogue.
void AddGoodClasses(zdb_ObjectFileWriter const& writer) {
  writer.AddClass(kShape, "Shape", kRomNoClass, 3, 2);
  writer.AddClass(kCircle, "Circle", kShape, 1, 3);
  writer.AddClass(kMesh, "Mesh", kRomNoClass, kNoVersion, 1);
}

std::string MakeGoodFile(zqa_TestDir const& dir, char const* file, zdb_HeaderForm form,
                         rfm_TestFileKind kind = rfm_TestFileKind::Plain) {
  cow_String name = dir.File(file);
  zdb_ObjectFileWriter writer(name, form, true, kind);
  if (form == zdb_HeaderForm::TaggedStream) writer.WriteFullHeader();
  AddGoodClasses(writer);
  return name.CStr();
}

// The lines of zdb info between the object count and the library's statistics.
std::vector<std::string> HeaderLines(std::string const& name) {
  zdb_Run run = RunZdb({"info", name});
  EXPECT_EQ(0, run.m_Status) << run.m_Err;
  std::vector<std::string> lines = Lines(run.m_Out);
  auto objects =
      std::find_if(lines.begin(), lines.end(), [](std::string const& line) { return line.rfind("objects ", 0) == 0; });
  auto statistics = std::find_if(lines.begin(), lines.end(),
                                 [](std::string const& line) { return line.rfind("Block 0 Size", 0) == 0; });
  if (objects == lines.end() || statistics == lines.end() || statistics < objects) {
    ADD_FAILURE() << run.m_Out;
    return {};
  }
  return std::vector<std::string>(objects + 1, statistics);
}

// The problem lines of zdb check, which must fail the file and end with a
// summary naming it and counting them.
std::vector<std::string> CheckProblems(std::string const& name) {
  zdb_Run run = RunZdb({"check", name});
  EXPECT_EQ(1, run.m_Status) << run.m_Out;
  EXPECT_EQ("", run.m_Err);
  std::vector<std::string> lines = Lines(run.m_Out);
  if (lines.empty()) return lines;
  std::string summary = lines.back();
  lines.pop_back();
  EXPECT_EQ(0u, summary.find(name + ": " + std::to_string(lines.size()) + " problem")) << summary;
  return lines;
}

std::string Quoted(char const* text) { return std::string("\"") + text + "\""; }

}  // namespace

TEST(ZdbObjectLayerTest, InfoShowsTheHeaderOfEachFormWithTheItemsItHolds) {
  zqa_TestDir dir;
  EXPECT_EQ(std::vector<std::string>({"header       tagged stream, version 818", "release      2024.1.3, type 0",
                                      "catalogue    handle 5, 3 classes"}),
            HeaderLines(MakeGoodFile(dir, "stream.zdb", zdb_HeaderForm::TaggedStream)));
  EXPECT_EQ(std::vector<std::string>({"header       table", "catalogue    handle 4, 3 classes"}),
            HeaderLines(MakeGoodFile(dir, "table.zdb", zdb_HeaderForm::Table)));
  EXPECT_EQ(std::vector<std::string>({"header       version space, version 818", "catalogue    handle 5, 3 classes"}),
            HeaderLines(MakeGoodFile(dir, "space.zdb", zdb_HeaderForm::VersionSpace)));

  // A header leaves out the version numbers that are 0; a release type
  // alone is shown alone.
  cow_String partial = dir.File("partial.zdb");
  {
    zdb_ObjectFileWriter writer(partial, zdb_HeaderForm::TaggedStream);
    writer.Root().WriteHandle(kRomTagCatalog, writer.Catalogue().Handle());
    writer.Root().WriteInt(kRomTagReleaseType, 2);
  }
  EXPECT_EQ(std::vector<std::string>(
                {"header       tagged stream", "release      type 2", "catalogue    handle 5, 0 classes"}),
            HeaderLines(partial.CStr()));
  cow_String minorOnly = dir.File("minor.zdb");
  {
    zdb_ObjectFileWriter writer(minorOnly, zdb_HeaderForm::TaggedStream);
    writer.Root().WriteHandle(kRomTagCatalog, writer.Catalogue().Handle());
    writer.Root().WriteInt(kRomTagMinorVersion, 7);
    writer.AddClass(kShape, "Shape", kRomNoClass, 1, 0);
  }
  EXPECT_EQ(
      std::vector<std::string>({"header       tagged stream", "release      0.7.0", "catalogue    handle 5, 1 class"}),
      HeaderLines(minorOnly.CStr()));

  // A damaged header shows what can be read of it, and sends the reader on.
  cow_String damaged = dir.File("damaged.zdb");
  {
    zdb_ObjectFileWriter writer(damaged, zdb_HeaderForm::TaggedStream);
    writer.Root().WriteHandle(kRomTagCatalog, rfm_Handle(999));
    writer.Root().WriteDouble(kRomTagVersion, 818.0);
  }
  EXPECT_EQ(std::vector<std::string>({"header       tagged stream; damaged, see zdb check",
                                      "catalogue    handle 999, which names no object"}),
            HeaderLines(damaged.CStr()));
}

TEST(ZdbObjectLayerTest, ClassesListsEachRowWithItsBaseByNameAndItsTablesRows) {
  zqa_TestDir dir;
  std::string name = MakeGoodFile(dir, "stream.zdb", zdb_HeaderForm::TaggedStream);
  zdb_Run run = RunZdb({"classes", name});
  EXPECT_EQ(0, run.m_Status) << run.m_Err;
  EXPECT_EQ("", run.m_Err);
  EXPECT_EQ(
      "class id    name    version  base class       table        rows\n"
      "0x00010001  Shape         3  -                    6           2\n"
      "0x00010002  Circle        1  Shape                7           3\n"
      "0x00020001  Mesh          -  -                    8           1\n",
      run.m_Out);

  // A catalogue of an old format has no version field; a base class that
  // the catalogue lacks is shown by its id, and widens its column.
  cow_String old = dir.File("old.zdb");
  {
    zdb_ObjectFileWriter writer(old, zdb_HeaderForm::Table, false);
    writer.AddClass(0x00ABCDEF, "LongerClassName", 0x00099999, 4, 0);
  }
  run = RunZdb({"classes", old.CStr()});
  EXPECT_EQ(0, run.m_Status) << run.m_Err;
  EXPECT_EQ(
      "class id    name             version  base class       table        rows\n"
      "0x00ABCDEF  LongerClassName        -  0x00099999           5           0\n",
      run.m_Out);

  // A table handle that names no table is listed, and its reason fails the command.
  cow_String missing = dir.File("missing.zdb");
  {
    zdb_ObjectFileWriter writer(missing, zdb_HeaderForm::VersionSpace);
    writer.AddCatalogueRow(kShape, 999, "Shape", kRomNoClass, 2);
  }
  run = RunZdb({"classes", missing.CStr()});
  EXPECT_EQ(1, run.m_Status);
  EXPECT_EQ(
      "class id    name   version  base class       table        rows\n"
      "0x00010001  Shape        2  -                  999           ?\n",
      run.m_Out);
  EXPECT_EQ("zdb classes: " + std::string(missing.CStr()) +
                ": class \"Shape\" (0x00010001): its table handle 999 names no object\n",
            run.m_Err);

  cow_String empty = dir.File("empty.zdb");
  { zdb_ObjectFileWriter writer(empty, zdb_HeaderForm::Table); }
  run = RunZdb({"classes", empty.CStr()});
  EXPECT_EQ(0, run.m_Status);
  EXPECT_EQ("no classes\n", run.m_Out);
}

TEST(ZdbObjectLayerTest, FilesWithoutTheCatalogueLayoutHaveNoObjectHeader) {
  zqa_TestDir dir;
  // The sample's root is an array; this file's root is a table of the
  // application, and its root in the demo's way a tagged stream.
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  cow_String rootTable = dir.File("root-table.zdb");
  cow_String rootStream = dir.File("root-stream.zdb");
  {
    rfm_Database database = CreateTestDatabase(rootTable);
    rfm_TableMetadata layout("Nodes", 1);
    layout.DefineIntField(kRomCatalogClassIdName);
    database.Table(layout, -1, -1).NewRow().WriteFieldInt(rfm_FieldHandle(0), 7);
  }
  {
    rfm_Database database = CreateTestDatabase(rootStream);
    rfm_TaggedStream stream = database.TaggedStream(0);
    stream.WriteHandle(kRomTagCatalog, rfm_Handle(4));
    stream.WriteString(kRomTagVersion, "run 7");
  }
  for (std::string const& name : {sample.m_Name, std::string(rootTable.CStr()), std::string(rootStream.CStr())}) {
    EXPECT_EQ(std::vector<std::string>(), HeaderLines(name)) << name;
    zdb_Run classes = RunZdb({"classes", name});
    EXPECT_EQ(1, classes.m_Status);
    EXPECT_EQ("", classes.m_Out);
    EXPECT_EQ("zdb classes: " + name + ": no object header: the file has no " + Quoted(kRomCatalogName) + " table\n",
              classes.m_Err);
    zdb_Run check = RunZdb({"check", name});
    EXPECT_EQ(0, check.m_Status) << check.m_Out;
    EXPECT_EQ(std::string::npos, check.m_Out.find("object header")) << check.m_Out;
  }
}

TEST(ZdbObjectLayerTest, CheckPassesAGoodFileOfEachFormAndSaysWhatItFound) {
  zqa_TestDir dir;
  struct Case {
    zdb_HeaderForm m_Form;
    rfm_TestFileKind m_Kind;
    char const* m_Found;
  };
  Case const cases[] = {
      {zdb_HeaderForm::TaggedStream, rfm_TestFileKind::Plain,
       "plain file, 8 objects: 3 spaces, 1 stream, 4 tables; object header (tagged stream), 3 classes"},
      {zdb_HeaderForm::TaggedStream, rfm_TestFileKind::Compressed,
       "compressed file, 8 objects: 3 spaces, 1 stream, 4 tables; object header (tagged stream), 3 classes"},
      {zdb_HeaderForm::Table, rfm_TestFileKind::Plain,
       "plain file, 7 objects: 3 spaces, 4 tables; object header (table), 3 classes"},
      {zdb_HeaderForm::VersionSpace, rfm_TestFileKind::Plain,
       "plain file, 8 objects: 4 spaces, 4 tables; object header (version space), 3 classes"},
  };
  int number = 0;
  for (Case const& c : cases) {
    std::string file = "good-" + std::to_string(++number) + ".zdb";
    std::string name = MakeGoodFile(dir, file.c_str(), c.m_Form, c.m_Kind);
    zdb_Run run = RunZdb({"check", name});
    EXPECT_EQ(0, run.m_Status) << run.m_Out;
    EXPECT_EQ(name + ": no problems found (" + c.m_Found + ")\n", run.m_Out);
  }
}

TEST(ZdbObjectLayerTest, CheckReportsEachProblemOfTheClassesOnceNamingTheClass) {
  zqa_TestDir dir;
  cow_String name = dir.File("classes.zdb");
  int points = 0;
  int box = 0;
  int ellipse = 0;
  int node = 0;
  {
    zdb_ObjectFileWriter writer(name, zdb_HeaderForm::TaggedStream);
    writer.WriteFullHeader();
    AddGoodClasses(writer);
    writer.AddClass(kShape, "Polygon", kRomNoClass, 1, 0);
    writer.AddCatalogueRow(0x00030001, 999, "Ghost", kRomNoClass, 1);
    rfm_Array<int, rfm_TypeInt> array = writer.Database().ArrayInt(1, -1, 0);
    points = array.Handle().Value();
    writer.AddCatalogueRow(0x00030002, points, "Points", kRomNoClass, 1);
    box = writer.AddTable("Square", false, 0);
    writer.AddCatalogueRow(0x00030003, box, "Box", kRomNoClass, 1);
    ellipse = writer.AddTable("Ellipse", false, 1);
    writer.AddCatalogueRow(0x00010004, ellipse, "Ellipse", kShape, 1);
    node = writer.AddTable("Node", true, 1);
    writer.AddCatalogueRow(0x00040001, node, "Node", kRomNoClass, 1);
    writer.AddClass(0x00010005, "Arc", 0x00099999, 1, 0);
    writer.AddClass(0x00050001, "Yin", 0x00050002, 1, 0);
    writer.AddClass(0x00050002, "Yang", 0x00050001, 1, 0);
    writer.AddClass(kRomNoClass, "Nothing", kRomNoClass, 1, 0);
  }
  std::string const field = Quoted(kRomBaseClassOidName);
  EXPECT_EQ(
      std::vector<std::string>({
          "class \"Shape\" (0x00010001): the catalogue has 2 rows for its class id",
          "class \"Ghost\" (0x00030001): its table handle 999 names no object",
          "class \"Points\" (0x00030002): its table handle " + std::to_string(points) +
              " names an int array, not a table",
          "class \"Box\" (0x00030003): its table at handle " + std::to_string(box) + " is named \"Square\"",
          "class \"Ellipse\" (0x00010004): it derives from class \"Shape\" (0x00010001), but its table at handle " +
              std::to_string(ellipse) + " has no field " + field,
          "class \"Node\" (0x00040001): it has no base class, but its table at handle " + std::to_string(node) +
              " has a field " + field,
          "class \"Arc\" (0x00010005): its base class 0x00099999 is not in the catalogue",
          "class \"Yin\" (0x00050001): its chain of base classes comes back to it",
          "class \"Yang\" (0x00050002): its chain of base classes comes back to it",
          "class \"Nothing\" (0x00000001): its class id is the one that means no class",
      }),
      CheckProblems(name.CStr()));
}

TEST(ZdbObjectLayerTest, CheckReportsEachProblemOfTheHeaderAndTheCatalogue) {
  zqa_TestDir dir;
  struct Case {
    char const* m_What;
    zdb_HeaderForm m_Form;
    std::function<void(zdb_ObjectFileWriter const&)> m_Make;
    std::vector<std::string> m_Problems;
  };
  std::string const header = "object header (handle 4): ";
  Case const cases[] = {
      {"an item of the wrong type",
       zdb_HeaderForm::TaggedStream,
       [](zdb_ObjectFileWriter const& writer) {
         writer.Root().WriteHandle(kRomTagCatalog, writer.Catalogue().Handle());
         writer.Root().WriteInt(kRomTagVersion, kRomHeaderVersion);
         writer.Root().WriteDouble(kRomTagMajorVersion, 2024.0);
       },
       {header + "item 2 (major version) is a double, not an int"}},
      {"a catalogue item that is no handle",
       zdb_HeaderForm::TaggedStream,
       [](zdb_ObjectFileWriter const& writer) { writer.Root().WriteInt(kRomTagCatalog, 5); },
       {header + "item 0 (catalogue) is an int, not a handle"}},
      {"no catalogue item",
       zdb_HeaderForm::TaggedStream,
       [](zdb_ObjectFileWriter const& writer) { writer.Root().WriteInt(kRomTagReleaseType, 1); },
       {header + "no item 0 names the catalogue"}},
      {"a catalogue handle that names no object",
       zdb_HeaderForm::TaggedStream,
       [](zdb_ObjectFileWriter const& writer) { writer.Root().WriteHandle(kRomTagCatalog, rfm_Handle(999)); },
       {header + "its catalogue handle 999 names no object"}},
      {"a catalogue handle that names a stream",
       zdb_HeaderForm::TaggedStream,
       [](zdb_ObjectFileWriter const& writer) { writer.Root().WriteHandle(kRomTagCatalog, rfm_Handle(4)); },
       {header + "its catalogue handle 4 names a stream, not a table"}},
      {"an unknown first word",
       zdb_HeaderForm::UnknownWord,
       [](zdb_ObjectFileWriter const&) {},
       {header + "its first word 0x12345678 begins no header: not 0xFAAFEBBE (tagged stream), 0xAAAFBBBE (table) "
                 "nor 0xFFAAEEBB (version space)"}},
      {"a catalogue of another name and fields",
       zdb_HeaderForm::TaggedStream,
       [](zdb_ObjectFileWriter const& writer) {
         rfm_TableMetadata layout("Classes", 1);
         layout.DefineDoubleField(kRomCatalogClassIdName);
         layout.DefineHandleField(kRomCatalogClassTableName);
         layout.DefineIntField(kRomCatalogBaseClassIdName);
         rfm_Table classes = writer.Database().Table(layout, -1, -1);
         writer.Root().WriteHandle(kRomTagCatalog, classes.Handle());
       },
       {"class catalogue (handle 6): it is named \"Classes\", not " + Quoted(kRomCatalogName),
        "class catalogue (handle 6): its field " + Quoted(kRomCatalogClassIdName) + " holds a double, not an int",
        "class catalogue (handle 6): it has no field " + Quoted(kRomCatalogClassNameName)}},
      {"a row that lacks values",
       zdb_HeaderForm::Table,
       [](zdb_ObjectFileWriter const& writer) {
         writer.Catalogue().NewRow().WriteFieldInt(rfm_FieldHandle(kRomCatalogClassIdName, -1), kShape);
       },
       {"class catalogue (handle 4): row 0 has no " + Quoted(kRomCatalogClassTableName),
        "class catalogue (handle 4): row 0 has no " + Quoted(kRomCatalogClassNameName),
        "class catalogue (handle 4): row 0 has no " + Quoted(kRomCatalogBaseClassIdName)}},
  };
  int number = 0;
  for (Case const& c : cases) {
    cow_String name = dir.File(("header-" + std::to_string(++number) + ".zdb").c_str());
    {
      zdb_ObjectFileWriter writer(name, c.m_Form);
      c.m_Make(writer);
    }
    EXPECT_EQ(c.m_Problems, CheckProblems(name.CStr())) << c.m_What;
  }
}
