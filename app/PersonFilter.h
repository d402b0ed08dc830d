#pragma once

#include <string>
#include <vector>

#include "contacts/model/KRAddressBook.h"

namespace CLI {
class App;
}

/// The words `--where` and `--id`, which narrow a command to some contacts of a book.
///
/// `--where TEXT` keeps contacts that contain the text, whatever its case, in one value: the name shown, a part of the
/// name, a phone number, a field of an address, the service or the user of an account, a date in its text form, and so
/// on. Labels and pictures are not looked at. Given several times, all texts must be there. `--id ID` keeps the contact
/// of exactly that ID; given several times, all of them.
class PersonFilter {
 public:
  /// Declares the words.
  void addTo(CLI::App& words);

  /// Whether any of the words was used.
  bool isNarrow() const noexcept { return !texts_.empty() || !IDs_.empty(); }
  bool matches(const IKRPerson& person) const;

  /// Throws `Unusable` when an ID was asked for that no contact of the book has: a mistake, other than a text that is
  /// nowhere.
  void check(KRAddressBook& book) const;

 private:
  std::vector<std::string> texts_;
  std::vector<std::string> IDs_;
};
