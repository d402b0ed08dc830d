#include "app/IssueNames.h"

#include <algorithm>

#include "app/Unusable.h"
#include "issues/KRIssueNames.h"

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

char lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

// "KRIssueBlankName" -> "blank-name": whoever knows the constant guesses this.
std::string dashed(std::string_view constant) {
  std::string result;
  for (const char letter : constant.substr(kPrefix.size())) {
    if (lower(letter) != letter && !result.empty()) result += '-';
    result += lower(letter);
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

const Row* rowForWord(std::string_view word) {
  const std::string wanted = lowered(word);
  for (const Row& row : kRows) {
    if (wanted == row.shortName || wanted == lowered(row.constant) || wanted == lowered(row.value.view()) ||
        wanted == dashed(row.constant)) {
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

std::string listOfNames() {
  std::string list;
  for (const Row& row : kRows) list += (list.empty() ? "" : ", ") + std::string(row.shortName);
  return list;
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
        throw Unusable("there is no issue named \"" + std::string(word) + "\"; the issues are: " + listOfNames());
      }
      names.push_back(row->value);
    }
  }
  if (names.empty()) throw Unusable("no issue is named; the issues are: " + listOfNames());
  return names;
}
