#include "app/IssueNames.h"

#include <algorithm>

#include "app/NameWords.h"
#include "app/Unusable.h"
#include "issues/KRIssueNames.h"
#include "platform/KRASCII.h"

namespace {

struct Row {
  std::string_view constant;
  KRString value;
  std::string_view shortName;
};

// In the catalogue's order, which is the order in which people see them.
constexpr Row kRows[] = {
    {"KRIssueDuplicateNames", KRIssueDuplicateNames, "duplicate-names"},
    {"KRIssueDuplicateInfo", KRIssueDuplicateInfo, "exact-duplicates"},
    {"KRIssueIncompleteName", KRIssueIncompleteName, "incomplete-name"},
    {"KRIssueBlankName", KRIssueBlankName, "blank-name"},
    {"KRIssueInvalidCharacters", KRIssueInvalidCharacters, "invalid-characters"},
    {"KRIssueDuplicatePhoneNumber", KRIssueDuplicatePhoneNumber, "duplicate-phone"},
    {"KRIssueDuplicateEmailAddress", KRIssueDuplicateEmailAddress, "duplicate-email"},
    {"KRIssueDuplicateAddress", KRIssueDuplicateAddress, "duplicate-address"},
    {"KRIssuePhonesDuplicatedAmongMultipleContacts", KRIssuePhonesDuplicatedAmongMultipleContacts, "shared-phone"},
    {"KRIssueEmailsDuplicatedAmongMultipleContacts", KRIssueEmailsDuplicatedAmongMultipleContacts, "shared-email"},
    {"KRIssueUnusualTitle", KRIssueUnusualTitle, "unusual-title"},
    {"KRIssueUnusualSuffix", KRIssueUnusualSuffix, "unusual-suffix"},
    {"KRIssueSpacingInTheFirstName", KRIssueSpacingInTheFirstName, "first-name-spacing"},
    {"KRIssueHasCompanyNameNoTitle", KRIssueHasCompanyNameNoTitle, "company-no-title"},
    {"KRIssueNoteWithSpacingOnly", KRIssueNoteWithSpacingOnly, "empty-note"},
};

constexpr std::string_view kPrefix = "KRIssue";

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

const Row* rowForWord(std::string_view word) {
  for (const Row& row : kRows) {
    if (krEqualsIgnoringCase(word, row.shortName) || krEqualsIgnoringCase(word, row.value.view()) ||
        NameWords::isConstant(word, row.constant, kPrefix)) {
      return &row;
    }
  }
  return nullptr;
}

const Row* rowForIssue(KRText issueName) {
  for (const Row& row : kRows) {
    if (sameText(row.value, issueName)) return &row;
  }
  return nullptr;
}

}  // namespace

std::string IssueNames::shortName(KRText issueName) {
  const Row* row = rowForIssue(issueName);
  return std::string(row == nullptr ? issueName.view() : row->shortName);
}

std::string IssueNames::constantName(KRText issueName) {
  const Row* row = rowForIssue(issueName);
  return std::string(row == nullptr ? issueName.view() : row->constant);
}

KRStringList IssueNames::resolve(const std::vector<std::string>& words) {
  KRStringList names;
  for (const std::string& each : words) {
    for (size_t start = 0; start <= each.size();) {
      const size_t comma = std::min(each.find(',', start), each.size());
      const std::string_view word = trimmed(std::string_view(each).substr(start, comma - start));
      start = comma + 1;
      if (word.empty()) continue;
      const Row* row = rowForWord(word);
      if (row == nullptr) {
        throw Unusable("there is no issue named \"" + std::string(word) +
                       "\"; the issues are: " + NameWords::list(kRows));
      }
      names.push_back(row->value);
    }
  }
  if (names.empty()) throw Unusable("no issue is named; the issues are: " + NameWords::list(kRows));
  return names;
}
