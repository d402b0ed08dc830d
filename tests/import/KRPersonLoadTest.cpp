#include "import/KRPersonLoad.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <future>
#include <mutex>

#include "contacts/model/ABPerson.h"
#include "tests/support/KRTestFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string card(const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;" + name + ";;;\r\nFN:" + name + "\r\nEND:VCARD\r\n";
}

/// Notes what it hears, in order, and lets the test wait for ends. A test may hold the run at a person.
class Listener : public KRPersonLoadDelegate {
 public:
  void KRPersonLoadDelegate_start(KRPersonLoad& loader) override {
    EXPECT_NE(std::this_thread::get_id(), forbidden);
    add("start");
    EXPECT_NE(&loader, nullptr);
  }
  void KRPersonLoadDelegate_allNumber(int64_t total, KRPersonLoad& /*loader*/) override {
    add("number " + std::to_string(total));
  }
  void KRPersonLoadDelegate_progress(double percent, const KRRef<IKRPerson>& person, KRPersonLoad& loader) override {
    {
      const std::lock_guard lock(mutex_);
      progress.push_back(percent);
      persons.push_back(person);
    }
    add(std::string(person->showName().view()));
    if (onPerson) onPerson(loader);
  }
  void KRPersonLoadDelegate_end(KRPersonLoad& loader) override {
    stateAtEnd = loader.state();
    add("end");
  }

  /// Waits until so many ends have come; what was heard until then.
  std::vector<std::string> waitForEnds(int count = 1) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return ends_ >= count; });
    return heard_;
  }
  void waitFor(const std::string& event, int count = 1) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return std::count(heard_.begin(), heard_.end(), event) >= count; });
  }

  std::function<void(KRPersonLoad&)> onPerson;
  std::thread::id forbidden;
  std::atomic<int32_t> stateAtEnd = -1;
  std::vector<double> progress;
  std::vector<KRRef<IKRPerson>> persons;

 private:
  void add(const std::string& event) {
    const std::lock_guard lock(mutex_);
    heard_.push_back(event);
    if (event == "end") ++ends_;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> heard_;
  int ends_ = 0;
};

/// Wants to know the end only.
class EndListener : public KRPersonLoadDelegate {
 public:
  void KRPersonLoadDelegate_end(KRPersonLoad& /*loader*/) override { ended.set_value(); }
  std::promise<void> ended;
};

/// A host's loader: no file, or an own reading.
class HostLoad : public KRPersonLoad {
 public:
  explicit HostLoad(KRString path) : KRPersonLoad(std::move(path)) {}
};

/// Tells when it is gone, which is the last thing that a run's thread does.
class WatchedLoad : public KRPersonLoad {
 public:
  WatchedLoad(KRString path, std::promise<void>& gone) : KRPersonLoad(std::move(path)), gone_(gone) {}
  ~WatchedLoad() override { gone_.set_value(); }

 private:
  std::promise<void>& gone_;
};

class KRPersonLoadTest : public testing::Test {
 protected:
  KRString file(std::string_view content, const std::string& name = "cards.vcf") {
    folder_.put(name, content);
    return KRString(folder_.at(name));
  }

  /// What a listener hears of a whole run.
  std::vector<std::string> heard(std::string_view content) {
    return heardOf(KRPersonLoad::initWithFile(file(content)));
  }
  std::vector<std::string> heardOf(const KRRef<KRPersonLoad>& loader) {
    listener_ = std::make_shared<Listener>();
    listener_->forbidden = std::this_thread::get_id();
    loader->setDelegate(listener_);
    EXPECT_TRUE(loader->start());
    return listener_->waitForEnds();
  }

  /// The notes of a whole run, as "line:card sentence", those of a loss with "!".
  std::vector<std::string> notesOf(std::string_view content) {
    const auto loader = KRPersonLoad::initWithFile(file(content));
    std::vector<std::string> notes;
    loader->setNotes([&](const KRPersonLoadNote& note) {
      notes.push_back((note.isPersonLost ? "!" : "") + std::to_string(note.line) + ":" + std::to_string(note.card) +
                      " " + std::string(note.sentence.view()));
    });
    heardOf(loader);
    return notes;
  }

  KRTestFolder folder_;
  std::shared_ptr<Listener> listener_;
};

}  // namespace

