#include "cls_StorageType.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace {
struct FirstTag;
struct SecondTag;
struct RacedTag;
}  // namespace

TEST(StorageTypeTest, EachKindKeepsOneIdOfItsOwnAlsoWhenThreadsRaceForIt) {
  int const first = cls_StorageType<FirstTag>::Id();
  EXPECT_GT(first, 0);
  EXPECT_EQ(first, cls_StorageType<FirstTag>::Id());
  EXPECT_NE(first, cls_StorageType<SecondTag>::Id());

  constexpr int kThreads = 8;
  std::vector<int> seen(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back([&seen, i] { seen[i] = cls_StorageType<RacedTag>::Id(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(1u, std::set<int>(seen.begin(), seen.end()).size());
  EXPECT_EQ(seen[0], cls_StorageType<RacedTag>::Id());
  EXPECT_NE(first, seen[0]);
}
