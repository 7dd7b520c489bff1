#ifndef zdb_Progress_h
#define zdb_Progress_h

#include <chrono>
#include <cstdint>
#include <cstdio>

// A progress bar on standard error while a long copy runs, drawn only when
// standard error is a terminal: a log or a pipe gets none of it.
//
//   [##########..........]  50%  12.5 of 25.0 MiB
//
// Invariant: the bar is redrawn at most every kRedraw, and once at 100%.
class zdb_Progress {
public:
  static constexpr std::chrono::milliseconds kRedraw{100};

  explicit zdb_Progress(std::int64_t total);
  ~zdb_Progress();
  zdb_Progress(zdb_Progress const&) = delete;
  zdb_Progress& operator=(zdb_Progress const&) = delete;

  void Update(std::int64_t done);
  // Draws the bar full and ends its line.
  void Finish();

private:
  void Draw(std::int64_t done);

  std::int64_t m_Total;
  bool m_Shown;
  bool m_Finished = false;
  std::chrono::steady_clock::time_point m_LastDrawn;
};

#endif
