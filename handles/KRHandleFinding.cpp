#include "handles/KRHandleFinding.h"

#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
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

KRRef<KRIssueFindResult> krResultOf(const KRIssueObject* issueObject) {
  if (issueObject == nullptr) return {};
  const KRRef<KRIssueContext> context = issueObject->issueContext();
  return context ? context->issueFindResult() : KRRef<KRIssueFindResult>();
}

KRRef<KRAddressBook> krBookOf(const KRIssueObject* issueObject) {
  const KRRef<KRIssueFindResult> result = krResultOf(issueObject);
  return result ? result->addressBook() : KRRef<KRAddressBook>();
}

KRRef<KRMutableSingleValue> krSingleValueOf(const IKRPerson* person, const KRString& name) {
  if (person == nullptr) return {};
  const KRRef<KRStoredValue> value = person->valueByPropertyName(name);
  return KRRef<KRMutableSingleValue>(dynamic_cast<KRMutableSingleValue*>(value.get()));
}
