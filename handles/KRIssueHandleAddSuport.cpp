#include "handles/KRIssueHandleAddSuport.h"

#include "handles/KRAllowedTexts.h"
#include "issues/KRIssueObject.h"
#include "platform/KRSupportFuction.h"

namespace {

bool isAbout(const KRIssueHandle& handle, const KRString& property) {
  return sameText(handle.info().text(), property);
}

KRString textOf(const KRIssueObject* issueObject) {
  return issueObject != nullptr ? issueObject->info().text() : KRString();
}

}  // namespace

void KRIssueHandleAddSuport::fixIssueObject(KRIssueObject* issueObject) {
  if (isAbout(*this, kABSuffixProperty)) {
    fixSuffix(issueObject);
  } else if (isAbout(*this, kABTitleProperty)) {
    fixTitle(issueObject);
  }
}

void KRIssueHandleAddSuport::fixSuffix(KRIssueObject* issueObject) {
  krAllowSuffix(textOf(issueObject));
}

void KRIssueHandleAddSuport::fixTitle(KRIssueObject* issueObject) {
  krAllowPrefix(textOf(issueObject));
}

KRString KRIssueHandleAddSuport::name() const {
  if (isAbout(*this, kABSuffixProperty)) return KRSupportFuction::loadString("KRIssueHandle_AddSuffix"_kr);
  if (isAbout(*this, kABTitleProperty)) return KRSupportFuction::loadString("KRIssueHandle_AddTitle"_kr);
  return KRIssueHandle::name();
}

KRString KRIssueHandleAddSuport::descriptionForIssueObject(KRIssueObject* /*issueObject*/) const {
  if (isAbout(*this, kABSuffixProperty)) return KRSupportFuction::loadString("KR_IssueSolution_Info_AddSuffix"_kr);
  if (isAbout(*this, kABTitleProperty)) return KRSupportFuction::loadString("KR_IssueSolution_Info_AddTitle"_kr);
  return ""_kr;
}
