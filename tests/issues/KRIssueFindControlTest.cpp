#include "issues/KRIssueFindControl.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <thread>

#include "contacts/model/ABPerson.h"
#include "issues/KRIssueManager.h"
#include "platform/KRCaseFolding.h"
#include "tests/support/KRFindings.h"
#include "tests/support/KRPrivatePreferences.h"

namespace {

/// Notes what it hears, and tells when the end has come.
class Listener : public KRIssueFindControlDelegate {
 public:
  void KRIssueFindControlDelegate_FindStart(KRIssueFindControl& findControl) override {
    ++starts;
    control = &findControl;
    thread = std::this_thread::get_id();
    EXPECT_TRUE(progress.empty());
  }
  void KRIssueFindControlDelegate_Finding(double percent, KRIssueFindControl& findControl) override {
    EXPECT_EQ(control, &findControl);
    EXPECT_EQ(thread, std::this_thread::get_id());
    progress.push_back(percent);
  }
  void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& found,
                                          KRIssueFindControl& findControl) override {
    EXPECT_EQ(control, &findControl);
    EXPECT_EQ(thread, std::this_thread::get_id());
    result = found;
    ended.set_value();
  }

  int starts = 0;
  KRIssueFindControl* control = nullptr;
  std::thread::id thread;
  std::vector<double> progress;
  KRRef<KRIssueFindResult> result;
  std::promise<void> ended;
};

/// Wants to know the end only.
class EndListener : public KRIssueFindControlDelegate {
 public:
  void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& found, KRIssueFindControl&) override {
    result = found;
  }

  KRRef<KRIssueFindResult> result;
};

/// Answers what it was given.
class FixedFind : public KRIssueFind {
 public:
  explicit FixedFind(KRRef<KRIssueContext> context) : context_(std::move(context)) {}
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress&) override {
    EXPECT_NE(persons, nullptr);
    return context_;
  }

 private:
  KRRef<KRIssueContext> context_;
};

/// A host's control, with a detector of its own for every issue.
class HostControl : public KRIssueFindControl {
 public:
  explicit HostControl(KRRef<KRIssueFind> find) : find_(std::move(find)) {}

 protected:
  KRRef<KRIssueFind> detectorForIssue(KRIssue*) override { return find_; }

 private:
  KRRef<KRIssueFind> find_;
};

/// Tells when it is gone, which is the last thing that a run's thread does.
class WatchedControl : public KRIssueFindControl {
 public:
  explicit WatchedControl(std::promise<void>& gone) : gone_(gone) {}
  ~WatchedControl() override { gone_.set_value(); }

 private:
  std::promise<void>& gone_;
};

class KRIssueFindControlTest : public testing::Test {
 protected:
  KRIssueFindControlTest() { book_->addPersons({krNamed("Ann"), krNamed("")}); }

  static void use(const std::vector<KRString>& names) {
    KRIssueManager& manager = KRIssueManager::shareIssueManager();
    KRIssueList issues;
    for (const KRString& name : names) issues.append(manager.supportIssueByName(name));
    manager.setUseIssues(&issues);
  }

  /// A run on this thread.
  static std::shared_ptr<Listener> run(KRIssueFindControl& control) {
    auto listener = std::make_shared<Listener>();
    control.setDelegate(listener);
    control.findThreed();
    control.setDelegate(nullptr);
    return listener;
  }
  std::shared_ptr<Listener> run() const { return run(*KRIssueFindControl::initWithAddressBook(book_)); }

  /// The last reports of each band, told by the number of reports that a detector makes in one.
  static std::vector<double> bandEnds(const std::vector<double>& progress, double step) {
    std::vector<double> ends;
    double base = 0.0;
    for (const double percent : progress) {
      if (percent == base + step) ends.push_back(base += step);
    }
    return ends;
  }

  KRPrivatePreferences preferences_;
  KRRef<KRAddressBook> book_ = krMake<KRAddressBook>("book"_kr, "Book"_kr);
};

