#include "rfm_CodecZip.h"
#include "rfm_File.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_SectorArray.h"
#include "rfm_SegmentBufferCache.h"
#include "rfm_TestAssertion.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <csignal>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/resource.h>

namespace {

constexpr int kSector = 4096;
constexpr int kLink = 4092;
// Sector 0: magic, three words, then the segment table's five words, then
// the stream table.
constexpr int kMetadata = 20;
constexpr int kStreamTable = 40;

std::string Pattern(int length, int seed) {
  std::string bytes;
  for (int i = 0; i < length; ++i) bytes.push_back(static_cast<char>((i * 7 + seed * 13 + i / 97) % 251));
  return bytes;
}

// Writes bytes as stream index and stores its length.
void WriteStream(rfm_SectorArray& sectors, int index, std::string const& bytes) {
  rfm_SectorWrite writer = sectors.GetStreamWrite(index);
  writer.Write(bytes.data(), static_cast<int>(bytes.size()));
  writer.Commit();
}

// The compressed file's corruption message for the file at name.
std::string Corrupt(cow_String const& name) {
  return std::string("***ERROR: ZAE database is corrupt.\n  ") + name.CStr();
}

std::unique_ptr<rfm_FileReprEncoded> CreateWithSegments(cow_String const& name, int segmentSize) {
  return std::make_unique<rfm_FileReprEncoded>(name, new rfm_CodecZip(6), segmentSize);
}

// Writes length bytes of a pattern into a new file of segmentSize segments
// and closes it; returns the bytes.
std::string WriteEncoded(cow_String const& name, int segmentSize, int length, int seed) {
  std::string const content = Pattern(length, seed);
  CreateWithSegments(name, segmentSize)->Write(content.data(), length);
  return content;
}

std::unique_ptr<rfm_FileReprEncoded> OpenEncoded(cow_String const& name, utl_FileAccess access) {
  return std::make_unique<rfm_FileReprEncoded>(name, access, new rfm_CodecZip(6));
}

std::string ReadAll(rfm_FileRepr& file) {
  std::string bytes(static_cast<std::size_t>(file.Length()), '\0');
  file.Seek(0);
  if (!bytes.empty()) {
    EXPECT_EQ(static_cast<int>(bytes.size()), file.Read(bytes.data(), static_cast<int>(bytes.size())));
  }
  return bytes;
}

// zlib's own reading of a stream that should decode to at most room bytes;
// "error" when it does not decode.
std::string Inflate(std::string const& stream, uLongf room) {
  std::string out(room, '\0');
  if (uncompress(reinterpret_cast<Bytef*>(out.data()), &room, reinterpret_cast<Bytef const*>(stream.data()),
                 stream.size()) != Z_OK) {
    return "error";
  }
  return out.substr(0, room);
}

}  // namespace

TEST(CompressedFileTest, HeaderSectorAndSegmentStreamsOnDisk) {
  zqa_TestDir dir;
  cow_String empty = dir.File("empty.mdb");
  rfm_File::CreateCompressed(empty);
  std::string bytes = zqa_ReadFileBytes(empty);
  ASSERT_EQ(std::size_t(kSector), bytes.size());
  EXPECT_EQ("ZBXTSA00", bytes.substr(0, 8));
  EXPECT_EQ(1, StoredInt(bytes, 8));
  EXPECT_EQ(kMetadata, StoredInt(bytes, 12));
  EXPECT_EQ(0, StoredInt(bytes, 16));
  // Opening made segment 0, so the table has one empty segment.
  EXPECT_EQ(0x6141C1A5, StoredInt(bytes, 20));
  EXPECT_EQ(1, StoredInt(bytes, 24));
  EXPECT_EQ(65536, StoredInt(bytes, 28));
  EXPECT_EQ(1, StoredInt(bytes, 32));
  EXPECT_EQ(0, StoredInt(bytes, 36));
  EXPECT_EQ(-1, StoredInt(bytes, kLink));
  EXPECT_EQ(0, rfm_File::Open(empty, utl_FileAccessRead, false)->Length());

  cow_String ten = dir.File("ten.mdb");
  rfm_File::CreateCompressed(ten)->Write("0123456789", 10);
  bytes = zqa_ReadFileBytes(ten);
  ASSERT_EQ(std::size_t(2 * kSector), bytes.size());
  EXPECT_EQ(1, StoredInt(bytes, 16));
  EXPECT_EQ(10, StoredInt(bytes, 36));
  ASSERT_EQ(1, StoredInt(bytes, kStreamTable));
  // The stream is zlib's format, whichever library wrote it.
  int const streamLength = StoredInt(bytes, kSector) - 4;
  ASSERT_GT(streamLength, 0);
  ASSERT_LT(streamLength, kLink - 4);
  EXPECT_EQ("0123456789", Inflate(bytes.substr(kSector + 4, static_cast<std::size_t>(streamLength)), 64));
  EXPECT_EQ(-1, StoredInt(bytes, kSector + kLink));
}

