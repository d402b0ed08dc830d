#include "contacts/stores/KRSQLiteSchema.h"

#include <array>
#include <string>

namespace {

/// Tells our files from those of other programs.
constexpr int64_t kApplication = 0x4B524142;

/// What leads from each version to the next; the first makes version 1 of an empty file. Never changed once released:
/// files made by them are on people's disks. Numbers of contacts and books are not used again, so that a program which
/// still knows a removed contact cannot take another one for it.
constexpr std::array kSteps = {
    // Contacts are whole vCards. `uid` is the contact's identifier where its card does not give it.
    "CREATE TABLE book("
    "  id INTEGER PRIMARY KEY AUTOINCREMENT, uid TEXT NOT NULL UNIQUE, name TEXT NOT NULL);"
    "CREATE TABLE contact("
    "  id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "  book INTEGER NOT NULL REFERENCES book(id) ON DELETE CASCADE,"
    "  revision INTEGER NOT NULL DEFAULT 1, uid TEXT, card BLOB NOT NULL);"
    "CREATE INDEX contact_of_book ON contact(book);",

    "CREATE TABLE person_group("
    "  id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "  book INTEGER NOT NULL REFERENCES book(id) ON DELETE CASCADE,"
    "  uid TEXT NOT NULL, name TEXT NOT NULL, UNIQUE(book, uid));"
    "CREATE TABLE membership("
    "  person_group INTEGER NOT NULL REFERENCES person_group(id) ON DELETE CASCADE,"
    "  contact INTEGER NOT NULL REFERENCES contact(id) ON DELETE CASCADE,"
    "  PRIMARY KEY(person_group, contact)) WITHOUT ROWID;"
    "CREATE INDEX membership_of_contact ON membership(contact);",
};

constexpr auto kVersion = static_cast<int64_t>(kSteps.size());

void bringForward(KRSQLiteDatabase& database) {
  if (database.number("PRAGMA user_version") == kVersion) return;
  KRSQLiteTransaction transaction(database, KRSQLiteTransaction::Kind::Writing);
  // Another program may have done it while this one waited.
  const int64_t version = database.number("PRAGMA user_version");
  for (int64_t step = version; step < kVersion; ++step) database.run(kSteps[static_cast<size_t>(step)]);
  const std::string marks =
      "PRAGMA application_id=" + std::to_string(kApplication) + ";PRAGMA user_version=" + std::to_string(kVersion);
  database.run(marks.c_str());
  transaction.commit();
}

void refuseStrangers(KRSQLiteDatabase& database, bool mayCreate) {
  const int64_t application = database.number("PRAGMA application_id");
  const int64_t version = database.number("PRAGMA user_version");
  const bool isEmpty = database.number("SELECT count(*) FROM sqlite_schema") == 0;
  if (isEmpty ? !mayCreate : application != kApplication) {
    database.fail(KRErrorCode::InvalidArgument, "it is no library of address books");
  } else if (version > kVersion) {
    database.fail(KRErrorCode::InvalidArgument, "it was made by a newer version of this program");
  }
}

void lookForDamage(KRSQLiteDatabase& database) {
  KRSQLiteStatement check(database, "PRAGMA quick_check(1)");
  if (check.next() && !(check.text(0) == "ok")) {
    // The text names pages and cells, in several lines.
    database.fail(KRErrorCode::Damaged, "the database is damaged");
    return;
  }
  check.run();
  KRSQLiteStatement references(database, "PRAGMA foreign_key_check");
  if (references.next()) database.fail(KRErrorCode::Damaged, "the database is damaged: rows refer to missing ones");
}

}  // namespace

int64_t krLibraryVersion() noexcept {
  return kVersion;
}

void krPrepareLibrary(KRSQLiteDatabase& database, bool mayCreate) {
  refuseStrangers(database, mayCreate);
  // Readers and one writer do not wait for each other, and what is committed is on the disk.
  database.run("PRAGMA journal_mode=WAL;PRAGMA synchronous=FULL;PRAGMA foreign_keys=ON;PRAGMA cell_size_check=ON");
  lookForDamage(database);
  bringForward(database);
}
