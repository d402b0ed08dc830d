#pragma once

#include "issues/KRIssueFind.h"

/// Finds persons whose name prefix is not in the list of allowed prefixes. Organisations are passed over. Compared
/// exactly: "dr." is unusual when only "Dr." is allowed.
///
/// The list is taken from the shared `KRNameConstraintManager` once, when a run starts.
class KRIssueFindUnusualTitle : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person and its prefix, which is the `info` of the finding (written form:
  /// `objectForPerson:title:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person, const KRString& title) const;
};
