#include "platform/KRSpinLock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace {

TEST(KRSpinLockThreads, LetOneInAtATime) {
  constexpr int kThreads = 4;
  constexpr int kTimes = 20000;
  KRSpinLock lock;
  // Not atomic: counts are lost where two threads are inside.
  int count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int j = 0; j < kTimes; ++j) {
        const std::lock_guard inside(lock);
        ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, kThreads * kTimes);
}

}  // namespace
