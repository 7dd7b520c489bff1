#include "cow_ConstMapIterator.h"
#include "cow_ConstMapSortedIt.h"
#include "cow_Map.h"
#include "cow_String.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

// A value that counts its live instances, so that a leaked or doubly
// destroyed node shows.
struct Live {
  static int s_Count;
  explicit Live(int v) : value(v) { ++s_Count; }
  Live(Live const& other) : value(other.value) { ++s_Count; }
  Live& operator=(Live const&) = default;
  ~Live() { --s_Count; }
  int value;
};
int Live::s_Count = 0;

using Entries = std::vector<std::pair<std::string, int> >;
std::string Text(std::int64_t key) { return std::to_string(key); }
std::string Text(cow_String const& key) { return key.CStr(); }

template <class Iterator>
Entries Walk(Iterator& it) {
  Entries entries;
  for (it.First(); !it.IsDone(); it.Next()) entries.emplace_back(Text(it.CurrentKey()), it.CurrentValue().value);
  return entries;
}

// The map holds exactly expected: by lookup, in both sorted orders, and
// once each in pre-order.
template <class K>
void ExpectContents(cow_Map<K, Live> const& map, std::map<K, int> const& expected) {
  ASSERT_EQ(static_cast<int>(expected.size()), map.Size());
  Entries sorted;
  for (auto const& [key, value] : expected) {
    ASSERT_TRUE(map.IsMember(key)) << Text(key);
    EXPECT_EQ(value, map.ConstGet(key).value);
    sorted.emplace_back(Text(key), value);
  }
  cow_ConstMapSortedIt<K, Live> ascending(map), descending(map, 1);
  EXPECT_EQ(sorted, Walk(ascending));
  EXPECT_EQ(Entries(sorted.rbegin(), sorted.rend()), Walk(descending));
  cow_ConstMapIterator<K, Live> preorder(map);
  Entries const walked = Walk(preorder);
  EXPECT_EQ(std::set<Entries::value_type>(sorted.begin(), sorted.end()),
            std::set<Entries::value_type>(walked.begin(), walked.end()));
}

// Random inserts, overwrites, removals and writes through Get, against a
// std::map, with copies taken on the way that must keep their contents.
template <class K, class MakeKey>
void RunAgainstStdMap(MakeKey makeKey) {
  std::mt19937 random(20240611);
  cow_Map<K, Live> map;
  std::map<K, int> expected;
  std::vector<std::pair<cow_Map<K, Live>, std::map<K, int> > > copies;
  for (int step = 0; step < 20000; ++step) {
    K const key = makeKey(random);
    int const value = static_cast<int>(random() % 1000);
    switch (random() % 4) {
      case 0:
      case 1:
        EXPECT_TRUE(map.Insert(key, Live(value)));
        expected[key] = value;
        break;
      case 2:
        EXPECT_EQ(expected.erase(key) == 1, map.Remove(key));
        break;
      default:
        if (expected.count(key) != 0) {
          map.Get(key).value = value;
          expected[key] = value;
        }
    }
    if (random() % 1000 == 0) copies.emplace_back(map, expected);
  }
  ExpectContents(map, expected);
  ASSERT_GT(copies.size(), 5u);
  for (auto const& [copy, contents] : copies) ExpectContents(copy, contents);
}

template <class Node>
void CollectNodes(Node const* node, std::set<Node const*>& nodes) {
  if (node == nullptr) return;
  nodes.insert(node);
  CollectNodes(node->m_Left.ConstGet(), nodes);
  CollectNodes(node->m_Right.ConstGet(), nodes);
}

// Number of nodes of map that other does not hold.
template <class K>
std::size_t PrivateNodes(cow_Map<K, Live> const& map, cow_Map<K, Live> const& other) {
  std::set<cow_MapNode<K, Live> const*> mine, theirs;
  CollectNodes(map.Root().ConstGet(), mine);
  CollectNodes(other.Root().ConstGet(), theirs);
  std::size_t count = 0;
  for (auto const* node : mine) count += theirs.count(node) == 0;
  return count;
}

}  // namespace

TEST(MapTest, MatchesAStandardMapAndCopiesKeepTheirContents) {
  // Dense integers, with now and then a negative one or one that shares its low bits.
  RunAgainstStdMap<int>([](std::mt19937& random) {
    int key = static_cast<int>(random() % 300);
    if (random() % 16 == 0) key = -key;
    return random() % 16 == 0 ? key | 0x40000000 : key;
  });
  // Short texts over three letters, with shared prefixes and suffixes, the empty text among them.
  RunAgainstStdMap<cow_String>([](std::mt19937& random) {
    std::string key(random() % 6, 'a');
    for (char& c : key) c = static_cast<char>('a' + random() % 3);
    return cow_String(key.c_str());
  });
  EXPECT_EQ(0, Live::s_Count);
}

TEST(MapTest, PresentKeysAreOverwrittenAndTheLastRemovalLeavesANullRoot) {
  cow_Map<int, Live> map;
  EXPECT_FALSE(map.Remove(1));
  map.Insert(5, Live(1));
  map.Insert(37, Live(2));  // the same low five bits as 5
  map.Insert(5, Live(3));
  EXPECT_EQ(2, map.Size());
  EXPECT_EQ(3, map.ConstGet(5).value);
  EXPECT_TRUE(map.Remove(37));
  EXPECT_TRUE(map.Remove(5));
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_TRUE(map.Root().IsNull());
  EXPECT_DEATH(map.Get(5), "");
  EXPECT_DEATH(map.ConstGet(5), "");
}

