#include "rfm_DBMetadata.h"
#include "rfm_Table.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Nodes(id int, x double, label string, next handle): positions in name
// order are id 0, label 1, next 2, x 3.
rfm_TableMetadata Nodes() {
  rfm_TableMetadata table("Nodes", 1);
  table.DefineIntField("id");
  table.DefineDoubleField("x");
  table.DefineStringField("label");
  table.DefineHandleField("next");
  return table;
}

rfm_FieldHandle const kId(0);
rfm_FieldHandle const kX(1);
rfm_FieldHandle const kLabel(2);
rfm_FieldHandle const kNext(3);

void WriteNode(rfm_Table const& table, int id) {
  rfm_Row row = table.NewRow();
  row.WriteFieldInt(kId, id);
  row.WriteFieldDouble(kX, id * 0.5);
  if (id % 2 == 0) row.WriteFieldString(kLabel, cow_String("node ").Append(cow_String(id)));
}

}  // namespace

using TableTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(TableTest);

TEST_P(TableTest, RowsAreStoredAsBitmapAndFieldsInNameOrder) {
  zqa_TestDir dir;
  cow_String name = dir.File("rows.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Nodes(), -1, -1);
    EXPECT_EQ(4 + 4 + 8 + 8 + 8, table.RowSize());
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(kId, 7);
    row.WriteFieldDouble(rfm_FieldHandle("x", -1), 2.5);
    row.WriteFieldHandle(kNext, rfm_Handle(513));
    handle = table.Handle();
    EXPECT_EQ(1, table.Flush());
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  std::string bytes = SpaceBytes(database, handle.Value());
  ASSERT_EQ(12u + 32u, bytes.size());
  EXPECT_EQ(static_cast<int>(0xAAAFBBBE), StoredInt(bytes, 0));
  EXPECT_EQ(1, StoredInt(bytes, 4));
  EXPECT_EQ(database.GetTableMetadataHandle("Nodes"), StoredInt(bytes, 8));
  EXPECT_EQ(0b1101, StoredInt(bytes, 12));  // id, next, x present; label absent
  EXPECT_EQ(7, StoredInt(bytes, 16));
  EXPECT_EQ(513, StoredInt(bytes, 28));
  EXPECT_EQ(0, StoredInt(bytes, 32));
  EXPECT_EQ(2.5, StoredDouble(bytes, 36));

  rfm_Table table = database.Table(handle, -1, -1);
  EXPECT_EQ(1, table.Length());
  rfm_Row row = table.ReadRow(0);
  EXPECT_EQ(7, row.ReadFieldInt(rfm_FieldHandle("id", -1)));
  EXPECT_EQ(513, row.ReadFieldHandle(rfm_FieldHandle("next", -1)).Value());
  EXPECT_TRUE(row.FieldIsPresent(rfm_FieldHandle("label", -1)));
  EXPECT_FALSE(row.DataIsPresent(rfm_FieldHandle("label", -1)));
  EXPECT_EQ(
      "rfm_RowImpl::PrepReadField: Attempt to access absent field data in ZDB/ZAE file (Nodes:label). File may be "
      "unreadable.",
      MessageOf([&] { row.ReadFieldString(rfm_FieldHandle("label", -1)); }));
  EXPECT_EQ("***ERROR: Field type mismatch: \"id\"", MessageOf([&] { row.ReadFieldDouble(rfm_FieldHandle("id", -1)); }));
  EXPECT_EQ("***ERROR: Can't find field by index: 9", MessageOf([&] { row.ReadFieldInt(rfm_FieldHandle(9)); }));
}

TEST_P(TableTest, CursorCacheAndRowsThatAnApplicationHolds) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("cache.zdb"));
  rfm_Table table = database.Table(Nodes(), -1, 4);
  rfm_Row held = table.NewRow();
  held.WriteFieldInt(kId, -1);
  for (int id = 1; id < 40; ++id) WriteNode(table, id);
  // Culls came and went; the held row is still the application's.
  held.WriteFieldDouble(kX, 99.0);
  EXPECT_EQ(40, table.Length());

  rfm_Row fresh = table.UpdateRow(table.Length());
  EXPECT_EQ(40, fresh.Location());
  EXPECT_EQ(41, table.Length());
  table.Seek(5);
  rfm_Row fifth = table.ReadRow(-1);
  EXPECT_EQ(5, fifth.ReadFieldInt(kId));
  EXPECT_EQ(6, table.Location());
  EXPECT_TRUE(table.RowExists(-1));
  EXPECT_FALSE(table.RowExists(41));
  EXPECT_EQ("rfm_TableRepr::ReadRow - Row does not exist for table 'Nodes', index: 41, len: 41",
            MessageOf([&] { table.ReadRow(41); }));
  EXPECT_EQ(cow_String("node 12"), table.ReadRow(12).ReadFieldString(kLabel));
  EXPECT_EQ(99.0, table.ReadRow(0).ReadFieldDouble(kX));

  rfm_Row erased = table.UpdateRow(2);
  erased.Erase(kLabel);
  EXPECT_FALSE(erased.DataIsPresent(kLabel));
  EXPECT_TRUE(erased.FieldIsPresent(kLabel));
  erased.Erase();
  EXPECT_FALSE(erased.DataIsPresent(kId));
  table.Flush();
  EXPECT_FALSE(table.ReadRow(2).DataIsPresent(kX));
}

