#include "platform/RecursiveLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/platform/ThreadFaults.h"

namespace emstatus::test {
namespace {

void Increment(RecursiveLock& lock, int& value, int depth) {
  const RecursiveGuard guard(lock);
  if (depth > 0) Increment(lock, value, depth - 1);
  ++value;
}

TEST(RecursiveLock, IsHeldUntilTheLastUnlock) {
  RecursiveLock lock;
  int value = 0;
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 1000; ++round) {
        Increment(lock, value, 2);
      }
    });
  }
  threads.clear();
  EXPECT_EQ(value, 4 * 1000 * 3);
}

TEST(RecursiveLock, IsGivenBackByItsOwnerOnly) EM_NO_THREAD_SAFETY_ANALYSIS {
  RecursiveLock lock;
  std::atomic<bool> taken{false};
  lock.Lock();
  std::jthread other([&]() EM_NO_THREAD_SAFETY_ANALYSIS {
    lock.Unlock();
    const RecursiveGuard guard(lock);
    taken = true;
  });
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  EXPECT_FALSE(taken);
  lock.Unlock();
  other.join();
  EXPECT_TRUE(taken);
}

TEST(RecursiveLock, LocksNothingWithoutItsMutex) {
  const ThreadFault fault("pthread_mutex_init", 11);
  RecursiveLock lock;
  EXPECT_FALSE(lock.Initialised());
  int value = 0;
  const RecursiveGuard guard(lock);
  std::jthread([&] { Increment(lock, value, 1); });
  EXPECT_EQ(value, 2);
}

}  // namespace
}  // namespace emstatus::test
