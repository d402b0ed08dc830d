#include "contacts/model/KRCardRecord.h"

KRCardRecord::KRCardRecord(const KRCardRecord& other) noexcept
    : slab_(other.slab_),
      offset_(other.offset_),
      rowCount_(other.rowCount_),
      cardSize_(other.cardSize_),
      present_(other.present_) {
  if (slab_ != nullptr) retain();
}

void KRCardRecord::retain() const noexcept {
  slab_->retain();
  if (KRSlab* card = head().slab; card != nullptr) card->retain();
}

void KRCardRecord::release() const noexcept {
  if (KRSlab* card = head().slab; card != nullptr) card->release();
  slab_->release();
}

KRString KRCardRecord::text(const KRCardRow& row) const {
  if (row.textSize() == 0) return ""_kr;
  const Head place = row.isInCard() ? head() : Head{slab_, offset_};
  if (place.slab->capacity() > KRSlab::kSharedCapacity) return KRString(view(row));
  return KRString::slice(place.slab, place.offset + row.offset, row.textSize());
}
