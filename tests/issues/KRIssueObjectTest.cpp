#include "issues/KRIssueObject.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/KRFindings.h"

namespace {

TEST(KRIssueObject, IsMadeEmpty) {
  const auto finding = krMake<KRIssueObject>();
  EXPECT_TRUE(finding->info().isNothing());
  EXPECT_TRUE(finding->describe().isNothing());
  EXPECT_TRUE(finding->persons().isEmpty());
  EXPECT_FALSE(finding->handle());
  EXPECT_FALSE(finding->context());
  EXPECT_FALSE(finding->issueContext());
  EXPECT_FALSE(finding->issue());
}

TEST(KRIssueObject, ReadsItsIssueThroughItsContext) {
  const auto finding = krFinding({krNamed("Ann")});
  const auto context = krContext({finding});
  EXPECT_EQ(finding->issue(), context->issue());
  EXPECT_EQ(finding->issueContext(), context);
  const auto other = krMake<KRIssue>("other"_kr, ""_kr);
  context->setIssue(other);
  EXPECT_EQ(finding->issue(), other);
  finding->setContext(nullptr);
  EXPECT_FALSE(finding->issue());
}

TEST(KRIssueObject, PassesItselfToItsHandle) {
  const auto finding = krFinding({krNamed("Ann")});
  finding->fix();
  const auto handle = krMake<KRLeavingHandle>();
  finding->setHandle(handle);
  finding->fix();
  EXPECT_EQ(handle->fixed, 1);
  EXPECT_EQ(handle->last, finding.get());
}

TEST(KRIssueObject, MayBeHeldByItsContextOnlyWhileItIsFixed) {
  const auto context = krContext({krFinding({krNamed("Ann")})});
  context->objects().first()->setHandle(KRIssueHandle::issueHandleWithName(KRHandleNameIgnore));
  context->objects().first()->fix();
  EXPECT_TRUE(context->objects().isEmpty());
}

TEST(KRIssueObject, RemovesEveryOccurrenceOfAPerson) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto finding = krFinding({ann, ben, ann});
  const KRPersonArray before = finding->persons();
  finding->removePerson(ann.get());
  EXPECT_EQ(krPlain(finding->persons()), std::vector<IKRPerson*>{ben.get()});
  EXPECT_EQ(before.count(), 3U);
}

TEST(KRIssueObject, RemovingAPersonThatItDoesNotListKeepsItsList) {
  const auto ann = krNamed("Ann");
  const auto finding = krFinding({ann, krNamed("Ben")});
  const KRPersonArray before = finding->persons();
  finding->removePerson(krNamed("Ann").get());
  finding->removePerson(nullptr);
  EXPECT_EQ(finding->persons().begin(), before.begin());
}

TEST(KRIssueObject, RemovesPersonsByTheirOwnEquality) {
  const KRRef<IKRPerson> same = krMake<KRSamePerson>("1"_kr);
  const auto finding = krFinding({same, krNamed("Ben")});
  finding->removePerson(krMake<KRSamePerson>("1"_kr).get());
  EXPECT_EQ(finding->persons().count(), 1U);
}

TEST(KRIssueObjectThreads, FieldsAreReadWholeWhileTheyAreSet) {
  const auto finding = krFinding({krNamed("Ann")});
  const auto context = krContext({finding});
  const KRPersonArray one(krNamed("Ann"));
  const KRPersonArray two(std::vector{krNamed("Ann"), krNamed("Ben")});
  std::thread writer([&] {
    for (int i = 0; i < 20'000; ++i) {
      finding->setPersons(i % 2 == 0 ? one : two);
      finding->setInfo(KRString(std::to_string(i)));
      finding->setContext(i % 2 == 0 ? context.get() : nullptr);
    }
  });
  for (int i = 0; i < 20'000; ++i) {
    const KRPersonArray persons = finding->persons();
    ASSERT_FALSE(persons.first()->displayName().isEmpty());
    const KRString info = finding->info().text();
    ASSERT_LT(info.size(), 6U);
    const auto reached = finding->context();
    ASSERT_TRUE(!reached || reached == context);
  }
  writer.join();
}

}  // namespace
