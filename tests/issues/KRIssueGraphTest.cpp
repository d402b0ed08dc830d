// Who keeps what alive: findings, contexts and results reach each other and the book as long as one of them is held,
// and nothing is left when none is.

#include <gtest/gtest.h>

#include <random>

#include "tests/support/KRFindings.h"

namespace {

/// Counts the books of a test that are alive.
class CountedBook : public KRAddressBook {
 public:
  explicit CountedBook(int& alive) : KRAddressBook("book"_kr, "Book"_kr), alive_(alive) { ++alive_; }
  ~CountedBook() override { --alive_; }

 private:
  int& alive_;
};

class KRIssueGraph : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(KRGraphNode::liveCount(), before_);
    EXPECT_EQ(books_, 0);
  }

  /// A result with two contexts of three findings each, which share their persons.
  KRRef<KRIssueFindResult> result() {
    const std::vector persons = {krNamed("Ann"), krNamed("Ben"), krNamed("Eve")};
    auto made = krMake<KRIssueFindResult>();
    made->setAddressBook(krMake<CountedBook>(books_));
    for (int i = 0; i < 2; ++i) {
      std::vector<KRRef<KRIssueObject>> findings;
      for (const auto& person : persons) {
        findings.push_back(krFinding({person, persons[0]}));
        findings.back()->setHandle(KRIssueHandle::issueHandleWithName(KRHandleNameIgnore));
      }
      made->addContext(krContext(findings).get());
    }
    return made;
  }

  uint64_t live() const { return KRGraphNode::liveCount() - before_; }

  uint64_t before_ = KRGraphNode::liveCount();
  int books_ = 0;
};

TEST_F(KRIssueGraph, AResultAloneKeepsEverything) {
  const auto kept = result();
  EXPECT_EQ(live(), 9U);
  EXPECT_EQ(kept->contexts().at(1)->objects().at(2)->context()->result()->addressBook()->name(), "Book");
}

TEST_F(KRIssueGraph, AFindingAloneKeepsEverything) {
  const KRRef<KRIssueObject> kept(result()->contexts().first()->objects().first());
  EXPECT_EQ(live(), 9U);
  EXPECT_EQ(kept->context()->result()->addressBook()->name(), "Book");
  EXPECT_EQ(kept->context()->result()->contexts().at(1)->objects().count(), 3U);
}

TEST_F(KRIssueGraph, AContextAloneKeepsEverything) {
  const KRRef<KRIssueContext> kept(result()->contexts().first());
  EXPECT_EQ(live(), 9U);
  EXPECT_EQ(kept->result()->addressBook()->name(), "Book");
}

TEST_F(KRIssueGraph, AFindingThatWasFixedStillReachesItsBook) {
  KRRef<KRIssueObject> kept(result()->contexts().first()->objects().first());
  kept->fix();
  EXPECT_EQ(live(), 9U);
  EXPECT_EQ(kept->context()->objects().count(), 2U);
  EXPECT_EQ(kept->context()->result()->addressBook()->name(), "Book");
  kept = {};
  EXPECT_EQ(live(), 0U);
  EXPECT_EQ(books_, 0);
}

TEST_F(KRIssueGraph, AFixedFindingThatNobodyKeepsDiesAtOnce) {
  const auto kept = result();
  kept->contexts().first()->objects().first()->fix();
  EXPECT_EQ(live(), 8U);
  while (!kept->contexts().isEmpty()) kept->contexts().first()->objects().first()->fix();
  EXPECT_EQ(live(), 1U);
}

TEST_F(KRIssueGraph, ARemovedContextStillReachesItsBook) {
  KRRef<KRIssueContext> kept;
  {
    const auto made = result();
    kept = KRRef<KRIssueContext>(made->contexts().first());
    made->removeContext(kept.get());
  }
  EXPECT_EQ(kept->result()->addressBook()->name(), "Book");
  EXPECT_EQ(kept->result()->contexts().count(), 1U);
}

TEST_F(KRIssueGraph, FindingsOfARemovedContextStayInTheIndex) {
  const auto made = result();
  const KRRef<IKRPerson> person(made->contexts().first()->objects().first()->persons().first());
  made->removeContext(made->contexts().first());
  made->removeContext(made->contexts().first());
  EXPECT_EQ(live(), 9U);
  EXPECT_EQ(made->issueObjectsOfPerson(person.get())->first()->context()->objects().count(), 3U);
}

TEST_F(KRIssueGraph, AFindingWithoutAnyContextIsOnItsOwn) {
  { const auto finding = krFinding({krNamed("Ann")}); }
  { const auto context = krContext({krFinding({krNamed("Ann")})}); }
  EXPECT_EQ(live(), 0U);
}

TEST_F(KRIssueGraph, AFindingThatIsOnlyInTheIndexLivesWithTheResult) {
  const auto kept = krMake<KRIssueFindResult>();
  kept->addObject(krFinding({krNamed("Ann")}).get(), "7"_kr);
  kept->addObject(krFinding({krNamed("Ann")}).get(), "a key of a host"_kr);
  EXPECT_EQ(live(), 3U);
  kept->removeObject(kept->issueObjectByPerson("7"_kr)->first(), "7"_kr);
  EXPECT_EQ(live(), 2U);
}

TEST_F(KRIssueGraph, OneContextInTwoResults) {
  const auto context = krContext({krFinding({krNamed("Ann")})});
  KRRef<KRIssueFindResult> second;
  {
    const auto first = result();
    first->addContext(context.get());
    second = result();
    second->addContext(context.get());
    EXPECT_EQ(context->result(), second);
  }
  // The first result refers to the context, so it belongs to the same graph.
  EXPECT_EQ(second->contexts().count(), 3U);
}

