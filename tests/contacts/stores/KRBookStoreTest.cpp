// What every store does, whatever it keeps its contacts in.

#include "contacts/stores/KRBookStore.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "tests/contacts/stores/StoreSamples.h"
#include "tests/support/KRKilledProcess.h"

namespace {

using People = std::vector<std::string>;

class KRBookStoreTest : public testing::TestWithParam<KRStoreKind> {
 protected:
  void SetUp() override {
    GetParam().make(folder);
    if (HasFatalFailure()) return;
    const auto book = open();
    for (const char* first : {"Ann", "Bo", "Cy"}) book->addPerson(krPersonOf(krNoted(first, "old")).get());
    const auto saved = book->saveNow();
    ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
  }

  KRRef<KRStoredBook> open() const { return GetParam().opened(folder); }
  /// What is stored, read by a program that comes fresh to it.
  People stored() const { return krPeople(*open()); }

  KRTestFolder folder;
};

INSTANTIATE_TEST_SUITE_P(All, KRBookStoreTest, testing::ValuesIn(krStoreKinds()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(KRBookStoreTest, KnowsNameAndCountWithoutReading) {
  const auto book = open();
  EXPECT_FALSE(book->name().isEmpty());
  EXPECT_FALSE(book->ID().isEmpty());
  EXPECT_EQ(book->kind(), GetParam().name);
  EXPECT_TRUE(book->place().view().find(GetParam().placeIn(folder)) == 0);
  EXPECT_EQ(book->allPersonsCount(), 3U);
  EXPECT_NE(book->isRead(), GetParam().canCount);
  EXPECT_EQ(open()->ID(), book->ID());
}

TEST_P(KRBookStoreTest, HoldsWhatWasAdded) {
  EXPECT_EQ(stored(), (People{"Ann: old", "Bo: old", "Cy: old"}));
  const auto book = open();
  EXPECT_EQ(krPersonNamed(*book, "Bo")->addressBookID(), book->ID());
  EXPECT_EQ(krPersonNamed(*book, "Bo")->ID(), "uid-Bo");
  EXPECT_EQ(book->allPersonsCount(), 3U);
}

TEST_P(KRBookStoreTest, KeepsLinesThatTheModelDoesNotKnow) {
  const auto book = open();
  krSetText(*krPersonNamed(*book, "Bo"), KRProPertyNote, "new");
  ASSERT_TRUE(book->saveNow().isOk());
  const auto again = open();
  for (const char* name : {"Ann", "Bo", "Cy"}) {
    const std::string card(krPersonNamed(*again, name)->card());
    EXPECT_NE(card.find("X-UNKNOWN;X-A=b:" + std::string(name) + "'s own"), std::string::npos) << card;
  }
}

TEST_P(KRBookStoreTest, HoldsEverythingThatACardShows) {
  const auto book = open();
  for (const char* version : {"2.1", "3.0", "4.0"}) {
    const std::string card = krRichCard(version);
    const auto person = ABPerson::initWithVCardRepresentation(krPath(card));
    const std::string before = krShownByReading(*person);
    book->addPerson(person.get());
    ASSERT_TRUE(book->saveNow().isOk());
    EXPECT_EQ(krShownByReading(*person), before);
    const auto again = open();
    const auto found = again->personsForIDs({person->ID()});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(krShownByReading(*found.front()), before);
  }
}

TEST_P(KRBookStoreTest, WritesAChangedContact) {
  const auto book = open();
  const auto person = krPersonNamed(*book, "Bo");
  krSetText(*person, KRProPertyNote, "new, with; all: \"signs\" \\ and\nlines");
  krSetText(*person, KRProPertyCompany, "Müller & Söhne");
  const KRString ID = person->ID();
  const std::string shown = krShownByReading(*person);
  ASSERT_TRUE(book->hasChanges());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_FALSE(book->hasChanges());
  EXPECT_EQ(person->ID(), ID);
  EXPECT_EQ(krShownByReading(*person), shown);
  const auto again = open();
  EXPECT_EQ(krShownByReading(*krPersonNamed(*again, "Bo")), shown);
  EXPECT_EQ(krPersonNamed(*again, "Bo")->ID(), ID);
  EXPECT_EQ(again->allPersonsCount(), 3U);
}

TEST_P(KRBookStoreTest, WritesTheSameContactAgainAndAgain) {
  const auto book = open();
  for (const char* note : {"one", "two", "three"}) {
    krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, note);
    ASSERT_TRUE(book->saveNow().isOk());
    EXPECT_EQ(stored().back(), std::string("Cy: ") + note);
  }
}

TEST_P(KRBookStoreTest, TakesRemovedContactsOut) {
  const auto book = open();
  book->removePersons(KRPersonArray(krPersonNamed(*book, "Ann")));
  EXPECT_EQ(stored(), (People{"Ann: old", "Bo: old", "Cy: old"}));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), (People{"Bo: old", "Cy: old"}));
  book->removePersons(KRPersonArray(book->allPersons().copy()));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), People{});
  book->addPerson(krPersonOf(krNoted("Dee", "first again")).get());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), (People{"Dee: first again"}));
}