TEST_F(KRPersonLoadTest, ChoosesTheLoaderByTheExtensionInAnyCase) {
  for (const char* name : {"a.vcf", "a.VCF", "a.vCard", "b.c.vcard", "with space.Vcf"}) {
    const KRString path = file(card("Ann"), name);
    EXPECT_TRUE(KRPersonLoad::isSupportFile(path)) << name;
    const auto loader = KRPersonLoad::loadWithFile(path);
    ASSERT_TRUE(loader) << name;
    const KRPersonLoad& made = *loader;
    EXPECT_EQ(typeid(made), typeid(KRPersonLoad)) << name;
    EXPECT_EQ(loader->filePath(), path);
    EXPECT_EQ(loader->state(), 0);
  }
  for (const char* name : {"a.txt", "a", "vcf", ".vcf", "a.vcf.bak", "a.", "a.vcf ", "a.vc"}) {
    const KRString path = file(card("Ann"), name);
    EXPECT_FALSE(KRPersonLoad::isSupportFile(path)) << name;
    EXPECT_FALSE(KRPersonLoad::loadWithFile(path)) << name;
  }
  EXPECT_FALSE(KRPersonLoad::isSupportFile(KRString()));
  EXPECT_FALSE(KRPersonLoad::loadWithFile(KRString()));
  EXPECT_FALSE(KRPersonLoad::loadWithFile(""_kr));
}

TEST_F(KRPersonLoadTest, IsNothingWithoutAFile) {
  EXPECT_FALSE(KRPersonLoad::initWithFile(KRString()));
  EXPECT_FALSE(KRPersonLoad::initWithFile(""_kr));
  EXPECT_FALSE(KRPersonLoad::initWithFile(KRString(folder_.at("missing.vcf"))));
  std::filesystem::create_directory(folder_.at("folder.vcf"));
  EXPECT_FALSE(KRPersonLoad::initWithFile(KRString(folder_.at("folder.vcf"))));
  EXPECT_FALSE(KRPersonLoad::loadWithFile(KRString(folder_.at("folder.vcf"))));
  // The extension matters to the factory only.
  EXPECT_TRUE(KRPersonLoad::initWithFile(file("", "book.txt")));
}

TEST_F(KRPersonLoadTest, TellsOneMoreThanThereAreCardsAndSinglePrecisionPercentages) {
  EXPECT_THAT(heard(card("Ann") + card("Bob") + card("Cleo")),
              ElementsAre("start", "number 4", "Ann", "Bob", "Cleo", "end"));
  EXPECT_THAT(listener_->progress,
              ElementsAre(static_cast<double>(100.0F / 3.0F), static_cast<double>(200.0F / 3.0F), 100.0));
  EXPECT_EQ(listener_->progress[0], 33.33333206176758);
  EXPECT_EQ(listener_->stateAtEnd, 2);
  for (const auto& person : listener_->persons) {
    EXPECT_NE(dynamic_cast<ABPerson*>(person.get()), nullptr);
    EXPECT_TRUE(person->addressBookID().isNothing());
  }
}

TEST_F(KRPersonLoadTest, SurvivesJunkBeforeTheFirstCard) {
  EXPECT_THAT(heard("Dear all,\nhere they are: " + card("Ann") + "and more" + card("Bob")),
              ElementsAre("start", "number 3", "Ann", "Bob", "end"));
}

TEST_F(KRPersonLoadTest, LosesACardWithoutItsEnd) {
  EXPECT_THAT(heard(card("Ann") + "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Bob\r\n"),
              ElementsAre("start", "number 2", "Ann", "end"));
  EXPECT_EQ(listener_->progress, std::vector{100.0});
}

TEST_F(KRPersonLoadTest, PassesOverWhatIsNoPersonButCountsIt) {
  const std::string group =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Friends\r\nX-ADDRESSBOOKSERVER-KIND:group\r\nEND:VCARD\r\n";
  EXPECT_THAT(heard("no card\r\nEND:VCARD\r\n" + card("Ann") + group + card("Bob")),
              ElementsAre("start", "number 5", "Ann", "Bob", "end"));
  EXPECT_THAT(listener_->progress, ElementsAre(50.0, 100.0));
}

TEST_F(KRPersonLoadTest, LooksForBeginAndEndInExactlyOneCase) {
  EXPECT_THAT(heard("begin:vcard\nFN:Ann\nend:vcard\n"), ElementsAre("start", "end"));
  // At the very start of its piece the parser takes a card in any case; behind other text it is not found.
  EXPECT_THAT(heard("begin:vcard\nFN:Ann\nEND:VCARD\nbegin:vcard\nFN:Bob\nEND:VCARDx\nbegin:vcard\nFN:Cleo\nEND:VCARD"),
              ElementsAre("start", "number 4", "Ann", "Bob", "end"));
}

