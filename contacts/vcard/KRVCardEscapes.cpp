#include "contacts/vcard/KRVCardEscapes.h"

#include <array>

namespace {

bool isLetterOrDigit(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// How many bytes from the start are none that anything is done about, in any version.
size_t untouchedPrefix(std::string_view text) noexcept {
  constexpr auto kTouched = [] {
    std::array<bool, 256> touched{};
    for (const unsigned char c : {'\r', '\n', '\x1B', '\\', ';', ','}) touched[c] = true;
    return touched;
  }();
  size_t size = 0;
  while (size < text.size() && !kTouched[static_cast<unsigned char>(text[size])]) ++size;
  return size;
}

/// The text with line feeds for all line breaks and without what no card holds.
std::string plain(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') {
      if (i + 1 == text.size() || text[i + 1] != '\n') result.push_back('\n');
    } else if (text[i] != '\x1B') {
      result.push_back(text[i]);
    }
  }
  return result;
}

/// A backslash before each of `marked`; where `breaks`, "\n" for line feeds.
std::string escaped(std::string_view text, std::string_view marked, bool breaks) {
  std::string result;
  result.reserve(text.size() + 8);
  const size_t untouched = untouchedPrefix(text);
  result.append(text.substr(0, untouched));
  if (untouched == text.size()) return result;
  for (const char c : plain(text.substr(untouched))) {
    if (breaks && c == '\n') {
      result += "\\n";
      continue;
    }
    if (marked.find(c) != std::string_view::npos) result.push_back('\\');
    result.push_back(c);
  }
  return result;
}

/// Version 2.1 has no doubled backslashes in plain text; one is needed only where another would take effect.
std::string escapedText21(std::string_view text) {
  std::string result;
  const std::string source = plain(text);
  result.reserve(source.size() + 8);
  for (size_t i = 0; i < source.size(); ++i) {
    const char next = i + 1 < source.size() ? source[i + 1] : '\0';
    if (source[i] == '\\' && (next == ';' || next == ',' || next == ':')) result.push_back('\\');
    result.push_back(source[i]);
  }
  return result;
}

}  // namespace

std::string krEscapeText(std::string_view text, KRVCardVersion version) {
  return version == KRVCardVersion::V21 ? escapedText21(text) : escaped(text, "\\;,", true);
}

std::string krEscapePart(std::string_view text, KRVCardVersion version) {
  return version == KRVCardVersion::V21 ? escaped(text, "\\;", false) : escaped(text, "\\;,", true);
}

std::string krEscapeElement(std::string_view text, KRVCardVersion version) {
  return escaped(text, "\\;,", version != KRVCardVersion::V21);
}

std::string krEscapeURI(std::string_view text, KRVCardVersion version) {
  return version == KRVCardVersion::V21 ? escapedText21(text) : escaped(text, "\\", true);
}

std::string krEncodePercent(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (isLetterOrDigit(c) || std::string_view("-._~@+").find(c) != std::string_view::npos) {
      result.push_back(c);
    } else {
      result.append({'%', kDigits[byte >> 4U], kDigits[byte & 15U]});
    }
  }
  return result;
}
