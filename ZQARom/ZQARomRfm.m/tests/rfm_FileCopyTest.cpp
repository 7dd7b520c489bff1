#include "rfm_TestSampleDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace rfm_Sample;

TEST(FileCopyTest, ADatabaseCopiedIntoACompressedFileAndBackReadsTheSameAndComesBackByteForByte) {
  zqa_TestDir dir;
  cow_String original = dir.File("original.zdb");
  cow_String compressed = dir.File("compressed.zdb");
  cow_String back = dir.File("back.zdb");
  Objects const objects = WriteDatabase(original);
  rfm_File::CreateCompressed(compressed).Copy(rfm_File::Open(original, utl_FileAccessRead, false));
  rfm_File::Open(back, utl_FileAccessCreate, false).Copy(rfm_File::Open(compressed, utl_FileAccessRead, false));

  std::string const bytes = zqa_ReadFileBytes(original);
  EXPECT_EQ(bytes, LogicalFileBytes(compressed));
  EXPECT_LT(zqa_ReadFileBytes(compressed).size(), bytes.size());
  EXPECT_EQ(bytes, zqa_ReadFileBytes(back));

  std::vector<std::string> const contents = Contents(original, objects);
  ASSERT_EQ(static_cast<std::size_t>(kRows + 2 * kArrayRows + kWords + 5), contents.size());
  EXPECT_EQ(contents, Contents(compressed, objects));
  EXPECT_EQ(contents, Contents(back, objects));
}
