#include "handles/KRIssueHandleAddSuport.h"

#include <gmock/gmock.h>

#include "platform/KRSupportFuction.h"
#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRFindings.h"

namespace {

using testing::ElementsAre;

KRRef<KRIssueHandleAddSuport> about(KRValue info) {
  auto handle = krMake<KRIssueHandleAddSuport>();
  handle->setInfo(std::move(info));
  return handle;
}

KRRef<KRIssueObject> findingAbout(KRValue info) {
  auto finding = krFinding({krNamed("Ann")});
  finding->setInfo(std::move(info));
  return finding;
}

class KRIssueHandleAddSuportTest : public testing::Test {
 protected:
  const KRAllowedLists lists_{{.prefixes = {"Dr."_kr}, .suffixes = {"Jr."_kr}}};
};

TEST_F(KRIssueHandleAddSuportTest, AppendsTheTextOfTheFindingToTheListThatItsInfoNames) {
  about(kABSuffixProperty)->fixIssueObject(findingAbout("III"_kr).get());
  EXPECT_THAT(KRAllowedLists::current().suffixes, ElementsAre("Jr."_kr, "III"_kr));
  EXPECT_THAT(KRAllowedLists::current().prefixes, ElementsAre("Dr."_kr));
  about(kABTitleProperty)->fixIssueObject(findingAbout("Count"_kr).get());
  EXPECT_THAT(KRAllowedLists::current().suffixes, ElementsAre("Jr."_kr, "III"_kr));
  EXPECT_THAT(KRAllowedLists::current().prefixes, ElementsAre("Dr."_kr, "Count"_kr));
}

TEST_F(KRIssueHandleAddSuportTest, LeavesAListThatHoldsTheTextAsItIs) {
  about(kABSuffixProperty)->fixIssueObject(findingAbout("Jr."_kr).get());
  about(kABTitleProperty)->fixIssueObject(findingAbout("Dr."_kr).get());
  EXPECT_THAT(KRAllowedLists::current().suffixes, ElementsAre("Jr."_kr));
  EXPECT_THAT(KRAllowedLists::current().prefixes, ElementsAre("Dr."_kr));
}

TEST_F(KRIssueHandleAddSuportTest, ChangesNothingWithAnotherInfoOrWithoutText) {
  for (const KRValue& info : {KRValue(), KRValue("nickname"_kr), KRValue::truth(true)}) {
    about(info)->fixIssueObject(findingAbout("III"_kr).get());
  }
  for (const KRString& field : {kABSuffixProperty, kABTitleProperty}) {
    about(field)->fixIssueObject(findingAbout({}).get());
    about(field)->fixIssueObject(nullptr);
  }
  EXPECT_THAT(KRAllowedLists::current().suffixes, ElementsAre("Jr."_kr));
  EXPECT_THAT(KRAllowedLists::current().prefixes, ElementsAre("Dr."_kr));
}

TEST_F(KRIssueHandleAddSuportTest, LeavesTheFindingInTheResult) {
  const auto finding = findingAbout("III"_kr);
  const auto result = krResult({krContext({finding})});
  about(kABSuffixProperty)->fixIssueObject(finding.get());
  EXPECT_EQ(result->contexts().first()->objects().first(), finding.get());
}

TEST_F(KRIssueHandleAddSuportTest, NamesAndExplainsItselfInTheUsersLanguage) {
  EXPECT_EQ(about(kABSuffixProperty)->name(), KRSupportFuction::loadString("KRIssueHandle_AddSuffix"_kr));
  EXPECT_EQ(about(kABTitleProperty)->name(), KRSupportFuction::loadString("KRIssueHandle_AddTitle"_kr));
  EXPECT_TRUE(about({})->name().isNothing());
  const auto finding = findingAbout("III"_kr);
  EXPECT_EQ(about(kABSuffixProperty)->descriptionForIssueObject(finding.get()),
            KRSupportFuction::loadString("KR_IssueSolution_Info_AddSuffix"_kr));
  EXPECT_EQ(about(kABTitleProperty)->descriptionForIssueObject(finding.get()),
            KRSupportFuction::loadString("KR_IssueSolution_Info_AddTitle"_kr));
  EXPECT_EQ(about({})->descriptionForIssueObject(finding.get()), "");
}

TEST_F(KRIssueHandleAddSuportTest, ItsTextsStandInTheTableOfTexts) {
  for (const KRString& key :
       {"KRIssueHandle_AddSuffix"_kr, "KRIssueHandle_AddTitle"_kr, "KRIssueHandle_UseDefaultStringInstead"_kr,
        "KR_IssueSolution_Info_AddSuffix"_kr, "KR_IssueSolution_Info_AddTitle"_kr}) {
    EXPECT_NE(KRSupportFuction::loadString(key), key) << key.view();
  }
}

}  // namespace
