#include "contacts/stores/KRSQLiteJournal.h"

#include <array>
#include <iterator>
#include <vector>

#include "contacts/undo/KRUndoFields.h"
#include "contacts/undo/KRUndoMark.h"
#include "contacts/undo/KRUndoPart.h"

namespace {

/// What happened to a row; the numbers stand in undo records. `first` and `second` are numbers, `texts` the old row's
/// other columns.
enum class Did : uint8_t {
  AddContacts = 1,  // first, last
  ChangeContact,    // id; uid, card
  RemoveContact,    // id, revision; uid, card
  AddGroup,         // id
  ChangeGroup,      // id; uid, name
  RemoveGroup,      // id; uid, name
  AddMember,        // group, contact
  RemoveMember,     // group, contact
  AddBook,          // id
  ChangeBook,       // id; uid, name
  RemoveBook,       // id; uid, name
};

struct Row {
  Did did{};
  int64_t first = 0;
  int64_t second = 0;
  KRText text{};
  KRText other{};
};

/// The tables; the numbers stand in marks.
enum class Table : uint8_t { Book = 1, Contact, Group, Member };

struct Watch {
  const char* name;
  const char* event;
  Did did;
  const char* columns;
};

/// The triggers: what each takes down of the row, in the order of the columns of `undo_log`.
constexpr std::array kWatches = {
    Watch{"undo_contact_added", "INSERT ON main.contact", Did::AddContacts, "NEW.id, NEW.id, NULL, NULL"},
    Watch{"undo_contact_changed", "UPDATE ON main.contact", Did::ChangeContact, "OLD.id, 0, OLD.uid, OLD.card"},
    Watch{"undo_contact_removed", "DELETE ON main.contact", Did::RemoveContact,
          "OLD.id, OLD.revision, OLD.uid, OLD.card"},
    Watch{"undo_group_added", "INSERT ON main.person_group", Did::AddGroup, "NEW.id, 0, NULL, NULL"},
    Watch{"undo_group_changed", "UPDATE ON main.person_group", Did::ChangeGroup, "OLD.id, 0, OLD.uid, OLD.name"},
    Watch{"undo_group_removed", "DELETE ON main.person_group", Did::RemoveGroup, "OLD.id, 0, OLD.uid, OLD.name"},
    Watch{"undo_member_added", "INSERT ON main.membership", Did::AddMember,
          "NEW.person_group, NEW.contact, NULL, NULL"},
    Watch{"undo_member_removed", "DELETE ON main.membership", Did::RemoveMember,
          "OLD.person_group, OLD.contact, NULL, NULL"},
    Watch{"undo_book_added", "INSERT ON main.book", Did::AddBook, "NEW.id, 0, NULL, NULL"},
    Watch{"undo_book_changed", "UPDATE ON main.book", Did::ChangeBook, "OLD.id, 0, OLD.uid, OLD.name"},
    Watch{"undo_book_removed", "DELETE ON main.book", Did::RemoveBook, "OLD.id, 0, OLD.uid, OLD.name"},
};

void startWatching(KRSQLiteDatabase& database) {
  database.run(
      "CREATE TEMP TABLE undo_log(step INTEGER PRIMARY KEY, did INTEGER, first INTEGER, second INTEGER, text, other)");
  for (const Watch& each : kWatches) {
    const std::string trigger = std::string("CREATE TEMP TRIGGER ") + each.name + " AFTER " + each.event +
                                " BEGIN INSERT INTO undo_log(did, first, second, text, other) VALUES(" +
                                std::to_string(static_cast<int>(each.did)) + ", " + each.columns + "); END";
    database.run(trigger.c_str());
  }
}

void stopWatching(KRSQLiteDatabase& database) {
  for (const Watch& each : kWatches) database.run((std::string("DROP TRIGGER temp.") + each.name).c_str());
  database.run("DROP TABLE temp.undo_log");
}

void write(KRUndoWriter& fields, const Row& row) {
  fields.add(static_cast<int64_t>(row.did)).add(row.first).add(row.second).add(row.text).add(row.other);
}

/// The rows in their order, borrowed from the bytes; nothing when they are damaged.
std::optional<std::vector<Row>> rowsIn(std::string_view bytes) {
  std::vector<Row> all;
  KRUndoReader fields(bytes);
  while (fields.isOk() && !fields.isAtEnd()) {
    Row row;
    row.did = static_cast<Did>(fields.number());
    row.first = fields.number();
    row.second = fields.number();
    row.text = fields.text();
    row.other = fields.text();
    all.push_back(row);
  }
  if (!fields.isOk()) return std::nullopt;
  return all;
}

uint64_t markOf(KRText text) {
  return krUndoMark(text.isNothing() ? 1U : 0U, krUndoMark(text.view()));
}

KRText bytesOrNothing(const KRSQLiteStatement& query, int column) {
  return query.text(column).isNothing() ? KRText() : KRText(query.bytes(column));
}

/// What a row adds to the mark of its book.
uint64_t markOf(Table table, int64_t number, KRText text, std::string_view other) {
  const uint64_t texts = krUndoMark(markOf(text), krUndoMark(other));
  return krUndoMark(krUndoMark(static_cast<uint64_t>(table), static_cast<uint64_t>(number)), texts);
}

/// The sum over the rows of a query: the order in which they are read does not count.
uint64_t sumOf(KRSQLiteStatement& query, Table table) {
  uint64_t sum = 0;
  while (query.next()) sum += markOf(table, query.number(0), query.text(1), query.bytes(2));
  return sum;
}

uint64_t sumOf(KRSQLiteDatabase& database, std::string_view select, int64_t book, Table table) {
  KRSQLiteStatement query(database, select);
  query.bind(book);
  return sumOf(query, table);
}

uint64_t sumOfContacts(KRSQLiteDatabase& database, int64_t book) {
  return sumOf(database, "SELECT id, uid, card FROM contact WHERE book=?", book, Table::Contact);
}

/// The sum over those of the book's contacts that have these numbers.
uint64_t sumOfContacts(KRSQLiteDatabase& database, int64_t book, const std::map<int64_t, uint64_t>& numbers) {
  KRSQLiteStatement query(database, "SELECT id, uid, card FROM contact WHERE book=? AND id BETWEEN ? AND ?");
  uint64_t sum = 0;
  for (auto each = numbers.begin(); each != numbers.end();) {
    // Contacts of one import have numbers one behind the other.
    const int64_t first = each->first;
    int64_t last = first;
    for (++each; each != numbers.end() && each->first == last + 1; ++each) ++last;
    query.bind(book).bind(first).bind(last);
    sum += sumOf(query, Table::Contact);
  }
  return sum;
}

/// The mark of everything of a book but its contacts; nothing when there is no such book.
std::optional<uint64_t> markOfRest(KRSQLiteDatabase& database, int64_t book) {
  const uint64_t itself = sumOf(database, "SELECT id, uid, name FROM book WHERE id=?", book, Table::Book);
  if (itself == 0) return std::nullopt;
  return itself + sumOf(database, "SELECT id, uid, name FROM person_group WHERE book=?", book, Table::Group) +
         sumOf(database,
               "SELECT person_group, CAST(contact AS TEXT), NULL FROM membership JOIN person_group ON "
               "person_group.id=person_group WHERE book=?",
               book, Table::Member);
}

}  // namespace

