#include "zqa_KilledChild.h"

#include "zqa_TestDir.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <stdexcept>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr long kNanosecondsPerSecond = 1000000000L;

timespec Remaining(timespec deadline) {
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  long nanoseconds = (deadline.tv_sec - now.tv_sec) * kNanosecondsPerSecond + (deadline.tv_nsec - now.tv_nsec);
  if (nanoseconds < 0) nanoseconds = 0;
  return {nanoseconds / kNanosecondsPerSecond, nanoseconds % kNanosecondsPerSecond};
}

// Reads reports until the deadline passes, or with no deadline until the
// child is gone.
void Listen(int pipe, timespec const* deadline, int reportSize,
            std::function<void(char const*)> const& onReport) {
  std::vector<char> report(static_cast<std::size_t>(reportSize));
  for (;;) {
    pollfd ready{pipe, POLLIN, 0};
    timespec wait = deadline ? Remaining(*deadline) : timespec{};
    int const got = ::ppoll(&ready, 1, deadline ? &wait : nullptr, nullptr);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return;
    ssize_t const size = ::read(pipe, report.data(), report.size());
    if (size == 0) return;
    if (size != static_cast<ssize_t>(reportSize)) throw std::runtime_error("a torn report");
    onReport(report.data());
  }
}

}  // namespace

void zqa_SendReportBytes(int pipe, void const* report, int size) {
  if (::write(pipe, report, static_cast<std::size_t>(size)) != static_cast<ssize_t>(size))
    throw std::runtime_error("the test stopped listening");
}

void zqa_WatchKilledChildBytes(std::function<void(int pipe)> const& body, long const* killAfterMicroseconds,
                               int reportSize, std::function<void(char const* report)> const& onReport) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("pipe");
  int const child = zqa_StartChild([&] {
    ::close(ends[0]);
    body(ends[1]);
  });
  ::close(ends[1]);
  if (killAfterMicroseconds) {
    timespec deadline;
    ::clock_gettime(CLOCK_MONOTONIC, &deadline);
    long const nanoseconds = deadline.tv_nsec + *killAfterMicroseconds * 1000L;
    deadline.tv_sec += nanoseconds / kNanosecondsPerSecond;
    deadline.tv_nsec = nanoseconds % kNanosecondsPerSecond;
    Listen(ends[0], &deadline, reportSize, onReport);
    ::kill(child, SIGKILL);
  }
  // What the child sent before it died is still in the pipe.
  Listen(ends[0], nullptr, reportSize, onReport);
  ::close(ends[0]);
  if (zqa_WaitChild(child) != 128 + SIGKILL) throw std::runtime_error("the writer ended otherwise than by SIGKILL");
}
