// zdb check held against the library: for many damaged copies of the
// record store's sample database, check must report a problem exactly when
// the library cannot open the file and read every object its groups list
// (rfm_DatabaseWalk, as stored). A check that passes a file no program can
// read misleads its user; one that fails a file every program reads cries
// wolf.
//
// The damage is the record store's damaged-file recipes (every structural
// field of block 0, the groups, the pool, the catalogue and each object,
// and cuts at many lengths), one case for each kind of disagreement found
// before the rules of the linkages were written once, and, from a fixed
// seed, random damage to the bytes that hold structure: bits flipped and
// stored values written across block 0, every slot of every group (free
// ones too) and the heads of the objects, and cuts. Damage to user bytes
// alone leaves both content, which agrees too. Plain files take every
// case; a compressed file, packed anew for each, a sample of them.

#include "ZQABasException.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_SampleDatabase.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabaseDamage.h"
#include "zdb_Check.h"
#include "zdb_CheckReport.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <random>

namespace {

constexpr int kRandomCases = 1500;
constexpr unsigned kSeed = 14;
constexpr std::size_t kCompressedStep = 16;
// Disagreements shown in full; the rest are counted.
constexpr int kShown = 20;

// What the library and the check made of one file.
struct Verdicts {
  std::string m_Refusal;  // where the library raised and what, "" when it read the file
  std::vector<std::string> m_Problems;

  bool Agree() const { return m_Refusal.empty() == m_Problems.empty(); }
};

Verdicts Judge(cow_String const& name) {
  Verdicts verdicts;
  try {
    rfm_DatabaseWalk::WalkStored(name);
  } catch (ZQABasException const& e) {
    verdicts.m_Refusal = std::string(e.SourcePath()) + ":" + std::to_string(e.Line()) + ": " + e.what();
  }
  zdb_CheckReport report;
  zdb_CheckFile(name.CStr(), report);
  report.Close();
  verdicts.m_Problems = report.Lines();
  return verdicts;
}

// One case for each kind of disagreement that was found, on the sample's
// own layout.
std::vector<DamageCase> FoundDisagreements(std::string const& bytes) {
  DatabaseLayout layout(bytes);
  std::size_t const lastGroup = layout.Groups().back();
  std::size_t const firstFree =
      lastGroup + static_cast<std::size_t>(layout.Used(layout.Groups().size() - 1)) * kLinkage;
  auto value = [](std::size_t at, double stored) {
    std::string field(8, '\0');
    PutStoredDouble(field, 0, stored);
    std::vector<std::pair<std::size_t, char>> edits;
    for (std::size_t i = 0; i < 8; ++i) edits.emplace_back(at + i, field[i]);
    return edits;
  };
  auto word = [](std::size_t at, std::int32_t stored) {
    std::string field(4, '\0');
    PutStoredInt(field, 0, stored);
    std::vector<std::pair<std::size_t, char>> edits;
    for (std::size_t i = 0; i < 4; ++i) edits.emplace_back(at + i, field[i]);
    return edits;
  };
  auto slot = [&](int handle) { return layout.Slot(handle); };
  int const nodes = 5;
  std::size_t const pool = slot(1);
  int rootEnd = 4;
  while (StoredInt(bytes, slot(rootEnd) + 24) != 0) rootEnd = StoredInt(bytes, slot(rootEnd) + 24);
  std::size_t const rootEndLength = slot(rootEnd) + 8;
  return {
      {"a free slot's length above its allocation", value(firstFree + 8, 1024.0)},
      {"a chain going on at the reserved handle 2", word(slot(nodes) + 24, 2)},
      {"a chain looping onto itself", word(slot(nodes) + 24, nodes)},
      {"a length a hair above a whole number of bytes",
       value(pool + 8, std::nextafter(StoredDouble(bytes, pool + 8), 1e9))},
      {"the last group's slot 0 naming a next group", word(lastGroup + 24, 7)},
      {"slot 0's length above its allocation", value(kBlock0 + 8, 1024.0)},
      {"a negative flush count", word(512, -3)},
      {"a slot with a location after a free one", value(firstFree + kLinkage + 16, 4096.0)},
      {"a placeholder's chain going on", word(slot(2) + 24, nodes)},
      {"an empty extent beyond the end of the file", value(slot(2) + 16, 2147483647.0)},
      {"a table's last row torn", value(rootEndLength, StoredDouble(bytes, rootEndLength) - 12)},
      {"presence bits beyond a table's fields", word(layout.Locate(4, 12), -1)},
      {"an array too short to tell its kind", value(slot(6) + 8, 6.0)},
  };
}

// Random damage to the bytes of the sample that hold structure.
class RandomDamage {
public:
  RandomDamage(std::string const& bytes, std::vector<rfm_SampleDatabase::Object> const& objects, unsigned seed)
      : m_Bytes(bytes), m_Random(seed) {
    DatabaseLayout layout(bytes);
    for (std::size_t group : layout.Groups()) m_Groups.push_back(group);
    std::vector<int> handles = {1, 3};
    for (auto const& object : objects) handles.push_back(object.m_Handle.Value());
    for (int handle : handles) {
      for (std::size_t at = 0; at < 24 && at < layout.Length(handle); ++at) {
        m_Heads.push_back(layout.Locate(handle, at));
      }
    }
  }