// Taking down

KRSQLiteJournal::KRSQLiteJournal(KRSQLiteDatabase& database, int64_t book)
    : database_(database), book_(book), isOpen_(KRUndoRecorder::isOpen() && database.isOk()) {
  if (!isOpen_) return;
  if (book_ != 0) {
    before_ = markOfRest(database_, book_);
    contacts_ = sumOfContacts(database_, book_);
    if (before_) *before_ += contacts_;
  }
  startWatching(database_);
}

std::optional<uint64_t> KRSQLiteJournal::before() {
  return isOpen_ ? before_ : markOf(database_, book_);
}

KRUndoNote KRSQLiteJournal::finish(KRText ID, KRText name) {
  if (!isOpen_ || !database_.isOk()) return {};
  KRUndoRows done;
  done.path = database_.path();
  done.ID = KRString(ID);
  done.name = KRString(name);
  done.book = book_;
  done.before = before_;
  std::map<int64_t, uint64_t> touched;
  done.rows = rows(touched);
  stopWatching(database_);
  done.after = after(touched);
  if (!database_.isOk()) return {};
  KRResult<KRUndoNote> note =
      KRUndoRecorder::record(KRUndoPart::kRows, done.fields(), {{done.key(), done.before, done.after}});
  if (note) return *std::move(note);
  database_.fail(note.error().code, note.error().sentence);
  return {};
}

/// Contacts that were not touched are not read once more: a library of many holds much.
std::optional<uint64_t> KRSQLiteJournal::after(const std::map<int64_t, uint64_t>& touched) const {
  std::optional<uint64_t> mark = markOfRest(database_, book_);
  if (!mark) return mark;
  *mark += contacts_ + sumOfContacts(database_, book_, touched);
  for (const auto& each : touched) *mark -= each.second;
  return mark;
}

std::string KRSQLiteJournal::rows(std::map<int64_t, uint64_t>& touched) {
  KRUndoWriter fields;
  KRSQLiteStatement log(database_, "SELECT did, first, second, text, other FROM temp.undo_log ORDER BY step");
  // Contacts that were added one behind the other are one row.
  Row added;
  while (log.next()) {
    Row row;
    row.did = static_cast<Did>(log.number(0));
    row.first = log.number(1);
    row.second = log.number(2);
    row.text = log.text(3);
    row.other = bytesOrNothing(log, 4);
    // The first thing that happened to a contact tells what it was before.
    if (row.did == Did::AddContacts) touched.emplace(row.first, 0);
    if (row.did == Did::ChangeContact || row.did == Did::RemoveContact)
      touched.emplace(row.first, ::markOf(Table::Contact, row.first, row.text, row.other.view()));
    if (row.did == Did::AddContacts && added.did == Did::AddContacts && row.first == added.second + 1) {
      added.second = row.second;
      continue;
    }
    if (added.did == Did::AddContacts) write(fields, added);
    added = {};
    if (row.did == Did::AddContacts) {
      added = row;
    } else {
      write(fields, row);
    }
  }
  if (added.did == Did::AddContacts) write(fields, added);
  return fields.take();
}

