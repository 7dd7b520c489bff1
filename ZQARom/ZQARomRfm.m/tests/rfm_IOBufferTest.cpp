#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_BufferedSpace.h"
#include "rfm_Database.h"
#include "rfm_IOBuffer.h"
#include "rfm_SpaceRepr.h"
#include "rfm_MemoryIOS.h"
#include "rfm_StringManager.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Stores strings as their index in a list held in memory.
class ListStringManager : public rfm_StringManager {
public:
  void Flush() override {}
  void Neuter(char const*, cow_String const&) override {}
  void Internalize(char const* source, cow_String* strings, int count) override {
    for (int i = 0; i < count; ++i) {
      int index;
      std::memcpy(&index, source + 8 * i, 4);
      strings[i] = m_Strings.at(static_cast<std::size_t>(index));
    }
  }
  void Externalize(char* target, cow_String const* strings, int count) override {
    for (int i = 0; i < count; ++i) {
      int index = static_cast<int>(m_Strings.size());
      m_Strings.push_back(strings[i]);
      std::memcpy(target + 8 * i, &index, 4);
      std::memset(target + 8 * i + 4, 0, 4);
    }
  }
  int ExternalStringSize() const override { return 8; }

private:
  std::vector<cow_String> m_Strings;
};

}  // namespace

TEST(IOBufferTest, TypedArraysCrossBufferBoundariesInTheFileByteOrder) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("typed.zdb"));
  rfm_Space space = database.Space(-1);
  {
    rfm_IOBuffer buffer(space.Repr(), 20);
    buffer.Write("abc", 3);
    std::vector<int> ints(9);
    for (int i = 0; i < 9; ++i) ints[i] = i * 1000 - 3;
    buffer.WriteIntArray(ints.data(), 9);
    double const doubles[3] = {0.5, -1e300, 7.0};
    buffer.WriteDoubleArray(doubles, 3);
    buffer.WriteFloat(2.5f);
    EXPECT_EQ(3 + 36 + 24 + 4, buffer.Location());
    EXPECT_EQ(3 + 36 + 24 + 4, buffer.Length());
    EXPECT_LT(space.Length(), buffer.Length());

    buffer.Seek(3);
    std::vector<int> back(9);
    EXPECT_EQ(9, buffer.ReadIntArray(back.data(), 9));
    EXPECT_EQ(ints, back);
    double doublesBack[3];
    EXPECT_EQ(3, buffer.ReadDoubleArray(doublesBack, 3));
    EXPECT_EQ(-1e300, doublesBack[1]);
    EXPECT_EQ(2.5f, buffer.ReadFloat());
    float more;
    EXPECT_EQ(0, buffer.ReadFloatArray(&more, 1));
  }
  std::string bytes = SpaceBytes(space);
  ASSERT_EQ(67u, bytes.size());
  EXPECT_EQ("abc", bytes.substr(0, 3));
  EXPECT_EQ(-3, StoredInt(bytes, 3));
  EXPECT_EQ(7997, StoredInt(bytes, 3 + 32));
  EXPECT_EQ(0.5, StoredDouble(bytes, 39));
  EXPECT_EQ(7.0, StoredDouble(bytes, 55));
}

TEST(IOBufferTest, BytesMoveInAnyChunkSizeAroundOrThroughTheBuffer) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("bytes.zdb"));
  rfm_Space space = database.Space(-1);
  std::string content;
  for (int i = 0; i < 5000; ++i) content.push_back(static_cast<char>(i * 7 % 251));
  {
    rfm_IOBuffer buffer(space.Repr(), 64);
    std::size_t at = 0;
    for (int size : {1, 63, 64, 65, 3000, 7, 1800}) {
      buffer.Write(content.data() + at, size);
      at += static_cast<std::size_t>(size);
    }
    ASSERT_EQ(5000u, at);
    buffer.Seek(10);
    std::string back(4990, '\0');
    std::size_t got = 0;
    for (int size : {5, 200, 64, 1, 4000, 720}) {
      got += static_cast<std::size_t>(buffer.Read(back.data() + got, size));
    }
    EXPECT_EQ(4990u, got);
    EXPECT_EQ(content.substr(10), back);
    char extra;
    EXPECT_EQ(0, buffer.Read(&extra, 1));

    // Overwrite in the middle, then read across the change.
    buffer.Seek(100);
    buffer.Write("XYZ", 3);
    buffer.Seek(99);
    char around[5];
    EXPECT_EQ(5, buffer.Read(around, 5));
    EXPECT_EQ(std::string(1, content[99]) + "XYZ" + content[103], std::string(around, 5));
  }
  content.replace(100, 3, "XYZ");
  EXPECT_EQ(content, SpaceBytes(space));
}

