#include "handles/KRHandleFinding.h"

#include "issues/KRIssue.h"
#include "issues/KRIssueObject.h"

KRString krIssueNameOf(const KRIssueObject* issueObject) {
  if (issueObject == nullptr) return {};
  const KRRef<KRIssue> issue = issueObject->issue();
  return issue ? issue->name() : KRString();
}

KRRef<IKRPerson> krMainPersonOf(const KRIssueObject* issueObject) {
  if (issueObject == nullptr) return {};
  const KRPersonArray persons = issueObject->persons();
  return persons.isEmpty() ? KRRef<IKRPerson>() : KRRef<IKRPerson>(persons.first());
}

KRRef<KRMutableSingleValue> krSingleValueOf(const IKRPerson* person, const KRString& name) {
  if (person == nullptr) return {};
  const KRRef<KRStoredValue> value = person->valueByPropertyName(name);
  return KRRef<KRMutableSingleValue>(dynamic_cast<KRMutableSingleValue*>(value.get()));
}
