// Writes and reads back the same doubles through rfm_Array<double> with a
// 64 KiB buffer (in calls of a million values, and one row of three values
// per call) and through plain write/read of a million values per call on a
// file, in one run, and prints the throughputs and the ratios to the plain
// baseline. Every pass checks what it read.
//
//   rfm_ArrayCompare [millions of doubles]     default 100; TMPDIR picks the folder

#include "zqa_Bench.h"
#include "rfm_Array.h"
#include "rfm_Database.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using DoubleArray = rfm_Array<double, rfm_TypeDouble>;

constexpr int kLargeCall = 1 << 20;  // values per call
constexpr int kFields = 3;
constexpr int kBufferSize = 64 * 1024;
constexpr int kRepeats = 3;

// The values of one call; every call of the run moves the same ones.
std::vector<double> Pattern() {
  std::vector<double> block(kLargeCall);
  for (int i = 0; i < kLargeCall; ++i) block[i] = i * 0.25 - 1000;
  return block;
}

zqa_PassTimes RawPass(std::string const& path, long long values, std::vector<double> const& block) {
  zqa_PassTimes result{};
  std::vector<double> back(kLargeCall);
  std::size_t const bytes = kLargeCall * sizeof(double);
  result.writeSeconds = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    zqa_Check(fd >= 0, "open for writing");
    for (long long done = 0; done < values; done += kLargeCall) {
      zqa_Check(::write(fd, block.data(), bytes) == static_cast<ssize_t>(bytes), "write");
    }
    ::close(fd);
  });
  result.readSeconds = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    zqa_Check(fd >= 0, "open for reading");
    for (long long done = 0; done < values; done += kLargeCall) {
      zqa_Check(::read(fd, back.data(), bytes) == static_cast<ssize_t>(bytes), "read");
      zqa_Check(std::memcmp(back.data(), block.data(), bytes) == 0, "raw contents");
    }
    ::close(fd);
  });
  ::unlink(path.c_str());
  return result;
}

// Through an array of rows of kFields doubles, rowsPerCall rows per call.
zqa_PassTimes ArrayPass(std::string const& path, long long values, std::vector<double> const& block, int rowsPerCall) {
  zqa_PassTimes result{};
  int const perCall = rowsPerCall * kFields;
  int const callsPerBlock = kLargeCall / perCall;
  int const blockValues = callsPerBlock * perCall;
  rfm_Handle handle;
  result.writeSeconds = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), "BNCH", "benchmark", 0);
    DoubleArray array = database.ArrayDouble(kFields, 1 << 20, kBufferSize);
    for (long long done = 0; done < values; done += blockValues) {
      for (int call = 0; call < callsPerBlock; ++call) array.Write(block.data() + call * perCall, rowsPerCall);
    }
    array.Flush();
    handle = array.Handle();
  });
  std::vector<double> back(kLargeCall);
  result.readSeconds = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), "BNCH");
    DoubleArray array = database.ArrayDouble(handle, -1, kBufferSize);
    for (long long done = 0; done < values; done += blockValues) {
      for (int call = 0; call < callsPerBlock; ++call) {
        zqa_Check(array.Read(back.data() + call * perCall, rowsPerCall) == perCall, "array read");
      }
      zqa_Check(std::memcmp(back.data(), block.data(), blockValues * sizeof(double)) == 0, "array contents");
    }
  });
  ::unlink(path.c_str());
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  long long millions = argc > 1 ? std::atoll(argv[1]) : 100;
  zqa_Check(millions > 0, "millions of doubles");
  long long values = millions * 1000000;
  std::string base = zqa_BenchPath("zqa-array");
  std::vector<double> block = Pattern();

  zqa_PassTimes raw = zqa_Best(kRepeats, [&] { return RawPass(base + ".raw", values, block); });
  zqa_PassTimes large = zqa_Best(kRepeats, [&] { return ArrayPass(base + ".zdb", values, block, kLargeCall / kFields); });
  zqa_PassTimes row = zqa_Best(kRepeats, [&] { return ArrayPass(base + ".zdb", values, block, 1); });

  double mib = static_cast<double>(values) * sizeof(double) / (1 << 20);
  std::printf("%lld million doubles (%.0f MiB), best of %d, page cache warm\n", millions, mib, kRepeats);
  std::printf("%-36s %12s %12s %12s %12s\n", "", "write MiB/s", "read MiB/s", "write ratio", "read ratio");
  auto line = [&](char const* name, zqa_PassTimes const& r) {
    std::printf("%-36s %12.0f %12.0f %12.2f %12.2f\n", name, mib / r.writeSeconds, mib / r.readSeconds,
                raw.writeSeconds / r.writeSeconds, raw.readSeconds / r.readSeconds);
  };
  line("plain write/read, 8 MiB calls", raw);
  line("rfm_Array<double>, 8 MiB calls", large);
  line("rfm_Array<double>, one 3-value row", row);
  return 0;
}
