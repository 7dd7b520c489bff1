// Rows of (int, double, double, string from a set of 1000) written and read
// back in order, then read one at a time at random row numbers, through
// rfm_Table's row interface (and in order through its bulk path), through SQLite and HDF5 each set up as an
// experienced user sets it up, and as the same row bytes through plain
// write/read; then node result rows (an int and six doubles) through a
// compressed database file against HDF5's deflate and shuffle + deflate.
// The sides run in interleaved rounds; every value read is checked against
// the value written. Prints millions of rows per second at the fastest pass
// and at the median, and the ratios of the medians.
//
//   rfm_TableCompare [rows] [randomReads] [nodeRows] [rounds] [only]
//       defaults 10000000, 1000000, 2000000 and 5; TMPDIR picks the folder
//
// With "only" given as the name of one side (rows, bulk, sqlite, hdf5, plain,
// compressed, hdf5-deflate, hdf5-shuffle), runs that side alone, for a
// profiler.

#include "zqa_CompressedNodeSides.h"
#include "zqa_Bench.h"
#include "zqa_Hdf5.h"
#include "rfm_Database.h"
#include "rfm_Table.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kLabels = 1000;
constexpr int kLabelBytes = 16;  // HDF5's fixed string; the longest label is 9 bytes
constexpr int kBatchRows = 64 * 1024;
constexpr hsize_t kChunkRows = 16 * 1024;
char const kMagic[] = "BNCH";
char const kTableName[] = "Rows";

// Row i of the workload.
int A(int i) { return i; }
double B(int i) { return i * 0.5; }
double C(int i) { return -i * 0.25; }
int LabelOf(int i) { return i % kLabels; }

std::vector<cow_String> MakeLabels() {
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

// What every side of the first comparison works on.
struct Workload {
  std::string base;
  int rows;
  std::vector<int> picks;
  std::vector<cow_String> labels;

  cow_String const& Label(int i) const { return labels[static_cast<std::size_t>(LabelOf(i))]; }
};

// rfm_Table through NewRow / ReadRow.
void RowSide(Workload const& work, zqa_Measures& measures) {
  std::string const path = work.base + ".zdb";
  rfm_Handle handle;
  measures["write"] = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), kMagic, "", 0);
    rfm_TableMetadata layout(kTableName, 1);
    rfm_FieldHandle const a(layout.DefineIntField("a"));
    rfm_FieldHandle const b(layout.DefineDoubleField("b"));
    rfm_FieldHandle const c(layout.DefineDoubleField("c"));
    rfm_FieldHandle const d(layout.DefineStringField("d"));
    rfm_Table table = database.Table(layout, 1 << 20, -1);
    for (int i = 0; i < work.rows; ++i) {
      rfm_Row row = table.NewRow();
      row.WriteFieldInt(a, A(i));
      row.WriteFieldDouble(b, B(i));
      row.WriteFieldDouble(c, C(i));
      row.WriteFieldString(d, work.Label(i));
    }
    table.Flush();
    handle = table.Handle();
  });
  // A table opened by handle numbers its fields in name order.
  auto matches = [&](rfm_Table const& table, int i) {
    rfm_Row row = table.ReadRow(i);
    return row.ReadFieldInt(rfm_FieldHandle(0)) == A(i) && row.ReadFieldDouble(rfm_FieldHandle(1)) == B(i) &&
           row.ReadFieldDouble(rfm_FieldHandle(2)) == C(i) && row.ReadFieldString(rfm_FieldHandle(3)) == work.Label(i);
  };
  measures["read"] = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Table table = database.Table(handle, -1, -1);
    zqa_Check(table.Length() == work.rows, "rfm_Table length");
    for (int i = 0; i < work.rows; ++i) zqa_Check(matches(table, i), "rfm_Table row");
  });
  measures["random"] = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Table table = database.Table(handle, -1, -1);
    for (int pick : work.picks) zqa_Check(matches(table, pick), "rfm_Table random row");
  });
  ::unlink(path.c_str());
}

