#pragma once

#include "handles/KRIssueHandle.h"

/// A handle about contacts that share an e-mail or a phone, which does nothing. The factory never makes one: it is
/// there for hosts that name it.
class KRIssueHandleDeleteEmailContacts : public KRIssueHandle {
 public:
  /// Does nothing (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// Does nothing (written form: `fixEmail:`).
  void fixEmail(KRIssueObject* issueObject);
  /// Does nothing (written form: `fixPhone:`).
  void fixPhone(KRIssueObject* issueObject);
  /// Nothing.
  KRString name() const override;
  /// False (written form: `personHasEmail:email:`).
  bool personHasEmail(const IKRPerson* person, const KRString& email) const;
  /// "" (written form: `descriptionForIssueObject:`).
  KRString descriptionForIssueObject(KRIssueObject* issueObject) const;
};
