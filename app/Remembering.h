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

  /// How many findings are new in it.
  size_t count() const noexcept { return count_; }
  void save();
  /// The same for findings that were ignored one by one.
  static void save(KRIgnoredFindings& ignored);
  void print(Terminal& terminal, bool isDryRun) const;

 private:
  KRIgnoredFindings ignored_;
  /// How many findings are ignored, and how many of them are new.
  size_t all_ = 0;
  size_t count_ = 0;
};