// rfm_Table through AppendColumns / ReadColumns in batches of 64 Ki rows,
// the strings read back as text.
void BulkSide(Workload const& work, zqa_Measures& measures) {
  std::string const path = work.base + "-bulk.zdb";
  std::size_t const batch = kBatchRows;
  std::vector<int> a(batch);
  std::vector<double> b(batch);
  std::vector<double> c(batch);
  std::vector<cow_String> d(batch);
  rfm_Handle handle;
  measures["write"] = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), kMagic, "", 0);
    rfm_TableMetadata layout(kTableName, 1);
    rfm_Column const columns[] = {
        rfm_Column::Ints(rfm_FieldHandle(layout.DefineIntField("a")), static_cast<int const*>(a.data())),
        rfm_Column::Doubles(rfm_FieldHandle(layout.DefineDoubleField("b")), static_cast<double const*>(b.data())),
        rfm_Column::Doubles(rfm_FieldHandle(layout.DefineDoubleField("c")), static_cast<double const*>(c.data())),
        rfm_Column::Strings(rfm_FieldHandle(layout.DefineStringField("d")), static_cast<cow_String const*>(d.data()))};
    rfm_Table table = database.Table(layout, 1 << 20, -1);
    for (int done = 0; done < work.rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, work.rows - done);
      for (int k = 0; k < count; ++k) {
        std::size_t const at = static_cast<std::size_t>(k);
        a[at] = A(done + k);
        b[at] = B(done + k);
        c[at] = C(done + k);
        d[at] = work.Label(done + k);
      }
      table.AppendColumns(count, columns, 4);
    }
    table.Flush();
    handle = table.Handle();
  });
  measures["read"] = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Table table = database.Table(handle, -1, -1);
    zqa_Check(table.Length() == work.rows, "rfm_Table bulk length");
    rfm_Column const columns[] = {rfm_Column::Ints(rfm_FieldHandle(table.Index("a")), a.data()),
                                  rfm_Column::Doubles(rfm_FieldHandle(table.Index("b")), b.data()),
                                  rfm_Column::Doubles(rfm_FieldHandle(table.Index("c")), c.data()),
                                  rfm_Column::Strings(rfm_FieldHandle(table.Index("d")), d.data())};
    for (int done = 0; done < work.rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, work.rows - done);
      zqa_Check(table.ReadColumns(done, kBatchRows, columns, 4) == count, "rfm_Table bulk read count");
      for (int k = 0; k < count; ++k) {
        std::size_t const at = static_cast<std::size_t>(k);
        int const i = done + k;
        zqa_Check(a[at] == A(i) && b[at] == B(i) && c[at] == C(i) && d[at] == work.Label(i), "rfm_Table bulk row");
      }
    }
  });
  ::unlink(path.c_str());
}

