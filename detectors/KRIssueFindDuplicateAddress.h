#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts, organisations too, that hold the same postal address more than once: all its parts and the country
/// code, exactly; labels do not count. An entry without an address is passed over. There is one finding a contact,
/// without `info`, on purpose: the first repetition ends the look.
class KRIssueFindDuplicateAddress : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
