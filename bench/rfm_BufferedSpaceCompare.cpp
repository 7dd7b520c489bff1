// Writes and reads back the same bytes through rfm_BufferedSpace (in 64 KiB
// calls, and in 8-byte calls with the default 2 KiB buffer and with a 64 KiB
// one) and through plain write/read of 64 KiB on a file, in one run, and
// prints the throughputs and the ratios to the plain baseline. Every pass
// checks what it read.
//
//   rfm_BufferedSpaceCompare [MiB]     default 1024; TMPDIR picks the folder

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

struct Result {
  double writeSeconds;
  double readSeconds;
};

double Seconds(std::function<void()> const& work) {
  auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Check(bool condition, char const* what) {
  if (!condition) {
    std::fprintf(stderr, "check failed: %s\n", what);
    std::exit(1);
  }
}

// The bytes of one 64 KiB block; every block of the run is the same.
std::vector<char> Pattern() {
  std::vector<char> block(kLargeCall);
  for (int i = 0; i < kLargeCall; ++i) block[i] = static_cast<char>((i * 131 + 7) % 251);
  return block;
}

Result RawPass(std::string const& path, long long bytes, std::vector<char> const& block) {
  Result result{};
  std::vector<char> back(kLargeCall);
  result.writeSeconds = Seconds([&] {
    int fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
    Check(fd >= 0, "open for writing");
    for (long long done = 0; done < bytes; done += kLargeCall) {
      Check(::write(fd, block.data(), kLargeCall) == kLargeCall, "write");
    }
    ::close(fd);
  });
  result.readSeconds = Seconds([&] {
    int fd = ::open(path.c_str(), O_RDONLY);
    Check(fd >= 0, "open for reading");
    for (long long done = 0; done < bytes; done += kLargeCall) {
      Check(::read(fd, back.data(), kLargeCall) == kLargeCall, "read");
      Check(std::memcmp(back.data(), block.data(), kLargeCall) == 0, "raw contents");
    }
    ::close(fd);
  });
  ::unlink(path.c_str());
  return result;
}

// Through a buffered space of bufferSize bytes (0: the default) in calls of
// Call bytes, a constant as in a caller that moves one value at a time.
template <int Call>
Result SpacePass(std::string const& path, long long bytes, std::vector<char> const& block, int bufferSize) {
  constexpr int call = Call;
  Result result{};
  rfm_Handle handle;
  result.writeSeconds = Seconds([&] {
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
  result.readSeconds = Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), "BNCH");
    rfm_BufferedSpace space(database.Space(handle, -1), bufferSize);
    Check(space.Length() == bytes, "space length");
    for (long long done = 0; done < bytes; done += kLargeCall) {
      for (int at = 0; at < kLargeCall; at += call) Check(space.Read(back.data() + at, call) == call, "space read");
      Check(std::memcmp(back.data(), block.data(), kLargeCall) == 0, "space contents");
    }
  });
  ::unlink(path.c_str());
  return result;
}

Result Best(std::function<Result()> const& pass) {
  Result best{1e30, 1e30};
  for (int i = 0; i < kRepeats; ++i) {
    Result r = pass();
    best.writeSeconds = std::min(best.writeSeconds, r.writeSeconds);
    best.readSeconds = std::min(best.readSeconds, r.readSeconds);
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  long long mebibytes = argc > 1 ? std::atoll(argv[1]) : 1024;
  Check(mebibytes > 0, "size in MiB");
  long long bytes = mebibytes << 20;
  char const* folder = std::getenv("TMPDIR");
  std::string base = std::string(folder && *folder ? folder : "/tmp") + "/zqa-bench-" + std::to_string(::getpid());
  std::vector<char> block = Pattern();

  Result raw = Best([&] { return RawPass(base + ".raw", bytes, block); });
  Result large = Best([&] { return SpacePass<kLargeCall>(base + ".zdb", bytes, block, 0); });
  Result small = Best([&] { return SpacePass<kSmallCall>(base + ".zdb", bytes, block, 0); });
  Result smallLargeBuffer = Best([&] { return SpacePass<kSmallCall>(base + ".zdb", bytes, block, kLargeCall); });

  double mib = static_cast<double>(mebibytes);
  std::printf("%lld MiB, best of %d, page cache warm\n", mebibytes, kRepeats);
  std::printf("%-32s %12s %12s %12s %12s\n", "", "write MiB/s", "read MiB/s", "write ratio", "read ratio");
  auto row = [&](char const* name, Result const& r) {
    std::printf("%-32s %12.0f %12.0f %12.2f %12.2f\n", name, mib / r.writeSeconds, mib / r.readSeconds,
                raw.writeSeconds / r.writeSeconds, raw.readSeconds / r.readSeconds);
  };
  row("plain write/read, 64 KiB calls", raw);
  row("rfm_BufferedSpace, 64 KiB calls", large);
  row("rfm_BufferedSpace, 8-byte calls", small);
  row("  the same with a 64 KiB buffer", smallLargeBuffer);
  return 0;
}