void Exec(sqlite3* db, char const* sql) {
  zqa_Check(sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
}

// A connection as an experienced user tunes one for a private bulk load and
// scan: 64 KiB pages, the file locked once for the whole connection, a page
// cache of 1 GiB, reads through a memory map, no journal, no syncs.
sqlite3* OpenSqlite(std::string const& path) {
  sqlite3* db = nullptr;
  zqa_Check(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "SQLite open");
  Exec(db, "PRAGMA page_size=65536");
  Exec(db, "PRAGMA locking_mode=EXCLUSIVE");
  Exec(db, "PRAGMA cache_size=-1048576");
  Exec(db, "PRAGMA mmap_size=2147418112");
  Exec(db, "PRAGMA journal_mode=OFF");
  Exec(db, "PRAGMA synchronous=OFF");
  return db;
}

bool SqliteMatches(sqlite3_stmt* statement, Workload const& work, int i) {
  cow_String const& label = work.Label(i);
  return sqlite3_column_int(statement, 0) == A(i) && sqlite3_column_double(statement, 1) == B(i) &&
         sqlite3_column_double(statement, 2) == C(i) && sqlite3_column_bytes(statement, 3) == label.Length() &&
         std::memcmp(sqlite3_column_text(statement, 3), label.CStr(), static_cast<std::size_t>(label.Length())) == 0;
}

// One transaction of inserts through a prepared statement; reads by rowid.
void SqliteSide(Workload const& work, zqa_Measures& measures) {
  std::string const path = work.base + ".sqlite";
  measures["write"] = zqa_Seconds([&] {
    sqlite3* db = OpenSqlite(path);
    Exec(db, "CREATE TABLE rows(a INTEGER, b REAL, c REAL, d TEXT)");
    Exec(db, "BEGIN");
    sqlite3_stmt* insert = nullptr;
    zqa_Check(sqlite3_prepare_v2(db, "INSERT INTO rows VALUES(?,?,?,?)", -1, &insert, nullptr) == SQLITE_OK,
              "SQLite insert");
    for (int i = 0; i < work.rows; ++i) {
      cow_String const& label = work.Label(i);
      sqlite3_bind_int(insert, 1, A(i));
      sqlite3_bind_double(insert, 2, B(i));
      sqlite3_bind_double(insert, 3, C(i));
      sqlite3_bind_text(insert, 4, label.CStr(), label.Length(), SQLITE_STATIC);
      zqa_Check(sqlite3_step(insert) == SQLITE_DONE, "SQLite insert step");
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    Exec(db, "COMMIT");
    sqlite3_close(db);
  });
  measures["read"] = zqa_Seconds([&] {
    sqlite3* db = OpenSqlite(path);
    sqlite3_stmt* scan = nullptr;
    zqa_Check(sqlite3_prepare_v2(db, "SELECT a,b,c,d FROM rows ORDER BY rowid", -1, &scan, nullptr) == SQLITE_OK,
              "SQLite scan");
    int i = 0;
    for (; sqlite3_step(scan) == SQLITE_ROW; ++i) zqa_Check(i < work.rows && SqliteMatches(scan, work, i), "SQLite row");
    zqa_Check(i == work.rows, "SQLite row count");
    sqlite3_finalize(scan);
    sqlite3_close(db);
  });
  measures["random"] = zqa_Seconds([&] {
    sqlite3* db = OpenSqlite(path);
    sqlite3_stmt* lookup = nullptr;
    zqa_Check(sqlite3_prepare_v2(db, "SELECT a,b,c,d FROM rows WHERE rowid=?", -1, &lookup, nullptr) == SQLITE_OK,
              "SQLite lookup");
    for (int pick : work.picks) {
      sqlite3_bind_int64(lookup, 1, pick + 1);
      zqa_Check(sqlite3_step(lookup) == SQLITE_ROW && SqliteMatches(lookup, work, pick), "SQLite random row");
      sqlite3_reset(lookup);
    }
    sqlite3_finalize(lookup);
    sqlite3_close(db);
  });
  ::unlink(path.c_str());
}

// One row in memory and in the HDF5 file: the same compound type for both,
// so that HDF5 copies rows without converting them. The explicit zero word
// keeps the doubles aligned without padding of unspecified value.
struct Hdf5Row {
  int a;
  int unused;
  double b;
  double c;
  char d[kLabelBytes];
};

hid_t Hdf5RowType() {
  hid_t text = H5Tcopy(H5T_C_S1);
  zqa_Hdf5Check(H5Tset_size(text, kLabelBytes), "HDF5 string size");
  zqa_Hdf5Check(H5Tset_strpad(text, H5T_STR_NULLPAD), "HDF5 string padding");
  hid_t row = H5Tcreate(H5T_COMPOUND, sizeof(Hdf5Row));
  zqa_Hdf5Check(H5Tinsert(row, "a", HOFFSET(Hdf5Row, a), H5T_NATIVE_INT), "HDF5 member a");
  zqa_Hdf5Check(H5Tinsert(row, "unused", HOFFSET(Hdf5Row, unused), H5T_NATIVE_INT), "HDF5 member unused");
  zqa_Hdf5Check(H5Tinsert(row, "b", HOFFSET(Hdf5Row, b), H5T_NATIVE_DOUBLE), "HDF5 member b");
  zqa_Hdf5Check(H5Tinsert(row, "c", HOFFSET(Hdf5Row, c), H5T_NATIVE_DOUBLE), "HDF5 member c");
  zqa_Hdf5Check(H5Tinsert(row, "d", HOFFSET(Hdf5Row, d), text), "HDF5 member d");
  H5Tclose(text);
  return row;
}

bool Hdf5Matches(Hdf5Row const& row, Workload const& work, int i) {
  cow_String const& label = work.Label(i);
  return row.a == A(i) && row.b == B(i) && row.c == C(i) &&
         std::strncmp(row.d, label.CStr(), kLabelBytes) == 0;
}

// A compound dataset chunked at 16 Ki rows, appended and read in batches of
// 64 Ki rows; random rows through a one-row hyperslab, with a chunk cache
// that holds the whole dataset.
void Hdf5Side(Workload const& work, zqa_Measures& measures) {
  std::string const path = work.base + ".h5";
  zqa_Hdf5Id type(Hdf5RowType(), H5Tclose, "HDF5 row type");
  std::vector<Hdf5Row> batch(kBatchRows);
  measures["write"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5CreateFile(path), H5Fclose, "HDF5 create");
    zqa_Hdf5Id space(zqa_Hdf5GrowingSpace(0), H5Sclose, "HDF5 space");
    zqa_Hdf5Id creation(zqa_Hdf5ChunkedCreation(kChunkRows), H5Pclose, "HDF5 creation properties");
    zqa_Hdf5Id dataset(H5Dcreate2(file, kTableName, type, space, H5P_DEFAULT, creation, H5P_DEFAULT), H5Dclose,
                       "HDF5 dataset");
    for (int done = 0; done < work.rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, work.rows - done);
      for (int k = 0; k < count; ++k) {
        int const i = done + k;
        Hdf5Row& row = batch[static_cast<std::size_t>(k)];
        row = Hdf5Row{A(i), 0, B(i), C(i), {}};
        cow_String const& label = work.Label(i);
        std::memcpy(row.d, label.CStr(), static_cast<std::size_t>(std::min(label.Length(), kLabelBytes)));
      }
      zqa_Hdf5Append(dataset, type, static_cast<hsize_t>(done), static_cast<hsize_t>(count), batch.data());
    }
  });
  measures["read"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5OpenFile(path), H5Fclose, "HDF5 open");
    zqa_Hdf5Id dataset(H5Dopen2(file, kTableName, H5P_DEFAULT), H5Dclose, "HDF5 dataset open");
    zqa_Hdf5Id space(H5Dget_space(dataset), H5Sclose, "HDF5 space");
    hsize_t length = 0;
    zqa_Hdf5Check(H5Sget_simple_extent_dims(space, &length, nullptr), "HDF5 length");
    zqa_Check(length == static_cast<hsize_t>(work.rows), "HDF5 length");
    for (int done = 0; done < work.rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, work.rows - done);
      zqa_Hdf5Read(dataset, type, static_cast<hsize_t>(done), static_cast<hsize_t>(count), batch.data());
      for (int k = 0; k < count; ++k) {
        zqa_Check(Hdf5Matches(batch[static_cast<std::size_t>(k)], work, done + k), "HDF5 row");
      }
    }
  });
  measures["random"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5OpenFile(path), H5Fclose, "HDF5 open");
    zqa_Hdf5Id access(H5Pcreate(H5P_DATASET_ACCESS), H5Pclose, "HDF5 dataset access properties");
    std::size_t const chunks = static_cast<std::size_t>(work.rows) / kChunkRows + 1;
    std::size_t const cacheSlots = 100003;  // a prime well above the chunk count
    zqa_Hdf5Check(H5Pset_chunk_cache(access, cacheSlots, chunks * kChunkRows * sizeof(Hdf5Row), 1.0),
                  "HDF5 chunk cache");
    zqa_Hdf5Id dataset(H5Dopen2(file, kTableName, access), H5Dclose, "HDF5 dataset open");
    zqa_Hdf5Id fileSpace(H5Dget_space(dataset), H5Sclose, "HDF5 file space");
    hsize_t const one = 1;
    zqa_Hdf5Id memorySpace(H5Screate_simple(1, &one, nullptr), H5Sclose, "HDF5 memory space");
    Hdf5Row row;
    for (int pick : work.picks) {
      hsize_t const at = static_cast<hsize_t>(pick);
      zqa_Hdf5Check(H5Sselect_hyperslab(fileSpace, H5S_SELECT_SET, &at, nullptr, &one, nullptr), "HDF5 hyperslab");
      zqa_Hdf5Check(H5Dread(dataset, type, memorySpace, fileSpace, H5P_DEFAULT, &row), "HDF5 random read");
      zqa_Check(Hdf5Matches(row, work, pick), "HDF5 random row");
    }
  });
  ::unlink(path.c_str());
}

