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

constexpr std::size_t kBlock0 = 1024;
constexpr std::size_t kLinkage = 28;
constexpr std::size_t kGroup = 512 * kLinkage;
constexpr std::size_t kSector = 4096;
constexpr std::size_t kStreamCount = 16;
constexpr std::size_t kSegmentCount = 32;
constexpr std::size_t kStreamTable = 40;
constexpr int kSegment = 4096;

// ---------------------------------------------------------------------------
// The layout of a database's bytes, read straight from them: block 0, then
// linkage groups of 512 linkages (allocation, length, location as doubles,
// next handle), slot 0 of each leading to the next group.

std::size_t StoredOffset(std::string const& bytes, std::size_t at) {
  return static_cast<std::size_t>(StoredDouble(bytes, at) + 0.5);
}

class DatabaseLayout {
public:
  explicit DatabaseLayout(std::string const& bytes) : m_Bytes(bytes) {
    for (std::size_t group = kBlock0; group != 0; group = StoredOffset(bytes, group + 16)) m_Groups.push_back(group);
  }

  std::vector<std::size_t> const& Groups() const { return m_Groups; }
  std::size_t Slot(int handle) const {
    return m_Groups.at(static_cast<std::size_t>(handle) >> 9) + static_cast<std::size_t>(handle & 511) * kLinkage;
  }
  // Slots in use in a group: up to the first free one after slot 0.
  int Used(std::size_t group) const {
    int slot = 1;
    while (slot < 512 && StoredOffset(m_Bytes, m_Groups[group] + slot * kLinkage + 16) != 0) ++slot;
    return slot;
  }
  // Where byte `at` of the object at handle lies in the file.
  std::size_t Locate(int handle, std::size_t at) const {
    for (int link = handle; link != 0; link = StoredInt(m_Bytes, Slot(link) + 24)) {
      std::size_t length = StoredOffset(m_Bytes, Slot(link) + 8);
      if (at < length) return StoredOffset(m_Bytes, Slot(link) + 16) + at;
      at -= length;
    }
    throw std::out_of_range("beyond the object");
  }
  std::size_t Length(int handle) const {
    std::size_t length = 0;
    for (int link = handle; link != 0; link = StoredInt(m_Bytes, Slot(link) + 24)) {
      length += StoredOffset(m_Bytes, Slot(link) + 8);
    }
    return length;
  }
  Locator In(int handle, std::size_t at) const {
    return [this, handle, at](std::size_t i) { return Locate(handle, at + i); };
  }
  std::int32_t Int(int handle, std::size_t at) const {
    std::string word;
    for (std::size_t i = 0; i < 4; ++i) word += m_Bytes.at(Locate(handle, at + i));
    return StoredInt(word, 0);
  }
  // Whether size bytes from start are free: in the file, and in no extent,
  // group or block 0, the one extent at the linkage at `except` aside.
  bool Free(long long start, long long size, std::size_t except) const {
    if (start < static_cast<long long>(kBlock0) || start + size > static_cast<long long>(m_Bytes.size())) return false;
    for (std::size_t group = 0; group < m_Groups.size(); ++group) {
      auto taken = [&](long long from, long long bytes) { return from < start + size && start < from + bytes; };
      if (taken(static_cast<long long>(m_Groups[group]), kGroup)) return false;
      for (int slot = 1; slot < Used(group); ++slot) {
        std::size_t const at = m_Groups[group] + static_cast<std::size_t>(slot) * kLinkage;
        long long const allocation = static_cast<long long>(StoredOffset(m_Bytes, at));
        long long const location = static_cast<long long>(StoredOffset(m_Bytes, at + 16));
        if (at != except && allocation > 0 && taken(location, allocation)) return false;
      }
    }
    return true;
  }

private:
  std::string const& m_Bytes;
  std::vector<std::size_t> m_Groups;
};

