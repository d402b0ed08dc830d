#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "contacts/stores/KRStoredBook.h"
#include "contacts/vcard/KRVCardGroup.h"
#include "contacts/vcard/KRVCardReader.h"
#include "import/KRPersonLoadNote.h"
#include "platform/KRResult.h"

/// Puts the contacts and groups of files into a user's book, one after the other as they are read, and accounts for
/// each of them. The book changes in memory only, until the host saves it.
///
/// A contact is equal to another one when everything that is shown of them is equal; identifiers, and lines that the
/// contact model does not know, do not count. Contacts of the same UID with other content are the host's to decide.
/// Contacts that were put in before, also from the same file, count as being there. Cards of groups become groups, or
/// add members to the group of the same UID (of the same name when the card has none).
///
/// One thread at a time; the callbacks are called from `addFile` and its like, on the caller's thread.
class KRBookImport {
 public:
  /// What becomes of a contact whose UID the book has with other content.
  enum class Choice : uint8_t {
    /// It is rejected.
    Skip,
    /// The one in the book gets its values; lines of that one's card that the model does not know stay.
    Update,
    /// It is added under a new identifier.
    Both,
  };
  using Asker = std::function<Choice(const ABPerson& imported, const ABPerson& existing)>;

  /// A record that did not get into the book. Lines and cards are counted from 1; 0 where that is not known.
  struct Reject {
    KRString file{};
    size_t line = 0;
    size_t card = 0;
    /// A sentence in English without a full stop, which does not repeat the place.
    KRString reason{};
    /// The record as it stands in the file; in UTF-16 and UTF-32 as UTF-8.
    std::string bytes{};
  };
  /// Called at the end of each file, in the file's order.
  using RejectSink = std::function<void(Reject)>;

  struct Options {
    Choice existing = Choice::Skip;
    /// Asked in place of `existing`. May be none.
    Asker ask{};
    /// Whether equal contacts are added under a new identifier too, and not skipped.
    bool addsEqual = false;
    /// Gets a copy of each contact as it was before its update, as the trash does. May be none.
    KRRef<KRAddressBook> former{};
    RejectSink rejects{};
    /// What was passed over inside of contacts, and between them.
    KRVCardNoteSink notes{};
    /// Told after every piece that was read, with its size in bytes.
    std::function<void(size_t)> progress{};
  };

  /// Each record that was read counts once in `added`, `equal`, `updated`, `conflicts`, `lost`, `groupsAdded`,
  /// `groupsKnown` or `groupsRejected`.
  struct Counts {
    size_t added = 0;
    size_t equal = 0;
    size_t updated = 0;
    /// Of the same UID with other content, and skipped.
    size_t conflicts = 0;
    /// Cards without an end, or too large; rows that cannot be read.
    size_t lost = 0;
    size_t groupsAdded = 0;
    size_t groupsKnown = 0;
    size_t groupsRejected = 0;
    /// Members of groups that are no contacts of the book.
    size_t missingMembers = 0;
    /// Contacts that came into a group, each as often.
    size_t memberships = 0;
    /// Places in the text that could not be understood, without `lost`.
    size_t notes = 0;

    size_t all() const noexcept {
      return added + equal + updated + conflicts + lost + groupsAdded + groupsKnown + groupsRejected;
    }
    bool changesBook() const noexcept { return added + updated + groupsAdded + memberships > 0; }
  };

  /// The book's contacts have been read (`load`).
  KRBookImport(KRRef<KRStoredBook> book, Options options);

  /// Reads a file, or standard input, which is kept in memory. A failure is one of the file system's, or
  /// `InvalidArgument` when there is text but no card; what was read before it is in the book.
  KRResult<void> addFile(KRText path);
  KRResult<void> addStandardInput();

  using PersonSink = std::function<void(const IKRPerson&)>;
  /// Reads a file of another kind: hands over its persons and what was passed over.
  using Loading = std::function<void(const PersonSink& persons, const KRPersonLoadNoteSink& notes)>;
  /// Puts in the persons of a file that another loader reads, each as a record under a new identifier. A record that
  /// the loader tells to be lost is rejected, other notes are counted.
  void addLoaded(KRText file, const Loading& load);
  /// The same for one person.
  void addPerson(const IKRPerson& person);

  /// Puts the groups of all files into the book; after the last file, since groups name contacts of any.
  void addGroups();

  const Counts& counts() const noexcept { return counts_; }

 private:
  struct GroupCard {
    KRVCardGroup group;
    Reject record;
  };
  using Index = std::unordered_map<uint64_t, ABPerson*>;

  template <class Read>
  KRResult<void> read(KRString file, Read feed);
  void take(const KRRef<ABPerson>& person);
  void takeConflict(const KRRef<ABPerson>& person, ABPerson& existing);
  void add(const KRRef<ABPerson>& person, uint64_t content);
  void update(ABPerson& existing, const ABPerson& person);
  void addGroup(const GroupCard& card);
  KRRef<KRGroup> groupFor(const KRVCardGroup& group);
  /// Where the contact is from, in words: the book, or a file of this import.
  KRString placeOf(const ABPerson& existing) const;
  void reject(const ABPerson& person, KRString reason);
  void takeLost(const KRVCardPlace& place, std::string bytes);
  void flushRejects();

  const std::string& contentKey(const IKRPerson& person, std::string& to);
  ABPerson* equalTo(const ABPerson& person, uint64_t& content);
  ABPerson* holderOf(KRText UID) const;
  void enter(ABPerson& person);

  const KRRef<KRStoredBook> book_;
  Options options_;
  Counts counts_;
  KRHold hold_;
  std::string key_;
  std::string otherKey_;
  std::string card_;
  /// The book's contacts by the hash of their content, and by that of their UID, under which the contacts of the files
  /// stand too that are there already.
  Index byContent_;
  Index byUID_;
  /// The files of the contacts that are new in the book.
  std::unordered_map<const ABPerson*, KRString> fileOf_;
  std::vector<GroupCard> groups_;

  // The file that is being read.
  KRString file_;
  KRVCardPlace place_;
  std::vector<Reject> rejects_;
  std::vector<KRVCardPlace> lost_;
};
