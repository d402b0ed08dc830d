#include "platform/KRWorkAside.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <future>
#include <new>
#include <numeric>
#include <stdexcept>
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

TEST(KRWorkAsideThreads, ThrowsWhatWorkThrewWhereItIsWaitedFor) {
  KRWorkAside aside(2);
  int done = 0;
  aside.add([] { throw std::bad_alloc(); });
  aside.add([] { throw std::runtime_error("later"); });
  aside.add([&] { ++done; });
  EXPECT_THROW(aside.wait(), std::bad_alloc);
  EXPECT_EQ(done, 1) << "what comes after it is done all the same";
  aside.add([&] { ++done; });
  EXPECT_NO_THROW(aside.wait());
  EXPECT_EQ(done, 2);
  // Nobody waits for this one.
  aside.add([] { throw std::bad_alloc(); });
}

TEST(KRWorkAsideThreads, WorksOnTheCallersThreadWithOneProcessor) {
  std::thread::id thread;
  KRWorkAside aside(1);
  aside.add([&] { thread = std::this_thread::get_id(); });
  EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(KRWorkAsideThreads, CountsTheProcessorsThatItsThreadMayUse) {
  cpu_set_t allowed;
  ASSERT_EQ(sched_getaffinity(0, sizeof allowed, &allowed), 0);
  EXPECT_EQ(KRWorkAside::processors(), static_cast<unsigned>(CPU_COUNT(&allowed)));
  unsigned ofOne = 0;
  std::thread([&] {
    cpu_set_t one;
    CPU_ZERO(&one);
    for (int i = 0; i < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++i) {
      if (CPU_ISSET(i, &allowed)) CPU_SET(i, &one);
    }
    if (sched_setaffinity(0, sizeof one, &one) == 0) ofOne = KRWorkAside::processors();
  }).join();
  EXPECT_EQ(ofOne, 1U);
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