  DamageCase Next() {
    DamageCase damage;
    damage.m_What = "random:";
    for (int edits = 1 + Pick(3); edits > 0; --edits) Edit(damage);
    if (Pick(8) == 0) {
      damage.m_Length = kBlock0 + static_cast<std::size_t>(Pick(static_cast<int>(m_Bytes.size() - kBlock0)));
      damage.m_What += " cut to " + std::to_string(damage.m_Length);
    }
    return damage;
  }

private:
  int Pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_Random); }

  // Where a field of width bytes may lie: in block 0, on a linkage's field
  // in any slot of a group, or, one time in four, in an object's head.
  std::size_t Where(std::size_t width) {
    if (Pick(4) == 0) return m_Heads[static_cast<std::size_t>(Pick(static_cast<int>(m_Heads.size())))];
    if (Pick(8) == 0) return static_cast<std::size_t>(Pick(static_cast<int>(kBlock0 / width))) * width;
    std::size_t const group = m_Groups[static_cast<std::size_t>(Pick(static_cast<int>(m_Groups.size())))];
    std::size_t const slot = group + static_cast<std::size_t>(Pick(512)) * kLinkage;
    if (width == 1) return slot + static_cast<std::size_t>(Pick(static_cast<int>(kLinkage)));
    // Allocation, length and location are doubles; the next is a word.
    if (width == 8) return slot + 8 * static_cast<std::size_t>(Pick(3));
    return slot + 4 * static_cast<std::size_t>(Pick(7));
  }

  void Edit(DamageCase& damage) {
    double const doubles[] = {0.0, 1.0, 0.5, 1023.5, 1024.0, 4096.0, 16384.0, -1.0, 1e15, 1e300, std::nan("")};
    std::int32_t const words[] = {0, 1, 2, 3, 4, 5, 511, 512, 513, 1023, -1, std::numeric_limits<std::int32_t>::max()};
    std::string value;
    std::size_t at;
    switch (Pick(4)) {
      case 0:
      case 1:
        at = Where(1);
        value.assign(1, static_cast<char>(m_Bytes[at] ^ (1 << Pick(8))));
        damage.m_What += " flip at " + std::to_string(at);
        break;
      case 2: {
        at = Where(8);
        // Near the value held, or one that means something to a reader.
        double const stored = Pick(3) == 0 ? StoredDouble(m_Bytes, at) + Pick(64) - 32
                                           : doubles[Pick(static_cast<int>(std::size(doubles)))];
        value.assign(8, '\0');
        PutStoredDouble(value, 0, stored);
        damage.m_What += " double " + std::to_string(stored) + " at " + std::to_string(at);
        break;
      }
      default: {
        at = Where(4);
        std::int32_t const stored = words[Pick(static_cast<int>(std::size(words)))];
        value.assign(4, '\0');
        PutStoredInt(value, 0, stored);
        damage.m_What += " int " + std::to_string(stored) + " at " + std::to_string(at);
        break;
      }
    }
    for (std::size_t i = 0; i < value.size() && at + i < m_Bytes.size(); ++i) {
      damage.m_Edits.emplace_back(at + i, value[i]);
    }
  }

  std::string const& m_Bytes;
  std::mt19937 m_Random;
  std::vector<std::size_t> m_Groups;
  std::vector<std::size_t> m_Heads;
};

