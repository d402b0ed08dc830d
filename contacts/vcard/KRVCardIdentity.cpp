#include "contacts/vcard/KRVCardIdentity.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace {

/// The card with its folds undone and its line ends as line feeds, without those behind the last line.
std::string unfolded(std::string_view card) {
  std::string text;
  text.reserve(card.size() + 16);
  while (!card.empty()) {
    const size_t end = card.find_first_of("\r\n");
    if (end == std::string_view::npos) {
      text.append(card);
      break;
    }
    text.append(card.substr(0, end));
    size_t next = end;
    while (next < card.size() && card[next] == '\r') ++next;
    if (next < card.size() && card[next] == '\n') ++next;
    card.remove_prefix(next);
    if (!card.empty() && (card[0] == ' ' || card[0] == '\t')) {
      card.remove_prefix(1);
    } else {
      text.push_back('\n');
    }
  }
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

/// The high and the low half of a product, folded together.
uint64_t multiplyFold(uint64_t a, uint64_t b) noexcept {
  const uint64_t aLow = a & 0xFFFFFFFFU;
  const uint64_t aHigh = a >> 32U;
  const uint64_t bLow = b & 0xFFFFFFFFU;
  const uint64_t bHigh = b >> 32U;
  const uint64_t low = aLow * bLow;
  const uint64_t middle = aHigh * bLow + (low >> 32U);
  const uint64_t cross = aLow * bHigh + (middle & 0xFFFFFFFFU);
  const uint64_t high = aHigh * bHigh + (middle >> 32U) + (cross >> 32U);
  return high ^ (cross << 32U | (low & 0xFFFFFFFFU));
}

/// Eight bytes as a number, the first the lowest; missing ones are zero.
uint64_t wordAt(std::string_view text, size_t at) noexcept {
  uint64_t word = 0;
  for (size_t i = 0; i < 8 && at + i < text.size(); ++i) {
    word |= uint64_t{static_cast<unsigned char>(text[at + i])} << (8 * i);
  }
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
