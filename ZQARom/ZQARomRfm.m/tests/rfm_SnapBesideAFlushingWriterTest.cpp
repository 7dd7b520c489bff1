#include "rfm_Array.h"
#include "rfm_Table.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// Readers that snap as fast as they can beside a writer that flushes without
// pause and without a transaction marker: a reader often reads the groups
// while a flush rewrites them. It must never be told the file is corrupt
// (R3, R4), and every row it is shown must be a row the writer wrote (W1,
// W2, R5).

namespace {

constexpr int kFlushes = 3000;
constexpr int kRowsPerFlush = 3;
constexpr int kRows = kFlushes * kRowsPerFlush;
// A small array every few flushes: over 511 objects, so that the linkages
// fill a second group and a reader can meet two groups of different flushes.
constexpr int kFlushesPerNewArray = 2;
// Every so many snaps the reader also opens the file afresh, beside the
// writer, as a new viewer would.
constexpr int kSnapsPerOpen = 50;

// Field positions follow the names' byte order.
rfm_FieldHandle const kIndex(0);
rfm_FieldHandle const kLabel(1);
rfm_FieldHandle const kValue(2);

rfm_TableMetadata Samples() {
  rfm_TableMetadata table("Samples", 1);
  table.DefineIntField("i");
  table.DefineStringField("s");
  table.DefineDoubleField("v");
  return table;
}

cow_String Label(int row) { return cow_String("row ") + std::to_string(row).c_str(); }

void Writer(rfm_Database& database, rfm_Table& table, rfm_Array<double, rfm_TypeDouble>& array) {
  std::vector<rfm_Array<int, rfm_TypeInt> > extras;
  for (int flush = 0; flush < kFlushes; ++flush) {
    for (int i = flush * kRowsPerFlush; i < (flush + 1) * kRowsPerFlush; ++i) {
      rfm_Row row = table.NewRow();
      row.WriteFieldInt(kIndex, i);
      row.WriteFieldString(kLabel, Label(i));
      row.WriteFieldDouble(kValue, i * 0.5);
      double value = i * 0.25;
      array.Write(&value, 1);
    }
    if (flush % kFlushesPerNewArray == 0) {
      extras.push_back(database.ArrayInt(1, -1, 0));
      extras.back().Write(&flush, 1);
      extras.back().Flush();
    }
    table.Flush();
    array.Flush();
    database.Flush();
  }
}

struct ReaderCounts {
  long snaps = 0;
  long changes = 0;
  long opens = 0;
};

// Checks the rows and elements from seen on, and returns how many there are.
int CheckNewRows(rfm_Table const& table, rfm_Array<double, rfm_TypeDouble> const& array, int seen) {
  int rows = table.Length();
  zqa_Require(rows >= seen && rows <= kRows, "row count went back or beyond the writer's");
  for (int i = seen; i < rows; ++i) {
    rfm_Row row = table.ReadRow(i);
    zqa_Require(row.ReadFieldInt(kIndex) == i, "row index");
    zqa_Require(row.ReadFieldString(kLabel) == Label(i), "row label");
    zqa_Require(row.ReadFieldDouble(kValue) == i * 0.5, "row value");
  }
  int elements = array.Length();
  zqa_Require(elements <= kRows, "array beyond the writer's");
  std::vector<double> values(static_cast<std::size_t>(elements));
  array.Seek(0);
  if (elements > 0) zqa_Require(array.Read(values.data(), elements) == elements, "array read");
  for (int i = 0; i < elements; ++i) zqa_Require(values[static_cast<std::size_t>(i)] == i * 0.25, "array value");
  return rows;
}

// Snaps without pause until it has seen the writer's last row. Any
// exception ends the child with a failure.
void EagerReader(cow_String const& name, rfm_Handle tableHandle, rfm_Handle arrayHandle, zqa_Signal const& ready) {
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(tableHandle, -1, -1);
  rfm_Array<double, rfm_TypeDouble> array = database.ArrayDouble(arrayHandle, -1, 0);
  ready.Send();
  ReaderCounts counts;
  int seen = 0;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
  while (seen < kRows) {
    zqa_Require(std::chrono::steady_clock::now() < deadline, "the writer's last row never arrived");
    database.FileStatus();
    if (++counts.snaps % kSnapsPerOpen == 0) {
      rfm_Database fresh = OpenTestDatabase(name, utl_FileAccessRead);
      CheckNewRows(fresh.Table(tableHandle, -1, -1), fresh.ArrayDouble(arrayHandle, -1, 0), seen);
      ++counts.opens;
    }
    if (!database.Snap()) continue;
    ++counts.changes;
    table.Snap();
    array.Snap();
    seen = CheckNewRows(table, array, seen);
  }
  std::fprintf(stderr, "reader of %s: %ld snaps, %ld changed the view, %ld fresh opens\n", name.CStr(), counts.snaps,
               counts.changes, counts.opens);
}

// The writer in this process, readers in children reading name or a URL.
void RunWriterBesideReaders(zqa_TestDir const& dir, std::vector<cow_String> const& readerNames) {
  cow_String name = dir.File("busy.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  rfm_Table table = writer.Table(Samples(), -1, -1);
  rfm_Array<double, rfm_TypeDouble> array = writer.ArrayDouble(1, -1, 0);
  table.Flush();
  array.Flush();
  writer.Flush();

  zqa_Signal ready;
  std::vector<int> readers;
  for (cow_String const& readerName : readerNames) {
    readers.push_back(zqa_StartChild([&] { EagerReader(readerName, table.Handle(), array.Handle(), ready); }));
  }
  for (std::size_t i = 0; i < readers.size(); ++i) ready.Wait();
  Writer(writer, table, array);
  for (int reader : readers) EXPECT_EQ(0, zqa_WaitChild(reader));
}

}  // namespace

TEST(SnapBesideAFlushingWriterTest, ReadersNeverSeeACorruptFileOrAWrongRow) {
  zqa_TestDir dir;
  cow_String name = dir.File("busy.zdb");
  RunWriterBesideReaders(dir, {name, name, name});
}

TEST(SnapBesideAFlushingWriterTest, AReaderThroughAUrlNeverSeesACorruptFileOrAWrongRow) {
  std::string path = std::string(ZQA_ASSISTANT_DIRECTORY) + ":" + std::getenv("PATH");
  std::string previous = std::getenv("PATH");
  ::setenv("PATH", path.c_str(), 1);
  zqa_TestDir dir;
  cow_String url = cow_String("zbxrdb://localhost/") + dir.File("busy.zdb");
  RunWriterBesideReaders(dir, {url, dir.File("busy.zdb")});
  ::setenv("PATH", previous.c_str(), 1);
}

// Damage is not a moving file: two readings find the same bytes, and the
// reader is told, at Snap as at Open (R4).
TEST(SnapBesideAFlushingWriterTest, SnapRaisesForDamageThatStays) {
  zqa_TestDir dir;
  cow_String name = dir.File("damaged.zdb");
  rfm_Handle tableHandle;
  {
    rfm_Database writer = CreateTestDatabase(name);
    rfm_Table table = writer.Table(Samples(), -1, -1);
    table.NewRow().WriteFieldInt(kIndex, 1);
    tableHandle = table.Handle();
  }
  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_FALSE(reader.Snap());

  // The table's extent claims more bytes than it holds, and the flush count
  // moves as after a writer's flush.
  std::string bytes = zqa_ReadFileBytes(name);
  std::size_t const linkage = 1024 + 28 * static_cast<std::size_t>(tableHandle.Value());
  PutStoredDouble(bytes, linkage + 8, StoredDouble(bytes, linkage) + 8);
  PutStoredInt(bytes, 512, StoredInt(bytes, 512) + 1);
  zqa_WriteFileBytes(name, bytes);
  std::string const corrupt = std::string("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  ") + name.CStr();
  EXPECT_EQ(corrupt, MessageOf([&] { reader.Snap(); }));
  EXPECT_EQ(corrupt, MessageOf([&] { OpenTestDatabase(name, utl_FileAccessRead); }));
}
