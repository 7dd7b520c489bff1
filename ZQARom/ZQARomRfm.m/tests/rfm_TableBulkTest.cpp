#include "rfm_Table.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

// Samples(id int, load float, x double, label string, next handle).
rfm_TableMetadata Samples() {
  rfm_TableMetadata table("Samples", 1);
  table.DefineIntField("id");
  table.DefineFloatField("load");
  table.DefineDoubleField("x");
  table.DefineStringField("label");
  table.DefineHandleField("next");
  return table;
}

// By name: a table opened from a file numbers its fields as the file does.
rfm_FieldHandle const kId("id", -1);
rfm_FieldHandle const kLoad("load", -1);
rfm_FieldHandle const kX("x", -1);
rfm_FieldHandle const kLabel("label", -1);
rfm_FieldHandle const kNext("next", -1);

// Labels that repeat, with an empty and a non-ASCII one among them.
cow_String Label(int i) {
  static char const* const kLabels[] = {"", "plate", "\xc3\xa9l\xc3\xa9ment", "shell 4", "beam"};
  return cow_String(kLabels[i % 5]);
}

// Row i: every field but some: no load every third row, no label every
// fourth, a handle only on odd rows; x is NaN or infinite now and then.
void WriteRow(rfm_Row const& row, int i) {
  row.WriteFieldInt(kId, i);
  if (i % 3 != 0) row.WriteFieldFloat(kLoad, i * 0.25f);
  double x = i % 97 == 5 ? std::numeric_limits<double>::quiet_NaN() : i % 89 == 3 ? -HUGE_VAL : i * 1.5;
  row.WriteFieldDouble(kX, x);
  if (i % 4 != 0) row.WriteFieldString(kLabel, Label(i));
  if (i % 2 == 1) row.WriteFieldHandle(kNext, rfm_Handle(i + 1000));
}

bool SameDouble(double a, double b) { return (std::isnan(a) && std::isnan(b)) || a == b; }

// What a bulk read of rows [first, first + count) gave.
struct Columns {
  explicit Columns(int count)
      : ids(count), loads(count), xs(count), labels(count), offsets(count), nexts(count), idPresent(count),
        loadPresent(count), labelPresent(count), nextPresent(count) {}
  std::vector<int> ids;
  std::vector<float> loads;
  std::vector<double> xs;
  std::vector<cow_String> labels;
  std::vector<utl_FileOffset> offsets;
  std::vector<rfm_Handle> nexts;
  std::vector<unsigned char> idPresent, loadPresent, labelPresent, nextPresent;
};

int ReadAll(rfm_Table const& table, int first, int count, Columns& out) {
  rfm_Column const columns[] = {
      rfm_Column::Ints(kId, out.ids.data(), -1).Presence(out.idPresent.data()),
      rfm_Column::Floats(kLoad, out.loads.data(), -2.0f).Presence(out.loadPresent.data()),
      rfm_Column::Doubles(kX, out.xs.data()),
      rfm_Column::Strings(kLabel, out.labels.data(), cow_String("none")).Presence(out.labelPresent.data()),
      rfm_Column::StringOffsets(kLabel, out.offsets.data()),
      rfm_Column::Handles(kNext, out.nexts.data()).Presence(out.nextPresent.data()),
  };
  return table.ReadColumns(first, count, columns, 6);
}

