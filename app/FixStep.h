#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "issues/KRIssueFindResult.h"

/// Where findings and contexts stood when a scan ended, so that those that come back find their places.
class FindingPlaces {
 public:
  explicit FindingPlaces(const KRIssueFindResult& result);

  /// Puts a finding, or a context, back in front of those that stood behind it.
  void insert(KRIssueObject& finding, KRIssueContext& context) const;
  void insert(KRIssueContext& context, KRIssueFindResult& result) const;

 private:
  std::unordered_map<const KRIssueObject*, size_t> findings_;
  std::unordered_map<const KRIssueContext*, size_t> contexts_;
};

/// What has to be remembered of some fixes in one book to take all of them back, before any of them is saved: the
/// contacts' values, the lists of the book and the trash, the findings, the allowed prefixes and suffixes.
///
///     FixStep step(book, *result, places);
///     step.remember(*finding);
///     finding->fix();
///     step.seal();
///     step.undo();    // steps go back last in, first out
class FixStep {
 public:
  FixStep(KRAddressBook& book, KRIssueFindResult& result, const FindingPlaces& places);

  /// Before the fix of each finding of the step.
  void remember(const KRIssueObject& finding);
  /// Before the values of a contact are changed.
  void remember(ABPerson& person);
  /// After the last fix of the step.
  void seal();
  /// Everything is as it was before the step, in memory.
  void undo();

 private:
  struct Values {
    KRRef<ABPerson> person;
    KRCardRecord record;
    std::vector<std::pair<const KRProperty*, KRRef<KRStoredValue>>> changed;
  };
  struct Finding {
    KRRef<KRIssueObject> finding;
    KRRef<KRIssueContext> context;
    KRPersonArray persons;
  };
  struct Removed {
    size_t place;
    KRRef<IKRPerson> person;
  };

  void restoreFindings();
  void restorePersons();
  void restoreAllowed() const;

  KRAddressBook& book_;
  KRIssueFindResult& result_;
  const FindingPlaces& places_;
  /// The book's persons, until the step is sealed.
  std::vector<KRRef<IKRPerson>> before_;
  size_t trashCount_;
  KRStringList prefixes_;
  KRStringList suffixes_;
  std::unordered_map<const ABPerson*, Values> values_;
  std::unordered_map<const KRIssueObject*, Finding> findings_;
  std::vector<Removed> removed_;
  std::vector<KRRef<IKRPerson>> added_;
  std::vector<KRRef<IKRPerson>> trashed_;
};