TEST_F(KRPersonLoadTest, TellsNoTotalWhenThereIsNothingToRead) {
  EXPECT_THAT(heard(""), ElementsAre("start", "end"));
  EXPECT_THAT(heard("some text\n"), ElementsAre("start", "end"));
  const KRString path = file(card("Ann"), "gone.vcf");
  const auto loader = KRPersonLoad::initWithFile(path);
  std::filesystem::remove(folder_.at("gone.vcf"));
  EXPECT_THAT(heardOf(loader), ElementsAre("start", "end"));
  EXPECT_EQ(loader->state(), 2);
}

TEST_F(KRPersonLoadTest, ReadsNothingWithoutAPath) {
  EXPECT_THAT(heardOf(krMake<HostLoad>(KRString())), ElementsAre("start", "end"));
}

TEST_F(KRPersonLoadTest, DeliversTheEndsOfAnEmptyLastPieceToo) {
  EXPECT_THAT(heard("END:VCARD"), ElementsAre("start", "number 2", "end"));
}

TEST_F(KRPersonLoadTest, ReadsEveryEncoding) {
  std::string wide("\xFF\xFE", 2);
  for (const char c : card("Ann")) wide += {c, '\0'};
  EXPECT_THAT(heard(wide), ElementsAre("start", "number 2", "Ann", "end"));
  EXPECT_THAT(heard(card("J\xF6rg") + card("Zo\xC3\xAB")),
              ElementsAre("start", "number 3", "J\xC3\xB6rg", "Zo\xC3\xAB", "end"));
}

TEST_F(KRPersonLoadTest, AStopLetsNoFurtherPersonThroughAndEnds) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann") + card("Bob") + card("Cleo")));
  const auto listener = std::make_shared<Listener>();
  listener->onPerson = [](KRPersonLoad& each) { each.stop(); };
  loader->setDelegate(listener);
  loader->start();
  EXPECT_THAT(listener->waitForEnds(), ElementsAre("start", "number 4", "Ann", "end"));
  EXPECT_EQ(loader->state(), 2);
}

TEST_F(KRPersonLoadTest, StopFromAnotherThreadTakesEffectBetweenCards) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann") + card("Bob")));
  const auto listener = std::make_shared<Listener>();
  std::promise<void> stopped;
  std::promise<void> reached;
  listener->onPerson = [&](KRPersonLoad&) {
    reached.set_value();
    stopped.get_future().wait();
  };
  loader->setDelegate(listener);
  loader->start();
  reached.get_future().wait();
  EXPECT_EQ(loader->state(), 1);
  loader->stop();
  EXPECT_EQ(loader->state(), 2);
  stopped.set_value();
  EXPECT_THAT(listener->waitForEnds(), ElementsAre("start", "number 3", "Ann", "end"));
}

TEST_F(KRPersonLoadTest, StopDoesNothingUnlessLoading) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann")));
  loader->stop();
  EXPECT_EQ(loader->state(), 0);
  EXPECT_THAT(heardOf(loader), ElementsAre("start", "number 2", "Ann", "end"));
  loader->stop();
  EXPECT_EQ(loader->state(), 2);
}

TEST_F(KRPersonLoadTest, ASecondStartWhileLoadingIsIgnored) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann")));
  const auto listener = std::make_shared<Listener>();
  std::promise<void> release;
  std::promise<void> reached;
  listener->onPerson = [&](KRPersonLoad&) {
    reached.set_value();
    release.get_future().wait();
  };
  loader->setDelegate(listener);
  EXPECT_TRUE(loader->start());
  reached.get_future().wait();
  EXPECT_TRUE(loader->start());
  EXPECT_TRUE(loader->start());
  release.set_value();
  EXPECT_THAT(listener->waitForEnds(), ElementsAre("start", "number 2", "Ann", "end"));
}

TEST_F(KRPersonLoadTest, ReadsTheFileAnewWhenStartedAgain) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann")));
  EXPECT_THAT(heardOf(loader), ElementsAre("start", "number 2", "Ann", "end"));
  EXPECT_EQ(loader->state(), 2);
  file(card("Bob"));
  EXPECT_THAT(heardOf(loader), ElementsAre("start", "number 2", "Bob", "end"));
}

