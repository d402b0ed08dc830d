#include "handles/KRHandleAddSupport.h"

#include <algorithm>

#include "handles/KRHandleFinding.h"
#include "handles/KRHandleTexts.h"
#include "issues/KRIssueNames.h"
#include "issues/KRNameConstraintManager.h"

namespace {

// "suffix" in the sentence about prefixes is kept on purpose: hosts compare the sentence.
constexpr KRHandleTexts kTexts[] = {
    {KRIssueUnusualTitle, "Add to Allowed Prefixes List"_kr, "Add this suffix to Allowed Prefixes List."_kr},
    {KRIssueUnusualSuffix, "Add to Allowed Suffixes List"_kr, "Add this suffix to Allowed Suffixes List."_kr},
    {KRString(), ""_kr, ""_kr},
};

/// Appends the text to the list unless it is there; whether it was appended.
bool extend(KRStringList& items, const KRString& text) {
  if (text.isNothing() || std::find(items.begin(), items.end(), text) != items.end()) return false;
  items.push_back(text);
  return true;
}

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
  KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
  if (sameText(issueName, KRIssueUnusualTitle)) {
    KRStringList items = manager.prefixItemArray();
    if (extend(items, textOf(person.get(), KRProPertyTitle))) manager.setPrefixItemArray(&items);
  } else if (sameText(issueName, KRIssueUnusualSuffix)) {
    KRStringList items = manager.suffixItemArray();
    if (extend(items, textOf(person.get(), KRProPertySuffix))) manager.setSuffixItemArray(&items);
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
