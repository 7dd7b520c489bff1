#include "omi_CountedValue.h"
#include "omi_IntTable.h"
#include "omi_IntTableIterator.h"
#include "omi_UintTable.h"
#include "omi_UintTableIterator.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

using Table = omi_UintTable<omi_CountedValue>;

// Keys near 0, near block edges of the default geometry and anywhere.
unsigned int RandomKey(std::mt19937& random) {
  switch (random() % 3) {
    case 0: return random() % 5000;
    case 1: return (random() % 8) << 20 | (random() % 4);
    default: return random();
  }
}

template <class Key, class Iterator>
std::vector<std::pair<Key, int>> Walk(Iterator& walk, bool backward = false) {
  std::vector<std::pair<Key, int>> entries;
  for (backward ? walk.Last() : walk.First(); !walk.IsDone(); backward ? walk.Previous() : walk.Next()) {
    entries.emplace_back(walk.CurrentKey(), walk.CurrentValue().m_Value);
  }
  return entries;
}

template <class Map>
std::vector<std::pair<typename Map::key_type, int>> Entries(Map const& map) {
  std::vector<std::pair<typename Map::key_type, int>> entries;
  for (auto const& entry : map) entries.emplace_back(entry.first, entry.second.m_Value);
  return entries;
}

// Orders by value in tens, highest first: the values within one ten tie,
// and the walk must keep those in key order.
int ByValueDescending(void const* left, void const* right) {
  int const a = omi_UintTableNode<omi_CountedValue>::FromSortArgument(left).Value().m_Value / 10;
  int const b = omi_UintTableNode<omi_CountedValue>::FromSortArgument(right).Value().m_Value / 10;
  return a > b ? -1 : (a < b ? 1 : 0);
}

template <class Map>
std::vector<std::pair<typename Map::key_type, int>> SortedByValueDescending(Map const& map) {
  auto entries = Entries(map);
  std::stable_sort(entries.begin(), entries.end(), [](auto const& a, auto const& b) { return a.second / 10 > b.second / 10; });
  return entries;
}

TEST(UintTableTest, MatchesStdMapAndWalksInKeyOrder) {
  {
    Table table;
    std::map<unsigned int, omi_CountedValue> reference;
    std::mt19937 random(99);
    for (int step = 0; step < 20000; ++step) {
      unsigned int const key = RandomKey(random);
      if (random() % 3 != 0) {
        bool const added = reference.count(key) == 0;
        reference[key] = omi_CountedValue(step);
        ASSERT_EQ(table.Insert(key, omi_CountedValue(step)), added);
      } else {
        ASSERT_EQ(table.Remove(key), reference.erase(key) == 1);
      }
      unsigned int const probe = RandomKey(random);
      omi_CountedValue value(-1);
      ASSERT_EQ(table.ConstGetValue(probe, value), reference.count(probe) == 1);
      EXPECT_EQ(value.m_Value, reference.count(probe) ? reference[probe].m_Value : -1);
    }
    ASSERT_EQ(table.Size(), static_cast<int>(reference.size()));
    for (auto const& entry : reference) ASSERT_EQ(table.ConstGet(entry.first).m_Value, entry.second.m_Value);

    omi_UintTableIterator<omi_CountedValue> walk(table);
    auto const expected = Entries(reference);
    EXPECT_EQ(Walk<unsigned int>(walk), expected);
    EXPECT_EQ(Walk<unsigned int>(walk, true), decltype(expected)(expected.rbegin(), expected.rend()));

    // Block moves: the first key of each block forward, the last backward.
    std::vector<unsigned int> firsts, lasts;
    for (walk.First(); !walk.IsDone(); walk.NextBlock()) firsts.push_back(walk.CurrentKey());
    for (walk.Last(); !walk.IsDone(); walk.PreviousBlock()) lasts.push_back(walk.CurrentKey());
    std::vector<unsigned int> expectedFirsts, expectedLasts;
    for (auto const& entry : reference) {
      if (expectedFirsts.empty() || entry.first >> 20 != expectedFirsts.back() >> 20) expectedFirsts.push_back(entry.first);
    }
    for (auto entry = reference.rbegin(); entry != reference.rend(); ++entry) {
      if (expectedLasts.empty() || entry->first >> 20 != expectedLasts.back() >> 20) expectedLasts.push_back(entry->first);
    }
    EXPECT_EQ(firsts, expectedFirsts);
    EXPECT_EQ(lasts, expectedLasts);

    omi_UintTableIterator<omi_CountedValue> sorted(table, ByValueDescending);
    EXPECT_EQ(Walk<unsigned int>(sorted), SortedByValueDescending(reference));

    // A copy owns its blocks.
    Table copy = table.Copy();
    copy.Get(reference.begin()->first) = omi_CountedValue(-7);
    copy.Remove(reference.rbegin()->first);
    omi_UintTableIterator<omi_CountedValue> again(table);
    EXPECT_EQ(Walk<unsigned int>(again), expected);

    for (auto const& entry : reference) ASSERT_TRUE(table.Remove(entry.first));
    EXPECT_TRUE(table.IsEmpty());
    for (unsigned int slot = 0; slot < table.TopLength(); ++slot) EXPECT_EQ(table.TopBlock(slot), nullptr);
  }
  EXPECT_EQ(omi_CountedValue::s_Live, 0);
}

