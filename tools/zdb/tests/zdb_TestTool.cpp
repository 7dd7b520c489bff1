#include "zdb_TestTool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace {

void Close(int& descriptor) {
  if (descriptor >= 0) ::close(descriptor);
  descriptor = -1;
}

}  // namespace

zdb_Tool::zdb_Tool(std::vector<std::string> const& arguments, std::vector<std::string> const& environment) {
  int out[2];
  int err[2];
  if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
  m_Pid = ::fork();
  if (m_Pid == 0) {
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(err[1], STDERR_FILENO);
    for (std::string const& entry : environment) ::putenv(const_cast<char*>(entry.c_str()));
    std::vector<char*> argv{const_cast<char*>(ZDB_PROGRAM)};
    for (std::string const& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    ::execv(ZDB_PROGRAM, argv.data());
    ::_exit(127);
  }
  ::close(out[1]);
  ::close(err[1]);
  m_Out = out[0];
  m_Err = err[0];
}

zdb_Tool::~zdb_Tool() {
  if (m_Pid > 0) {
    ::kill(m_Pid, SIGKILL);
    ::waitpid(m_Pid, nullptr, 0);
  }
  Close(m_Out);
  Close(m_Err);
}

bool zdb_Tool::Pump(int milliseconds) {
  pollfd ends[2] = {{m_Out, POLLIN, 0}, {m_Err, POLLIN, 0}};
  int ready = ::poll(ends, 2, milliseconds);
  if (ready <= 0) return false;
  int* descriptors[2] = {&m_Out, &m_Err};
  std::string* buffers[2] = {&m_OutBuffer, &m_ErrBuffer};
  for (int i = 0; i < 2; ++i) {
    if (ends[i].revents == 0) continue;
    char block[4096];
    ssize_t got = ::read(*descriptors[i], block, sizeof block);
    if (got > 0) {
      buffers[i]->append(block, static_cast<std::size_t>(got));
    } else {
      Close(*descriptors[i]);
    }
  }
  return true;
}

std::string zdb_Tool::ReadLine(double seconds) {
  for (int waited = 0; waited < seconds * 1000; waited += 10) {
    std::size_t end = m_OutBuffer.find('\n');
    if (end != std::string::npos) {
      std::string line = m_OutBuffer.substr(0, end);
      m_OutBuffer.erase(0, end + 1);
      return line;
    }
    if (m_Out < 0) return std::string();
    Pump(10);
  }
  return std::string();
}

void zdb_Tool::Signal(int signal) const { ::kill(m_Pid, signal); }

zdb_Run zdb_Tool::Finish() {
  while (m_Out >= 0 || m_Err >= 0) Pump(-1);
  zdb_Run run;
  int status = 0;
  ::waitpid(m_Pid, &status, 0);
  m_Pid = -1;
  run.m_Status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.m_Out = m_OutBuffer;
  run.m_Err = m_ErrBuffer;
  return run;
}

zdb_Run zdb_Tool::FinishWithin(double seconds) {
  for (int waited = 0; (m_Out >= 0 || m_Err >= 0) && waited < seconds * 1000; waited += 10) Pump(10);
  if (m_Out >= 0 || m_Err >= 0) Signal(SIGKILL);
  return Finish();
}

zdb_Run RunZdbWithin(double seconds, std::vector<std::string> const& arguments) {
  return zdb_Tool(arguments).FinishWithin(seconds);
}

zdb_Run RunZdb(std::vector<std::string> const& arguments, std::vector<std::string> const& environment) {
  return zdb_Tool(arguments, environment).Finish();
}

std::vector<std::string> Lines(std::string const& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}
