#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/FixChoice.h"
#include "app/FixEffect.h"
#include "app/PersonFilter.h"
#include "app/Terminal.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/stores/KRStoredBook.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRPreferencesOverlay.h"

/// How much fixes have done: of one issue, or of a whole run.
struct FixAccount {
  size_t findings = 0;
  /// Contacts whose values are others now, each once.
  size_t changed = 0;
  /// Contacts that went to the trash, and those that merges have made.
  size_t trashed = 0;
  size_t made = 0;
  /// Texts that count as usual now.
  std::vector<std::string> allowed;

  /// Counts one more fix, but for `changed`.
  void add(const FixEffect& effect);
};

/// Fixes in one book, from opening it to saving it: all that commands with fixes share. From its making to its end
/// nothing reaches the disk but by `save`, the settings that a fix changes included; a run that is dropped has changed
/// nothing.
///
///     FixRun run("Family", terminal);
///     run.scan(FixChoices::issuesOf(choices), filter);
///     for (const FixChoice& choice : choices) run.fixAll(choice, {});
///     run.save();
class FixRun {
 public:
  using Observer = std::function<void(const FixEffect&)>;

  /// Opens the book that the word calls (see `BookOpener::openWritable`), and the trash. Throws `Unusable` when one of
  /// them cannot be read, or the book not be written.
  FixRun(const std::string& book, Terminal& terminal);
  ~FixRun();
  FixRun(const FixRun&) = delete;
  FixRun& operator=(const FixRun&) = delete;

  KRStoredBook& book() const noexcept { return *book_; }

  /// Looks for these issues in the whole book and keeps the findings with a contact that the filter means. The user's
  /// own choice of issues stays as it is.
  void scan(const KRStringList& issues, const PersonFilter& filter);
  /// The same for the issues that the user has chosen for use.
  void scanUsed(const PersonFilter& filter);
  /// What `scan` has found and no fix has settled since.
  const KRRef<KRIssueFindResult>& result() const noexcept { return result_; }
  /// The findings of an issue; nothing when none is left.
  KRRef<KRIssueContext> contextOf(const KRIssue& issue) const;

  /// Gives the finding that fix and applies it, in memory.
  FixEffect fix(KRIssueObject& finding, const KRRef<KRIssueHandle>& handle,
                FixWatch::Detail detail = FixWatch::Detail::All);
  /// Does so with all findings of the issue, with progress; the observer, if there is one, sees each effect
  /// in all detail.
  FixAccount fixAll(const FixChoice& choice, const Observer& observer);

  /// Whether there is anything to save.
  bool hasChanges() const;
  /// Writes the trash, the book, and the settings that were changed, in this order. Throws `Unusable` when that fails.
  /// When it is the trash or the book, the book's store and the settings are as they were, the trash holds no contact
  /// that the book has too, and nothing is lost: the changes are still in memory. When it is the settings, trash and
  /// book stand as saved, and the sentence says so.
  void save();

 private:
  Terminal& terminal_;
  KRSaveScope scope_;
  KRRef<KRPreferencesOverlay> settings_;
  KRRef<KRPreferences> under_;
  KRRef<KRStoredBook> book_;
  KRRef<KRIssueFindResult> result_;
  KRTrashAddressBook& trash_;
  /// How many contacts the trash held when the run began.
  size_t trashedBefore_ = 0;
};
