#include "platform/KRMainQueue.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

struct KRMainQueue::State {
  std::mutex lock;
  std::condition_variable arrived;
  std::deque<Job> waiting;
  std::shared_ptr<const Poster> poster;
  bool isHandingOver = false;

  /// Gives what waits to the poster. One thread at a time does so, for all, which keeps the order; a poster that posts
  /// comes back here and finds the work in hand already.
  void handOver(std::unique_lock<std::mutex>& held) {
    if (isHandingOver) return;
    isHandingOver = true;
    while (poster && !waiting.empty()) {
      const std::shared_ptr<const Poster> current = poster;
      Job job = std::move(waiting.front());
      waiting.pop_front();
      held.unlock();
      (*current)(std::move(job));
      held.lock();
    }
    isHandingOver = false;
    if (!waiting.empty()) arrived.notify_all();
  }

  static size_t run(std::deque<Job> jobs) {
    const size_t count = jobs.size();
    for (; !jobs.empty(); jobs.pop_front()) jobs.front()();
    return count;
  }
};

KRMainQueue::KRMainQueue() : state_(new State) {}

KRMainQueue& KRMainQueue::shared() {
  static auto* const only = new KRMainQueue;
  return *only;
}

void KRMainQueue::post(Job job) {
  if (!job) return;
  std::unique_lock held(state_->lock);
  state_->waiting.push_back(std::move(job));
  state_->handOver(held);
}

void KRMainQueue::setPoster(Poster poster) {
  auto next = poster ? std::make_shared<const Poster>(std::move(poster)) : nullptr;
  std::unique_lock held(state_->lock);
  state_->poster.swap(next);
  state_->handOver(held);
  held.unlock();
  // The former poster is dropped here, where it may use the queue.
}

size_t KRMainQueue::drain() {
  std::deque<Job> jobs;
  {
    const std::lock_guard held(state_->lock);
    jobs.swap(state_->waiting);
  }
  return State::run(std::move(jobs));
}

size_t KRMainQueue::waitAndDrain() {
  std::deque<Job> jobs;
  {
    std::unique_lock held(state_->lock);
    state_->arrived.wait(held, [&] { return !state_->waiting.empty(); });
    jobs.swap(state_->waiting);
  }
  return State::run(std::move(jobs));
}
