#include "app/PersonText.h"

#include "app/DisplayText.h"

namespace {

constexpr size_t kLongestHint = 40;

bool isBlank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

/// The first text of a multiple value.
std::string firstEntry(const IKRPerson& person, KROrdinal property) {
  KRHold hold;
  std::string found;
  person.readEntries(property, hold, [&](const KREntryView& entry) {
    found = entry.text.view();
    return isBlank(found);
  });
  return isBlank(found) ? std::string() : found;
}

std::string text(const IKRPerson& person, KROrdinal property) {
  KRHold hold;
  const KRText found = person.readText(property, hold);
  return isBlank(found.view()) ? std::string() : std::string(found.view());
}

/// What a contact without a name is best known by.
std::string hint(const IKRPerson& person) {
  std::string found = text(person, KROrdinal::Nickname);
  if (found.empty()) found = text(person, KROrdinal::Company);
  if (found.empty()) found = firstEntry(person, KROrdinal::Email);
  if (found.empty()) found = firstEntry(person, KROrdinal::Phone);
  if (found.empty()) found = firstEntry(person, KROrdinal::InstantMessage);
  if (found.empty()) found = firstEntry(person, KROrdinal::URL);
  if (found.empty()) found = text(person, KROrdinal::Note);
  return fittedText(shownText(found), kLongestHint);
}

}  // namespace

std::string personText(const IKRPerson& person) {
  const KRString name = person.showName();
  if (!isBlank(name.view())) return shownText(name.view());
  const std::string known = hint(person);
  return known.empty() ? "(no name)" : "(no name, " + known + ")";
}
