#pragma once

#include <memory>
#include <vector>

#include "contacts/stores/KRAddressBookProvider.h"
#include "contacts/stores/KRStoredBook.h"

class KRSQLiteDatabase;

/// A database file (SQLite) of any number of named address books with their contacts and groups. Contacts stand in it
/// as whole cards, with all their lines, tags and photos.
///
/// Several programs may use one file at a time; a save waits a few seconds for another one. The books of a library keep
/// it open. Any thread.
class KRSQLiteLibrary : public KRObject {
 public:
  enum class Mode {
    /// The file must be there and be a library.
    Existing,
    /// A file that is not there, or is empty, becomes a library; it is for its owner only (mode 0600). The folder must
    /// exist.
    Create,
  };

  /// Opens the file and looks through all of it for damage. `NotFound`, `NotAllowed`, `Busy`, `Damaged`, and
  /// `InvalidArgument` for the file of another program or of a newer version of this one, which is left as it is.
  static KRResult<KRRef<KRSQLiteLibrary>> open(KRText path, Mode mode = Mode::Existing);
  /// Whether the file begins like a database of this kind, be it a library or another program's.
  static bool isDatabase(KRText path);

  /// Made by `open`.
  explicit KRSQLiteLibrary(std::shared_ptr<KRSQLiteDatabase> database);
  ~KRSQLiteLibrary() override;

  struct Entry {
    KRString ID;
    KRString name;
  };
  /// The books in the order in which they were made.
  KRResult<std::vector<Entry>> books();
  /// A new object for the book of that ID; `NotFound`. Two objects of one book see of each other what was saved.
  KRResult<KRRef<KRStoredBook>> book(KRText ID);
  /// Makes an empty book at once. Several may have one name; a name of nothing is `InvalidArgument`.
  KRResult<KRRef<KRStoredBook>> addBook(KRText name);
  /// Objects of the book that are there already keep the old name.
  KRResult<void> renameBook(KRText ID, KRText name);
  /// Removes the book with all its contacts and groups, at once and for ever.
  KRResult<void> deleteBook(KRText ID);

  KRString path() const;

 private:
  KRRef<KRStoredBook> bookOf(int64_t row, KRString ID, KRString name);

  const std::shared_ptr<KRSQLiteDatabase> database_;
};

/// Lists the books of a library. A file that is not there has no books.
class KRSQLiteBookProvider : public KRAddressBookProvider {
 public:
  explicit KRSQLiteBookProvider(KRString path) : path_(std::move(path)) {}
  std::vector<KRBookSource> sources() override;

 private:
  const KRString path_;
};
