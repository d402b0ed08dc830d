#include "handles/KRHandleAddSupport.h"

#include "handles/KRAllowedTexts.h"
#include "handles/KRHandleFinding.h"
#include "handles/KRHandleTexts.h"
#include "issues/KRIssueNames.h"

namespace {

// "suffix" in the sentence about prefixes is kept on purpose: hosts compare the sentence.
constexpr KRHandleTexts kTexts[] = {
    {KRIssueUnusualTitle, "Add to Allowed Prefixes List"_kr, "Add this suffix to Allowed Prefixes List."_kr},
    {KRIssueUnusualSuffix, "Add to Allowed Suffixes List"_kr, "Add this suffix to Allowed Suffixes List."_kr},
    {KRString(), ""_kr, ""_kr},
};

KRString textOf(const IKRPerson* person, const KRString& name) {
  const KRRef<KRMutableSingleValue> value = krSingleValueOf(person, name);
  return value ? value->value().text() : KRString();
}

}  // namespace

void KRHandleAddSupport::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleAddSupport::fix(KRIssueObject* issueObject, const KRFlagProgress& progress) {
  const KRString issueName = krIssueNameOf(issueObject);
  const KRRef<IKRPerson> person = krMainPersonOf(issueObject);
  if (sameText(issueName, KRIssueUnusualTitle)) {
    krAllowPrefix(textOf(person.get(), KRProPertyTitle));
  } else if (sameText(issueName, KRIssueUnusualSuffix)) {
    krAllowSuffix(textOf(person.get(), KRProPertySuffix));
  }
  krReportFixed(progress);
  resetFindResult(issueObject);
}

KRString KRHandleAddSupport::title(KRIssueObject* issueObject) const {
  return krHandleTexts(kTexts, issueObject).title;
}

KRString KRHandleAddSupport::resultInfo(KRIssueObject* issueObject) const {
  return krHandleTexts(kTexts, issueObject).resultInfo;
}
