#include "platform/KRAtomic.h"

#include <array>
#include <cstddef>
#include <cstdint>

KRSpinLock& krFieldLock(const void* field) noexcept {
  constexpr size_t kLocks = 64;
  // A line of memory each, so that threads with different fields do not wait for each other's.
  struct alignas(64) Lock {
    KRSpinLock lock;
  };
  static std::array<Lock, kLocks> locks;
  // Fields lie at multiples of eight; the multiplication spreads neighbours over the locks.
  const uint64_t address = reinterpret_cast<uintptr_t>(field) >> 3U;
  return locks[(address * 0x9e3779b97f4a7c15U) >> 58U].lock;
}
