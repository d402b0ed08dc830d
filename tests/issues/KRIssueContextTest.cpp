#include "issues/KRIssueContext.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/KRFindings.h"

namespace {

using Persons = std::vector<IKRPerson*>;

KRRef<KRIssueContext> ignoredContext(size_t count) {
  auto context = krContext({});
  const auto handle = KRIssueHandle::issueHandleWithName(KRHandleNameIgnore);
  for (size_t i = 0; i < count; ++i) {
    const auto finding = krFinding({krNamed("Ann")});
    finding->setHandle(handle);
    context->addIssueObject(finding.get());
  }
  return context;
}

std::vector<double> fixAllWithProgress(KRIssueContext& context) {
  std::vector<double> reports;
  context.fixAllForProgress([&](double percent) { reports.push_back(percent); });
  return reports;
}

/// The context's findings by what they say.
std::vector<std::string> sentences(const KRIssueContext& context) {
  std::vector<std::string> all;
  for (const KRIssueObject& finding : context.objects()) all.emplace_back(finding.describe().view());
  return all;
}

TEST(KRIssueContext, IsMadeWithItsIssueAndNoFindings) {
  const auto issue = krMake<KRIssue>("n"_kr, "d"_kr);
  const auto context = krMake<KRIssueContext>(issue);
  EXPECT_EQ(context->issue(), issue);
  EXPECT_TRUE(context->objects().isEmpty());
  EXPECT_EQ(&context->issueObjects(), &context->objects());
  EXPECT_FALSE(context->result());
  EXPECT_FALSE(context->issueFindResult());
}

TEST(KRIssueContext, AddsAFindingAlsoTwiceAndBecomesItsContext) {
  const auto context = krContext({});
  const auto finding = krFinding({krNamed("Ann")});
  context->addIssueObject(finding.get());
  context->addIssueObject(nullptr);
  context->addIssueObject(finding.get());
  EXPECT_EQ(context->objects().count(), 2U);
  EXPECT_EQ(finding->context(), context);
}

TEST(KRIssueContext, ARemovedFindingKeepsItsContext) {
  const auto finding = krFinding({krNamed("Ann")});
  const auto context = krContext({finding});
  context->removeIssueObject(finding.get());
  context->removeIssueObject(finding.get());
  context->removeIssueObject(nullptr);
  EXPECT_TRUE(context->objects().isEmpty());
  EXPECT_EQ(finding->context(), context);
}

TEST(KRIssueContext, SetObjectsReplacesTheFindingsOnly) {
  const auto kept = krFinding({krNamed("Ann")});
  const auto context = krContext({krFinding({krNamed("Ben")})});
  KRList<KRIssueObject> findings;
  findings.append(kept);
  context->setObjects(findings);
  EXPECT_EQ(krPlain(context->objects()), std::vector<KRIssueObject*>{kept.get()});
  EXPECT_FALSE(kept->context());
  context->setObjects(context->objects());
  EXPECT_EQ(context->objects().count(), 1U);
}

TEST(KRIssueContext, AllPersonsHoldsEachOnceInOrderOfFirstAppearance) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto eve = krNamed("Eve");
  const auto context = krContext({krFinding({ben, ann}), krFinding({ann, eve}), krFinding({ben})});
  EXPECT_EQ(krPlain(context->allPersons()), (Persons{ben.get(), ann.get(), eve.get()}));
}

TEST(KRIssueContext, AllPersonsKeepsDoublesInsideOneFinding) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto context = krContext({krFinding({ann, ann}), krFinding({ann, ben, ben})});
  EXPECT_EQ(krPlain(context->allPersons()), (Persons{ann.get(), ann.get(), ben.get(), ben.get()}));
}

TEST(KRIssueContext, AllPersonsGoesByThePersonsOwnEquality) {
  const KRRef<IKRPerson> one = krMake<KRSamePerson>("1"_kr);
  const KRRef<IKRPerson> again = krMake<KRSamePerson>("1"_kr);
  const auto context = krContext({krFinding({one}), krFinding({again})});
  EXPECT_EQ(krPlain(context->allPersons()), Persons{one.get()});
}

TEST(KRIssueContext, AllPersonsStaysAsItWasOnTheFirstCall) {
  const auto context = krContext({krFinding({krNamed("Ann")})});
  const KRPersonArray before = context->allPersons();
  context->addIssueObject(krFinding({krNamed("Ben"), krNamed("Eve")}).get());
  EXPECT_EQ(krPlain(context->allPersons()), krPlain(before));
}

