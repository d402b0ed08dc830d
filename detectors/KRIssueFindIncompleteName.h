#pragma once

#include "issues/KRIssueFind.h"

/// Finds persons with a first name and no last name, or the other way round. Organisations are passed over; an empty
/// part counts as none.
class KRIssueFindIncompleteName : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
