#pragma once

#include "handles/KRIssueHandle.h"

/// A handle about repeated values of one contact that does nothing; `KRHandleDeleteDublicateProprty` is the one that
/// removes them. The factory never makes one: it is there for hosts that name it.
class KRIssueHandleDeleteDuplicateProperty : public KRIssueHandle {
 public:
  using KRIssueHandle::fix;
  /// Does nothing: a finding with this handle never leaves its result (written form: `fix:`).
  void fix(KRIssueObject* issueObject) override;
  /// Does nothing (written form: `fixAdress:`).
  void fixAdress(KRIssueObject* issueObject);
  /// Calls `fix` (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// Does nothing (written form: `fixPhoneNumber:`).
  void fixPhoneNumber(KRIssueObject* issueObject);
  /// Does nothing (written form: `fixEmail:`).
  void fixEmail(KRIssueObject* issueObject);
  /// Nothing (written form: `fixMultiValue:forProperty:`).
  KRRef<KRStoredValue> fixMultiValue(const KRMutableMultipleValue* multiValue, const KRString& forProperty);
  /// Nothing (written form: `descriptionForIssueObject:`).
  KRString descriptionForIssueObject(KRIssueObject* issueObject) const;
};
