#include "handles/KRHandleDeleteProperty.h"

#include <gtest/gtest.h>

#include "issues/KRIssueNames.h"
#include "tests/support/KRFix.h"

namespace {

const KRPersonSketch kFull{
    .first = "Ann"_kr, .title = "Dr."_kr, .suffix = "Jr."_kr, .nickname = " "_kr, .note = "n"_kr, .company = "Acme"_kr};

// A temporary person ignores values of nothing, so only the kinds that clear are of use here.
template <class Person>
class KRHandleDeletePropertyTest : public testing::Test {
 protected:
  /// The names of the properties that a full person lacks after the fix of a finding of that issue.
  static std::vector<KRString> cleared(const KRString& issueName) {
    const KRFix fix(issueName, krPerson<Person>(kFull));
    krMake<KRHandleDeleteProperty>()->fix(fix.finding());
    EXPECT_TRUE(fix.isGone());
    std::vector<KRString> names;
    for (const KRString& name :
         {KRProPertyName, KRProPertyTitle, KRProPertySuffix, KRProPertyNickname, KRProPertyNote, KRProPertyCompany}) {
      if (!fix.person().valueByPropertyName(name)) names.push_back(name);
    }
    return names;
  }
};
TYPED_TEST_SUITE(KRHandleDeletePropertyTest, KRClearingPersonKinds);

TYPED_TEST(KRHandleDeletePropertyTest, ClearsTheFieldOfTheIssueAndNoOther) {
  using Names = std::vector<KRString>;
  EXPECT_EQ(this->cleared(KRIssueNoteWithSpacingOnly), Names{KRProPertyNote});
  EXPECT_EQ(this->cleared(KRIssueUnusualTitle), Names{KRProPertyTitle});
  EXPECT_EQ(this->cleared(KRIssueUnusualSuffix), Names{KRProPertySuffix});
  EXPECT_EQ(this->cleared(KRIssueNicknameWithSpacingOnly), Names{KRProPertyNickname});
}

TYPED_TEST(KRHandleDeletePropertyTest, ClearsNothingForAnotherIssueAndStillRemovesTheFinding) {
  EXPECT_TRUE(this->cleared(KRIssueBlankName).empty());
  EXPECT_TRUE(this->cleared("KRIssueOfAHost"_kr).empty());
  EXPECT_TRUE(this->cleared(KRString()).empty());
}

TYPED_TEST(KRHandleDeletePropertyTest, CountsAMissingFieldAsDone) {
  const KRFix fix(KRIssueUnusualTitle, krPerson<TypeParam>({.first = "Ann"_kr}));
  krMake<KRHandleDeleteProperty>()->fix(fix.finding());
  EXPECT_TRUE(fix.isGone());
  EXPECT_TRUE(fix.name());
}

TEST(KRHandleDeleteProperty, ReportsOnce) {
  krExpectReportedOnce<KRHandleDeleteProperty>(KRIssueUnusualTitle, krPerson<KRHostPerson>(kFull));
  krExpectReportedOnce<KRHandleDeleteProperty>(KRIssueBlankName, krPerson<KRHostPerson>(kFull));
}

TEST(KRHandleDeleteProperty, SaysWhatItDoes) {
  krExpectTexts<KRHandleDeleteProperty>({
      {KRIssueNoteWithSpacingOnly, "Delete the Note field", "The note field will be removed."},
      {KRIssueUnusualTitle, "Remove the  prefix", "This prefix will be removed."},
      {KRIssueUnusualSuffix, "Remove the  suffix", "This suffix will be removed."},
      {KRIssueNicknameWithSpacingOnly, "Delete the Nickname field", "The empty nickname will be removed."},
      {KRIssueBlankName, "Delete the  property", "The note field will be removed."},
      {KRString(), "Delete the  property", "The note field will be removed."},
  });
}

TEST(KRHandleDeleteProperty, HasTextsForAFindingInNoContext) {
  const auto handle = krMake<KRHandleDeleteProperty>();
  const auto finding = krMake<KRIssueObject>();
  EXPECT_EQ(handle->title(finding.get()), "Delete the  property");
  EXPECT_EQ(handle->title(nullptr), "Delete the  property");
}

}  // namespace