TEST(IOBufferTest, PrepWriteChecksBeforeTouchingTheBuffer) {
  zqa_TestDir dir;
  cow_String name = dir.File("prep.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Space space = database.Space(-1);
    {
      rfm_IOBuffer buffer(space.Repr(), 16);
      buffer.Write("1234", 4);
      try {
        buffer.PrepWrite(17, 1);
        FAIL();
      } catch (rfm_TestMessage const& e) {
        EXPECT_STREQ("rfm_IOBuffer::PrepWrite: Quantum is too large for buffer.", e.what());
      }
      EXPECT_EQ(4, buffer.Location());
      buffer.Write("5678", 4);
    }
    EXPECT_EQ("12345678", SpaceBytes(space));
  }
  rfm_Database reader = rfm_Database::Open(rfm_File::Open(name, utl_FileAccessRead, false), "");
  rfm_Space pool = reader.Space(rfm_Handle(1), -1);
  rfm_IOBuffer buffer(pool.Repr(), 0);
  EXPECT_EQ(rfm_IOBuffer::kDefaultSize, buffer.Size());
  EXPECT_THROW(buffer.PrepWrite(4, 1), rfm_TestMessage);
  EXPECT_EQ(static_cast<int>(0xAAFFBBEE), buffer.ReadInt());
}

TEST(IOBufferTest, BufferedSpacesShareOneBufferAndAppendCopiesTheRest) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("append.zdb"));
  rfm_Space source = database.Space(-1);
  rfm_Space target = database.Space(-1);
  {
    rfm_BufferedSpace writer(source);
    rfm_BufferedSpace sharer = writer;
    for (int i = 0; i < 1000; ++i) sharer.WriteIntArray(&i, 1);
    EXPECT_EQ(4000, writer.Location());
    EXPECT_EQ(source.Handle(), writer.Handle());
    EXPECT_EQ(rfm_IOBuffer::kDefaultSize, writer.Buffer().Size());
    EXPECT_EQ(65536, rfm_BufferedSpace(target, 65536).Buffer().Size());
  }
  EXPECT_EQ(4000, source.Length());

  rfm_IOBuffer from(source.Repr(), 100);
  from.Seek(400);
  rfm_IOBuffer to(target.Repr(), 64);
  to.Write("head", 4);
  to.Append(from);
  to.Flush();
  EXPECT_EQ(3604, target.Length());
  std::string bytes = SpaceBytes(target);
  EXPECT_EQ("head", bytes.substr(0, 4));
  EXPECT_EQ(100, StoredInt(bytes, 4));
  EXPECT_EQ(999, StoredInt(bytes, 3600));
}

TEST(IOBufferTest, StringsTravelAsExternalStrings) {
  ListStringManager manager;
  rfm_MemoryIOS memory;
  memory.manager = &manager;
  cow_String const strings[3] = {"alpha", "", "gamma"};
  memory.WriteStringArray(strings, 3);
  memory.WriteString("delta");
  EXPECT_EQ(32u, memory.bytes.size());
  EXPECT_EQ(3, StoredInt(memory.bytes, 24));
  {
    rfm_IOBuffer buffer(&memory, 20);
    buffer.WriteStringArray(strings, 3);
  }
  EXPECT_EQ(56u, memory.bytes.size());

  memory.Seek(0);
  cow_String back[4];
  EXPECT_EQ(3, memory.ReadStringArray(back, 3));
  EXPECT_EQ(cow_String("gamma"), back[2]);
  EXPECT_EQ(cow_String("delta"), memory.ReadString());
  rfm_IOBuffer buffer(&memory, 20);
  EXPECT_EQ(3, buffer.ReadStringArray(back, 4));
  EXPECT_EQ(cow_String("alpha"), back[0]);
  EXPECT_THROW(buffer.ReadString(), rfm_TestMessage);

  rfm_MemoryIOS withoutManager;
  try {
    withoutManager.WriteString("x");
    FAIL();
  } catch (nex_PrimException<cow_String, 3> const& e) {
    EXPECT_STREQ("manager != nullptr", e.what());
  }
}

