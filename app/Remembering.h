#pragma once

#include <vector>

#include "app/FixRun.h"
#include "issues/KRIgnoredFindings.h"

/// Remembers with a book the findings that are ignored in it, so that `scan --hide-ignored` leaves them out from then
/// on. Made after the scan and before the fixes, which take the findings away; `save` follows the save of the run.
class Remembering {
 public:
  /// Whether any of the choices ignores findings.
  static bool isMeant(const std::vector<FixChoice>& choices);
  /// What is remembered with a book so far. Throws `Unusable` when that cannot be read.
  static KRIgnoredFindings of(const KRAddressBook& book);

  /// Takes note of all findings of the run that the choices ignore.
  Remembering(FixRun& run, const std::vector<FixChoice>& choices);
  /// For a host that ignores findings one by one.
  explicit Remembering(const KRAddressBook& book) : ignored_(of(book)) {}
  void add(const KRIssueObject& finding);
  /// For an ignored finding that is to be seen again after all.
  void takeBack(const KRIssueObject& finding);

  /// How many findings are new in it.
  size_t count() const noexcept { return count_; }
  void save();
  void print(Terminal& terminal, bool isDryRun) const;

 private:
  KRIgnoredFindings ignored_;
  size_t count_ = 0;
};
