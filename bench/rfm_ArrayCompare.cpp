// Writes doubles and reads them back through rfm_Array<double> (rows of
// three values, in calls of 6 MiB and in calls of one row), through a
// chunked one-dimensional HDF5 dataset as an expert sets it up (latest
// format, fill never, appended and read in the same 6 MiB calls) and
// through plain write/read of 6 MiB calls, in interleaved rounds. Each
// value differs from its neighbours and every value read is checked.
// Prints MiB per second at the fastest pass and at the median, and the
// ratios of the medians.
//
//   rfm_ArrayCompare [millions of doubles] [rounds] [only]   defaults 100 and 5
//
// With "only" given as array, array-row, hdf5 or plain, runs that side
// alone, for a profiler. TMPDIR picks the folder.

#include "zqa_Bench.h"
#include "zqa_Hdf5.h"
#include "rfm_Array.h"
#include "rfm_Database.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using DoubleArray = rfm_Array<double, rfm_TypeDouble>;

constexpr int kFields = 3;
constexpr int kRowsPerCall = 1 << 18;
constexpr int kValuesPerCall = kRowsPerCall * kFields;  // 6 MiB
constexpr int kBufferSize = 64 * 1024;
constexpr hsize_t kChunkValues = 1 << 17;  // 1 MiB chunks, six to a call
char const kMagic[] = "BNCH";
char const kDatasetName[] = "values";

double Value(long long i) { return static_cast<double>(i) * 0.25 - 1000.0; }

// Values first to first + count - 1.
void Fill(std::vector<double>& block, long long first, int count) {
  for (int k = 0; k < count; ++k) block[static_cast<std::size_t>(k)] = Value(first + k);
}

bool Matches(std::vector<double> const& block, long long first, int count) {
  for (int k = 0; k < count; ++k) {
    if (block[static_cast<std::size_t>(k)] != Value(first + k)) return false;
  }
  return true;
}

// The values in calls of at most kValuesPerCall: each call's first value and count.
template <class Call>
void ForEachCall(long long values, Call const& call) {
  for (long long done = 0; done < values; done += kValuesPerCall) {
    call(done, static_cast<int>(std::min<long long>(kValuesPerCall, values - done)));
  }
}

void PlainSide(std::string const& path, long long values, zqa_Measures& measures) {
  std::vector<double> block(kValuesPerCall);
  measures["write"] = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    zqa_Check(fd >= 0, "plain open");
    ForEachCall(values, [&](long long first, int count) {
      Fill(block, first, count);
      ssize_t const bytes = static_cast<ssize_t>(count) * 8;
      zqa_Check(::write(fd, block.data(), static_cast<std::size_t>(bytes)) == bytes, "plain write");
    });
    ::close(fd);
  });
  measures["read"] = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    zqa_Check(fd >= 0, "plain open");
    ForEachCall(values, [&](long long first, int count) {
      ssize_t const bytes = static_cast<ssize_t>(count) * 8;
      zqa_Check(::read(fd, block.data(), static_cast<std::size_t>(bytes)) == bytes, "plain read");
      zqa_Check(Matches(block, first, count), "plain values");
    });
    ::close(fd);
  });
  ::unlink(path.c_str());
}

// Rows of kFields doubles, rowsPerCall rows per call.
void ArraySide(std::string const& path, long long values, int rowsPerCall, zqa_Measures& measures) {
  std::vector<double> block(kValuesPerCall);
  int const valuesPerCall = rowsPerCall * kFields;
  rfm_Handle handle;
  measures["write"] = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), kMagic, "", 0);
    DoubleArray array = database.ArrayDouble(kFields, 1 << 20, kBufferSize);
    ForEachCall(values, [&](long long first, int count) {
      Fill(block, first, count);
      for (int at = 0; at < count; at += valuesPerCall) {
        array.Write(block.data() + at, std::min(valuesPerCall, count - at) / kFields);
      }
    });
    array.Flush();
    handle = array.Handle();
  });
  measures["read"] = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    DoubleArray array = database.ArrayDouble(handle, -1, kBufferSize);
    zqa_Check(static_cast<long long>(array.Length()) * kFields == values, "rfm_Array length");
    ForEachCall(values, [&](long long first, int count) {
      for (int at = 0; at < count; at += valuesPerCall) {
        int const rows = std::min(valuesPerCall, count - at) / kFields;
        zqa_Check(array.Read(block.data() + at, rows) == rows * kFields, "rfm_Array read");
      }
      zqa_Check(Matches(block, first, count), "rfm_Array values");
    });
  });
  ::unlink(path.c_str());
}

