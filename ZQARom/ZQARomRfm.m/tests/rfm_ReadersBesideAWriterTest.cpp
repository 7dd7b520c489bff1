#include "rfm_Array.h"
#include "rfm_ReaderSemaphoreProxy.h"
#include "rfm_Table.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>
#include <unistd.h>

namespace {

constexpr int kBatch = 300;
constexpr int kBatches = 12;

rfm_TableMetadata Samples() {
  rfm_TableMetadata table("Samples", 1);
  table.DefineIntField("i");
  table.DefineDoubleField("v");
  return table;
}

// A reader process: opens the file before the writer starts, then polls its
// status, holds off while a transaction runs (W6, R6), snaps when the writer
// has flushed (W3, R2), and checks that it sees whole batches of whole rows,
// in step between table and array, until it has seen every batch.
void Reader(cow_String const& name, rfm_Handle tableHandle, rfm_Handle arrayHandle, zqa_Signal const& ready) {
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(tableHandle, -1, -1);
  rfm_Array<double, rfm_TypeDouble> array = database.ArrayDouble(arrayHandle, -1, 0);
  ready.Send();
  int seen = 0;
  int snaps = 0;
  int transactions = 0;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (seen < kBatch * kBatches) {
    zqa_Require(std::chrono::steady_clock::now() < deadline, "the writer's last batch never arrived");
    rfm_FileStatus::RfmFileStatus status = database.FileStatus();
    if (status == rfm_FileStatus::kInTransaction) {
      ++transactions;
    } else if (status == rfm_FileStatus::kFlushed && database.Snap()) {
      table.Snap();
      array.Snap();
      int rows = table.Length();
      zqa_Require(rows >= seen && rows % kBatch == 0, "rows beyond the last flush, or a partial batch");
      zqa_Require(array.Length() == rows, "table and array flushed apart");
      std::vector<double> values(static_cast<std::size_t>(rows));
      array.Seek(0);
      if (rows > 0) zqa_Require(array.Read(values.data(), rows) == rows, "array read");
      // The same rows in columns, read before the rows so that none comes
      // from the row cache.
      std::vector<int> is(static_cast<std::size_t>(rows));
      std::vector<double> vs(static_cast<std::size_t>(rows));
      std::vector<unsigned char> present(static_cast<std::size_t>(rows));
      rfm_Column const columns[] = {rfm_Column::Ints(rfm_FieldHandle(0), is.data()).Presence(present.data()),
                                    rfm_Column::Doubles(rfm_FieldHandle(1), vs.data())};
      zqa_Require(table.ReadColumns(0, rows, columns, 2) == rows, "column read");
      for (int i = 0; i < rows; ++i) {
        std::size_t at = static_cast<std::size_t>(i);
        rfm_Row row = table.ReadRow(i);
        zqa_Require(row.ReadFieldInt(rfm_FieldHandle(0)) == i, "row contents");
        zqa_Require(row.ReadFieldDouble(rfm_FieldHandle(1)) == i * 0.5, "row contents");
        zqa_Require(present[at] == 1 && is[at] == i && vs[at] == i * 0.5, "column contents");
        zqa_Require(values[at] == i * 0.25, "array contents");
      }
      seen = rows;
      ++snaps;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  // The reader followed the writer along, not only its end, and saw its
  // transactions marked.
  zqa_Require(snaps > kBatches / 2, "too few flushes seen");
  zqa_Require(transactions > 0, "no transaction seen");
}

}  // namespace

TEST(ReadersBesideAWriterTest, TwoReaderProcessesSeeEveryFlushAndNothingElse) {
  zqa_TestDir dir;
  cow_String name = dir.File("live.zdb");
  rfm_Database writer = CreateTestDatabase(name, "APP", true);
  rfm_Table table = writer.Table(Samples(), -1, -1);
  rfm_Array<double, rfm_TypeDouble> array = writer.ArrayDouble(1, -1, 0);
  table.Flush();
  array.Flush();
  writer.Flush();

  zqa_Signal ready;
  int readers[2];
  for (int& reader : readers) {
    reader = zqa_StartChild([&] { Reader(name, table.Handle(), array.Handle(), ready); });
  }
  for (int i = 0; i < 2; ++i) ready.Wait();
  for (int batch = 0; batch < kBatches; ++batch) {
    {
      rfm_ReaderSemaphoreProxy transaction(writer);
      // Every third batch is appended in columns, half at a time.
      if (batch % 3 == 2) {
        std::vector<int> is;
        std::vector<double> vs;
        for (int i = batch * kBatch; i < (batch + 1) * kBatch; ++i) {
          is.push_back(i);
          vs.push_back(i * 0.5);
          double value = i * 0.25;
          array.Write(&value, 1);
        }
        for (int half = 0; half < 2; ++half) {
          std::size_t from = static_cast<std::size_t>(half * kBatch / 2);
          rfm_Column const columns[] = {rfm_Column::Ints(rfm_FieldHandle(0), static_cast<int const*>(&is[from])),
                                        rfm_Column::Doubles(rfm_FieldHandle(1), static_cast<double const*>(&vs[from]))};
          table.AppendColumns(kBatch / 2, columns, 2);
          if (half == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
      }
      for (int i = batch * kBatch; i < (batch + 1) * kBatch && batch % 3 != 2; ++i) {
        // Halfway through, the writer dawdles with half a batch written.
        if (i % kBatch == kBatch / 2) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        rfm_Row row = table.NewRow();
        row.WriteFieldInt(rfm_FieldHandle(0), i);
        row.WriteFieldDouble(rfm_FieldHandle(1), i * 0.5);
        double value = i * 0.25;
        array.Write(&value, 1);
      }
      table.Flush();
      array.Flush();
      writer.Flush();
    }
    // Room for the readers to take this flush in before the next transaction.
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
  }
  for (int reader : readers) EXPECT_EQ(0, zqa_WaitChild(reader));
}

TEST(ReadersBesideAWriterTest, AReaderIsToldOfAReplacedAndOfADeletedFile) {
  zqa_TestDir dir;
  cow_String name = dir.File("moving.zdb");
  { CreateTestDatabase(name); }
  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ(rfm_FileStatus::kUnchanged, reader.FileStatus());

  cow_String replacement = dir.File("replacement.zdb");
  {
    rfm_Database other = rfm_Database::Create(rfm_File::Open(replacement, utl_FileAccessCreate, false), "APP", "",
                                              1800000000);
  }
  ASSERT_EQ(0, std::rename(replacement.CStr(), name.CStr()));
  EXPECT_EQ(rfm_FileStatus::kReplaced, reader.FileStatus());
  EXPECT_EQ(rfm_FileStatus::kReplaced, reader.FileStatus());
  ASSERT_EQ(0, ::unlink(name.CStr()));
  EXPECT_EQ(rfm_FileStatus::kUnreadable, reader.FileStatus());
}
