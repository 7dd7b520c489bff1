// Reads one database sequentially through a URL (the file assistant on this
// machine, its pages through the network file cache) and through a local
// open, in one run, and prints the throughputs and their ratio: half the
// database is a table of node rows (an int and six doubles) read row by row,
// half an array of doubles read in calls of 1 MiB; and the whole file is
// read through rfm_File in calls of 64 KiB. Every pass checks what it read.
// The page cache is warm for both, so the ratio is the cost of the remote
// path itself: the pipe, the cache file and the page bookkeeping.
//
//   rfm_RemoteCompare [MiB]     default 512; TMPDIR picks the folder

#include "zqa_Bench.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_FileCache.h"
#include "rfm_Table.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using DoubleArray = rfm_Array<double, rfm_TypeDouble>;

constexpr int kValuesPerCall = 1 << 17;  // 1 MiB of doubles
constexpr int kFileCall = 64 * 1024;
constexpr int kRepeats = 3;

double Value(long long i) { return static_cast<double>(i) * 0.5 - 7.0; }

struct Objects {
  rfm_Handle table;
  long long rows;
  int rowBytes;
  rfm_Handle array;
  long long values;
};

constexpr int kRowFields = 6;

Objects WriteDatabase(std::string const& path, long long bytes) {
  rfm_Database database =
      rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), "BNCH", "benchmark", 0);
  rfm_TableMetadata layout("Nodes", 1);
  rfm_FieldHandle const id(layout.DefineIntField("id"));
  std::vector<rfm_FieldHandle> values;
  for (int f = 0; f < kRowFields; ++f) values.emplace_back(layout.DefineDoubleField(("v" + std::to_string(f)).c_str()));
  rfm_Table table = database.Table(layout, 1 << 20, -1);
  Objects objects{table.Handle(), bytes / 2 / table.RowSize(), table.RowSize(), rfm_Handle(), 0};
  for (long long node = 0; node < objects.rows; ++node) {
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(id, static_cast<int>(node));
    for (int f = 0; f < kRowFields; ++f) row.WriteFieldDouble(values[f], Value(node + f));
  }
  table.Flush();

  DoubleArray array = database.ArrayDouble(1, 1 << 20, 0);
  objects.array = array.Handle();
  objects.values = bytes / 2 / 8 / kValuesPerCall * kValuesPerCall;
  std::vector<double> block(kValuesPerCall);
  for (long long done = 0; done < objects.values; done += kValuesPerCall) {
    for (int i = 0; i < kValuesPerCall; ++i) block[i] = Value(done + i);
    array.Write(block.data(), kValuesPerCall);
  }
  array.Flush();
  return objects;
}

rfm_Database OpenDatabase(std::string const& name) {
  return rfm_Database::Open(rfm_File::Open(name.c_str(), utl_FileAccessRead, false), "");
}

// Seconds to read the table row by row, checking every field.
double ReadRows(std::string const& name, Objects const& objects) {
  return zqa_Seconds([&] {
    rfm_Database database = OpenDatabase(name);
    rfm_Table table = database.Table(objects.table, -1, -1);
    rfm_FieldHandle const id(table.Index("id"));
    std::vector<rfm_FieldHandle> values;
    for (int f = 0; f < kRowFields; ++f) values.emplace_back(table.Index(("v" + std::to_string(f)).c_str()));
    zqa_Check(table.Length() == objects.rows, "row count");
    for (long long node = 0; node < objects.rows; ++node) {
      rfm_Row row = table.ReadRow(static_cast<int>(node));
      zqa_Check(row.ReadFieldInt(id) == static_cast<int>(node), "row id");
      for (int f = 0; f < kRowFields; ++f) zqa_Check(row.ReadFieldDouble(values[f]) == Value(node + f), "row value");
    }
  });
}

// Seconds to read the array whole, checking every value.
double ReadArray(std::string const& name, Objects const& objects) {
  return zqa_Seconds([&] {
    rfm_Database database = OpenDatabase(name);
    DoubleArray array = database.ArrayDouble(objects.array, -1, 0);
    zqa_Check(array.Length() == objects.values, "array length");
    std::vector<double> block(kValuesPerCall);
    for (long long done = 0; done < objects.values; done += kValuesPerCall) {
      zqa_Check(array.Read(block.data(), kValuesPerCall) == kValuesPerCall, "array read");
      for (int i = 0; i < kValuesPerCall; ++i) zqa_Check(block[i] == Value(done + i), "array value");
    }
  });
}

// Seconds to read the file whole through rfm_File; the bytes must equal the
// local file's, summed.
double ReadFile(std::string const& name, long long bytes, unsigned long long& sum) {
  return zqa_Seconds([&] {
    rfm_File file = rfm_File::Open(name.c_str(), utl_FileAccessRead, false);
    std::vector<char> block(kFileCall);
    long long total = 0;
    unsigned long long s = 0;
    for (int got; (got = file.Read(block.data(), kFileCall)) > 0;) {
      total += got;
      for (int i = 0; i < got; i += 512) s += static_cast<unsigned char>(block[i]);
    }
    zqa_Check(total == bytes, "file length");
    sum = s;
  });
}

double Best(std::function<double()> const& pass) {
  double best = 1e30;
  for (int i = 0; i < kRepeats; ++i) best = std::min(best, pass());
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  long long const mib = argc > 1 ? std::atoll(argv[1]) : 512;
  std::string const path = zqa_BenchPath("rfm_RemoteCompare.zdb");
  std::string const url = std::string("zbxrdb://localhost/") + path;
  std::string const searchPath = std::string(ZQA_ASSISTANT_DIRECTORY) + ":" + std::getenv("PATH");
  ::setenv("PATH", searchPath.c_str(), 1);

  Objects const objects = WriteDatabase(path, mib << 20);
  long long const bytes = rfm_File::Open(path.c_str(), utl_FileAccessRead, false).Length();
  double const fileMiB = static_cast<double>(bytes) / (1 << 20);
  double const tableMiB = static_cast<double>(bytes) / 2 / (1 << 20);
  double const arrayMiB = static_cast<double>(objects.values) * 8 / (1 << 20);
  std::printf("database of %.1f MiB: %lld rows of %d bytes, %lld doubles; network cache pages of %d KiB; best of %d; "
              "page cache warm\n",
              fileMiB, objects.rows, objects.rowBytes, objects.values, rfm_FileCache::Instance().PageSize() / 1024,
              kRepeats);

  struct Line {
    char const* what;
    double megabytes;
    double local;
    double remote;
  };
  unsigned long long localSum = 0;
  unsigned long long remoteSum = 0;
  Line const lines[] = {
      {"table rows, one row at a time", tableMiB, Best([&] { return ReadRows(path, objects); }),
       Best([&] { return ReadRows(url, objects); })},
      {"array of doubles, 1 MiB calls", arrayMiB, Best([&] { return ReadArray(path, objects); }),
       Best([&] { return ReadArray(url, objects); })},
      {"whole file through rfm_File, 64 KiB calls", fileMiB, Best([&] { return ReadFile(path, bytes, localSum); }),
       Best([&] { return ReadFile(url, bytes, remoteSum); })},
  };
  zqa_Check(localSum == remoteSum, "file contents");
  ::unlink(path.c_str());

  std::printf("%-44s %12s %12s %8s\n", "", "local MiB/s", "URL MiB/s", "ratio");
  for (Line const& line : lines) {
    std::printf("%-44s %12.1f %12.1f %8.2f\n", line.what, line.megabytes / line.local, line.megabytes / line.remote,
                line.local / line.remote);
  }
  std::printf("aim: URL at least 0.5 of local\n");
  return 0;
}
