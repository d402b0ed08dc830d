#pragma once

#include "handles/KRIssueHandle.h"

/// A handle about contacts to be deleted that does nothing; `KRHandleDeleteContact` is the one that deletes them. The
/// factory never makes one: it is there for hosts that name it.
class KRIssueHandleDeleteContact : public KRIssueHandle {
 public:
  using KRIssueHandle::fix;
  /// Does nothing: a finding with this handle never leaves its result (written form: `fix:`).
  void fix(KRIssueObject* issueObject) override;
  /// Does nothing (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// Nothing.
  KRString name() const override;
  /// Nothing (written form: `descriptionForIssueObject:`).
  KRString descriptionForIssueObject(KRIssueObject* issueObject) const;
  /// Nothing (written form: `nameForPersons:`).
  KRString nameForPersons(const KRPersonArray& persons) const;
  /// Nothing (written form: `noteForPersons:`).
  KRString noteForPersons(const KRPersonArray& persons) const;
  /// Nothing (written form: `suffixForPersons:`).
  KRString suffixForPersons(const KRPersonArray& persons) const;
  /// Nothing (written form: `titleForPersons:`).
  KRString titleForPersons(const KRPersonArray& persons) const;
  /// Nothing (written form: `phoneForPersons:`).
  KRRef<KRStoredValue> phoneForPersons(const KRPersonArray& persons) const;
  /// Nothing (written form: `emailForPersons:`).
  KRRef<KRStoredValue> emailForPersons(const KRPersonArray& persons) const;
};
