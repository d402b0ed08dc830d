#include "handles/KRHandleUseDefaultString.h"

#include "contacts/model/KRObjectPersonName.h"
#include "handles/KRHandleFinding.h"

constinit KRString KRDefaultString = "???"_kr;

namespace {

KRString orDefault(const KRString& part) {
  return part.isNothing() ? KRDefaultString : part;
}

void fillName(IKRPerson& person) {
  const KRRef<KRMutableSingleValue> value = krSingleValueOf(&person, KRProPertyName);
  if (!value) return;
  // A value that holds no name reads as a name of which every part is missing.
  const KRObjectPersonName none({}, {}, {});
  const auto* held = value->value().as<KRObjectPersonName>();
  const KRObjectPersonName& name = held != nullptr ? *held : none;
  auto changed = krMake<KRMutableSingleValue>();
  changed->setValue(krMake<KRObjectPersonName>(orDefault(name.first()), name.middle(), orDefault(name.last())));
  person.setValue(std::move(changed), KRProPertyName);
}

}  // namespace

void KRHandleUseDefaultString::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleUseDefaultString::fix(KRIssueObject* issueObject, const KRFlagProgress& progress) {
  if (const KRRef<IKRPerson> person = krMainPersonOf(issueObject)) fillName(*person);
  krReportFixed(progress);
  resetFindResult(issueObject);
}

// Both texts show the question marks themselves and do not follow a changed `KRDefaultString`: kept on purpose, since
// hosts compare them.
KRString KRHandleUseDefaultString::title(KRIssueObject* /*issueObject*/) const {
  return "Use \"???\" to replace the empty name"_kr;
}

KRString KRHandleUseDefaultString::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "Use \"???\" instead of the empty name."_kr;
}