// Whether the items of a tagged stream's bytes read exactly to its end:
// each a known tag, an id and a value of the tag's size, a string naming a
// record of the pool.
bool ItemsFill(std::string const& stream, std::function<bool(long long)> const& aString) {
  std::size_t at = 8;
  while (at + 8 <= stream.size()) {
    int tag = StoredInt(stream, at);
    std::size_t size = tag == 1 || tag == 3 ? 4 : tag == 2 || tag == 4 || tag == 6 ? 8 : 0;
    if (size == 0 || at + 8 + size > stream.size()) return false;
    if (tag == 6 && !aString(OffsetValue(StoredDouble(stream, at + 8)))) return false;
    at += 8 + size;
  }
  return at == stream.size();
}

// Damage to a database's own bytes, whichever kind of file holds them.
std::vector<DamageCase> DatabaseDamage(std::string const& bytes,
                                       std::vector<rfm_SampleDatabase::Object> const& objects) {
  DamageCases cases(bytes);
  DatabaseLayout layout(bytes);
  IntValues const anyCount = [](std::int32_t value) { return value >= 1; };

  cases.Text("magic", At(0), 8);
  cases.Int("version", At(8));
  cases.Text("description", At(12), 4, kUserData);
  cases.Text("description's end", At(40), 4, kUserData);
  cases.Int("closing word", At(496));
  cases.Text("transfer record's marker", At(500), 4);
  cases.Double("transfer record's length", At(504));
  cases.Int("flush count", At(512));
  cases.Int("creation time", At(516), kUserData);
  cases.Text("reserved", At(520), 4);

  for (std::size_t group = 0; group < layout.Groups().size(); ++group) {
    int used = layout.Used(group);
    // The first slots of each group, its last slot in use and its first free one.
    std::vector<int> slots;
    for (int slot = 0; slot < std::min(used, group == 0 ? 16 : 6); ++slot) slots.push_back(slot);
    slots.push_back(used - 1);
    if (used < 512) slots.push_back(used);
    for (int slot : slots) {
      std::string const name = "linkage " + std::to_string(group) + ":" + std::to_string(slot);
      std::size_t const at = layout.Groups()[group] + static_cast<std::size_t>(slot) * kLinkage;
      bool const last = slot > 0 && slot < used && StoredInt(bytes, at + 24) == 0;
      long long const allocation = OffsetValue(StoredDouble(bytes, at));
      cases.Double(name + " allocation", At(at));
      // A chain's last extent may hold any length within its allocation.
      cases.Double(name + " length", At(at + 8),
                   [last, allocation](long long length) { return last && length >= 0 && length <= allocation; });
      // Moved whole into bytes that belong to nothing, an extent reads them.
      cases.Double(name + " location", At(at + 16), [&layout, at, allocation, slot, used](long long location) {
        return slot > 0 && slot < used && layout.Free(location, allocation, at);
      });
      // A null next ends the chain early: a shorter object.
      cases.Int(name + " next", At(at + 24), kStructure, [slot](std::int32_t next) { return slot > 0 && next == 0; });
    }
  }

  // The string pool: its magic, then records of a length word, the
  // characters and padding to a multiple of 4.
  cases.Int("pool magic", layout.In(1, 0));
  std::size_t const poolLength = layout.Length(1);
  std::vector<std::int32_t> strings;
  for (std::size_t at = 4; at + 4 <= poolLength;) {
    int length = layout.Int(1, at);
    strings.push_back(static_cast<std::int32_t>(at));
    auto padded = [](long long size) { return (size + 3) & ~3LL; };
    if (strings.size() <= 24) {
      std::string const name = "pool record " + std::to_string(strings.size());
      cases.Int(name + " length", layout.In(1, at), kStructure,
                [length, padded](std::int32_t other) { return other >= 0 && padded(other) == padded(length); });
      if (length > 0) cases.Text(name + " characters", layout.In(1, at + 4), 1, kUserData);
    }
    at += 4 + static_cast<std::size_t>(padded(length));
  }
  OffsetValues const aString = [strings](long long offset) {
    return std::find(strings.begin(), strings.end(), offset) != strings.end();
  };

  // The catalogue: its magic, then per table a record length, the name, and
  // per field a type and a name.
  cases.Int("catalogue magic", layout.In(3, 0));
  std::size_t const catalogueLength = layout.Length(3);
  std::vector<std::int32_t> records;
  for (std::size_t at = 4; at < catalogueLength;) {
    int length = layout.Int(3, at);
    records.push_back(static_cast<std::int32_t>(at));
    std::string const name = "catalogue record at " + std::to_string(at);
    cases.Int(name + " length", layout.In(3, at));
    cases.Double(name + " name", layout.In(3, at + 4), aString);
    for (std::size_t field = at + 12; field < at + static_cast<std::size_t>(length); field += 12) {
      cases.Int(name + " field type", layout.In(3, field), kStructure, OneOf({1, 2, 3, 4, 6}));
      cases.Double(name + " field name", layout.In(3, field + 4), aString);
    }
    at += static_cast<std::size_t>(length);
  }

  for (rfm_SampleDatabase::Object const& object : objects) {
    int const handle = object.m_Handle.Value();
    std::string const name = "object " + std::to_string(handle);
    std::size_t const length = layout.Length(handle);
    switch (object.m_Type) {
      case rfm_TypeTable: {
        cases.Int(name + " magic", layout.In(handle, 0));
        cases.Int(name + " flush count", layout.In(handle, 4));
        cases.Int(name + " catalogue record", layout.In(handle, 8), kStructure, OneOf(records));
        // Rows: presence bits and fields, handles and string references included.
        for (std::size_t at = 12; at < std::min<std::size_t>(length, 12 + 64); at += 4) {
          cases.Int(name + " row bytes at " + std::to_string(at), layout.In(handle, at), kUserData);
        }
        break;
      }
      case rfm_TypeStream: {
        cases.Int(name + " magic", layout.In(handle, 0));
        cases.Int(name + " change count", layout.In(handle, 4));
        std::string stream;
        for (std::size_t at = 0; at < length; ++at) stream += bytes.at(layout.Locate(handle, at));
        for (std::size_t at = 8; at < length;) {
          int tag = layout.Int(handle, at);
          bool const narrow = tag == 1 || tag == 3;
          std::string const item = name + " item at " + std::to_string(at);
          // Another tag leaves a stream whose items still read to its end.
          cases.Int(item + " tag", layout.In(handle, at), kStructure, [stream, at, &aString](std::int32_t other) {
            std::string changed = stream;
            PutStoredInt(changed, at, other);
            return ItemsFill(changed, aString);
          });
          cases.Int(item + " id", layout.In(handle, at + 4), kUserData);
          std::size_t value = narrow ? 4 : 8;
          cases.Text(item + " value", layout.In(handle, at + 8), value, kUserData);
          at += 8 + value;
        }
        break;
      }
      case rfm_TypeSpace:
        cases.Text(name + " bytes", layout.In(handle, 0), 4, kUserData);
        break;
      default:
        cases.Int(name + " magic", layout.In(handle, 0));
        cases.Int(name + " change count", layout.In(handle, 4));
        cases.Int(name + " element type", layout.In(handle, 8), kStructure, OneOf({1, 3, 4, 6}));
        cases.Int(name + " fields per row", layout.In(handle, 12), kStructure, anyCount);
        if (length > 16) cases.Text(name + " first element", layout.In(handle, 16), 4, kUserData);
        break;
    }
  }

  for (std::size_t length : {0, 1, 8, 12, 500, 512, 516, 1023, 1024, 1052, 1024 + 14335, 1024 + 14336}) {
    cases.Truncate(length);
  }
  for (std::size_t length = 1024 + kGroup + 1; length < bytes.size(); length += 1531) cases.Truncate(length);
  cases.Truncate(bytes.size() - 1);

  // Inputs the plain fuzz target found before element types were checked,
  // reduced to the bytes that mattered: an array's element type with a
  // high byte set made HandleType answer a value no rfm_Type has.
  for (auto [object, high] : {std::pair{2, '\x70'}, {5, '\x5b'}}) {
    int const handle = objects.at(object).m_Handle.Value();
    cases.Add({"fuzzed: object " + std::to_string(handle) + " element type's high byte",
               {{layout.Locate(handle, 11), high}}});
  }
  return cases.Cases();
}

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