// Every value and presence a bulk read gave for rows [first, first + n),
// from element gotFirst on, is what the row interface reads; equal strings
// have equal offsets.
void ExpectSameAsRows(rfm_Table const& table, int first, int n, Columns const& got, int gotFirst = 0) {
  for (int k = 0; k < n; ++k) {
    std::size_t const at = static_cast<std::size_t>(gotFirst + k);
    rfm_Row row = table.ReadRow(first + k);
    SCOPED_TRACE("row " + std::to_string(first + k));
    ASSERT_TRUE(got.idPresent[at]);
    EXPECT_EQ(row.ReadFieldInt(kId), got.ids[at]);
    EXPECT_EQ(row.DataIsPresent(kLoad), got.loadPresent[at] == 1);
    EXPECT_EQ(row.DataIsPresent(kLoad) ? row.ReadFieldFloat(kLoad) : -2.0f, got.loads[at]);
    EXPECT_TRUE(SameDouble(row.ReadFieldDouble(kX), got.xs[at]));
    EXPECT_EQ(row.DataIsPresent(kLabel), got.labelPresent[at] == 1);
    EXPECT_EQ(row.DataIsPresent(kLabel) ? row.ReadFieldString(kLabel) : cow_String("none"), got.labels[at]);
    EXPECT_EQ(row.DataIsPresent(kLabel), got.offsets[at] != 0);
    EXPECT_EQ(row.DataIsPresent(kNext), got.nextPresent[at] == 1);
    EXPECT_EQ(row.DataIsPresent(kNext) ? row.ReadFieldHandle(kNext) : rfm_Handle(), got.nexts[at]);
  }
  for (int a = gotFirst; a < gotFirst + n && a < gotFirst + 10; ++a) {
    for (int b = gotFirst; b < gotFirst + n; ++b) {
      std::size_t const i = static_cast<std::size_t>(a), j = static_cast<std::size_t>(b);
      if (got.offsets[i] != 0 && got.offsets[j] != 0) {
        EXPECT_EQ(got.labels[i] == got.labels[j], got.offsets[i] == got.offsets[j]);
      }
    }
  }
}

}  // namespace

using TableBulkTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(TableBulkTest);

// Enough rows for several of the bulk path's blocks, read back in ranges
// that start and end inside blocks, from the writer (rows partly still in
// its cache) and from a reader of the flushed file.
TEST_P(TableBulkTest, BulkReadsGiveWhatTheRowInterfaceReads) {
  zqa_TestDir dir;
  cow_String name = dir.File("bulk.zdb");
  constexpr int kRows = 70000;
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Samples(), -1, -1);
    for (int i = 0; i < kRows; ++i) WriteRow(table.NewRow(), i);
    // The writer's last rows wait in its cache; a held row changed after
    // it was written back stands for its stored bytes.
    rfm_Row held = table.UpdateRow(10);
    held.WriteFieldInt(kId, -10);
    Columns got(kRows);
    ASSERT_EQ(kRows, ReadAll(table, 0, kRows, got));
    EXPECT_EQ(-10, got.ids[10]);
    EXPECT_EQ(kRows, table.Location());
    ExpectSameAsRows(table, 0, 40, got);
    ExpectSameAsRows(table, kRows - 40, 40, got, kRows - 40);
    handle = table.Handle();
    database.Flush();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handle, -1, -1);
  ASSERT_EQ(kRows, table.Length());
  for (int first : {0, 1, 26213, kRows - 300}) {
    Columns got(30000);
    int n = ReadAll(table, first, 30000, got);
    ASSERT_EQ(std::min(30000, kRows - first), n);
    ExpectSameAsRows(table, first, n, got);
  }
  Columns none(4);
  EXPECT_EQ(0, ReadAll(table, kRows, 4, none));
  EXPECT_EQ(0, ReadAll(table, 3, 0, none));
}

