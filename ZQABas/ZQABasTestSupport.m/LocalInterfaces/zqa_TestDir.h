#ifndef zqa_TestDir_h
#define zqa_TestDir_h

#include "cow_String.h"

#include <functional>
#include <ostream>
#include <string>

// Lets test failures show strings as text.
inline void PrintTo(atr_StringBase const& text, std::ostream* out) {
  *out << '"' << std::string(text.CStr(), static_cast<std::size_t>(text.Length())) << '"';
}

// A fresh directory for one test's files, removed with everything in it when
// the object goes. Tests running in parallel never share one.
class zqa_TestDir {
public:
  zqa_TestDir();
  ~zqa_TestDir();
  zqa_TestDir(zqa_TestDir const&) = delete;
  zqa_TestDir& operator=(zqa_TestDir const&) = delete;

  cow_String const& Path() const { return m_Path; }
  // The path of a file in the directory.
  cow_String File(char const* name) const;

private:
  cow_String m_Path;
};

// Reads a whole file into a string of bytes; empty if it cannot be read.
std::string zqa_ReadFileBytes(cow_String const& path);
// Writes bytes as the whole content of a file.
void zqa_WriteFileBytes(cow_String const& path, std::string const& bytes);

// Runs body in a forked child and returns its exit status: 0 when body
// returned normally, 1 when it threw. Under a root account the child first
// drops to an unprivileged user, so that permission checks really apply.
int zqa_RunInChild(std::function<void()> const& body, bool unprivileged = false);

// One direction of a pipe between a test and its child processes: one side
// sends a byte, the other waits for it. Raises when the other side is gone.
class zqa_Signal {
public:
  zqa_Signal();
  ~zqa_Signal();
  zqa_Signal(zqa_Signal const&) = delete;
  zqa_Signal& operator=(zqa_Signal const&) = delete;
  void Send() const;
  void Wait() const;

private:
  int m_Ends[2];
};

// Starts body in a forked child that runs beside the caller; its exit status
// (as zqa_RunInChild's) comes from zqa_WaitChild.
int zqa_StartChild(std::function<void()> const& body);

// For checks that run in a child process, where a failed expectation would
// not reach the test: raises what when the condition fails, which ends the
// child with a failure.
void zqa_Require(bool condition, std::string const& what);
int zqa_WaitChild(int child);

#endif
