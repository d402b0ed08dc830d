#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRAddressBook.h"

/// Tells whether a book has a contact already: one of which everything that is shown is equal, as when files are
/// imported. Lines that the contact model does not know do not count.
class EqualPersons {
 public:
  /// Of the persons that the book holds now.
  explicit EqualPersons(KRAddressBook& book);

  /// Whether one is there of the same identifier too.
  bool has(const IKRPerson& person);
  /// Whether one is there of any identifier.
  bool hasEqual(const IKRPerson& person);
  void add(const IKRPerson& person);

 private:
  std::string contentOf(const IKRPerson& person);

  std::unordered_map<std::string, std::vector<KRString>> known_;
  KRHold hold_;
};
