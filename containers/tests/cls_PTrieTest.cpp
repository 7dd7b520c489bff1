#include "cls_PTrie.h"
#include "cls_PTrieIter.h"
#include "omi_CountedValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace {

// Keys laid out as the object layer lays out its own: a class id and an
// object id, and three ids (a, b, c).
struct ClassObject {
  unsigned int m_ClassId;
  unsigned int m_ObjectId;
};

struct ThreeIds {
  unsigned int m_A;
  unsigned int m_B;
  unsigned int m_C;
};

}  // namespace

template <>
struct cls_PTrieKeyWords<ClassObject> {
  static void ToWords(ClassObject const& key, std::uint32_t (&words)[2]) {
    words[0] = key.m_ObjectId;
    words[1] = key.m_ClassId;
  }
};

template <>
struct cls_PTrieKeyWords<ThreeIds> {
  static void ToWords(ThreeIds const& key, std::uint32_t (&words)[3]) {
    words[0] = key.m_B;
    words[1] = key.m_A;
    words[2] = key.m_C;
  }
};

namespace {

// The order each key type must iterate in, written out independently of the
// word conversion: the most significant word first.
unsigned int OrderOf(unsigned int key) { return key; }
std::pair<unsigned int, unsigned int> OrderOf(ClassObject key) { return {key.m_ClassId, key.m_ObjectId}; }
std::tuple<unsigned int, unsigned int, unsigned int> OrderOf(ThreeIds key) { return {key.m_C, key.m_A, key.m_B}; }
std::uintptr_t OrderOf(int const* key) { return reinterpret_cast<std::uintptr_t>(key); }

// Words drawn so that keys collide often, share long prefixes, and differ
// only in bit 0 or only in the top bit.
std::uint32_t Word(std::mt19937& random) {
  switch (random() % 6) {
    case 0:
      return random() % 4;
    case 1:
      return 0x80000000u | (random() % 4);
    case 2:
      return 0xffffffffu - random() % 2;
    case 3:
      return 0x12345600u | (random() % 4);
    default:
      return random();
  }
}

template <class K>
K MakeKey(std::mt19937& random);
template <>
unsigned int MakeKey(std::mt19937& random) {
  return Word(random);
}
template <>
ClassObject MakeKey(std::mt19937& random) {
  return {Word(random), Word(random)};
}
template <>
ThreeIds MakeKey(std::mt19937& random) {
  return {Word(random), Word(random), Word(random)};
}
// Addresses are only converted, never dereferenced.
template <>
int const* MakeKey(std::mt19937& random) {
  std::uint64_t const high = Word(random);
  std::uint64_t const value = high << 32 | Word(random);
  return reinterpret_cast<int const*>(static_cast<std::uintptr_t>(value));
}

// A trie and a std::map fed the same operations; Check compares them.
template <class K, int N>
class TrieAndMap {
public:
  using Trie = cls_PTrie<K, omi_CountedValue, N>;
  using Order = decltype(OrderOf(std::declval<K>()));

  void Insert(K const& key, int value) {
    omi_CountedValue const* held = m_Trie.Insert(key, omi_CountedValue(value));
    ASSERT_EQ(held->m_Value, value);
    m_Map.insert_or_assign(OrderOf(key), std::make_pair(key, value));
  }

  // Adds only an absent key; a present one keeps its value.
  void InsertNew(K const& key, int value) {
    bool const absent = m_Map.count(OrderOf(key)) == 0;
    omi_CountedValue const* held = m_Trie.InsertNew(key, omi_CountedValue(value));
    ASSERT_EQ(held != nullptr, absent);
    if (!absent) return;
    ASSERT_EQ(held->m_Value, value);
    m_Map.emplace(OrderOf(key), std::make_pair(key, value));
  }

  void Remove(K const& key) { ASSERT_EQ(m_Trie.Remove(key), m_Map.erase(OrderOf(key)) == 1); }

