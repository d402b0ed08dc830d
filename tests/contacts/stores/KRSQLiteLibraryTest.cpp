#include "contacts/stores/KRSQLiteLibrary.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "contacts/stores/KRSQLite.h"
#include "contacts/stores/KRSQLiteSchema.h"
#include "tests/contacts/stores/StoreSamples.h"

namespace {

using Mode = KRSQLiteLibrary::Mode;
using People = std::vector<std::string>;

KRRef<KRSQLiteLibrary> libraryAt(const std::string& path, Mode mode = Mode::Create) {
  const auto library = KRSQLiteLibrary::open(krPath(path), mode);
  if (library) return *library;
  ADD_FAILURE() << library.error().sentence;
  return {};
}

KRErrorCode failureToOpen(const std::string& path, Mode mode = Mode::Existing) {
  const auto library = KRSQLiteLibrary::open(krPath(path), mode);
  if (library) {
    ADD_FAILURE() << path << " was opened";
    return {};
  }
  EXPECT_NE(library.error().sentence.find(path), std::string::npos) << library.error().sentence;
  return library.error().code;
}

/// Runs statements on a file as another program would.
void tamper(const std::string& path, const char* statements) {
  KRSQLiteDatabase database(krPath(path));
  database.open();
  database.run(statements);
  const auto done = database.take();
  EXPECT_TRUE(done.isOk()) << done.error().sentence;
}

int64_t numberIn(const std::string& path, const char* query) {
  KRSQLiteDatabase database(krPath(path));
  database.open();
  return database.number(query);
}

/// A library with one book of that many contacts.
void fill(const std::string& path, int count) {
  const auto library = libraryAt(path);
  const auto book = library->addBook("People");
  ASSERT_TRUE(book.isOk());
  for (int i = 0; i < count; ++i) (*book)->addPerson(krPersonOf(krNoted("p" + std::to_string(i), "note")).get());
  ASSERT_TRUE((*book)->saveNow().isOk());
}

TEST(KRSQLiteLibrary, MakesAFileForItsOwnerOnly) {
  const KRTestFolder folder;
  const std::string path = folder.at("new.db");
  EXPECT_EQ(failureToOpen(path), KRErrorCode::NotFound);
  static_cast<void>(libraryAt(path));
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_TRUE(KRSQLiteLibrary::isDatabase(krPath(path)));
  EXPECT_TRUE(libraryAt(path, Mode::Existing)->books()->empty());
  EXPECT_EQ(failureToOpen(folder.at("no/folder.db"), Mode::Create), KRErrorCode::NotFound);
}

TEST(KRSQLiteLibrary, HoldsBooksThatKnowNothingOfEachOther) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  const auto library = libraryAt(path);
  const auto family = library->addBook("Family");
  const auto work = library->addBook("Family");
  ASSERT_TRUE(family.isOk() && work.isOk());
  EXPECT_FALSE((*family)->ID() == (*work)->ID());
  (*family)->addPerson(krPersonOf(krNoted("Ann", "family")).get());
  (*work)->addPerson(krPersonOf(krNoted("Ann", "work")).get());
  // Groups of one identifier in two books are two groups.
  const auto group = (*family)->addGroup("One"_kr, "group"_kr);
  (*family)->setGroups(*krPersonNamed(**family, "Ann"), {group});
  static_cast<void>((*work)->addGroup("Two"_kr, "group"_kr));
  ASSERT_TRUE((*family)->saveNow().isOk());
  ASSERT_TRUE((*work)->saveNow().isOk());

  const auto again = libraryAt(path, Mode::Existing);
  const auto entries = again->books();
  ASSERT_TRUE(entries.isOk());
  ASSERT_EQ(entries->size(), 2U);
  const auto first = again->book(entries->front().ID);
  const auto second = again->book(entries->back().ID);
  EXPECT_EQ(krPeople(**first), (People{"Ann: family"}));
  EXPECT_EQ(krPeople(**second), (People{"Ann: work"}));
  EXPECT_EQ((*first)->rootGroups()[0]->name(), "One");
  EXPECT_EQ((*second)->rootGroups()[0]->name(), "Two");
  EXPECT_TRUE(krPersonNamed(**second, "Ann")->parentGroups().empty());
}

