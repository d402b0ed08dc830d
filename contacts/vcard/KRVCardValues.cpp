#include "contacts/vcard/KRVCardValues.h"

#include <algorithm>
#include <iterator>

#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

/// How many bytes of white space stand at the start of the text, none or those of one character.
size_t spaceAt(std::string_view text) noexcept {
  constexpr std::string_view kWide[] = {"\xC2\xA0",     "\xC2\x85",     "\xE1\x9A\x80", "\xE2\x80\xA8",
                                        "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"};
  if (text.empty()) return 0;
  const char first = text[0];
  if (first == ' ' || (first >= '\t' && first <= '\r')) return 1;
  if (static_cast<unsigned char>(first) < 0xC2) return 0;
  for (const std::string_view space : kWide) {
    if (text.starts_with(space)) return space.size();
  }
  // U+2000 to U+200A.
  const bool isTypographic = text.size() > 2 && text.starts_with("\xE2\x80") &&
                             static_cast<unsigned char>(text[2]) >= 0x80 && static_cast<unsigned char>(text[2]) <= 0x8A;
  return isTypographic ? 3 : 0;
}

/// The kinds of relation that phones write as numbers.
constexpr std::string_view kAndroidRelations[] = {"",        "assistant",   "brother",  "child",  "domestic partner",
                                                  "father",  "friend",      "manager",  "mother", "parent",
                                                  "partner", "referred by", "relative", "sister", "spouse"};

}  // namespace

bool krStartsIgnoringCase(std::string_view text, std::string_view start) noexcept {
  return text.size() >= start.size() && krEqualsIgnoringCase(text.substr(0, start.size()), start);
}

std::vector<KRVCardWord> krWordsOf(std::string_view text) {
  std::vector<KRVCardWord> words;
  bool inWord = false;
  for (size_t i = 0; i < text.size();) {
    const size_t space = spaceAt(text.substr(i));
    if (space == 0 && !inWord) words.push_back({i, i});
    inWord = space == 0;
    i += std::max<size_t>(space, 1);
    if (inWord) words.back().end = i;
  }
  return words;
}

std::string_view krSchemeOf(std::string_view text) noexcept {
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0) return {};
  const bool isScheme = std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-' ||
           c == '.';
  });
  return isScheme ? text.substr(0, colon) : std::string_view();
}

std::string krServiceKey(std::string_view written) {
  const KRString name(written);
  if (const KRInstantMessageServer* known = KRInstantMessageServer::serverWithDisplayName(name)) {
    return std::string(known->name().view());
  }
  return krLowerASCII(name.view());
}

std::string_view krAccountUser(std::string_view text) noexcept {
  for (const std::string_view start : {"goim?screenname=", "sendim?", "chat?contact=", "message?uin=", "//"}) {
    if (krStartsIgnoringCase(text, start)) text.remove_prefix(start.size());
  }
  for (const std::string_view end : {"?chat", "?call", "?message"}) {
    if (text.size() > end.size() && text.ends_with(end)) text.remove_suffix(end.size());
  }
  return text;
}

bool krIsPicture(std::string_view bytes) noexcept {
  constexpr std::string_view kStarts[] = {"\xFF\xD8\xFF", "\x89PNG", "GIF8", "RIFF", "BM"};
  return std::any_of(std::begin(kStarts), std::end(kStarts),
                     [&](std::string_view start) { return bytes.starts_with(start); });
}

std::string_view krUnwrappedLabel(std::string_view label) noexcept {
  constexpr std::string_view kStart = "_$!<";
  constexpr std::string_view kEnd = ">!$_";
  if (label.size() < kStart.size() + kEnd.size() || !label.starts_with(kStart) || !label.ends_with(kEnd)) return label;
  return label.substr(kStart.size(), label.size() - kStart.size() - kEnd.size());
}

std::string krDateText(const KRDate& date) {
  std::string form = "--MM-DD";
  const auto put = [&](size_t at, int number) {
    form[at] = static_cast<char>('0' + number / 10);
    form[at + 1] = static_cast<char>('0' + number % 10);
  };
  if (const std::optional<int> year = date.year()) {
    form = "YYYY-MM-DD";
    put(0, *year / 100);
    put(2, *year % 100);
  }
  put(form.size() - 5, date.month());
  put(form.size() - 2, date.day());
  return form;
}

std::string_view krPhoneRelation(int number) noexcept {
  const bool isKnown = number > 0 && static_cast<size_t>(number) < std::size(kAndroidRelations);
  return isKnown ? kAndroidRelations[number] : std::string_view();
}

int krSmallNumber(std::string_view text) noexcept {
  if (text.empty() || text.size() > 2) return -1;
  int number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return -1;
    number = number * 10 + (c - '0');
  }
  return number;
}
