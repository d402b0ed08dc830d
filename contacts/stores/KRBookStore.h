#pragma once

#include <cstdint>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRCardRecord.h"
#include "contacts/model/KRGroup.h"
#include "platform/KRResult.h"

/// Where a contact stands in its store: two numbers that mean something to the store alone, such as a row and its
/// revision.
struct KRStoreKey {
  int64_t place = 0;
  int64_t stamp = 0;
};

/// A contact as the store has it.
struct KRStoredPerson {
  KRRef<ABPerson> person;
  KRStoreKey key{};
};

/// A group and the persons in it, in no order.
struct KRStoredGroup {
  KRRef<KRGroup> group;
  std::vector<KRRef<ABPerson>> members;
};

/// Everything that a book holds: the contacts in the store's order, and its groups.
struct KRStoreContent {
  std::vector<KRStoredPerson> persons;
  std::vector<KRStoredGroup> groups;
};

/// What is to be written, and what came of it. A store marks each change as done once it stands in the store; those
/// that are not marked count as not made and are asked for again with the next save.
struct KRStoreChanges {
  /// A contact of `stored` that has other values now.
  struct Changed {
    size_t index;
    /// Set by the store: the contact's new card, and where it stands.
    KRCardRecord record{};
    KRStoreKey key{};
    bool isDone = false;
  };
  struct Removed {
    size_t index;
    bool isDone = false;
  };
  struct Added {
    KRRef<ABPerson> person;
    KRCardRecord record{};
    KRStoreKey key{};
    bool isDone = false;
  };

  /// The contacts as they were last read or written, in the store's order.
  const std::vector<KRStoredPerson>& stored;
  /// Each in the order of the book. Additions are done in this order: none behind one that is not done.
  std::vector<Changed> changed{};
  std::vector<Removed> removed{};
  std::vector<Added> added{};
  /// All groups with their members, or null when no group has changed. Members that were removed are not among them.
  const std::vector<KRStoredGroup>* groups = nullptr;

  bool isEmpty() const noexcept { return changed.empty() && removed.empty() && added.empty() && groups == nullptr; }
};

/// Where the contacts of one address book are kept. A store reads and writes; `KRStoredBook` holds the persons and
/// knows what changed.
///
/// Calls come one at a time, from any thread. A failure's sentence names the file, and the contact where it is about
/// one.
class KRBookStore {
 public:
  KRBookStore() = default;
  KRBookStore(const KRBookStore&) = delete;
  KRBookStore& operator=(const KRBookStore&) = delete;
  virtual ~KRBookStore() = default;

  /// Stable identifier of the book, the same in every process.
  virtual KRString ID() const = 0;
  /// The name shown to the user.
  virtual KRString name() const = 0;
  /// One word for people and documents, such as "sqlite".
  virtual KRString kind() const = 0;
  /// The path of the file or folder.
  virtual KRString place() const = 0;

  /// How many contacts there are, found without reading them. Where `canCount` is false this is not called: the book
  /// reads them and counts.
  virtual KRResult<size_t> count() = 0;
  virtual bool canCount() const { return true; }
  /// Reads everything. A failure gives nothing.
  virtual KRResult<KRStoreContent> read() = 0;
  /// Writes the changes and sets their `record`, `key` and `isDone`. What another program changed since it was read is
  /// never overwritten: `Changed`, and nothing is written. Unless a store says otherwise, either all changes are
  /// written or none.
  virtual KRResult<void> write(KRStoreChanges& changes) = 0;
  /// Whether groups can be made, changed and removed.
  virtual bool canChangeGroups() const = 0;
};
