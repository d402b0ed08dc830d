#include "handles/KRHandleRemoveSpace.h"

#include <algorithm>
#include <string>

#include "contacts/model/KRObjectPersonName.h"
#include "handles/KRHandleFinding.h"

namespace {

/// The text without its blanks; nothing when none of it is left.
KRString withoutBlanks(const KRString& text) {
  std::string kept;
  std::copy_if(text.view().begin(), text.view().end(), std::back_inserter(kept), [](char byte) { return byte != ' '; });
  return kept.empty() ? KRString() : KRString::trusted(kept);
}

void removeSpace(IKRPerson& person) {
  const KRRef<KRMutableSingleValue> value = krSingleValueOf(&person, KRProPertyName);
  const auto* name = value ? value->value().as<KRObjectPersonName>() : nullptr;
  if (name == nullptr || name->first().isNothing()) return;
  auto changed = krMake<KRMutableSingleValue>();
  changed->setValue(krMake<KRObjectPersonName>(withoutBlanks(name->first()), name->middle(), name->last()));
  person.setValue(std::move(changed), KRProPertyName);
}

}  // namespace

void KRHandleRemoveSpace::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleRemoveSpace::fix(KRIssueObject* issueObject, const KRFlagProgress& progress) {
  if (const KRRef<IKRPerson> person = krMainPersonOf(issueObject)) removeSpace(*person);
  krReportFixed(progress);
  resetFindResult(issueObject);
}

KRString KRHandleRemoveSpace::title(KRIssueObject* /*issueObject*/) const {
  return "Remove the space"_kr;
}

KRString KRHandleRemoveSpace::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "Delete the space in the first name."_kr;
}
