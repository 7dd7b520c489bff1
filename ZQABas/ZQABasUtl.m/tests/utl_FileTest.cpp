#include "utl_File.h"

#include "atr_String.h"
#include "nex_PrimException.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

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
