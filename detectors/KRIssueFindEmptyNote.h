#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts, organisations too, without a note or with an empty one.
///
/// The issue is named for notes made of spaces only, yet such a note is no finding: kept so on purpose, since people
/// know this check as the one that lists contacts without notes.
class KRIssueFindEmptyNote : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
