#include "contacts/stores/KRUndo.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "contacts/model/KRSaveScope.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/stores/KRVCardFileStore.h"
#include "contacts/stores/KRVCardFolderStore.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/contacts/stores/StoreSamples.h"
#include "tests/support/KRKilledProcess.h"

namespace {

const std::string kAnn = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ann\r\nN:Lee;Ann;;;\r\nEND:VCARD\r\n";
const std::string kBen = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ben\r\nN:Lee;Ben;;;\r\nEND:VCARD\r\n";

/// A kind of book with two contacts, made in a folder or found there.
struct Kind {
  const char* name;
  KRRef<KRStoredBook> (*open)(const KRTestFolder& place);
  /// Whether what others do to the book's other contacts is no matter.
  bool isJudgedByContact = false;

  friend std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.name; }
};

KRRef<KRStoredBook> fileBook(const KRTestFolder& place) {
  const std::string path = place.at("book.vcf");
  if (!std::filesystem::exists(path)) place.put("book.vcf", kAnn + kBen);
  return krMake<KRStoredBook>(std::make_unique<KRVCardFileStore>(KRText(std::string_view(path))));
}

KRRef<KRStoredBook> folderBook(const KRTestFolder& place) {
  const std::string path = place.at("book");
  if (!std::filesystem::exists(path)) {
    std::filesystem::create_directories(path);
    place.put("book/a.vcf", kAnn);
    place.put("book/b.vcf", kBen);
  }
  return krMake<KRStoredBook>(std::make_unique<KRVCardFolderStore>(KRText(std::string_view(path))));
}

KRRef<KRStoredBook> libraryBook(const KRTestFolder& place) {
  const std::string path = place.at("library.sqlite");
  const bool isNew = !std::filesystem::exists(path);
  const auto library = KRSQLiteLibrary::open(KRText(std::string_view(path)), KRSQLiteLibrary::Mode::Create).value();
  if (!isNew) return library->book(library->books().value().at(0).ID).value();
  auto book = library->addBook("Home"_kr).value();
  book->addPerson(ABPerson::initWithVCardRepresentation(KRText(std::string_view(kAnn))).get());
  book->addPerson(ABPerson::initWithVCardRepresentation(KRText(std::string_view(kBen))).get());
  EXPECT_TRUE(book->saveNow());
  return book;
}

class KRUndoTest : public KRTrashSetting, public testing::WithParamInterface<Kind> {
 protected:
  KRRef<KRStoredBook> book() const { return GetParam().open(place_); }

  /// Ann goes to the trash, Ben gets another name, and Cim comes; `beforeSave` is called before any of it is written.
  KRResult<void> changeOr(const std::function<void()>& beforeSave) const {
    const auto open = book();
    const auto kept = trash();
    KRSaveScope scope;
    IKRPerson* ann = open->personsForIDs({"ann"_kr}).at(0).get();
    kept->addPerson(ann);
    open->removePersons(KRPersonArray(ann));
    krSetText(*open->personsForIDs({"ben"_kr}).at(0), KRProPertyNickname, "Benny");
    open->addPerson(record("UID:cim\r\nN:Lee;Cim;;;\r\n").get());
    kept->save();
    open->save();
    beforeSave();
    KRResult<void> saved = scope.commit();
    KRFile::setFault({});
    return saved;
  }

  void change() const {
    const KRResult<void> saved = changeOr([] {});
    EXPECT_TRUE(saved) << saved.error().sentence;
  }

  void changeRecorded() const {
    const KRUndoRecorder recorder("change");
    change();
  }

  /// The cards of the book in its order, and what is in the trash.
  std::string seen() const {
    std::string text;
    const auto open = book();
    EXPECT_TRUE(open->load());
    for (IKRPerson& person : open->allPersons()) text += dynamic_cast<ABPerson&>(person).card();
    text += "trash:";
    const auto kept = trash();
    for (IKRPerson& person : kept->allPersons()) text += " " + std::string(person.ID().view());
    return text;
  }

  static std::vector<KRUndoRecords::Run> runs() { return KRUndoRecords::all().value(); }

  KRTestFolder place_;
};

TEST_P(KRUndoTest, PutsBackTheBookAndTheTrashAndDoesItAgain) {
  const std::string before = seen();
  changeRecorded();
  const std::string after = seen();
  ASSERT_NE(before, after);
  ASSERT_EQ(runs().size(), 1U);
  {
    const KRUndoRecorder recorder("undo");
    const auto done = KRUndo::putBack(runs().front());
    ASSERT_TRUE(done) << done.error().sentence;
    // The book goes back before the trash forgets what left it.
    ASSERT_EQ(done->size(), 2U);
    EXPECT_EQ(done->front().kind, book()->kind() == "vcard"_kr ? "file"_kr : book()->kind());
    EXPECT_EQ(done->back().kind, "file");
  }
  EXPECT_EQ(seen(), before);
  ASSERT_EQ(runs().size(), 2U);
  const auto again = KRUndo::putBack(runs().front());
  ASSERT_TRUE(again) << again.error().sentence;
  EXPECT_EQ(seen(), after);
  EXPECT_EQ(runs().size(), 2U);
}

TEST_P(KRUndoTest, KeepsNoRecordWithoutARecorder) {
  change();
  EXPECT_TRUE(runs().empty());
}

