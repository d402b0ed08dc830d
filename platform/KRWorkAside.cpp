#include "platform/KRWorkAside.h"

#include <sched.h>

#include <algorithm>
#include <system_error>
#include <utility>

unsigned KRWorkAside::processors() noexcept {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return static_cast<unsigned>(CPU_COUNT(&allowed));
  // More processors than the set has room for.
  return std::max(std::thread::hardware_concurrency(), 1U);
}

KRWorkAside::KRWorkAside(unsigned processors) : hasSecond_(processors > 1) {}

KRWorkAside::~KRWorkAside() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(lock_);
    isOver_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void KRWorkAside::start() {
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    // No thread to be had: the work is done here.
  }
}

void KRWorkAside::add(std::function<void()> work) {
  if (hasSecond_ && !thread_.joinable()) start();
  if (!thread_.joinable()) return work();
  {
    const std::lock_guard lock(lock_);
    waiting_.push_back(std::move(work));
  }
  changed_.notify_all();
}

void KRWorkAside::wait() {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [this] { return waiting_.empty() && !isBusy_; });
  if (const std::exception_ptr thrown = std::exchange(thrown_, nullptr)) std::rethrow_exception(thrown);
}

void KRWorkAside::run() {
  std::unique_lock lock(lock_);
  while (true) {
    changed_.wait(lock, [this] { return !waiting_.empty() || isOver_; });
    if (waiting_.empty()) return;
    const std::function<void()> work = std::move(waiting_.front());
    waiting_.pop_front();
    isBusy_ = true;
    lock.unlock();
    std::exception_ptr thrown;
    try {
      work();
    } catch (...) {
      thrown = std::current_exception();
    }
    lock.lock();
    if (thrown && !thrown_) thrown_ = thrown;
    isBusy_ = false;
    changed_.notify_all();
  }
}
