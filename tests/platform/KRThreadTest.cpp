#include "platform/KRThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace {

/// Shared by both threads, so that it outlives whichever ends first.
using Promise = std::shared_ptr<std::promise<std::thread::id>>;

Promise makePromise() {
  return std::make_shared<std::promise<std::thread::id>>();
}

/// Tells on which thread it dies.
class Witness : public KRObject {
 public:
  explicit Witness(Promise died) : died_(std::move(died)) {}
  ~Witness() override { died_->set_value(std::this_thread::get_id()); }

 private:
  Promise died_;
};

template <class T>
bool isReady(const std::shared_future<T>& future) {
  return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

TEST(KRThread, TheObjectLivesUntilTheWorkHasEndedAndDiesOnItsThread) {
  const Promise died = makePromise();
  const auto death = died->get_future().share();
  const Promise worked = makePromise();
  std::promise<void> mayEnd;
  auto object = krMake<Witness>(died);
  ASSERT_TRUE(krDetach(object, [end = mayEnd.get_future().share(), worked] {
    end.wait();
    worked->set_value(std::this_thread::get_id());
  }));
  object = nullptr;
  EXPECT_FALSE(isReady(death));
  mayEnd.set_value();
  const std::thread::id worker = worked->get_future().get();
  EXPECT_NE(worker, std::this_thread::get_id());
  EXPECT_EQ(death.get(), worker);
}

TEST(KRThread, NothingToKeepAndNothingToDoAreFine) {
  EXPECT_TRUE(krDetach(nullptr, nullptr));
  const Promise done = makePromise();
  ASSERT_TRUE(krDetach(nullptr, [done] { done->set_value({}); }));
  done->get_future().wait();
}

TEST(KRThread, WhatTheWorkHoldsGoesBeforeTheObject) {
  const Promise died = makePromise();
  const auto death = died->get_future().share();
  const Promise released = makePromise();
  bool wasAlive = false;
  std::shared_ptr<void> held(nullptr, [&wasAlive, death, released](void*) {
    wasAlive = !isReady(death);
    released->set_value({});
  });
  ASSERT_TRUE(krDetach(krMake<Witness>(died), [held = std::move(held)] {}));
  released->get_future().wait();
  death.wait();
  EXPECT_TRUE(wasAlive);
}

}  // namespace
