#pragma once

#include "issues/KRIssueContext.h"
#include "issues/KRIssueObject.h"

/// A finding of the issue that concerns nobody: what a handle says of itself depends on the issue of a finding.
class SampleFinding {
 public:
  explicit SampleFinding(KRIssue& issue) : context_(krMake<KRIssueContext>(KRRef<KRIssue>(&issue))) {
    context_->addIssueObject(finding_.get());
  }
  /// Valid as long as this object.
  KRIssueObject* get() const { return finding_.get(); }

 private:
  KRRef<KRIssueContext> context_;
  KRRef<KRIssueObject> finding_ = krMake<KRIssueObject>();
};
