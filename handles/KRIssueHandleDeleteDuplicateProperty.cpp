#include "handles/KRIssueHandleDeleteDuplicateProperty.h"

void KRIssueHandleDeleteDuplicateProperty::fix(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleDeleteDuplicateProperty::fixAdress(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleDeleteDuplicateProperty::fixIssueObject(KRIssueObject* issueObject) {
  fix(issueObject);
}

void KRIssueHandleDeleteDuplicateProperty::fixPhoneNumber(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleDeleteDuplicateProperty::fixEmail(KRIssueObject* /*issueObject*/) {}

KRRef<KRStoredValue> KRIssueHandleDeleteDuplicateProperty::fixMultiValue(const KRMutableMultipleValue* /*multiValue*/,
                                                                         const KRString& /*forProperty*/) {
  return {};
}

KRString KRIssueHandleDeleteDuplicateProperty::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  return {};
}
