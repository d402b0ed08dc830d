#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"

/// The findings of one address book that its owner wants to see no more. They are known by `krFindingKey`: by what the
/// contacts are and hold, so that they outlive another reading, another identifier and an import anew; and come up
/// again when something that concerns them changes.
///
/// They are kept in a file of the user's own for each book, named by the digest of the book's identifier, in the folder
/// "ignored" of the host's data folder (docs/ignored-findings.md). It is written as a whole or not at all; what another
/// process remembered or forgot meanwhile stays so. A file that cannot be understood is left alone.
///
/// One thread at a time.
class KRIgnoredFindings {
 public:
  struct Entry {
    /// `krFindingKey`.
    KRString key;
    /// The day, in ISO 8601 and UTC.
    KRString date;
    KRString issueName;
    /// The names of the contacts, and the finding's sentence, as they were on that day.
    KRString persons;
    KRString describe;
  };

  /// Those of the book; none when nothing was remembered yet. `Damaged` when the file is not what it ought to be, and
  /// the errors of files.
  static KRResult<KRIgnoredFindings> ofBook(const KRString& bookID);

  /// Those of every book for which some are remembered, by the books' identifiers in their order; last, an error for
  /// each file that is not what it ought to be.
  static std::vector<KRResult<KRIgnoredFindings>> ofAllBooks();

  /// The file, which may not be there. Nothing without a folder for it.
  static KRString path(const KRString& bookID);

  /// The identifier of the book.
  const KRString& bookID() const noexcept { return bookID_; }
  /// In the order in which they were remembered.
  const std::vector<Entry>& entries() const noexcept { return entries_; }
  bool holds(const KRIssueObject& finding) const;
  /// Remembers the finding, in memory; one that is remembered already, and one in no context, changes nothing. Whether
  /// it is new.
  bool add(const KRIssueObject& finding);
  /// Forgets the entry of that key, in memory.
  void forget(const KRString& key);
  bool hasChanges() const noexcept { return !added_.empty() || !forgotten_.empty(); }
  /// Writes what was added and forgotten to the file as it is by then. After a failure all is as before, in memory too.
  KRResult<void> save();

  /// Takes the findings that it holds out of the result, and the contexts that are empty then; how many findings.
  size_t takeOutOf(KRIssueFindResult& result) const;

 private:
  explicit KRIgnoredFindings(KRString bookID) : bookID_(std::move(bookID)) {}
  KRResult<void> read();
  static KRResult<KRIgnoredFindings> ofFile(const KRString& file);
  KRResult<void> take(std::string_view text, const KRString& path);
  void put(Entry entry);
  std::string text() const;

  KRString bookID_;
  std::vector<Entry> entries_;
  std::unordered_set<KRString> keys_;
  /// What is not in the file yet.
  std::vector<Entry> added_;
  std::vector<KRString> forgotten_;
};