TEST(KRSQLiteLibrary, RenamesAndDeletesBooks) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  const auto library = libraryAt(path);
  const auto kept = library->addBook("Kept");
  const auto gone = library->addBook("Gone");
  (*gone)->addPerson(krPersonOf(krNoted("Ann", "x")).get());
  static_cast<void>((*gone)->addGroup("Group"_kr));
  ASSERT_TRUE((*gone)->saveNow().isOk());
  ASSERT_TRUE(library->renameBook((*kept)->ID(), "Renamed").isOk());
  ASSERT_TRUE(library->deleteBook((*gone)->ID()).isOk());
  const auto entries = library->books();
  ASSERT_EQ(entries->size(), 1U);
  EXPECT_EQ(entries->front().name, "Renamed");
  EXPECT_EQ(numberIn(path, "SELECT (SELECT count(*) FROM contact) + (SELECT count(*) FROM person_group)"), 0);

  EXPECT_EQ(library->book((*gone)->ID()).error().code, KRErrorCode::NotFound);
  EXPECT_EQ(library->book("another kind of ID").error().code, KRErrorCode::NotFound);
  EXPECT_EQ(library->renameBook((*gone)->ID(), "x").error().code, KRErrorCode::NotFound);
  EXPECT_EQ(library->deleteBook((*gone)->ID()).error().code, KRErrorCode::NotFound);
  EXPECT_EQ(library->addBook(KRText()).error().code, KRErrorCode::InvalidArgument);
  // An object of the book that is still held can write nowhere.
  (*gone)->addPerson(krPersonOf(krNoted("Bo", "x")).get());
  EXPECT_EQ((*gone)->saveNow().error().code, KRErrorCode::NotFound);
}

TEST(KRSQLiteLibrary, BringsAFileOfTheFirstVersionForward) {
  const KRTestFolder folder;
  const std::string path = folder.at("old.db");
  folder.put("old.db", "");
  tamper(path,
         "CREATE TABLE book(id INTEGER PRIMARY KEY AUTOINCREMENT, uid TEXT NOT NULL UNIQUE, name TEXT NOT NULL);"
         "CREATE TABLE contact(id INTEGER PRIMARY KEY AUTOINCREMENT,"
         " book INTEGER NOT NULL REFERENCES book(id) ON DELETE CASCADE,"
         " revision INTEGER NOT NULL DEFAULT 1, uid TEXT, card BLOB NOT NULL);"
         "CREATE INDEX contact_of_book ON contact(book);"
         "INSERT INTO book(uid, name) VALUES('u', 'Old');"
         "INSERT INTO contact(book, card) VALUES(1, CAST('BEGIN:VCARD' || char(10) || 'N:;Ann' || char(10) ||"
         " 'NOTE:kept' || char(10) || 'END:VCARD' || char(10) AS BLOB));"
         "PRAGMA application_id=1263681858; PRAGMA user_version=1;");
  const auto library = libraryAt(path, Mode::Existing);
  const auto book = library->book(library->books()->front().ID);
  EXPECT_EQ(krPeople(**book), (People{"Ann: kept"}));
  static_cast<void>((*book)->addGroup("New"_kr));
  EXPECT_TRUE((*book)->saveNow().isOk());
  EXPECT_EQ(numberIn(path, "PRAGMA user_version"), krLibraryVersion());
}

TEST(KRSQLiteLibrary, LeavesANewerFileAsItIs) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  fill(path, 1);
  tamper(path, "PRAGMA user_version=1000");
  const std::string before = folder.content("library.db");
  EXPECT_EQ(failureToOpen(path), KRErrorCode::InvalidArgument);
  EXPECT_EQ(failureToOpen(path, Mode::Create), KRErrorCode::InvalidArgument);
  EXPECT_EQ(folder.content("library.db"), before);
}

