#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_Database.h"
#include "rfm_DatabaseReprFile.h"
#include "rfm_HandleConverter.h"
#include "rfm_OffsetConverter.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

rfm_Linkage const& LinkageOf(rfm_Database const& database, rfm_Handle handle) {
  return static_cast<rfm_DatabaseReprFile&>(database.Repr()).Linkage(handle);
}

int ChainLength(rfm_Database const& database, rfm_Handle head) {
  int count = 0;
  for (rfm_Handle link = head; !link.IsNull(); link = LinkageOf(database, link).m_Next) ++count;
  return count;
}

}  // namespace

using SpaceTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(SpaceTest);

TEST_P(SpaceTest, WritesGrowInQuantaAndASpaceAloneAtTheEndStaysOneExtent) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("alone.zdb"));
  rfm_Space space = database.Space(-1);
  space.Write("0123456789", 10);
  EXPECT_EQ(10, space.Length());
  EXPECT_EQ(12, space.Allocation());

  rfm_Space large = database.Space(1000);
  for (int i = 0; i < 100; ++i) large.Write("abcdefghijklmnopqrstuvwxyz", 26);
  EXPECT_EQ(2600, large.Length());
  EXPECT_EQ(3000, large.Allocation());
  EXPECT_EQ(1, ChainLength(database, large.Handle()));
  large.Seek(26 * 57 + 3);
  char letter;
  large.Read(&letter, 1);
  EXPECT_EQ('d', letter);
}

TEST_P(SpaceTest, SpacesWrittenInTurnChainOneExtentPerTurn) {
  zqa_TestDir dir;
  cow_String name = dir.File("turns.zdb");
  rfm_Handle first;
  rfm_Handle second;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Space a = database.Space(-1);
    rfm_Space b = database.Space(-1);
    for (int turn = 0; turn < 5; ++turn) {
      a.Write("AAAA", 4);
      b.Write("BBBBBB", 6);
    }
    EXPECT_EQ(5, ChainLength(database, a.Handle()));
    EXPECT_EQ(5, ChainLength(database, b.Handle()));
    first = a.Handle();
    second = b.Handle();
  }
  rfm_Database database = rfm_Database::Open(rfm_File::Open(name, utl_FileAccessRead, false), "");
  rfm_Space a = database.Space(first, -1);
  rfm_Space b = database.Space(second, -1);
  EXPECT_EQ(20, a.Length());
  EXPECT_EQ(30, b.Length());
  EXPECT_EQ(32, b.Allocation());
  std::string text(30, '\0');
  EXPECT_EQ(30, b.Read(text.data(), 30));
  EXPECT_EQ(std::string(30, 'B'), text);
  // Reading across extents from the middle.
  a.Seek(2);
  EXPECT_EQ(18, a.Read(text.data(), 30));
  EXPECT_EQ(std::string(18, 'A'), text.substr(0, 18));
}

TEST_P(SpaceTest, SeekingAndReadingStopAtTheEnd) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("seek.zdb"));
  rfm_Space space = database.Space(-1);
  space.WriteInt(7);
  space.WriteInt(8);
  space.Seek(8);
  char byte;
  EXPECT_EQ(0, space.Read(&byte, 1));
  EXPECT_EQ("***ERROR: Unexpected End Of File.", MessageOf([&] { space.ReadInt(); }));
  EXPECT_EQ(
      "***ERROR: Invalid seek offset: 9.000000.  This is usually caused by depletion of free space on the "
      "filesystem on which the ZDB file is being built.",
      MessageOf([&] { space.Seek(9); }));
  EXPECT_EQ(8, space.Location());
  space.Seek(4);
  EXPECT_EQ(8, space.ReadInt());

  EXPECT_EQ("***ERROR: Invalid length when writing space.", MessageOf([&] { space.Write("x", 0); }));
  EXPECT_EQ("***ERROR: Invalid data buffer pointer when writing space.",
            MessageOf([&] { space.Write(nullptr, 1); }));
  EXPECT_EQ("***ERROR: Invalid length when reading space.", MessageOf([&] { space.Read(&byte, -1); }));
  EXPECT_EQ("***ERROR: Invalid data buffer pointer when reading space.",
            MessageOf([&] { space.Read(nullptr, 1); }));
  EXPECT_EQ("rfm_SpaceReprFile::Extend: Invalid file extend increment specified.",
            MessageOf([&] { space.Extend(0); }));
  EXPECT_EQ(8, space.Length());
}

