#include "issues/KRIssue.h"

#include "handles/KRIssueHandle.h"

KRIssue::KRIssue(KRString name, KRString describe) : name_(std::move(name)), describe_(std::move(describe)) {}

KRIssue::KRIssue(KRString name, KRString describe, KRString displayName)
    : name_(std::move(name)), describe_(std::move(describe)), displayName_(std::move(displayName)) {}

KRIssue::~KRIssue() = default;

void KRIssue::setHandles(const KRList<KRIssueHandle>& handles) {
  const auto given = handles.copy();
  handles_.removeAll();
  for (const auto& handle : given) handles_.append(handle);
}

void KRIssue::addHandle(KRIssueHandle* handle) {
  handles_.append(handle);
}
