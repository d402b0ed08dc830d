#include "handles/KRHandleRemoveSpace.h"

#include <gtest/gtest.h>

#include "issues/KRIssueNames.h"
#include "tests/support/KRFix.h"

namespace {

template <class Person>
class KRHandleRemoveSpaceTest : public testing::Test {
 protected:
  static KRRef<KRObjectPersonName> fixed(const KRPersonSketch& sketch,
                                         const KRString& issueName = KRIssueSpacingInTheFirstName) {
    const KRFix fix(issueName, krPerson<Person>(sketch));
    krMake<KRHandleRemoveSpace>()->fix(fix.finding());
    EXPECT_TRUE(fix.isGone());
    return fix.name();
  }
};
TYPED_TEST_SUITE(KRHandleRemoveSpaceTest, KRPersonKinds);

TYPED_TEST(KRHandleRemoveSpaceTest, JoinsTheWordsOfTheFirstName) {
  const auto name = this->fixed({.first = "Mary Ann"_kr, .middle = "B C"_kr, .last = "van Dam"_kr});
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "MaryAnn");
  EXPECT_EQ(name->middle(), "B C");
  EXPECT_EQ(name->last(), "van Dam");
}

TYPED_TEST(KRHandleRemoveSpaceTest, RemovesBlanksAtBothEndsAndKeepsAbsentParts) {
  const auto name = this->fixed({.first = "  Zo\u00EB  "_kr});
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "Zo\u00EB");
  EXPECT_TRUE(name->middle().isNothing());
  EXPECT_TRUE(name->last().isNothing());
}

TYPED_TEST(KRHandleRemoveSpaceTest, LeavesNoFirstNameOfBlanksOnly) {
  const auto name = this->fixed({.first = "   "_kr, .middle = "Q"_kr, .last = "Lee"_kr});
  ASSERT_TRUE(name);
  EXPECT_TRUE(name->first().isNothing());
  EXPECT_EQ(name->middle(), "Q");
  EXPECT_EQ(name->last(), "Lee");
}

TYPED_TEST(KRHandleRemoveSpaceTest, KeepsOtherWhiteSpace) {
  const auto name = this->fixed({.first = "a\tb \u00A0c\u3000"_kr});
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "a\tb\u00A0c\u3000");
}

TYPED_TEST(KRHandleRemoveSpaceTest, ChangesTheFirstNameWhateverTheIssue) {
  const auto name = this->fixed({.first = "Mary Ann"_kr}, KRIssueBlankName);
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "MaryAnn");
}

TYPED_TEST(KRHandleRemoveSpaceTest, ChangesNothingWithoutANameOrAFirstName) {
  EXPECT_FALSE(this->fixed({.nickname = "x"_kr}));
  const auto person = krPerson<TypeParam>({.last = "van Dam"_kr});
  const auto before = person->valueByPropertyName(KRProPertyName);
  const KRFix fix(KRIssueSpacingInTheFirstName, person);
  krMake<KRHandleRemoveSpace>()->fix(fix.finding());
  EXPECT_TRUE(fix.isGone());
  EXPECT_EQ(person->valueByPropertyName(KRProPertyName), before);
}

TYPED_TEST(KRHandleRemoveSpaceTest, SetsANewValueAndLeavesTheOldOneAsItWas) {
  const auto person = krPerson<TypeParam>({.first = "Mary Ann"_kr});
  const auto before = person->valueByPropertyName(KRProPertyName);
  const KRString text = before->description();
  const KRFix fix(KRIssueSpacingInTheFirstName, person);
  krMake<KRHandleRemoveSpace>()->fix(fix.finding());
  EXPECT_FALSE(person->valueByPropertyName(KRProPertyName) == before);
  EXPECT_EQ(before->description(), text);
}

TEST(KRHandleRemoveSpace, ReportsOnce) {
  krExpectReportedOnce<KRHandleRemoveSpace>(KRIssueSpacingInTheFirstName, krPerson<KRHostPerson>({.first = "A B"_kr}));
  krExpectReportedOnce<KRHandleRemoveSpace>(KRIssueSpacingInTheFirstName, krPerson<KRHostPerson>({}));
}

TEST(KRHandleRemoveSpace, SaysWhatItDoes) {
  krExpectTexts<KRHandleRemoveSpace>({
      {KRIssueSpacingInTheFirstName, "Remove the space", "Delete the space in the first name."},
      {KRIssueBlankName, "Remove the space", "Delete the space in the first name."},
  });
}

}  // namespace
