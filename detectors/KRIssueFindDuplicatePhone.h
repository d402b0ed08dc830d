#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts, organisations too, that hold the same phone number more than once. Numbers are compared exactly:
/// "555-1234" and "555 1234" are two; an entry without a number is passed over. There is one finding a contact, whose
/// `info` is the list of all numbers that occur more than once, each once, in the order in which they were repeated.
class KRIssueFindDuplicatePhone : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person, without `info` (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;
};
