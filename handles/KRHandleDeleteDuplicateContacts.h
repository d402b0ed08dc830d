#pragma once

#include "handles/KRIssueHandle.h"

/// Keeps the first of several duplicate contacts and removes the others. Without a trash to move contacts to, a fix
/// changes no contact and only takes the finding out of the result, as that of the base does.
class KRHandleDeleteDuplicateContacts : public KRIssueHandle {
 public:
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
