#include "handles/KRIssueHandleDeleteEmailContacts.h"

void KRIssueHandleDeleteEmailContacts::fixIssueObject(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleDeleteEmailContacts::fixEmail(KRIssueObject* /*issueObject*/) {}

void KRIssueHandleDeleteEmailContacts::fixPhone(KRIssueObject* /*issueObject*/) {}

KRString KRIssueHandleDeleteEmailContacts::name() const {
  return {};
}

bool KRIssueHandleDeleteEmailContacts::personHasEmail(const IKRPerson* /*person*/, const KRString& /*email*/) const {
  return false;
}

KRString KRIssueHandleDeleteEmailContacts::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  return ""_kr;
}
