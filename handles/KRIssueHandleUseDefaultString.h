#pragma once

#include "handles/KRIssueHandle.h"

/// A handle about empty names that does nothing itself; `KRHandleUseDefaultString` is the one that fixes them. The
/// factory never makes one: it is there for hosts that name it.
class KRIssueHandleUseDefaultString : public KRIssueHandle {
 public:
  /// Does nothing (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// A title in the user's language.
  KRString name() const override;
  /// Nothing (written form: `descriptionForIssueObject:`).
  KRString descriptionForIssueObject(KRIssueObject* issueObject) const;
  /// Nothing (written form: `nameForPersons:`).
  KRString nameForPersons(const KRPersonArray& persons) const;
};
