#include "zqa_TestDir.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <fstream>
#include <ftw.h>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int RemoveEntry(char const* path, struct stat const*, int, struct FTW*) { return std::remove(path); }

// The user and group that an unprivileged child takes under root.
constexpr uid_t kNobody = 65534;

}  // namespace

zqa_TestDir::zqa_TestDir() {
  char const* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/zqatest-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) std::abort();
  // Open to everyone so that an unprivileged child can work in it.
  ::chmod(pattern.c_str(), 0777);
  m_Path = pattern.c_str();
}

zqa_TestDir::~zqa_TestDir() { ::nftw(m_Path.CStr(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS); }

cow_String zqa_TestDir::File(char const* name) const { return cow_String(m_Path).Append("/").Append(name); }

std::string zqa_ReadFileBytes(cow_String const& path) {
  std::ifstream in(path.CStr(), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void zqa_WriteFileBytes(cow_String const& path, std::string const& bytes) {
  std::ofstream out(path.CStr(), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

namespace {

pid_t Start(std::function<void()> const& body, bool unprivileged) {
  std::fflush(nullptr);
  pid_t child = ::fork();
  if (child != 0) return child;
  if (unprivileged && ::geteuid() == 0) {
    if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) ::_exit(2);
  }
  int status = 0;
  try {
    body();
  } catch (std::exception const& e) {
    std::fprintf(stderr, "child: %s\n", e.what());
    status = 1;
  } catch (...) {
    status = 1;
  }
  ::_exit(status);
}

}  // namespace

zqa_Signal::zqa_Signal() {
  if (::pipe(m_Ends) != 0) throw std::runtime_error("pipe");
}

zqa_Signal::~zqa_Signal() {
  ::close(m_Ends[0]);
  ::close(m_Ends[1]);
}

void zqa_Signal::Send() const {
  if (::write(m_Ends[1], "x", 1) != 1) throw std::runtime_error("signal lost");
}

void zqa_Signal::Wait() const {
  char byte;
  if (::read(m_Ends[0], &byte, 1) != 1) throw std::runtime_error("the other side went away");
}

int zqa_StartChild(std::function<void()> const& body) { return Start(body, false); }

int zqa_WaitChild(int child) {
  if (child < 0) return -1;
  int status = 0;
  if (::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int zqa_RunInChild(std::function<void()> const& body, bool unprivileged) {
  return zqa_WaitChild(Start(body, unprivileged));
}

void zqa_Require(bool condition, std::string const& what) {
  if (!condition) throw std::runtime_error(what);
}
