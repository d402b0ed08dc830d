#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "contacts/stores/KRBookStore.h"
#include "contacts/stores/KRDesktopJournal.h"
#include "contacts/stores/KRDesktopService.h"

/// A book of the desktop's own address book service. Contact lists are groups; contacts stand in the order of their
/// identifiers, as the service has none.
///
/// The service takes contacts some at a time and each of these steps whole, so a save that fails halfway has done some
/// of the changes: those are settled, the others stay in memory. Nothing is removed before everything else stands.
/// What was changed by others since it was read is found out before anything is written; the service itself does not
/// guard the moment between the two.
///
/// The service writes cards its own way: version 3.0, its own parameters, a new time of change. No line is lost.
class KRDesktopBookStore : public KRBookStore {
 public:
  KRDesktopBookStore(KRString ID, KRString name, KRString place, std::unique_ptr<KRDesktopBook> book);

  KRString ID() const override { return ID_; }
  KRString name() const override { return name_; }
  KRString kind() const override;
  /// Where the service keeps the book, in the user's words, such as the account's name.
  KRString place() const override { return place_; }

  KRResult<size_t> count() override;
  KRResult<KRStoreContent> read() override;
  KRResult<void> write(KRStoreChanges& changes) override;
  bool canChangeGroups() const override { return !book_->isReadOnly(); }

 private:
  struct List {
    KRRef<KRGroup> group;
    KRDesktopCard card;
  };
  using Cards = KRDesktopJournal::Cards;
  struct Card {
    KRCardRecord record;
    KRStoreKey key;
  };

  KRError named(KRError error) const;
  KRError changedOutside(const KRGroup& list) const;
  const std::string& UIDOf(const KRStoredPerson& person) const;
  KRStoreKey newKey(const std::string& UID, int64_t stamp);

  KRResult<Cards> fetch(const std::vector<std::string>& UIDs);
  KRResult<void> writeInTurn(KRStoreChanges& changes);
  /// That nothing that is to be written was changed by others. Removals of what is gone already are done with.
  KRResult<void> check(KRStoreChanges& changes);
  KRResult<void> checkLists();
  KRResult<void> addPersons(KRStoreChanges& changes);
  KRResult<void> changePersons(KRStoreChanges& changes);
  KRResult<void> removePersons(KRStoreChanges& changes);
  KRResult<void> writeLists(const KRStoreChanges& changes);
  KRResult<void> writeList(const KRStoredGroup& group, const std::vector<struct KRDesktopMember>& members,
                           const std::unordered_set<std::string>& ours);
  KRResult<void> removeLists(const std::vector<KRStoredGroup>& groups);
  std::string freeUID(const KRString& wanted, std::unordered_set<std::string>& given) const;
  /// The cards as they stand now, in the order of the UIDs; what was sent where they could not be read.
  std::vector<Card> settled(const std::vector<std::string>& UIDs, const std::vector<std::string>& sent,
                            const KRResult<Cards>& now);

  const KRString ID_;
  const KRString name_;
  const KRString place_;
  const std::unique_ptr<KRDesktopBook> book_;
  KRDesktopJournal journal_;
  KRDesktopCardReader reader_;
  /// The identifiers of the persons, by the `place` of their keys, and all that are taken.
  std::vector<std::string> UIDs_;
  std::unordered_set<std::string> taken_;
  std::vector<List> lists_;
};
