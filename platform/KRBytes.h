#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Bytes looked at eight at a time. A word holds them in their order, the first in its lowest bits.

static_assert(std::endian::native == std::endian::little, "words are loaded as they lie in memory");

/// The eight bytes from there on.
inline uint64_t krLoadWord(const char* from) noexcept {
  uint64_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

/// The first `count` bytes from there on, at most eight, and zeros behind them; no others are read.
inline uint64_t krLoadPart(const char* from, size_t count) noexcept {
  if (count >= 8) return krLoadWord(from);
  if (count == 0) return 0;
  if (count >= 4) {
    uint32_t first;
    uint32_t last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + count - sizeof last, sizeof last);
    return first | static_cast<uint64_t>(last) << (8 * (count - sizeof last));
  }
  // Of one to three bytes the first, the middle one and the last are all, some of them twice.
  const auto byte = [&](size_t at) { return uint64_t{static_cast<unsigned char>(from[at])} << (8 * at); };
  return byte(0) | byte(count / 2) | byte(count - 1);
}

/// The byte eight times.
constexpr uint64_t krWordOf(char byte) noexcept {
  return static_cast<unsigned char>(byte) * 0x0101010101010101U;
}

/// The highest bit of each byte of the word that is zero; no other bits.
constexpr uint64_t krZeroBytes(uint64_t word) noexcept {
  constexpr uint64_t kLow = 0x7F7F7F7F7F7F7F7FU;
  return ~(((word & kLow) + kLow) | word | kLow);
}

/// Calls `visit(place)` with a pointer to each byte of the text that equals `sought`, in order.
template <class Visit>
void krForEachByte(std::string_view text, char sought, Visit visit) {
  const uint64_t pattern = krWordOf(sought);
  const char* at = text.data();
  const char* const end = at + text.size();
  for (; end - at >= 8; at += 8) {
    for (uint64_t places = krZeroBytes(krLoadWord(at) ^ pattern); places != 0; places &= places - 1) {
      visit(at + std::countr_zero(places) / 8);
    }
  }
  // Behind the last bytes stand zeros, which count for nothing.
  const auto left = static_cast<size_t>(end - at);
  const uint64_t beyond = left == 0 ? 0 : ~uint64_t{0} >> (64 - 8 * left);
  for (uint64_t places = krZeroBytes(krLoadPart(at, left) ^ pattern) & beyond; places != 0; places &= places - 1) {
    visit(at + std::countr_zero(places) / 8);
  }
}
