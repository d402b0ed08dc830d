#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "contacts/stores/KRBookStore.h"

/// An address book whose contacts are kept by a store: a file, a folder, a database.
///
/// Its persons are records (`ABPerson`). They are read when first asked for; the name, and where the store can the
/// count, are known without. Changes stay in memory until they are saved, and after a failed save too. Contacts that
/// another program changed meanwhile are not overwritten: the save fails with `Changed`, theirs stays in the store,
/// ours in memory; `readAgain` takes theirs.
///
/// Several threads may ask for the persons at once; changes come from one thread at a time, as in every book.
class KRStoredBook : public KRAddressBook {
 public:
  explicit KRStoredBook(std::unique_ptr<KRBookStore> store);

  const KRBookStore& store() const noexcept { return *store_; }

  /// Whether the persons have been asked for already.
  bool isRead() const noexcept { return isRead_.load(std::memory_order_acquire); }
  /// `Damaged` and the errors of files and folders.
  KRResult<void> load() override;
  /// Reads the book anew: changes that were not saved are dropped, all persons are other objects than before. When it
  /// fails, the book stays as it is.
  KRResult<void> readAgain();
  /// Whether there is anything to save. Linear in the persons.
  bool hasChanges();

  /// A new record of this book with everything that the other person shows, and, when that is a record, with the lines
  /// of its card that the model does not know. The other one stays as it is and where it is. This is how a host puts a
  /// loaded person into a user's book.
  KRRef<ABPerson> addCopy(const IKRPerson& person);

  /// The group of that identifier, or nothing.
  KRRef<KRGroup> groupWithID(KRText uniqueId);
  /// Whether the store can change groups. Where it cannot, the operations below do nothing, so that what else changed
  /// can still be saved.
  bool canChangeGroups() const { return store_->canChangeGroups(); }
  /// Makes a group; without an identifier it gets one of its own. One that is there already is answered as it is.
  /// Nothing when the store cannot change groups.
  KRRef<KRGroup> addGroup(KRString name, KRString uniqueId = {});
  /// Takes the group and all memberships in it away; its persons stay.
  void removeGroup(const KRGroup& group);
  /// Puts a person of this book into these of its groups and takes it out of all others.
  void setGroups(ABPerson& person, std::vector<KRRef<KRGroup>> groups);

  KRString kind() const override { return store_->kind(); }
  KRString place() const override { return store_->place(); }
  KRPersonList& allPersons() override;
  size_t allPersonsCount() override;
  std::vector<KRRef<KRGroup>> rootGroups() override;
  KRRef<IKRPerson> newPerson() override;
  /// A person that is no record, and one that another book holds, stays where it is: this book gets a record made from
  /// it, as `addCopy` does.
  void addPerson(IKRPerson* person) override;
  void removePersons(const KRPersonArray& persons) override;
  KRResult<void> saveNow() override;
  /// None after a save that the system ended without saying how far it came.
  KRStringList unsavedIDs() override;
  /// Reads anew what another program may have changed, unless there are changes to save.
  void update() override;

 private:
  void take(KRStoreContent content);
  void dropPersons();
  void findChanges(KRStoreChanges& changes);
  void settle(KRStoreChanges& changes);
  std::vector<KRStoredGroup> gatherGroups();

  const std::unique_ptr<KRBookStore> store_;
  std::mutex reading_;
  std::atomic<bool> isRead_{false};
  KRResult<void> readError_;
  /// What the store has, in its order; a person that was removed stays here until it is gone from the store too.
  std::vector<KRStoredPerson> stored_;
  std::vector<KRRef<KRGroup>> groups_;
  bool areGroupsChanged_ = false;
  /// Whether the last save may have reached the store although it failed.
  bool isUncertain_ = false;
};
