#include "zqa_TestDir.h"

#include <cstdio>
#include <cstdlib>
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

int zqa_RunInChild(std::function<void()> const& body, bool unprivileged) {
  std::fflush(nullptr);
  pid_t child = ::fork();
  if (child < 0) return -1;
  if (child == 0) {
    if (unprivileged && ::geteuid() == 0) {
      if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) ::_exit(2);
    }
    int status = 0;
    try {
      body();
    } catch (...) {
      status = 1;
    }
    ::_exit(status);
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
