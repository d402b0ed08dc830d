#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRVCardBook.h"
#include "contacts/vcard/KRVCardVersion.h"

/// The contacts of a book as the text of a vCard file, and what of them the file does not hold.
namespace CardConversion {

/// Every contact in the book's order, each under the identifier that it has in the book (what was read from a row gets
/// one of its own), then the cards of groups.
std::string converted(KRVCardBook& book, KRVCardVersion version);

/// A contact that is not the same any more when the written file is read.
struct Loss {
  /// How the contact is called.
  std::string person;
  /// The names of the properties whose values differ, as they are shown.
  std::string properties;
};

/// Reads the text again and compares it with the book, contact by contact.
std::vector<Loss> losses(KRVCardBook& book, std::string_view written);

/// The names of the properties in which two contacts differ, as they are shown; empty when they are the same.
std::string differences(const IKRPerson& person, const IKRPerson& written);

}  // namespace CardConversion
