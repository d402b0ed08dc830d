#include "handles/KRIssueHandleDeleteContact.h"

void KRIssueHandleDeleteContact::fix(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleDeleteContact::fixIssueObject(KRIssueObject* /*issueObject*/) {}

KRString KRIssueHandleDeleteContact::name() const {
  return {};
}

KRString KRIssueHandleDeleteContact::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  return {};
}

KRString KRIssueHandleDeleteContact::nameForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleDeleteContact::noteForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleDeleteContact::suffixForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRString KRIssueHandleDeleteContact::titleForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRRef<KRStoredValue> KRIssueHandleDeleteContact::phoneForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}

KRRef<KRStoredValue> KRIssueHandleDeleteContact::emailForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}
