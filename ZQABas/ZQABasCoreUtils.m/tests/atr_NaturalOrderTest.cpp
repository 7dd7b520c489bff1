#include "atr_NaturalOrder.h"

#include <gtest/gtest.h>

TEST(NaturalOrderTest, DigitRunsCompareByValue) {
  EXPECT_LT(strnatcmp("a2", "a10"), 0);
  EXPECT_GT(strnatcmp("a10", "a2"), 0);
  EXPECT_EQ(0, strnatcmp("x007y", "x7y"));
  EXPECT_LT(strnatcmp("x7y", "x7z"), 0);
  EXPECT_LT(strnatcmp("x12a", "x13"), 0);
  EXPECT_LT(strnatcmp("", "a"), 0);
  EXPECT_EQ(0, strnatcmp(nullptr, ""));
  EXPECT_LT(strnatcmp("B", "a"), 0);
  EXPECT_GT(strnatcmp("\xe9", "z"), 0);
  EXPECT_LT(strnatcmp("file9.zdb", "file10.zdb"), 0);
  EXPECT_LT(strnatcmp("v1.9", "v1.10"), 0);
}

TEST(NaturalOrderTest, SettingIsOffUntilAProgramSetsIt) {
  EXPECT_FALSE(atr_getNaturalOrder());
  atr_setNaturalOrder(true);
  EXPECT_TRUE(atr_getNaturalOrder());
  atr_setNaturalOrder(false);
  EXPECT_FALSE(atr_getNaturalOrder());
}
