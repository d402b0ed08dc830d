#pragma once

#include <string>
#include <vector>

#include "app/FixEffect.h"
#include "app/FixStep.h"
#include "issues/KRIgnoredFindings.h"

/// A walk through findings in which each is fixed, ignored or left for later, one step at a time, all in memory. Steps
/// that are not saved yet can be taken back, the last one first. Knows nothing of screens and keys.
class FixSession {
 public:
  /// The findings of the result in its order; the book is the one that was scanned. What is ignored in the walk joins
  /// `remembered`, in memory, if that is given; it outlives the session.
  FixSession(KRAddressBook& book, KRRef<KRIssueFindResult> result, KRIgnoredFindings* remembered = nullptr);

  /// The finding that it is the turn of; null behind the last one.
  KRIssueObject* current() const;
  /// Its place among all findings of the scan, from 1, and how many there were.
  size_t number() const noexcept { return at_ + 1; }
  size_t count() const noexcept { return all_.size(); }
  /// How many findings are neither fixed nor ignored, and how many of them belong to the present finding's issue.
  size_t openCount() const;
  size_t openCountOfIssue() const;

  /// The fixes that the present finding offers: what changes something, in the order of `FixChoices::allowed`.
  std::vector<KRRef<KRIssueHandle>> fixes() const;

  /// Fixes the present finding and goes on to the next one.
  FixEffect fix(const KRRef<KRIssueHandle>& handle);
  /// Does so with this one and all others of its issue; how many those were.
  size_t fixAllOfIssue(const KRRef<KRIssueHandle>& handle);
  /// Takes the finding out of the walk; no contact is changed.
  void ignore();
  /// Gives a contact of the present finding the values in which `edited` differs from `original`. Whether the finding
  /// is settled by that, as its detector sees the finding's contacts now; then the walk goes on.
  bool edit(ABPerson& person, const IKRPerson& original, const IKRPerson& edited);

  /// To the next open finding behind this one, which stays open; to the one before it; to the first of all.
  void skip();
  void back();
  void restart();

  /// What the next `undo` takes back: "Merge: Ann Barrow"; empty when there is nothing.
  std::string undoable() const { return steps_.empty() ? std::string() : steps_.back().name; }
  /// Takes back the last step and returns to its finding.
  void undo();
  /// Steps since the last save, and how many findings they have remembered.
  size_t unsavedCount() const noexcept { return steps_.size(); }
  size_t unsavedRememberedCount() const;
  /// Everything is saved: what was done so far is no more to be taken back here.
  void settle() { steps_.clear(); }

 private:
  using Findings = std::vector<KRRef<KRIssueObject>>;
  struct Step {
    std::string name;
    size_t at;
    FixStep memory;
    /// The findings that were not remembered before.
    Findings remembered;
  };

  bool isOpen(size_t place) const;
  void moveOn();
  void finish(FixStep memory, std::string name, size_t at, Findings remembered = Findings());
  /// Before the fix: takes note of a finding that is to be ignored.
  void rememberIgnored(const KRIssueHandle& handle, KRIssueObject& finding, Findings& remembered);
  bool isSettled(KRIssueObject& finding) const;

  KRAddressBook& book_;
  KRRef<KRIssueFindResult> result_;
  KRIgnoredFindings* remembered_;
  FindingPlaces places_;
  std::vector<KRRef<KRIssueObject>> all_;
  size_t at_ = 0;
  std::vector<Step> steps_;
};
