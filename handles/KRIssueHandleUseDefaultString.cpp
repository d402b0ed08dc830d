#include "handles/KRIssueHandleUseDefaultString.h"

#include "platform/KRSupportFuction.h"

void KRIssueHandleUseDefaultString::fixIssueObject(KRIssueObject* /*issueObject*/) {}

KRString KRIssueHandleUseDefaultString::name() const {
  return KRSupportFuction::loadString("KRIssueHandle_UseDefaultStringInstead"_kr);
}

KRString KRIssueHandleUseDefaultString::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  return {};
}

KRString KRIssueHandleUseDefaultString::nameForPersons(const KRPersonArray& /*persons*/) const {
  return {};
}
