#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "tests/contacts/stores/StoreSamples.h"
#include "tests/support/KRTestFolder.h"

/// A kind of address book, for tests of rules that hold for all of them.
struct KRBookMaker {
  std::string name;
  /// Makes an empty book in a new folder, before it is first opened.
  std::function<void(const KRTestFolder& folder)> make;
  /// Opens the book that is kept in the folder, with what was saved.
  std::function<KRRef<KRAddressBook>(const KRTestFolder& folder)> open;
  /// False for a book that is gone with its memory.
  bool keeps;
  /// Whether contacts stand in the same order when the book is opened again; else in that of their identifiers.
  bool keepsOrder;
  /// How many random cases a test tries: fewer where each save is a service's work.
  int rounds = 30;

  friend std::ostream& operator<<(std::ostream& out, const KRBookMaker& maker) { return out << maker.name; }
};

/// The books of a kind of store.
inline KRBookMaker krBookMaker(const KRStoreKind& kind) {
  return {kind.name, kind.make,
          [kind](const KRTestFolder& folder) { return KRRef<KRAddressBook>(kind.opened(folder)); }, true,
          kind.keepsOrder};
}

/// The kinds of books that this test program can make: `BookMakers.cpp` beside its tests.
const std::vector<KRBookMaker>& krBookMakers();

/// The one book of a library in the folder.
inline KRRef<KRAddressBook> krLibraryBook(const KRTestFolder& folder) {
  const std::string path = folder.at("library.db");
  const auto library = KRSQLiteLibrary::open(KRText(std::string_view(path)), KRSQLiteLibrary::Mode::Create);
  if (!library) return {};
  const auto books = (*library)->books();
  if (!books) return {};
  const auto book = books->empty() ? (*library)->addBook("Book") : (*library)->book(books->front().ID);
  return book ? KRRef<KRAddressBook>(*book) : KRRef<KRAddressBook>();
}