// Bulk appends read back through rows, and rows made between appends stay
// in order; absent values follow the presence arrays, strings share the pool.
TEST_P(TableBulkTest, AppendedColumnsReadBackThroughRows) {
  zqa_TestDir dir;
  cow_String name = dir.File("append.zdb");
  constexpr int kBatch = 40000;
  std::vector<int> ids(kBatch);
  std::vector<float> loads(kBatch);
  std::vector<double> xs(kBatch);
  std::vector<cow_String> labels(kBatch);
  std::vector<rfm_Handle> nexts(kBatch);
  std::vector<unsigned char> hasLoad(kBatch), hasLabel(kBatch), hasNext(kBatch);
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Samples(), -1, -1);
    WriteRow(table.NewRow(), 0);
    for (int start : {1, 1 + kBatch + 1}) {
      for (int k = 0; k < kBatch; ++k) {
        int i = start + k;
        std::size_t at = static_cast<std::size_t>(k);
        ids[at] = i;
        loads[at] = i * 0.25f;
        hasLoad[at] = i % 3 != 0;
        xs[at] = i % 97 == 5 ? std::numeric_limits<double>::quiet_NaN() : i % 89 == 3 ? -HUGE_VAL : i * 1.5;
        labels[at] = Label(i);
        hasLabel[at] = i % 4 != 0;
        nexts[at] = rfm_Handle(i + 1000);
        hasNext[at] = i % 2 == 1;
      }
      rfm_Column const columns[] = {
          rfm_Column::Ints(kId, static_cast<int const*>(ids.data())),
          rfm_Column::Floats(kLoad, static_cast<float const*>(loads.data())).Presence(
              static_cast<unsigned char const*>(hasLoad.data())),
          rfm_Column::Doubles(kX, static_cast<double const*>(xs.data())),
          rfm_Column::Strings(kLabel, static_cast<cow_String const*>(labels.data()))
              .Presence(static_cast<unsigned char const*>(hasLabel.data())),
          rfm_Column::Handles(kNext, static_cast<rfm_Handle const*>(nexts.data()))
              .Presence(static_cast<unsigned char const*>(hasNext.data())),
      };
      table.AppendColumns(kBatch, columns, 5);
      // A row made through the row interface goes after the appended ones.
      WriteRow(table.NewRow(), start + kBatch);
    }
    handle = table.Handle();
    database.Flush();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handle, -1, -1);
  ASSERT_EQ(2 * kBatch + 3, table.Length());
  // Rows written either way read the same: compare with a table written
  // row by row alone.
  cow_String plainName = dir.File("rows.zdb");
  rfm_Handle plainHandle;
  {
    rfm_Database plain = CreateTestDatabase(plainName);
    rfm_Table rows = plain.Table(Samples(), -1, -1);
    for (int i = 0; i < table.Length(); ++i) WriteRow(rows.NewRow(), i);
    plainHandle = rows.Handle();
    plain.Flush();
  }
  rfm_Database plain = OpenTestDatabase(plainName, utl_FileAccessRead);
  rfm_Table rows = plain.Table(plainHandle, -1, -1);
  for (int i = 0; i < table.Length(); ++i) {
    rfm_Row a = table.ReadRow(i);
    rfm_Row b = rows.ReadRow(i);
    ASSERT_EQ(b.ReadFieldInt(kId), a.ReadFieldInt(kId)) << i;
    ASSERT_EQ(b.DataIsPresent(kLoad), a.DataIsPresent(kLoad)) << i;
    if (b.DataIsPresent(kLoad)) {
      ASSERT_EQ(b.ReadFieldFloat(kLoad), a.ReadFieldFloat(kLoad)) << i;
    }
    ASSERT_TRUE(SameDouble(b.ReadFieldDouble(kX), a.ReadFieldDouble(kX))) << i;
    ASSERT_EQ(b.DataIsPresent(kLabel), a.DataIsPresent(kLabel)) << i;
    if (b.DataIsPresent(kLabel)) {
      ASSERT_EQ(b.ReadFieldString(kLabel), a.ReadFieldString(kLabel)) << i;
    }
    ASSERT_EQ(b.DataIsPresent(kNext), a.DataIsPresent(kNext)) << i;
    if (b.DataIsPresent(kNext)) {
      ASSERT_EQ(b.ReadFieldHandle(kNext), a.ReadFieldHandle(kNext)) << i;
    }
  }
  // The pool holds each label once, whichever path wrote it.
  Columns got(table.Length());
  ReadAll(table, 0, table.Length(), got);
  EXPECT_EQ(got.labels[1], got.labels[kBatch + 1]);
  EXPECT_EQ(got.offsets[1], got.offsets[kBatch + 1]);  // by an append and by a row
}