TEST_F(KRPersonLoadTest, AStoppedRunEndsOnceAndNeverTouchesTheNext) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann") + card("Bob")));
  const auto listener = std::make_shared<Listener>();
  std::promise<void> release;
  std::promise<void> reached;
  std::atomic<bool> isFirst = true;
  listener->onPerson = [&](KRPersonLoad&) {
    if (!isFirst.exchange(false)) return;
    reached.set_value();
    release.get_future().wait();
  };
  loader->setDelegate(listener);
  loader->start();
  reached.get_future().wait();
  // The first run is held at its first person, stopped, and a second one goes from start to end meanwhile.
  loader->stop();
  loader->start();
  EXPECT_THAT(listener->waitForEnds(),
              ElementsAre("start", "number 3", "Ann", "start", "number 3", "Ann", "Bob", "end"));
  EXPECT_EQ(loader->state(), 2);
  release.set_value();
  EXPECT_THAT(listener->waitForEnds(2),
              ElementsAre("start", "number 3", "Ann", "start", "number 3", "Ann", "Bob", "end", "end"));
}

TEST_F(KRPersonLoadTest, TheEndOfAStoppedRunLeavesTheNextLoading) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann") + card("Bob")));
  const auto listener = std::make_shared<Listener>();
  std::array<std::promise<void>, 2> release;
  std::array<std::promise<void>, 2> reached;
  std::atomic<size_t> count = 0;
  listener->onPerson = [&](KRPersonLoad&) {
    const size_t place = count++;
    if (place >= 2) return;
    reached[place].set_value();
    release[place].get_future().wait();
  };
  loader->setDelegate(listener);
  loader->start();
  reached[0].get_future().wait();
  loader->stop();
  loader->start();
  reached[1].get_future().wait();
  release[0].set_value();
  listener->waitFor("end");
  EXPECT_EQ(loader->state(), 1);
  EXPECT_EQ(listener->stateAtEnd, 1);
  release[1].set_value();
  const auto all = listener->waitForEnds(2);
  EXPECT_EQ(std::count(all.begin(), all.end(), "Bob"), 1);
  EXPECT_EQ(loader->state(), 2);
}

TEST_F(KRPersonLoadTest, ManyStartsAndStopsGiveEachRunOneStartAndOneEnd) {
  std::string many;
  for (int i = 0; i < 50; ++i) many += card("Ann");
  const auto loader = KRPersonLoad::initWithFile(file(many));
  const auto listener = std::make_shared<Listener>();
  loader->setDelegate(listener);
  constexpr int kRuns = 50;
  for (int run = 0; run < kRuns; ++run) {
    loader->start();
    EXPECT_GE(loader->state(), 1);
    loader->stop();
    EXPECT_EQ(loader->state(), 2);
  }
  const auto all = listener->waitForEnds(kRuns);
  EXPECT_EQ(std::count(all.begin(), all.end(), "start"), kRuns);
  EXPECT_EQ(std::count(all.begin(), all.end(), "end"), kRuns);
}

TEST_F(KRPersonLoadTest, AListenerHearsOnlyWhatItAnswers) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann")));
  const auto listener = std::make_shared<EndListener>();
  loader->setDelegate(listener);
  loader->start();
  listener->ended.get_future().wait();
}

TEST_F(KRPersonLoadTest, AMissingListenerHearsNothingAndTheThreadKeepsTheLoader) {
  std::promise<void> gone;
  auto loader = krMake<WatchedLoad>(file(card("Ann")), gone);
  EXPECT_TRUE(loader->start());
  loader = nullptr;
  gone.get_future().wait();
}

TEST_F(KRPersonLoadTest, KeepsTheHostsOwnObject) {
  const auto loader = KRPersonLoad::initWithFile(file(""));
  EXPECT_FALSE(loader->extend());
  const auto object = krMake<KRData>("x");
  loader->setExtend(object);
  EXPECT_EQ(loader->extend(), object);
  EXPECT_FALSE(loader->delegate());
}

TEST_F(KRPersonLoadTest, ARunOnTheCallingThreadDeliversOnlyWhileLoading) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann")));
  const auto listener = std::make_shared<Listener>();
  loader->setDelegate(listener);
  loader->loadThreed();
  EXPECT_THAT(listener->waitForEnds(), ElementsAre("start", "number 2", "end"));
  EXPECT_EQ(loader->state(), 2);
}

TEST_F(KRPersonLoadTest, TheListenersCallsCanBeMadeByHand) {
  const auto loader = KRPersonLoad::initWithFile(file(""));
  loader->sendStart();
  const auto listener = std::make_shared<Listener>();
  loader->setDelegate(listener);
  loader->sendStart();
  loader->sendNumber(int64_t{1} << 40U);
  loader->sendProgress(12.5, krMake<ABPerson>());
  loader->sendEnd();
  EXPECT_THAT(listener->waitForEnds(), ElementsAre("start", "number 1099511627776", "", "end"));
  EXPECT_EQ(listener->stateAtEnd, 2);
  EXPECT_EQ(listener->progress, std::vector{12.5});
}