TEST_P(KRUndoTest, RefusesABookThatHasChangedSince) {
  changeRecorded();
  const auto other = book();
  other->addPerson(record("UID:dot\r\nN:Lee;Dot;;;\r\n").get());
  ASSERT_TRUE(other->saveNow());
  const std::string now = seen();
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_EQ(done.isOk(), GetParam().isJudgedByContact);
  if (done) {
    EXPECT_EQ(book()->allPersonsCount(), 3U);
    return;
  }
  EXPECT_EQ(done.error().code, KRErrorCode::Changed);
  EXPECT_EQ(seen(), now);
  other->removePersons(KRPersonArray(other->personsForIDs({"dot"_kr})));
  ASSERT_TRUE(other->saveNow());
  EXPECT_TRUE(KRUndo::putBack(runs().front()));
}

TEST_P(KRUndoTest, ARunThatIsKilledAnywhereCanBeUndone) {
  size_t untouched = 0;
  size_t halfway = 0;
  size_t whole = 0;
  const std::string before = seen();
  for (size_t stop = 0;; stop += 3) {
    const auto passed = krKillAtSystemCall(
        stop, [] {}, [this] { changeRecorded(); });
    const auto known = runs();
    const bool hasRecord = !known.empty() && !known.front().parts.empty();
    size_t back = 0;
    if (hasRecord) {
      const auto done = KRUndo::putBack(known.front());
      ASSERT_TRUE(done) << "killed at stop " << stop << ": " << done.error().sentence;
      for (const KRUndo::Target& each : *done) back += each.isPutBack ? 1 : 0;
    }
    ASSERT_EQ(seen(), before) << "killed at stop " << stop;
    ++(back == 0 ? untouched : back == 1 ? halfway : whole);
    for (const auto& run : known) ASSERT_TRUE(KRUndoRecords::remove(run));
    if (passed) break;
  }
  EXPECT_GE(untouched, 1U);
  EXPECT_GE(halfway, 1U);
  EXPECT_GE(whole, 1U);
}

/// Two runs that both read the book before either wrote it.
TEST_P(KRUndoTest, OfTwoRunsAtOnceTheLastCanBeUndoneAndThenTheFirst) {
  const std::string before = seen();
  const auto first = book();
  const auto second = book();
  krSetText(*first->personsForIDs({"ann"_kr}).at(0), KRProPertyNickname, "Annie");
  krSetText(*second->personsForIDs({"ben"_kr}).at(0), KRProPertyNickname, "Benny");
  size_t saved = 0;
  std::vector<std::string> between;
  for (const auto& each : {first, second}) {
    const KRUndoRecorder recorder("change");
    between.push_back(seen());
    saved += each->saveNow() ? 1 : 0;
  }
  // A file as a whole is another one for the second.
  ASSERT_EQ(saved, GetParam().name == std::string("File") ? 1U : 2U);
  for (size_t left = saved; left-- > 0;) {
    ASSERT_EQ(runs().size(), left + 1);
    const auto done = KRUndo::putBack(runs().front());
    ASSERT_TRUE(done) << done.error().sentence;
    EXPECT_EQ(seen(), between[left]);
    ASSERT_TRUE(KRUndoRecords::remove(runs().front()));
  }
  EXPECT_EQ(seen(), before);
}

TEST_P(KRUndoTest, ARunThatFailsAnywhereIsAsItWasOrIsUndone) {
  const std::string before = seen();
  bool isThrough = false;
  size_t failures = 0;
  for (int step = 0; !isThrough; ++step) {
    ASSERT_LT(step, 100);
    for (const bool isForGood : {false, true}) {
      bool hasChanged = false;
      bool hasFailed = false;
      {
        const KRUndoRecorder recorder("change");
        int count = 0;
        hasFailed = !changeOr([&] {
          KRFile::setFault([&](KRFile::Step) {
            const bool isHere = isForGood ? count >= step : count == step;
            ++count;
            return isHere ? ENOSPC : 0;
          });
        });
        hasChanged = KRUndoRecorder::hasChangedSince(0);
        isThrough = count <= step;
      }
      if (isThrough) break;
      failures += hasFailed ? 1 : 0;
      const auto known = runs();
      // What is told is what there is.
      EXPECT_EQ(hasChanged, !known.empty()) << step;
      if (hasFailed && !hasChanged) {
        ASSERT_EQ(seen(), before) << step << isForGood;
      }
      for (const auto& run : known) {
        const auto done = KRUndo::putBack(run);
        ASSERT_TRUE(done) << step << isForGood << done.error().sentence;
        ASSERT_TRUE(KRUndoRecords::remove(run));
      }
      ASSERT_EQ(seen(), before) << step << isForGood;
    }
  }
  EXPECT_GE(failures, 5U);
}

TEST_P(KRUndoTest, ARunThatGoesOnIsNotUndone) {
  const KRUndoRecorder recorder("change");
  change();
  const auto held = KRUndoRecords::hold(runs().front());
  ASSERT_FALSE(held);
  EXPECT_EQ(held.error().code, KRErrorCode::Busy);
}

INSTANTIATE_TEST_SUITE_P(Kinds, KRUndoTest,
                         testing::Values(Kind{"File", fileBook}, Kind{"Folder", folderBook, true},
                                         Kind{"Library", libraryBook}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
