// Reads one database sequentially through a URL (the file assistant on this
// machine, its pages through the network file cache) and through a local
// open, in one run, and prints the throughputs and their ratio: half the
// database is a table of node rows (an int and six doubles) read row by row,
// half an array of doubles read in calls of 1 MiB; and the whole file is
// read through rfm_File in calls of 64 KiB. Every pass checks every value it
// read.
// The page cache is warm for both, so the ratio is the cost of the remote
// path itself: the pipe, the cache file and the page bookkeeping.
//
//   rfm_RemoteCompare [MiB [passes [rows|array|file]]]
//     default 512 MiB, 7 passes a side, all three workloads; TMPDIR picks
//     the folder

#include "zqa_Bench.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_FileCache.h"
#include "rfm_Table.h"

#include <algorithm>
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
constexpr int kDefaultPasses = 7;

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

// Seconds to read the file whole through rfm_File, every block compared
// with the file's bytes read beforehand.
double ReadFile(std::string const& name, std::string const& expected) {
  return zqa_Seconds([&] {
    rfm_File file = rfm_File::Open(name.c_str(), utl_FileAccessRead, false);
    std::vector<char> block(kFileCall);
    std::size_t total = 0;
    for (int got; (got = file.Read(block.data(), kFileCall)) > 0;) {
      zqa_Check(total + static_cast<std::size_t>(got) <= expected.size(), "file length");
      zqa_Check(std::memcmp(block.data(), expected.data() + total, static_cast<std::size_t>(got)) == 0, "file bytes");
      total += static_cast<std::size_t>(got);
    }
    zqa_Check(total == expected.size(), "file length");
  });
}

// The fastest and the middle pass of a side; the middle one says more on a
// shared machine, where the fastest can be luck.
struct Spread {
  double min;
  double median;
};

Spread SpreadOf(std::vector<double> const& seconds) {
  return {*std::min_element(seconds.begin(), seconds.end()), zqa_Median(seconds)};
}

struct Workload {
  char const* name;
  char const* what;
  double megabytes;
  std::function<double(std::string const&)> pass;
};

}  // namespace

int main(int argc, char** argv) {
  long long const mib = argc > 1 ? std::atoll(argv[1]) : 512;
  int const passes = argc > 2 ? std::max(1, std::atoi(argv[2])) : kDefaultPasses;
  std::string const only = argc > 3 ? argv[3] : "";
  std::string const path = zqa_BenchPath("rfm_RemoteCompare.zdb");
  std::string const url = std::string("zbxrdb://localhost/") + path;
  std::string const searchPath = std::string(ZQA_ASSISTANT_DIRECTORY) + ":" + std::getenv("PATH");
  ::setenv("PATH", searchPath.c_str(), 1);

  Objects const objects = WriteDatabase(path, mib << 20);
  std::string expected;
  {
    rfm_File file = rfm_File::Open(path.c_str(), utl_FileAccessRead, false);
    expected.resize(static_cast<std::size_t>(file.Length()));
    zqa_Check(file.Read(expected.data(), static_cast<int>(expected.size())) == static_cast<int>(expected.size()),
              "file read whole");
  }
  double const fileMiB = static_cast<double>(expected.size()) / (1 << 20);
  double const tableMiB = static_cast<double>(objects.rows) * objects.rowBytes / (1 << 20);
  double const arrayMiB = static_cast<double>(objects.values) * 8 / (1 << 20);
  std::printf("database of %.1f MiB: %lld rows of %d bytes, %lld doubles; network cache pages of %d KiB; %d passes "
              "of each side, alternating; page cache warm\n",
              fileMiB, objects.rows, objects.rowBytes, objects.values, rfm_FileCache::Instance().PageSize() / 1024,
              passes);

  Workload const workloads[] = {
      {"rows", "table rows, one row at a time", tableMiB,
       [&](std::string const& name) { return ReadRows(name, objects); }},
      {"array", "array of doubles, 1 MiB calls", arrayMiB,
       [&](std::string const& name) { return ReadArray(name, objects); }},
      {"file", "whole file through rfm_File, 64 KiB calls", fileMiB,
       [&](std::string const& name) { return ReadFile(name, expected); }},
  };
  std::printf("%-44s %21s %21s %8s\n", "", "local MiB/s", "URL MiB/s", "ratio");
  std::printf("%-44s %10s %10s %10s %10s %8s\n", "", "best", "median", "best", "median", "medians");
  for (Workload const& workload : workloads) {
    if (!only.empty() && only != workload.name) continue;
    std::vector<double> local;
    std::vector<double> remote;
    // Sides alternate, and which goes first alternates too, so that a
    // neighbour's burst on the shared machine falls on both.
    for (int pass = 0; pass < passes; ++pass) {
      if (pass % 2 == 0) local.push_back(workload.pass(path));
      remote.push_back(workload.pass(url));
      if (pass % 2 == 1) local.push_back(workload.pass(path));
    }
    Spread const l = SpreadOf(local);
    Spread const r = SpreadOf(remote);
    std::printf("%-44s %10.1f %10.1f %10.1f %10.1f %8.2f\n", workload.what, workload.megabytes / l.min,
                workload.megabytes / l.median, workload.megabytes / r.min, workload.megabytes / r.median,
                l.median / r.median);
  }
  ::unlink(path.c_str());
  std::printf("aim: URL at least 0.5 of local for the array and the whole file\n");
  return 0;
}