// Judges every case, the damaged file made by write; answers the
// disagreements, each one shown in full up to kShown.
int Disagreements(std::vector<DamageCase> const& cases, std::function<void(std::string const&)> const& write,
                  std::string const& good, cow_String const& name) {
  int refused = 0;
  int disagreements = 0;
  for (DamageCase const& damage : cases) {
    write(damage.Apply(good));
    Verdicts const verdicts = Judge(name);
    refused += !verdicts.m_Refusal.empty();
    if (verdicts.Agree() || ++disagreements > kShown) continue;
    ADD_FAILURE() << damage.m_What << "\n  library: "
                  << (verdicts.m_Refusal.empty() ? std::string("reads the file") : verdicts.m_Refusal)
                  << "\n  check: " << (verdicts.m_Problems.empty() ? "no problems" : verdicts.m_Problems.front());
  }
  std::printf("%zu damaged files, %d refused by the library and reported by check, %d disagreements\n", cases.size(),
              refused, disagreements);
  return disagreements;
}

}  // namespace

TEST(ZdbCheckAgreesWithLibraryTest, CheckReportsAProblemExactlyWhenTheLibraryCannotReadTheFile) {
  zqa_TestDir dir;
  cow_String const sample = dir.File("sample.zdb");
  auto const objects = rfm_SampleDatabase::Write(rfm_File::Open(sample, utl_FileAccessCreate, false));
  std::string const good = zqa_ReadFileBytes(sample);
  ASSERT_GE(DatabaseLayout(good).Groups().size(), 2u);
  Verdicts const clean = Judge(sample);
  ASSERT_EQ("", clean.m_Refusal);
  ASSERT_EQ(std::vector<std::string>(), clean.m_Problems);

  std::vector<DamageCase> cases = FoundDisagreements(good);
  std::vector<DamageCase> const recipes = DatabaseDamage(good, objects);
  cases.insert(cases.end(), recipes.begin(), recipes.end());
  RandomDamage random(good, objects, kSeed);
  for (int i = 0; i < kRandomCases; ++i) cases.push_back(random.Next());

  cow_String const name = dir.File("damaged.zdb");
  // A new file each time: a file system may push a truncated and rewritten
  // file to the disk at once, which would cost more than the case.
  auto const plain = [&](std::string const& bytes) {
    std::remove(name.CStr());
    zqa_WriteFileBytes(name, bytes);
  };
  EXPECT_EQ(0, Disagreements(cases, plain, good, name));

  // The same rules in a compressed file, whose logical bytes the damage
  // changes: the cases found, and one recipe in sixteen, which keeps the
  // time of the packing modest.
  std::vector<DamageCase> packed = FoundDisagreements(good);
  for (std::size_t i = 0; i < recipes.size(); i += kCompressedStep) packed.push_back(recipes[i]);
  auto const compressed = [&](std::string const& bytes) {
    std::remove(name.CStr());
    rfm_File file = rfm_File::CreateCompressed(name);
    if (!bytes.empty()) file.Write(bytes.data(), static_cast<int>(bytes.size()));
  };
  EXPECT_EQ(0, Disagreements(packed, compressed, good, name));
}
