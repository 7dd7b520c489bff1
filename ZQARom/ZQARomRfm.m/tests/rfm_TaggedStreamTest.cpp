#include "rfm_Array.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestAssertion.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr int kMagic = static_cast<int>(0xFAAFEBBE);
char const kCorrupt[] =
    "rfm_TaggedStreamRepr::rfm_TaggedStreamRepr: Tagged stream object format is corrupt in ZDB/ZAE.  File may be "
    "unusable.";

rfm_Handle PlainSpace(rfm_Database const& database, std::vector<int> const& words) {
  rfm_Space space = database.Space(-1);
  for (int word : words) space.WriteInt(word);
  return space.Handle();
}

// Every item from the current position on, as "id:value", each value as
// its type shows it.
std::vector<std::string> ReadItems(rfm_TaggedStream const& stream) {
  std::vector<std::string> items;
  while (stream.Next()) {
    std::string value;
    switch (stream.GetType()) {
      case rfm_TypeInt:
        value = std::to_string(stream.GetInt());
        break;
      case rfm_TypeFloat:
        value = std::to_string(stream.GetFloat());
        break;
      case rfm_TypeDouble:
        value = std::to_string(stream.GetDouble());
        break;
      default:
        value = stream.GetString().CStr();
    }
    items.push_back(std::to_string(stream.GetID()) + ":" + value);
  }
  return items;
}

}  // namespace

using TaggedStreamTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(TaggedStreamTest);

TEST_P(TaggedStreamTest, ItemsOfEveryTypeRoundTripThroughAReopenedFile) {
  zqa_TestDir dir;
  cow_String name = dir.File("stream.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TaggedStream stream = database.TaggedStream(0);
    EXPECT_FALSE(stream.Next());
    stream.WriteInt(11, -5);
    stream.WriteHandle(12, rfm_Handle(515));
    stream.WriteFloat(13, 2.5f);
    stream.WriteDouble(14, -1e300);
    stream.WriteString(15, "pooled text");
    EXPECT_EQ(15, stream.GetID());
    EXPECT_EQ(6, stream.GetType());
    EXPECT_EQ(1, stream.Flush());
    handle = stream.Handle();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  std::string bytes = SpaceBytes(database, handle.Value());
  ASSERT_EQ(8u + 12 + 16 + 12 + 16 + 16, bytes.size());
  EXPECT_EQ(kMagic, StoredInt(bytes, 0));
  EXPECT_EQ(1, StoredInt(bytes, 4));
  EXPECT_EQ((std::vector<int>{1, 11, -5}), (std::vector<int>{StoredInt(bytes, 8), StoredInt(bytes, 12),
                                                              StoredInt(bytes, 16)}));
  EXPECT_EQ((std::vector<int>{2, 12, 515, 0}), (std::vector<int>{StoredInt(bytes, 20), StoredInt(bytes, 24),
                                                                 StoredInt(bytes, 28), StoredInt(bytes, 32)}));
  EXPECT_EQ(4, StoredInt(bytes, 48));
  EXPECT_EQ(-1e300, StoredDouble(bytes, 56));
  EXPECT_EQ(rfm_TypeStream, database.HandleType(handle));

  rfm_TaggedStream stream = database.TaggedStream(handle, 16);
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(1, stream.GetType());
  EXPECT_EQ(11, stream.GetID());
  EXPECT_EQ(-5, stream.GetInt());
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(2, stream.GetType());
  EXPECT_EQ(rfm_Handle(515), stream.GetHandle());
  EXPECT_EQ(0, stream.GetInt());  // values of other types are cleared
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(2.5f, stream.GetFloat());
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(14, stream.GetID());
  EXPECT_EQ(-1e300, stream.GetDouble());
  EXPECT_EQ(0.0f, stream.GetFloat());
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(6, stream.GetType());
  EXPECT_EQ(cow_String("pooled text"), stream.GetString());
  EXPECT_FALSE(stream.Next());
  EXPECT_EQ(0, stream.Flush());
}

// A fixed-string item has no length word, but Next reads one: the first
// text bytes are taken as a length, and the stream cannot be read past it.
TEST_P(TaggedStreamTest, AFixedStringItemLeavesTheRestOfTheStreamUnreadable) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("fixed.zdb"));
  rfm_TaggedStream padded = database.TaggedStream(0);
  padded.WriteFixedString(1, "abcdef");
  padded.WriteFixedString(2, "abcd");
  padded.WriteInt(3, 42);
  padded.Flush();
  std::string bytes = SpaceBytes(database, padded.Handle().Value());
  ASSERT_EQ(8u + 16 + 12 + 12, bytes.size());
  EXPECT_EQ(7, StoredInt(bytes, 8));
  EXPECT_EQ(std::string("abcdef\0\0", 8), bytes.substr(16, 8));
  EXPECT_EQ("abcd", bytes.substr(32, 4));
  // "abcd" read as a length claims far more than the stream holds.
  rfm_TaggedStream reader = database.TaggedStream(padded.Handle(), 0);
  EXPECT_EQ(kCorrupt, MessageOf([&] { reader.Next(); }));

  // A text whose bytes make a small length swallows the next item.
  rfm_TaggedStream swallowing = database.TaggedStream(0);
  swallowing.WriteFixedString(4, "\x08");
  swallowing.WriteInt(5, 42);
  swallowing.Flush();
  rfm_TaggedStream misread = database.TaggedStream(swallowing.Handle(), 0);
  ASSERT_TRUE(misread.Next());
  EXPECT_EQ(7, misread.GetType());
  EXPECT_EQ(std::string("\x01\0\0\0\x05\0\0\0", 8), std::string(misread.GetString().CStr(), 8));
  EXPECT_EQ(kCorrupt, MessageOf([&] { misread.Next(); }));
}