TEST(KRIssueContext, AllPersonsOfNoFindingStaysEmpty) {
  const auto context = krContext({});
  EXPECT_TRUE(context->allPersons().isEmpty());
  context->addIssueObject(krFinding({krNamed("Ben")}).get());
  EXPECT_TRUE(context->allPersons().isEmpty());
}

TEST(KRIssueContext, AllPersonsAgreesWithASlowReading) {
  std::mt19937 random(7);
  for (int round = 0; round < 100; ++round) {
    std::vector<KRRef<IKRPerson>> people;
    for (int i = 0; i < 8; ++i) people.emplace_back(krMake<KRSamePerson>(KRString(std::to_string(i / 2))));
    const auto context = krContext({});
    Persons expected;
    for (int i = 0; i < 10; ++i) {
      std::vector<KRRef<IKRPerson>> persons;
      for (unsigned j = 0; j < 1 + random() % 3; ++j) persons.push_back(people[random() % people.size()]);
      const Persons before = expected;
      for (const auto& person : persons) {
        const bool known =
            std::any_of(before.begin(), before.end(), [&](auto* each) { return each->isEqual(person.get()); });
        if (!known) expected.push_back(person.get());
      }
      context->addIssueObject(krFinding(persons).get());
    }
    ASSERT_EQ(krPlain(context->allPersons()), expected);
  }
}

TEST(KRIssueContext, AllInfoListsWhatFindingsAreAboutEachTime) {
  const auto context =
      krContext({krFinding({krNamed("Ann")}), krFinding({krNamed("Ben")}), krFinding({krNamed("Eve")})});
  EXPECT_TRUE(context->allInfo().empty());
  context->objects().at(0)->setInfo("x"_kr);
  context->objects().at(2)->setInfo("x"_kr);
  const auto all = context->allInfo();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].text(), "x");
  EXPECT_EQ(all[1].text(), "x");
}

TEST(KRIssueContext, SetsOneOfTheIssuesOwnHandlesOnAllFindings) {
  const auto context = krContext({krFinding({krNamed("Ann")}), krFinding({krNamed("Ben")})});
  const auto handle = KRIssueHandle::issueHandleWithName(KRHandleNameEdit);
  context->issue()->addHandle(handle.get());
  context->setHandleToAllObject(handle.get());
  for (const KRIssueObject& finding : context->objects()) EXPECT_EQ(finding.handle(), handle);
}

TEST(KRIssueContext, IgnoresAHandleMadeSeparatelyUnderANameThatTheIssueOffers) {
  const auto context = krContext({krFinding({krNamed("Ann")})});
  context->issue()->addHandle(KRIssueHandle::issueHandleWithName(KRHandleNameEdit).get());
  const auto other = KRIssueHandle::issueHandleWithName(KRHandleNameEdit);
  context->setHandleToAllObject(other.get());
  context->setHandleToAllObject(nullptr);
  EXPECT_FALSE(context->objects().first()->handle());
  context->setIssue({});
  context->setHandleToAllObject(other.get());
  EXPECT_FALSE(context->objects().first()->handle());
}

TEST(KRIssueContext, FixAllFixesEveryFindingThatStays) {
  const auto context =
      krContext({krFinding({krNamed("Ann")}), krFinding({krNamed("Ben")}), krFinding({krNamed("Eve")})});
  const auto handle = krMake<KRLeavingHandle>();
  for (KRIssueObject& finding : context->objects()) finding.setHandle(handle);
  context->fixAll();
  EXPECT_EQ(handle->fixed, 3);
}

TEST(KRIssueContext, FixAllCompletesForOneFindingThatGoesAndForNone) {
  const auto context = ignoredContext(1);
  context->fixAll();
  EXPECT_TRUE(context->objects().isEmpty());
  context->fixAll();
}

TEST(KRIssueContextDeathTest, FixAllStopsTheProcessWhenTheListChangesUnderTheWalk) {
  EXPECT_DEATH(ignoredContext(2)->fixAll(), "changed while they were being fixed");
  EXPECT_DEATH(ignoredContext(3)->fixAll(), "changed while they were being fixed");
}

