#include "handles/KRHandleDeleteDuplicateContacts.h"

KRString KRHandleDeleteDuplicateContacts::title(KRIssueObject* /*issueObject*/) const {
  return "Delete duplicate contacts"_kr;
}

KRString KRHandleDeleteDuplicateContacts::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "Delete duplicate Contacts and keep only one."_kr;
}
