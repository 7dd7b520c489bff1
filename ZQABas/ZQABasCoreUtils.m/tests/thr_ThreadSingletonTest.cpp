#include "thr_ThrSingletonRegistry.h"
#include "thr_ThreadSingleton.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

namespace {

class Metadata : public thr_ThreadSingleton<Metadata> {
public:
  static inline std::atomic<int> s_Destroyed{0};
  std::thread::id m_Owner = std::this_thread::get_id();

private:
  friend class thr_ThreadSingleton<Metadata>;
  Metadata() = default;
  ~Metadata() override { ++s_Destroyed; }
};

int g_FinalizerCalls = 0;
void CountingFinalizer() { ++g_FinalizerCalls; }

}  // namespace

TEST(ThreadSingletonTest, EachThreadHasItsOwnInstanceEndedAtThreadExit) {
  constexpr int kThreads = 6;
  int destroyed = Metadata::s_Destroyed.load();
  int live = Metadata::LiveInstances();
  struct Observation {
    Metadata* instance = nullptr;
    bool stableAndOwned = false;
  };
  std::vector<Observation> seen(kThreads);
  // The threads hold their instances until all have looked, so no address
  // can be reused by a later thread.
  std::atomic<int> arrived{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] {
      Metadata& mine = Metadata::Instance();
      seen[i] = {&mine, &Metadata::Instance() == &mine && mine.m_Owner == std::this_thread::get_id()};
      ++arrived;
      while (arrived.load() < kThreads) std::this_thread::yield();
    });
  for (std::thread& thread : threads) thread.join();

  std::set<Metadata*> distinct;
  for (Observation const& observation : seen) {
    distinct.insert(observation.instance);
    EXPECT_TRUE(observation.stableAndOwned);
  }
  EXPECT_EQ(std::size_t{kThreads}, distinct.size());
  EXPECT_EQ(destroyed + kThreads, Metadata::s_Destroyed.load());
  EXPECT_EQ(live, Metadata::LiveInstances());
}

TEST(ThreadSingletonTest, FinalizeAllEndsOnlyTheCallingThreadsInstances) {
  thr_ThrSingletonRegistry& registry = thr_ThrSingletonRegistry::Instance();
  registry.FinalizeAll();
  registry.Register(&CountingFinalizer);
  registry.Register(&CountingFinalizer);

  std::atomic<int> step{0};
  std::thread helper([&] {
    Metadata::Instance();
    step.store(1);
    while (step.load() != 2) std::this_thread::yield();
  });
  while (step.load() != 1) std::this_thread::yield();
  Metadata::Instance();
  EXPECT_EQ(2, Metadata::LiveInstances());

  g_FinalizerCalls = 0;
  registry.FinalizeAll();
  EXPECT_EQ(1, g_FinalizerCalls);
  EXPECT_EQ(1, Metadata::LiveInstances());
  EXPECT_EQ(std::this_thread::get_id(), Metadata::Instance().m_Owner);
  EXPECT_EQ(2, Metadata::LiveInstances());

  step.store(2);
  helper.join();
  registry.FinalizeAll();
  EXPECT_EQ(0, Metadata::LiveInstances());
}
