#pragma once

#include "handles/KRIssueHandle.h"

/// Another form of the fix that adds to the lists of allowed prefixes and suffixes, for hosts that drive it by
/// `fixIssueObject` and bring the find result up to date themselves. The factory never makes one.
///
/// Its `info` names the field that it is about: `kABTitleProperty` (the prefix) or `kABSuffixProperty`; with any other
/// one it changes nothing. The text to be added is the `info` of the finding.
class KRIssueHandleAddSuport : public KRIssueHandle {
 public:
  /// `fixSuffix` or `fixTitle`, as `info` says (written form: `fixIssueObject:`).
  void fixIssueObject(KRIssueObject* issueObject);
  /// Appends the finding's `info` to the list of allowed suffixes, unless it is there (written form: `fixSuffix:`).
  void fixSuffix(KRIssueObject* issueObject);
  /// The same with the list of allowed prefixes (written form: `fixTitle:`).
  void fixTitle(KRIssueObject* issueObject);

  /// A title in the user's language, by `info`; else the name that the handle was made with.
  KRString name() const override;
  /// A sentence in the user's language, by `info`; else "" (written form: `descriptionForIssueObject:`).
  KRString descriptionForIssueObject(KRIssueObject* issueObject) const;
};