TEST_F(KRIssueFindControlTest, IsMadeForABookOnlyWhenThereIsOne) {
  const auto control = KRIssueFindControl::initWithAddressBook(book_);
  EXPECT_EQ(control->addressBook(), book_);
  EXPECT_EQ(control->issueArray(), nullptr);
  EXPECT_EQ(control->personArray(), nullptr);
  EXPECT_FALSE(KRIssueFindControl::initWithAddressBook({}));
}

TEST_F(KRIssueFindControlTest, CopiesItsLists) {
  KRIssueList issues;
  issues.append(KRIssueManager::shareIssueManager().supportIssues().at(0));
  const auto control = KRIssueFindControl::initWithIssues(&issues, &book_->allPersons());
  EXPECT_EQ(control->issueArray()->count(), 1U);
  EXPECT_EQ(control->personArray()->count(), 2U);
  EXPECT_NE(control->personArray().get(), &book_->allPersons());
  EXPECT_FALSE(control->addressBook());
  const auto empty = KRIssueFindControl::initWithIssues(nullptr, nullptr);
  EXPECT_TRUE(empty->issueArray()->isEmpty());
  EXPECT_TRUE(empty->personArray()->isEmpty());
  const auto issuesOnly = KRIssueFindControl::initWithIssues(nullptr);
  EXPECT_TRUE(issuesOnly->issueArray()->isEmpty());
  EXPECT_EQ(issuesOnly->personArray(), nullptr);
}

TEST_F(KRIssueFindControlTest, KeepsWhatIsSet) {
  const auto control = KRIssueFindControl::initWithIssues(nullptr);
  const auto issues = std::make_shared<KRIssueList>();
  const auto persons = std::make_shared<KRPersonList>();
  const auto listener = std::make_shared<EndListener>();
  control->setIssueArray(issues);
  control->setPersonArray(persons);
  control->setAddressBook(book_);
  control->setDelegate(listener);
  EXPECT_EQ(control->issueArray(), issues);
  EXPECT_EQ(control->personArray(), persons);
  EXPECT_EQ(control->addressBook(), book_);
  EXPECT_EQ(control->delegate(), listener);
}

TEST_F(KRIssueFindControlTest, FifteenIssuesEndTheirBandsAtTheDoubleSumsOfTheStep) {
  const auto listener = run();
  constexpr double kStep = 6.666666507720947;
  std::vector<double> expected;
  double sum = 0.0;
  for (int i = 0; i < 15; ++i) expected.push_back(sum += kStep);
  EXPECT_EQ(bandEnds(listener->progress, kStep), expected);
  EXPECT_EQ(listener->progress.back(), 99.99999761581421);
}

TEST_F(KRIssueFindControlTest, OneIssueEndsAtExactlyAHundred) {
  use({KRIssueBlankName});
  EXPECT_EQ(run()->progress.back(), 100.0);
}

TEST_F(KRIssueFindControlTest, ScalesADetectorsProgressIntoItsBand) {
  use({KRIssueIncompleteName, KRIssueBlankName, KRIssueInvalidCharacters});
  const auto listener = run();
  // Two persons: the first two detectors report 0 and 50, the third 50 and 100.
  constexpr double kStep = 33.33333206176758;
  constexpr double kHalf = 16.66666603088379;
  EXPECT_EQ(listener->progress,
            (std::vector<double>{0.0, kHalf, kStep, kStep, kHalf + kStep, kStep + kStep, kHalf + (kStep + kStep),
                                 kStep + (kStep + kStep), kStep + kStep + kStep}));
  EXPECT_EQ(listener->progress.back(), 99.99999618530273);
}

TEST_F(KRIssueFindControlTest, NumbersOfIssuesThatDivideAHundredEndAtAHundred) {
  for (const size_t count : {1U, 2U, 4U, 5U, 8U, 10U}) {
    KRStringList names;
    for (KRIssue& issue : KRIssueManager::shareIssueManager().supportIssues()) names.push_back(issue.name());
    names.resize(count);
    use(names);
    EXPECT_EQ(run()->progress.back(), 100.0) << count;
  }
}

