#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts, organisations too, with e-mail addresses that hold no "@" or phone numbers that hold more than
/// digits, blanks, no-break spaces and "(", ")", "+", "-". An empty address is invalid; an empty number is not looked
/// at. There is one finding a contact, however many values are invalid.
///
/// Two oddities are kept on purpose. Of each UTF-16 code unit of a number only the low eight bits are looked at, so a
/// few characters of other scripts pass for digits; books cleaned before must not come up with findings again. And the
/// progress counts from one, so that this detector alone ends at 100.
///
/// The `info` of a finding is a map that holds the lists of invalid texts, under "email" and "phone", each only when it
/// is not empty.
class KRIssueFindInvalidCharset : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person with the general sentence (written form: `objectForPerson:`). `find` replaces the
  /// sentence by one that lists the values.
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;

  /// The sentence that lists invalid phone numbers and e-mail addresses (written form: `describeString:email:`).
  /// Numbers are separated by commas, addresses by ideographic commas; the difference is kept on purpose.
  KRString describeString(const KRStringList& phones, const KRStringList& email) const;
};
