#pragma once

#include <mutex>
#include <utility>

#include "platform/KRSpinLock.h"

/// The lock that guards the field at this address: one of a few dozen shared by all fields, so that a field has none of
/// its own. Never taken twice by one thread; nothing is called while it is held.
KRSpinLock& krFieldLock(const void* field) noexcept;

/// A field whose accessors are atomic: `get` answers a whole value, `set` replaces it, from any thread.
///
/// The old value is dropped after the lock has been left, so that a destructor may use atomic fields itself.
template <class T>
class KRAtomic {
 public:
  KRAtomic() = default;
  explicit KRAtomic(T value) : value_(std::move(value)) {}
  KRAtomic(const KRAtomic&) = delete;
  KRAtomic& operator=(const KRAtomic&) = delete;

  T get() const {
    const std::lock_guard lock(krFieldLock(this));
    return value_;
  }

  /// The value without a lock and without counting: while no other thread sets it.
  const T& borrow() const noexcept { return value_; }

  void set(T value) {
    const std::lock_guard lock(krFieldLock(this));
    std::swap(value_, value);
  }

 private:
  T value_{};
};