TEST(UintTableTest, InsertReplacesValueAndLastRemovalFreesBlock) {
  omi_UintTable<int> table;
  EXPECT_EQ(table.FindTableBlock(5), nullptr);
  EXPECT_TRUE(table.Insert(5, 50));
  EXPECT_FALSE(table.Insert(5, 51));
  EXPECT_EQ(table.Get(5), 51);
  EXPECT_EQ(table.Size(), 1);
  EXPECT_TRUE(table.Insert(6, 60));
  EXPECT_FALSE(table.IsMember(7));
  EXPECT_TRUE(table.Remove(5));
  EXPECT_FALSE(table.Remove(5));
  EXPECT_NE(table.FindTableBlock(5), nullptr);
  EXPECT_TRUE(table.Remove(6));
  EXPECT_EQ(table.FindTableBlock(5), nullptr);
  EXPECT_TRUE(table.IsEmpty());
}

TEST(UintTableTest, EveryConstructorHoldsKeysAtBothEndsOfTheRange) {
  omi_UintTable<int> table;
  EXPECT_EQ(table.KeyModulus(), 0xfffffu);
  table.Insert(0xffffffffu, 1);
  table.Insert(0, 2);
  omi_UintTableIterator<int> walk(table);
  EXPECT_EQ(walk.CurrentKey(), 0u);
  walk.Next();
  EXPECT_EQ(walk.CurrentKey(), 0xffffffffu);
  EXPECT_EQ(walk.CurrentValue(), 1);

  omi_UintTable<int> large(1ul);
  EXPECT_EQ(large.KeyModulus(), 0xfffffu);
  large.Insert(70u << 20, 3);
  large.Insert(0xffffffffu, 4);
  EXPECT_EQ(large.Get(70u << 20), 3);
  EXPECT_EQ(large.Get(0xffffffffu), 4);
  EXPECT_FALSE(large.IsMember(71u << 20));

  unsigned int const keys[] = {3, 1, 3};
  int const values[] = {30, 10, 31};
  omi_UintTable<int> filled(3ul, keys, values);
  EXPECT_EQ(filled.Size(), 2);
  EXPECT_EQ(filled.Get(3), 31);

  // 8 high bits, 14 bits of block table, 10 bits of cells.
  omi_UintTable<int> custom(8, 14, 16);
  EXPECT_EQ(custom.KeyModulus(), 0xffffffu);
  for (unsigned int key : {0u, 0x3ffu, 0x400u, 0xffffffu, 0x01000005u, 0xffffffffu}) custom.Insert(key, static_cast<int>(key & 0xffff));
  EXPECT_EQ(custom.Size(), 6);
  for (unsigned int key : {0u, 0x3ffu, 0x400u, 0xffffffu, 0x01000005u, 0xffffffffu})
    EXPECT_EQ(custom.Get(key), static_cast<int>(key & 0xffff)) << key;
  EXPECT_FALSE(custom.IsMember(0x01000004u));
  custom.Initialize(12, 10, 24);
  EXPECT_TRUE(custom.IsEmpty());
  EXPECT_EQ(custom.KeyModulus(), 0xfffffu);
  custom.Insert(0xfffffu, 7);
  EXPECT_EQ(custom.Get(0xfffffu), 7);
}

