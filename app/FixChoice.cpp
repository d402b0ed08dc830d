#include "app/FixChoice.h"

#include <algorithm>

#include "app/HandleNames.h"
#include "app/IssueNames.h"
#include "app/Unusable.h"
#include "handles/KRHandleNames.h"
#include "issues/KRIssueManager.h"
#include "issues/KRIssueNames.h"

namespace {

/// A fix that the catalogue leaves to the host.
struct Row {
  KRString issue;
  KRString handle;
};

constexpr Row kFurther[] = {
    {KRIssueDuplicateNames, KRHandleNameMergeContact},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, KRHandleNameMergeContact},
    {KRIssueEmailsDuplicatedAmongMultipleContacts, KRHandleNameMergeContact},
    {KRIssueIncompleteName, KRHandleNameUseDefaultString},
};

bool isIgnore(const KRIssueHandle& handle) {
  return sameText(handle.name(), KRHandleNameIgnore);
}

std::string listOf(const std::vector<KRRef<KRIssueHandle>>& handles) {
  std::string list;
  for (const auto& handle : handles) list += (list.empty() ? "" : ", ") + HandleNames::shortName(handle->name());
  return list;
}

}  // namespace

std::vector<KRRef<KRIssueHandle>> FixChoices::allowed(const KRIssue& issue) {
  std::vector<KRRef<KRIssueHandle>> handles = issue.handles().copy();
  for (const Row& row : kFurther) {
    if (!sameText(row.issue, issue.name())) continue;
    const auto end = std::find_if(handles.begin(), handles.end(), [](const auto& each) { return isIgnore(*each); });
    handles.insert(end, KRIssueHandle::issueHandleWithName(row.handle));
  }
  return handles;
}

KRRef<KRIssueHandle> FixChoices::handleFor(const KRIssue& issue, const KRString& handleName) {
  const std::vector<KRRef<KRIssueHandle>> handles = allowed(issue);
  for (const auto& handle : handles) {
    if (sameText(handle->name(), handleName)) return handle;
  }
  const bool isBlankName = sameText(issue.name(), KRIssueBlankName);
  const bool fillsName = sameText(handleName, KRHandleNameUseDefaultString);
  throw Unusable(IssueNames::shortName(issue.name()) + " does not offer " + HandleNames::shortName(handleName) +
                 (isBlankName && fillsName ? ", since a blank name has nothing that this fix could fill" : "") +
                 "; it offers: " + listOf(handles));
}

std::vector<FixChoice> FixChoices::parse(const std::vector<std::string>& words) {
  std::vector<FixChoice> choices;
  for (const std::string& word : words) {
    const size_t equals = word.find('=');
    if (equals == std::string::npos || word.find(',') != std::string::npos) {
      throw Unusable("\"" + word + "\" is not ISSUE=HANDLE, such as exact-duplicates=delete-duplicates");
    }
    const KRString issueName = IssueNames::resolve({word.substr(0, equals)}).front();
    const KRString handleName = HandleNames::resolve(word.substr(equals + 1));
    KRRef<KRIssue> issue(KRIssueManager::shareIssueManager().supportIssueByName(issueName));
    const bool isKnown =
        std::any_of(choices.begin(), choices.end(), [&](const FixChoice& each) { return each.issue == issue; });
    if (isKnown) throw Unusable(IssueNames::shortName(issueName) + " is named twice; its findings get one fix");
    KRRef<KRIssueHandle> handle = handleFor(*issue, handleName);
    choices.push_back({std::move(issue), std::move(handle)});
  }
  return choices;
}

KRStringList FixChoices::issuesOf(const std::vector<FixChoice>& choices) {
  KRStringList names;
  for (const FixChoice& choice : choices) names.push_back(choice.issue->name());
  return names;
}
