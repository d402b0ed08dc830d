#pragma once

#include <cstddef>
#include <vector>

#include "app/Terminal.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueFindResult.h"

/// What `scan` shows to people: a table of the issues, then the findings.
class ScanReport {
 public:
  /// `scanned` are the issues that were looked for, in their order; `limit` is how many findings of each are shown, and
  /// `wholeGroups` whether every contact of a finding is named however many there are. `isNarrow` says that only
  /// findings with the contacts asked for are left, so that there may be others.
  ScanReport(Terminal& terminal, const std::vector<KRRef<KRIssue>>& scanned, size_t limit, bool wholeGroups,
             bool isNarrow)
      : terminal_(terminal), scanned_(scanned), limit_(limit), wholeGroups_(wholeGroups), isNarrow_(isNarrow) {}

  void print(KRIssueFindResult& result) const;

 private:
  void printSummary(KRIssueFindResult& result) const;
  void printContext(const KRIssueContext& context) const;
  void printFinding(KRIssueObject& finding, const KRIssue& issue, size_t number) const;

  Terminal& terminal_;
  const std::vector<KRRef<KRIssue>>& scanned_;
  size_t limit_;
  bool wholeGroups_;
  bool isNarrow_;
};
