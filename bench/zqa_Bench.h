#ifndef zqa_Bench_h
#define zqa_Bench_h

// What the comparison programs share: timing, checks that end the run, the
// folder for their files, and the best of repeated passes.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

// Processor time of the last timed work, in the program and in the kernel.
struct zqa_CpuSplit {
  double user = 0;
  double system = 0;
};

inline zqa_CpuSplit& zqa_LastCpuSplit() {
  static zqa_CpuSplit split;
  return split;
}

// Wall-clock seconds of work; its processor time goes to zqa_LastCpuSplit().
inline double zqa_Seconds(std::function<void()> const& work) {
  auto cpu = [](timeval const& time) { return static_cast<double>(time.tv_sec) + time.tv_usec * 1e-6; };
  rusage before;
  ::getrusage(RUSAGE_SELF, &before);
  auto start = std::chrono::steady_clock::now();
  work();
  double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  rusage after;
  ::getrusage(RUSAGE_SELF, &after);
  zqa_LastCpuSplit().user = cpu(after.ru_utime) - cpu(before.ru_utime);
  zqa_LastCpuSplit().system = cpu(after.ru_stime) - cpu(before.ru_stime);
  return elapsed;
}

// Ends the run when a pass read something other than it wrote.
inline void zqa_Check(bool condition, char const* what) {
  if (!condition) {
    std::fprintf(stderr, "check failed: %s\n", what);
    std::exit(1);
  }
}

// A path for a bench file: TMPDIR or /tmp, the name, this process's id.
inline std::string zqa_BenchPath(char const* name) {
  char const* folder = std::getenv("TMPDIR");
  return std::string(folder && *folder ? folder : "/tmp") + "/" + name + "-" + std::to_string(::getpid());
}

// Write and read seconds of one pass.
struct zqa_PassTimes {
  double writeSeconds = 0;
  double readSeconds = 0;
};

// The best write and the best read of repeats passes.
inline zqa_PassTimes zqa_Best(int repeats, std::function<zqa_PassTimes()> const& pass) {
  zqa_PassTimes best{1e30, 1e30};
  for (int i = 0; i < repeats; ++i) {
    zqa_PassTimes times = pass();
    best.writeSeconds = std::min(best.writeSeconds, times.writeSeconds);
    best.readSeconds = std::min(best.readSeconds, times.readSeconds);
  }
  return best;
}

#endif
