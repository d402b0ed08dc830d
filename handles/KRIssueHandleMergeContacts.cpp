#include "handles/KRIssueHandleMergeContacts.h"

void KRIssueHandleMergeContacts::fix(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleMergeContacts::fixIssueObject(KRIssueObject* /*issueObject*/) {}

KRRef<KRStoredValue> KRIssueHandleMergeContacts::multivalueForProperty(const KRString& /*property*/,
                                                                       const KRPersonArray& /*persons*/,
                                                                       int32_t /*type*/) const {
  return {};
}

bool KRIssueHandleMergeContacts::hasValue(const KRValue& /*value*/, const KRMutableMultipleValue* /*fromMultivalue*/,
                                          int32_t /*type*/) const {
  return false;
}

KRRef<KRStoredValue> KRIssueHandleMergeContacts::singleValueForProperty(const KRString& /*property*/,
                                                                        const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleMergeContacts::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  return {};
}

KRString KRIssueHandleMergeContacts::nameForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleMergeContacts::noteForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleMergeContacts::suffixForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleMergeContacts::titleForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRRef<KRStoredValue> KRIssueHandleMergeContacts::phoneForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRRef<KRStoredValue> KRIssueHandleMergeContacts::emailForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleMergeContacts::title(KRIssueObject* /*issueObject*/) const {
  return "Merge"_kr;
}

KRString KRIssueHandleMergeContacts::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "The duplicate contacts will be merged into the contact in the first column. You can manually edit it."_kr;
}
