#include "rfm_DBStatusChecker.h"
#include "rfm_FileReprLocal.h"
#include "rfm_ReaderSemaphore.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/stat.h>

namespace {

bool IsDirectory(cow_String const& path) {
  struct stat status;
  return ::stat(path.CStr(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A file with the given flush count and creation time at 512 and 516.
void WriteBlock0(cow_String const& name, int flushCount, int creationTime) {
  rfm_FileReprLocal file(name, utl_FileAccessCreate, false);
  file.Write(std::string(512, '\0').data(), 512);
  file.WriteInt(flushCount);
  file.WriteInt(creationTime);
  file.Write(std::string(504, '\0').data(), 504);
}

}  // namespace

TEST(ReaderSemaphoreTest, MarkerPathReplacesOnlyTheDatabaseExtension) {
  EXPECT_EQ(cow_String("/d/job.lsm"), rfm_ReaderSemaphore::MakeSemaphorePath("/d/job.zdb"));
  EXPECT_EQ(cow_String("/d/job.dat.lsm"), rfm_ReaderSemaphore::MakeSemaphorePath("/d/job.dat"));
  EXPECT_EQ(cow_String("/d/job.lsm"), rfm_ReaderSemaphore::MakeSemaphorePath("/d/job"));
  EXPECT_EQ(cow_String("/d/job.zdb.x.lsm"), rfm_ReaderSemaphore::MakeSemaphorePath("/d/job.zdb.x"));
}

TEST(ReaderSemaphoreTest, MarkerIsADirectorySetAndClearedSilently) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  cow_String marker = dir.File("job.lsm");
  EXPECT_FALSE(rfm_ReaderSemaphore::ReaderSemaphore(name));
  rfm_ReaderSemaphore::ReaderSemaphoreSet(name);
  rfm_ReaderSemaphore::ReaderSemaphoreSet(name);
  EXPECT_TRUE(IsDirectory(marker));
  EXPECT_TRUE(rfm_ReaderSemaphore::ReaderSemaphore(name));
  rfm_ReaderSemaphore::ReaderSemaphoreWait(dir.File("other.zdb"));
  rfm_ReaderSemaphore::ReaderSemaphoreClear(name);
  rfm_ReaderSemaphore::ReaderSemaphoreClear(name);
  EXPECT_FALSE(rfm_ReaderSemaphore::ReaderSemaphore(name));
  EXPECT_FALSE(rfm_ReaderSemaphore::ReaderSemaphore("zbxrdb://host:1//tmp/job.zdb"));
}

TEST(ReaderSemaphoreTest, WriterIgnoresItsOwnTransactionAndReadersSeeIt) {
  zqa_TestDir dir;
  cow_String name = dir.File("shared.zdb");
  WriteBlock0(name, 0, 7);
  rfm_FileReprLocal writer(name, utl_FileAccessUpdate, false);
  rfm_FileReprLocal reader(name, utl_FileAccessRead, false);

  writer.ReaderSemaphoreSet();
  EXPECT_FALSE(writer.ReaderSemaphore());
  EXPECT_TRUE(reader.ReaderSemaphore());
  EXPECT_EQ(rfm_FileStatus::kInTransaction, reader.FileStatus());
  // A reader can neither set nor clear the marker.
  reader.ReaderSemaphoreClear();
  EXPECT_TRUE(reader.ReaderSemaphore());
  writer.ReaderSemaphoreClear();
  EXPECT_FALSE(reader.ReaderSemaphore());
  EXPECT_EQ(rfm_FileStatus::kUnchanged, reader.FileStatus());
}

TEST(ReaderSemaphoreTest, StatusReportsAFlushOnceAndAReplacementAlways) {
  zqa_TestDir dir;
  cow_String name = dir.File("status.zdb");
  WriteBlock0(name, 3, 1000);
  rfm_DBStatusCheckerFileLocal checker(name);
  EXPECT_EQ(rfm_FileStatus::kUnchanged, checker.CheckStatus());

  {
    rfm_FileReprLocal writer(name, utl_FileAccessUpdate, false);
    writer.Seek(512);
    writer.WriteInt(4);
  }
  EXPECT_EQ(rfm_FileStatus::kFlushed, checker.CheckStatus());
  EXPECT_EQ(rfm_FileStatus::kUnchanged, checker.CheckStatus());

  WriteBlock0(name, 4, 2000);
  EXPECT_EQ(rfm_FileStatus::kReplaced, checker.CheckStatus());
  EXPECT_EQ(rfm_FileStatus::kReplaced, checker.CheckStatus());

  std::remove(name.CStr());
  EXPECT_EQ(rfm_FileStatus::kUnreadable, checker.CheckStatus());

  // A file too short to be a database is unreadable.
  cow_String tiny = dir.File("tiny.zdb");
  rfm_FileReprLocal(tiny, utl_FileAccessCreate, false).Write("abc", 3);
  rfm_DBStatusCheckerFileLocal tinyChecker(tiny);
  EXPECT_EQ(rfm_FileStatus::kUnreadable, tinyChecker.CheckStatus());
}
