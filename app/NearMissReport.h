#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "app/Terminal.h"
#include "detectors/KRNearMissFind.h"
#include "issues/KRIssue.h"

/// What `scan --explain` shows to people behind the findings: contacts that are nearly the same, and what differs.
class NearMissReport {
 public:
  /// As for `ScanReport`: the issues that were looked for, how many near-misses of each are shown, and whether all
  /// contacts and sides of each are.
  NearMissReport(Terminal& terminal, const std::vector<KRRef<KRIssue>>& scanned, size_t limit, bool isWhole)
      : terminal_(terminal), scanned_(scanned), limit_(limit), isWhole_(isWhole) {}

  void print(const std::vector<KRNearMiss>& misses) const;

  /// The word for a reason in documents, such as "case".
  static std::string_view nameOf(KRNearMissReason reason);

 private:
  void printIssue(const KRIssue& issue, const std::vector<KRNearMiss>& misses) const;
  void printMiss(const KRNearMiss& miss, size_t number) const;
  void printSide(const KRNearMiss& miss, const KRNearMiss::Side& side) const;

  Terminal& terminal_;
  const std::vector<KRRef<KRIssue>>& scanned_;
  size_t limit_;
  bool isWhole_;
};
