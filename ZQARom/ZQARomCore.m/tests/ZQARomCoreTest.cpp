#include "ZQARomCore.h"
#include "thr_ThreadSingleton.h"

#include <gtest/gtest.h>

namespace {

class PerThreadState : public thr_ThreadSingleton<PerThreadState> {};

}  // namespace

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

  PerThreadState::Instance();
  EXPECT_EQ(1, PerThreadState::LiveInstances());

  int stopped = 0;
  ZQARomCore_finalize(stopped);
  EXPECT_EQ(0, stopped);
  EXPECT_EQ(1, PerThreadState::LiveInstances());
  ZQARomCore_finalize(stopped);
  EXPECT_EQ(5, stopped);
  ZQARomRfm_finalize(stopped);
  EXPECT_EQ(6, stopped);
  ZQARomCore_finalize(stopped);
  EXPECT_EQ(6, stopped);

  // The library's end ends the calling thread's per-thread singletons.
  EXPECT_EQ(0, PerThreadState::LiveInstances());
}
