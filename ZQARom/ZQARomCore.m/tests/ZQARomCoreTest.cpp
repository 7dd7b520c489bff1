#include "ZQARomCore.h"

#include <gtest/gtest.h>

TEST(CoreTest, ModulesStartOnceAndStopOnTheBalancingCall) {
  int started = 0;
  ZQARomCore_initialize(started);
  EXPECT_EQ(6, started);
  ZQARomCore_initialize(started);
  EXPECT_EQ(6, started);

  // A module started alone before is not started again by the library.
  int alone = 0;
  ZQARomRfm_initialize(alone);
  EXPECT_EQ(0, alone);

  int stopped = 0;
  ZQARomCore_finalize(stopped);
  EXPECT_EQ(0, stopped);
  ZQARomCore_finalize(stopped);
  EXPECT_EQ(5, stopped);
  ZQARomRfm_finalize(stopped);
  EXPECT_EQ(6, stopped);
  ZQARomCore_finalize(stopped);
  EXPECT_EQ(6, stopped);
}
