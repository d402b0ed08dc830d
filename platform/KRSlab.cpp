#include "platform/KRSlab.h"

#include <new>

#include "platform/KRPieces.h"

namespace {

/// Whether a block of that capacity stands in a piece.
constexpr bool isInPiece(uint32_t capacity) noexcept {
  static_assert(sizeof(KRSlab) + KRSlab::kSharedCapacity <= KRPieces::kSize);
  return KRPieces::kAreUsed && capacity == KRSlab::kSharedCapacity;
}

}  // namespace

KRSlab* KRSlab::create(uint32_t capacity) {
  return new (isInPiece(capacity) ? KRPieces::take() : ::operator new(sizeof(KRSlab) + capacity)) KRSlab(capacity);
}

void KRSlab::destroy() noexcept {
  const bool wasInPiece = isInPiece(capacity_);
  this->~KRSlab();
  wasInPiece ? KRPieces::give(this) : ::operator delete(this);
}
