#include "rfm_TestDamageRun.h"

#include "ZQABasException.h"
#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_DatabaseWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <dirent.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Outcomes as a child reports them, and the statuses it exits with; above
// the 1 that a sanitizer's report exits with.
enum Outcome {
  kCorrect = 64,
  kLibraryMessage,
  kLibraryAssertion,
  kDiffers,
  kForeignException,
  kUnknownException,
  kAllocationLimit,
  kThreadLeft,
  kLeak,
  kOutcomes
};

char const* const kOutcomeNames[] = {"correct",           "library message",   "library assertion",
                                     "data differs",      "foreign exception", "unknown exception",
                                     "allocation above the limit", "thread left running", "memory leaked"};

// Results of a child that a signal ended.
constexpr int kSignalled = 1000;
// A walk of the samples takes well under a second even under the sanitizers.
constexpr unsigned kSecondsPerCase = 5;
// No allocation of a walk of the small samples comes near this; a count of
// a few million read from a file and trusted passes it.
constexpr std::size_t kLargestAllocation = std::size_t(16) << 20;

int g_Report = -1;

void Report(Outcome outcome, std::string const& message) {
  std::int32_t head[2] = {outcome, static_cast<std::int32_t>(std::min<std::size_t>(message.size(), 1000))};
  bool sent = ::write(g_Report, head, sizeof head) == static_cast<ssize_t>(sizeof head) &&
              ::write(g_Report, message.data(), static_cast<std::size_t>(head[1])) == head[1];
  if (!sent) ::_exit(kUnknownException);
}

#if defined(__SANITIZE_ADDRESS__)
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(void const volatile*, std::size_t),
                                                         void (*onFree)(void const volatile*));
extern "C" int __lsan_do_recoverable_leak_check();

void OnMalloc(void const volatile*, std::size_t size) {
  if (size <= kLargestAllocation) return;
  Report(kAllocationLimit, "allocation of " + std::to_string(size) + " bytes");
  ::_exit(0);
}
void OnFree(void const volatile*) {}
#endif

// An allocation that a damaged length or count could make unbounded fails
// the case loudly.
void LimitAllocation() {
#if defined(__SANITIZE_ADDRESS__)
  __sanitizer_install_malloc_and_free_hooks(OnMalloc, OnFree);
#else
  rlimit limit;
  if (::getrlimit(RLIMIT_AS, &limit) == 0) {
    long pages = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
      if (std::fscanf(statm, "%ld", &pages) != 1) pages = 0;
      std::fclose(statm);
    }
    limit.rlim_cur = static_cast<rlim_t>(pages) * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + 4 * kLargestAllocation;
    ::setrlimit(RLIMIT_AS, &limit);
  }
#endif
}

int Threads() {
  int count = 0;
  if (DIR* tasks = ::opendir("/proc/self/task")) {
    while (dirent* entry = ::readdir(tasks)) count += entry->d_name[0] != '.';
    ::closedir(tasks);
  }
  return count;
}

// Whether the process is back to one thread. A thread that was joined may
// still be listed for a moment while the system reaps it.
bool OneThreadLeft() {
  for (int wait = 0; wait < 1000; ++wait) {
    if (Threads() == 1) return true;
    ::usleep(1000);
  }
  return false;
}

// The first line where two walks part.
std::string FirstDifference(std::string const& expected, std::string const& got) {
  std::size_t at = 0;
  while (at < expected.size() && at < got.size() && expected[at] == got[at]) ++at;
  std::size_t start = expected.rfind('\n', at == 0 ? 0 : at - 1);
  start = start == std::string::npos ? 0 : start + 1;
  return "expected " + expected.substr(start, expected.find('\n', start) - start) + " | got " +
         got.substr(start, got.find('\n', start) - start);
}

// Walks the file at name and reports how it ended.
void WalkOne(cow_String const& name, std::string const& expected, DamageWalk const& walker) {
  Outcome outcome;
  std::string message;
  try {
    std::string walk = walker ? walker(name) : rfm_DatabaseWalk::Walk(name);
    outcome = walk == expected ? kCorrect : kDiffers;
    if (outcome == kDiffers) message = FirstDifference(expected, walk);
  } catch (nex_PrimException<atr_String, 1> const& e) {
    outcome = kLibraryMessage;
    message = e.what();
  } catch (nex_PrimException<cow_String, 3> const& e) {
    outcome = kLibraryAssertion;
    message = e.what();
  } catch (ZQABasException const& e) {
    outcome = kLibraryMessage;
    message = e.what();
  } catch (std::exception const& e) {
    outcome = kForeignException;
    message = e.what();
  } catch (...) {
    outcome = kUnknownException;
  }
  if (!OneThreadLeft()) {
    Report(kThreadLeft, std::to_string(Threads()) + " threads");
    ::_exit(0);
  }
  Report(outcome, message);
}

