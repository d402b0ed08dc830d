#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "contacts/model/KRReading.h"
#include "platform/KRHash.h"
#include "platform/KRHashIndex.h"
#include "platform/KRText.h"

inline uint64_t krValueHash(KRText text) noexcept {
  return text.hash();
}

/// In step with the equality of address views, for which an empty field is an absent one.
inline uint64_t krValueHash(const KRAddressView& address) noexcept {
  uint64_t running = address.countryCode.hash();
  for (const KRText field : address.fields) running = krHashMix(running, field.hash());
  if (address.further == nullptr) return running;
  for (const KRObjectAddress::Field& field : *address.further) {
    running = krHashMix(krHashMix(running, field.name.hash()), field.value.hash());
  }
  return running;
}

/// The different values of one contact that a walk has met so far. Emptied for each contact, it needs no memory of its
/// own for most: a few values are looked through, more have an index, so that ten thousand cost no more each.
template <class Value>
class KRSeenValues {
 public:
  static constexpr size_t kNew = static_cast<size_t>(-1);

  void empty() {
    // Not "{}": in a template Clang 14 never destroys such an argument.
    if (values_.size() > kFew) index_ = KRHashIndex();
    values_.clear();
  }

  /// The place of the equal value that was there before, counted from 0 in the order of first appearance; `kNew` when
  /// there was none, and the value has been added.
  size_t placeOrAdd(const Value& value) {
    if (values_.size() <= kFew) {
      for (size_t place = 0; place < values_.size(); ++place) {
        if (values_[place] == value) return place;
      }
    } else {
      const uint32_t place = index_.find(krValueHash(value), [&](uint32_t at) { return values_[at] == value; });
      if (place != KRHashIndex::kNone) return place;
    }
    add(value);
    return kNew;
  }

 private:
  static constexpr size_t kFew = 8;

  void add(const Value& value) {
    values_.push_back(value);
    if (values_.size() <= kFew) return;
    // The first value too many brings those before it along.
    const size_t first = values_.size() == kFew + 1 ? 0 : values_.size() - 1;
    for (size_t place = first; place < values_.size(); ++place) {
      index_.add(krValueHash(values_[place]), static_cast<uint32_t>(place));
    }
  }

  std::vector<Value> values_;
  KRHashIndex index_;
};