// The row bytes as the library lays them out: the presence word (one bit
// per field), the int, the two doubles, and the string as the 8-byte file
// offset of its record in a pool.
constexpr int kRowBytes = 32;
constexpr std::uint32_t kAllPresent = 0xf;
constexpr std::uint64_t kPoolStart = 4096;
constexpr std::uint64_t kPoolRecordBytes = 32;

void EncodeRow(char* bytes, int i) {
  std::uint32_t const present = kAllPresent;
  int const a = A(i);
  double const b = B(i);
  double const c = C(i);
  std::uint64_t const offset = kPoolStart + static_cast<std::uint64_t>(LabelOf(i)) * kPoolRecordBytes;
  std::memcpy(bytes, &present, 4);
  std::memcpy(bytes + 4, &a, 4);
  std::memcpy(bytes + 8, &b, 8);
  std::memcpy(bytes + 16, &c, 8);
  std::memcpy(bytes + 24, &offset, 8);
}

// Decodes every field as the library does, the string through its offset
// into the pool, and compares it with row i.
bool PlainMatches(char const* bytes, Workload const& work, int i) {
  std::uint32_t present;
  int a;
  double b, c;
  std::uint64_t offset;
  std::memcpy(&present, bytes, 4);
  std::memcpy(&a, bytes + 4, 4);
  std::memcpy(&b, bytes + 8, 8);
  std::memcpy(&c, bytes + 16, 8);
  std::memcpy(&offset, bytes + 24, 8);
  if (present != kAllPresent || offset < kPoolStart || (offset - kPoolStart) % kPoolRecordBytes != 0) return false;
  std::uint64_t const index = (offset - kPoolStart) / kPoolRecordBytes;
  if (index >= work.labels.size()) return false;
  cow_String const label = work.labels[index];
  return a == A(i) && b == B(i) && c == C(i) && label == work.Label(i);
}

