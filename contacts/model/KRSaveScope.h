#pragma once

#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "platform/KRResult.h"

/// Gathers the saves that fixes and commands ask for, so that they reach the disk together: `commit` writes each book
/// once, the trash before all others, so that at no moment a contact is missing from both. What is not committed is not
/// written; the changes stay in the books' memory.
///
/// A scope is open from its making to its end, for the whole process: `save` of any book, on any thread, is gathered by
/// the scope that was opened last. Scopes may stand in one another; committing an inner one hands its books to the
/// outer. Outside every scope a save is done at once.
///
///     KRSaveScope scope;
///     handle->fix(finding);
///     if (const KRResult<void> saved = scope.commit(); !saved) show(saved.error().sentence);
class KRSaveScope {
 public:
  struct Failure {
    KRRef<KRAddressBook> book;
    KRError error;
  };

  KRSaveScope();
  /// Forgets what was gathered since the last commit.
  ~KRSaveScope();
  KRSaveScope(const KRSaveScope&) = delete;
  KRSaveScope& operator=(const KRSaveScope&) = delete;

  /// Writes what was gathered: first the books that keep what others lose, then the others, each once, in the order in
  /// which they were first saved. When one of the first fails, the others are not written; any other failure keeps
  /// nobody else from being written. What the first ones keep for a book that failed is taken out of them again, for
  /// the book still has it. Books that were not written so stay gathered, and `commit` can be tried again. The error is
  /// that of the first failure; `failures` has all of them. The scope stays open.
  KRResult<void> commit();
  /// The failures of the last commit, in the order in which they came up.
  const std::vector<Failure>& failures() const noexcept { return failures_; }
  /// The books that the next commit writes, in the order in which they were first saved.
  std::vector<KRRef<KRAddressBook>> gathered() const;

  /// Whether a scope is open, which then has taken note of the book. Called by `KRAddressBook::save`.
  static bool gather(KRAddressBook* book);

 private:
  void add(KRAddressBook* book);
  bool write(const KRRef<KRAddressBook>& book);
  void takeBack(KRAddressBook& keeper, KRAddressBook& failed);

  KRSaveScope* outer_;
  std::vector<KRRef<KRAddressBook>> books_;
  std::vector<Failure> failures_;
};
