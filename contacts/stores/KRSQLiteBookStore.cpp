#include "contacts/stores/KRSQLiteBookStore.h"

#include <algorithm>
#include <unordered_map>

#include "contacts/stores/KRSQLiteJournal.h"
#include "contacts/stores/KRStoreCard.h"
#include "contacts/vcard/KRVCardReader.h"

using Kind = KRSQLiteTransaction::Kind;

KRResult<size_t> KRSQLiteBookStore::count() {
  const std::lock_guard lock(database_->lock);
  KRSQLiteStatement query(*database_, "SELECT count(*) FROM contact WHERE book=?");
  query.bind(book_);
  const int64_t count = query.next() ? query.number(0) : 0;
  query.run();
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  return static_cast<size_t>(count);
}

// Reading

KRResult<KRStoreContent> KRSQLiteBookStore::read() {
  const std::lock_guard lock(database_->lock);
  KRStoreContent content;
  {
    const KRSQLiteTransaction transaction(*database_, Kind::Reading);
    requireBook();
    content = readAll();
  }
  if (const KRResult<void> done = database_->take(); !done) return done.error();
  return content;
}

void KRSQLiteBookStore::requireBook() {
  KRSQLiteStatement query(*database_, "SELECT 1 FROM book WHERE id=?");
  if (query.bind(book_).next()) {
    query.run();
  } else {
    database_->fail(KRErrorCode::NotFound, "the book " + std::string(name_.view()) + " was removed");
  }
}

KRStoreContent KRSQLiteBookStore::readAll() {
  KRStoreContent content;
  KRSQLiteStatement contacts(*database_, "SELECT id, revision, uid, card FROM contact WHERE book=? ORDER BY id");
  contacts.bind(book_);
  while (contacts.next()) {
    KRRef<ABPerson> person = KRVCardReader::readOne(contacts.bytes(3));
    if (!person) {
      database_->fail(KRErrorCode::Damaged, "contact " + std::to_string(contacts.number(0)) + " is no card");
      return {};
    }
    if (const KRText ID = contacts.text(2); !ID.isNothing()) person->setID(KRString(ID.view()));
    content.persons.push_back({std::move(person), {contacts.number(0), contacts.number(1)}});
  }

  groups_.clear();
  memberships_.clear();
  std::unordered_map<int64_t, size_t> places;
  KRSQLiteStatement groups(*database_, "SELECT id, uid, name FROM person_group WHERE book=? ORDER BY id");
  groups.bind(book_);
  while (groups.next()) {
    groups_.emplace(groups.text(1).view(), groups.number(0));
    places.emplace(groups.number(0), content.groups.size());
    content.groups.push_back({krMake<KRGroup>(KRString(groups.text(1).view()), KRString(groups.text(2).view())), {}});
  }
  KRSQLiteStatement members(
      *database_,
      "SELECT person_group, contact FROM membership JOIN person_group ON person_group.id=person_group "
      "WHERE book=? ORDER BY person_group, contact");
  members.bind(book_);
  while (members.next()) {
    const int64_t row = members.number(1);
    const auto person = std::lower_bound(content.persons.begin(), content.persons.end(), row,
                                         [](const KRStoredPerson& each, int64_t id) { return each.key.place < id; });
    if (person == content.persons.end() || person->key.place != row) continue;
    memberships_.emplace_back(members.number(0), row);
    content.groups[places.at(members.number(0))].members.push_back(person->person);
  }
  return content;
}

// Writing

KRResult<void> KRSQLiteBookStore::write(KRStoreChanges& changes) {
  const std::lock_guard lock(database_->lock);
  std::map<std::string, int64_t> groups;
  std::vector<Membership> memberships;
  bool isDone = false;
  {
    KRSQLiteTransaction transaction(*database_, Kind::Writing);
    conflicts_ = {};
    requireBook();
    KRSQLiteJournal journal(*database_, book_);
    update(changes);
    remove(changes);
    if (!conflicts_.isEmpty()) database_->fail(KRErrorCode::Changed, conflicts_.sentence());
    insert(changes);
    if (changes.groups != nullptr) {
      groups = writeGroups(*changes.groups);
      memberships = membershipsOf(changes, groups);
      writeMemberships(memberships);
    }
    KRUndoNote note = journal.finish(ID_, name_);
    isDone = transaction.commit();
    if (isDone) note.keep();
  }
  if (!isDone) return database_->take();
  if (changes.groups != nullptr) {
    groups_ = std::move(groups);
    memberships_ = std::move(memberships);
  }
  for (auto& each : changes.changed) each.isDone = true;
  for (auto& each : changes.removed) each.isDone = true;
  for (auto& each : changes.added) each.isDone = true;
  return {};
}

