#pragma once

#include <string>
#include <vector>

#include "app/Terminal.h"
#include "contacts/model/KRAddressBook.h"

/// Opens files as one address book.
namespace BookOpener {

/// Reads the files in their order; "-" is standard input. Throws `Unusable` naming the file when one cannot be read,
/// has an unknown extension, or holds text but no contact. Cards that cannot be read are counted on standard error,
/// each with its line and the reason when `verbose`.
KRRef<KRAddressBook> open(const std::vector<std::string>& files, bool verbose, Terminal& terminal);

}  // namespace BookOpener
