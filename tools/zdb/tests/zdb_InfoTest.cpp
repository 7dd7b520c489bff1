#include "rfm_Table.h"
#include "rfm_TestBytes.h"
#include "zdb_TestFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using ZdbInfoTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(ZdbInfoTest);

std::string Kind(rfm_TestFileKind kind) { return kind == rfm_TestFileKind::Plain ? "plain" : "compressed"; }

}  // namespace

TEST_P(ZdbInfoTest, InfoTellsBlockZeroCountsAndTheLibrarysStatistics) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), GetParam());
  zdb_Run run = RunZdb({"info", sample.m_Name}, {"TZ=UTC"});
  ASSERT_EQ(0, run.m_Status) << run.m_Err;
  std::string expected = "file         " + sample.m_Name + "\n" + "kind         " + Kind(GetParam()) + "\n" +
                         "version      12\n"
                         "magic        TEST\n"
                         "description  zdb sample\n"
                         "created      2023-11-14 22:13:20 +0000 (1700000000)\n"
                         "flush count  2\n"
                         "groups       1\n"
                         "objects      8\n";
  rfm_Database database = OpenTestDatabase(sample.m_Name.c_str(), utl_FileAccessRead);
  cow_List<cow_String> statistics = database.GetDBStatistics();
  ASSERT_EQ(6, statistics.Length());
  for (int i = 0; i < statistics.Length(); ++i) expected += std::string(statistics[i].CStr()) + "\n";
  EXPECT_EQ(expected, run.m_Out);
}

TEST_P(ZdbInfoTest, ObjectsListsEveryObjectWithItsTypeSizesAndName) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), GetParam());
  zdb_Run run = RunZdb({"objects", sample.m_Name});
  ASSERT_EQ(0, run.m_Status) << run.m_Err;
  std::vector<std::string> lines = Lines(run.m_Out);
  ASSERT_EQ(9u, lines.size()) << run.m_Out;
  EXPECT_EQ("    handle  type                  length     allocation  extents  name", lines[0]);
  rfm_Database database = OpenTestDatabase(sample.m_Name.c_str(), utl_FileAccessRead);
  struct Expected {
    int m_Handle;
    char const* m_Type;
    char const* m_Name;
  };
  Expected const objects[] = {{1, "space", "string pool"},
                              {2, "space", "reserved"},
                              {3, "space", "table catalogue"},
                              {sample.m_Ints, "int array", ""},
                              {sample.m_Doubles, "double array", ""},
                              {sample.m_Strings, "string array", ""},
                              {sample.m_Stream, "stream", ""},
                              {sample.m_Parts, "table", "Parts"}};
  for (std::size_t i = 0; i < 8; ++i) {
    rfm_Handle handle(objects[i].m_Handle);
    rfm_Space space = database.Space(handle, -1);
    // Every linkage of these objects holds an extent, but for the reserved
    // handle 2's, which holds none.
    int extents = 0;
    std::sscanf(database.GetObjStatistics(handle).First().CStr(), "Linkage_Count=%d", &extents);
    char line[200];
    std::snprintf(line, sizeof line, "%10d  %-13s %14lld %14lld %8d  %s", objects[i].m_Handle, objects[i].m_Type,
                  static_cast<long long>(space.Length()), static_cast<long long>(space.Allocation()),
                  objects[i].m_Handle == 2 ? 0 : extents, objects[i].m_Name);
    EXPECT_EQ(line, lines[i + 1]);
  }
}

TEST(ZdbObjectsTest, ATableWhoseNameCannotBeReadIsListedAndItsReasonFailsTheCommand) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string bytes = zqa_ReadFileBytes(sample.m_Name.c_str());
  // The table's layout word names no record of the catalogue.
  PutStoredInt(bytes, FileOffsetOf(bytes, sample.m_Parts, 8), 999);
  zqa_WriteFileBytes(sample.m_Name.c_str(), bytes);
  zdb_Run run = RunZdb({"objects", sample.m_Name});
  EXPECT_EQ(1, run.m_Status);
  std::vector<std::string> lines = Lines(run.m_Out);
  ASSERT_EQ(9u, lines.size()) << run.m_Out;
  std::string const last = lines.back();
  std::string const head = std::to_string(sample.m_Parts) + "  table ";
  EXPECT_EQ(head, last.substr(last.find_first_not_of(' '), head.size()));
  EXPECT_EQ("  (unreadable)", last.substr(last.size() - 14));
  EXPECT_EQ(0u, run.m_Err.find("zdb objects: " + sample.m_Name + ": handle " + std::to_string(sample.m_Parts) + ": "))
      << run.m_Err;
}

TEST_P(ZdbInfoTest, TablesListsEachLayoutsFieldsInPositionOrderAndItsRows) {
  zqa_TestDir dir;
  cow_String name = dir.File("tables.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TableMetadata used("Used", 1);
    used.DefineIntField("zeta");
    used.DefineStringField("alpha");
    rfm_Table first = database.Table(used, -1, -1);
    rfm_Table second = database.Table(used, -1, -1);
    for (int i = 0; i < 3; ++i) first.NewRow().WriteFieldInt(rfm_FieldHandle(0), i);
    second.NewRow().WriteFieldInt(rfm_FieldHandle(0), 9);
    rfm_TableMetadata unused("Unused", 1);
    unused.DefineDoubleField("x");
    database.Bind(unused);
  }
  zdb_Run run = RunZdb({"tables", name.CStr()});
  ASSERT_EQ(0, run.m_Status) << run.m_Err;
  EXPECT_EQ(
      "table \"Unused\": 1 field\n"
      "  x  double\n"
      "  rows: no table uses this layout\n"
      "table \"Used\": 2 fields\n"
      "  alpha  string\n"
      "  zeta   int\n"
      "  rows: 3 in handle 4, 1 in handle 5\n",
      run.m_Out);
}

TEST_P(ZdbInfoTest, LocateNamesTheObjectAndTheOffsetWithinIt) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), GetParam());
  std::string bytes = LogicalFileBytes(sample.m_Name.c_str());
  // Row 1 of Parts: after the table's 12-byte header and row 0, of a bitmap
  // word, density, id, label, mass and owner.
  std::size_t const row1 = 12 + 4 + 4 + 4 + 8 + 8 + 8;
  char expected[80];
  std::snprintf(expected, sizeof expected, "Object: %08x - Offset: %20.0f\n", sample.m_Parts, double(row1));
  std::size_t fileOffset = FileOffsetOf(bytes, sample.m_Parts, row1);
  zdb_Run found = RunZdb({"locate", sample.m_Name, std::to_string(fileOffset)});
  EXPECT_EQ(0, found.m_Status);
  EXPECT_EQ(expected, found.m_Out);
  char hex[32];
  std::snprintf(hex, sizeof hex, "0x%zx", fileOffset);
  EXPECT_EQ(expected, RunZdb({"locate", sample.m_Name, hex}).m_Out);
  zdb_Run group = RunZdb({"locate", sample.m_Name, "1500"});
  EXPECT_EQ(0, group.m_Status);
  EXPECT_EQ("Object not found.\n", group.m_Out);
}
