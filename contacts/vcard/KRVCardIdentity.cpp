#include "contacts/vcard/KRVCardIdentity.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>

#include "contacts/vcard/KRVCardScan.h"

namespace {

/// The card with its folds undone and its line ends as line feeds, without empty lines and the last line's end.
std::string unfolded(std::string_view card) {
  std::string text;
  text.reserve(card.size() + 16);
  const char* at = card.data();
  const char* const end = at + card.size();
  while (at != end) {
    const char* const lineEnd = krScanLine(at, end).end;
    text.append(at, lineEnd);
    at = lineEnd;
    while (at != end && *at == '\r') ++at;
    if (at != end && *at == '\n') ++at;
    if (at != end && (*at == ' ' || *at == '\t')) {
      ++at;
    } else if (!text.empty() && text.back() != '\n') {
      text.push_back('\n');
    }
  }
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

/// The high and the low half of a product, folded together.
uint64_t multiplyFold(uint64_t a, uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<uint64_t>(product >> 64U) ^ static_cast<uint64_t>(product);
}

/// Eight bytes as a number, the first the lowest; missing ones are zero.
uint64_t wordAt(std::string_view text, size_t at) noexcept {
  uint64_t word = 0;
  const size_t size = std::min<size_t>(text.size() - at, 8);
  for (size_t i = 0; i < size; ++i) word |= uint64_t{static_cast<unsigned char>(text[at + i])} << (8 * i);
  return word;
}

}  // namespace

KRString krCardIdentity(std::string_view card) {
  // The numbers are fixed for ever: identifiers are kept by people's other programs and by their trash.
  constexpr uint64_t kFirst = 0x9e3779b97f4a7c15U;
  constexpr uint64_t kSecond = 0xc2b2ae3d27d4eb4fU;
  const std::string text = unfolded(card);
  uint64_t a = kFirst ^ text.size();
  uint64_t b = kSecond + text.size();
  for (size_t at = 0; at < text.size(); at += 8) {
    const uint64_t word = wordAt(text, at);
    a = multiplyFold(a ^ word, kSecond) + at;
    b = multiplyFold(b + word, kFirst) ^ (b << 7U);
  }
  a = multiplyFold(a ^ b, kFirst);
  b = multiplyFold(b ^ (a >> 1U), kSecond);
  char name[33];
  std::snprintf(name, sizeof name, "%016llx%016llx", static_cast<unsigned long long>(a),
                static_cast<unsigned long long>(b));
  return KRString::trusted(std::string_view(name, 32));
}
