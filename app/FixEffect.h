#pragma once

#include <string>
#include <vector>

#include "app/PersonRows.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueObject.h"

/// What a fix does to contacts and settings, by its handle.
enum class FixKind {
  /// No contact is changed: Edit, Ignore.
  Nothing,
  /// The main contact's values.
  Values,
  /// Contacts go to the trash.
  Deletion,
  /// All contacts go to the trash, one new contact has their values.
  Merge,
  /// A text joins a list of allowed ones.
  Settings,
};

FixKind fixKindOf(KRText handleName);

/// What the fix of one finding has done, value by value.
struct FixEffect {
  FixKind kind = FixKind::Nothing;
  /// The contacts of the finding before the fix, the main one first, and how they were called then.
  KRPersonArray persons;
  std::vector<std::string> names;
  /// The main contact's values: before, and those of the main or the merged contact after. Only of fixes that change
  /// values, and of merges.
  std::vector<PersonRow> before;
  std::vector<PersonRow> after;
  /// Those that are in the trash now.
  std::vector<KRRef<IKRPerson>> trashed;
  /// The text that is allowed now; empty when it was before.
  std::string allowed;

  bool changesValues() const { return kind == FixKind::Values && before != after; }
};

/// Looks at a finding before its fix, and tells afterwards what that has done.
class FixWatch {
 public:
  /// How much of the effect is told: `Counts` leaves out the names and, of a merge, the values.
  enum class Detail { Counts, All };

  /// Before the fix of that name.
  FixWatch(const KRIssueObject& finding, KRText handleName, Detail detail);
  /// After it.
  FixEffect effect();

 private:
  void foreseeMerge(const KRIssueObject& finding);

  FixEffect effect_;
  KRStringList allowedBefore_;
};

/// Gives the finding that fix, applies it in memory, and tells what it has done.
FixEffect fixFinding(KRIssueObject& finding, const KRRef<KRIssueHandle>& handle,
                     FixWatch::Detail detail = FixWatch::Detail::All);
