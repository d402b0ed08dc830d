#include "platform/KRMainQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

class KRMainQueueTest : public testing::Test {
 protected:
  ~KRMainQueueTest() override {
    queue_.setPoster(nullptr);
    queue_.drain();
  }
  void note(char letter) {
    queue_.post([this, letter] { order_ += letter; });
  }

  KRMainQueue& queue_ = KRMainQueue::shared();
  std::string order_;
};

TEST_F(KRMainQueueTest, CallsWaitUntilTheyAreDrained) {
  note('a');
  note('b');
  queue_.post(nullptr);
  EXPECT_EQ(order_, "");
  EXPECT_EQ(queue_.drain(), 2U);
  EXPECT_EQ(order_, "ab");
  EXPECT_EQ(queue_.drain(), 0U);
}

TEST_F(KRMainQueueTest, CallsPostedByCallsWaitForTheNextTime) {
  queue_.post([this] { note('x'); });
  EXPECT_EQ(queue_.drain(), 1U);
  EXPECT_EQ(order_, "");
  EXPECT_EQ(queue_.waitAndDrain(), 1U);
  EXPECT_EQ(order_, "x");
}

TEST_F(KRMainQueueTest, WaitingEndsWithACallFromAnotherThread) {
  bool done = false;
  std::thread worker([&] { queue_.post([&] { done = true; }); });
  while (!done) queue_.waitAndDrain();
  worker.join();
}

TEST_F(KRMainQueueTest, APosterGetsWhatWaitsAndThenEverything) {
  std::vector<KRMainQueue::Job> taken;
  note('a');
  queue_.setPoster([&](KRMainQueue::Job job) { taken.push_back(std::move(job)); });
  note('b');
  ASSERT_EQ(taken.size(), 2U);
  EXPECT_EQ(queue_.drain(), 0U);
  for (const auto& job : taken) job();
  EXPECT_EQ(order_, "ab");
  queue_.setPoster(nullptr);
  note('c');
  EXPECT_EQ(taken.size(), 2U);
  queue_.drain();
  EXPECT_EQ(order_, "abc");
}

TEST_F(KRMainQueueTest, APosterMayRunCallsAtOnceAndTheyMayPost) {
  queue_.setPoster([](const KRMainQueue::Job& job) { job(); });
  queue_.post([this] {
    note('b');
    order_ += 'a';
  });
  EXPECT_EQ(order_, "ab");
}

TEST_F(KRMainQueueTest, APosterMayBeTakenAwayByACall) {
  queue_.setPoster([](const KRMainQueue::Job& job) { job(); });
  queue_.post([this] {
    note('l');
    queue_.setPoster(nullptr);
  });
  EXPECT_EQ(order_, "");
  EXPECT_EQ(queue_.waitAndDrain(), 1U);
  EXPECT_EQ(order_, "l");
}

TEST_F(KRMainQueueTest, EachThreadsOrderIsKept) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 2000;
  std::vector<int> last(kThreads, -1);
  std::atomic<int> inside{0};
  int run = 0;
  bool isOrdered = true;
  queue_.setPoster([&](const KRMainQueue::Job& job) {
    EXPECT_EQ(inside.fetch_add(1), 0);
    job();
    inside.fetch_sub(1);
  });
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int call = 0; call < kCalls; ++call) {
        queue_.post([&, thread, call] {
          isOrdered = isOrdered && last[static_cast<size_t>(thread)] == call - 1;
          last[static_cast<size_t>(thread)] = call;
          ++run;
        });
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(isOrdered);
  EXPECT_EQ(run, kThreads * kCalls);
}

}  // namespace
