#include "omi_BlkBitVect.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

TEST(BlkBitVectTest, CountAndTraversalMatchStdSet) {
  omi_BlkBitVect bits;
  std::set<unsigned int> reference;
  std::mt19937 random(31);
  for (int step = 0; step < 30000; ++step) {
    unsigned int const bit = random() % 2 ? random() % 4000 : random();
    if (random() % 3 != 0) {
      ASSERT_EQ(bits.SetBit(bit), reference.insert(bit).second);
    } else {
      ASSERT_EQ(bits.UnsetBit(bit), reference.erase(bit) == 1);
    }
    ASSERT_EQ(bits.TestBit(bit), reference.count(bit) == 1);
  }
  for (unsigned int edge : {0u, 63u, 64u, 511u, 512u, 0xffffffffu}) {
    bits.SetBit(edge);
    reference.insert(edge);
  }
  ASSERT_EQ(bits.Count(), reference.size());

  omi_BlkBitVect const copy(bits);
  omi_BlkBitVectTrav walk(copy);
  auto expected = reference.begin();
  for (bool more = walk.First(); more; more = walk.Next(), ++expected) ASSERT_EQ(walk.Current(), *expected);
  EXPECT_EQ(expected, reference.end());
  auto backward = reference.rbegin();
  for (bool more = walk.Last(); more; more = walk.Previous(), ++backward) ASSERT_EQ(walk.Current(), *backward);
  EXPECT_EQ(backward, reference.rend());

  for (unsigned int bit : reference) bits.UnsetBit(bit);
  EXPECT_TRUE(bits.IsEmpty());
  omi_BlkBitVectTrav empty(bits);
  EXPECT_FALSE(empty.First());
  EXPECT_FALSE(empty.Last());
}

}  // namespace