std::optional<uint64_t> KRSQLiteJournal::markOf(KRSQLiteDatabase& database, int64_t book) {
  std::optional<uint64_t> mark = markOfRest(database, book);
  if (mark) *mark += sumOfContacts(database, book);
  return mark;
}

// What was taken down

std::string KRUndoRows::fields() const {
  KRUndoWriter fields;
  fields.addBytes(path).add(ID).add(name).add(book);
  for (const auto& mark : {before, after}) fields.add(int64_t{mark ? 1 : 0}).addMark(mark.value_or(0));
  fields.addBytes(rows);
  return fields.take();
}

std::optional<KRUndoRows> KRUndoRows::read(std::string_view bytes) {
  KRUndoReader fields(bytes);
  KRUndoRows done;
  done.path = fields.bytes();
  done.ID = KRString(fields.text());
  done.name = KRString(fields.text());
  done.book = fields.number();
  for (auto* mark : {&done.before, &done.after}) {
    const bool isThere = fields.number() != 0;
    const uint64_t value = fields.mark();
    if (isThere) *mark = value;
  }
  done.rows = fields.bytes();
  if (!fields.isOk() || !KRUndoReader(done.rows).isOk()) return std::nullopt;
  return done;
}

std::string KRUndoRows::key() const {
  return path + "#" + std::to_string(book);
}

size_t KRUndoRows::count() const {
  size_t count = 0;
  for (const Row& row : rowsIn(rows).value_or(std::vector<Row>()))
    count += row.did == Did::AddContacts ? static_cast<size_t>(row.second - row.first + 1) : 1;
  return count;
}

void KRUndoRows::putBack(KRSQLiteDatabase& database) const {
  const std::optional<std::vector<Row>> known = rowsIn(rows);
  if (!known) return database.fail(KRErrorCode::Damaged, "the undo record is damaged");
  const std::vector<Row>& all = *known;
  // A contact and its memberships come and go in whichever order they were taken down.
  database.run("PRAGMA defer_foreign_keys=ON");
  KRSQLiteStatement removeContacts(database, "DELETE FROM contact WHERE book=? AND id BETWEEN ? AND ?");
  KRSQLiteStatement changeContact(database, "UPDATE contact SET uid=?, card=?, revision=revision+1 WHERE id=?");
  KRSQLiteStatement addContact(database, "INSERT INTO contact(id, book, revision, uid, card) VALUES(?, ?, ?, ?, ?)");
  KRSQLiteStatement removeGroup(database, "DELETE FROM person_group WHERE id=?");
  KRSQLiteStatement changeGroup(database, "UPDATE person_group SET uid=?, name=? WHERE id=?");
  KRSQLiteStatement addGroup(database, "INSERT INTO person_group(id, book, uid, name) VALUES(?, ?, ?, ?)");
  // What went with its contact or group is gone, or there, already.
  KRSQLiteStatement removeMember(database, "DELETE FROM membership WHERE person_group=? AND contact=?");
  KRSQLiteStatement addMember(database, "INSERT OR IGNORE INTO membership(person_group, contact) VALUES(?, ?)");
  KRSQLiteStatement removeBook(database, "DELETE FROM book WHERE id=?");
  KRSQLiteStatement changeBook(database, "UPDATE book SET uid=?, name=? WHERE id=?");
  KRSQLiteStatement addBook(database, "INSERT INTO book(id, uid, name) VALUES(?, ?, ?)");
  for (auto row = all.rbegin(); row != all.rend() && database.isOk(); ++row) {
    switch (row->did) {
      case Did::AddContacts:
        removeContacts.bind(book).bind(row->first).bind(row->second).run();
        break;
      case Did::ChangeContact:
        changeContact.bind(row->text).bindBytes(row->other.view()).bind(row->first).run();
        break;
      case Did::RemoveContact:
        addContact.bind(row->first).bind(book).bind(row->second).bind(row->text).bindBytes(row->other.view()).run();
        break;
      case Did::AddGroup:
        removeGroup.bind(row->first).run();
        break;
      case Did::ChangeGroup:
        changeGroup.bind(row->text).bind(row->other).bind(row->first).run();
        break;
      case Did::RemoveGroup:
        addGroup.bind(row->first).bind(book).bind(row->text).bind(row->other).run();
        break;
      case Did::AddMember:
        removeMember.bind(row->first).bind(row->second).run();
        break;
      case Did::RemoveMember:
        addMember.bind(row->first).bind(row->second).run();
        break;
      case Did::AddBook:
        removeBook.bind(row->first).run();
        break;
      case Did::ChangeBook:
        changeBook.bind(row->text).bind(row->other).bind(row->first).run();
        break;
      case Did::RemoveBook:
        addBook.bind(row->first).bind(row->text).bind(row->other).run();
        break;
      default:
        database.fail(KRErrorCode::Damaged, "the undo record is damaged");
    }
  }
}
