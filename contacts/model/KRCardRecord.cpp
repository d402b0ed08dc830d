#include "contacts/model/KRCardRecord.h"

KRCardRecord::KRCardRecord(const KRCardRecord& other) noexcept
    : slab_(other.slab_),
      offset_(other.offset_),
      rowCount_(other.rowCount_),
      cardSize_(other.cardSize_),
      present_(other.present_) {
  if (slab_ != nullptr) slab_->retain();
}

KRString KRCardRecord::text(const KRCardRow& row) const {
  if (row.size == 0) return ""_kr;
  if (slab_->capacity() > KRSlab::kSharedCapacity) return KRString(view(row));
  return KRString::slice(slab_, offset_ + row.offset, row.size);
}
