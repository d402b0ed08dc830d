#pragma once

#include "issues/KRIssueFind.h"

/// Finds phone numbers that stand on more than one contact. There is one finding for each such number, in the order in
/// which the numbers were first met; it lists the contacts that hold the number, each once, in the order of the list,
/// and its `info` is the number. Persons and organisations share nothing with each other, on purpose. Numbers are
/// compared exactly as they are written; an entry without a number is passed over.
class KRIssueFindSharePhone : public KRIssueFind {
 public:
  /// The progress goes to 70 per cent with the contacts, then on with the numbers, both counted from 0.
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// Finds by looking through all other contacts for each number (written form: `find1:progress:`); quadratic, not
  /// called by `find`. Here persons and organisations do share numbers.
  KRRef<KRIssueContext> find1(const KRPersonList* persons, const KRProgress& progress) const;

  /// What `find` compares: the number, with ":OrgString##" behind it for an organisation (written form:
  /// `KeyString:person:`). Nothing for nothing.
  KRString KeyString(const KRString& phone, const IKRPerson* person) const;

  /// A new finding about the number (written form: `objectForPersons:phone:`).
  KRRef<KRIssueObject> objectForPersons(const KRPersonArray& persons, const KRString& phone) const;

  /// Whether the person holds the number (written form: `personHasPhone:phone:`).
  bool personHasPhone(const IKRPerson* person, const KRString& phone) const;
  /// Whether a finding of the context about the number lists the person (written form:
  /// `existPerson:fromContext:phone:`).
  bool existPerson(const IKRPerson* person, const KRIssueContext* fromContext, const KRString& phone) const;
};
