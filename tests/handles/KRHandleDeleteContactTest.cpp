#include "handles/KRHandleDeleteContact.h"

#include <gtest/gtest.h>

#include "issues/KRIssueNames.h"
#include "tests/support/KRFix.h"

namespace {

TEST(KRHandleDeleteContact, SaysWhatItDoesWhateverTheIssue) {
  krExpectTexts<KRHandleDeleteContact>({
      {KRIssueBlankName, "Delete the contact", "This contact will be deleted."},
      {KRIssueUnusualTitle, "Delete the contact", "This contact will be deleted."},
      {KRString(), "Delete the contact", "This contact will be deleted."},
  });
}

TEST(KRHandleDeleteContact, TakesTheFindingOutOfTheResult) {
  const KRFix fix(KRIssueBlankName, krPerson<KRHostPerson>({.first = "Ann"_kr}));
  krMake<KRHandleDeleteContact>()->fix(fix.finding());
  EXPECT_TRUE(fix.isGone());
}

}  // namespace
