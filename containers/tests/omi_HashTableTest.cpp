#include "cow_String.h"
#include "omi_HashTable.h"

#include <gtest/gtest.h>

#include <random>
#include <unordered_map>

TEST(HashTableTest, MatchesAnUnorderedMapUnderRandomInsertsAndLookups) {
  std::mt19937 random(11);
  omi_HashTable<long long, int> numbers;
  omi_HashTable<cow_String, long long> names;
  std::unordered_map<long long, int> numberModel;
  std::unordered_map<std::string, long long> nameModel;
  for (int step = 0; step < 20000; ++step) {
    // Keys that share low bits or high bits, as offsets and counters do.
    long long key = (static_cast<long long>(random() % 5000) << (step % 3 == 0 ? 32 : 2));
    bool added = numbers.Insert(key, step);
    EXPECT_EQ(numberModel.emplace(key, step).second, added);
    std::string text = "name-" + std::to_string(random() % 3000);
    EXPECT_EQ(nameModel.emplace(text, step).second, names.Insert(cow_String(text.c_str()), step));
  }
  EXPECT_EQ(static_cast<int>(numberModel.size()), numbers.Size());
  EXPECT_EQ(static_cast<int>(nameModel.size()), names.Size());
  for (auto const& [key, value] : numberModel) {
    ASSERT_NE(nullptr, numbers.Find(key));
    EXPECT_EQ(value, *numbers.Find(key));
  }
  for (auto const& [text, value] : nameModel) EXPECT_EQ(value, *names.Find(cow_String(text.c_str())));
  EXPECT_EQ(nullptr, numbers.Find(7));
  EXPECT_FALSE(names.IsMember(cow_String("absent")));
  EXPECT_TRUE(names.Insert(cow_String(""), 1));
  EXPECT_EQ(1, *names.Find(cow_String("")));
  numbers.Clear();
  EXPECT_TRUE(numbers.IsEmpty());
  EXPECT_EQ(nullptr, numbers.Find(0));
}
