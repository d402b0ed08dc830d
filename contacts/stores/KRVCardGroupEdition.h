#pragma once

#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "contacts/stores/KRBookStore.h"
#include "contacts/vcard/KRVCardFile.h"
#include "contacts/vcard/KRVCardGroup.h"

/// The identifiers by which the members of groups can be named that have none in their cards. Those of them that are
/// stored and not changed are put among the changed ones, as their cards get a line more; so this comes before the
/// changes are shared out.
std::unordered_map<const IKRPerson*, KRString> krNameMembers(KRStoreChanges& changes);

/// What a save makes of the cards of groups in files. Made when the changed and added contacts have their new records,
/// which say by which identifiers members are named. First all groups that stand in files are shown to it in the order
/// in which they are read, then it says what becomes of each file.
///
/// Only lines of members change: those of contacts of the book that are not in the group go, others stay whether or not
/// anybody is known by them. Of several contacts with one identifier, the line names all. Of several cards with one
/// identifier, the first gets the new members. A group whose members change and whose card has no identifier gets the
/// one that was made for it, or it would be another group from then on.
///
/// Does nothing when no groups are to be written. Lives no longer than the changes.
class KRVCardGroupEdition {
 public:
  explicit KRVCardGroupEdition(const KRStoreChanges& changes);

  /// The groups of a file, as `krGroupsOf` has them.
  void consider(const std::vector<KRVCardGroup>& groups);
  /// Adds what is to become of the groups of a file. Each file once, in the order in which they were considered.
  struct OfFile {
    /// By the place among the file's groups.
    std::vector<std::pair<size_t, KRVCardGroupChange>> changed;
    std::vector<size_t> removed;
    bool isEmpty() const noexcept { return changed.empty() && removed.empty(); }
    /// The same for the whole file.
    KRVCardFile::Changes in(const KRVCardFile& file) const;
  };
  OfFile next(const std::vector<KRVCardGroup>& groups);
  /// The groups that stand in no file that was considered.
  std::vector<KRVCardGroup> added() const;

 private:
  using Names = std::unordered_set<KRString>;
  struct Wanted {
    KRString name;
    /// In the book's order, as their cards have them, and without "urn:uuid:".
    KRStringList members;
    Names names;
    /// Those that some card names already.
    Names present;
    bool isPresent = false;
    bool isBegun = false;
  };

  void gather(const KRStoreChanges& changes);
  KRVCardGroupChange changeOf(const KRVCardGroup& group, Wanted& wanted) const;

  bool isActive_;
  /// Everybody whom a line could name.
  Names contacts_;
  std::unordered_map<KRString, Wanted> wanted_;
  std::vector<KRString> order_;
};
