#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "tests/support/KRTestFolder.h"

/// A kind of address book, for tests of rules that hold for all of them.
struct KRBookMaker {
  const char* name;
  /// Opens the book that is kept in the folder: the first time it is empty, later it has what was saved.
  KRRef<KRAddressBook> (*open)(const KRTestFolder& folder);
  /// False for a book that is gone with its memory.
  bool keeps;

  friend std::ostream& operator<<(std::ostream& out, const KRBookMaker& maker) { return out << maker.name; }
};

/// A book that keeps its persons as cards in one file, by nothing but the reader and the writer of cards.
class KRCardsBook : public KRAddressBook {
 public:
  explicit KRCardsBook(const KRTestFolder& folder)
      : KRAddressBook("cards"_kr, "Cards"_kr), path_(folder.at("cards.vcf")) {
    KRVCardReader::read(KRTestFolder::contentOf(path_), *this);
  }

  KRResult<void> saveNow() override {
    std::string cards;
    const KRVCardWriter writer(KRVCardVersion::V30);
    for (const IKRPerson& person : allPersons()) writer.write(person, cards);
    std::ofstream(path_, std::ios::binary) << cards;
    return {};
  }

 private:
  const std::string path_;
};

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

inline const std::vector<KRBookMaker>& krBookMakers() {
  static const std::vector<KRBookMaker>& makers = *new std::vector<KRBookMaker>{
      {"Memory",
       [](const KRTestFolder&) -> KRRef<KRAddressBook> { return krMake<KRAddressBook>("memory"_kr, "Memory"_kr); },
       false},
      {"Cards", [](const KRTestFolder& folder) -> KRRef<KRAddressBook> { return krMake<KRCardsBook>(folder); }, true},
      {"SQLite", krLibraryBook, true},
  };
  return makers;
}
