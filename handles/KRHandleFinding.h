#pragma once

#include "contacts/model/IKRPerson.h"
#include "platform/KRProgress.h"

class KRAddressBook;
class KRIssueFindResult;
class KRIssueObject;

// What the handles ask of a finding. Each answers nothing for no finding.

/// The name of the finding's issue; nothing for a finding in no context.
KRString krIssueNameOf(const KRIssueObject* issueObject);

/// The person that a field handle works on: the first one; nothing for a finding without persons.
KRRef<IKRPerson> krMainPersonOf(const KRIssueObject* issueObject);

/// The find result that the finding stands in, and the address book that was scanned for it; nothing for a finding that
/// stands in none.
KRRef<KRIssueFindResult> krResultOf(const KRIssueObject* issueObject);
KRRef<KRAddressBook> krBookOf(const KRIssueObject* issueObject);

/// The single value that the person holds under a property name; nothing for no person.
KRRef<KRMutableSingleValue> krSingleValueOf(const IKRPerson* person, const KRString& name);

/// Tells the caller that the change is made: flag 1 and 100 percent, to a callback that may be absent.
inline void krReportFixed(const KRFlagProgress& progress) {
  if (progress) progress(1, 100.0);
}