TEST(KRIssueContext, FixAllForProgressReportsInSinglePrecision) {
  const auto context = ignoredContext(3);
  EXPECT_EQ(fixAllWithProgress(*context), (std::vector<double>{33.33333206176758, 66.66666412353516, 100.0}));
  EXPECT_TRUE(context->objects().isEmpty());
  EXPECT_TRUE(fixAllWithProgress(*context).empty());
}

TEST(KRIssueContext, FixAllForProgressCountsFindingsThatGoWithAnother) {
  // The deleted person has two findings of its own; fixing the first takes the second along.
  const auto ann = krNamed("Ann");
  const auto context = krContext({krFinding({ann}), krFinding({ann}), krFinding({krNamed("Ben")})});
  const auto result = krResult({context});
  const auto handle = KRIssueHandle::issueHandleWithName(KRHandleNameDeleteContact);
  for (KRIssueObject& finding : context->objects()) finding.setHandle(handle);
  EXPECT_EQ(fixAllWithProgress(*context), (std::vector<double>{66.66666412353516, 100.0}));
  EXPECT_TRUE(result->contexts().isEmpty());
}

TEST(KRIssueContext, FixAllForProgressNeedsNoOtherReferenceToItself) {
  auto result = krResult({ignoredContext(5)});
  std::vector<double> reports;
  result->contexts().first()->fixAllForProgress([&](double percent) { reports.push_back(percent); });
  EXPECT_EQ(reports.size(), 5U);
  EXPECT_TRUE(result->contexts().isEmpty());
}

TEST(KRIssueContextDeathTest, FixAllForProgressNeedsItsCallbackOnceThereIsAFinding) {
  ignoredContext(0)->fixAllForProgress(KRProgress());
  EXPECT_DEATH(ignoredContext(1)->fixAllForProgress(KRProgress()), "progress callback is required");
}

TEST(KRIssueContext, SortsByTransliteratedNameThenByTheNameShownRegardlessOfCase) {
  const KRRef<IKRPerson> b = krMake<KRNamedPerson>("zz"_kr, "b"_kr);
  const KRRef<IKRPerson> a = krMake<KRNamedPerson>("yy"_kr, "A"_kr);
  const KRRef<IKRPerson> c = krMake<KRNamedPerson>("c"_kr);
  const auto context = krContext({krFinding({b}, "b"), krFinding({c, a}, "c"), krFinding({a, b}, "A")});
  context->sort();
  EXPECT_EQ(sentences(*context), (std::vector<std::string>{"A", "b", "c"}));
}

TEST(KRIssueContext, SortsNamelessPersonsFirstAndKeepsTheOrderOfEqualNames) {
  const auto context = krContext({krFinding({krNamed("ANN")}, "1"), krFinding({krNamed("ann")}, "2"),
                                  krFinding({krMake<KRNamedPerson>(KRString())}, "3"), krFinding({krNamed("Ann")}, "4"),
                                  krFinding({krNamed("")}, "5")});
  context->sort();
  EXPECT_EQ(sentences(*context), (std::vector<std::string>{"3", "5", "1", "2", "4"}));
}

TEST(KRIssueContext, SortsNamesThatBeginAlike) {
  const auto context = krContext({krFinding({krNamed("Anna-Maria B")}, "3"), krFinding({krNamed("ANNA-MAR")}, "1"),
                                  krFinding({krNamed("anna-maria")}, "2"), krFinding({krNamed("\xC3\xA9ve")}, "5"),
                                  krFinding({krNamed("zo\xC3\xAB")}, "4")});
  context->sort();
  EXPECT_EQ(sentences(*context), (std::vector<std::string>{"1", "2", "3", "4", "5"}));
}

TEST(KRIssueContext, AsksForEachNameOnce) {
  std::vector<KRRef<KRNamedPerson>> persons;
  const auto context = krContext({});
  for (int i = 0; i < 100; ++i) {
    persons.push_back(krMake<KRNamedPerson>(KRString(std::to_string(i * 37 % 100))));
    context->addIssueObject(krFinding({persons.back()}).get());
  }
  context->sort();
  for (const auto& person : persons) EXPECT_EQ(person->asked(), 1);
}

TEST(KRIssueContextDeathTest, CannotSortAFindingWithoutPersons) {
  EXPECT_DEATH(krContext({krFinding({})})->sort(), "out of the range");
}

}  // namespace