TEST_F(KRIssueFindControlTest, HandsOverTheResultOfTheBook) {
  use({KRIssueBlankName, KRIssueUnusualTitle});
  const auto listener = run();
  EXPECT_EQ(listener->starts, 1);
  ASSERT_TRUE(listener->result);
  EXPECT_EQ(listener->result->addressBook(), book_);
  ASSERT_EQ(listener->result->contexts().count(), 1U);
  KRIssueContext* context = listener->result->contexts().first();
  EXPECT_EQ(context->issue().get(), KRIssueManager::shareIssueManager().supportIssueByName(KRIssueBlankName));
  EXPECT_EQ(context->result(), listener->result);
  EXPECT_NE(listener->result->issueObjectsOfPerson(context->allPersons().first()), nullptr);
}

TEST_F(KRIssueFindControlTest, HandsOverSortedContextsOfRecordsAndOfOthers) {
  const auto records = krMake<KRAddressBook>("records"_kr, "Records"_kr);
  for (int i = 0; i < 500; ++i) {
    const std::string card =
        "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + std::to_string(i * 37 % 500) + ";;;;\r\nEND:VCARD\r\n";
    records->addPersons({ABPerson::initWithVCardRepresentation(KRText(std::string_view(card)))});
  }
  book_->addPersons({krNamed("Zoe"), krNamed("Bo")});
  use({KRIssueIncompleteName, KRIssueBlankName});
  for (const auto& book : {records, book_}) {
    const auto result = run(*KRIssueFindControl::initWithAddressBook(book))->result;
    ASSERT_EQ(result->contexts().count(), 1U);
    for (KRIssueContext& context : result->contexts()) {
      const auto found = context.objects().copy();
      ASSERT_GT(found.size(), 1U);
      context.sort();
      EXPECT_EQ(context.objects().copy(), found);
      for (size_t i = 1; i < found.size(); ++i) {
        EXPECT_LE(krCompareCaseless(found[i - 1]->persons().first()->displayName(),
                                    found[i]->persons().first()->displayName()),
                  0);
      }
    }
  }
}

TEST_F(KRIssueFindControlTest, WithoutABookItScansNobodyWhateverItWasGiven) {
  KRIssueList issues;
  for (KRIssue& issue : KRIssueManager::shareIssueManager().supportIssues()) issues.append(&issue);
  const auto listener = run(*KRIssueFindControl::initWithIssues(&issues, &book_->allPersons()));
  EXPECT_EQ(listener->progress.size(), 15U);
  EXPECT_TRUE(listener->result->contexts().isEmpty());
  EXPECT_FALSE(listener->result->addressBook());
}

TEST_F(KRIssueFindControlTest, WithoutUsedIssuesItStartsAndEnds) {
  use({});
  const auto listener = run();
  EXPECT_EQ(listener->starts, 1);
  EXPECT_TRUE(listener->progress.empty());
  ASSERT_TRUE(listener->result);
  EXPECT_TRUE(listener->result->contexts().isEmpty());
  EXPECT_EQ(listener->result->addressBook(), book_);
}

TEST_F(KRIssueFindControlTest, AContextWithoutFindingsIsLeftOut) {
  use({KRIssueBlankName});
  const auto empty = krMake<HostControl>(krMake<FixedFind>(krContext({})));
  empty->setAddressBook(book_);
  EXPECT_TRUE(run(*empty)->result->contexts().isEmpty());
  const auto full = krMake<HostControl>(krMake<FixedFind>(krContext({krFinding({krNamed("Ann")})})));
  full->setAddressBook(book_);
  EXPECT_EQ(run(*full)->result->contexts().count(), 1U);
}

TEST_F(KRIssueFindControlTest, AnIssueWithoutADetectorTakesItsBandAllTheSame) {
  use({KRIssueBlankName, KRIssueUnusualTitle});
  const auto control = krMake<HostControl>(KRRef<KRIssueFind>());
  control->setAddressBook(book_);
  EXPECT_EQ(run(*control)->progress, (std::vector<double>{50.0, 100.0}));
}

TEST_F(KRIssueFindControlTest, AListenerHearsOnlyWhatItOverrides) {
  const auto control = KRIssueFindControl::initWithAddressBook(book_);
  const auto listener = std::make_shared<EndListener>();
  control->setDelegate(listener);
  control->findThreed();
  ASSERT_TRUE(listener->result);
  EXPECT_EQ(listener->result->addressBook(), book_);
}