  // Size, every entry by lookup, the absent probes, and the iteration order.
  void Check(std::vector<K> const& probes) const {
    ASSERT_EQ(m_Trie.Size(), static_cast<int>(m_Map.size()));
    for (auto const& [order, entry] : m_Map) {
      ASSERT_TRUE(m_Trie.IsMember(entry.first));
      auto const leaf = m_Trie.ConstGetPtr(entry.first);
      ASSERT_NE(leaf, nullptr);
      EXPECT_TRUE(OrderOf(leaf->Key()) == order);
      EXPECT_EQ(leaf->Value().m_Value, entry.second);
      EXPECT_EQ(m_Trie.ConstGet(entry.first).m_Value, entry.second);
    }
    for (K const& probe : probes) {
      bool const present = m_Map.count(OrderOf(probe)) == 1;
      EXPECT_EQ(m_Trie.IsMember(probe), present);
      EXPECT_EQ(m_Trie.ConstGetPtr(probe) != nullptr, present);
    }
    cls_PTrieIter<K, omi_CountedValue, N> walk(m_Trie);
    for (auto const& [order, entry] : m_Map) {
      ASSERT_FALSE(walk.IsDone());
      ASSERT_TRUE(OrderOf(walk.CurrentKey()) == order);
      EXPECT_EQ(walk.CurrentValue().m_Value, entry.second);
      walk.Next();
    }
    EXPECT_TRUE(walk.IsDone());
  }

  std::vector<K> Keys() const {
    std::vector<K> keys;
    for (auto const& entry : m_Map) keys.push_back(entry.second.first);
    return keys;
  }

