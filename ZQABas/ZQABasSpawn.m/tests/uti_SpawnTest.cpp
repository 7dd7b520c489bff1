#include "uti_Redirection.h"
#include "uti_SpawnSource.h"
#include "uti_SpawnSourceWithSink.h"

#include "atr_String.h"
#include "nex_PrimException.h"
#include "utl_BinIStream.h"
#include "utl_BinOStream.h"
#include "utl_BinStreamException.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Message = nex_PrimException<atr_String, 1>;
using Environment = cow_Map<cow_String, cow_String>;

cow_List<cow_String> Script(char const* text) { return cow_List<cow_String>(cow_String("-c"), cow_String(text)); }

// True when pid is no child of this process any more, so not a zombie of ours.
bool Collected(int pid) {
  int status;
  return ::waitpid(pid, &status, WNOHANG) == -1 && errno == ECHILD;
}

std::string Output(uti_SpawnSource& source) {
  std::string text;
  char line[64];
  while (source.GetLine(line, sizeof line)) text += line;
  return text;
}

}  // namespace

TEST(SpawnTest, SourceGivesTheLinesAndReapTheExitStatus) {
  uti_SpawnSource source("sh", Script("printf 'one\\ntwo\\n'; exit 3"), uti_Redirection(), Environment());
  char line[4];
  ASSERT_NE(0, source.GetLine(line, sizeof line));
  EXPECT_STREQ("one", line);  // a line longer than the buffer comes in pieces
  ASSERT_NE(0, source.GetLine(line, sizeof line));
  EXPECT_STREQ("\n", line);
  ASSERT_NE(0, source.GetLine(line, sizeof line));
  EXPECT_STREQ("two", line);
  EXPECT_EQ("\n", Output(source));
  EXPECT_EQ(3, source.Reap(5));
  EXPECT_TRUE(Collected(source.Pid()));
  EXPECT_FALSE(source.IsRunning());
  EXPECT_EQ(3, source.Reap(5));
}

