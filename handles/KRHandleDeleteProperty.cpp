#include "handles/KRHandleDeleteProperty.h"

#include "handles/KRHandleFinding.h"
#include "handles/KRHandleTexts.h"
#include "issues/KRIssueNames.h"

namespace {

// The two blanks in three of the titles and the note's sentence in the last row are kept on purpose: hosts compare
// them.
constexpr KRHandleTexts kTexts[] = {
    {KRIssueNoteWithSpacingOnly, "Delete the Note field"_kr, "The note field will be removed."_kr},
    {KRIssueUnusualTitle, "Remove the  prefix"_kr, "This prefix will be removed."_kr},
    {KRIssueUnusualSuffix, "Remove the  suffix"_kr, "This suffix will be removed."_kr},
    {KRIssueNicknameWithSpacingOnly, "Delete the Nickname field"_kr, "The empty nickname will be removed."_kr},
    {KRString(), "Delete the  property"_kr, "The note field will be removed."_kr},
};

struct Field {
  KRString issueName;
  KRString propertyName;
};
constexpr Field kFields[] = {
    {KRIssueNoteWithSpacingOnly, KRProPertyNote},
    {KRIssueUnusualTitle, KRProPertyTitle},
    {KRIssueUnusualSuffix, KRProPertySuffix},
    {KRIssueNicknameWithSpacingOnly, KRProPertyNickname},
};

}  // namespace

void KRHandleDeleteProperty::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleDeleteProperty::fix(KRIssueObject* issueObject, const KRFlagProgress& progress) {
  const KRString issueName = krIssueNameOf(issueObject);
  if (const KRRef<IKRPerson> person = krMainPersonOf(issueObject)) {
    for (const Field& field : kFields) {
      if (sameText(field.issueName, issueName)) person->setValue(KRRef<KRStoredValue>(), field.propertyName);
    }
  }
  krReportFixed(progress);
  resetFindResult(issueObject);
}

KRString KRHandleDeleteProperty::title(KRIssueObject* issueObject) const {
  return krHandleTexts(kTexts, issueObject).title;
}

KRString KRHandleDeleteProperty::resultInfo(KRIssueObject* issueObject) const {
  return krHandleTexts(kTexts, issueObject).resultInfo;
}
