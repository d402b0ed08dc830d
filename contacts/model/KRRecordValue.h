#pragma once

#include <cstdint>
#include <vector>

#include "contacts/model/KRReading.h"
#include "platform/KRText.h"

/// The platform's multi-value list as the system record interface answers it: the texts (phones, e-mails) or addresses
/// of one property, in order, with an identifier each. A borrowed view like its entries.
class KRMultiValueView {
 public:
  struct Entry {
    KRText label;
    /// The text of the entry; nothing for an address or an entry without a value.
    KRText text;
    /// The address, for address entries.
    KRAddressView address;
  };

  size_t count() const noexcept { return entries_.size(); }
  /// The entry at `index`, from 0, or null when there is none (written form: `valueAtIndex:`).
  const Entry* valueAtIndex(size_t index) const noexcept;
  /// The identifier of the entry at `index`: stable while the person is not changed (written form:
  /// `identifierAtIndex:`). Only meaningful below `count()`.
  uint64_t identifierAtIndex(size_t index) const noexcept { return index; }
  /// The entry of that identifier, or null (written form: `valueForIdentifier:`).
  const Entry* valueForIdentifier(uint64_t identifier) const noexcept;

 private:
  friend class IKRPerson;
  std::vector<Entry> entries_;
};

/// What `valueForProperty` answers: nothing, a text, or a multi-value list. Keeps alive what its views look at, so it
/// is valid until it dies or the person is changed.
class KRRecordValue {
 public:
  bool isNothing() const noexcept { return text_.isNothing() && !isList_; }
  /// The text, or nothing when the value is a list or nothing.
  KRText text() const noexcept { return text_; }
  /// The list, or null when the value is a text or nothing. A property without entries has no list.
  const KRMultiValueView* list() const noexcept { return isList_ ? &list_ : nullptr; }

 private:
  friend class IKRPerson;
  KRHold hold_;
  KRText text_;
  KRMultiValueView list_;
  bool isList_ = false;
};
