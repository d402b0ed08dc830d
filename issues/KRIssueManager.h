#pragma once

#include <optional>

#include "issues/KRIssue.h"
#include "issues/KRIssueNames.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;
template <class T>
class KRSharedInstance;

/// The registry of the issue types: the catalogue of what the engine offers, and the user's choice of what to scan for
/// (the *used* issues), which is kept in the preferences.
///
/// Every manager builds catalogue objects of its own. The used list holds catalogue objects only; after every change
/// made through the manager it stands in catalogue order without repeats, and is saved at once. Issues are told apart
/// by identity. What the shared manager adds or removes is added to, and removed from, the choice as it is stored by
/// then, which may be another process's; what sets the whole choice replaces it. The lists are not locked: the host
/// changes them on its own thread, a run copies the used list once.
class KRIssueManager : public KRObject {
 public:
  /// The shared manager: made on first use from what the preferences hold, else by `init`. It lives as long as the
  /// process. Any thread.
  static KRIssueManager& shareIssueManager();
  /// Has the next use make the shared manager anew from the preferences, for a host that has put another store in their
  /// place (`KRPreferences::setStandard`). The former manager and its issues stay valid, but are the shared ones no
  /// more. Not while a find runs.
  static void reloadShared();

  /// A manager that uses every issue of the catalogue, already saved (written form: `init`).
  static KRRef<KRIssueManager> init();
  /// The manager of a stored archive (written form: `initWithCoder:`): neither sorted nor saved.
  static KRRef<KRIssueManager> initWithCoder(KRKeyedUnarchiver& coder);
  /// The manager of archived bytes; nothing when they are none.
  static KRRef<KRIssueManager> unarchive(std::string_view data);

  /// The catalogue: the live list, in its fixed order.
  KRIssueList& supportIssues() noexcept { return supoortItemArray_; }
  /// The used issues: the live list.
  KRIssueList& useIssues() noexcept { return useItemArray_; }

  /// Whether the used list holds that very object; false for nothing (written form: `isUseIssue:`).
  bool isUseIssue(const KRIssue* issue) const;
  /// Uses exactly the given issues, as far as they are catalogue objects; none given uses none (written form:
  /// `setUseIssues:`).
  void setUseIssues(const KRIssueList* issues);
  /// Uses the given issues too; saves also when they were used already. Does nothing without a list.
  void addUseIssues(const KRIssueList* issues);
  /// Uses the issue too. One that is used already changes nothing, nor is anything saved then.
  void addUseIssue(KRIssue* issue);
  /// Uses the given issues no more; saves also when none was used. Does nothing without a list.
  void removeUseIssues(const KRIssueList* issues);
  /// Uses the issue no more. One that is not used changes nothing, nor is anything saved then.
  void removeUseIssue(const KRIssue* issue);
  /// Uses no issue.
  void clearUseIssue();
  /// Puts the used list into catalogue order, each issue once, and drops whatever is not of the catalogue.
  void sortUseArray();

  /// The first catalogue issue of that name, compared exactly, or nothing (written form: `supportIssueByName:`).
  KRIssue* supportIssueByName(KRText name) const;
  /// Appends the catalogue issues of those names to the used list (written form: `initCurIssuesWithNames:`). The first
  /// name that is none makes every issue used and ends the walk, so that a choice made by a later version hides
  /// nothing.
  void initCurIssuesWithNames(const KRStringList& names);
  /// The names of the issues, in their order (written form: `issueNamesByIssues:`).
  static KRStringList issueNamesByIssues(const KRIssueList* issues);

  /// Writes the used issues' names into the preferences.
  void saveToUserDefault();

  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;

 private:
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);
  KRIssueManager();
  void initSupportIssues();
  void useAll();
  static KRSharedInstance<KRIssueManager>& shared();
  static KRRef<KRIssueManager> makeShared();

  KRIssueList supoortItemArray_;
  KRIssueList useItemArray_;
  bool isShared_ = false;
  /// What the shared manager used when it was read or saved last; nothing for one that replaces what is stored.
  std::optional<KRStringList> saved_;
};
