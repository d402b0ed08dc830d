#pragma once

#include "handles/KRIssueHandle.h"

/// Takes every blank (U+0020, no other white space) out of the first name of the first person, whatever the issue. A
/// first name made of blanks only becomes nothing. Saves no book.
class KRHandleRemoveSpace : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
