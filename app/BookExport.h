#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/PersonFilter.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/vcard/KRVCardVersion.h"
#include "platform/KRProgress.h"

/// The contacts and groups of a book as the text of a vCard file.
namespace BookExport {

struct Result {
  size_t persons = 0;
  size_t groups = 0;
  /// Contacts that are not the same any more when the file is read.
  size_t losses = 0;
};

/// Hands the text out piece by piece: the contacts that the filter means, in the book's order and under the identifiers
/// that they have in the book, then the groups that they are in. With a version every card is written anew in it;
/// without, a card that holds the contact as it is keeps its bytes, and another one is written in its own version (3.0
/// where it has none). `loss` is told the contact and the properties that its card does not hold; only with a version.
Result write(KRAddressBook& book, const PersonFilter& filter, std::optional<KRVCardVersion> version,
             const std::function<void(std::string_view)>& put,
             const std::function<void(const IKRPerson&, const std::string&)>& loss, const KRProgress& progress);

/// The same as the text of a delimited file, which `import` reads back in the dialect of RFC 4180. It has no groups and
/// no identifiers. The book is walked over twice.
Result writeTable(KRAddressBook& book, const PersonFilter& filter, bool hasRawCells,
                  const std::function<void(std::string_view)>& put, const KRProgress& progress);

}  // namespace BookExport
