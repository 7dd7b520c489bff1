// Writes rows of (int, double, double, string from a set of 1000) through
// rfm_Table and reads them back in order, then reads rows at random row
// numbers; runs the same workloads through SQLite (one transaction, a
// prepared statement, journal and synchronous off) and writes and reads the
// same row bytes with plain write/read; prints rows per second and ratios.
//
//   rfm_TableCompare [rows] [randomReads] [only]   defaults 10000000 and 1000000
//
// With "only" given as table, sqlite or plain, runs that pass alone (for a
// profiler) and prints its times.

#include "zqa_Bench.h"
#include "rfm_Database.h"
#include "rfm_Table.h"

#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <random>
#include <sys/resource.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kLabels = 1000;
constexpr int kRowBytes = 32;  // bitmap, int, two doubles, external string

struct Timing {
  double write = 0;
  double read = 0;
  double random = 0;
  zqa_CpuSplit writeSplit;
  zqa_CpuSplit readSplit;
};

std::vector<cow_String> Labels() {
  std::vector<cow_String> labels;
  for (int i = 0; i < kLabels; ++i) labels.push_back(cow_String("label-").Append(cow_String(i)));
  return labels;
}

std::vector<int> RandomRows(int rows, int count) {
  std::mt19937 random(7);
  std::vector<int> picks(static_cast<std::size_t>(count));
  for (int& pick : picks) pick = static_cast<int>(random() % static_cast<unsigned>(rows));
  return picks;
}

Timing TablePass(std::string const& path, int rows, std::vector<int> const& picks) {
  Timing timing;
  std::vector<cow_String> labels = Labels();
  rfm_FieldHandle const a(0), b(1), c(2), d(3);
  rfm_Handle handle;
  timing.write = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), "BNCH", "", 0);
    rfm_TableMetadata layout("Rows", 1);
    layout.DefineIntField("a");
    layout.DefineDoubleField("b");
    layout.DefineDoubleField("c");
    layout.DefineStringField("d");
    rfm_Table table = database.Table(layout, 1 << 20, -1);
    for (int i = 0; i < rows; ++i) {
      rfm_Row row = table.NewRow();
      row.WriteFieldInt(a, i);
      row.WriteFieldDouble(b, i * 0.5);
      row.WriteFieldDouble(c, -i * 0.25);
      row.WriteFieldString(d, labels[static_cast<std::size_t>(i % kLabels)]);
    }
    table.Flush();
    handle = table.Handle();
  });
  timing.writeSplit = zqa_LastCpuSplit();
  rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), "BNCH");
  timing.read = zqa_Seconds([&] {
    rfm_Table table = database.Table(handle, -1, -1);
    zqa_Check(table.Length() == rows, "table length");
    long long sum = 0;
    for (int i = 0; i < rows; ++i) {
      rfm_Row row = table.ReadRow(i);
      sum += row.ReadFieldInt(a) + static_cast<long long>(row.ReadFieldDouble(b)) +
             static_cast<long long>(row.ReadFieldDouble(c)) + row.ReadFieldString(d).Length();
    }
    zqa_Check(sum != 0, "table contents");
  });
  timing.readSplit = zqa_LastCpuSplit();
  timing.random = zqa_Seconds([&] {
    rfm_Table table = database.Table(handle, -1, -1);
    for (int pick : picks) zqa_Check(table.ReadRow(pick).ReadFieldInt(a) == pick, "random row");
  });
  ::unlink(path.c_str());
  return timing;
}

void Exec(sqlite3* db, char const* sql) { zqa_Check(sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql); }

