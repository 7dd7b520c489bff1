#include "rfm_SegmentBufferCache.h"
#include "rfm_SegmentBufferHolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Records which indices the cache asked to discard.
struct RecordingHolder : rfm_SegmentBufferHolder {
  void DiscardBuffer(int index, rfm_SegmentBuffer* buffer) override {
    ASSERT_NE(nullptr, buffer);
    discarded.push_back(index);
  }
  std::vector<int> discarded;
};

std::vector<int> LruOf(rfm_SegmentBufferCache const& cache) {
  std::vector<int> order;
  for (int place = 0; place < cache.Lru().Length(); ++place) order.push_back(cache.Lru()[place]);
  return order;
}

}  // namespace

TEST(SegmentBufferCacheTest, TheLeastRecentlyFetchedReleasedBufferIsTakenAndArmedOnesNever) {
  rfm_SegmentBufferCache cache(65536);
  ASSERT_EQ(16, cache.BufferLimit());
  RecordingHolder holder;
  for (int index = 0; index < 16; ++index) cache.Fetch(index)->Data()[0] = static_cast<char>('a' + index);
  for (int index = 1; index < 16; ++index) cache.Release(index, &holder);

  // Index 0 is oldest but still in use: index 1 goes, and its block serves 16.
  cache.Fetch(16);
  EXPECT_EQ(std::vector<int>{1}, holder.discarded);
  EXPECT_EQ(16, cache.BuffersHeld());

  // A warm index comes back with its bytes, moves to the end, and costs no
  // discard.
  EXPECT_EQ('c', cache.Fetch(2)->Data()[0]);
  EXPECT_EQ(std::vector<int>{1}, holder.discarded);
  std::vector<int> expected{0};
  for (int index = 3; index <= 16; ++index) expected.push_back(index);
  expected.push_back(2);
  EXPECT_EQ(expected, LruOf(cache));

  // A forgotten index gives up its place and is never called back.
  cache.Forget(3);
  cache.Fetch(17);
  EXPECT_EQ(std::vector<int>{1}, holder.discarded);
  cache.Fetch(18);
  EXPECT_EQ((std::vector<int>{1, 4}), holder.discarded);
}

TEST(SegmentBufferCacheTest, TheLimitIsSoftWhenEveryBufferIsInUse) {
  rfm_SegmentBufferCache cache(65536);
  for (int index = 0; index < 17; ++index) cache.Fetch(index);
  EXPECT_EQ(17, cache.BuffersHeld());

  // Segments larger than the budget keep only the buffers in use.
  rfm_SegmentBufferCache large((1 << 20) + 1);
  EXPECT_EQ(0, large.BufferLimit());
  RecordingHolder holder;
  large.Fetch(0);
  large.Release(0, &holder);
  large.Fetch(1);
  EXPECT_EQ(std::vector<int>{0}, holder.discarded);
  EXPECT_EQ(1, large.BuffersHeld());
}
