#include "omi_Btree.h"
#include "omi_BtreeIterator.h"
#include "omi_CountedValue.h"

#include "atr_NaturalOrder.h"
#include "cow_String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

namespace {

using Tree = omi_Btree<int, omi_CountedValue>;

double DepthBound(int size) { return 2 * std::log2(size) + 2; }

// The height of node's subtree, checking on the way that every stored depth
// is exact: a leaf 0, else one more than its deeper child.
template <class K, class V>
int CheckedHeight(omi_BtreeNode<K, V> const* node) {
  if (node == nullptr) return -1;
  int const height = 1 + std::max(CheckedHeight(node->Left()), CheckedHeight(node->Right()));
  EXPECT_EQ(node->MaxDepth(), height) << "at key " << node->ConstGetKey();
  return height;
}

// Walks the tree both ways and compares with the reference map.
template <class K, class V, class Reference>
void ExpectSameEntries(omi_Btree<K, V> const& tree, Reference const& reference) {
  ASSERT_EQ(tree.Size(), static_cast<int>(reference.size()));
  omi_BtreeIterator<K, V> walk(tree);
  auto expected = reference.begin();
  for (; !walk.IsDone(); walk.Next(), ++expected) {
    ASSERT_NE(expected, reference.end());
    EXPECT_EQ(walk.CurrentKey(), expected->first);
    EXPECT_EQ(walk.CurrentValue(), expected->second);
  }
  EXPECT_EQ(expected, reference.end());
  auto backward = reference.rbegin();
  for (walk.Last(); !walk.IsDone(); walk.Previous(), ++backward) {
    ASSERT_NE(backward, reference.rend());
    EXPECT_EQ(walk.CurrentKey(), backward->first);
  }
  EXPECT_EQ(backward, reference.rend());
}

TEST(BtreeTest, MatchesStdMapUnderRandomInsertsRemovesAndGets) {
  {
    Tree tree;
    tree.SetNullValue(omi_CountedValue(-1));
    std::map<int, omi_CountedValue> reference;
    std::mt19937 random(20240601);
    for (int step = 0; step < 40000; ++step) {
      int const key = static_cast<int>(random() % 3000);
      switch (random() % 4) {
        case 0:
        case 1: {
          bool const added = reference.emplace(key, omi_CountedValue(step)).second;
          ASSERT_EQ(tree.Insert(key, omi_CountedValue(step)), added) << "key " << key;
          break;
        }
        case 2:
          ASSERT_EQ(tree.Remove(key), reference.erase(key) == 1) << "key " << key;
          break;
        default: {
          auto const found = reference.find(key);
          EXPECT_EQ(tree.IsMember(key), found != reference.end());
          EXPECT_EQ(tree.ConstGet(key).m_Value, found != reference.end() ? found->second.m_Value : -1);
        }
      }
      if (step % 5000 == 0) {
        ExpectSameEntries(tree, reference);
        CheckedHeight(tree.Root());
      }
    }
    ExpectSameEntries(tree, reference);
    EXPECT_EQ(CheckedHeight(tree.Root()), tree.Depth());
    EXPECT_LE(tree.Depth(), DepthBound(tree.Size()));

    // A copy owns its nodes: changing one leaves the other as it was.
    Tree copy = tree.Copy();
    EXPECT_EQ(copy.GetNullValue().m_Value, -1);
    copy.Get(reference.begin()->first).m_Value = 12345;
    copy.Remove(reference.rbegin()->first);
    ExpectSameEntries(tree, reference);
    Tree assigned;
    assigned = copy;
    EXPECT_EQ(assigned.Get(reference.begin()->first).m_Value, 12345);
    EXPECT_EQ(assigned.Size(), static_cast<int>(reference.size()) - 1);

    for (auto const& entry : reference) ASSERT_TRUE(tree.Remove(entry.first));
    EXPECT_TRUE(tree.IsEmpty());
    EXPECT_EQ(tree.Depth(), 0);
    omi_BtreeIterator<int, omi_CountedValue> walk(tree);
    EXPECT_TRUE(walk.IsDone());
  }
  EXPECT_EQ(omi_CountedValue::s_Live, 0);
}

TEST(BtreeTest, InsertKeepsExistingValueAndMissingKeysGiveNullValue) {
  omi_Btree<long long, int> tree;
  EXPECT_EQ(&tree.Get(7), &tree.GetNullValue());
  EXPECT_FALSE(tree.Remove(7));
  EXPECT_TRUE(tree.Insert(7, 70));
  EXPECT_FALSE(tree.Insert(7, 71));
  EXPECT_EQ(tree.Get(7), 70);
  EXPECT_EQ(tree.Size(), 1);
  tree.SetNullValue(-5);
  EXPECT_EQ(tree.ConstGet(8), -5);
  EXPECT_TRUE(tree.Remove(7));
  EXPECT_EQ(tree.Root(), nullptr);
  EXPECT_TRUE(tree.IsEmpty());
}

TEST(BtreeTest, SingleRotationCountsMissingChildAsLeaf) {
  omi_Btree<int, int> tree;
  for (int key : {1, 2, 3}) tree.Insert(key, key);
  // Root 1 sees depths 0 (no left child) and 1 (the chain 2-3): no rotation.
  EXPECT_EQ(tree.Root()->ConstGetKey(), 1);
  EXPECT_EQ(tree.Depth(), 2);
  tree.Insert(4, 4);
  // Now 0 against 2: one left rotation lifts 2 to the root, 3-4 on its right.
  ASSERT_EQ(tree.Root()->ConstGetKey(), 2);
  EXPECT_EQ(tree.Root()->Left()->ConstGetKey(), 1);
  EXPECT_EQ(tree.Root()->Right()->ConstGetKey(), 3);
  EXPECT_EQ(tree.Depth(), 2);
}

TEST(BtreeTest, DepthStaysLogarithmicForDescendingAndRandomKeys) {
  int const count = 100000;
  omi_Btree<int, int> descending;
  for (int key = count; key > 0; --key) descending.Insert(key, key);
  EXPECT_LE(descending.Depth(), DepthBound(count));

  omi_Btree<unsigned int, int> random;
  std::mt19937 generator(7);
  while (random.Size() < count) random.Insert(generator(), 0);
  EXPECT_LE(random.Depth(), DepthBound(count));

  // Removing every other key keeps every depth exact, which the bound and a
  // deep copy (whose stack is sized by the depth) rely on.
  for (int key = 1; key <= count; key += 2) descending.Remove(key);
  EXPECT_LE(descending.Depth(), DepthBound(count / 2));
  omi_Btree<int, int> copy(descending);
  EXPECT_EQ(copy.Depth(), descending.Depth());
  EXPECT_EQ(copy.Get(count), count);
}

// Restores byte order however the test ends.
struct NaturalOrderScope {
  NaturalOrderScope() { atr_setNaturalOrder(true); }
  ~NaturalOrderScope() { atr_setNaturalOrder(false); }
};

TEST(BtreeTest, StringKeysFollowByteOrderOrNaturalOrder) {
  std::vector<char const*> const keys{"a10", "a2", "B", "", "a", "\xe9t\xe9", "a02x"};
  auto orderOf = [&keys] {
    omi_Btree<cow_String, int> tree;
    for (char const* key : keys) tree.Insert(cow_String(key), 0);
    std::vector<std::string> order;
    for (omi_BtreeIterator<cow_String, int> walk(tree); !walk.IsDone(); walk.Next()) order.emplace_back(walk.CurrentKey().CStr());
    return order;
  };
  EXPECT_EQ(orderOf(), (std::vector<std::string>{"", "B", "a", "a02x", "a10", "a2", "\xe9t\xe9"}));
  {
    NaturalOrderScope natural;
    EXPECT_EQ(orderOf(), (std::vector<std::string>{"", "B", "a", "a2", "a02x", "a10", "\xe9t\xe9"}));
  }
  EXPECT_FALSE(atr_getNaturalOrder());

  omi_Btree<cow_String, long long> byName;
  omi_Btree<long long, cow_String> byOffset;
  byName.Insert(cow_String("pool"), 4096);
  byOffset.Insert(4096, cow_String("pool"));
  EXPECT_EQ(byName.Get(cow_String("pool")), 4096);
  EXPECT_STREQ(byOffset.Get(4096).CStr(), "pool");
}

}  // namespace
