#include "zdb_Progress.h"

#include <unistd.h>

namespace {

constexpr int kBarWidth = 30;
constexpr double kMiB = 1024.0 * 1024.0;

}  // namespace

zdb_Progress::zdb_Progress(std::int64_t total)
    : m_Total(total), m_Shown(::isatty(STDERR_FILENO) == 1), m_LastDrawn(std::chrono::steady_clock::now()) {}

zdb_Progress::~zdb_Progress() {
  // A copy that failed leaves its bar where it stopped; the message goes below it.
  if (m_Shown && !m_Finished) std::fputc('\n', stderr);
}

void zdb_Progress::Update(std::int64_t done) {
  if (!m_Shown) return;
  auto now = std::chrono::steady_clock::now();
  if (now - m_LastDrawn < kRedraw) return;
  m_LastDrawn = now;
  Draw(done);
}

void zdb_Progress::Finish() {
  if (!m_Shown || m_Finished) return;
  Draw(m_Total);
  std::fputc('\n', stderr);
  m_Finished = true;
}

void zdb_Progress::Draw(std::int64_t done) {
  double part = m_Total > 0 ? static_cast<double>(done) / static_cast<double>(m_Total) : 1.0;
  int filled = static_cast<int>(part * kBarWidth);
  char bar[kBarWidth + 1];
  for (int i = 0; i < kBarWidth; ++i) bar[i] = i < filled ? '#' : '.';
  bar[kBarWidth] = '\0';
  std::fprintf(stderr, "\r[%s] %3d%%  %.1f of %.1f MiB", bar, static_cast<int>(part * 100.0),
               static_cast<double>(done) / kMiB, static_cast<double>(m_Total) / kMiB);
  std::fflush(stderr);
}
