#include <algorithm>
#include <iterator>

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
#include "issues/KRIssue.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueNames.h"

namespace {

template <class Detector>
KRRef<KRIssueFind> make() {
  return krMake<Detector>();
}

struct Row {
  KRString issueName;
  KRRef<KRIssueFind> (*make)();
};

// The first row of the issue's name counts. An issue whose name stands in no row has no detector.
constexpr Row kRows[] = {
    {KRIssueDuplicateNames, make<KRIssueFindDuplicatecontacts>},
    {KRIssueIncompleteName, make<KRIssueFindIncompleteName>},
    {KRIssueInvalidCharacters, make<KRIssueFindInvalidCharset>},
    {KRIssueDuplicateAddress, make<KRIssueFindDuplicateAddress>},
    {KRIssueDuplicatePhoneNumber, make<KRIssueFindDuplicatePhone>},
    {KRIssueDuplicateEmailAddress, make<KRIssueFindDuplicateEmail>},
    {KRIssueNoteWithSpacingOnly, make<KRIssueFindEmptyNote>},
    {KRIssueUnusualTitle, make<KRIssueFindUnusualTitle>},
    {KRIssueUnusualSuffix, make<KRIssueFindUnusualSuffix>},
    {KRIssueSpacingInTheFirstName, make<KRIssueFindSpacingInFirst>},
    {KRIssueNicknameWithSpacingOnly, make<KRIssueFindNicknameSpacing>},
    {KRIssueBlankName, make<KRIssueFindBlankName>},
    {KRIssueEmailsDuplicatedAmongMultipleContacts, make<KRIssueFindShareEmail>},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, make<KRIssueFindSharePhone>},
    {KRIssueDuplicateInfo, make<KRIssueFindDuplicateInfo>},
    {KRIssueHasCompanyNameNoTitle, make<KRIssueFindCompanyNoTitle>},
};

}  // namespace

KRRef<KRIssueFind> KRIssueFind::issueFindWithIssue(KRIssue* issue) {
  if (issue == nullptr) return {};
  const KRString name = issue->name();
  const Row* row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) { return sameText(each.issueName, name); });
  if (row == std::end(kRows)) return {};
  KRRef<KRIssueFind> find = row->make();
  find->setIssue(KRRef<KRIssue>(issue));
  return find;
}
