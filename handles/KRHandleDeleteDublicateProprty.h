#pragma once

#include <vector>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectPhone.h"
#include "handles/KRIssueHandle.h"
#include "platform/KRValue.h"

/// Removes repeated entries from the phones, e-mails or addresses of the first person, by the finding's issue: of
/// entries with equal values the first stays, with its own label; the others go with theirs. The order stays. A finding
/// of another issue changes nothing. Saves no book.
///
/// Only entries that are equal to the letter are removed, however alike others may look: nothing is lost that a person
/// typed differently.
class KRHandleDeleteDublicateProprty : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;

  /// Whether the list holds a value equal to `value` under the rule of the issue; false for an issue that is about none
  /// of the three (written form: `isExistInArray:value:issueName:`).
  bool isExistInArray(const std::vector<KRValue>& array, const KRValue& value, const KRString& issueName) const;

  /// Equal texts, character for character; nothing, and a phone without a number, equals nothing (written form:
  /// `isEqualPhoneObject:phone2:`).
  bool isEqualPhoneObject(const KRObjectPhone* phone1, const KRObjectPhone* phone2) const;
  /// The same for e-mails, letter case included (written form: `isEqualEmailObject:email2:`).
  bool isEqualEmailObject(const KRObjectEmail* email1, const KRObjectEmail* email2) const;
  /// The first one's `isequalToAddress`; false for nothing (written form: `isEqualAdressObject:address2:`).
  bool isEqualAdressObject(const KRObjectAddress* address1, const KRObjectAddress* address2) const;
};