TEST(SpawnTest, ReapAndTheDestructorKillAChildThatDoesNotEnd) {
  auto start = std::chrono::steady_clock::now();
  uti_SpawnSource sleeper("sleep", cow_List<cow_String>(cow_String("60")), uti_Redirection(), Environment());
  EXPECT_TRUE(sleeper.IsRunning());
  EXPECT_EQ(uti_Spawn::kKilled, sleeper.Reap(0));
  EXPECT_TRUE(Collected(sleeper.Pid()));

  int pid;
  {
    uti_SpawnSourceWithSink cat("cat", cow_List<cow_String>(), uti_Redirection(), Environment());
    pid = cat.Pid();
    EXPECT_TRUE(cat.IsRunning());
  }
  EXPECT_TRUE(Collected(pid));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(SpawnTest, StandardErrorGoesToTheTargetAndOtherDescriptorsStayBehind) {
  zqa_TestDir dir;
  cow_String errors = dir.File("errors.txt");
  zqa_WriteFileBytes(errors, "old contents, longer than the new\n");
  // A descriptor opened without close-on-exec, as other code might.
  int devNull = ::open("/dev/null", O_RDONLY);
  int stray = ::fcntl(devNull, F_DUPFD, 50);
  ::close(devNull);
  ASSERT_GE(stray, 50);
  std::string check = "echo problem >&2; test -e /proc/self/fd/" + std::to_string(stray) + " && echo leaked; exit 0";
  uti_SpawnSource source("sh", Script(check.c_str()), uti_Redirection("2>", errors), Environment());
  EXPECT_EQ("", Output(source));
  EXPECT_EQ(0, source.Reap(5));
  EXPECT_EQ("problem\n", zqa_ReadFileBytes(errors));
  ::close(stray);
}

TEST(SpawnTest, ChildEnvironmentIsTheParentsWithTheMapSet) {
  ::setenv("ZQA_SPAWN_INHERITED", "parent", 1);
  char const* echo = "echo \"$ZQA_SPAWN_INHERITED/$ZQA_SPAWN_SET\"";
  uti_SpawnSource inherited("sh", Script(echo), uti_Redirection(), Environment());
  EXPECT_EQ("parent/\n", Output(inherited));

  Environment environment;
  environment.Insert("ZQA_SPAWN_SET", "child");
  environment.Insert("ZQA_SPAWN_INHERITED", "replaced");
  uti_SpawnSource changed("sh", Script(echo), uti_Redirection(), environment);
  EXPECT_EQ("replaced/child\n", Output(changed));
  ::unsetenv("ZQA_SPAWN_INHERITED");
}

TEST(SpawnTest, FailuresToStartNameTheProgramOrTheTarget) {
  zqa_TestDir dir;
  try {
    uti_SpawnSource source("/nonexistent/zqa-program", cow_List<cow_String>(), uti_Redirection(), Environment());
    FAIL() << "started a missing program";
  } catch (Message const& e) {
    EXPECT_EQ("Cannot start /nonexistent/zqa-program: No such file or directory", e.Value());
  }
  cow_String target = dir.File("missing/errors.txt");
  try {
    uti_SpawnSource source("sh", Script("exit 0"), uti_Redirection("2>", target), Environment());
    FAIL() << "redirected into a missing directory";
  } catch (Message const& e) {
    EXPECT_EQ(cow_String("Cannot open ") + target + " for the standard error of sh: No such file or directory",
              e.Value());
  }
}

TEST(SpawnTest, FindCommandSearchesPathForExecutableFiles) {
  zqa_TestDir dir;
  zqa_WriteFileBytes(dir.File("tool"), "#!/bin/sh\n");
  ::chmod(dir.File("tool").CStr(), 0755);
  zqa_WriteFileBytes(dir.File("data"), "");
  std::string saved = std::getenv("PATH");
  ::setenv("PATH", (std::string("/nonexistent:") + dir.Path().CStr() + ":" + saved).c_str(), 1);
  EXPECT_EQ(dir.File("tool"), uti_Spawn::FindCommand("tool"));
  EXPECT_EQ("", uti_Spawn::FindCommand("data"));
  EXPECT_EQ("", uti_Spawn::FindCommand("zqa-no-such-command"));
  EXPECT_EQ("relative/tool", uti_Spawn::FindCommand("relative/tool"));
  ::setenv("PATH", saved.c_str(), 1);
}

TEST(SpawnSourceWithSinkTest, SinkReachesCatAndComesBackThroughTheSource) {
  uti_SpawnSourceWithSink cat("cat", cow_List<cow_String>(), uti_Redirection(), Environment());
  utl_BinOStream out(cat.SinkDescriptor(), 0);
  utl_BinIStream in(cat.SourceDescriptor(), 0);
  out.WriteInt(-7);
  out.WriteString("through cat");
  out.Flush();
  EXPECT_EQ(-7, in.ReadInt());
  EXPECT_EQ("through cat", in.ReadString());
  cat.CloseSink();
  EXPECT_EQ(-1, cat.SinkDescriptor());
  EXPECT_THROW(in.ReadSchar(), utl_BinStreamEOF);
  EXPECT_EQ(0, cat.Reap(5));
}

TEST(SpawnSourceWithSinkTest, WriteToADeadChildRaisesInsteadOfEndingTheProcess) {
  uti_SpawnSourceWithSink child("sh", Script("exit 0"), uti_Redirection(), Environment());
  while (child.IsRunning()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  utl_BinOStream out(child.SinkDescriptor(), 0);
  out.WriteInt(1);
  try {
    out.Flush();
    FAIL() << "wrote to a child that had ended";
  } catch (utl_BinStreamWriteError const& e) {
    EXPECT_EQ(EPIPE, e.ErrorCode());
    EXPECT_EQ("Cannot write to descriptor " + std::to_string(child.SinkDescriptor()) + ": Broken pipe",
              std::string(e.what()));
  }
  EXPECT_EQ(0, child.Reap(0));
}

TEST(SpawnSourceWithSinkTest, DetachClosesTheSinkAndTheChildIsStillCollected) {
  uti_SpawnSourceWithSink cat("cat", cow_List<cow_String>(), uti_Redirection(), Environment());
  int pid = cat.Pid();
  cat.Detach();
  EXPECT_EQ(-1, cat.SinkDescriptor());
  EXPECT_EQ(uti_Spawn::kNoChild, cat.Reap(0));
  // A zombie still answers kill(pid, 0); only a collected child is gone.
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  bool gone = false;
  while (!gone && std::chrono::steady_clock::now() < deadline) {
    gone = ::kill(pid, 0) != 0 && errno == ESRCH;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(gone);
}
