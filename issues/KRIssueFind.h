#pragma once

#include "contacts/model/IKRPerson.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "platform/KRAtomic.h"
#include "platform/KRObject.h"
#include "platform/KRProgress.h"

/// The base of all detectors. A detector finds the problems of one issue type in a list of persons; it serves one issue
/// of one run and is then dropped.
///
/// Detectors run on the thread of the find, one at a time. They change neither persons nor settings, do not sort what
/// they find and do not add it to a result.
class KRIssueFind : public KRObject {
 public:
  ~KRIssueFind() override;

  /// A new detector for the issue, chosen by its name alone, with the issue set (written form: `issueFindWithIssue:`).
  /// Nothing for a name that has none, and for no issue. Any thread.
  static KRRef<KRIssueFind> issueFindWithIssue(KRIssue* issue);

  /// Walks the persons in order and answers a new context of this detector's issue with at least one finding, or
  /// nothing (written form: `find:progress:`); no persons have none. The progress is required and gets the percentage
  /// of this detector's own work. The base does no work, answers nothing and reports nothing.
  virtual KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress);

  /// The issue type that this detector finds.
  KRRef<KRIssue> issue() const { return issue_.get(); }
  void setIssue(KRRef<KRIssue> issue) { issue_.set(std::move(issue)); }

 private:
  KRAtomic<KRRef<KRIssue>> issue_;
};