TEST_P(TaggedStreamTest, ForeignOrDamagedObjectsRaiseTheirTexts) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("damaged.zdb"));
  rfm_Array<int, rfm_TypeInt> array = database.ArrayInt(1, -1, 0);
  array.Flush();
  EXPECT_EQ("rfm_TaggedStreamRepr::rfm_TaggedStreamRepr: Handle is not to a Tagged Stream object in ZDB/ZAE file.  "
            "File may be unusable.",
            MessageOf([&] { database.TaggedStream(array.Handle(), 0); }));
  EXPECT_EQ(kCorrupt, MessageOf([&] { database.TaggedStream(PlainSpace(database, {kMagic}), 0); }));

  rfm_TaggedStream badTag = database.TaggedStream(PlainSpace(database, {kMagic, 0, 5, 1, 0}), 0);
  EXPECT_EQ("!\"rfm_TaggedStreamRepr::Next: Bad type from Tagged Stream.\"", AssertionOf([&] { badTag.Next(); }));
  rfm_TaggedStream torn = database.TaggedStream(PlainSpace(database, {kMagic, 0, 4, 1, 0}), 0);
  EXPECT_EQ(kCorrupt, MessageOf([&] { torn.Next(); }));
  rfm_TaggedStream negative = database.TaggedStream(PlainSpace(database, {kMagic, 0, 7, 1, -4, 0}), 0);
  EXPECT_EQ(kCorrupt, MessageOf([&] { negative.Next(); }));
}

// Rewind goes back before the first item. A writer reads what it wrote and,
// having read to the end, goes on writing there; a reader reads everything
// again, after Snap the items a writer has added since included.
TEST(TaggedStreamPlainFileTest, RewindReadsEveryItemAgainFromTheFirst) {
  zqa_TestDir dir;
  cow_String name = dir.File("rewind.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  rfm_TaggedStream written = writer.TaggedStream(0);
  written.WriteInt(1, 10);
  written.WriteString(2, "two");
  written.WriteDouble(3, 3.5);
  std::vector<std::string> items = {"1:10", "2:two", "3:3.500000"};
  EXPECT_TRUE(ReadItems(written).empty());
  written.Rewind();
  EXPECT_EQ(items, ReadItems(written));
  written.Rewind();
  EXPECT_EQ(items, ReadItems(written));
  written.WriteInt(4, 40);
  items.push_back("4:40");
  written.Rewind();
  EXPECT_EQ(items, ReadItems(written));
  written.Flush();
  writer.Flush();

  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_TaggedStream read = reader.TaggedStream(written.Handle(), 0);
  EXPECT_EQ(items, ReadItems(read));
  read.Rewind();
  EXPECT_EQ(items, ReadItems(read));
  written.WriteFloat(5, 0.5f);
  items.push_back("5:0.500000");
  written.Flush();
  writer.Flush();
  ASSERT_TRUE(reader.Snap());
  EXPECT_EQ(2, read.Snap());
  read.Rewind();
  EXPECT_EQ(items, ReadItems(read));
  read.Rewind();
  EXPECT_EQ(items, ReadItems(read));
}
