#pragma once

#include <string>
#include <string_view>

#include "contacts/model/ABPerson.h"

/// The card under which a store keeps a person: the person's own where it is UTF-8 and nothing was changed, else a new
/// one. It reads back as the same contact by itself, without the file that it stood in. Lives no longer than the
/// person.
class KRStoreCard {
 public:
  explicit KRStoreCard(const ABPerson& person);

  std::string_view bytes() const noexcept { return record_.card(); }
  /// The person's identifier where it cannot be read from the card, else nothing.
  KRText ID() const noexcept { return ID_; }
  /// The card's record.
  KRCardRecord takeRecord() noexcept { return std::move(record_); }

 private:
  KRCardRecord record_;
  KRString ID_;
};
