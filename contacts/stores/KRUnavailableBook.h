#pragma once

#include "contacts/stores/KRAddressBookProvider.h"

/// Stands in a list of books for one that cannot be opened: it says which book that is and why, has no persons, and
/// cannot be saved.
class KRUnavailableBook : public KRAddressBook {
 public:
  KRUnavailableBook(const KRBookSource& source, KRError error);

  KRString kind() const override { return kind_; }
  KRString place() const override { return place_; }
  /// Why the book could not be opened.
  const KRError& error() const noexcept { return error_; }

  /// Both answer `error`.
  KRResult<void> load() override;
  KRResult<void> saveNow() override;

 private:
  KRString kind_;
  KRString place_;
  KRError error_;
};
