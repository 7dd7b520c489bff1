#include "utl_File.h"

#include "atr_String.h"
#include "atr_SubstituteFormat.h"
#include "nex_PrimException.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using Message = nex_PrimException<atr_String, 1>;

TEST(UtlFileTest, PositionedReadsAndWritesWithShortReadAtTheEnd) {
  zqa_TestDir dir;
  cow_String name = dir.File("data.bin");
  utl_File file(name, utl_FileAccessCreate);
  EXPECT_EQ(0, file.FileSize());
  EXPECT_EQ(6, file.Write("abcdef", 6));
  file.Seek(2);
  EXPECT_EQ(2, file.Write("XY", 2));
  EXPECT_EQ(4, file.Tell());

  char buffer[8] = {};
  file.Seek(1);
  EXPECT_EQ(5, file.Read(buffer, 8));
  EXPECT_STREQ("bXYef", buffer);
  EXPECT_EQ(6, file.Tell());
  EXPECT_EQ(0, file.Read(buffer, 8));
  EXPECT_EQ("abXYef", zqa_ReadFileBytes(name));
}

TEST(UtlFileTest, ExtendSetsTheSizeInBothDirections) {
  zqa_TestDir dir;
  utl_File file(dir.File("grow.bin"), utl_FileAccessCreate);
  file.Write("12345678", 8);
  file.Extend(1 << 20);
  EXPECT_EQ(1 << 20, file.FileSize());
  file.Extend(3);
  EXPECT_EQ(3, file.FileSize());
  EXPECT_EQ("123", zqa_ReadFileBytes(dir.File("grow.bin")));
}

TEST(UtlFileTest, FailuresNameTheFileAndTheReason) {
  zqa_TestDir dir;
  cow_String missing = dir.File("missing.bin");
  try {
    utl_File file(missing, utl_FileAccessRead);
    FAIL() << "opened a missing file";
  } catch (Message const& e) {
    EXPECT_EQ(cow_String(missing).Append(": No such file or directory"), e.Value());
  }

  zqa_WriteFileBytes(dir.File("ro.bin"), "x");
  utl_File readOnly(dir.File("ro.bin"), utl_FileAccessRead);
  EXPECT_THROW(readOnly.Write("y", 1), Message);
  EXPECT_THROW(readOnly.Extend(10), Message);
  EXPECT_THROW(readOnly.Seek(-1), Message);
  EXPECT_EQ("x", zqa_ReadFileBytes(dir.File("ro.bin")));
}

TEST(UtlFileTest, CreateTruncatesAndUpdateKeeps) {
  zqa_TestDir dir;
  cow_String name = dir.File("f.bin");
  zqa_WriteFileBytes(name, "old content");
  {
    utl_File update(name, utl_FileAccessUpdate);
    update.Write("OLD", 3);
  }
  EXPECT_EQ("OLD content", zqa_ReadFileBytes(name));
  utl_File create(name, utl_FileAccessCreate);
  EXPECT_EQ(0, create.FileSize());

  utl_File moved(std::move(create));
  EXPECT_FALSE(create.IsOpen());
  EXPECT_TRUE(moved.IsOpen());
  EXPECT_EQ(name, moved.Name());
}

// A FIFO without a writer would block an open for good; a device or a
// directory is no file of data. Each is refused at once, whatever the
// access, and left as it was. The opens run in a child that an alarm ends,
// so that an open that blocks fails the test instead of hanging it.
TEST(UtlFileTest, WhatIsNoRegularFileIsRefusedWithoutBlocking) {
  zqa_TestDir dir;
  cow_String const fifo = dir.File("fifo");
  ASSERT_EQ(0, ::mkfifo(fifo.CStr(), 0600));
  cow_String const directory = dir.File("directory");
  ASSERT_EQ(0, ::mkdir(directory.CStr(), 0700));
  int const status = zqa_RunInChild([&] {
    ::alarm(30);
    for (cow_String const& name : {fifo, directory, cow_String("/dev/null")}) {
      for (int access : {utl_FileAccessRead, utl_FileAccessUpdate, utl_FileAccessCreate}) {
        cow_String expected = atr_SubstituteFormat(utl_File::kNotRegularFileText, name);
        try {
          utl_File file(name, access);
        } catch (Message const& e) {
          if (e.Value() == expected) continue;
          std::fprintf(stderr, "%s: %s\n", name.CStr(), e.what());
        }
        throw std::runtime_error("not refused as no regular file");
      }
    }
  });
  EXPECT_EQ(0, status);
  struct stat after;
  ASSERT_EQ(0, ::stat(fifo.CStr(), &after));
  EXPECT_TRUE(S_ISFIFO(after.st_mode));

  // A regular file opened the same way reads and writes as before.
  cow_String const data = dir.File("data.bin");
  utl_File file(data, utl_FileAccessCreate);
  EXPECT_EQ(3, file.Write("abc", 3));
  file.Seek(0);
  char read[3];
  EXPECT_EQ(3, file.Read(read, 3));
}