TEST_P(TableBulkTest, BulkCallsThatCannotBeDoneRaiseNamingTheTableAndFile) {
  zqa_TestDir dir;
  cow_String name = dir.File("errors.zdb");
  rfm_Handle handle;
  int ids[4] = {1, 2, 3, 4};
  double xs[4] = {};
  utl_FileOffset offsets[4] = {};
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Samples(), -1, -1);
    rfm_Column wrongType = rfm_Column::Doubles(kId, xs);
    EXPECT_EQ("rfm_Table - Field 'id' of table 'Samples' in " + std::string(name.CStr()) +
                  " holds values of another type than its column's.",
              MessageOf([&] { table.ReadColumns(0, 1, &wrongType, 1); }));
    rfm_Column unknown = rfm_Column::Ints(rfm_FieldHandle(9), ids);
    EXPECT_EQ("rfm_Table - Table 'Samples' in " + std::string(name.CStr()) + " has no field '#9'.",
              MessageOf([&] { table.AppendColumns(1, &unknown, 1); }));
    rfm_Column fromConstants = rfm_Column::Ints(kId, static_cast<int const*>(ids));
    EXPECT_EQ("rfm_Table::ReadColumns - The column of field 'id' of table 'Samples' in " + std::string(name.CStr()) +
                  " has no array to read into.",
              MessageOf([&] { table.ReadColumns(0, 1, &fromConstants, 1); }));
    rfm_Column pooled = rfm_Column::StringOffsets(kLabel, offsets);
    EXPECT_EQ("rfm_Table::AppendColumns - The column of field 'label' of table 'Samples' in " +
                  std::string(name.CStr()) + " gives no values: strings are appended as text.",
              MessageOf([&] { table.AppendColumns(1, &pooled, 1); }));
    EXPECT_EQ("rfm_Table::ReadColumns - Cannot read 2 rows from row -1 of table 'Samples' in " +
                  std::string(name.CStr()) + ".",
              MessageOf([&] { table.ReadColumns(-1, 2, &fromConstants, 0); }));
    EXPECT_EQ(0, table.Length());
    table.AppendColumns(4, &fromConstants, 1);
    handle = table.Handle();
    database.Flush();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handle, -1, -1);
  rfm_Column column = rfm_Column::Ints(kId, static_cast<int const*>(ids));
  EXPECT_NE("no exception", MessageOf([&] { table.AppendColumns(1, &column, 1); }));
  EXPECT_EQ(4, table.Length());
  int back[4] = {};
  rfm_Column into = rfm_Column::Ints(kId, back);
  EXPECT_EQ(4, table.ReadColumns(0, 4, &into, 1));
  EXPECT_EQ(std::vector<int>(ids, ids + 4), std::vector<int>(back, back + 4));
}

// A row torn by a writer that stopped mid-write counts once more than half
// of it is there, and reads the same either way: the missing bytes as zero.
TEST(TableBulkPlainTest, ATornLastRowReadsTheSameThroughBothPaths) {
  zqa_TestDir dir;
  cow_String name = dir.File("torn.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Samples(), -1, -1);
    for (int i = 0; i < 5; ++i) WriteRow(table.NewRow(), i);
    handle = table.Handle();
    database.Flush();
  }
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
    rfm_Space space = database.Space(handle, -1);
    // Row 4 keeps all but the second half of x, its last field: 32 of its
    // 36 bytes.
    space.Truncate(space.Length() - 4);
    database.Flush();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handle, -1, -1);
  ASSERT_EQ(5, table.Length());
  Columns got(5);
  ASSERT_EQ(5, ReadAll(table, 0, 5, got));
  ExpectSameAsRows(table, 0, 5, got);
  EXPECT_EQ(4, got.ids[4]);
  EXPECT_NE(4 * 1.5, got.xs[4]);
}