void Hdf5Side(std::string const& path, long long values, zqa_Measures& measures) {
  std::vector<double> block(kValuesPerCall);
  measures["write"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5CreateFile(path), H5Fclose, "HDF5 create");
    zqa_Hdf5Id space(zqa_Hdf5GrowingSpace(0), H5Sclose, "HDF5 space");
    zqa_Hdf5Id creation(zqa_Hdf5ChunkedCreation(kChunkValues), H5Pclose, "HDF5 creation properties");
    zqa_Hdf5Id dataset(H5Dcreate2(file, kDatasetName, H5T_NATIVE_DOUBLE, space, H5P_DEFAULT, creation, H5P_DEFAULT),
                       H5Dclose, "HDF5 dataset");
    ForEachCall(values, [&](long long first, int count) {
      Fill(block, first, count);
      zqa_Hdf5Append(dataset, H5T_NATIVE_DOUBLE, static_cast<hsize_t>(first), static_cast<hsize_t>(count),
                     block.data());
    });
  });
  measures["read"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5OpenFile(path), H5Fclose, "HDF5 open");
    zqa_Hdf5Id dataset(H5Dopen2(file, kDatasetName, H5P_DEFAULT), H5Dclose, "HDF5 dataset open");
    ForEachCall(values, [&](long long first, int count) {
      zqa_Hdf5Read(dataset, H5T_NATIVE_DOUBLE, static_cast<hsize_t>(first), static_cast<hsize_t>(count),
                   block.data());
      zqa_Check(Matches(block, first, count), "HDF5 values");
    });
  });
  ::unlink(path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  long long const millions = argc > 1 ? std::atoll(argv[1]) : 100;
  int const rounds = argc > 2 ? std::atoi(argv[2]) : zqa_Rounds::kDefaultRounds;
  std::string const only = argc > 3 ? argv[3] : "";
  zqa_Check(millions > 0 && millions <= 6000 && rounds > 0, "arguments: 1 to 6000 million doubles, rounds above 0");
  zqa_Check(H5open() >= 0, "HDF5 library");
  long long const values = millions * 1000000 / kFields * kFields;  // whole rows
  std::string const base = zqa_BenchPath("zqa-array");

  zqa_Rounds sides;
  sides.Side("array", [&](zqa_Measures& m) { ArraySide(base + ".zdb", values, kRowsPerCall, m); });
  sides.Side("array-row", [&](zqa_Measures& m) { ArraySide(base + ".zdb", values, 1, m); });
  sides.Side("hdf5", [&](zqa_Measures& m) { Hdf5Side(base + ".h5", values, m); });
  sides.Side("plain", [&](zqa_Measures& m) { PlainSide(base + ".raw", values, m); });
  sides.Run(rounds, only);

  double const mib = static_cast<double>(values) * sizeof(double) / (1 << 20);
  std::printf("rfm_ArrayCompare: %lld doubles (%.0f MiB) written and read, calls of 6 MiB unless said; "
              "%d interleaved rounds, page cache warm\n",
              values, mib, rounds);
  zqa_Rounds::PrintRateHeading("MiB/s (array-row: one 3-value row per call)");
  std::vector<std::pair<std::string, double>> const counts = {{"write", mib}, {"read", mib}};
  for (char const* side : {"array", "array-row", "hdf5", "plain"}) sides.PrintRates(side, counts, 1);
  if (!only.empty()) return 0;
  std::printf("ratios of medians (above 1: the first is faster)\n");
  sides.PrintRatios("rfm_Array / HDF5", "array", "hdf5", {"write", "read"});
  sides.PrintRatios("rfm_Array / plain", "array", "plain", {"write", "read"});
  sides.PrintRatios("rfm_Array rows / plain", "array-row", "plain", {"write", "read"});
  return 0;
}
