// Damaged files: valid sample databases, plain and compressed, are damaged
// field by field and cut short at many lengths, and each damaged file is
// opened and read whole (rfm_DatabaseWalk) in a child process under a time
// and an allocation limit (rfm_TestDamageRun).
//
// What a case may end in:
// - correct: the walk reads exactly what the undamaged file gives;
// - a library error: one of the library's exceptions, with its message;
// - different data, where every damaged byte holds user data: the bytes of
//   a table's rows (presence bits, handles and string references
//   included), an array's elements, a tagged stream item's id and value, a
//   string's characters, a plain space's bytes, block 0's description and
//   creation time. The library stores these as given and cannot know them
//   wrong.
// - different data, where a structural field took another value that
//   leaves the file well formed, so that no reader could tell it from a
//   file written that way: a string reference naming another string's
//   record, a table naming another catalogue record, a field type, an
//   array's element type or width, or an item's tag changed to another
//   valid one; the last extent of a chain made shorter or longer within
//   its allocation, an extent moved into bytes that belong to nothing, or
//   a chain cut by a null next; a string's length changed within its
//   padding. Each case is classed by the value it writes, from the
//   undamaged file's layout read here.
// Anything else fails the case: different data after any other damage to
// structure, any other exception, a crash or sanitizer report, a walk that
// outlives its time, an allocation above the limit, or a thread left
// running.

#include "rfm_CodecZip.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_File.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_SampleDatabase.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDamage.h"
#include "rfm_TestDamageRun.h"
#include "rfm_TestDatabaseDamage.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kSector = 4096;
constexpr std::size_t kStreamCount = 16;
constexpr std::size_t kSegmentCount = 32;
constexpr std::size_t kStreamTable = 40;
constexpr int kSegment = 4096;

// Damage to the compressed container: sector 0's header and the segment
// table's words, the stream table, each stream's stored length, its
// compressed bytes, and the link word of every sector in its chain.
std::vector<DamageCase> ContainerDamage(std::string const& bytes) {
  DamageCases cases(bytes);
  cases.Text("container magic", At(0), 8);
  cases.Int("container version", At(8));
  cases.Int("metadata size", At(12));
  cases.Int("stream count", At(16));
  char const* const segmentWords[] = {"segment magic", "segment version", "segment size", "segment count",
                                      "last segment's length"};
  for (std::size_t word = 0; word < 5; ++word) cases.Int(segmentWords[word], At(20 + 4 * word));
  cases.Int("sector 0 link", At(kSector - 4));

  // Counts and sizes that claim far more than the file holds: a count
  // trusted for memory or work costs gigabytes or minutes.
  int const streams = StoredInt(bytes, kStreamCount);
  int const segments = StoredInt(bytes, kSegmentCount);
  int const sectors = static_cast<int>(bytes.size() / kSector);
  cases.Values("segment count", At(kSegmentCount),
               {segments + 1, 1001, segments | 1 << 22, 1 << 24, 1 << 30, kLargestInt});
  cases.Values("stream count", At(kStreamCount), {streams + 1, 1013, 1014, 1 << 22, kLargestInt});
  cases.Values("last segment's length", At(kSegmentCount + 4), {kSegment - 1, kSegment + 1, 1 << 30});
  cases.Values("sector 0 link", At(kSector - 4), {sectors - 1, sectors, 1 << 22, kLargestInt});

  for (int stream = 0; stream < streams; ++stream) {
    std::string const name = "stream " + std::to_string(stream);
    std::size_t const cell = kStreamTable + 4 * static_cast<std::size_t>(stream);
    cases.Int(name + " first sector", At(cell));
    std::size_t const first = static_cast<std::size_t>(StoredInt(bytes, cell));
    if (first == 0) continue;
    std::size_t const stored = static_cast<std::size_t>(StoredInt(bytes, first * kSector));
    cases.Int(name + " stored length", At(first * kSector));
    cases.Values(name + " stored length", At(first * kSector),
                 {static_cast<std::int32_t>(stored) + 4096, 1 << 20, 1 << 26, kLargestInt - 3});
    // The zlib header, bytes along the data, and its checksum at the end.
    std::size_t const data = stored - 4;
    auto const dataByte = [&bytes, first](std::size_t i) {
      std::size_t sector = first;
      std::size_t at = i + 4;
      while (at >= kSector - 4) {
        sector = static_cast<std::size_t>(StoredInt(bytes, sector * kSector + kSector - 4));
        at -= kSector - 4;
      }
      return sector * kSector + at;
    };
    for (std::size_t i : {std::size_t(0), std::size_t(1), std::size_t(2), data / 3, data / 2, data - 5, data - 1}) {
      cases.Text(name + " data at " + std::to_string(i), [&dataByte, i](std::size_t) { return dataByte(i); }, 1);
    }
    int sector = static_cast<int>(first);
    for (int step = 0; sector != -1 && step < 64; ++step) {
      std::size_t const link = static_cast<std::size_t>(sector) * kSector + kSector - 4;
      cases.Int(name + " sector " + std::to_string(sector) + " link", At(link));
      // A link back along the chain makes it a loop; one to the last sector joins another chain.
      cases.Values(name + " sector " + std::to_string(sector) + " link", At(link),
                   {static_cast<std::int32_t>(first), sector, sectors - 1});
      sector = StoredInt(bytes, link);
    }
  }
  for (std::size_t length : {0, 6, 8, 20, 40, 100, 4095}) cases.Truncate(length);
  for (std::size_t length = kSector; length < bytes.size(); length += kSector) {
    cases.Truncate(length);
    cases.Truncate(length + 700);
  }

  // An input the compressed fuzz target found when segments of up to 1 GiB
  // were taken, reduced: a segment size of 256 MiB and more, segment 0
  // without a stream, the file cut after sector 0. Opening filled a buffer
  // of the segment's size.
  cases.Add({"fuzzed: segment size's high byte, no stream 0, cut after sector 0",
             {{31, '\x10'}, {40, 0}, {41, 0}, {42, 0}, {43, 0}},
             kSector + 7});
  return cases.Cases();
}