  Trie m_Trie;
  std::map<Order, std::pair<K, int> > m_Map;
};

// Random inserts (with repeated keys), inserts of new keys only, removals of
// keys once inserted and of fresh ones, checked after each batch; then every
// key removed.
template <class K, int N>
void RunAgainstMap(std::uint32_t seed) {
  {
    std::mt19937 random(seed);
    TrieAndMap<K, N> both;
    std::vector<K> inserted;
    for (int batch = 0; batch < 10; ++batch) {
      for (int step = 0; step < 1000; ++step) {
        unsigned int const choice = random() % 20;
        if (choice < 8 || inserted.empty()) {
          inserted.push_back(MakeKey<K>(random));
          both.Insert(inserted.back(), batch * 1000 + step);
        } else if (choice < 11) {
          // Half of them a key inserted before, which may since have gone.
          K const key = random() % 2 == 0 ? inserted[random() % inserted.size()] : MakeKey<K>(random);
          inserted.push_back(key);
          both.InsertNew(key, batch * 1000 + step);
        } else if (choice < 17) {
          both.Remove(inserted[random() % inserted.size()]);
        } else {
          both.Remove(MakeKey<K>(random));
        }
      }
      std::vector<K> probes;
      for (int probe = 0; probe < 200; ++probe) probes.push_back(MakeKey<K>(random));
      both.Check(probes);
    }
    std::vector<K> keys = both.Keys();
    ASSERT_GT(keys.size(), 100u);
    std::shuffle(keys.begin(), keys.end(), random);
    for (K const& key : keys) both.Remove(key);
    both.Check(keys);
    EXPECT_EQ(both.m_Trie.Size(), 0);
  }
  EXPECT_EQ(omi_CountedValue::s_Live, 0);
}

TEST(PTrieTest, MatchesStdMapForKeysOfOneTwoAndThreeWords) {
  RunAgainstMap<unsigned int, 1>(11);
  RunAgainstMap<ClassObject, 2>(22);
  RunAgainstMap<ThreeIds, 3>(33);
  RunAgainstMap<int const*, 2>(44);
}

TEST(PTrieKeyTest, BitsCountFromTheLowestBitOfWordZero) {
  cls_PTrieKey<ThreeIds, 3> const key(ThreeIds{1u, 0x80000000u, 2u});
  std::vector<int> set;
  for (int bit = 0; bit < 96; ++bit) {
    if (key.BitSet(bit)) set.push_back(bit);
  }
  EXPECT_EQ(set, (std::vector<int>{31, 32, 65}));

  cls_PTrieKey<ThreeIds, 3> const other(ThreeIds{1u, 0x80000008u, 0u});
  EXPECT_EQ(key.FirstBit(95, other), 65);
  EXPECT_EQ(key.FirstBit(64, other), 3);
  EXPECT_EQ(key.FirstBit(3, other), 3);
  EXPECT_EQ(key.FirstBit(2, other), -1);
  EXPECT_EQ(key.FirstBit(95, key), -1);

  cls_PTrieKey<int const*, 2> const address(reinterpret_cast<int const*>(std::uintptr_t{0x80000001u} << 31 | 1u));
  EXPECT_TRUE(address.BitSet(0));
  EXPECT_TRUE(address.BitSet(31));
  EXPECT_TRUE(address.BitSet(62));
  EXPECT_EQ(address.FirstBit(63, cls_PTrieKey<int const*, 2>()), 62);
}

TEST(PTrieTest, InsertingAPresentKeyKeepsOneEntryAndTheNewValue) {
  cls_PTrie<ClassObject, int, 2> trie;
  int* const held = trie.Insert({3, 4}, 10);
  EXPECT_EQ(trie.Insert({3, 4}, 11), held);
  EXPECT_EQ(trie.Size(), 1);
  EXPECT_EQ(trie.ConstGet({3, 4}), 11);

  // Below a branch too, and the answer is the value the trie holds.
  trie.Insert({3, 5}, 20);
  int* const again = trie.Insert({3, 4}, 12);
  EXPECT_EQ(again, held);
  *again = 13;
  EXPECT_EQ(trie.Size(), 2);
  EXPECT_EQ(trie.ConstGet({3, 4}), 13);
  EXPECT_EQ(trie.ConstGet({3, 5}), 20);
}

TEST(PTrieTest, InsertingANewKeyOnlyAddsAnAbsentOneAndLeavesAPresentOneAsItWas) {
  cls_PTrie<ClassObject, int, 2> trie;
  int* const held = trie.InsertNew({3, 4}, 10);
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(*held, 10);
  EXPECT_EQ(trie.InsertNew({3, 4}, 11), nullptr);
  EXPECT_EQ(trie.Size(), 1);
  EXPECT_EQ(trie.ConstGet({3, 4}), 10);

  // Below a branch too; the held value stays where it was, and a plain
  // Insert after a refused one answers its own leaf.
  int* const other = trie.InsertNew({3, 5}, 20);
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(trie.InsertNew({3, 4}, 12), nullptr);
  EXPECT_EQ(trie.InsertNew({3, 5}, 21), nullptr);
  EXPECT_EQ(trie.Size(), 2);
  EXPECT_EQ(trie.ConstGetPtr({3, 4})->Value(), 10);
  EXPECT_EQ(&trie.ConstGetPtr({3, 4})->Value(), held);
  EXPECT_EQ(trie.ConstGet({3, 5}), 20);
  EXPECT_EQ(trie.Insert({3, 5}, 22), other);
  EXPECT_EQ(trie.ConstGet({3, 5}), 22);
}

TEST(PTrieTest, SwappedTriesHoldEachOthersEntriesAndStayUsable) {
  {
    cls_PTrie<ClassObject, omi_CountedValue, 2> full, empty;
    full.Insert({1, 1}, omi_CountedValue(11));
    full.Insert({1, 2}, omi_CountedValue(12));
    full.Swap(empty);
    EXPECT_EQ(full.Size(), 0);
    EXPECT_FALSE(full.IsMember({1, 1}));
    cls_PTrieIter<ClassObject, omi_CountedValue, 2> const walk(full);
    EXPECT_TRUE(walk.IsDone());
    EXPECT_EQ(empty.Size(), 2);
    EXPECT_EQ(empty.ConstGet({1, 2}).m_Value, 12);
    // Each goes on with what it holds now.
    EXPECT_EQ(full.Insert({2, 0}, omi_CountedValue(20))->m_Value, 20);
    EXPECT_TRUE(empty.Remove({1, 1}));
    EXPECT_EQ(empty.InsertNew({1, 3}, omi_CountedValue(13))->m_Value, 13);
    EXPECT_EQ(full.Size(), 1);
    EXPECT_EQ(empty.Size(), 2);
  }
  EXPECT_EQ(omi_CountedValue::s_Live, 0);
}

TEST(PTrieTest, RemovingABranchesLeafLeavesItsSiblingInItsPlace) {
  ClassObject const low{0, 0}, high{1, 0};
  for (bool removeLow : {true, false}) {
    cls_PTrie<ClassObject, int, 2> trie;
    trie.Insert(low, 1);
    trie.Insert(high, 2);
    ClassObject const gone = removeLow ? low : high, kept = removeLow ? high : low;
    EXPECT_TRUE(trie.Remove(gone));
    EXPECT_FALSE(trie.Remove(gone));
    EXPECT_EQ(trie.Size(), 1);
    EXPECT_EQ(trie.ConstGetPtr(gone), nullptr);
    EXPECT_EQ(trie.ConstGet(kept), removeLow ? 2 : 1);
    cls_PTrieIter<ClassObject, int, 2> walk(trie);
    ASSERT_FALSE(walk.IsDone());
    EXPECT_EQ(walk.CurrentKey().m_ClassId, kept.m_ClassId);
    walk.Next();
    EXPECT_TRUE(walk.IsDone());
    EXPECT_TRUE(trie.Remove(kept));
    EXPECT_EQ(trie.Size(), 0);
    EXPECT_FALSE(trie.IsMember(kept));
    EXPECT_FALSE(trie.Remove(kept));
    EXPECT_EQ(*trie.Insert(gone, 3), 3);
    EXPECT_EQ(trie.Size(), 1);
  }

  // A collapse below the root: (0,0) and (0,1) part at bit 0 under the
  // root's clear side; removing (0,1) puts (0,0) there alone.
  cls_PTrie<ClassObject, int, 2> trie;
  trie.Insert({0, 0}, 1);
  trie.Insert({0, 1}, 2);
  trie.Insert({1, 0}, 3);
  EXPECT_TRUE(trie.Remove({0, 1}));
  EXPECT_FALSE(trie.IsMember({0, 1}));
  EXPECT_EQ(trie.ConstGet({0, 0}), 1);
  EXPECT_EQ(trie.ConstGet({1, 0}), 3);
  cls_PTrieIter<ClassObject, int, 2> walk(trie);
  EXPECT_EQ(walk.CurrentValue(), 1);
  walk.Next();
  EXPECT_EQ(walk.CurrentValue(), 3);
  walk.Next();
  EXPECT_TRUE(walk.IsDone());
}

TEST(PTrieTest, IterationGoesByClassThenObjectAndStaysDoneAtTheEnd) {
  cls_PTrie<ClassObject, int, 2> trie;
  cls_PTrieIter<ClassObject, int, 2> walk(trie);
  EXPECT_TRUE(walk.IsDone());
  walk.First();
  EXPECT_TRUE(walk.IsDone());
  EXPECT_DEATH(walk.CurrentKey(), "");

  trie.Insert({1, 2}, 12);
  trie.Insert({1, 1}, 11);
  trie.Insert({0, 9}, 9);
  std::vector<std::pair<unsigned int, unsigned int> > order;
  for (walk.First(); !walk.IsDone(); walk.Next()) {
    order.emplace_back(walk.CurrentKey().m_ClassId, walk.CurrentKey().m_ObjectId);
  }
  EXPECT_EQ(order, (std::vector<std::pair<unsigned int, unsigned int> >{{0, 9}, {1, 1}, {1, 2}}));
  walk.Next();
  EXPECT_TRUE(walk.IsDone());
  walk.First();
  EXPECT_EQ(walk.CurrentValue(), 9);

  trie.Clear();
  EXPECT_EQ(trie.Size(), 0);
  walk.First();
  EXPECT_TRUE(walk.IsDone());
}

// Zero and every single bit of a two-word key: each branch parts one key
// from all those below it, so the lowest keys lie as deep as the key is wide.
TEST(PTrieTest, IterationWalksATrieAsDeepAsItsKeyIsWide) {
  cls_PTrie<ClassObject, int, 2> trie;
  std::vector<std::pair<unsigned int, unsigned int> > expected{{0, 0}};
  trie.Insert({0, 0}, 0);
  for (int bit = 0; bit < 64; ++bit) {
    ClassObject const key{bit < 32 ? 0u : 1u << (bit - 32), bit < 32 ? 1u << bit : 0u};
    trie.Insert(key, bit + 1);
    expected.emplace_back(key.m_ClassId, key.m_ObjectId);
  }
  std::vector<std::pair<unsigned int, unsigned int> > order;
  int value = 0;
  for (cls_PTrieIter<ClassObject, int, 2> walk(trie); !walk.IsDone(); walk.Next()) {
    order.emplace_back(walk.CurrentKey().m_ClassId, walk.CurrentKey().m_ObjectId);
    EXPECT_EQ(walk.CurrentValue(), value++);
  }
  EXPECT_EQ(order, expected);
}

TEST(PTrieTest, ConstGetOfAnAbsentKeyAborts) {
  cls_PTrie<unsigned int, int, 1> trie;
  // abort(), not a fault from following a null leaf.
  EXPECT_EXIT(trie.ConstGet(7), testing::KilledBySignal(SIGABRT), "");
  trie.Insert(6, 60);
  EXPECT_EXIT(trie.ConstGet(7), testing::KilledBySignal(SIGABRT), "");
  EXPECT_EQ(trie.ConstGet(6), 60);
}

}  // namespace
