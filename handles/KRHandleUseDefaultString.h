#pragma once

#include "handles/KRIssueHandle.h"
#include "platform/KRString.h"

/// The text that stands in for a missing name; "???" at first. A host may assign another one while no fix runs.
extern KRString KRDefaultString;

/// Puts `KRDefaultString` in place of a missing first or last name of the first person, whatever the issue. An empty
/// part stays empty, and a person without any name value is left alone. Saves no book.
class KRHandleUseDefaultString : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
