#pragma once

#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRGroup.h"
#include "contacts/model/KRPersonIDs.h"
#include "contacts/model/KRProperty.h"
#include "contacts/model/KRTagManager.h"
#include "platform/KRList.h"
#include "platform/KRResult.h"
#include "platform/KRValue.h"

class ABPerson;

/// An address book. This class is a whole one that lives in memory; books with a store behind them derive from it.
///
/// A book owns its persons; a person that outlives its book answers no `addressBookID` any more. One thread at a time,
/// or readers only.
class KRAddressBook : public KRObject {
 public:
  KRAddressBook(KRString ID, KRString name);
  ~KRAddressBook() override;

  /// Stable identifier of the book.
  virtual KRString ID() const;
  /// The name shown to the user.
  virtual KRString name() const;
  /// The book's picture, or nothing.
  virtual KRRef<KRData> thumbnail() const;
  /// The large and the small logo (PNG), or nothing.
  virtual KRRef<KRData> logo1() const;
  virtual KRRef<KRData> logo2() const;
  /// Whether the book lives on a server.
  virtual bool isInternetAdressBook() const;

  /// What keeps the book, one word: "memory" for this class, "trash", "vcard", "folder", "sqlite", "desktop".
  virtual KRString kind() const;
  /// Where it is kept, such as a path; nothing for a book in memory.
  virtual KRString place() const;

  /// Reads the persons, unless that was done before, and tells what is wrong with a book that cannot be read. Without
  /// it they are read when they are first asked for, and a book that cannot be read has none.
  virtual KRResult<void> load();
  /// Every person of the book: the live list, valid while the book lives.
  virtual KRPersonList& allPersons();
  virtual size_t allPersonsCount();
  /// The groups at the top of the book.
  virtual std::vector<KRRef<KRGroup>> rootGroups();
  virtual size_t rootGroupsCount();
  /// The properties that persons of this book can hold, and those shown first.
  virtual std::vector<const KRProperty*> supportProperty();
  virtual std::vector<const KRProperty*> commonProperty();
  virtual KRTagManager* tagManager();
  /// The persons whose `ID` is in the list, in the book's order (written form: `personsForIDs:`).
  virtual std::vector<KRRef<IKRPerson>> personsForIDs(const KRStringList& IDs);

  /// A new empty person that already belongs to this book; the caller shares it with the book.
  virtual KRRef<IKRPerson> newPerson();
  /// Adds a person that belongs to no book yet; one of another book is taken over: it names this book from then on,
  /// although the list of the other keeps it too (written form: `addPerson:`). Nothing is ignored, and so is a person
  /// that is here already.
  virtual void addPerson(IKRPerson* person);
  virtual void addPersons(const std::vector<KRRef<IKRPerson>>& persons);
  /// Removes the persons from the book, in memory until `save`; those that it does not hold are passed over (written
  /// form: `removePersons:`). Linear in the persons given.
  virtual void removePersons(const KRPersonArray& persons);
  /// Writes pending changes and says nothing when that fails. While a `KRSaveScope` is open, the scope does it in the
  /// end. Books override `saveNow`.
  virtual void save();
  /// Writes pending changes at once, whether a scope is open or not. After a failure the changes are still in memory
  /// and what was stored before is whole. A book in memory has nowhere to write to and succeeds.
  virtual KRResult<void> saveNow();
  /// Whether the book keeps what others lose, as the trash does, so that it has to be written before them.
  virtual bool isSavedFirst() const;
  /// The identifiers of the persons that were changed or removed and that the store, as far as the book knows, still
  /// has as they were. None where that is not certain, and for a book in memory.
  virtual KRStringList unsavedIDs();
  /// For books that are saved first: takes out of what the last save wrote whatever `book` keeps itself, because its
  /// own save then failed (`unsavedIDs`). The list in memory stays, so that the next save writes it again. Whether
  /// something was taken out; where that fails, what was written stays.
  virtual bool takeBack(KRAddressBook& book);
  virtual void sync();
  virtual void update();

  /// Makes the identifiers of all records of the book unique; a record calls it when it is first asked for its own.
  void assignIDs(const ABPerson* asking = nullptr) { IDs_.assign(allPersons(), asking); }
  uint32_t IDSerial() const noexcept { return IDs_.serial(); }

 protected:
  KRPersonList persons_;

 private:
  KRString ID_;
  KRString name_;
  /// Whether the list may hold persons that another book has taken over.
  bool hasLostPersons_ = false;
  KRPersonIDs IDs_;
};