TEST(IntTableTest, MatchesStdMapInAscendingSignedOrder) {
  {
    omi_IntTable<omi_CountedValue> table;
    std::map<int, omi_CountedValue> reference;
    std::mt19937 random(4242);
    std::vector<int> const edges{INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX};
    for (int step = 0; step < 20000; ++step) {
      int key = step < 6 ? edges[step] : static_cast<int>(RandomKey(random));
      if (step >= 6 && key != INT_MIN && random() % 2 != 0) key = -key;
      if (step < 6 || random() % 3 != 0) {
        bool const added = reference.count(key) == 0;
        reference[key] = omi_CountedValue(step);
        ASSERT_EQ(table.Insert(key, omi_CountedValue(step)), added) << key;
      } else {
        ASSERT_EQ(table.Remove(key), reference.erase(key) == 1) << key;
      }
      ASSERT_EQ(table.IsMember(key), reference.count(key) == 1);
    }
    ASSERT_EQ(table.Size(), static_cast<int>(reference.size()));
    for (auto const& entry : reference) ASSERT_EQ(table.ConstGet(entry.first).m_Value, entry.second.m_Value);

    omi_IntTableIterator<omi_CountedValue> walk(table);
    auto const expected = Entries(reference);
    EXPECT_EQ(Walk<int>(walk), expected);
    EXPECT_EQ(Walk<int>(walk, true), decltype(expected)(expected.rbegin(), expected.rend()));

    omi_IntTableIterator<omi_CountedValue> sorted(table, ByValueDescending);
    EXPECT_EQ(Walk<int>(sorted), SortedByValueDescending(reference));
    EXPECT_EQ(Walk<int>(sorted, true).front(), SortedByValueDescending(reference).back());

    omi_IntTable<omi_CountedValue> copy(table);
    copy.Clear();
    EXPECT_TRUE(copy.IsEmpty());
    EXPECT_EQ(Walk<int>(walk), expected);
  }
  EXPECT_EQ(omi_CountedValue::s_Live, 0);
}

TEST(IntTableTest, NegativeKeysGoToNegativeTableUnderTheirNegation) {
  omi_IntTable<int> table;
  table.Insert(INT_MIN, 1);
  table.Insert(-1, 2);
  EXPECT_TRUE(table.Negative().IsMember(0x80000000u));
  EXPECT_TRUE(table.Negative().IsMember(1u));
  EXPECT_TRUE(table.NonNegative().IsEmpty());
  EXPECT_EQ(table.Get(INT_MIN), 1);
  EXPECT_EQ(table.Size(), 2);
  // Only a walk that knows the table of each entry gives back the signs.
  omi_IntTableIterator<int> walk(table);
  EXPECT_EQ(walk.CurrentKey(), INT_MIN);
  walk.Next();
  EXPECT_EQ(walk.CurrentKey(), -1);
  walk.Next();
  EXPECT_TRUE(walk.IsDone());
  EXPECT_TRUE(table.Remove(INT_MIN));
  EXPECT_EQ(table.FindTableBlock(INT_MIN), nullptr);
  EXPECT_NE(table.FindTableBlock(-1), nullptr);
}

}  // namespace