TEST(CompressedFileTest, StreamsFillSectorsAndKeepTheirChainWhenRewrittenShorter) {
  zqa_TestDir dir;
  cow_String name = dir.File("streams.bin");
  std::string const fits = Pattern(4088, 1);
  std::string const spills = Pattern(4089, 2);
  {
    rfm_SectorArray sectors(name, kMetadata);
    WriteStream(sectors, 0, fits);
    EXPECT_EQ(2, sectors.File().UsedSectors());
    WriteStream(sectors, 1, spills);
    EXPECT_EQ(4, sectors.File().UsedSectors());

    rfm_SectorRead reader = sectors.GetStreamRead(1);
    EXPECT_EQ(4093, reader.Length());
    std::string back(4089, '\0');
    EXPECT_EQ(4089, reader.Read(back.data(), 4089));
    EXPECT_EQ(spills, back);

    WriteStream(sectors, 1, "short");
    EXPECT_EQ(4, sectors.File().UsedSectors());
    // The sectors the reader fetched ahead show the rewrite.
    rfm_SectorRead again = sectors.GetStreamRead(1);
    EXPECT_EQ(9, again.Length());
    EXPECT_EQ(5, again.Read(back.data(), 5));
    EXPECT_EQ("short", back.substr(0, 5));
    // A writer that does not finish (a full disk) stores no length: the
    // stream keeps the one it had.
    sectors.GetStreamWrite(1).Write(spills.data(), 4089);
    EXPECT_EQ(9, sectors.GetStreamRead(1).Length());
    WriteStream(sectors, 1, "short");
    sectors.Flush();
  }
  std::string bytes = zqa_ReadFileBytes(name);
  EXPECT_EQ(2, StoredInt(bytes, kStreamTable + 4));
  EXPECT_EQ(9, StoredInt(bytes, 2 * kSector));
  EXPECT_EQ(3, StoredInt(bytes, 2 * kSector + kLink));

  rfm_SectorArray reopened(name, utl_FileAccessRead);
  EXPECT_TRUE(reopened.HasStream(0));
  EXPECT_FALSE(reopened.HasStream(2));
  EXPECT_EQ("cell && *cell", AssertionOf([&] { reopened.GetStreamRead(2); }));
  std::string back(4088, '\0');
  EXPECT_EQ(4088, reopened.GetStreamRead(0).Read(back.data(), 4088));
  EXPECT_EQ(fits, back);

  // A link to no sector is damage, found when the chain is followed.
  PutStoredInt(bytes, 2 * kSector + kLink, 99999);
  zqa_WriteFileBytes(name, bytes);
  rfm_SectorArray damaged(name, utl_FileAccessRead);
  EXPECT_EQ(Corrupt(name),
            MessageOf([&] {
              std::string chain(5000, '\0');
              damaged.GetStreamRead(1).Read(chain.data(), 5000);
            }));
}

TEST(CompressedFileTest, TheStreamTableContinuesInASectorLinkedFromSectorZero) {
  zqa_TestDir dir;
  cow_String name = dir.File("many.mdb");
  std::string const content = WriteEncoded(name, 16, 1014 * 16, 3);
  std::string bytes = zqa_ReadFileBytes(name);
  EXPECT_EQ(1014, StoredInt(bytes, 16));
  int const next = StoredInt(bytes, kLink);
  ASSERT_GT(next, 0);
  // Entry 1013, the first that does not fit, opens the linked sector.
  EXPECT_NE(0, StoredInt(bytes, std::size_t(next) * kSector));
  EXPECT_EQ(content, ReadAll(*OpenEncoded(name, utl_FileAccessRead)));
}

