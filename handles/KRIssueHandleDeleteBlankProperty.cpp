#include "handles/KRIssueHandleDeleteBlankProperty.h"

void KRIssueHandleDeleteBlankProperty::fixIssueObject(KRIssueObject* /*issueObject*/) {}

KRString KRIssueHandleDeleteBlankProperty::name() const {
  return {};
}

KRString KRIssueHandleDeleteBlankProperty::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  return {};
}
