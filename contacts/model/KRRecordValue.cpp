#include "contacts/model/KRRecordValue.h"

const KRMultiValueView::Entry* KRMultiValueView::valueAtIndex(size_t index) const noexcept {
  return index < entries_.size() ? &entries_[index] : nullptr;
}

const KRMultiValueView::Entry* KRMultiValueView::valueForIdentifier(uint64_t identifier) const noexcept {
  return identifier < entries_.size() ? &entries_[identifier] : nullptr;
}
