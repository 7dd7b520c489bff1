#include "uti_Spawn.h"

#include "ZQABasAssert.h"
#include "ZQABasUtlFilePath.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cow_ConstMapIterator.h"
#include "uti_Redirection.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasSpawn.m/src/uti_Spawn";
char const kCannotStartText[] = "Cannot start %s: %s";
char const kCannotRedirectText[] = "Cannot open %s for the standard error of %s: %s";

// The search list when PATH is not set, as the shells use it.
char const kDefaultSearchPath[] = "/bin:/usr/bin";

// Reap polls the child at intervals that double from the first to the last.
constexpr long kFirstPollNanoseconds = 1000000;
constexpr long kLastPollNanoseconds = 50000000;

// The file actions and attributes of one posix_spawn call.
class SpawnSettings {
public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&m_Actions);
    ::posix_spawnattr_init(&m_Attributes);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&m_Actions);
    ::posix_spawnattr_destroy(&m_Attributes);
  }
  SpawnSettings(SpawnSettings const&) = delete;
  SpawnSettings& operator=(SpawnSettings const&) = delete;

  posix_spawn_file_actions_t m_Actions;
  posix_spawnattr_t m_Attributes;
};

// A descriptor closed when the scope ends.
class ScopedDescriptor {
public:
  ScopedDescriptor() = default;
  ~ScopedDescriptor() {
    if (m_Descriptor >= 0) ::close(m_Descriptor);
  }
  ScopedDescriptor(ScopedDescriptor const&) = delete;
  ScopedDescriptor& operator=(ScopedDescriptor const&) = delete;

  int m_Descriptor = -1;
};

// argv as posix_spawn takes it: the program, the arguments, a null end.
std::vector<char*> ArgumentVector(cow_String const& program, cow_List<cow_String> const& arguments) {
  std::vector<char*> vector;
  vector.reserve(static_cast<std::size_t>(arguments.Length()) + 2);
  // posix_spawn does not write through these pointers.
  vector.push_back(const_cast<char*>(program.CStr()));
  for (int i = 0; i < arguments.Length(); ++i) vector.push_back(const_cast<char*>(arguments[i].CStr()));
  vector.push_back(nullptr);
  return vector;
}

// This process's environment with the map's entries set in it, as
// "name=value" texts.
std::vector<std::string> EnvironmentEntries(cow_Map<cow_String, cow_String> const& environment) {
  std::vector<std::string> entries;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    char const* equals = std::strchr(*entry, '=');
    int nameLength = equals ? static_cast<int>(equals - *entry) : static_cast<int>(std::strlen(*entry));
    if (!environment.IsMember(cow_String(*entry, nameLength))) entries.emplace_back(*entry);
  }
  for (cow_ConstMapIterator<cow_String, cow_String> it(environment); !it.IsDone(); it.Next()) {
    entries.push_back(std::string(it.CurrentKey().CStr()) + "=" + it.CurrentValue().CStr());
  }
  return entries;
}

std::timespec Now() {
  std::timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now;
}

bool NotBefore(std::timespec const& time, std::timespec const& deadline) {
  return time.tv_sec > deadline.tv_sec || (time.tv_sec == deadline.tv_sec && time.tv_nsec >= deadline.tv_nsec);
}

int StatusOf(int waitStatus) { return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : uti_Spawn::kKilled; }

}  // namespace

uti_Spawn::~uti_Spawn() { WaitForEnd(0); }

cow_String uti_Spawn::FindCommand(cow_String const& name) {
  if (name.Find("/") != cow_String::kNotFound) return name;
  if (name.Empty()) return cow_String();
  char const* path = std::getenv("PATH");
  std::string list = path ? path : kDefaultSearchPath;
  std::size_t start = 0;
  for (;;) {
    std::size_t end = std::min(list.find(':', start), list.size());
    std::string directory = list.substr(start, end - start);
    // An empty entry of PATH is the current directory.
    ZQABasUtlFilePath candidate(directory.empty() ? "." : directory.c_str(), name);
    struct stat status;
    if (::stat(candidate.PathName().CStr(), &status) == 0 && S_ISREG(status.st_mode) && candidate.IsExecutable()) {
      return candidate.AbsolutePathName();
    }
    if (end == list.size()) return cow_String();
    start = end + 1;
  }
}

