#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts, organisations too, whose nickname is made of one or more blanks (U+0020) and nothing else. Other
/// white space does not count, and neither does an empty nickname.
class KRIssueFindNicknameSpacing : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