void KRSQLiteBookStore::update(KRStoreChanges& changes) {
  KRSQLiteStatement update(*database_,
                           "UPDATE contact SET uid=?, card=?, revision=revision+1 WHERE id=? AND revision=?");
  for (KRStoreChanges::Changed& each : changes.changed) {
    const KRStoredPerson& stored = changes.stored[each.index];
    KRStoreCard card(*stored.person);
    update.bind(card.ID()).bindBytes(card.bytes()).bind(stored.key.place).bind(stored.key.stamp).run();
    if (!database_->isOk()) return;
    if (database_->changes() == 0) conflicts_.add(*stored.person);
    each.key = {stored.key.place, stored.key.stamp + 1};
    each.record = card.takeRecord();
  }
}

void KRSQLiteBookStore::remove(KRStoreChanges& changes) {
  KRSQLiteStatement remove(*database_, "DELETE FROM contact WHERE id=? AND revision=?");
  KRSQLiteStatement isThere(*database_, "SELECT 1 FROM contact WHERE id=?");
  for (const KRStoreChanges::Removed& each : changes.removed) {
    const KRStoredPerson& stored = changes.stored[each.index];
    remove.bind(stored.key.place).bind(stored.key.stamp).run();
    if (!database_->isOk()) return;
    if (database_->changes() != 0) continue;
    // One that another program removed too is as it should be.
    if (isThere.bind(stored.key.place).next()) conflicts_.add(*stored.person);
    isThere.run();
  }
}

void KRSQLiteBookStore::insert(KRStoreChanges& changes) {
  KRSQLiteStatement insert(*database_, "INSERT INTO contact(book, uid, card) VALUES(?, ?, ?)");
  for (KRStoreChanges::Added& each : changes.added) {
    KRStoreCard card(*each.person);
    insert.bind(book_).bind(card.ID()).bindBytes(card.bytes()).run();
    if (!database_->isOk()) return;
    each.key = {database_->lastRow(), 1};
    each.record = card.takeRecord();
  }
}

// Groups

std::map<std::string, int64_t> KRSQLiteBookStore::writeGroups(const std::vector<KRStoredGroup>& groups) {
  std::map<std::string, int64_t> rows;
  KRSQLiteStatement put(*database_,
                        "INSERT INTO person_group(book, uid, name) VALUES(?, ?, ?) "
                        "ON CONFLICT(book, uid) DO UPDATE SET name=excluded.name RETURNING id");
  for (const KRStoredGroup& each : groups) {
    const KRString uid = each.group->uniqueId();
    const KRString name = each.group->name();
    if (put.bind(book_).bind(uid).bind(name).next()) rows.emplace(uid.view(), put.number(0));
    put.run();
  }
  KRSQLiteStatement remove(*database_, "DELETE FROM person_group WHERE id=?");
  for (const auto& [uid, row] : groups_) {
    if (rows.find(uid) == rows.end()) remove.bind(row).run();
  }
  return rows;
}

std::vector<KRSQLiteBookStore::Membership> KRSQLiteBookStore::membershipsOf(
    const KRStoreChanges& changes, const std::map<std::string, int64_t>& rows) {
  std::vector<Membership> memberships;
  if (!database_->isOk()) return memberships;
  std::unordered_map<const ABPerson*, int64_t> places;
  for (const KRStoredPerson& each : changes.stored) places.emplace(each.person.get(), each.key.place);
  for (const KRStoreChanges::Added& each : changes.added) places[each.person.get()] = each.key.place;
  for (const KRStoredGroup& group : *changes.groups) {
    const auto row = rows.find(std::string(group.group->uniqueId().view()));
    if (row == rows.end()) continue;
    for (const KRRef<ABPerson>& member : group.members) {
      const auto place = places.find(member.get());
      if (place != places.end()) memberships.emplace_back(row->second, place->second);
    }
  }
  std::sort(memberships.begin(), memberships.end());
  memberships.erase(std::unique(memberships.begin(), memberships.end()), memberships.end());
  return memberships;
}

void KRSQLiteBookStore::writeMemberships(const std::vector<Membership>& memberships) {
  std::vector<Membership> differing;
  KRSQLiteStatement remove(*database_, "DELETE FROM membership WHERE person_group=? AND contact=?");
  std::set_difference(memberships_.begin(), memberships_.end(), memberships.begin(), memberships.end(),
                      std::back_inserter(differing));
  for (const auto& [group, contact] : differing) remove.bind(group).bind(contact).run();
  differing.clear();
  std::set_difference(memberships.begin(), memberships.end(), memberships_.begin(), memberships_.end(),
                      std::back_inserter(differing));
  // A contact that another program removed is in no group any more.
  KRSQLiteStatement add(*database_, "INSERT OR IGNORE INTO membership SELECT ?, id FROM contact WHERE id=?");
  for (const auto& [group, contact] : differing) add.bind(group).bind(contact).run();
}
