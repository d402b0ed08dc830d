#include "handles/KRHandleAddSupport.h"

#include <gmock/gmock.h>

#include "issues/KRIssueNames.h"
#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRFix.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRHandleAddSupportTest : public testing::Test {
 protected:
  /// Fixes a finding of the issue about such a person and answers the lists afterwards.
  static KRAllowedLists::Lists fixed(const KRString& issueName, const KRPersonSketch& sketch) {
    const KRFix fix(issueName, krPerson<Person>(sketch));
    krMake<KRHandleAddSupport>()->fix(fix.finding());
    EXPECT_TRUE(fix.isGone());
    return KRAllowedLists::current();
  }

  const KRAllowedLists lists_{{.prefixes = {"Dr."_kr, "Mr."_kr}, .suffixes = {"Jr."_kr}}};
};
TYPED_TEST_SUITE(KRHandleAddSupportTest, KRPersonKinds);

TYPED_TEST(KRHandleAddSupportTest, AppendsANewPrefix) {
  const auto lists = this->fixed(KRIssueUnusualTitle, {.title = "Count"_kr, .suffix = "III"_kr});
  EXPECT_THAT(lists.prefixes, ElementsAre("Dr."_kr, "Mr."_kr, "Count"_kr));
  EXPECT_THAT(lists.suffixes, ElementsAre("Jr."_kr));
}

TYPED_TEST(KRHandleAddSupportTest, AppendsANewSuffix) {
  const auto lists = this->fixed(KRIssueUnusualSuffix, {.title = "Count"_kr, .suffix = "III"_kr});
  EXPECT_THAT(lists.prefixes, ElementsAre("Dr."_kr, "Mr."_kr));
  EXPECT_THAT(lists.suffixes, ElementsAre("Jr."_kr, "III"_kr));
}

TYPED_TEST(KRHandleAddSupportTest, LeavesAListThatHoldsTheTextAsItIs) {
  EXPECT_THAT(this->fixed(KRIssueUnusualTitle, {.title = "Dr."_kr}).prefixes, ElementsAre("Dr."_kr, "Mr."_kr));
  EXPECT_THAT(this->fixed(KRIssueUnusualSuffix, {.suffix = "Jr."_kr}).suffixes, ElementsAre("Jr."_kr));
}

TYPED_TEST(KRHandleAddSupportTest, ComparesExactly) {
  EXPECT_THAT(this->fixed(KRIssueUnusualTitle, {.title = "dr."_kr}).prefixes,
              ElementsAre("Dr."_kr, "Mr."_kr, "dr."_kr));
}

TYPED_TEST(KRHandleAddSupportTest, AddsNothingForAPersonWithoutTheFieldOrAnotherIssue) {
  for (const KRString& issueName : {KRIssueUnusualTitle, KRIssueUnusualSuffix}) {
    const auto lists = this->fixed(issueName, {.first = "Ann"_kr});
    EXPECT_THAT(lists.prefixes, ElementsAre("Dr."_kr, "Mr."_kr));
    EXPECT_THAT(lists.suffixes, ElementsAre("Jr."_kr));
  }
  const auto lists = this->fixed(KRIssueBlankName, {.title = "Count"_kr, .suffix = "III"_kr});
  EXPECT_THAT(lists.prefixes, ElementsAre("Dr."_kr, "Mr."_kr));
  EXPECT_THAT(lists.suffixes, ElementsAre("Jr."_kr));
}

TYPED_TEST(KRHandleAddSupportTest, LeavesOtherFindingsAboutTheSameTextAndThePersonAlone) {
  const auto person = krPerson<TypeParam>({.title = "Count"_kr});
  const KRFix one(KRIssueUnusualTitle, person);
  const KRFix other(KRIssueUnusualTitle, krPerson<TypeParam>({.title = "Count"_kr}));
  const auto before = person->valueByPropertyName(KRProPertyTitle);
  krMake<KRHandleAddSupport>()->fix(one.finding());
  EXPECT_TRUE(one.isGone());
  EXPECT_FALSE(other.isGone());
  EXPECT_EQ(person->valueByPropertyName(KRProPertyTitle), before);
}

TEST(KRHandleAddSupport, ReportsOnce) {
  const KRAllowedLists lists({});
  krExpectReportedOnce<KRHandleAddSupport>(KRIssueUnusualTitle, krPerson<KRHostPerson>({.title = "Count"_kr}));
  krExpectReportedOnce<KRHandleAddSupport>(KRIssueUnusualTitle, krPerson<KRHostPerson>({}));
}

TEST(KRHandleAddSupport, SaysWhatItDoes) {
  krExpectTexts<KRHandleAddSupport>({
      {KRIssueUnusualTitle, "Add to Allowed Prefixes List", "Add this suffix to Allowed Prefixes List."},
      {KRIssueUnusualSuffix, "Add to Allowed Suffixes List", "Add this suffix to Allowed Suffixes List."},
      {KRIssueBlankName, "", ""},
  });
}

}  // namespace
