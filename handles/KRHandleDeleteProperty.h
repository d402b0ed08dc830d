#pragma once

#include "handles/KRIssueHandle.h"

/// Clears the field of the first person that the finding's issue is about: note, prefix, suffix or nickname. A finding
/// of another issue changes no field. Saves no book.
class KRHandleDeleteProperty : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
