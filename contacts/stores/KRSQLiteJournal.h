#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "contacts/stores/KRSQLite.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRResult.h"
#include "platform/KRText.h"

/// What a transaction did to one book of a library, as rows: taken down while an undo record is kept, and put back from
/// there.
///
/// The rows are taken down by triggers that live as long as the transaction, so that what the database does of itself,
/// such as removing the memberships of a removed contact, is among them. A contact that is put back has its number
/// again; a changed one gets a further revision, so that no program takes it for the one that it has read.
class KRSQLiteJournal {
 public:
  /// To be made at the start of a writing transaction. `book` is the book's row, or 0 for one that is to be made.
  KRSQLiteJournal(KRSQLiteDatabase& database, int64_t book);

  /// The row of the book that was made.
  void setBook(int64_t book) noexcept { book_ = book; }
  /// Writes down what was done, before the commit. A failure is one of the database, too, and so hinders the commit.
  KRUndoNote finish(KRText ID, KRText name);

  /// The mark of the book when this was made.
  std::optional<uint64_t> before();

  /// A mark of everything that a book's row, contacts and groups say; nothing when there is no such book.
  static std::optional<uint64_t> markOf(KRSQLiteDatabase& database, int64_t book);

 private:
  /// What was done, as fields. `touched` gets what each contact that was touched added to the mark before, by its
  /// number.
  std::string rows(std::map<int64_t, uint64_t>& touched);
  std::optional<uint64_t> after(const std::map<int64_t, uint64_t>& touched) const;

  KRSQLiteDatabase& database_;
  int64_t book_;
  bool isOpen_;
  std::optional<uint64_t> before_;
  /// What the contacts are of it.
  uint64_t contacts_ = 0;
};

/// What a journal wrote down.
struct KRUndoRows {
  std::string path{};
  KRString ID{};
  KRString name{};
  int64_t book = 0;
  std::optional<uint64_t> before{};
  std::optional<uint64_t> after{};
  /// Fields, the first change first; see `KRSQLiteJournal`.
  std::string rows{};

  /// Names the book among all things that can be undone.
  std::string key() const;
  /// How many rows were changed; contacts that were added one behind the other count each.
  size_t count() const;
  std::string fields() const;
  static std::optional<KRUndoRows> read(std::string_view fields);
  /// Does the opposite of all changes, the last one first, in the open transaction. Fails the database when the rows
  /// are damaged.
  void putBack(KRSQLiteDatabase& database) const;
};
