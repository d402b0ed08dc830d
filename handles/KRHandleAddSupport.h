#pragma once

#include "handles/KRIssueHandle.h"

/// Accepts the prefix or suffix of the first person by adding it to the end of the user's list of allowed ones. The
/// person stays as it is, and so do other findings about the same text: the next scan does not report them any more. A
/// finding of another issue adds nothing.
class KRHandleAddSupport : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
