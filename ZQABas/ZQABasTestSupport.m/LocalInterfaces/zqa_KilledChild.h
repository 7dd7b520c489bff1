#ifndef zqa_KilledChild_h
#define zqa_KilledChild_h

#include <cstring>
#include <functional>
#include <type_traits>

// A child process that tells the test how far it got, in reports of one
// fixed size written to a pipe, and ends by SIGKILL: the writer of the
// killed-writer tests. A report is smaller than PIPE_BUF, so each write
// arrives whole or not at all.

// Sends one report; raises when the test no longer listens.
void zqa_SendReportBytes(int pipe, void const* report, int size);

// Runs body(pipe) in a child. With killAfterMicroseconds the child is
// killed by SIGKILL then; without, it must die by itself. Every report the
// child sent before it died is handed to onReport, in order. Raises unless
// the child died by SIGKILL.
void zqa_WatchKilledChildBytes(std::function<void(int pipe)> const& body, long const* killAfterMicroseconds,
                               int reportSize, std::function<void(char const* report)> const& onReport);

template <class Report>
void zqa_SendReport(int pipe, Report const& report) {
  static_assert(std::is_trivially_copyable_v<Report>, "a report travels as its bytes");
  zqa_SendReportBytes(pipe, &report, static_cast<int>(sizeof report));
}

template <class Report>
void zqa_WatchKilledChild(std::function<void(int pipe)> const& body, long const* killAfterMicroseconds,
                          std::function<void(Report const&)> const& onReport) {
  static_assert(std::is_trivially_copyable_v<Report>, "a report travels as its bytes");
  zqa_WatchKilledChildBytes(body, killAfterMicroseconds, static_cast<int>(sizeof(Report)), [&](char const* bytes) {
    Report report;
    std::memcpy(&report, bytes, sizeof report);
    onReport(report);
  });
}

#endif
