#include "handles/KRHandleDeleteDuplicateContacts.h"

#include <gtest/gtest.h>

#include "issues/KRIssueNames.h"
#include "tests/support/KRFix.h"

namespace {

TEST(KRHandleDeleteDuplicateContacts, SaysWhatItDoesWhateverTheIssue) {
  krExpectTexts<KRHandleDeleteDuplicateContacts>({
      {KRIssueDuplicateInfo, "Delete duplicate contacts", "Delete duplicate Contacts and keep only one."},
      {KRIssueUnusualTitle, "Delete duplicate contacts", "Delete duplicate Contacts and keep only one."},
      {KRString(), "Delete duplicate contacts", "Delete duplicate Contacts and keep only one."},
  });
}

TEST(KRHandleDeleteDuplicateContacts, TakesTheFindingOutOfTheResult) {
  const KRFix fix(KRIssueDuplicateInfo, krPerson<KRHostPerson>({.first = "Ann"_kr}));
  krMake<KRHandleDeleteDuplicateContacts>()->fix(fix.finding());
  EXPECT_TRUE(fix.isGone());
}

}  // namespace
