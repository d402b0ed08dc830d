#pragma once

#include "issues/KRIssueFind.h"

/// Finds persons whose name suffix is not in the list of allowed suffixes. Organisations are passed over. Compared
/// exactly.
///
/// The list is taken from the shared `KRNameConstraintManager` once, when a run starts.
class KRIssueFindUnusualSuffix : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person and its suffix, which is the `info` of the finding (written form:
  /// `objectForPerson:suffix:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person, const KRString& suffix) const;
};
