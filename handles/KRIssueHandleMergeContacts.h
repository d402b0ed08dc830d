#pragma once

#include "handles/KRIssueHandle.h"

/// A handle about contacts with the same name that does nothing but say what a merge would do; the merge itself is
/// `KRIssueHandle` under the name `KRHandleNameMergeContact`. The factory never makes one: it is there for hosts that
/// name it.
class KRIssueHandleMergeContacts : public KRIssueHandle {
 public:
  using KRIssueHandle::fix;
  /// Does nothing: a finding with this handle never leaves its result (written form: `fix:`).
  void fix(KRIssueObject* issueObject) override;
  /// Does nothing (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// Nothing (written form: `multivalueForProperty:persons:type:`).
  KRRef<KRStoredValue> multivalueForProperty(const KRString& property, const KRPersonArray& persons,
                                             int32_t type) const;
  /// False (written form: `hasValue:fromMultivalue:type:`).
  bool hasValue(const KRValue& value, const KRMutableMultipleValue* fromMultivalue, int32_t type) const;
  /// Nothing (written form: `singleValueForProperty:persons:`).
  KRRef<KRStoredValue> singleValueForProperty(const KRString& property, const KRPersonArray& persons) const;
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
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;

  /// What a host leaves here; nothing until set. Atomic.
  KRValue object() const { return object_.get(); }
  void setObject(KRValue object) { object_.set(std::move(object)); }

 private:
  KRAtomic<KRValue> object_;
};