TEST(MapTest, CopySharesEveryNodeAndAWriterCopiesOnlyItsPath) {
  cow_Map<int, Live> original;
  for (int key = 0; key < 64; ++key) original.Insert(key, Live(key));
  cow_Map<int, Live> copy = original;
  EXPECT_FALSE(copy.Remove(64));
  EXPECT_EQ(0u, PrivateNodes(copy, original));
  EXPECT_EQ(2, copy.Root().ReferenceCount()) << "a refused removal unshared the root";

  // Key 63 lies at depth 6, below 0, 1, 3, 7, 15 and 31.
  copy.Get(63).value = -63;
  EXPECT_EQ(7u, PrivateNodes(copy, original));
  EXPECT_EQ(63, original.ConstGet(63).value);

  // Removing key 1 moves 3, 7, 15, 31 and 63 up one level each: the root
  // and five nodes become private, and the leaf that held 63 is dropped.
  cow_Map<int, Live> second = original;
  EXPECT_TRUE(second.Remove(1));
  EXPECT_EQ(6u, PrivateNodes(second, original));
  std::map<int, int> rest;
  for (int key = 0; key < 64; ++key) rest[key] = key;
  ExpectContents(original, rest);
  rest.erase(1);
  ExpectContents(second, rest);
}

TEST(MapTest, IteratorsWalkTheirOwnSnapshotInPreorder) {
  cow_Map<int, Live> map;
  for (int key : {8, 0, 4, 1, 3, 2, 12, 5}) map.Insert(key, Live(key));
  cow_ConstMapIterator<int, Live> first(map);
  cow_ConstMapIterator<int, Live> second(map);
  map.Remove(8);
  map.Get(4).value = 7;
  // Root 8; bit 0 sends 0, 4, 2, 12 left and 1, 3, 5 right; and so on down.
  Entries const preorder = {{"8", 8}, {"0", 0}, {"4", 4}, {"12", 12}, {"2", 2}, {"1", 1}, {"5", 5}, {"3", 3}};
  EXPECT_EQ(preorder, Walk(first));
  EXPECT_EQ(preorder, Walk(second));

  auto byValueDown = [](void const* left, void const* right) {
    auto value = [](void const* element) { return (*static_cast<cow_MapNode<int, Live> const* const*>(element))->m_Value.value; };
    return value(right) - value(left);
  };
  cow_ConstMapSortedIt<int, Live> custom(map, +byValueDown);
  cow_ConstMapSortedIt<int, Live> otherDirection(map, 5);
  EXPECT_EQ((Entries{{"12", 12}, {"4", 7}, {"5", 5}, {"3", 3}, {"2", 2}, {"1", 1}, {"0", 0}}), Walk(custom));
  EXPECT_EQ(5, otherDirection.Direction());
  EXPECT_EQ("0", Walk(otherDirection).front().first);
  EXPECT_DEATH(custom.CurrentKey(), "");
}

TEST(MapTest, StringKeysBranchOnAlternateEndsAndTheEmptyStringIsAKey) {
  cow_Map<cow_String, Live> map;
  for (char const* key : {"x", "bb", "ba", "b", "d", "", "c", "a", "cb"}) map.Insert(cow_String(key), Live(1));
  // Lowest bits: a 1, b 0, c 1, d 0, x 0, the terminating zero 0. "ba"
  // parts from "bb" at depth 1 on its last character; at depth 1, its
  // length, "a" still reads a character and goes right of "c", while "cb"
  // goes left; past its length a key reads 0, so "d" goes left of "b" at
  // depth 2 and "" left of "d" at depth 3.
  cow_ConstMapIterator<cow_String, Live> it(map);
  EXPECT_EQ((Entries{{"x", 1}, {"bb", 1}, {"b", 1}, {"d", 1}, {"", 1}, {"ba", 1}, {"c", 1}, {"cb", 1}, {"a", 1}}),
            Walk(it));
  EXPECT_TRUE(map.Remove(cow_String()));
  EXPECT_TRUE(map.Remove(cow_String("bb")));
  ExpectContents(map, std::map<cow_String, int>{{"x", 1}, {"ba", 1}, {"b", 1}, {"d", 1}, {"c", 1}, {"a", 1}, {"cb", 1}});
}

TEST(MapTest, LongChainsAreWalkedAndReleasedWithoutDeepRecursion) {
  // On a stack far smaller than a recursion over the chains would need.
  auto body = [](void*) -> void* {
    // Keys equal in their low 32 bits agree on every bit the walk reads.
    cow_Map<std::int64_t, Live> left, right, half;
    for (std::int64_t i = 0; i < 6000; ++i) {
      left.Insert(i << 32, Live(0));
      right.Insert((i << 32) | 0xffffffff, Live(0));
      if (i == 3000) half = left;
    }
    cow_ConstMapIterator<std::int64_t, Live> it(right);
    EXPECT_EQ(6000u, Walk(it).size());
    EXPECT_TRUE(left.Remove(0));
    left.Clear();
    EXPECT_EQ(3001, half.Size());
    EXPECT_TRUE(half.IsMember(std::int64_t{3000} << 32));
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 64 * 1024);
  pthread_t thread;
  ASSERT_EQ(0, pthread_create(&thread, &attributes, body, nullptr));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(0, Live::s_Count);
}
