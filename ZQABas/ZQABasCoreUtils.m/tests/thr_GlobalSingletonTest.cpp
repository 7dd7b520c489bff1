#include "thr_GlobalSingleton.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 8;

// Slow to build, so that every caller arrives while it is being built; its
// field is set last, so a caller handed a half-built instance would see 0.
class Cache : public thr_GlobalSingleton<Cache> {
public:
  static inline std::atomic<int> s_Constructed{0};
  static inline std::atomic<int> s_Destroyed{0};
  int m_Ready = 0;
  long m_Counter = 0;

private:
  friend class thr_GlobalSingleton<Cache>;
  Cache() {
    ++s_Constructed;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    m_Ready = 42;
  }
  ~Cache() override { ++s_Destroyed; }
};

// Runs body on kThreads threads released together, and waits for them.
template <class Body>
void RunTogether(Body body) {
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] {
      while (!go.load()) std::this_thread::yield();
      body(i);
    });
  go.store(true);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

TEST(GlobalSingletonTest, ContendingThreadsShareOneCompleteInstance) {
  Cache::Finalize();
  int constructed = Cache::s_Constructed.load();
  std::vector<Cache*> seen(kThreads, nullptr);
  std::vector<int> ready(kThreads, 0);
  RunTogether([&](int i) {
    seen[i] = &Cache::Instance();
    ready[i] = seen[i]->m_Ready;
  });
  EXPECT_EQ(constructed + 1, Cache::s_Constructed.load());
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(seen[0], seen[i]);
    EXPECT_EQ(42, ready[i]);
  }
  Cache::Finalize();
}

TEST(GlobalSingletonTest, LockExcludesOtherThreadsAndFinalizeEndsInstanceAndLock) {
  constexpr int kRounds = 2000;
  for (int pass = 0; pass < 2; ++pass) {
    Cache& cache = Cache::Instance();
    RunTogether([&](int) {
      for (int round = 0; round < kRounds; ++round) {
        thr_GlobalSingletonGuard<Cache> guard;
        // A read, a pause and a write: without exclusion updates are lost.
        long value = cache.m_Counter;
        if (round % 64 == 0) std::this_thread::yield();
        cache.m_Counter = value + 1;
      }
    });
    EXPECT_EQ(long{kThreads} * kRounds, cache.m_Counter);

    // Both come back on next use: a fresh instance, a working lock.
    int destroyed = Cache::s_Destroyed.load();
    Cache::Finalize();
    EXPECT_EQ(destroyed + 1, Cache::s_Destroyed.load());
  }
}
