#include "platform/KRSlab.h"

#include <new>

#include "platform/KRPages.h"

KRSlab* KRSlab::create(uint32_t capacity) {
  void* room = ::operator new(sizeof(KRSlab) + capacity);
  // A shared block is filled to its end.
  if (capacity == kSharedCapacity) KRPages::layReady(room, sizeof(KRSlab) + capacity);
  return new (room) KRSlab(capacity);
}

void KRSlab::destroy() noexcept {
  this->~KRSlab();
  ::operator delete(this);
}
