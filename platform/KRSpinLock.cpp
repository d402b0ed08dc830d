#include "platform/KRSpinLock.h"

#include <thread>

void KRSpinLock::waitUntilFree() const noexcept {
  while (taken_.load(std::memory_order_relaxed)) std::this_thread::yield();
}
