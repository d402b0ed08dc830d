#include "contacts/stores/KRSQLiteLibrary.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

#include "contacts/model/KRPersonIDs.h"
#include "contacts/stores/KRSQLite.h"
#include "contacts/stores/KRSQLiteBookStore.h"
#include "contacts/stores/KRSQLiteJournal.h"
#include "contacts/stores/KRSQLiteSchema.h"
#include "platform/KRFile.h"
#include "platform/KRFileReader.h"

namespace {

constexpr KRText kIDStart = "sqlite:";

KRString IDOf(KRText uid) {
  return krConcat({kIDStart, uid});
}

/// The identifier of a book's row from that of the book.
KRText uidOf(KRText ID) {
  if (ID.view().substr(0, kIDStart.size()) != kIDStart.view()) return "";
  return ID.view().substr(kIDStart.size());
}

/// Makes an empty file for its owner only; one that is there stays.
KRResult<void> createFile(KRText path) {
  if (path.isEmpty() || path.contains('\0')) return KRFile::systemError(EINVAL, "make", path);
  const int number = ::open(std::string(path.view()).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (number < 0) return KRFile::systemError(errno, "make", path);
  close(number);
  return {};
}

KRError noBook(KRText ID) {
  return {KRErrorCode::NotFound, "there is no book " + std::string(ID.view())};
}

}  // namespace

bool KRSQLiteLibrary::isDatabase(KRText path) {
  if (KRFile::kind(path) != KRFile::Kind::Regular) return false;
  constexpr std::string_view kMark("SQLite format 3\0", 16);
  std::array<char, 16> start{};
  KRResult<KRFileReader> file = KRFileReader::open(path);
  if (!file) return false;
  const KRResult<size_t> size = file->read(start.data(), start.size());
  return size && std::string_view(start.data(), *size) == kMark;
}

KRResult<KRRef<KRSQLiteLibrary>> KRSQLiteLibrary::open(KRText path, Mode mode) {
  if (mode == Mode::Create) {
    if (const KRResult<void> made = createFile(path); !made) return made.error();
  }
  const KRFile::Kind kind = KRFile::kind(path);
  if (kind == KRFile::Kind::Missing) return KRFile::systemError(ENOENT, "open", path);
  if (kind != KRFile::Kind::Regular) return KRFile::systemError(EISDIR, "open", path);
  auto database = std::make_shared<KRSQLiteDatabase>(path);
  database->open();
  krPrepareLibrary(*database, mode == Mode::Create);
  if (const KRResult<void> opened = database->take(); !opened) return opened.error();
  return krMake<KRSQLiteLibrary>(std::move(database));
}

KRSQLiteLibrary::KRSQLiteLibrary(std::shared_ptr<KRSQLiteDatabase> database) : database_(std::move(database)) {}

KRSQLiteLibrary::~KRSQLiteLibrary() = default;

KRString KRSQLiteLibrary::path() const {
  return KRString(database_->path());
}

KRRef<KRStoredBook> KRSQLiteLibrary::bookOf(int64_t row, KRString ID, KRString name) {
  return krMake<KRStoredBook>(std::make_unique<KRSQLiteBookStore>(database_, row, std::move(ID), std::move(name)));
}

KRResult<std::vector<KRSQLiteLibrary::Entry>> KRSQLiteLibrary::books() {
  const std::lock_guard lock(database_->lock);
  std::vector<Entry> entries;
  {
    KRSQLiteStatement query(*database_, "SELECT uid, name FROM book ORDER BY id");
    while (query.next()) entries.push_back({IDOf(query.text(0)), KRString(query.text(1).view())});
  }
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  return entries;
}

KRResult<KRRef<KRStoredBook>> KRSQLiteLibrary::book(KRText ID) {
  const std::lock_guard lock(database_->lock);
  KRRef<KRStoredBook> found;
  {
    KRSQLiteStatement query(*database_, "SELECT id, name FROM book WHERE uid=?");
    if (query.bind(uidOf(ID)).next()) found = bookOf(query.number(0), KRString(ID), KRString(query.text(1).view()));
  }
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  if (!found) return noBook(ID);
  return found;
}

KRResult<KRRef<KRStoredBook>> KRSQLiteLibrary::addBook(KRText name) {
  if (name.isNothing()) return KRError{KRErrorCode::InvalidArgument, "a book needs a name"};
  const std::lock_guard lock(database_->lock);
  const KRString uid = KRPersonIDs::newIdentifier();
  int64_t row = 0;
  {
    KRSQLiteTransaction transaction(*database_, KRSQLiteTransaction::Kind::Writing);
    KRSQLiteJournal journal(*database_, 0);
    {
      KRSQLiteStatement insert(*database_, "INSERT INTO book(uid, name) VALUES(?, ?)");
      insert.bind(uid).bind(name).run();
    }
    row = database_->lastRow();
    journal.setBook(row);
    KRUndoNote note = journal.finish(IDOf(uid), name);
    if (transaction.commit()) note.keep();
  }
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  return bookOf(row, IDOf(uid), KRString(name));
}

KRResult<void> KRSQLiteLibrary::renameBook(KRText ID, KRText name) {
  if (name.isNothing()) return KRError{KRErrorCode::InvalidArgument, "a book needs a name"};
  const std::lock_guard lock(database_->lock);
  {
    KRSQLiteStatement update(*database_, "UPDATE book SET name=? WHERE uid=?");
    update.bind(name).bind(uidOf(ID)).run();
  }
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  if (database_->changes() == 0) return noBook(ID);
  return {};
}

KRResult<void> KRSQLiteLibrary::deleteBook(KRText ID) {
  const std::lock_guard lock(database_->lock);
  {
    KRSQLiteStatement remove(*database_, "DELETE FROM book WHERE uid=?");
    remove.bind(uidOf(ID)).run();
  }
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  if (database_->changes() == 0) return noBook(ID);
  return {};
}

std::vector<KRBookSource> KRSQLiteBookProvider::sources() {
  if (KRFile::kind(path_) == KRFile::Kind::Missing) return {};
  const auto unusable = [this](const KRError& error) {
    const KRString name = "contacts"_kr;
    return std::vector<KRBookSource>{{krConcat({kIDStart, path_}), name, "sqlite"_kr, path_,
                                      [error]() -> KRResult<KRRef<KRAddressBook>> { return error; }}};
  };
  const KRResult<KRRef<KRSQLiteLibrary>> library = KRSQLiteLibrary::open(path_);
  if (!library) return unusable(library.error());
  const KRResult<std::vector<KRSQLiteLibrary::Entry>> entries = (*library)->books();
  if (!entries) return unusable(entries.error());
  std::vector<KRBookSource> sources;
  for (const KRSQLiteLibrary::Entry& entry : *entries) {
    sources.push_back({entry.ID, entry.name, "sqlite"_kr, path_,
                       [library = *library, ID = entry.ID]() -> KRResult<KRRef<KRAddressBook>> {
                         KRResult<KRRef<KRStoredBook>> book = library->book(ID);
                         if (!book) return book.error();
                         return KRRef<KRAddressBook>(*book);
                       }});
  }
  return sources;
}
