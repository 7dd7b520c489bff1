#include "atr_NaturalOrder.h"
#include "cow_Btree.h"
#include "cow_BtreeIterator.h"
#include "cow_String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
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
  explicit Live(int v = 0) : value(v) { ++s_Count; }
  Live(Live const& other) : value(other.value) { ++s_Count; }
  Live& operator=(Live const&) = default;
  ~Live() { --s_Count; }
  int value;
};
int Live::s_Count = 0;

using Tree = cow_Btree<int, Live>;
using Node = cow_BtreeNode<int, Live>;
using Entries = std::vector<std::pair<int, int> >;

// Checks key order and heights below node; returns the height (-1: none).
int CheckSubtree(Node const* node, Node const* low, Node const* high) {
  if (node == nullptr) return -1;
  if (low) {
    EXPECT_LT(low->ConstGetKey(), node->ConstGetKey());
  }
  if (high) {
    EXPECT_GT(high->ConstGetKey(), node->ConstGetKey());
  }
  int const height = 1 + std::max(CheckSubtree(node->Left().ConstGet(), low, node),
                                   CheckSubtree(node->Right().ConstGet(), node, high));
  EXPECT_EQ(height, node->MaxDepth()) << "at key " << node->ConstGetKey();
  return height;
}

// The tree's structure holds and it walks as expected both ways.
void ExpectContents(Tree const& tree, std::map<int, int> const& expected) {
  CheckSubtree(tree.Root().ConstGet(), nullptr, nullptr);
  EXPECT_EQ(static_cast<int>(expected.size()), tree.Size());
  Entries forward, backward;
  cow_BtreeIterator<int, Live> it(tree);
  for (; !it.IsDone(); it.Next()) forward.emplace_back(it.CurrentKey(), it.CurrentValue().value);
  for (it.Last(); !it.IsDone(); it.Previous()) backward.emplace_back(it.CurrentKey(), it.CurrentValue().value);
  EXPECT_EQ(Entries(expected.begin(), expected.end()), forward);
  EXPECT_EQ(Entries(expected.rbegin(), expected.rend()), backward);
}

void CollectNodes(Node const* node, std::set<Node const*>& nodes) {
  if (node == nullptr) return;
  nodes.insert(node);
  CollectNodes(node->Left().ConstGet(), nodes);
  CollectNodes(node->Right().ConstGet(), nodes);
}

// Number of nodes of tree that other does not hold.
std::size_t PrivateNodes(Tree const& tree, Tree const& other) {
  std::set<Node const*> mine, theirs;
  CollectNodes(tree.Root().ConstGet(), mine);
  CollectNodes(other.Root().ConstGet(), theirs);
  std::size_t count = 0;
  for (Node const* node : mine) count += theirs.count(node) == 0;
  return count;
}

}  // namespace

TEST(BtreeTest, MatchesAStandardMapBothWaysAndCopiesKeepTheirContents) {
  {
    std::mt19937 random(99);
    Tree tree;
    std::map<int, int> expected;
    std::vector<std::pair<Tree, std::map<int, int> > > copies;
    for (int step = 0; step < 20000; ++step) {
      int const key = static_cast<int>(random() % 500) - 250;
      int const value = static_cast<int>(random() % 1000);
      switch (random() % 5) {
        case 0:
          EXPECT_EQ(expected.count(key) == 0, tree.Insert(key, Live(value)));
          expected[key] = value;
          break;
        case 1:
          EXPECT_EQ(expected.emplace(key, value).second, tree.InsertUnlessMember(key, Live(value)));
          break;
        case 2:
        case 3:
          EXPECT_EQ(expected.erase(key) == 1, tree.Remove(key));
          break;
        default:
          if (Live* found = tree.Find(key)) found->value = expected.at(key) = value;
      }
      if (random() % 1000 == 0) copies.emplace_back(tree, expected);
      if (step % 2000 == 0) ExpectContents(tree, expected);
    }
    ExpectContents(tree, expected);
    ASSERT_GT(copies.size(), 5u);
    for (auto const& [copy, contents] : copies) ExpectContents(copy, contents);
  }
  EXPECT_EQ(0, Live::s_Count);
}