namespace {

// Counts the transfers that reach the object under a buffer.
class CountingIOS : public rfm_MemoryIOS {
public:
  int Read(char* buffer, int count) override {
    ++reads;
    largestRead = std::max(largestRead, count);
    return rfm_MemoryIOS::Read(buffer, count);
  }
  int Write(char const* buffer, int count) override {
    ++writes;
    return rfm_MemoryIOS::Write(buffer, count);
  }
  int reads = 0;
  int writes = 0;
  int largestRead = 0;
};

}  // namespace

TEST(IOBufferTest, LargeTypedArraysGoAroundTheBufferInWholeElements) {
  CountingIOS memory;
  std::vector<int> ints(103);
  for (int i = 0; i < 103; ++i) ints[i] = i * 7 - 50;
  {
    rfm_IOBuffer buffer(&memory, 64);
    buffer.WriteIntArray(ints.data(), 3);
    buffer.WriteIntArray(ints.data() + 3, 100);
    // What waited, then the large array in one transfer.
    EXPECT_EQ(2, memory.writes);
    EXPECT_EQ(412, buffer.Location());
  }
  ASSERT_EQ(412u, memory.bytes.size());
  EXPECT_EQ(ints[50], StoredInt(memory.bytes, 200));

  memory.bytes.append("\x01\x02", 2);  // a torn last element
  memory.Seek(0);
  rfm_IOBuffer buffer(&memory, 64);
  int first = 0;
  EXPECT_EQ(1, buffer.ReadIntArray(&first, 1));
  std::vector<int> back(200);
  memory.reads = 0;
  EXPECT_EQ(102, buffer.ReadIntArray(back.data(), 200));
  EXPECT_EQ(1, memory.reads);
  EXPECT_EQ(std::vector<int>(ints.begin() + 1, ints.end()), std::vector<int>(back.begin(), back.begin() + 102));
  EXPECT_EQ(412, buffer.Location());
  EXPECT_EQ(0, buffer.ReadIntArray(back.data(), 1));
}

// Small transfers in order move in transfers that double up to the
// largest; one elsewhere starts again at the size asked for. The bytes are
// the same whatever the size.
TEST(IOBufferTest, TransfersGrowWhileTheyRunOnAndStartSmallElsewhere) {
  constexpr int kBytes = 4 << 20;
  constexpr int kPiece = 8;
  CountingIOS memory;
  std::string expected;
  {
    rfm_IOBuffer buffer(&memory, 1024);
    for (int i = 0; i < kBytes / kPiece; ++i) {
      char piece[kPiece];
      for (int k = 0; k < kPiece; ++k) piece[k] = static_cast<char>(i * 7 + k);
      expected.append(piece, kPiece);
      ASSERT_EQ(kPiece, buffer.Write(piece, kPiece));
    }
    buffer.Flush();
    EXPECT_EQ(rfm_IOBuffer::kLargestTransfer, buffer.TransferSize());
  }
  ASSERT_EQ(expected.size(), memory.bytes.size());
  EXPECT_TRUE(expected == memory.bytes);
  // 1 KiB doubling to 128 KiB takes 8 transfers; then 128 KiB each.
  EXPECT_GE(8 + kBytes / rfm_IOBuffer::kLargestTransfer, memory.writes);

  memory.Seek(0);
  rfm_IOBuffer buffer(&memory, 1024);
  std::string back;
  char piece[kPiece];
  for (int got; (got = buffer.Read(piece, kPiece)) > 0;) back.append(piece, static_cast<std::size_t>(got));
  EXPECT_TRUE(expected == back);
  EXPECT_GE(9 + kBytes / rfm_IOBuffer::kLargestTransfer, memory.reads);

  memory.largestRead = 0;
  for (int i = 0; i < 100; ++i) {
    utl_FileOffset at = (i * 7919LL * 4099) % (kBytes - kPiece);
    buffer.Seek(at);
    ASSERT_EQ(kPiece, buffer.Read(piece, kPiece));
    EXPECT_EQ(expected.substr(static_cast<std::size_t>(at), kPiece), std::string(piece, kPiece));
  }
  EXPECT_EQ(1024, memory.largestRead);
}