// Runs the cases from first on in a child, each after write(case) has made
// the damaged file at name; adds the results to results.
void RunInChild(std::vector<DamageCase> const& cases, std::size_t first,
                std::function<void(DamageCase const&)> const& write, cow_String const& name,
                std::string const& expected, DamageWalk const& walk, std::vector<DamageResult>& results) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr);
  pid_t child = ::fork();
  if (child == 0) {
    ::close(ends[0]);
    g_Report = ends[1];
    LimitAllocation();
    for (std::size_t i = first; i < cases.size(); ++i) {
      ::alarm(kSecondsPerCase);
      write(cases[i]);
      WalkOne(name, expected, walk);
    }
#if defined(__SANITIZE_ADDRESS__)
    if (__lsan_do_recoverable_leak_check() != 0) ::_exit(kLeak);
#endif
    ::_exit(0);
  }
  ::close(ends[1]);
  std::int32_t head[2];
  while (::read(ends[0], head, sizeof head) == static_cast<ssize_t>(sizeof head)) {
    std::string message(static_cast<std::size_t>(head[1]), '\0');
    if (head[1] > 0 && ::read(ends[0], message.data(), message.size()) != head[1]) break;
    results.push_back({head[0], message});
  }
  ::close(ends[0]);
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) throw std::runtime_error("no child");
  bool const finished = results.size() == cases.size();
  if (WIFSIGNALED(status)) {
    std::string why = WTERMSIG(status) == SIGALRM ? "took longer than its time" : "ended by a signal";
    if (!finished) results.push_back({kSignalled + WTERMSIG(status), why});
  } else if (WEXITSTATUS(status) == kLeak) {
    results.push_back({kLeak, "in the cases after " + std::to_string(first)});
  } else if (WEXITSTATUS(status) != 0 && !finished) {
    results.push_back({WEXITSTATUS(status), "the child exited"});
  }
}

std::string OutcomeName(int outcome) {
  if (outcome >= kSignalled) return "signal " + std::to_string(outcome - kSignalled);
  return outcome >= kCorrect && outcome < kOutcomes ? kOutcomeNames[outcome - kCorrect]
                                                     : "exit " + std::to_string(outcome);
}

}  // namespace

std::vector<DamageResult> RunDamageCases(std::vector<DamageCase> const& cases,
                                         std::function<void(DamageCase const&)> const& write, cow_String const& name,
                                         std::string const& expected, DamageWalk const& walk) {
  std::vector<DamageResult> results;
  // A new child after each one that died.
  while (results.size() < cases.size()) RunInChild(cases, results.size(), write, name, expected, walk, results);
  return results;
}


DamageTally::DamageTally(std::vector<DamageCase> const& cases, std::vector<DamageResult> const& results,
                         cow_String const& name, bool assertionsAllowed)
    : m_AssertionsAllowed(assertionsAllowed) {
  for (std::size_t i = 0; i < results.size(); ++i) {
    // A leak belongs to no one case.
    if (i >= cases.size()) {
      m_Failures.push_back(OutcomeName(results[i].m_Outcome) + ": " + results[i].m_Message);
      continue;
    }
    Add(cases[i], results[i], name);
  }
}

void DamageTally::Print(char const* title) const {
  std::printf("%s: %d cases, %zu failed\n", title, m_Cases, m_Failures.size());
  for (auto const& count : m_Counts) std::printf("  %-34s %6d\n", count.first.c_str(), count.second);
  for (auto const& count : m_Messages) std::printf("    %6d  %s\n", count.second, count.first.c_str());
}

void DamageTally::ExpectNoFailures() const {
  EXPECT_EQ(0u, m_Failures.size());
  for (std::size_t i = 0; i < m_Failures.size() && i < 40; ++i) ADD_FAILURE() << m_Failures[i];
}

void DamageTally::Add(DamageCase const& damage, DamageResult const& result, cow_String const& name) {
  std::string message = result.m_Message;
  for (std::size_t at; (at = message.find(name.CStr())) != std::string::npos;) {
    message.replace(at, static_cast<std::size_t>(name.Length()), "<file>");
  }
  ++m_Cases;
  bool const allowed = result.m_Outcome == kCorrect || result.m_Outcome == kLibraryMessage ||
                       (result.m_Outcome == kLibraryAssertion && m_AssertionsAllowed) ||
                       (result.m_Outcome == kDiffers && damage.m_Meaning != kStructure);
  if (!allowed) {
    m_Failures.push_back(damage.m_What + ": " + OutcomeName(result.m_Outcome) + ": " + message);
    return;
  }
  std::string outcome = OutcomeName(result.m_Outcome);
  if (result.m_Outcome == kDiffers) {
    outcome = damage.m_Meaning == kUserData ? "data differs in user bytes only" : "data differs, still well formed";
  }
  ++m_Counts[outcome];
  if (result.m_Outcome != kCorrect && result.m_Outcome != kDiffers) ++m_Messages[message.substr(0, message.find('\n'))];
}