TEST(CompressedFileTest, SegmentsEvictedFromTheCacheAreSavedAndReloaded) {
  zqa_TestDir dir;
  cow_String name = dir.File("evict.mdb");
  constexpr int kSegment = 1 << 17;
  std::string content = Pattern(20 * kSegment + 100, 4);
  {
    auto file = CreateWithSegments(name, kSegment);
    file->Write(content.data(), static_cast<int>(content.size()));
    // Eight buffers of 128 KiB fit the budget.
    EXPECT_LE(file->Table().Cache().BuffersHeld(), 8);
    file->Seek(3 * kSegment + 5);
    file->Write("changed", 7);
    content.replace(3 * kSegment + 5, 7, "changed");
    EXPECT_EQ(content, ReadAll(*file));
  }
  auto reopened = OpenEncoded(name, utl_FileAccessUpdate);
  EXPECT_EQ(content, ReadAll(*reopened));
}

TEST(CompressedFileTest, ShrinkingDropsWholeSegmentsAndTheirStreamsComeBack) {
  zqa_TestDir dir;
  cow_String name = dir.File("shrink.mdb");
  auto file = CreateWithSegments(name, 16);
  std::string content = Pattern(40, 5);
  file->Write(content.data(), 40);
  file->Flush();
  file->FileExtend(-20);
  EXPECT_EQ(20, file->Length());
  EXPECT_EQ(20, file->Location());

  // Inside the last segment there is no whole segment to drop; the
  // location has moved all the same.
  EXPECT_EQ("index < m_NumSegments", AssertionOf([&] { file->FileExtend(-2); }));
  EXPECT_EQ(18, file->Location());

  // Segment 2 comes back on its old stream.
  file->Seek(20);
  file->Write("tail of more than one segment", 29);
  content = content.substr(0, 20) + "tail of more than one segment";
  EXPECT_EQ(content, ReadAll(*file));
  file.reset();
  EXPECT_EQ(content, ReadAll(*OpenEncoded(name, utl_FileAccessRead)));
}

TEST(CompressedFileTest, DamageIsReportedWhenTheDamagedPartIsRead) {
  zqa_TestDir dir;
  cow_String name = dir.File("damaged.mdb");
  std::string const content = WriteEncoded(name, 1024, 3 * 1024, 6);
  std::string const good = zqa_ReadFileBytes(name);
  std::size_t const stream1 = std::size_t(StoredInt(good, kStreamTable + 4)) * kSector;
  std::string const corrupt = Corrupt(name);

  auto expectSegment1Fails = [&](std::string const& bytes, std::string const& message) {
    zqa_WriteFileBytes(name, bytes);
    auto file = OpenEncoded(name, utl_FileAccessRead);
    char block[1024];
    EXPECT_EQ(1024, file->Read(block, 1024));
    EXPECT_EQ(content.substr(0, 1024), std::string(block, 1024));
    // A second attempt fails the same way instead of reading stale bytes.
    EXPECT_EQ(message, MessageOf([&] { file->Read(block, 1024); }));
    EXPECT_EQ(message, MessageOf([&] { file->Read(block, 1024); }));
    file->Seek(2048);
    EXPECT_EQ(1024, file->Read(block, 1024));
    EXPECT_EQ(content.substr(2048), std::string(block, 1024));
  };

  std::string bytes = good;
  for (int i = 8; i < 40; ++i) bytes[stream1 + i] = static_cast<char>(~bytes[stream1 + i]);
  expectSegment1Fails(bytes, corrupt);

  // Segment 2 is decoded ahead while segment 1 is read: its damage is still
  // reported by the read that reaches it.
  std::size_t const stream2 = std::size_t(StoredInt(good, kStreamTable + 8)) * kSector;
  bytes = good;
  for (int i = 8; i < 40; ++i) bytes[stream2 + i] = static_cast<char>(~bytes[stream2 + i]);
  zqa_WriteFileBytes(name, bytes);
  {
    auto file = OpenEncoded(name, utl_FileAccessRead);
    std::string twoSegments(2048, '\0');
    EXPECT_EQ(2048, file->Read(twoSegments.data(), 2048));
    EXPECT_EQ(content.substr(0, 2048), twoSegments);
    EXPECT_EQ(corrupt, MessageOf([&] { file->Read(twoSegments.data(), 1); }));
  }
  for (int length : {2 * kSector, -1, 3, std::numeric_limits<int>::min()}) {
    bytes = good;
    PutStoredInt(bytes, stream1, length);
    expectSegment1Fails(bytes, corrupt);
  }
  // Damage to the header is found at open: among it a segment size far
  // beyond any written, which would cost that much memory per buffer, and
  // two streams that begin at one sector.
  int const stream0 = StoredInt(good, kStreamTable);
  for (auto [offset, value] : {std::pair{16, 0x7fffffff}, {kStreamTable + 8, 77}, {28, 0}, {32, -1}, {28, 1 << 25},
                               {kStreamTable + 4, stream0}}) {
    bytes = good;
    PutStoredInt(bytes, offset, value);
    zqa_WriteFileBytes(name, bytes);
    EXPECT_EQ(corrupt, MessageOf([&] { OpenEncoded(name, utl_FileAccessRead); })) << offset;
  }
}

