#include "rfm_FileException.h"
#include "rfm_FileReprLocal.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

namespace {

using Message = nex_PrimException<atr_String, 1>;

char const kCorrupt[] =
    "***ERROR: The Zorbex database file is corrupt. If this file was transferred from another machine using FTP or "
    "equivalent, ensure that the file was copied using the binary mode instead of ASCII mode.";

std::string LittleEndianDouble(double value) {
  std::string bytes(8, '\0');
  std::memcpy(bytes.data(), &value, 8);
  if (omi_Swapper(omi_LittleEndian).Swap()) bytes.assign(bytes.rbegin(), bytes.rend());
  return bytes;
}

// A 1000-byte file whose transfer record at 500 holds marker and length.
cow_String FileWithRecord(zqa_TestDir const& dir, std::string const& marker, double length) {
  std::string bytes(1000, '\0');
  bytes.replace(500, 4, marker);
  bytes.replace(504, 8, LittleEndianDouble(length));
  cow_String name = dir.File("record.bin");
  zqa_WriteFileBytes(name, bytes);
  return name;
}

bool CheckPasses(cow_String const& name) {
  rfm_FileReprLocal file(name, utl_FileAccessRead, false);
  file.Seek(17);
  try {
    file.FTPCheckCheck(500);
  } catch (Message const& e) {
    EXPECT_STREQ(kCorrupt, e.what());
    EXPECT_EQ(17, file.Location());
    return false;
  }
  EXPECT_EQ(17, file.Location());
  return true;
}

}  // namespace

TEST(FileReprLocalTest, PreallocationGrowsTheRealFileInWholeMebibytes) {
  zqa_TestDir dir;
  cow_String name = dir.File("grow.zdb");
  rfm_FileReprLocal file(name, utl_FileAccessCreate, true);
  EXPECT_TRUE(file.FileExtend(1));
  EXPECT_EQ(1, file.LengthLogical());
  EXPECT_EQ(1 << 20, file.LengthPysical());
  EXPECT_EQ(1 << 20, static_cast<long>(zqa_ReadFileBytes(name).size()));
  EXPECT_FALSE(file.FileExtend(1));
  EXPECT_FALSE(file.FileExtend((1 << 20) - 2));
  EXPECT_EQ(1 << 20, file.LengthLogical());
  EXPECT_TRUE(file.FileExtend(1));
  EXPECT_EQ(2 << 20, file.LengthPysical());

  file.Trim();
  EXPECT_EQ((1 << 20) + 1, file.LengthPysical());
  EXPECT_EQ((1 << 20) + 1, static_cast<long>(zqa_ReadFileBytes(name).size()));
}

TEST(FileReprLocalTest, WithoutPreallocationOnlyWritesMoveThePhysicalLength) {
  zqa_TestDir dir;
  rfm_FileReprLocal file(dir.File("plain.zdb"), utl_FileAccessCreate, false);
  EXPECT_FALSE(file.FileExtend(5000));
  EXPECT_FALSE(file.FileExtend(3 << 20));
  EXPECT_EQ(0, file.LengthPysical());
  file.Seek(10);
  EXPECT_EQ(4, file.Write("abcd", 4));
  EXPECT_EQ(14, file.Location());
  EXPECT_EQ(14, file.LengthPysical());
  EXPECT_EQ(5000 + (3 << 20), file.LengthLogical());
  file.Seek(0);
  file.Write("z", 1);
  EXPECT_EQ(14, file.LengthPysical());
}

TEST(FileReprLocalTest, ExistingFilesStartWithBothLengthsAtTheirSize) {
  zqa_TestDir dir;
  cow_String name = dir.File("old.zdb");
  zqa_WriteFileBytes(name, std::string(3000, 'x'));
  rfm_FileReprLocal update(name, utl_FileAccessUpdate, true);
  EXPECT_FALSE(update.ReadOnly());
  EXPECT_EQ(3000, update.LengthLogical());
  EXPECT_EQ(3000, update.LengthPysical());
  EXPECT_EQ(3000, update.Length());
  EXPECT_EQ(name, update.FileName());
}