TEST(BtreeTest, SortedInsertionAndRemovalKeepTheTreeShallow) {
  Tree ascending, descending;
  for (int key = 0; key < 4096; ++key) {
    ascending.Insert(key, Live(key));
    descending.Insert(-key, Live(key));
  }
  EXPECT_LE(ascending.Depth(), 13);
  EXPECT_LE(descending.Depth(), 13);
  for (int key = 0; key < 4096; key += 2) ascending.Remove(key);
  EXPECT_LE(ascending.Depth(), 12);
}

TEST(BtreeTest, InsertReplacesInsertUnlessMemberKeepsAndMissingKeysReadTheNullValue) {
  Tree tree;
  EXPECT_EQ(0, tree.Get(5).value);
  tree.SetNullValue(Live(-1));
  EXPECT_TRUE(tree.Insert(1, Live(10)));
  EXPECT_FALSE(tree.Insert(1, Live(11)));
  EXPECT_FALSE(tree.InsertUnlessMember(1, Live(12)));
  EXPECT_EQ(1, tree.Size());
  EXPECT_EQ(11, tree.ConstGet(1).value);
  EXPECT_EQ(-1, tree.Get(5).value);
  EXPECT_EQ(-1, tree.ConstGet(5).value);
  EXPECT_EQ(nullptr, tree.ConstFind(5));
  std::unique_ptr<Tree> copy(tree.Copy());
  EXPECT_EQ(-1, copy->GetNullValue().value);
}

TEST(BtreeTest, CopiesShareNodesUntilAWriterCopiesItsPath) {
  Tree tree;
  for (int key = 0; key < 127; ++key) tree.Insert(key, Live(key));
  std::unique_ptr<Tree> copy(tree.Copy());
  Tree assigned;
  assigned = tree;
  EXPECT_FALSE(copy->InsertUnlessMember(5, Live(0)));
  EXPECT_FALSE(copy->Remove(200));
  EXPECT_EQ(0, copy->Get(300).value);
  EXPECT_EQ(0u, PrivateNodes(*copy, tree));
  EXPECT_EQ(3, tree.Root().ReferenceCount());

  // The lowest key ends the left spine, and only the spine is copied.
  std::size_t spine = 0;
  for (Node const* node = tree.Root().ConstGet(); node != nullptr; node = node->Left().ConstGet()) ++spine;
  copy->Get(0).value = -5;
  EXPECT_EQ(spine, PrivateNodes(*copy, tree));

  assigned.Remove(63);
  assigned.Clear();
  EXPECT_TRUE(assigned.IsEmpty());
  EXPECT_EQ(0, assigned.Depth());
  std::map<int, int> all;
  for (int key = 0; key < 127; ++key) all[key] = key;
  ExpectContents(tree, all);
}

TEST(BtreeTest, IteratorWalksItsSnapshotAndStopsAtBothEnds) {
  Tree tree;
  for (int key : {5, 3, 8, 1, 4}) tree.Insert(key, Live(key));
  cow_BtreeIterator<int, Live> it(tree);
  tree.Remove(3);
  tree.Insert(2, Live(2));
  tree.Get(5).value = 50;
  Entries entries;
  for (; !it.IsDone(); it.Next()) entries.emplace_back(it.CurrentKey(), it.CurrentValue().value);
  EXPECT_EQ((Entries{{1, 1}, {3, 3}, {4, 4}, {5, 5}, {8, 8}}), entries);
  it.Next();
  EXPECT_TRUE(it.IsDone());
  it.First();
  it.Previous();
  EXPECT_TRUE(it.IsDone());
  it.Last();
  EXPECT_EQ(8, it.CurrentKey());
  EXPECT_DEATH((it.Next(), it.CurrentKey()), "");
}

TEST(BtreeTest, StringKeysFollowTheNaturalOrderSwitch) {
  auto order = [] {
    cow_Btree<cow_String, int> tree;
    for (char const* key : {"a10", "a2", "a1", ""}) tree.Insert(cow_String(key), 1);
    EXPECT_TRUE(tree.IsMember(cow_String()));
    std::string joined;
    for (cow_BtreeIterator<cow_String, int> it(tree); !it.IsDone(); it.Next()) joined += it.CurrentKey().CStr() + std::string(",");
    return joined;
  };
  EXPECT_EQ(",a1,a10,a2,", order());
  atr_setNaturalOrder(true);
  EXPECT_EQ(",a1,a2,a10,", order());
  atr_setNaturalOrder(false);
}
