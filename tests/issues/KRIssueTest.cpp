#include "issues/KRIssue.h"

#include <gtest/gtest.h>

#include "handles/KRIssueHandle.h"
#include "issues/KRIssueNames.h"

namespace {

TEST(KRIssue, IsMadeWithoutHandlesForOnePerson) {
  const auto issue = krMake<KRIssue>("n"_kr, "d"_kr);
  EXPECT_EQ(issue->name(), "n");
  EXPECT_EQ(issue->describe(), "d");
  EXPECT_TRUE(issue->displayName().isNothing());
  EXPECT_TRUE(issue->handles().isEmpty());
  EXPECT_FALSE(issue->multiPerson());
  EXPECT_EQ(krMake<KRIssue>("n"_kr, "d"_kr, "t"_kr)->displayName(), "t");
}

TEST(KRIssue, ItsTextFormIsItsName) {
  EXPECT_EQ(krMake<KRIssue>(KRIssueBlankName, "d"_kr)->description(), "KRIssueBlankName");
}

TEST(KRIssue, KeepsWhatIsSet) {
  const auto issue = krMake<KRIssue>("n"_kr, "d"_kr);
  issue->setName("a"_kr);
  issue->setDescribe(nullptr);
  issue->setDisplayName("c"_kr);
  issue->setMultiPerson(true);
  EXPECT_EQ(issue->name(), "a");
  EXPECT_TRUE(issue->describe().isNothing());
  EXPECT_EQ(issue->displayName(), "c");
  EXPECT_TRUE(issue->multiPerson());
}

TEST(KRIssue, AppendsHandlesWithRepeatsAndIgnoresNone) {
  const auto issue = krMake<KRIssue>("n"_kr, "d"_kr);
  const auto handle = KRIssueHandle::issueHandleWithName(KRHandleNameEdit);
  issue->addHandle(handle.get());
  issue->addHandle(nullptr);
  issue->addHandle(handle.get());
  EXPECT_EQ(issue->handles().count(), 2U);
  EXPECT_EQ(&issue->handelArray(), &issue->handles());
}

TEST(KRIssue, ReplacesItsHandlesAlsoByItsOwn) {
  const auto issue = krMake<KRIssue>("n"_kr, "d"_kr);
  issue->addHandle(KRIssueHandle::issueHandleWithName(KRHandleNameEdit).get());
  issue->setHandles(issue->handles());
  EXPECT_EQ(issue->handles().count(), 1U);
  issue->setHandles(KRList<KRIssueHandle>());
  EXPECT_TRUE(issue->handles().isEmpty());
}

TEST(KRIssue, EqualsItselfOnly) {
  const auto issue = krMake<KRIssue>("n"_kr, "d"_kr);
  EXPECT_TRUE(issue->isEqual(issue.get()));
  EXPECT_FALSE(issue->isEqual(krMake<KRIssue>("n"_kr, "d"_kr).get()));
}

TEST(KRIssueNames, EqualTheirConstantsButForOne) {
  EXPECT_EQ(KRIssueDuplicateInfo, "Duplicate Info");
  EXPECT_EQ(KRIssueDuplicateNames, "KRIssueDuplicateNames");
  EXPECT_EQ(KRIssueIncompleteName, "KRIssueIncompleteName");
  EXPECT_EQ(KRIssueInvalidCharacters, "KRIssueInvalidCharacters");
  EXPECT_EQ(KRIssueDuplicateAddress, "KRIssueDuplicateAddress");
  EXPECT_EQ(KRIssueDuplicatePhoneNumber, "KRIssueDuplicatePhoneNumber");
  EXPECT_EQ(KRIssueDuplicateEmailAddress, "KRIssueDuplicateEmailAddress");
  EXPECT_EQ(KRIssueNoteWithSpacingOnly, "KRIssueNoteWithSpacingOnly");
  EXPECT_EQ(KRIssueUnusualTitle, "KRIssueUnusualTitle");
  EXPECT_EQ(KRIssueUnusualSuffix, "KRIssueUnusualSuffix");
  EXPECT_EQ(KRIssueSpacingInTheFirstName, "KRIssueSpacingInTheFirstName");
  EXPECT_EQ(KRIssueNicknameWithSpacingOnly, "KRIssueNicknameWithSpacingOnly");
  EXPECT_EQ(KRIssueBlankName, "KRIssueBlankName");
  EXPECT_EQ(KRIssueEmailsDuplicatedAmongMultipleContacts, "KRIssueEmailsDuplicatedAmongMultipleContacts");
  EXPECT_EQ(KRIssuePhonesDuplicatedAmongMultipleContacts, "KRIssuePhonesDuplicatedAmongMultipleContacts");
  EXPECT_EQ(KRIssueHasCompanyNameNoTitle, "KRIssueHasCompanyNameNoTitle");
}

}  // namespace
