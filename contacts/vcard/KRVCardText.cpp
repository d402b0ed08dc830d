#include "contacts/vcard/KRVCardText.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

int hexDigit(char c) noexcept {
  if (isDigit(c)) return c - '0';
  const char letter = krLowerASCII(c);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// Text in which `mark` and two hexadecimal digits stand for a byte.
std::string decodeHexPairs(std::string_view text, char mark) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == mark && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
      bytes.push_back(static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2])));
      i += 2;
    } else {
      bytes.push_back(text[i]);
    }
  }
  return bytes;
}

constexpr uint8_t kBlank = 64;
constexpr uint8_t kPadding = 65;
constexpr uint8_t kForeign = 66;

/// What each byte is in base64: a value below 64, or one of the above.
constexpr std::array<uint8_t, 256> kBase64 = [] {
  std::array<uint8_t, 256> table{};
  table.fill(kForeign);
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < kAlphabet.size(); ++i) {
    table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
  }
  table['-'] = 62;
  table['_'] = 63;
  table['='] = kPadding;
  for (const char blank : {' ', '\t', '\r', '\n'}) table[static_cast<unsigned char>(blank)] = kBlank;
  return table;
}();

uint8_t base64Value(char c) noexcept {
  return kBase64[static_cast<unsigned char>(c)];
}

/// The number made of the digits [at, at + count), or -1.
int digits(std::string_view text, size_t at, size_t count) noexcept {
  if (at + count > text.size()) return -1;
  int number = 0;
  for (size_t i = at; i < at + count; ++i) {
    if (!isDigit(text[i])) return -1;
    number = number * 10 + (text[i] - '0');
  }
  return number;
}

/// What may stand behind a date: nothing, or a time of day.
bool isTime(std::string_view text) noexcept {
  return text.empty() || text[0] == 'T' || text[0] == 't' || text[0] == ' ' || text[0] == 'Z' || text[0] == '+';
}

/// The years that stand for none.
bool isNoYear(int year) noexcept {
  return year == 0 || year == 1604;
}

/// A month and a day of one or two digits behind a year, all with the same separator, as in "1990/4/14".
std::optional<KRDate> parseSeparated(std::string_view text, int year) noexcept {
  constexpr size_t kYear = 4;
  if (text.size() <= kYear || std::string_view("-/.").find(text[kYear]) == std::string_view::npos) return std::nullopt;
  const auto shortNumber = [&](size_t at, size_t& end) {
    end = at + (at + 1 < text.size() && isDigit(text[at + 1]) ? 2 : 1);
    return digits(text, at, end - at);
  };
  size_t end = 0;
  const int month = shortNumber(kYear + 1, end);
  if (month < 0 || end >= text.size() || text[end] != text[kYear]) return std::nullopt;
  const int day = shortNumber(end + 1, end);
  if (day < 0 || !isTime(text.substr(end))) return std::nullopt;
  return KRDate::make(isNoYear(year) ? std::nullopt : std::optional<int>(year), month, day);
}

bool isBackslashEscape(char next, KREscapes escapes) noexcept {
  if (next == ';' || next == ',' || next == ':') return true;
  if (next == '\\') return escapes != KREscapes::Text21;
  return escapes == KREscapes::Full && (next == 'n' || next == 'N' || next == '"');
}

}  // namespace

std::string_view krTrimmedBlanks(std::string_view text) noexcept {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string krDecodeQuotedPrintable(std::string_view text) {
  return decodeHexPairs(text, '=');
}

std::string krWithLineFeeds(std::string bytes) {
  if (bytes.find('\r') == std::string::npos) return bytes;
  size_t size = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const bool isReturn = bytes[i] == '\r';
    if (isReturn && i + 1 < bytes.size() && bytes[i + 1] == '\n') continue;
    bytes[size++] = isReturn ? '\n' : bytes[i];
  }
  bytes.resize(size);
  return bytes;
}

std::string krDecodePercent(std::string_view text) {
  return decodeHexPairs(text, '%');
}

bool krIsBase64(std::string_view text) noexcept {
  size_t values = 0;
  for (const char c : text) {
    const uint8_t value = base64Value(c);
    if (value == kForeign) return false;
    if (value == kPadding) break;
    values += value < 64 ? 1 : 0;
  }
  return values >= 2;
}

std::string krEncodeBase64(std::string_view bytes) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    uint32_t gathered = 0;
    for (size_t i = 0; i < 3; ++i) {
      gathered = gathered << 8U | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
    }
    const size_t digits = bytes.size() - at > 2 ? 4 : bytes.size() - at + 1;
    for (size_t i = 0; i < 4; ++i) text.push_back(i < digits ? kAlphabet[gathered >> (18 - 6 * i) & 63U] : '=');
  }
  return text;
}

std::string krDecodeBase64(std::string_view text) {
  std::string bytes;
  if (!krIsBase64(text)) return bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  uint32_t gathered = 0;
  unsigned bits = 0;
  for (const char c : text) {
    const uint8_t value = base64Value(c);
    if (value == kPadding) break;
    if (value == kBlank) continue;
    gathered = gathered << 6U | value;
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes.push_back(static_cast<char>(gathered >> bits & 0xFFU));
    }
  }
  return bytes;
}

std::string krUndoEscapes(std::string_view text, KREscapes escapes) {
  std::string plain;
  plain.reserve(text.size());
  while (true) {
    const size_t place = text.find('\\');
    plain.append(text.substr(0, place));
    if (place == std::string_view::npos) return plain;
    text.remove_prefix(place);
    if (text.size() > 1 && isBackslashEscape(text[1], escapes)) {
      plain.push_back(text[1] == 'n' || text[1] == 'N' ? '\n' : text[1]);
      text.remove_prefix(2);
    } else {
      plain.push_back('\\');
      text.remove_prefix(1);
    }
  }
}

size_t krFindUnescaped(std::string_view text, char separator, size_t from) noexcept {
  for (size_t i = from; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == separator) {
      return i;
    }
  }
  return text.size();
}

std::optional<KRDate> krParseCardDate(std::string_view text) noexcept {
  text = krTrimmedBlanks(text);
  std::optional<int> year;
  if (text.starts_with("--")) {
    text.remove_prefix(2);
  } else {
    year = digits(text, 0, 4);
    if (*year < 0) return std::nullopt;
    if (const auto separated = parseSeparated(text, *year)) return separated;
    text.remove_prefix(text.size() > 4 && text[4] == '-' ? 5 : 4);
    if (isNoYear(*year)) year.reset();
  }
  const int month = digits(text, 0, 2);
  const size_t dayAt = text.size() > 2 && text[2] == '-' ? 3 : 2;
  const int day = digits(text, dayAt, 2);
  if (month < 0 || day < 0 || !isTime(text.substr(dayAt + 2))) return std::nullopt;
  return KRDate::make(year, month, day);
}