TEST_P(KRBookStoreTest, WritesAdditionsChangesAndRemovalsTogether) {
  const auto book = open();
  const auto fresh = book->newPerson();
  krSetText(*fresh, KRProPertyNickname, "Newcomer");
  krSetText(*fresh, KRProPertyNote, "made here");
  book->addPerson(krPersonOf(krNoted("Dee", "added")).get());
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, "changed");
  book->removePersons(KRPersonArray(krPersonNamed(*book, "Bo")));
  const People expected = krPeople(*book);
  ASSERT_EQ(expected.size(), 4U);
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), expected);
  // The same once more, on what was just written.
  krSetText(*fresh, KRProPertyNote, "changed after that");
  krSetText(*krPersonNamed(*book, "Dee"), KRProPertyNote, "changed too");
  book->removePersons(KRPersonArray(krPersonNamed(*book, "Cy")));
  const People later = krPeople(*book);
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), later);
}

TEST_P(KRBookStoreTest, PutsBackAPersonThatWasTakenOut) {
  const auto book = open();
  const auto person = krPersonNamed(*book, "Ann");
  book->removePersons(KRPersonArray(person));
  book->addPerson(person.get());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), (People{"Ann: old", "Bo: old", "Cy: old"}));
  book->removePersons(KRPersonArray(person));
  ASSERT_TRUE(book->saveNow().isOk());
  book->addPerson(person.get());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), (People{"Ann: old", "Bo: old", "Cy: old"}));
}

TEST_P(KRBookStoreTest, KeepsTheIdentifierOfANewPerson) {
  const auto book = open();
  const auto fresh = book->newPerson();
  krSetText(*fresh, KRProPertyNickname, "Newcomer");
  const KRString ID = fresh->ID();
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(fresh->ID(), ID);
  const auto again = open();
  EXPECT_EQ(again->personsForIDs({ID}).size(), 1U);
}

TEST_P(KRBookStoreTest, TakesAHostsOwnPersonsAsRecords) {
  const auto book = open();
  const auto loaded = krMake<KRTempPerson>();
  krSetText(*loaded, KRProPertyNickname, "Tem");
  krSetText(*loaded, KRProPertyNote, "loaded");
  book->addPerson(loaded.get());
  EXPECT_EQ(book->allPersons().at(3)->showName(), loaded->showName());
  EXPECT_EQ(book->allPersons().at(3)->ID(), loaded->ID());
  EXPECT_NE(book->allPersons().at(3), loaded.get());
  const People expected = krPeople(*book);
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored(), expected);
}

TEST_P(KRBookStoreTest, CopiesAPersonOfAnotherBook) {
  const auto other = krMake<KRAddressBook>("other"_kr, "Other"_kr);
  const auto person = krPersonOf(krNoted("Dee", "theirs"));
  other->addPerson(person.get());
  krSetText(*person, KRProPertyNote, "changed there");
  const auto book = open();
  const auto copy = book->addCopy(*person);
  EXPECT_EQ(person->addressBookID(), "other");
  EXPECT_EQ(copy->addressBookID(), book->ID());
  EXPECT_EQ(krShownByReading(*copy), krShownByReading(*person));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_TRUE(person->isChanged());
  const auto again = open();
  EXPECT_EQ(krPeople(*again).back(), "Dee: changed there");
  EXPECT_NE(krPersonNamed(*again, "Dee")->card().find("X-UNKNOWN"), std::string_view::npos);
  EXPECT_EQ(krPersonNamed(*again, "Dee")->ID(), "uid-Dee");
}

TEST_P(KRBookStoreTest, WritesNothingWhenNothingChanged) {
  const auto book = open();
  EXPECT_TRUE(book->saveNow().isOk());
  EXPECT_FALSE(book->isRead());
  static_cast<void>(book->allPersons());
  EXPECT_FALSE(book->hasChanges());
  // Another program's change is no conflict with a save that has nothing to write.
  const auto other = open();
  krSetText(*krPersonNamed(*other, "Bo"), KRProPertyNote, "theirs");
  ASSERT_TRUE(other->saveNow().isOk());
  EXPECT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(stored()[1], "Bo: theirs");
}