// A new compressed file of small segments, so that the sample spans many
// segments, streams and sectors, and reading it crosses segments and
// decodes ahead.
rfm_File CreateCompressed(cow_String const& name) {
  return rfm_File(new rfm_FileReprEncoded(name, new rfm_CodecZip(rfm_CodecZip::kDefaultLevel), kSegment));
}

// Writes bytes as the logical content of a new compressed file.
void WriteCompressed(cow_String const& name, std::string const& bytes) {
  std::remove(name.CStr());
  rfm_File file = CreateCompressed(name);
  if (!bytes.empty()) file->Write(bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

TEST(DamagedFileTest, PlainDatabaseEndsCorrectOrWithTheLibrarysError) {
  zqa_TestDir dir;
  cow_String const sample = dir.File("sample.zdb");
  auto const objects = rfm_SampleDatabase::Write(rfm_File::Open(sample, utl_FileAccessCreate, false));
  std::string const expected = rfm_DatabaseWalk::Walk(sample);
  std::string const good = zqa_ReadFileBytes(sample);
  ASSERT_GE(DatabaseLayout(good).Groups().size(), 2u);

  cow_String const name = dir.File("damaged.zdb");
  auto const cases = DatabaseDamage(good, objects);
  auto const write = [&](DamageCase const& damage) { zqa_WriteFileBytes(name, damage.Apply(good)); };
  DamageTally tally(cases, RunDamageCases(cases, write, name, expected), name);
  tally.Print("plain database");
  EXPECT_GT(tally.Cases(), 1000);
  tally.ExpectNoFailures();
}

TEST(DamagedFileTest, CompressedDatabaseEndsCorrectOrWithTheLibrarysError) {
  zqa_TestDir dir;
  cow_String const sample = dir.File("sample.zdb");
  auto const objects = rfm_SampleDatabase::Write(CreateCompressed(sample));
  std::string const expected = rfm_DatabaseWalk::Walk(sample);
  std::string const logical = LogicalFileBytes(sample);
  std::string const container = zqa_ReadFileBytes(sample);
  ASSERT_GT(StoredInt(container, kStreamCount), 8);

  cow_String const name = dir.File("damaged.zdb");
  // The database's own damage, already run in full on a plain file, again
  // in a compressed one: every cut, and one in four of the rest, which
  // keeps the time of this test near the plain one's.
  std::vector<DamageCase> databaseCases;
  int counted = 0;
  for (DamageCase const& damage : DatabaseDamage(logical, objects)) {
    if (damage.m_Length != std::string::npos || ++counted % 4 == 0) databaseCases.push_back(damage);
  }
  auto const repack = [&](DamageCase const& damage) { WriteCompressed(name, damage.Apply(logical)); };
  DamageTally database(databaseCases, RunDamageCases(databaseCases, repack, name, expected), name);
  database.Print("database in a compressed file");
  database.ExpectNoFailures();

  auto const containerCases = ContainerDamage(container);
  auto const write = [&](DamageCase const& damage) { zqa_WriteFileBytes(name, damage.Apply(container)); };
  DamageTally tally(containerCases, RunDamageCases(containerCases, write, name, expected), name, false);
  tally.Print("compressed container");
  EXPECT_GT(database.Cases() + tally.Cases(), 1000);
  tally.ExpectNoFailures();
}
