// zdb watch: a reader beside a writer, telling each change of the file's
// status as it sees it.

#include "rfm_FileStatus.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

constexpr double kDefaultInterval = 1.0;
constexpr double kShortestInterval = 0.001;
constexpr double kLongestInterval = 3600.0;

volatile std::sig_atomic_t g_Interrupted = 0;

void Interrupt(int) { g_Interrupted = 1; }

// Without SA_RESTART, so that a signal cuts the sleep short.
void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = Interrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

double ParseInterval(std::string const& text) {
  char* end = nullptr;
  double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(seconds)) {
    throw zdb_UsageError("--interval \"" + text + "\" is not a number of seconds");
  }
  if (seconds < kShortestInterval || seconds > kLongestInterval) {
    throw zdb_UsageError("--interval " + text + " is out of range (0.001 to 3600 seconds)");
  }
  return seconds;
}

void Sleep(double seconds) {
  struct timespec wait;
  wait.tv_sec = static_cast<time_t>(seconds);
  wait.tv_nsec = static_cast<long>((seconds - static_cast<double>(wait.tv_sec)) * 1e9);
  while (::nanosleep(&wait, &wait) != 0 && errno == EINTR && !g_Interrupted) {
  }
}

// A line of the report, after the local time of day.
void Tell(std::string const& line) {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  char stamp[16] = "--:--:--";
  if (localtime_r(&now, &local) != nullptr) std::strftime(stamp, sizeof stamp, "%H:%M:%S", &local);
  std::printf("%s %s\n", stamp, line.c_str());
  std::fflush(stdout);
}

// What the watcher last told, so that it tells only changes.
enum class State { kQuiet, kInTransaction, kUnreadable };

constexpr char kUnreadableLine[] = "file unreadable";

class Watcher {
public:
  explicit Watcher(std::string const& name) : m_Name(name), m_Database(new zdb_Database(name)) {
    if (m_Database->Compressed()) {
      throw zdb_Failure(name +
                        ": is compressed, and a compressed file is read as it was when opened: its readers "
                        "do not follow a writer");
    }
    Tell("watching " + name + ", flush count " + std::to_string(m_Database->Database().GetFlushCount()));
  }

  // Tells what changed since the last poll; a file that fails to read is unreadable.
  void Poll();

private:
  void PollOnce();
  void Reopen();
  void Enter(State state, std::string const& line) {
    if (m_State != state) Tell(line);
    m_State = state;
  }
  // Tells, once, that the file cannot be read, and why.
  void Unreadable(std::string const& reason) {
    std::string line = kUnreadableLine;
    Enter(State::kUnreadable, reason.empty() ? line : line + ": " + reason);
  }
  // Why the file cannot be read, as opening it tells; "" when it can be.
  std::string Reason() const;

  std::string m_Name;
  std::unique_ptr<zdb_Database> m_Database;
  State m_State = State::kQuiet;
};

void Watcher::Poll() {
  try {
    PollOnce();
  } catch (std::exception const& e) {
    Unreadable(e.what());
  }
}

std::string Watcher::Reason() const {
  try {
    zdb_Database database(m_Name);
  } catch (std::exception const& e) {
    return e.what();
  }
  return std::string();
}

void Watcher::PollOnce() {
  if (!m_Database) return Reopen();
  rfm_Database const& db = m_Database->Database();
  switch (db.FileStatus()) {
    case rfm_FileStatus::kInTransaction:
      return Enter(State::kInTransaction, "transaction running");
    case rfm_FileStatus::kUnreadable:
      if (m_State != State::kUnreadable) Unreadable(Reason());
      return;
    case rfm_FileStatus::kReplaced:
      Tell("file replaced");
      m_State = State::kQuiet;
      return Reopen();
    default:
      if (m_State == State::kInTransaction) Tell("transaction ended");
      if (m_State == State::kUnreadable) Tell("file readable again");
      m_State = State::kQuiet;
      // Snap, not the status alone: a flush that came with a transaction
      // is picked up as soon as the transaction ends.
      if (db.Snap()) Tell("flush count " + std::to_string(db.GetFlushCount()));
  }
}

void Watcher::Reopen() {
  m_Database.reset();
  try {
    m_Database.reset(new zdb_Database(m_Name));
    Tell("watching the new file, flush count " + std::to_string(m_Database->Database().GetFlushCount()));
  } catch (std::exception const& e) {
    Unreadable(e.what());
  }
}

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {{"interval", true}}, 1);
  double interval = arguments.Has("interval") ? ParseInterval(arguments.Value("interval", "")) : kDefaultInterval;
  CatchInterrupts();
  Watcher watcher(arguments.Positional(0));
  while (!g_Interrupted) {
    Sleep(interval);
    if (!g_Interrupted) watcher.Poll();
  }
  return kZdbSuccess;
}

}  // namespace

zdb_Command const zdb_WatchCommand = {
    "watch",
    "follows a database as a reader and tells each change, until interrupted",
    "usage: zdb watch FILE [--interval SECONDS]\n"
    "\n"
    "Opens FILE as a reader, polls its status every SECONDS (1 unless given;\n"
    "0.001 to 3600, fractions allowed) and prints a line, after the time of\n"
    "day, for each change it sees:\n"
    "  flush count N          the writer flushed; the reader now sees flush N\n"
    "  transaction running    a writer's transaction marker appeared\n"
    "  transaction ended      it went\n"
    "  file replaced          another database took the file's place; the\n"
    "                         new one is opened and watched\n"
    "  file unreadable: WHY   the file cannot be read (removed, cut short,\n"
    "                         replaced by what is not a regular file)\n"
    "  file readable again\n"
    "Runs until interrupted (Ctrl-C, SIGTERM), then exits with status 0.\n"
    "Plain files only: a compressed file is read as it was when opened.\n",
    Run,
};