/// Hands over to another listener when it has heard so many reports.
class HandingOver : public KRIssueFindControlDelegate {
 public:
  explicit HandingOver(std::shared_ptr<KRIssueFindControlDelegate> next) : next_(std::move(next)) {}
  void KRIssueFindControlDelegate_Finding(double, KRIssueFindControl& findControl) override {
    if (++heard == 3) findControl.setDelegate(next_);
  }

  int heard = 0;

 private:
  std::shared_ptr<KRIssueFindControlDelegate> next_;
};

TEST_F(KRIssueFindControlTest, AListenerThatIsReplacedHearsNoMore) {
  const auto control = KRIssueFindControl::initWithAddressBook(book_);
  const auto last = std::make_shared<EndListener>();
  const auto first = std::make_shared<HandingOver>(last);
  control->setDelegate(first);
  control->findThreed();
  EXPECT_EQ(first->heard, 3);
  EXPECT_TRUE(last->result);

  const auto leaving = std::make_shared<HandingOver>(nullptr);
  control->setDelegate(leaving);
  control->findThreed();
  EXPECT_EQ(leaving->heard, 3);
}

TEST_F(KRIssueFindControlTest, NeedsNoListener) {
  KRIssueFindControl::initWithAddressBook(book_)->findThreed();
}

/// Changes the choice of issues as soon as the run has begun to report.
class ChangingListener : public Listener {
 public:
  void KRIssueFindControlDelegate_Finding(double percent, KRIssueFindControl& findControl) override {
    if (progress.empty()) KRIssueManager::shareIssueManager().clearUseIssue();
    findControl.stop();
    Listener::KRIssueFindControlDelegate_Finding(percent, findControl);
  }
};

TEST_F(KRIssueFindControlTest, NeitherStopNorAChangedChoiceChangesARun) {
  use({KRIssueBlankName, KRIssueUnusualTitle});
  const auto control = KRIssueFindControl::initWithAddressBook(book_);
  const auto listener = std::make_shared<ChangingListener>();
  control->setDelegate(listener);
  control->findThreed();
  EXPECT_EQ(listener->progress.back(), 100.0);
  EXPECT_EQ(listener->result->contexts().count(), 1U);
}

TEST_F(KRIssueFindControlTest, RunsOnAThreadOfItsOwnThatKeepsItAlive) {
  const auto listener = std::make_shared<Listener>();
  std::promise<void> gone;
  {
    const auto control = krMake<WatchedControl>(gone);
    control->setAddressBook(book_);
    control->setDelegate(listener);
    ASSERT_TRUE(control->startFind());
  }
  listener->ended.get_future().wait();
  gone.get_future().wait();
  EXPECT_NE(listener->thread, std::this_thread::get_id());
  EXPECT_EQ(listener->progress.back(), 99.99999761581421);
  EXPECT_EQ(listener->result->addressBook(), book_);
}

TEST_F(KRIssueFindControlTest, RunsAtTheSameTimeHaveResultsOfTheirOwn) {
  std::promise<void> gone;
  auto control = krMake<WatchedControl>(gone);
  control->setAddressBook(book_);
  class Counting : public KRIssueFindControlDelegate {
   public:
    void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& found, KRIssueFindControl&) override {
      const std::lock_guard lock(mutex);
      results.push_back(found);
    }
    std::mutex mutex;
    std::vector<KRRef<KRIssueFindResult>> results;
  };
  const auto listener = std::make_shared<Counting>();
  control->setDelegate(listener);
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(control->startFind());
  control = {};
  gone.get_future().wait();
  ASSERT_EQ(listener->results.size(), 4U);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_GE(listener->results[i]->contexts().count(), 1U);
    for (size_t j = 0; j < i; ++j) EXPECT_NE(listener->results[i], listener->results[j]);
  }
}

TEST_F(KRIssueFindControlTest, ADroppedResultIsGone) {
  const uint64_t before = KRGraphNode::liveCount();
  auto listener = run();
  EXPECT_GT(KRGraphNode::liveCount(), before);
  listener->result = {};
  EXPECT_EQ(KRGraphNode::liveCount(), before);
}

}  // namespace
