// Writes and reads back the same bytes through rfm_BufferedSpace (in 64 KiB
// calls, and in 8-byte calls with the default 2 KiB buffer and with a 64 KiB
// one) and through plain write/read of 64 KiB on a file, in one run, and
// prints the throughputs and the ratios to the plain baseline. Every pass
// checks what it read.
//
//   rfm_BufferedSpaceCompare [MiB]     default 1024; TMPDIR picks the folder

#include "zqa_Bench.h"
#include "rfm_BufferedSpace.h"
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

constexpr int kLargeCall = 64 * 1024;
constexpr int kSmallCall = 8;
constexpr int kRepeats = 3;

// The bytes of one 64 KiB block; every block of the run is the same.
std::vector<char> Pattern() {
  std::vector<char> block(kLargeCall);
  for (int i = 0; i < kLargeCall; ++i) block[i] = static_cast<char>((i * 131 + 7) % 251);
  return block;
}

zqa_PassTimes RawPass(std::string const& path, long long bytes, std::vector<char> const& block) {
  zqa_PassTimes result{};
  std::vector<char> back(kLargeCall);
  result.writeSeconds = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    zqa_Check(fd >= 0, "open for writing");
    for (long long done = 0; done < bytes; done += kLargeCall) {
      zqa_Check(::write(fd, block.data(), kLargeCall) == kLargeCall, "write");
    }
    ::close(fd);
  });
  result.readSeconds = zqa_Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    zqa_Check(fd >= 0, "open for reading");
    for (long long done = 0; done < bytes; done += kLargeCall) {
      zqa_Check(::read(fd, back.data(), kLargeCall) == kLargeCall, "read");
      zqa_Check(std::memcmp(back.data(), block.data(), kLargeCall) == 0, "raw contents");
    }
    ::close(fd);
  });
  ::unlink(path.c_str());
  return result;
}

// Through a buffered space of bufferSize bytes (0: the default) in calls of
// Call bytes, a constant as in a caller that moves one value at a time.
template <int Call>
zqa_PassTimes SpacePass(std::string const& path, long long bytes, std::vector<char> const& block, int bufferSize) {
  constexpr int call = Call;
  zqa_PassTimes result{};
  rfm_Handle handle;
  result.writeSeconds = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, true), "BNCH", "benchmark", 0);
    rfm_BufferedSpace space(database.Space(kLargeCall), bufferSize);
    for (long long done = 0; done < bytes; done += kLargeCall) {
      for (int at = 0; at < kLargeCall; at += call) space.Write(block.data() + at, call);
    }
    space.Flush();
    handle = space.Handle();
  });
  std::vector<char> back(kLargeCall);
  result.readSeconds = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), "BNCH");
    rfm_BufferedSpace space(database.Space(handle, -1), bufferSize);
    zqa_Check(space.Length() == bytes, "space length");
    for (long long done = 0; done < bytes; done += kLargeCall) {
      for (int at = 0; at < kLargeCall; at += call) zqa_Check(space.Read(back.data() + at, call) == call, "space read");
      zqa_Check(std::memcmp(back.data(), block.data(), kLargeCall) == 0, "space contents");
    }
  });
  ::unlink(path.c_str());
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  long long mebibytes = argc > 1 ? std::atoll(argv[1]) : 1024;
  zqa_Check(mebibytes > 0, "size in MiB");
  long long bytes = mebibytes << 20;
  std::string base = zqa_BenchPath("zqa-space");
  std::vector<char> block = Pattern();

  zqa_PassTimes raw = zqa_Best(kRepeats, [&] { return RawPass(base + ".raw", bytes, block); });
  zqa_PassTimes large = zqa_Best(kRepeats, [&] { return SpacePass<kLargeCall>(base + ".zdb", bytes, block, 0); });
  zqa_PassTimes small = zqa_Best(kRepeats, [&] { return SpacePass<kSmallCall>(base + ".zdb", bytes, block, 0); });
  zqa_PassTimes smallLargeBuffer = zqa_Best(kRepeats, [&] { return SpacePass<kSmallCall>(base + ".zdb", bytes, block, kLargeCall); });

  double mib = static_cast<double>(mebibytes);
  std::printf("%lld MiB, best of %d, page cache warm\n", mebibytes, kRepeats);
  std::printf("%-32s %12s %12s %12s %12s\n", "", "write MiB/s", "read MiB/s", "write ratio", "read ratio");
  auto row = [&](char const* name, zqa_PassTimes const& r) {
    std::printf("%-32s %12.0f %12.0f %12.2f %12.2f\n", name, mib / r.writeSeconds, mib / r.readSeconds,
                raw.writeSeconds / r.writeSeconds, raw.readSeconds / r.readSeconds);
  };
  row("plain write/read, 64 KiB calls", raw);
  row("rfm_BufferedSpace, 64 KiB calls", large);
  row("rfm_BufferedSpace, 8-byte calls", small);
  row("  the same with a 64 KiB buffer", smallLargeBuffer);
  return 0;
}
