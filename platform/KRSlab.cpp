#include "platform/KRSlab.h"

#include <sys/mman.h>

#include <new>

namespace {

/// Has the system lay the pages of a block ready in one go, which takes two thirds of the time that they take one by
/// one when they are first written to. A wish: without it they come as they are touched.
void layReady([[maybe_unused]] void* block, [[maybe_unused]] size_t size) noexcept {
#ifdef MADV_POPULATE_WRITE
  constexpr uintptr_t kPage = 4096;
  const uintptr_t from = (reinterpret_cast<uintptr_t>(block) + kPage - 1) / kPage * kPage;
  const uintptr_t to = (reinterpret_cast<uintptr_t>(block) + size) / kPage * kPage;
  if (from < to) madvise(reinterpret_cast<void*>(from), to - from, MADV_POPULATE_WRITE);
#endif
}

}  // namespace

KRSlab* KRSlab::create(uint32_t capacity) {
  void* room = ::operator new(sizeof(KRSlab) + capacity);
  // A shared block is filled to its end.
  if (capacity == kSharedCapacity) layReady(room, sizeof(KRSlab) + capacity);
  return new (room) KRSlab(capacity);
}

void KRSlab::destroy() noexcept {
  this->~KRSlab();
  ::operator delete(this);
}
