#pragma once

#include "handles/KRIssueHandle.h"

/// Keeps the first of several duplicate contacts, in the order of the finding, and moves the others from the scanned
/// book to the trash. Saves neither and reports no progress. A finding without persons is a programming error
/// (`KRFatal`).
class KRHandleDeleteDuplicateContacts : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