TEST_F(KRIssueGraph, OneFindingInTwoContextsAndALinkThatWasCut) {
  KRRef<KRIssueObject> kept;
  {
    const auto made = result();
    kept = KRRef<KRIssueObject>(made->contexts().first()->objects().first());
    made->contexts().at(1)->addIssueObject(kept.get());
    kept->setContext(nullptr);
    made->contexts().first()->setResult(nullptr);
    made->contexts().at(1)->setObjects(KRList<KRIssueObject>());
  }
  EXPECT_FALSE(kept->context());
}

TEST_F(KRIssueGraph, AResultThatIsReplacedInItsContext) {
  const auto made = result();
  made->contexts().first()->setResult(krMake<KRIssueFindResult>().get());
  EXPECT_EQ(live(), 10U);
  made->contexts().first()->setResult(made.get());
  EXPECT_EQ(live(), 9U);
}

TEST_F(KRIssueGraph, PersonsAndHandlesGoWithTheirFinding) {
  const auto person = krNamed("Ann");
  const auto handle = krMake<KRLeavingHandle>();
  { result()->addContext(krContext({krFinding({person})}).get()); }
  const auto context = krContext({krFinding({person})});
  context->objects().first()->setHandle(handle);
  EXPECT_EQ(person->description(), krPlain(context->allPersons()).front()->description());
}

TEST_F(KRIssueGraph, WhateverAHostWiresGoesInTheEnd) {
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::vector<KRRef<KRIssueFindResult>> results;
    std::vector<KRRef<KRIssueContext>> contexts;
    std::vector<KRRef<KRIssueObject>> findings;
    const auto person = krNamed("Ann");
    for (int i = 0; i < 3; ++i) {
      results.push_back(krMake<KRIssueFindResult>());
      results.back()->setAddressBook(krMake<CountedBook>(books_));
      contexts.push_back(krContext({}));
      findings.push_back(krFinding({person}));
    }
    const auto pick = [&](auto& from) { return from[random() % from.size()].get(); };
    for (int step = 0; step < 40; ++step) {
      KRIssueFindResult* aResult = pick(results);
      KRIssueContext* aContext = pick(contexts);
      KRIssueObject* aFinding = pick(findings);
      switch (random() % 12) {
        case 0:
          aResult->addContext(aContext);
          break;
        case 1:
          aResult->insertContext(aContext, random() % 4);
          break;
        case 2:
          aResult->removeContext(aContext);
          break;
        case 3:
          aContext->addIssueObject(aFinding);
          break;
        case 4:
          aContext->removeIssueObject(aFinding);
          break;
        case 5:
          aResult->addObject(aFinding, "1"_kr);
          break;
        case 6:
          aResult->removeObject(aFinding, "1"_kr);
          break;
        case 7:
          aFinding->setContext(random() % 2 == 0 ? aContext : nullptr);
          break;
        case 8:
          aContext->setResult(random() % 2 == 0 ? aResult : nullptr);
          break;
        case 9:
          aFinding->setHandle(KRIssueHandle::issueHandleWithName(KRHandleNameEdit));
          break;
        case 10:
          aFinding->fix();
          break;
        default:
          KRIssueHandle::issueHandleWithName(KRHandleNameDeleteContact)->fix(aFinding);
          break;
      }
    }
    // What remains held keeps what it reaches, in whatever order the rest goes.
    while (results.size() + contexts.size() + findings.size() > 0) {
      const auto drop = [&](auto& from) {
        if (!from.empty()) from.erase(from.begin() + static_cast<std::ptrdiff_t>(random() % from.size()));
      };
      switch (random() % 3) {
        case 0:
          drop(results);
          break;
        case 1:
          drop(contexts);
          break;
        default:
          drop(findings);
          break;
      }
      for (const auto& finding : findings) {
        const auto reached = finding->context();
        ASSERT_TRUE(!reached || !reached->result() || reached->result()->addressBook());
      }
    }
    ASSERT_EQ(live(), 0U) << "round " << round;
    ASSERT_EQ(books_, 0) << "round " << round;
  }
}

TEST_F(KRIssueGraph, LargeResultsAreFixedAndGoInLinearTime) {
  constexpr size_t kCount = 200'000;
  std::vector<KRRef<IKRPerson>> persons;
  for (size_t i = 0; i < kCount; ++i) persons.push_back(krNamed("Ann"));
  const auto made = krMake<KRIssueFindResult>();
  const auto context = krContext({});
  const auto handle = KRIssueHandle::issueHandleWithName(KRHandleNameIgnore);
  for (size_t i = 0; i < kCount; ++i) {
    // One person stands in every finding.
    const auto finding = krFinding({persons[i], persons[0]});
    finding->setHandle(handle);
    context->addIssueObject(finding.get());
  }
  made->addContext(context.get());
  EXPECT_EQ(made->issueObjectsOfPerson(persons[0].get())->count(), kCount);
  EXPECT_EQ(context->allPersons().count(), kCount + 1);
  size_t reports = 0;
  context->fixAllForProgress([&](double) { ++reports; });
  EXPECT_EQ(reports, kCount);
  EXPECT_EQ(made->issueObjectsOfPerson(persons[0].get()), nullptr);
  EXPECT_EQ(live(), 2U);
}

}  // namespace
