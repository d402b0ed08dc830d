#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "contacts/model/KRObjectPhone.h"
#include "contacts/stores/KRStoredBook.h"
#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/support/KRTestFolder.h"

// What the tests of all stores share: how each kind is made and opened, and short ways to change and show persons.

inline KRText krPath(const std::string& path) {
  return {std::string_view(path)};
}

/// A kind of store, for the suite that all of them pass.
struct KRStoreKind {
  const char* name;
  /// Makes an empty store in the folder.
  void (*make)(const KRTestFolder& folder);
  KRResult<KRRef<KRStoredBook>> (*open)(const KRTestFolder& folder);
  /// Whether contacts are changed one by one, so that two programs can change two of them.
  bool isByContact;
  /// Whether groups can be made and changed.
  bool hasGroups;
  /// Whether this process itself writes the files, so that it can be kept from it.
  bool isWrittenHere = true;
  /// What its books answer as their place; nothing for a file or folder in the test's folder.
  const char* place = nullptr;
  /// Whether contacts are counted without reading them.
  bool canCount = true;
  /// Whether new contacts stand behind the others when the book is opened again; else all stand in the order of their
  /// identifiers.
  bool keepsOrder = true;

  std::string placeIn(const KRTestFolder& folder) const { return place == nullptr ? folder.path() : place; }
  KRRef<KRStoredBook> opened(const KRTestFolder& folder) const {
    KRResult<KRRef<KRStoredBook>> book = open(folder);
    if (!book) {
      ADD_FAILURE() << book.error().sentence;
      return {};
    }
    return *book;
  }
};

inline std::ostream& operator<<(std::ostream& stream, const KRStoreKind& kind) {
  return stream << kind.name;
}

/// The kinds that this test program knows: `StoreKinds.cpp` beside its tests.
const std::vector<KRStoreKind>& krStoreKinds();

/// The person of one card, in no book.
inline KRRef<ABPerson> krPersonOf(const std::vector<std::string>& lines) {
  const std::string card = krCard(lines);
  return ABPerson::initWithVCardRepresentation(krPath(card));
}

inline void krSetText(IKRPerson& person, const KRString& property, const std::string& text) {
  const KRProperty* descriptor = KRProperty::propertyWithName(property);
  person.setValue(krSingleValue(KRString(text), *descriptor), property);
}

/// The person of that name in the book; a failure of the test when there is none.
inline KRRef<ABPerson> krPersonNamed(KRStoredBook& book, const std::string& name) {
  for (IKRPerson& person : book.allPersons()) {
    if (person.showName() == krPath(name)) return KRRef<ABPerson>(dynamic_cast<ABPerson*>(&person));
  }
  ADD_FAILURE() << "nobody is called " << name;
  return {};
}

/// Names and notes of all persons, "Ann Lee: likes tea", in the order of the alphabet.
inline std::vector<std::string> krPeople(KRStoredBook& book) {
  std::vector<std::string> people;
  KRHold hold;
  for (const IKRPerson& person : book.allPersons()) {
    std::string line(person.showName().view());
    line.append(": ").append(person.readText(KROrdinal::Note, hold).view());
    people.push_back(line);
  }
  std::sort(people.begin(), people.end());
  return people;
}

/// A card with a name, a note, an identifier and a line that the model does not know.
inline std::vector<std::string> krNoted(const std::string& first, const std::string& note) {
  return {"N:;" + first, "FN:" + first, "UID:uid-" + first, "NOTE:" + note, "X-UNKNOWN;X-A=b:" + first + "'s own"};
}
