#pragma once

#include <string>

#include "app/Terminal.h"
#include "contacts/KRAddressBookManager.h"
#include "contacts/stores/KRStoredBook.h"

/// The user's address books as the commands see them: those of the shared manager, which is loaded when a book of it is
/// first asked for. A book is called by its ID, or by its name where only one has it.
namespace UserBooks {

/// The shared manager with all books of the user, the default one in front, and the trash.
KRAddressBookManager& manager(Terminal& terminal);

/// The book that the word calls, which may be one that cannot be opened; null when there is none. Throws `Unusable`
/// when several books have that name.
KRAddressBook* find(const std::string& word, Terminal& terminal);
/// The same, but throws `Unusable` when there is none.
KRRef<KRAddressBook> get(const std::string& word, Terminal& terminal);

/// Throws `Unusable` for a word that calls neither a book nor anything at a path, unless it reads like the path of a
/// file: whoever opens that tells why it cannot be.
void checkFile(const std::string& word, Terminal& terminal);

/// That book, or the default one when the word is empty, with its contacts read. Throws `Unusable` when there is none
/// or it cannot be read; when there is no book but the trash, that says how to add one.
KRRef<KRAddressBook> opened(const std::string& word, Terminal& terminal);

/// That book, to be changed. Throws `Unusable` also when it is one that is not written to.
KRRef<KRStoredBook> writable(const std::string& word, Terminal& terminal);
KRRef<KRStoredBook> writable(KRAddressBook& book);

/// Throws `Unusable` when the file is the book's own, or stands in its folder: written as a whole it would lose what
/// the book holds beside. No file is "" or "-".
void checkApart(const std::string& file, const KRAddressBook& book);
/// Throws `Unusable` when the file is the very one that is read.
void checkApart(const std::string& file, const std::string& source);

bool isTrash(const KRAddressBook& book);

/// "Family (sqlite:0A1B, /home/ann/contacts.sqlite)", escaped.
std::string described(const KRAddressBook& book);

}  // namespace UserBooks
