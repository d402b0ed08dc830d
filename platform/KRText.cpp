#include "platform/KRText.h"

#include <algorithm>

#include "platform/KRHash.h"

size_t KRText::length() const noexcept {
  // One unit for each byte that begins a character, and a second one for the characters beyond U+FFFF.
  size_t units = 0;
  for (const char c : view()) {
    const auto byte = static_cast<unsigned char>(c);
    units += static_cast<size_t>((byte & 0xC0U) != 0x80U) + static_cast<size_t>(byte >= 0xF0U);
  }
  return units;
}

uint64_t KRText::hash() const noexcept {
  return krHashBytes(view().data(), view().size());
}
