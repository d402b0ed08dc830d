#pragma once

#include "issues/KRIssueFind.h"

/// Finds e-mail addresses that stand on more than one contact. There is one finding for each such address, in the order
/// in which the addresses were first met; it lists the contacts that hold the address, each once, in the order of the
/// list, and its `info` is the address. Persons and organisations share nothing with each other, on purpose. Addresses
/// are compared exactly; an entry without an address is passed over.
class KRIssueFindShareEmail : public KRIssueFind {
 public:
  /// The progress goes to 70 per cent and stays there while findings are made: other than for phones, kept on purpose.
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// Finds by looking through the other contacts for each address (written form: `find1:progress:`); quadratic, not
  /// called by `find`. Here persons and organisations do share addresses.
  KRRef<KRIssueContext> find1(const KRPersonList* persons, const KRProgress& progress) const;

  /// What `find` compares: the address, with ":OrgString##" behind it for an organisation (written form:
  /// `KeyString:person:`). Nothing for nothing.
  KRString KeyString(const KRString& email, const IKRPerson* person) const;

  /// A new finding about the address (written form: `objectForPersons:email:`).
  KRRef<KRIssueObject> objectForPersons(const KRPersonArray& persons, const KRString& email) const;

  /// Whether the person holds the address (written form: `personHasEmail:email:emailArray:needRemove:`). `emailArray`
  /// are the addresses that are done with; `needRemove` becomes true, and otherwise stays as it was, when each of the
  /// person's addresses is one of them or this one, so that the person need not be looked at again.
  bool personHasEmail(const IKRPerson* person, const KRString& email, const KRStringList& emailArray,
                      bool& needRemove) const;
};
