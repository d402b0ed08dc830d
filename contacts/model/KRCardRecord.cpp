#include "contacts/model/KRCardRecord.h"

#include <bit>

KRCardRecord::KRCardRecord(const KRCardRecord& other) noexcept
    : slab_(other.slab_),
      offset_(other.offset_),
      rowCount_(other.rowCount_),
      decodedSize_(other.decodedSize_),
      cardSize_(other.cardSize_),
      present_(other.present_) {
  if (slab_ != nullptr) slab_->retain();
}

const KRCardRow* KRCardRecord::find(uint8_t what) const noexcept {
  if (!has(what)) return nullptr;
  // Each property of a lower number has a row at least, and all of them stand before.
  const auto before = static_cast<unsigned>(std::popcount(present_ & ((1U << what) - 1U)));
  const KRCardRow* row = rows().data() + before;
  while (row->what != what) ++row;
  return row;
}

KRString KRCardRecord::text(const KRCardRow& row) const {
  if (row.size == 0) return ""_kr;
  if (slab_->capacity() > KRSlab::kSharedCapacity) return KRString(view(row));
  return KRString::slice(slab_, offset_ + row.offset, row.size);
}