TEST_F(KRPersonLoadTest, TheOtherReaderTakesTheWholeFileWithoutATotalOrAState) {
  const auto loader = KRPersonLoad::initWithFile(file("begin:vcard\nFN:Ann\nend:vcard\n" + card("Bob") + card("Cleo")));
  const auto listener = std::make_shared<Listener>();
  loader->setDelegate(listener);
  listener->onPerson = [](KRPersonLoad& each) { each.stop(); };
  loader->loadThreed2();
  EXPECT_THAT(listener->waitForEnds(), ElementsAre("start", "Ann", "Bob", "Cleo", "end"));
  EXPECT_THAT(listener->progress,
              ElementsAre(static_cast<double>(100.0F / 3.0F), static_cast<double>(200.0F / 3.0F), 100.0));
  EXPECT_EQ(loader->state(), 2);

  const auto without = krMake<HostLoad>(KRString());
  const auto other = std::make_shared<Listener>();
  without->setDelegate(other);
  without->loadThreed2();
  EXPECT_THAT(other->waitForEnds(), ElementsAre("start", "end"));
}

TEST(KRPersonLoad, CutsAwayWhatStandsBeforeTheFirstBegin) {
  const auto cut = [](const char* text) { return KRPersonLoad::standBengin(text); };
  EXPECT_EQ(cut("xBEGIN:VCARD\nFN:a"), KRText("BEGIN:VCARD\nFN:a"));
  EXPECT_EQ(cut("BEGIN:VCARD xBEGIN:VCARD"), KRText("BEGIN:VCARD xBEGIN:VCARD"));
  EXPECT_EQ(cut("x BEGIN:VCARD BEGIN:VCARD"), KRText("BEGIN:VCARD BEGIN:VCARD"));
  EXPECT_EQ(cut("begin:vcard"), KRText("begin:vcard"));
  EXPECT_EQ(cut(""), KRText(""));
  EXPECT_TRUE(KRPersonLoad::standBengin(KRText()).isNothing());
}

TEST_F(KRPersonLoadTest, NotesTellLineCardAndReason) {
  EXPECT_THAT(notesOf(card("Ann")), IsEmpty());
  EXPECT_THAT(notesOf(card("Ann") + "BEGIN:VCARD\r\nVERSION:3.0\r\nno colon\r\nFN:B\r\nEND:VCARD\r\n"),
              ElementsAre("8:2 the line has no colon"));
  EXPECT_THAT(notesOf(card("Ann") + "\n\njunk\nTEL:1\nEND:VCARD\n"),
              ElementsAre("8:2 the lines belong to no card", "!8:2 no BEGIN:VCARD begins the card"));
  EXPECT_THAT(notesOf("BEGIN:VCARD\nFN:A\nBEGIN:VCARD\nFN:B\nEND:VCARD\n"),
              ElementsAre("!1:1 the card is cut off before its end"));
  EXPECT_THAT(notesOf("BEGIN:VCARD\nFN:A\nend:vcard\nBEGIN:VCARD\nFN:B\nEND:VCARD\n"),
              ElementsAre("!1:1 another card before the END:VCARD is not read"));
  EXPECT_THAT(notesOf("BEGIN:VCARD\nFN:A\nKIND:group\nEND:VCARD\n"), ElementsAre("1:1 the card is that of a group"));
  EXPECT_THAT(notesOf(card("Ann") + "BEGIN:VCARD\nFN:B\n"),
              ElementsAre("6:0 the text behind the last END:VCARD is not read"));
  EXPECT_THAT(notesOf("nothing\n"), ElementsAre("!0:0 the file holds no END:VCARD"));
}

TEST_F(KRPersonLoadTest, NotesTellWhyAFileCannotBeRead) {
  const auto loader = KRPersonLoad::initWithFile(file(card("Ann"), "gone.vcf"));
  std::filesystem::remove(folder_.at("gone.vcf"));
  std::string told;
  loader->setNotes([&](const KRPersonLoadNote& note) {
    EXPECT_TRUE(note.isPersonLost);
    told = note.sentence.view();
  });
  heardOf(loader);
  EXPECT_THAT(told, HasSubstr("gone.vcf"));
}
