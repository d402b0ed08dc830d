#pragma once

#include "app/FixRun.h"

/// What fixes have done, or would do, as people read it.
class FixReport {
 public:
  FixReport(Terminal& terminal, bool isDryRun) : terminal_(terminal), isDryRun_(isDryRun) {}

  void printBook(KRAddressBook& book);
  /// The title, the fix's, and how many findings there are; made before they are fixed.
  static std::string headingOf(const FixChoice& choice, const KRRef<KRIssueContext>& context);
  /// The same of so many findings, of which one is given; null for none.
  static std::string headingOf(const FixChoice& choice, size_t count, KRIssueObject* finding);
  /// Before the fixes of an issue.
  void printStart(const std::string& heading);
  /// What a fix changes: a line for each value of the contact that changes; of a merged contact, all.
  void printEffect(const FixEffect& effect);
  /// After the fixes of an issue.
  void printAccount(const FixAccount& account);

 private:
  Terminal& terminal_;
  bool isDryRun_;
  size_t number_ = 0;
};
