#pragma once

#include "issues/KRIssueFind.h"

/// Finds persons who have a company name but no job title. Organisations are passed over; empty counts as none.
class KRIssueFindCompanyNoTitle : public KRIssueFind {
 public:
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// A new finding about the person (written form: `objectForPerson:`).
  KRRef<KRIssueObject> objectForPerson(IKRPerson* person) const;

  /// The person's company name; nothing when it is absent or empty (written form: `companyNameForPerson:`).
  KRString companyNameForPerson(const IKRPerson* person) const;
  /// The person's job title; nothing when it is absent or empty (written form: `jobTitleForPerson:`).
  KRString jobTitleForPerson(const IKRPerson* person) const;
};
