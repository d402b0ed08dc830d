#include "platform/KRSlab.h"

#include <new>

KRSlab* KRSlab::create(uint32_t capacity) {
  void* room = ::operator new(sizeof(KRSlab) + capacity);
  return new (room) KRSlab(capacity);
}

void KRSlab::destroy() noexcept {
  this->~KRSlab();
  ::operator delete(this);
}