TEST(KRSQLiteLibrary, LeavesTheFilesOfOthersAsTheyAre) {
  const KRTestFolder folder;
  folder.put("other.db", "");
  tamper(folder.at("other.db"), "CREATE TABLE theirs(x)");
  folder.put("people.vcf", krCard({"N:Lee;Ann"}));
  folder.put("empty.db", "");
  const std::vector<std::pair<std::string, KRErrorCode>> rows = {{"other.db", KRErrorCode::InvalidArgument},
                                                                 {"people.vcf", KRErrorCode::Damaged},
                                                                 {"empty.db", KRErrorCode::InvalidArgument}};
  for (const auto& [name, code] : rows) {
    const std::string before = folder.content(name);
    EXPECT_EQ(failureToOpen(folder.at(name)), code) << name;
    if (name != "empty.db") EXPECT_EQ(failureToOpen(folder.at(name), Mode::Create), code) << name;
    if (name != "empty.db") EXPECT_EQ(folder.content(name), before) << name;
  }
  EXPECT_FALSE(KRSQLiteLibrary::isDatabase(krPath(folder.at("people.vcf"))));
  EXPECT_FALSE(KRSQLiteLibrary::isDatabase(krPath(folder.at("missing"))));
  EXPECT_FALSE(KRSQLiteLibrary::isDatabase(krPath(folder.path())));
  EXPECT_EQ(failureToOpen(folder.path()), KRErrorCode::IsFolder);
}

TEST(KRSQLiteLibrary, NoticesDamageWhenItIsOpened) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  fill(path, 300);
  std::string bytes = folder.content("library.db");
  ASSERT_GT(bytes.size(), 40'000U);
  // Every page in turn, the last bytes cut off too. What is spoilt must be told, or not matter.
  size_t noticed = 0;
  for (size_t page = 1; page < bytes.size() / 4096; ++page) {
    std::string damaged = bytes;
    damaged.replace(page * 4096, 200, 200, '\xA5');
    folder.put("damaged.db", damaged);
    const auto library = KRSQLiteLibrary::open(krPath(folder.at("damaged.db")));
    if (library) continue;
    EXPECT_EQ(library.error().code, KRErrorCode::Damaged) << library.error().sentence;
    ++noticed;
  }
  EXPECT_GT(noticed, bytes.size() / 4096 - 4);
  folder.put("cut.db", bytes.substr(0, bytes.size() / 2));
  EXPECT_EQ(failureToOpen(folder.at("cut.db")), KRErrorCode::Damaged);
}

TEST(KRSQLiteLibrary, DoesNotSaveABookThatCannotBeRead) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  fill(path, 2);
  tamper(path, "UPDATE contact SET card=CAST('no card' AS BLOB) WHERE id=2");
  const auto library = libraryAt(path, Mode::Existing);
  const auto book = *library->book(library->books()->front().ID);
  EXPECT_EQ(book->load().error().code, KRErrorCode::Damaged);
  EXPECT_EQ(book->allPersonsCount(), 0U);
  EXPECT_TRUE(book->saveNow().isOk());
  book->addPerson(krPersonOf(krNoted("Ann", "x")).get());
  EXPECT_EQ(book->saveNow().error().code, KRErrorCode::Damaged);
  EXPECT_EQ(numberIn(path, "SELECT count(*) FROM contact"), 2);
  tamper(path, "DELETE FROM contact WHERE id=2");
  EXPECT_TRUE(book->readAgain().isOk());
  EXPECT_EQ(krPeople(*book), (People{"p0: note"}));
}

TEST(KRSQLiteLibrary, KeepsTheCardsAsTheyCame) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  const auto library = libraryAt(path);
  const auto book = *library->addBook("People");
  const std::string card = "begin:vcard\nVERSION:2.1\nn:Lee;Ann\nX-ODD ;A:b\n\n c\nNOTE:x\r\nEND:VCARD\n";
  book->addPerson(ABPerson::initWithVCardRepresentation(krPath(card)).get());
  ASSERT_TRUE(book->saveNow().isOk());
  const auto again = *library->book(book->ID());
  EXPECT_EQ(dynamic_cast<ABPerson*>(again->allPersons().at(0))->card(), card);
}

TEST(KRSQLiteLibrary, HoldsContactsOfFilesInOtherCharacterSets) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  const auto library = libraryAt(path);
  const auto book = *library->addBook("People");
  // A card that says nothing of its character set is understood from the others of its file, so it cannot stand alone.
  std::string text;
  for (const char* name : {"M\xFCller", "Jos\xE9",
                           "Stra\xDF"
                           "e"})
    text += krCard({std::string("N:") + name + ";Ann", "X-A:b"}, "2.1");
  const KRCardsRead loaded = krReadCards(text);
  ASSERT_EQ(loaded.count(), 3U);
  std::vector<std::string> shown;
  for (IKRPerson& person : loaded.book->allPersons()) {
    shown.push_back(krShownByReading(person));
    book->addCopy(person);
  }
  ASSERT_TRUE(book->saveNow().isOk());
  const auto again = *library->book(book->ID());
  for (size_t i = 0; i < shown.size(); ++i) EXPECT_EQ(krShownByReading(*again->allPersons().at(i)), shown[i]);
}

