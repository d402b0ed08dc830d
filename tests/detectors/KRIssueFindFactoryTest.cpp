#include <gtest/gtest.h>

#include "detectors/KRIssueFindBlankName.h"
#include "detectors/KRIssueFindCompanyNoTitle.h"
#include "detectors/KRIssueFindDuplicateAddress.h"
#include "detectors/KRIssueFindDuplicateEmail.h"
#include "detectors/KRIssueFindDuplicateInfo.h"
#include "detectors/KRIssueFindDuplicatePhone.h"
#include "detectors/KRIssueFindDuplicatecontacts.h"
#include "detectors/KRIssueFindEmptyNote.h"
#include "detectors/KRIssueFindIncompleteName.h"
#include "detectors/KRIssueFindInvalidCharset.h"
#include "detectors/KRIssueFindNicknameSpacing.h"
#include "detectors/KRIssueFindShareEmail.h"
#include "detectors/KRIssueFindSharePhone.h"
#include "detectors/KRIssueFindSpacingInFirst.h"
#include "detectors/KRIssueFindUnusualSuffix.h"
#include "detectors/KRIssueFindUnusualTitle.h"
#include "issues/KRIssueNames.h"
#include "tests/support/KRScan.h"

namespace {

template <class Detector>
void expectDetector(const KRString& issueName) {
  const auto issue = krIssueNamed(issueName);
  const auto detector = KRIssueFind::issueFindWithIssue(issue.get());
  ASSERT_TRUE(detector) << issueName.view();
  EXPECT_NE(dynamic_cast<Detector*>(detector.get()), nullptr) << issueName.view();
  EXPECT_EQ(detector->issue(), issue);
}

TEST(KRIssueFindFactory, ChoosesTheDetectorByTheIssuesName) {
  expectDetector<KRIssueFindDuplicatecontacts>(KRIssueDuplicateNames);
  expectDetector<KRIssueFindIncompleteName>(KRIssueIncompleteName);
  expectDetector<KRIssueFindInvalidCharset>(KRIssueInvalidCharacters);
  expectDetector<KRIssueFindDuplicateAddress>(KRIssueDuplicateAddress);
  expectDetector<KRIssueFindDuplicatePhone>(KRIssueDuplicatePhoneNumber);
  expectDetector<KRIssueFindDuplicateEmail>(KRIssueDuplicateEmailAddress);
  expectDetector<KRIssueFindEmptyNote>(KRIssueNoteWithSpacingOnly);
  expectDetector<KRIssueFindUnusualTitle>(KRIssueUnusualTitle);
  expectDetector<KRIssueFindUnusualSuffix>(KRIssueUnusualSuffix);
  expectDetector<KRIssueFindSpacingInFirst>(KRIssueSpacingInTheFirstName);
  expectDetector<KRIssueFindNicknameSpacing>(KRIssueNicknameWithSpacingOnly);
  expectDetector<KRIssueFindBlankName>(KRIssueBlankName);
  expectDetector<KRIssueFindShareEmail>(KRIssueEmailsDuplicatedAmongMultipleContacts);
  expectDetector<KRIssueFindSharePhone>(KRIssuePhonesDuplicatedAmongMultipleContacts);
  expectDetector<KRIssueFindDuplicateInfo>(KRIssueDuplicateInfo);
  expectDetector<KRIssueFindCompanyNoTitle>(KRIssueHasCompanyNameNoTitle);
}

TEST(KRIssueFindFactory, MakesADetectorEachTime) {
  const auto issue = krIssueNamed(KRIssueBlankName);
  EXPECT_FALSE(KRIssueFind::issueFindWithIssue(issue.get()) == KRIssueFind::issueFindWithIssue(issue.get()));
}

TEST(KRIssueFindFactory, HasNothingForOtherNames) {
  for (const KRString& name : {KRString(), ""_kr, "KRIssueDuplicateInfo"_kr, "krissueblankname"_kr,
                               "KRIssueBlankName "_kr, "KRIssueFindBlankName"_kr}) {
    EXPECT_FALSE(KRIssueFind::issueFindWithIssue(krIssueNamed(name).get())) << name.view();
  }
  EXPECT_FALSE(KRIssueFind::issueFindWithIssue(nullptr));
}

}  // namespace