bool uti_Spawn::IsRunning() { return Poll(false); }

int uti_Spawn::Reap(int seconds) { return WaitForEnd(seconds); }

void uti_Spawn::Detach() {
  if (!m_Owned) return;
  pid_t pid = m_Pid;
  // Made before the child is given up: if no thread can be had, the child
  // stays ours and the destructor collects it.
  std::thread([pid] {
    int waitStatus;
    while (::waitpid(pid, &waitStatus, 0) < 0 && errno == EINTR) {
    }
  }).detach();
  m_Owned = false;
  m_Status = kNoChild;
}

bool uti_Spawn::Poll(bool block) noexcept {
  if (!m_Owned) return false;
  int waitStatus = 0;
  pid_t result;
  do {
    result = ::waitpid(m_Pid, &waitStatus, block ? 0 : WNOHANG);
  } while (result < 0 && errno == EINTR);
  if (result == 0) return true;
  m_Owned = false;
  m_Status = result == m_Pid ? StatusOf(waitStatus) : kNoChild;
  return false;
}

int uti_Spawn::WaitForEnd(int seconds) noexcept {
  if (seconds < 0) {
    Poll(true);
    return m_Status;
  }
  std::timespec deadline = Now();
  deadline.tv_sec += seconds;
  long pause = kFirstPollNanoseconds;
  while (Poll(false) && !NotBefore(Now(), deadline)) {
    std::timespec step{0, pause};
    ::nanosleep(&step, nullptr);
    pause = std::min(2 * pause, kLastPollNanoseconds);
  }
  if (m_Owned) {
    ::kill(m_Pid, SIGKILL);
    Poll(true);
  }
  return m_Status;
}

void uti_Spawn::Start(cow_String const& program, cow_List<cow_String> const& arguments,
                      uti_Redirection const& redirection, cow_Map<cow_String, cow_String> const& environment,
                      int childInput, int childOutput) {
  ZQA_ASSERT(kSourcePath, !m_Owned);
  ScopedDescriptor errorFile;
  if (redirection.IsSet()) {
    do {
      errorFile.m_Descriptor = ::open(redirection.Target().CStr(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    } while (errorFile.m_Descriptor < 0 && errno == EINTR);
    if (errorFile.m_Descriptor < 0) {
      int error = errno;
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kCannotRedirectText), redirection.Target(), program,
                                            std::strerror(error)));
    }
  }

  SpawnSettings settings;
  if (childInput >= 0) ::posix_spawn_file_actions_adddup2(&settings.m_Actions, childInput, STDIN_FILENO);
  if (childOutput >= 0) ::posix_spawn_file_actions_adddup2(&settings.m_Actions, childOutput, STDOUT_FILENO);
  if (errorFile.m_Descriptor >= 0) {
    ::posix_spawn_file_actions_adddup2(&settings.m_Actions, errorFile.m_Descriptor, redirection.ChildDescriptor());
  }
  // Descriptors that other code of this process opened without
  // close-on-exec must not reach the child either.
  ::posix_spawn_file_actions_addclosefrom_np(&settings.m_Actions, STDERR_FILENO + 1);

  sigset_t signals;
  sigemptyset(&signals);
  ::posix_spawnattr_setsigmask(&settings.m_Attributes, &signals);
  sigaddset(&signals, SIGPIPE);
  ::posix_spawnattr_setsigdefault(&settings.m_Attributes, &signals);
  ::posix_spawnattr_setflags(&settings.m_Attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

  std::vector<char*> argv = ArgumentVector(program, arguments);
  std::vector<std::string> entries;
  std::vector<char*> envp;
  char** childEnvironment = environ;
  if (!environment.IsEmpty()) {
    entries = EnvironmentEntries(environment);
    for (std::string& entry : entries) envp.push_back(entry.data());
    envp.push_back(nullptr);
    childEnvironment = envp.data();
  }
  pid_t pid = 0;
  int error =
      ::posix_spawnp(&pid, program.CStr(), &settings.m_Actions, &settings.m_Attributes, argv.data(), childEnvironment);
  if (error != 0) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kCannotStartText), program, std::strerror(error)));
  }
  m_Pid = pid;
  m_Owned = true;
}