TEST(KRSQLiteLibrary, KeepsTheIdentifierOfAContactThatHasNoneInItsCard) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  const auto library = libraryAt(path);
  const auto book = *library->addBook("People");
  book->addPerson(krPersonOf({"N:;Ann"}).get());
  const KRString ID = book->allPersons().at(0)->ID();
  ASSERT_TRUE(book->saveNow().isOk());
  for (const char* note : {"changed", "and again"}) {
    const auto again = *library->book(book->ID());
    EXPECT_EQ(again->allPersons().at(0)->ID(), ID);
    krSetText(*again->allPersons().at(0), KRProPertyNote, note);
    ASSERT_TRUE(again->saveNow().isOk());
    EXPECT_EQ(again->allPersons().at(0)->ID(), ID);
  }
  EXPECT_EQ((*library->book(book->ID()))->allPersons().at(0)->ID(), ID);
}

TEST(KRSQLiteLibrary, DoesNotTakeANewContactForARemovedOne) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  fill(path, 1);
  const auto library = libraryAt(path);
  const KRString ID = library->books()->front().ID;
  const auto mine = *library->book(ID);
  krSetText(*krPersonNamed(*mine, "p0"), KRProPertyNote, "mine");
  // Another program removes the only contact and puts another one in, which must not get its number.
  const auto theirs = *library->book(ID);
  theirs->removePersons(KRPersonArray(krPersonNamed(*theirs, "p0")));
  ASSERT_TRUE(theirs->saveNow().isOk());
  theirs->addPerson(krPersonOf(krNoted("Eve", "theirs")).get());
  ASSERT_TRUE(theirs->saveNow().isOk());
  EXPECT_EQ(mine->saveNow().error().code, KRErrorCode::Changed);
  EXPECT_EQ(krPeople(**library->book(ID)), (People{"Eve: theirs"}));
}

TEST(KRSQLiteLibrary, CountsTheContactsThatAreInTheWay) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  fill(path, 3);
  const auto library = libraryAt(path);
  const auto book = *library->book(library->books()->front().ID);
  for (IKRPerson& person : book->allPersons()) krSetText(person, KRProPertyNote, "mine");
  tamper(path, "UPDATE contact SET revision=revision+1");
  EXPECT_NE(book->saveNow().error().sentence.find("p0 and 2 more were changed"), std::string::npos)
      << book->saveNow().error().sentence;
}

TEST(KRSQLiteBookProvider, ListsTheBooksOfALibrary) {
  const KRTestFolder folder;
  const std::string path = folder.at("library.db");
  KRSQLiteBookProvider provider{KRString(path)};
  EXPECT_TRUE(provider.sources().empty());
  fill(path, 2);
  static_cast<void>(libraryAt(path)->addBook("Empty"));
  const auto sources = provider.sources();
  ASSERT_EQ(sources.size(), 2U);
  EXPECT_EQ(sources[0].name, "People");
  EXPECT_EQ(sources[0].kind, "sqlite");
  EXPECT_EQ(sources[0].place, krPath(path));
  const auto book = sources[0].open();
  ASSERT_TRUE(book.isOk());
  EXPECT_EQ((*book)->ID(), sources[0].ID);
  EXPECT_EQ((*book)->allPersonsCount(), 2U);
}

TEST(KRSQLiteBookProvider, TellsWhyALibraryHasNoBooks) {
  const KRTestFolder folder;
  folder.put("library.db", "this is no database, whatever its name says");
  KRSQLiteBookProvider provider{KRString(folder.at("library.db"))};
  const auto sources = provider.sources();
  ASSERT_EQ(sources.size(), 1U);
  EXPECT_EQ(sources[0].open().error().code, KRErrorCode::Damaged);
}

}  // namespace
