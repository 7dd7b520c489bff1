#include "rfm_File.h"
#include "rfm_ReadAhead.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <dirent.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kSegment = 64 * 1024;
constexpr int kSegments = 6;
// A child that hangs on a thread it does not have is ended by this alarm
// instead of holding up the run.
constexpr unsigned kChildAlarmSeconds = 60;
// Set for the copy of this program that the environment test runs: "on" or
// "off", what the copy's environment asks for.
char const kChildMode[] = "ZQA_TEST_READ_AHEAD_EXPECTED";

// Bytes that compress, and that differ from segment to segment.
std::string Pattern(int length) {
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(length));
  for (int i = 0; i < length; ++i) bytes.push_back(static_cast<char>((i / 5 + i / 4099 * 31) % 253));
  return bytes;
}

std::string WriteCompressed(cow_String const& name, int length) {
  std::string const bytes = Pattern(length);
  rfm_File file = rfm_File::CreateCompressed(name);
  file.Write(bytes.data(), length);
  return bytes;
}

int ThreadCount() {
  DIR* tasks = ::opendir("/proc/self/task");
  if (tasks == nullptr) return -1;
  int count = 0;
  while (dirent* entry = ::readdir(tasks)) count += entry->d_name[0] != '.';
  ::closedir(tasks);
  return count;
}

// Reads the rest of file in calls of step bytes.
std::string ReadRest(rfm_File const& file, int step) {
  std::string bytes;
  std::string chunk(static_cast<std::size_t>(step), '\0');
  for (;;) {
    int got = file.Read(&chunk[0], step);
    bytes.append(chunk, 0, static_cast<std::size_t>(got));
    if (got < step) return bytes;
  }
}

// Restores the process's setting when a test ends.
class ReadAheadSetting {
public:
  explicit ReadAheadSetting(bool enabled) : m_Was(rfm_ReadAhead::IsEnabled()) { rfm_ReadAhead::SetEnabled(enabled); }
  ~ReadAheadSetting() { rfm_ReadAhead::SetEnabled(m_Was); }

private:
  bool m_Was;
};

// Threads started by reading the first segments of name, beyond those
// before its open.
int ThreadsOfAReadInOrder(cow_String const& name) {
  int const before = ThreadCount();
  rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
  std::string head(2 * kSegment, '\0');
  file.Read(&head[0], 2 * kSegment);
  return ThreadCount() - before;
}

}  // namespace

TEST(ReadAheadTest, OnAndOffReadTheSameBytesAndOnlyOnStartsAThread) {
  zqa_TestDir dir;
  cow_String name = dir.File("rows.zdb");
  int const length = kSegments * kSegment - 1234;
  std::string const written = WriteCompressed(name, length);

  for (bool enabled : {true, false}) {
    ReadAheadSetting setting(enabled);
    SCOPED_TRACE(enabled ? "read-ahead on" : "read-ahead off");
    EXPECT_EQ(ThreadsOfAReadInOrder(name), enabled ? 1 : 0);
    // Calls that end inside segments and calls of whole segments.
    for (int step : {kSegment, 10007, 3 * kSegment}) {
      rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
      EXPECT_EQ(ReadRest(file, step), written) << "step " << step;
    }
    // A reader that jumps back, then forward past the segment read ahead.
    rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
    std::string bytes(kSegment + 100, '\0');
    file.Read(&bytes[0], kSegment + 100);
    file.Seek(50);
    ASSERT_EQ(file.Read(&bytes[0], kSegment), kSegment);
    EXPECT_EQ(bytes.substr(0, kSegment), written.substr(50, kSegment));
    file.Seek(4 * kSegment + 7);
    EXPECT_EQ(ReadRest(file, kSegment), written.substr(4 * kSegment + 7));
  }
}

// The copy of this program that the test below starts with an environment
// of its own: it checks there what the environment asked for.
TEST(ReadAheadTest, ZeroInTheEnvironmentSwitchesItOff) {
  zqa_TestDir dir;
  cow_String name = dir.File("rows.zdb");
  WriteCompressed(name, kSegments * kSegment);
  if (char const* expected = std::getenv(kChildMode)) {
    EXPECT_EQ(rfm_ReadAhead::IsEnabled(), std::string(expected) == "on");
    EXPECT_EQ(ThreadsOfAReadInOrder(name), std::string(expected) == "on" ? 1 : 0);
    return;
  }
  for (char const* value : {"0", "1"}) {
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::setenv("ZQA_READ_AHEAD", value, 1);
      ::setenv(kChildMode, std::string(value) == "0" ? "off" : "on", 1);
      std::string const filter =
          std::string("--gtest_filter=") + ::testing::UnitTest::GetInstance()->current_test_suite()->name() + "." +
          ::testing::UnitTest::GetInstance()->current_test_info()->name();
      ::execl("/proc/self/exe", "rfm_ReadAheadChild", filter.c_str(), static_cast<char*>(nullptr));
      ::_exit(127);
    }
    EXPECT_EQ(zqa_WaitChild(child), 0) << "ZQA_READ_AHEAD=" << value;
  }
}

TEST(ReadAheadTest, AChildForkedMidReadReadsTheRestAndTheParentGoesOn) {
  ReadAheadSetting setting(true);
  zqa_TestDir dir;
  cow_String name = dir.File("rows.zdb");
  int const length = kSegments * kSegment;
  std::string const written = WriteCompressed(name, length);
  int const before = ThreadCount();

  rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
  // Into segment 1: segment 2 is being decoded ahead.
  int const head = kSegment + kSegment / 2;
  std::string bytes(static_cast<std::size_t>(head), '\0');
  ASSERT_EQ(file.Read(&bytes[0], head), head);
  ASSERT_EQ(ThreadCount(), before + 1);

  int const child = zqa_StartChild([&] {
    ::alarm(kChildAlarmSeconds);
    zqa_Require(ReadRest(file, kSegment) == written.substr(static_cast<std::size_t>(head)), "the child's rest");
    zqa_Require(ThreadCount() == 2, "the child's file reads ahead on a worker of its own");
    // Closing ends the child's worker, not the parent's.
    file = rfm_File();
    zqa_Require(ThreadCount() == 1, "the child's worker ended with its file");
  });
  EXPECT_EQ(ReadRest(file, kSegment), written.substr(static_cast<std::size_t>(head)));
  EXPECT_EQ(zqa_WaitChild(child), 0);
}
