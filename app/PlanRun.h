#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "app/FixRun.h"
#include "app/Plan.h"

/// A plan held against a book as it is now.
class PlanRun {
 public:
  /// The fixes of a plan with the same issue and handle.
  struct Group {
    FixChoice choice;
    std::vector<size_t> fixes;
    /// How many findings they are about.
    size_t findings = 0;
  };

  /// Scans the book and looks up the finding of every fix. Throws `Unusable`, naming the first such fix and how many
  /// more there are, when a contact is gone or holds other values than when the plan was made, or a finding is not
  /// there any more; nothing is changed then.
  PlanRun(const Plan& plan, const std::string& file, FixRun& run);

  /// The groups in the order in which the plan first has one of each; a fix that the plan names again is in none.
  const std::vector<Group>& groups() const noexcept { return groups_; }
  /// The finding of the group's first fix.
  KRIssueObject* first(const Group& group) const { return findings_[group.fixes.front()].get(); }
  /// Applies the fixes of a group, in memory. A fix whose finding an earlier one has settled is passed over.
  FixAccount apply(const Group& group, const FixRun::Observer& observer);
  /// How many were passed over so far; those that the plan names again are from the start.
  size_t settled() const noexcept { return settled_; }

 private:
  void findFurther();
  std::string lookUp(const Plan::Fix& fix);
  KRRef<KRIssueObject> findingOf(const Plan::Fix& fix, const std::vector<KRRef<IKRPerson>>& persons);
  FixEffect applyOne(const Plan::Fix& fix, KRIssueObject& finding, FixWatch::Detail detail);

  const Plan& plan_;
  FixRun& run_;
  /// Whether each fix is one that stands in front of it already.
  std::vector<bool> isRepeated_;
  std::unordered_map<std::string, KRRef<IKRPerson>> persons_;
  std::unordered_map<const IKRPerson*, std::string> digests_;
  std::unordered_set<const KRIssueObject*> used_;
  /// The finding of each fix; nothing for one that is repeated.
  std::vector<KRRef<KRIssueObject>> findings_;
  /// Whether each fix is about the finding of one in front of it in its group.
  std::vector<bool> isFurther_;
  std::vector<Group> groups_;
  size_t settled_ = 0;
};
