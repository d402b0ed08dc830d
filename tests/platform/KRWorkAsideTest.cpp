#include "platform/KRWorkAside.h"

#include <gtest/gtest.h>

#include <future>
#include <numeric>
#include <thread>
#include <vector>

namespace {

TEST(KRWorkAsideThreads, DoesAllWorkInTheOrderGiven) {
  for (const unsigned processors : {1U, 2U}) {
    std::vector<int> done;
    KRWorkAside aside(processors);
    for (int i = 0; i < 1000; ++i) aside.add([&done, i] { done.push_back(i); });
    aside.wait();
    std::vector<int> expected(1000);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(done, expected);
    aside.add([&done] { done.push_back(-1); });
    aside.wait();
    EXPECT_EQ(done.size(), 1001U);
  }
}

TEST(KRWorkAsideThreads, GoesOnBesideTheCaller) {
  std::promise<void> goOn;
  bool isDone = false;
  KRWorkAside aside(2);
  // Would wait for ever on the caller's own thread.
  aside.add([&] {
    goOn.get_future().wait();
    isDone = true;
  });
  goOn.set_value();
  aside.wait();
  EXPECT_TRUE(isDone);
}

TEST(KRWorkAsideThreads, WorksOnTheCallersThreadWithOneProcessor) {
  std::thread::id thread;
  KRWorkAside aside(1);
  aside.add([&] { thread = std::this_thread::get_id(); });
  EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(KRWorkAsideThreads, EndsItsWorkBeforeItGoes) {
  int done = 0;
  {
    KRWorkAside aside(2);
    for (int i = 0; i < 100; ++i) aside.add([&done] { ++done; });
  }
  EXPECT_EQ(done, 100);
}

TEST(KRWorkAsideThreads, WaitsForNothing) {
  KRWorkAside aside(2);
  aside.wait();
}

}  // namespace
