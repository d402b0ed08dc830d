#include "handles/KRHandleDeleteContact.h"

KRString KRHandleDeleteContact::title(KRIssueObject* /*issueObject*/) const {
  return "Delete the contact"_kr;
}

KRString KRHandleDeleteContact::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "This contact will be deleted."_kr;
}