TEST_P(SpaceTest, TruncateKeepsTheAllocationAndReusesTheExtents) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("truncate.zdb"));
  rfm_Space a = database.Space(-1);
  rfm_Space b = database.Space(-1);
  for (int turn = 0; turn < 3; ++turn) {
    a.Write("aaaaaaaa", 8);
    b.Write("bbbb", 4);
  }
  ASSERT_EQ(3, ChainLength(database, a.Handle()));
  utl_FileOffset logical = static_cast<rfm_DatabaseReprFile&>(database.Repr()).File().LengthLogical();

  a.Truncate(10);
  EXPECT_EQ(10, a.Length());
  EXPECT_EQ(24, a.Allocation());
  EXPECT_EQ(0, a.Location());
  a.Truncate(0);
  EXPECT_EQ(0, a.Length());
  EXPECT_EQ(24, a.Allocation());

  a.Write("0123456789ABCDEFGHIJKLMN", 24);
  EXPECT_EQ(3, ChainLength(database, a.Handle()));
  EXPECT_EQ(logical, static_cast<rfm_DatabaseReprFile&>(database.Repr()).File().LengthLogical());
  a.Seek(0);
  std::string text(24, '\0');
  EXPECT_EQ(24, a.Read(text.data(), 24));
  EXPECT_EQ("0123456789ABCDEFGHIJKLMN", text);
  a.Write("!", 1);
  EXPECT_EQ(4, ChainLength(database, a.Handle()));
}

TEST_P(SpaceTest, ReadOnlySpacesRefuseEveryWrite) {
  zqa_TestDir dir;
  cow_String name = dir.File("ro.zdb");
  { CreateTestDatabase(name); }
  rfm_Database database = rfm_Database::Open(rfm_File::Open(name, utl_FileAccessRead, false), "");
  rfm_Space pool = database.Space(rfm_Handle(1), -1);
  std::string const refused =
      "The output database was opened as read-only. Modification of data is not permitted.";
  EXPECT_EQ(refused, MessageOf([&] { pool.Write("x", 1); }));
  EXPECT_EQ(refused, MessageOf([&] { pool.Extend(4); }));
  EXPECT_EQ(refused, MessageOf([&] { pool.Truncate(0); }));
  EXPECT_EQ(4, pool.Length());
}

TEST(ConverterTest, OffsetsAreDoublesAndHandlesAreFourBytesOfEight) {
  omi_Swapper order(kRfmFileEndType);
  char bytes[8];
  rfm_OffsetConverter::Externalize(order, bytes, utl_FileOffset(1) << 40);
  EXPECT_EQ(std::string("\0\0\0\0\0\0\x70\x42", 8), std::string(bytes, 8));
  EXPECT_EQ(utl_FileOffset(1) << 40, rfm_OffsetConverter::Internalize(order, bytes));
  std::string rounded(8, '\0');
  double const almost = 41.6;
  std::memcpy(rounded.data(), &almost, 8);
  EXPECT_EQ(42, rfm_OffsetConverter::Internalize(order, rounded.data()));
  double const negative = -3.0;
  std::memcpy(rounded.data(), &negative, 8);
  EXPECT_EQ(rfm_OffsetConverter::kInvalid, rfm_OffsetConverter::Internalize(order, rounded.data()));

  rfm_HandleConverter::Externalize(order, bytes, rfm_Handle(513));
  EXPECT_EQ(std::string("\x01\x02\0\0\0\0\0\0", 8), std::string(bytes, 8));
  std::memcpy(bytes + 4, "junk", 4);
  EXPECT_EQ(513, rfm_HandleConverter::Internalize(order, bytes).Value());
}

TEST_P(SpaceTest, SpacesOfAPageOrMoreStartEveryExtentOnAPage) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("pages.zdb"));
  rfm_Space small = database.Space(-1);
  rfm_Space paged = database.Space(8192);
  small.Write("abc", 3);
  paged.Write("first", 5);
  small.Write("defgh", 5);
  std::string big(9000, 'p');
  paged.Write(big.data(), 9000);
  ASSERT_EQ(2, ChainLength(database, paged.Handle()));
  for (rfm_Handle link = paged.Handle(); !link.IsNull(); link = LinkageOf(database, link).m_Next) {
    EXPECT_EQ(0, LinkageOf(database, link).m_Location % 4096);
  }
  EXPECT_EQ(9005, paged.Length());
  EXPECT_EQ(8192 + 8192, paged.Allocation());
  // A small space goes where the file ends, page or not.
  EXPECT_NE(0, LinkageOf(database, small.Handle()).m_Location % 4096);
  paged.Seek(4);
  char bytes[3];
  paged.Read(bytes, 3);
  EXPECT_EQ("tpp", std::string(bytes, 3));
}
