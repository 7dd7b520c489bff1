#ifndef zqa_Bench_h
#define zqa_Bench_h

// What the comparison programs share: timing, checks that end the run, the
// folder for their files, the best of repeated passes, and interleaved
// rounds of several sides with their minimum and median seconds.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>
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

// The middle value, or the mean of the two middle ones.
inline double zqa_Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  std::size_t const half = values.size() / 2;
  return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

// Seconds a pass measured, by measure ("write", "read", ...).
using zqa_Measures = std::map<std::string, double>;

// The seconds of one measure of one side, one sample per round.
class zqa_Samples {
public:
  void Add(double seconds) { m_Seconds.push_back(seconds); }
  bool Empty() const { return m_Seconds.empty(); }
  double Min() const { return *std::min_element(m_Seconds.begin(), m_Seconds.end()); }
  double Median() const { return zqa_Median(m_Seconds); }

private:
  std::vector<double> m_Seconds;
};

// Runs named sides of one comparison in interleaved rounds, so that a slow
// spell of a shared machine falls on every side alike rather than on the
// side that happened to run during it: every round runs every side once,
// and each round starts one side further on (A B C, B C A, C A B, ...), so
// that no side always runs first, on a cold cache, or always after the same
// neighbour. Keeps every sample; a side read before it ran ends the run.
class zqa_Rounds {
public:
  static constexpr int kDefaultRounds = 5;
  using Pass = std::function<void(zqa_Measures&)>;

  void Side(std::string const& name, Pass pass) { m_Sides.emplace_back(name, std::move(pass)); }

  // Runs rounds rounds of every side, or of the side named only alone when
  // only is not empty; a name no side has ends the run.
  void Run(int rounds, std::string const& only = std::string()) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < m_Sides.size(); ++i) {
      if (only.empty() || m_Sides[i].first == only) chosen.push_back(i);
    }
    zqa_Check(!chosen.empty(), "the side to run alone is one of the program's sides");
    for (int round = 0; round < rounds; ++round) {
      for (std::size_t step = 0; step < chosen.size(); ++step) {
        auto const& side = m_Sides[chosen[(step + static_cast<std::size_t>(round)) % chosen.size()]];
        zqa_Measures measures;
        side.second(measures);
        for (auto const& measure : measures) m_Samples[side.first][measure.first].Add(measure.second);
      }
    }
  }

  bool Has(std::string const& side) const {
    return std::any_of(m_Sides.begin(), m_Sides.end(), [&](auto const& entry) { return entry.first == side; });
  }
  bool Ran(std::string const& side) const { return m_Samples.count(side) != 0; }
  bool Took(std::string const& side, std::string const& measure) const {
    return Ran(side) && m_Samples.at(side).count(measure) != 0;
  }

  zqa_Samples const& Samples(std::string const& side, std::string const& measure) const {
    auto const bySide = m_Samples.find(side);
    zqa_Check(bySide != m_Samples.end(), "a side that ran");
    auto const byMeasure = bySide->second.find(measure);
    zqa_Check(byMeasure != bySide->second.end(), "a measure the side took");
    return byMeasure->second;
  }

  // How many times faster side is than baseline at measure, by the
  // medians of their seconds: above 1 when side is faster.
  double MedianRatio(std::string const& side, std::string const& baseline, std::string const& measure) const {
    return Samples(baseline, measure).Median() / Samples(side, measure).Median();
  }

  // Prints the heading of PrintRates' columns, what naming the unit.
  static void PrintRateHeading(char const* what) { std::printf("  %-43s %10s %10s\n", what, "fastest", "median"); }

  // Prints one line per measure of side: count / seconds / unit at the
  // fastest pass and at the median.
  void PrintRates(std::string const& side, std::vector<std::pair<std::string, double>> const& countsByMeasure,
                  double unit = 1e6) const {
    for (auto const& measure : countsByMeasure) {
      if (!Took(side, measure.first)) continue;
      zqa_Samples const& samples = Samples(side, measure.first);
      std::printf("  %-34s %-8s %10.2f %10.2f\n", side.c_str(), measure.first.c_str(),
                  measure.second / samples.Min() / unit, measure.second / samples.Median() / unit);
    }
  }

  // Prints, for each of measures that side and baseline both took, how
  // many times faster side is (MedianRatio).
  void PrintRatios(char const* what, std::string const& side, std::string const& baseline,
                   std::vector<std::string> const& measures) const {
    if (!Ran(side) || !Ran(baseline)) return;
    std::printf("  %-30s", what);
    for (std::string const& measure : measures) {
      if (Took(side, measure) && Took(baseline, measure)) {
        std::printf("  %s %.2f", measure.c_str(), MedianRatio(side, baseline, measure));
      }
    }
    std::printf("\n");
  }

private:
  std::vector<std::pair<std::string, Pass>> m_Sides;
  std::map<std::string, std::map<std::string, zqa_Samples>> m_Samples;
};

#endif