TEST_P(KRBookStoreTest, ReadsOnceForManyThreads) {
  const auto book = open();
  std::vector<KRPersonList*> lists(4);
  std::vector<size_t> counts(4);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < lists.size(); ++i) {
    threads.emplace_back([&, i] {
      lists[i] = &book->allPersons();
      counts[i] = lists[i]->count();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counts, std::vector<size_t>(4, 3));
}

// Others

TEST_P(KRBookStoreTest, DoesNotOverwriteWhatAnotherProgramChanged) {
  const auto mine = open();
  const auto theirs = open();
  krSetText(*krPersonNamed(*mine, "Bo"), KRProPertyNote, "mine");
  mine->addPerson(krPersonOf(krNoted("Dee", "mine")).get());
  krSetText(*krPersonNamed(*theirs, "Bo"), KRProPertyNote, "theirs, and longer");
  ASSERT_TRUE(theirs->saveNow().isOk());
  for (int attempt = 0; attempt < 2; ++attempt) {
    const auto saved = mine->saveNow();
    ASSERT_FALSE(saved.isOk());
    EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
    EXPECT_NE(saved.error().sentence.find(GetParam().placeIn(folder)), std::string::npos) << saved.error().sentence;
    EXPECT_EQ(stored(), (People{"Ann: old", "Bo: theirs, and longer", "Cy: old"}));
    EXPECT_EQ(krPeople(*mine), (People{"Ann: old", "Bo: mine", "Cy: old", "Dee: mine"}));
  }
  ASSERT_TRUE(mine->readAgain().isOk());
  EXPECT_EQ(krPeople(*mine), (People{"Ann: old", "Bo: theirs, and longer", "Cy: old"}));
  krSetText(*krPersonNamed(*mine, "Bo"), KRProPertyNote, "agreed");
  EXPECT_TRUE(mine->saveNow().isOk());
  EXPECT_EQ(stored()[1], "Bo: agreed");
}

TEST_P(KRBookStoreTest, DoesNotRemoveWhatAnotherProgramChanged) {
  const auto mine = open();
  const auto theirs = open();
  mine->removePersons(KRPersonArray(krPersonNamed(*mine, "Bo")));
  krSetText(*krPersonNamed(*theirs, "Bo"), KRProPertyNote, "theirs");
  ASSERT_TRUE(theirs->saveNow().isOk());
  EXPECT_EQ(mine->saveNow().error().code, KRErrorCode::Changed);
  EXPECT_EQ(stored(), (People{"Ann: old", "Bo: theirs", "Cy: old"}));
}

TEST_P(KRBookStoreTest, DoesNotChangeWhatAnotherProgramRemoved) {
  const auto mine = open();
  const auto theirs = open();
  krSetText(*krPersonNamed(*mine, "Bo"), KRProPertyNote, "mine");
  theirs->removePersons(KRPersonArray(krPersonNamed(*theirs, "Bo")));
  theirs->addPerson(krPersonOf(krNoted("Eve", "theirs")).get());
  ASSERT_TRUE(theirs->saveNow().isOk());
  EXPECT_EQ(mine->saveNow().error().code, KRErrorCode::Changed);
  EXPECT_EQ(stored(), (People{"Ann: old", "Cy: old", "Eve: theirs"}));
}

TEST_P(KRBookStoreTest, LetsTwoProgramsChangeDifferentContacts) {
  const auto mine = open();
  const auto theirs = open();
  krSetText(*krPersonNamed(*mine, "Ann"), KRProPertyNote, "mine");
  mine->removePersons(KRPersonArray(krPersonNamed(*mine, "Cy")));
  krSetText(*krPersonNamed(*theirs, "Bo"), KRProPertyNote, "theirs");
  theirs->addPerson(krPersonOf(krNoted("Eve", "theirs")).get());
  ASSERT_TRUE(theirs->saveNow().isOk());
  const auto saved = mine->saveNow();
  if (GetParam().isByContact) {
    ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
    EXPECT_EQ(stored(), (People{"Ann: mine", "Bo: theirs", "Eve: theirs"}));
  } else {
    EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
    EXPECT_EQ(stored(), (People{"Ann: old", "Bo: theirs", "Cy: old", "Eve: theirs"}));
  }
}

TEST_P(KRBookStoreTest, TakesARemovalThatAnotherProgramMadeToo) {
  if (!GetParam().isByContact) return;
  const auto mine = open();
  const auto theirs = open();
  mine->removePersons(KRPersonArray(krPersonNamed(*mine, "Bo")));
  theirs->removePersons(KRPersonArray(krPersonNamed(*theirs, "Bo")));
  ASSERT_TRUE(theirs->saveNow().isOk());
  EXPECT_TRUE(mine->saveNow().isOk());
  EXPECT_EQ(stored(), (People{"Ann: old", "Cy: old"}));
}

TEST_P(KRBookStoreTest, ReadsAnewWhenAskedToUpdate) {
  const auto mine = open();
  ASSERT_EQ(krPeople(*mine).size(), 3U);
  const auto theirs = open();
  krSetText(*krPersonNamed(*theirs, "Bo"), KRProPertyNote, "theirs");
  ASSERT_TRUE(theirs->saveNow().isOk());
  mine->update();
  EXPECT_EQ(krPeople(*mine)[1], "Bo: theirs");
  // What is not saved yet is not dropped.
  krSetText(*krPersonNamed(*mine, "Ann"), KRProPertyNote, "mine");
  mine->update();
  EXPECT_EQ(krPeople(*mine)[0], "Ann: mine");
}

// Groups

TEST_P(KRBookStoreTest, KeepsGroups) {
  if (!GetParam().hasGroups) return;
  const auto book = open();
  const auto friends = book->addGroup("Friends"_kr);
  const auto work = book->addGroup("Work"_kr, "group-work"_kr);
  EXPECT_EQ(book->addGroup("Other name"_kr, "group-work"_kr), work);
  book->setGroups(*krPersonNamed(*book, "Ann"), {friends, work});
  book->addPerson(krPersonOf(krNoted("Dee", "new")).get());
  book->setGroups(*krPersonNamed(*book, "Dee"), {work});
  ASSERT_TRUE(book->hasChanges());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_FALSE(book->hasChanges());

  const auto again = open();
  ASSERT_EQ(again->rootGroupsCount(), 2U);
  EXPECT_EQ(again->rootGroups()[0]->name(), "Friends");
  EXPECT_EQ(again->rootGroups()[0]->uniqueId(), friends->uniqueId());
  EXPECT_EQ(krPersonNamed(*again, "Ann")->parentGroups(), again->rootGroups());
  ASSERT_EQ(krPersonNamed(*again, "Dee")->parentGroups().size(), 1U);
  EXPECT_EQ(krPersonNamed(*again, "Dee")->parentGroups()[0]->uniqueId(), "group-work");
  EXPECT_TRUE(krPersonNamed(*again, "Bo")->parentGroups().empty());
}

TEST_P(KRBookStoreTest, TakesGroupsAndMembershipsAway) {
  if (!GetParam().hasGroups) return;
  const auto book = open();
  const auto friends = book->addGroup("Friends"_kr);
  const auto work = book->addGroup("Work"_kr);
  for (IKRPerson& person : book->allPersons()) book->setGroups(dynamic_cast<ABPerson&>(person), {friends, work});
  ASSERT_TRUE(book->saveNow().isOk());
  book->removeGroup(*friends);
  book->setGroups(*krPersonNamed(*book, "Ann"), {friends});
  EXPECT_TRUE(krPersonNamed(*book, "Ann")->parentGroups().empty());
  book->removePersons(KRPersonArray(krPersonNamed(*book, "Bo")));
  ASSERT_TRUE(book->saveNow().isOk());
  const auto again = open();
  ASSERT_EQ(again->rootGroupsCount(), 1U);
  EXPECT_TRUE(krPersonNamed(*again, "Ann")->parentGroups().empty());
  EXPECT_EQ(krPersonNamed(*again, "Cy")->parentGroups(), again->rootGroups());
}

TEST_P(KRBookStoreTest, LeavesTheGroupsOfAnotherProgram) {
  if (!GetParam().hasGroups || !GetParam().isByContact) return;
  const auto mine = open();
  const auto theirs = open();
  const auto friends = mine->addGroup("Friends"_kr);
  mine->setGroups(*krPersonNamed(*mine, "Ann"), {friends});
  const auto work = theirs->addGroup("Work"_kr);
  theirs->setGroups(*krPersonNamed(*theirs, "Ann"), {work});
  ASSERT_TRUE(theirs->saveNow().isOk());
  ASSERT_TRUE(mine->saveNow().isOk());
  EXPECT_EQ(krPersonNamed(*open(), "Ann")->parentGroups().size(), 2U);
}

// Faults

/// While it lives, no file of this process can become larger than so many bytes.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit lower{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &lower);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST_P(KRBookStoreTest, KeepsTheOldStateWhenTheDiskIsFull) {
  if (!GetParam().isWrittenHere) return;
  const auto book = open();
  krSetText(*krPersonNamed(*book, "Bo"), KRProPertyNote, "new " + std::string(200'000, 'x'));
  book->addPerson(krPersonOf(krNoted("Dee", "new")).get());
  const People wanted = krPeople(*book);
  {
    const FullDisk full(100'000);
    const auto saved = book->saveNow();
    ASSERT_FALSE(saved.isOk());
    EXPECT_NE(saved.error().sentence.find(GetParam().placeIn(folder)), std::string::npos) << saved.error().sentence;
  }
  EXPECT_EQ(stored(), (People{"Ann: old", "Bo: old", "Cy: old"}));
  EXPECT_EQ(krPeople(*book), wanted);
  EXPECT_TRUE(book->hasChanges());
  const auto saved = book->saveNow();
  ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
  EXPECT_EQ(stored(), wanted);
}

/// One round of the life of a book: a change, a removal, an addition, a save.
void liveOn(KRStoredBook& book, int round) {
  const std::string number = std::to_string(round);
  krSetText(*krPersonNamed(book, "Ann"), KRProPertyNote, number);
  book.removePersons(KRPersonArray(krPersonNamed(book, "r" + std::to_string(round - 1))));
  book.addPerson(krPersonOf(krNoted("r" + number, number)).get());
  if (!book.saveNow()) _exit(1);
}

/// The rounds that what is stored comes from: Ann's note, and the contacts made in rounds.
void expectStateOfRounds(const People& people, int last) {
  std::vector<int> made;
  int notes = 0;
  for (const std::string& each : people) {
    const int round = std::atoi(each.substr(each.find(": ") + 2).c_str());
    if (each.rfind("Ann: ", 0) == 0) {
      ++notes;
      EXPECT_LE(round, last);
    } else if (each[0] == 'r') {
      EXPECT_EQ(each, "r" + std::to_string(round) + ": " + std::to_string(round));
      made.push_back(round);
    }
  }
  EXPECT_EQ(notes, 1);
  // One was taken out for each that came; a store of several files may have done one of the two.
  ASSERT_GE(made.size(), 1U);
  ASSERT_LE(made.size(), 2U);
  EXPECT_LE(made.back() - made.front(), 1);
  EXPECT_EQ(std::count(people.begin(), people.end(), "Bo: old"), 1);
  EXPECT_EQ(std::count(people.begin(), people.end(), "Cy: old"), 1);
}

/// Kills a process that saves, at a random place each time; `KR_KILLS` says how often.
TEST_P(KRBookStoreTest, HoldsTheOldOrTheNewStateWhenKilledWhileSaving) {
  if (!GetParam().isWrittenHere) return;
  const char* wanted = std::getenv("KR_KILLS");
  const int kills = wanted == nullptr ? 12 : std::atoi(wanted);
  constexpr int kRounds = 3;
  {
    const auto book = open();
    book->addPerson(krPersonOf(krNoted("r0", "0")).get());
    ASSERT_TRUE(book->saveNow().isOk());
  }
  KRRef<KRStoredBook> book;
  int round = 0;
  const auto prepare = [&] {
    book = open();
    for (const std::string& each : krPeople(*book)) {
      if (each[0] == 'r') round = std::max(round, std::atoi(each.c_str() + 1));
    }
    // What a kill left half done is brought to an end first.
    for (const std::string& each : krPeople(*book)) {
      if (each[0] == 'r' && std::atoi(each.c_str() + 1) != round)
        book->removePersons(KRPersonArray(krPersonNamed(*book, each.substr(0, each.find(':')))));
    }
    if (!book->saveNow()) _exit(1);
  };
  const auto work = [&] {
    for (int i = 1; i <= kRounds; ++i) liveOn(*book, round + i);
  };
  const std::optional<size_t> all = krKillAtSystemCall(SIZE_MAX, prepare, work);
  ASSERT_TRUE(all.has_value());
  ASSERT_GT(*all, 20U);
  const char* seed = std::getenv("KR_SEED");
  std::mt19937 random(seed == nullptr ? 1U : static_cast<unsigned>(std::atoi(seed)));
  for (int kill = 1; kill <= kills; ++kill) {
    const size_t stop = random() % *all;
    krKillAtSystemCall(stop, prepare, work);
    expectStateOfRounds(stored(), kRounds * (kill + 1));
    if (HasFailure()) FAIL() << "killed at system call " << stop << " of " << *all << ", the " << kill << "th time";
  }
}

}  // namespace