TEST(FileReprLocalTest, ReadOnlyFilesAndBadArgumentsRaiseAndChangeNothing) {
  zqa_TestDir dir;
  cow_String name = dir.File("ro.zdb");
  zqa_WriteFileBytes(name, "content");
  rfm_FileReprLocal file(name, utl_FileAccessRead, true);
  EXPECT_TRUE(file.ReadOnly());
  std::string readOnlyText = std::string("*** ERROR: Attempt to write to read-only file:\n  ") + name.CStr();
  for (auto attempt : {+[](rfm_FileReprLocal& f) { f.Write("x", 1); }, +[](rfm_FileReprLocal& f) { f.FileExtend(1); },
                       +[](rfm_FileReprLocal& f) { f.Trim(); }}) {
    try {
      attempt(file);
      ADD_FAILURE() << "a read-only file was changed";
    } catch (rfm_FileReadOnlyExc const& e) {
      EXPECT_EQ(readOnlyText, e.what());
    }
  }
  EXPECT_EQ(7, file.LengthLogical());
  EXPECT_EQ("content", zqa_ReadFileBytes(name));

  char buffer[4];
  EXPECT_EQ(0, file.Read(buffer, 0));
  try {
    file.Read(nullptr, 1);
    ADD_FAILURE();
  } catch (rfm_FileBadParameterExc const& e) {
    EXPECT_STREQ("*** ERROR: Bad parameter passed to file method: rfm_FileReprLocal::Read.", e.what());
  }
  try {
    file.Read(buffer, -1);
    ADD_FAILURE();
  } catch (rfm_FileBadParameterExc const&) {
  }
  try {
    file.Write(buffer, -1);
    ADD_FAILURE();
  } catch (rfm_FileBadParameterExc const& e) {
    EXPECT_STREQ("*** ERROR: Bad parameter passed to file method: rfm_FileReprLocal::Write.", e.what());
  }
  EXPECT_EQ(0, file.Location());
}

TEST(FileReprLocalTest, TransferRecordHoldsThePhysicalLengthAndKeepsTheLocation) {
  zqa_TestDir dir;
  cow_String name = dir.File("ftp.zdb");
  {
    rfm_FileReprLocal file(name, utl_FileAccessCreate, true);
    file.FileExtend(1024);
    file.Seek(700);
    file.FTPCheckSet(500);
    EXPECT_EQ(700, file.Location());
    file.FTPCheckCheck(500);
    EXPECT_EQ(700, file.Location());
  }
  std::string bytes = zqa_ReadFileBytes(name);
  ASSERT_EQ(static_cast<std::size_t>(1 << 20), bytes.size());
  EXPECT_EQ(std::string(4, '\0'), bytes.substr(500, 4));
  EXPECT_EQ(LittleEndianDouble(1 << 20), bytes.substr(504, 8));
  EXPECT_TRUE(CheckPasses(name));
}

TEST(FileReprLocalTest, TransferCheckAcceptsBothMarkersAndRejectsAnyOtherRecord) {
  zqa_TestDir dir;
  EXPECT_TRUE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), 0.0)));
  EXPECT_TRUE(CheckPasses(FileWithRecord(dir, std::string("\x0a\x00\x0d\x0a", 4), 0.0)));
  EXPECT_TRUE(CheckPasses(FileWithRecord(dir, std::string("\x01\x02\x03\x04", 4), 1000.0)));
  EXPECT_TRUE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), 999.6)));

  EXPECT_FALSE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), 999.0)));
  EXPECT_FALSE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), 1001.0)));
  EXPECT_FALSE(CheckPasses(FileWithRecord(dir, std::string("\x0a\x0d\x0a\x00", 4), 0.0)));
  EXPECT_FALSE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), -1.0)));
  EXPECT_FALSE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), 1e300)));
  EXPECT_FALSE(CheckPasses(FileWithRecord(dir, std::string(4, '\0'), std::nan(""))));

  cow_String truncated = dir.File("truncated.bin");
  zqa_WriteFileBytes(truncated, std::string(505, '\0'));
  EXPECT_FALSE(CheckPasses(truncated));
}
