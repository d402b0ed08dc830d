#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "platform/KRObject.h"

/// The one shared instance of a class of settings: made on first use, under a lock so that racing threads get the same
/// one, and never destroyed. To be kept in an object that is never destroyed either.
template <class T>
class KRSharedInstance {
 public:
  using Maker = KRRef<T> (*)();

  explicit KRSharedInstance(Maker make) : make_(make) {}

  T& get() {
    if (T* present = shared_.load(std::memory_order_acquire)) return *present;
    const std::lock_guard lock(mutex_);
    if (T* present = shared_.load(std::memory_order_relaxed)) return *present;
    made_.push_back(make_());
    shared_.store(made_.back().get(), std::memory_order_release);
    return *made_.back();
  }

  /// The next use makes a new instance; the present one stays alive for those who use it.
  void forget() {
    const std::lock_guard lock(mutex_);
    shared_.store(nullptr, std::memory_order_release);
  }

 private:
  const Maker make_;
  std::mutex mutex_;
  std::atomic<T*> shared_ = nullptr;
  std::vector<KRRef<T>> made_;
};