// The same row bytes through write/read of 64 KiB calls; random rows by pread.
void PlainSide(Workload const& work, zqa_Measures& measures) {
  std::string const path = work.base + ".raw";
  constexpr int kRowsPerCall = 64 * 1024 / kRowBytes;
  std::vector<char> buffer(static_cast<std::size_t>(kRowsPerCall) * kRowBytes);
  measures["write"] = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    zqa_Check(fd >= 0, "plain open");
    for (int done = 0; done < work.rows; done += kRowsPerCall) {
      int const count = std::min(kRowsPerCall, work.rows - done);
      for (int k = 0; k < count; ++k) EncodeRow(buffer.data() + static_cast<std::size_t>(k) * kRowBytes, done + k);
      ssize_t const bytes = static_cast<ssize_t>(count) * kRowBytes;
      zqa_Check(::write(fd, buffer.data(), static_cast<std::size_t>(bytes)) == bytes, "plain write");
    }
    ::close(fd);
  });
  measures["read"] = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    zqa_Check(fd >= 0, "plain open");
    int i = 0;
    for (ssize_t got; (got = ::read(fd, buffer.data(), buffer.size())) > 0;) {
      zqa_Check(got % kRowBytes == 0, "plain whole rows");
      for (ssize_t at = 0; at < got; at += kRowBytes, ++i) {
        zqa_Check(PlainMatches(buffer.data() + at, work, i), "plain row");
      }
    }
    ::close(fd);
    zqa_Check(i == work.rows, "plain row count");
  });
  measures["random"] = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    zqa_Check(fd >= 0, "plain open");
    char row[kRowBytes];
    for (int pick : work.picks) {
      zqa_Check(::pread(fd, row, kRowBytes, static_cast<off_t>(pick) * kRowBytes) == kRowBytes, "plain pread");
      zqa_Check(PlainMatches(row, work, pick), "plain random row");
    }
    ::close(fd);
  });
  ::unlink(path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  int const rows = argc > 1 ? std::atoi(argv[1]) : 10000000;
  int const randomReads = argc > 2 ? std::atoi(argv[2]) : 1000000;
  int const nodeRows = argc > 3 ? std::atoi(argv[3]) : 2000000;
  int const rounds = argc > 4 ? std::atoi(argv[4]) : zqa_Rounds::kDefaultRounds;
  std::string const only = argc > 5 ? argv[5] : "";
  zqa_Check(rows > 0 && randomReads > 0 && nodeRows > 0 && rounds > 0, "arguments: counts above 0");
  zqa_Check(H5open() >= 0, "HDF5 library");

  Workload const work{zqa_BenchPath("zqa-table"), rows, RandomRows(rows, randomReads), MakeLabels()};
  zqa_Rounds table;
  table.Side("rows", [&](zqa_Measures& m) { RowSide(work, m); });
  table.Side("bulk", [&](zqa_Measures& m) { BulkSide(work, m); });
  table.Side("sqlite", [&](zqa_Measures& m) { SqliteSide(work, m); });
  table.Side("hdf5", [&](zqa_Measures& m) { Hdf5Side(work, m); });
  table.Side("plain", [&](zqa_Measures& m) { PlainSide(work, m); });
  zqa_CompressedNodeSides nodes(work.base, nodeRows);
  zqa_Rounds compressed;
  nodes.AddSides(compressed);

  zqa_Check(only.empty() || table.Has(only) || compressed.Has(only), "the side to run alone is one of the sides");
  if (only.empty() || table.Has(only)) table.Run(rounds, only);
  if (only.empty() || compressed.Has(only)) compressed.Run(rounds, only);

  std::printf("rfm_TableCompare: %d rows of (int, double, double, string of %d), %d random single-row reads, "
              "%d node rows (int, six doubles) compressed; %d interleaved rounds, page cache warm\n",
              rows, kLabels, randomReads, nodeRows, rounds);
  zqa_Rounds::PrintRateHeading("millions of rows per second");
  std::vector<std::pair<std::string, double>> const counts = {
      {"write", rows}, {"read", rows}, {"random", randomReads}};
  for (char const* side : {"rows", "bulk", "sqlite", "hdf5", "plain"}) table.PrintRates(side, counts);
  nodes.PrintRates(compressed);
  if (!only.empty()) return 0;
  std::printf("ratios of medians (above 1: the first is faster)\n");
  std::vector<std::string> const all = {"write", "read", "random"};
  table.PrintRatios("rfm rows / SQLite", "rows", "sqlite", all);
  table.PrintRatios("rfm rows / HDF5", "rows", "hdf5", all);
  table.PrintRatios("rfm rows / plain", "rows", "plain", all);
  table.PrintRatios("rfm bulk / SQLite", "bulk", "sqlite", all);
  table.PrintRatios("rfm bulk / HDF5", "bulk", "hdf5", all);
  table.PrintRatios("rfm bulk / plain", "bulk", "plain", all);
  nodes.PrintRatios(compressed);
  return 0;
}
