#pragma once

#include "issues/KRIssueFind.h"

/// Finds persons whose first name holds a blank (U+0020) anywhere, at its start and end too. Organisations are passed
/// over.
class KRIssueFindSpacingInFirst : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
