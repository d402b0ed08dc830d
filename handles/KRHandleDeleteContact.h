#pragma once

#include "handles/KRIssueHandle.h"

/// Removes the first contact of a finding. Without a trash to move contacts to, a fix changes no contact and only takes
/// the finding out of the result, as that of the base does.
class KRHandleDeleteContact : public KRIssueHandle {
 public:
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
