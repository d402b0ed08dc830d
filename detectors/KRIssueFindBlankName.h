#pragma once

#include "issues/KRIssueFind.h"

/// Finds organisations without a company name and other contacts without a first and a last name.
///
/// The two branches differ on purpose: an empty company name is as good as none, but a first or last name that is there
/// and empty counts as a name, because somebody entered it.
class KRIssueFindBlankName : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
