#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_Database.h"
#include "rfm_DatabaseReprFile.h"
#include "rfm_OffsetConverter.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>

namespace {

rfm_StringManagerFile& Pool(rfm_Database const& database) {
  return static_cast<rfm_StringManagerFile&>(*static_cast<rfm_DatabaseReprFile&>(database.Repr()).StringManager());
}

// The offsets that a space holding external strings refers to.
std::vector<utl_FileOffset> ExternalOffsets(std::string const& bytes) {
  std::vector<utl_FileOffset> offsets;
  for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
    offsets.push_back(rfm_OffsetConverter::Internalize(omi_Swapper(kRfmFileEndType), bytes.data() + at));
  }
  return offsets;
}

}  // namespace

using StringPoolTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(StringPoolTest);

TEST_P(StringPoolTest, RecordsArePaddedToFourBytesAndStoredOnceForGood) {
  zqa_TestDir dir;
  cow_String name = dir.File("pool.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Space strings = database.Space(-1);
    cow_String const values[5] = {"", "abcde", "abcdefgh", "abcde", ""};
    strings->WriteStringArray(values, 5);
    handle = strings.Handle();
    EXPECT_EQ(3, Pool(database).Count());
    EXPECT_EQ(4 + 4 + 12 + 12, Pool(database).EndOffset());
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
  std::string pool = SpaceBytes(database, 1);
  ASSERT_EQ(32u, pool.size());
  EXPECT_EQ(static_cast<int>(0xAAFFBBEE), StoredInt(pool, 0));
  EXPECT_EQ(0, StoredInt(pool, 4));
  EXPECT_EQ(5, StoredInt(pool, 8));
  EXPECT_EQ(std::string("abcde\0\0\0", 8), pool.substr(12, 8));
  EXPECT_EQ(8, StoredInt(pool, 20));
  EXPECT_EQ("abcdefgh", pool.substr(24, 8));
  EXPECT_EQ((std::vector<utl_FileOffset>{4, 8, 20, 8, 4}), ExternalOffsets(SpaceBytes(database, handle.Value())));

  // Equal strings keep sharing one record in the reopened file.
  rfm_Space more = database.Space(-1);
  more->WriteString("abcdefgh");
  more->WriteString("new");
  database.Flush();
  EXPECT_EQ((std::vector<utl_FileOffset>{20, 32}), ExternalOffsets(SpaceBytes(database, more.Handle().Value())));
  rfm_Space back = database.Space(handle, -1);
  cow_String read[5];
  EXPECT_EQ(5, back->ReadStringArray(read, 5));
  EXPECT_EQ(cow_String("abcdefgh"), read[2]);
  EXPECT_TRUE(read[4].Empty());
  EXPECT_EQ(read[1].CStr(), read[3].CStr());
}

// Plain files only: a reader opened beside the writer follows its flushes
// through Snap, and a compressed file's reader sees the file as of its open.
TEST(StringPoolPlainFileTest, ReaderLoadsStringsFlushedAfterItOpenedAndRefusesUnknownOffsets) {
  zqa_TestDir dir;
  cow_String name = dir.File("lazy.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  writer.Flush();
  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);

  rfm_Space space = writer.Space(-1);
  space->WriteString("written later");
  writer.Flush();
  EXPECT_TRUE(reader.Snap());
  cow_String text = reader.Space(space.Handle(), -1)->ReadString();
  EXPECT_EQ(cow_String("written later"), text);

  try {
    Pool(reader).String(utl_FileOffset(5));
    FAIL() << "an offset between records resolved";
  } catch (rfm_TestMessage const& e) {
    EXPECT_STREQ("rfm_StringManagerFile::String - String is not available.", e.what());
  }
  cow_List<cow_String> statistics = reader.GetDBStatistics();
  EXPECT_EQ(cow_String("String Pool Count (number of strings)=1"), statistics[4]);
}

TEST_P(StringPoolTest, NeuterOverwritesInPlaceKeepingTheRecordsRoom) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("neuter.zdb"));
  rfm_Space space = database.Space(-1);
  cow_String const values[2] = {"secret-text", "next"};
  space->WriteStringArray(values, 2);
  space.Seek(0);
  char external[8];
  space.Read(external, 8);
  Pool(database).Neuter(external, "xy");

  std::string pool = SpaceBytes(database, 1);
  EXPECT_EQ(2, StoredInt(pool, 4));
  EXPECT_EQ(std::string("xy") + std::string(10, '\0'), pool.substr(8, 12));
  EXPECT_EQ(4, StoredInt(pool, 20));
  EXPECT_EQ("next", pool.substr(24, 4));
  // The process's own maps keep the old text.
  EXPECT_EQ(cow_String("secret-text"), Pool(database).String(utl_FileOffset(4)));
}

// The pool answers a string it has just looked up by its characters'
// address; another string made later at that address must still find its
// own record.
TEST(StringPoolPlainFileTest, AStringAtAnAddressReusedFindsItsOwnRecord) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("recent.zdb"));
  rfm_StringManagerFile& pool = Pool(database);
  utl_FileOffset const plate = pool.String(cow_String("plate"));
  utl_FileOffset const shell = pool.String(cow_String("shell"));
  EXPECT_NE(plate, shell);
  for (int i = 0; i < 100; ++i) {
    // Made afresh and dropped each time, so that one address serves both.
    cow_String text(i % 2 == 0 ? "plate" : "shell", 5);
    ASSERT_EQ(i % 2 == 0 ? plate : shell, pool.String(text)) << i;
    ASSERT_EQ(i % 2 == 0 ? plate : shell, pool.String(text)) << i;
  }
}
