#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts, organisations too, that hold the same e-mail address more than once. Addresses are compared exactly,
/// upper and lower case included; an entry without an address is passed over. There is one finding a contact; other
/// than for phones it has no `info`, on purpose: the first repetition ends the look.
class KRIssueFindDuplicateEmail : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