TEST_P(TableTest, NewRowsReachTheFileWithoutGapsAndTornRowsRoundToTheNearest) {
  zqa_TestDir dir;
  cow_String name = dir.File("tail.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Nodes(), -1, -1);
    rfm_Row first = table.NewRow();
    table.NewRow();
    rfm_Row third = table.NewRow();
    third.WriteFieldInt(kId, 3);
    table.Flush();
    handle = table.Handle();
    EXPECT_EQ(12 + 3 * 32, table.SpaceLength());
  }
  // Cut the space as a writer killed in the middle of a row would leave it.
  for (int extra : {17, 15}) {
    std::string const original = zqa_ReadFileBytes(name);
    {
      rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
      rfm_Space space = database.Space(handle, -1);
      space.Truncate(12 + 2 * 32 + extra);
    }
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
    EXPECT_EQ(extra >= 16 ? 3 : 2, database.Table(handle, -1, -1).Length()) << extra;
    zqa_WriteFileBytes(name, original);
  }
}

// Rows of a table without present fields have no bytes, so the file could
// never count them: such a table refuses rows, and the writer and a reader
// of the file agree that it has none.
TEST_P(TableTest, ATableWithoutFieldsRefusesRowsAndStaysEmpty) {
  zqa_TestDir dir;
  cow_String name = dir.File("fieldless.zdb");
  std::string const refused =
      std::string("***ERROR: Table 'Nothing' in ") + name.CStr() + " has no fields: it cannot hold rows.";
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(rfm_TableMetadata("Nothing", 1), -1, -1);
    EXPECT_EQ(0, table.RowSize());
    EXPECT_EQ(refused, MessageOf([&] { table.NewRow(); }));
    EXPECT_EQ(refused, MessageOf([&] { table.UpdateRow(table.Length()); }));
    EXPECT_EQ(0, table.Length());
    EXPECT_FALSE(table.RowExists(0));
    table.Flush();
    handle = table.Handle();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ(0, database.Table(handle, -1, -1).Length());
}

