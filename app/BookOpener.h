#pragma once

#include <string>
#include <vector>

#include "app/TableOptions.h"
#include "app/Terminal.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/stores/KRStoredBook.h"
#include "contacts/vcard/KRVCardBook.h"
#include "platform/KRBuffer.h"

/// Opens what a command is given as one address book.
namespace BookOpener {

/// The book that is meant: the user's default book without words; a book of the user by its ID or name, a database file
/// of one book, or a folder, each alone; else the files in their order as one book, "-" being standard input. What is
/// at a path goes before a book of that ID. The book is entered in the shared manager.
///
/// Throws `Unusable` naming the file or book when one cannot be read, has an unknown extension, or holds text but no
/// contact. Cards that cannot be read are counted on standard error, each with its line and the reason when `verbose`;
/// delimited files are read as `tables` says.
KRRef<KRAddressBook> open(const std::vector<std::string>& words, bool verbose, Terminal& terminal,
                          const TableOptions& tables = {});

/// The one book that the word calls, to be changed: the default book for none, a book of the user, or the one at a
/// path, which is opened by its store. Throws `Unusable` as `open` does, and for what is read but not written: standard
/// input and delimited files.
KRRef<KRStoredBook> openWritable(const std::string& word, Terminal& terminal);

/// Whether the file holds vCards: by its name; what standard input brings always does.
bool holdsCards(const std::string& file);

/// The bytes of one vCard file, and the book of the contacts in them; throws and tells as `open` does. Of a delimited
/// file the contacts alone.
struct Cards {
  KRBuffer bytes;
  KRRef<KRVCardBook> book;
};
Cards openCards(const std::string& file, bool verbose, Terminal& terminal, const TableOptions& tables = {});

}  // namespace BookOpener