// A segment that the stream table says was never written reads as zeros;
// a database whose objects have bytes there is damaged, and opening says so.
TEST(CompressedFileTest, ADatabaseWithBytesInASegmentNeverWrittenIsRefused) {
  zqa_TestDir dir;
  cow_String name = dir.File("holes.mdb");
  std::string const text = Pattern(12000, 7);
  {
    rfm_Database database = rfm_Database::Create(rfm_File(CreateWithSegments(name, 4096).release()), "APP", "", 0);
    database.Space(-1).Write(text.data(), static_cast<int>(text.size()));
  }
  std::string bytes = zqa_ReadFileBytes(name);
  ASSERT_GT(StoredInt(bytes, 16), 6);
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ(text, SpaceBytes(database, 4));
  database = rfm_Database();

  PutStoredInt(bytes, kStreamTable + 4 * 5, 0);
  zqa_WriteFileBytes(name, bytes);
  EXPECT_EQ(std::string("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  ") + name.CStr(),
            MessageOf([&] { OpenTestDatabase(name, utl_FileAccessRead); }));
}

// A full disk under a compressed file: the write that moves on to a new
// segment must first save an old one to free its buffer, and the save
// fails. Every later use must fail the same way, never use a segment left
// without its buffer; once there is room again, a flush writes it all.
TEST(CompressedFileTest, ASaveThatFailsLeavesEverySegmentAsItWas) {
  zqa_TestDir dir;
  cow_String name = dir.File("full.mdb");
  int const status = zqa_RunInChild([&] {
    auto require = [](bool condition, std::string const& what) {
      if (!condition) throw std::runtime_error(what);
    };
    // Incompressible bytes, three times the cache's 1 MiB: the saves that
    // come with the segments beyond it fill the file's first 1 MiB.
    std::string content(static_cast<std::size_t>(3 * rfm_SegmentBufferCache::kBudget), '\0');
    std::uint64_t seed = 88172645463325252ull;
    for (char& byte : content) {
      seed ^= seed << 13;
      seed ^= seed >> 7;
      seed ^= seed << 17;
      byte = static_cast<char>(seed);
    }
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    require(::getrlimit(RLIMIT_FSIZE, &limit) == 0, "getrlimit");
    rlimit const unlimited = limit;
    limit.rlim_cur = rfm_SectorFile::kGrowthSectors * 4096;
    require(::setrlimit(RLIMIT_FSIZE, &limit) == 0, "setrlimit");

    std::string const full = std::string(name.CStr()) + ": " + std::strerror(EFBIG);
    auto file = CreateWithSegments(name, 4096);
    int written = 0;
    std::string message = MessageOf([&] {
      for (; written < static_cast<int>(content.size()); written += 4096) file->Write(content.data() + written, 4096);
    });
    require(message == full, "the first failure says " + message);
    for (int again = 0; again < 3; ++again) {
      message = MessageOf([&] { file->Write(content.data() + written, 4096); });
      require(message == full, "a later write says " + message);
    }
    require(file->Length() == written, "the length counts " + std::to_string(file->Length()) + " bytes");

    require(::setrlimit(RLIMIT_FSIZE, &unlimited) == 0, "setrlimit");
    file->Write(content.data() + written, static_cast<int>(content.size()) - written);
    file->Flush();
    file.reset();
    require(ReadAll(*OpenEncoded(name, utl_FileAccessRead)) == content, "the file holds other bytes");
  });
  EXPECT_EQ(0, status);
}
