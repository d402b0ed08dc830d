#pragma once

#include "handles/KRIssueHandle.h"

/// A handle about fields of blanks only that does nothing; `KRHandleDeleteProperty` is the one that clears them. The
/// factory never makes one: it is there for hosts that name it.
class KRIssueHandleDeleteBlankProperty : public KRIssueHandle {
 public:
  /// Does nothing (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// Nothing.
  KRString name() const override;
  /// Nothing (written form: `descriptionForIssueObject:`).
  KRString descriptionForIssueObject(KRIssueObject* issueObject) const;
};