TEST_P(TableTest, AnOlderLayoutReadsInANewerProgram) {
  zqa_TestDir dir;
  cow_String name = dir.File("older.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TableMetadata old("Nodes", 1);
    old.DefineIntField("id");
    old.DefineFloatField("weight");
    rfm_Table table = database.Table(old, -1, -1);
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(rfm_FieldHandle(0), 11);
    row.WriteFieldFloat(rfm_FieldHandle(1), 0.25f);
    handle = table.Handle();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_TableMetadata newer = Nodes();
  database.Bind(newer);
  rfm_Table table = database.Table(handle, -1, -1);
  rfm_Row row = table.ReadRow(0);
  EXPECT_EQ(11, row.ReadFieldInt(kId));
  EXPECT_FALSE(row.FieldIsPresent(kX));
  EXPECT_EQ("***ERROR: Can't find field by index: 1", MessageOf([&] { row.ReadFieldDouble(kX); }));
  EXPECT_EQ(0.25f, row.ReadFieldFloat(rfm_FieldHandle("weight", -1)));
  EXPECT_EQ(0.25f, row.ReadFieldFloat(rfm_FieldHandle(table.Index("weight"))));
  EXPECT_EQ(4, table.Index("weight"));
  EXPECT_EQ(rfm_TypeFloat, table.Type("weight"));
}

TEST_P(TableTest, AppendCopiesBytesOrFieldsAndMovesStringsBetweenPools) {
  zqa_TestDir dir;
  rfm_Database source = CreateTestDatabase(dir.File("source.zdb"));
  rfm_Database target = CreateTestDatabase(dir.File("target.zdb"));
  rfm_Table from = source.Table(Nodes(), -1, -1);
  for (int id = 0; id < 50; ++id) WriteNode(from, id);

  rfm_Table to = target.Table(Nodes(), -1, -1);
  WriteNode(to, 1000);
  to.Append(from);
  EXPECT_EQ(51, to.Length());
  EXPECT_EQ(cow_String("node 48"), to.ReadRow(49).ReadFieldString(kLabel));
  EXPECT_FALSE(to.ReadRow(50).DataIsPresent(kLabel));
  EXPECT_EQ(24.5, to.ReadRow(50).ReadFieldDouble(kX));

  rfm_TableMetadata numbersOnly("Numbers", 1);
  numbersOnly.DefineIntField("id");
  numbersOnly.DefineDoubleField("x");
  rfm_Table bytes = source.Table(numbersOnly, -1, -1);
  rfm_Table moreBytes = source.Table(rfm_TableMetadata(numbersOnly, 1), -1, -1);
  for (int i = 0; i < 3; ++i) {
    rfm_Row row = bytes.NewRow();
    row.WriteFieldInt(rfm_FieldHandle(0), i);
  }
  moreBytes.NewRow().WriteFieldDouble(rfm_FieldHandle(1), 1.0);
  EXPECT_EQ(1, bytes.CopyAllowed(moreBytes));
  bytes.Append(moreBytes);
  EXPECT_EQ(4, bytes.Length());
  EXPECT_EQ(1.0, bytes.ReadRow(3).ReadFieldDouble(rfm_FieldHandle(1)));

  // Different field sets copy the fields they share.
  EXPECT_EQ(3, to.CopyAllowed(bytes));
  to.Append(bytes);
  EXPECT_EQ(55, to.Length());
  EXPECT_EQ(2, to.ReadRow(53).ReadFieldInt(kId));
  EXPECT_FALSE(to.ReadRow(53).DataIsPresent(kX));

  rfm_TableMetadata clash("Clash", 1);
  clash.DefineFloatField("x");
  clash.DefineIntField("id");
  rfm_Table clashing = source.Table(clash, -1, -1);
  EXPECT_EQ("rfm_TableRepr::Append - table being appended to \"Numbers\" does not have compatible metadata.",
            MessageOf([&] { bytes.Append(clashing); }));
}

// Plain files only: a reader opened beside the writer follows its flushes
// through Snap, and a compressed file's reader sees the file as of its open.
TEST(TablePlainFileTest, ManyFieldsTruncationAndReaders) {
  zqa_TestDir dir;
  cow_String name = dir.File("wide.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  rfm_TableMetadata wide("Wide", 1);
  for (int i = 0; i < 33; ++i) wide.DefineIntField(cow_String("f").Append(cow_String(100 + i)));
  rfm_Table table = writer.Table(wide, -1, -1);
  EXPECT_EQ(8 + 33 * 4, table.RowSize());
  for (int i = 0; i < 10; ++i) table.NewRow().WriteFieldInt(rfm_FieldHandle(32), i);
  table.Flush();
  writer.Flush();

  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table read = reader.Table(table.Handle(), -1, -1);
  EXPECT_EQ(10, read.Length());
  EXPECT_EQ(9, read.ReadRow(9).ReadFieldInt(rfm_FieldHandle("f132", -1)));
  EXPECT_EQ("***ERROR: Attempt to truncate read only table.", MessageOf([&] { read.Truncate(1); }));

  table.Truncate(4);
  EXPECT_EQ(4, table.Length());
  EXPECT_EQ(12 + 4 * table.RowSize(), table.SpaceLength());
  table.NewRow().WriteFieldInt(rfm_FieldHandle(0), 77);
  EXPECT_EQ(0, read.Snap());
  table.Flush();
  writer.Flush();
  EXPECT_TRUE(reader.Snap());
  EXPECT_EQ(table.GetFlushCount(), read.Snap());
  EXPECT_EQ(77, read.ReadRow(4).ReadFieldInt(rfm_FieldHandle(0)));
  EXPECT_EQ(0, read.Snap());
}
