#pragma once

#include <string>
#include <vector>

#include "handles/KRIssueHandle.h"
#include "issues/KRIssue.h"
#include "platform/KRString.h"

/// One `ISSUE=HANDLE` of the command line: which fix all findings of an issue get.
struct FixChoice {
  KRRef<KRIssue> issue;
  KRRef<KRIssueHandle> handle;
};

/// Which fixes may be chosen for which issue: those that the issue offers and, set by the host on single findings, the
/// merge where contacts bear the same name or share a value, and the default string where a part of the name is
/// missing.
namespace FixChoices {

/// The fixes of an issue of the catalogue, in the order in which they are offered: the catalogue's own first, Ignore
/// last. The catalogue's are its very objects.
std::vector<KRRef<KRIssueHandle>> allowed(const KRIssue& issue);

/// The fix of that name for the issue. Throws `Unusable` with the fixes that there are when it is none of them; of a
/// blank name that nothing could be filled in.
KRRef<KRIssueHandle> handleFor(const KRIssue& issue, const KRString& handleName);

/// What the words say, in their order. Throws `Unusable` when a word is no "ISSUE=HANDLE", names what does not exist or
/// is not offered, or when an issue is named twice.
std::vector<FixChoice> parse(const std::vector<std::string>& words);

/// The names of the issues that the choices are about.
KRStringList issuesOf(const std::vector<FixChoice>& choices);

}  // namespace FixChoices