Timing SqlitePass(std::string const& path, int rows, std::vector<int> const& picks) {
  Timing timing;
  std::vector<cow_String> labels = Labels();
  timing.write = zqa_Seconds([&] {
    sqlite3* db = nullptr;
    zqa_Check(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "sqlite open");
    Exec(db, "PRAGMA journal_mode=OFF");
    Exec(db, "PRAGMA synchronous=OFF");
    Exec(db, "CREATE TABLE rows(a INTEGER, b REAL, c REAL, d TEXT)");
    Exec(db, "BEGIN");
    sqlite3_stmt* insert = nullptr;
    zqa_Check(sqlite3_prepare_v2(db, "INSERT INTO rows VALUES(?,?,?,?)", -1, &insert, nullptr) == SQLITE_OK, "prepare");
    for (int i = 0; i < rows; ++i) {
      cow_String const& label = labels[static_cast<std::size_t>(i % kLabels)];
      sqlite3_bind_int(insert, 1, i);
      sqlite3_bind_double(insert, 2, i * 0.5);
      sqlite3_bind_double(insert, 3, -i * 0.25);
      sqlite3_bind_text(insert, 4, label.CStr(), label.Length(), SQLITE_STATIC);
      zqa_Check(sqlite3_step(insert) == SQLITE_DONE, "insert");
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    Exec(db, "COMMIT");
    sqlite3_close(db);
  });
  sqlite3* db = nullptr;
  zqa_Check(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "sqlite reopen");
  timing.read = zqa_Seconds([&] {
    sqlite3_stmt* scan = nullptr;
    zqa_Check(sqlite3_prepare_v2(db, "SELECT a,b,c,d FROM rows ORDER BY rowid", -1, &scan, nullptr) == SQLITE_OK, "scan");
    long long sum = 0;
    int count = 0;
    while (sqlite3_step(scan) == SQLITE_ROW) {
      sum += sqlite3_column_int(scan, 0) + static_cast<long long>(sqlite3_column_double(scan, 1)) +
             static_cast<long long>(sqlite3_column_double(scan, 2)) + sqlite3_column_bytes(scan, 3);
      ++count;
    }
    sqlite3_finalize(scan);
    zqa_Check(count == rows && sum != 0, "sqlite contents");
  });
  timing.random = zqa_Seconds([&] {
    sqlite3_stmt* lookup = nullptr;
    zqa_Check(sqlite3_prepare_v2(db, "SELECT a FROM rows WHERE rowid=?", -1, &lookup, nullptr) == SQLITE_OK, "lookup");
    for (int pick : picks) {
      sqlite3_bind_int64(lookup, 1, pick + 1);
      zqa_Check(sqlite3_step(lookup) == SQLITE_ROW && sqlite3_column_int(lookup, 0) == pick, "sqlite random row");
      sqlite3_reset(lookup);
    }
    sqlite3_finalize(lookup);
  });
  sqlite3_close(db);
  ::unlink(path.c_str());
  return timing;
}

// The same row bytes, written and read in 64 KiB calls.
Timing RawPass(std::string const& path, int rows) {
  Timing timing;
  constexpr int kRowsPerChunk = 2048;
  std::vector<char> chunk(static_cast<std::size_t>(kRowsPerChunk) * kRowBytes);
  timing.write = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    zqa_Check(fd >= 0, "raw open");
    for (int done = 0; done < rows; done += kRowsPerChunk) {
      int n = std::min(kRowsPerChunk, rows - done);
      for (int i = 0; i < n; ++i) {
        char* row = chunk.data() + static_cast<std::size_t>(i) * kRowBytes;
        int value = done + i;
        double b = value * 0.5;
        double c = -value * 0.25;
        std::memset(row, 0xff, 4);
        std::memcpy(row + 4, &value, 4);
        std::memcpy(row + 8, &b, 8);
        std::memcpy(row + 16, &c, 8);
        std::memset(row + 24, 0, 8);
      }
      zqa_Check(::write(fd, chunk.data(), static_cast<std::size_t>(n) * kRowBytes) == n * kRowBytes, "raw write");
    }
    ::close(fd);
  });
  timing.read = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    long long sum = 0;
    ssize_t got;
    while ((got = ::read(fd, chunk.data(), chunk.size())) > 0) {
      for (ssize_t at = 0; at < got; at += kRowBytes) {
        int value;
        std::memcpy(&value, chunk.data() + at + 4, 4);
        sum += value;
      }
    }
    ::close(fd);
    zqa_Check(sum != 0, "raw contents");
  });
  ::unlink(path.c_str());
  return timing;
}

}  // namespace

int main(int argc, char** argv) {
  int rows = argc > 1 ? std::atoi(argv[1]) : 10000000;
  int randomReads = argc > 2 ? std::atoi(argv[2]) : 1000000;
  zqa_Check(rows > 0 && randomReads > 0, "arguments");
  std::string base = zqa_BenchPath("zqa-table");
  std::vector<int> picks = RandomRows(rows, randomReads);

  if (argc > 3) {
    std::string only = argv[3];
    Timing alone = only == "table"    ? TablePass(base + ".zdb", rows, picks)
                   : only == "sqlite" ? SqlitePass(base + ".sqlite", rows, picks)
                                      : RawPass(base + ".raw", rows);
    std::printf("%s: write %.3f s, read %.3f s, random %.3f s\n", only.c_str(), alone.write, alone.read, alone.random);
    return 0;
  }
  Timing table = TablePass(base + ".zdb", rows, picks);
  Timing sqlite = SqlitePass(base + ".sqlite", rows, picks);
  Timing raw = RawPass(base + ".raw", rows);

  auto perSecond = [](int count, double seconds) { return count / seconds / 1e6; };
  std::printf("%d rows of (int, double, double, string of %d), %d random reads\n", rows, kLabels, randomReads);
  std::printf("%-22s %14s %14s %16s\n", "", "write Mrows/s", "read Mrows/s", "random Mreads/s");
  std::printf("%-22s %14.2f %14.2f %16.3f\n", "rfm_Table", perSecond(rows, table.write), perSecond(rows, table.read),
              perSecond(randomReads, table.random));
  std::printf("%-22s %14.2f %14.2f %16.3f\n", "SQLite", perSecond(rows, sqlite.write), perSecond(rows, sqlite.read),
              perSecond(randomReads, sqlite.random));
  std::printf("%-22s %14.2f %14.2f\n", "plain write/read", perSecond(rows, raw.write), perSecond(rows, raw.read));
  std::printf("rfm_Table / SQLite: write %.2f, read %.2f, random %.2f\n", sqlite.write / table.write,
              sqlite.read / table.read, sqlite.random / table.random);
  std::printf("rfm_Table / plain:  write %.2f, read %.2f\n", raw.write / table.write, raw.read / table.read);
  std::printf("rfm_Table processor time: write %.2f s user + %.2f s system, read %.2f s user + %.2f s system\n",
              table.writeSplit.user, table.writeSplit.system, table.readSplit.user, table.readSplit.system);
  return 0;
}
