#include "platform/KRASCII.h"

#include "platform/KRBytes.h"

namespace {

/// The capital letters among eight bytes made small.
constexpr uint64_t lowered(uint64_t word) noexcept {
  const uint64_t low = word & krWordOf(0x7F);
  const uint64_t fromA = low + krWordOf(0x80 - 'A');
  const uint64_t behindZ = low + krWordOf(0x7F - 'Z');
  return word | (fromA & ~behindZ & ~word & krWordOf(static_cast<char>(0x80))) >> 2U;
}

}  // namespace

std::string krLowerASCII(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = krLowerASCII(c);
  return lowered;
}

bool krEqualsIgnoringCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  // Most differ from the first letter on.
  if (!a.empty() && krLowerASCII(a.front()) != krLowerASCII(b.front())) return false;
  for (size_t at = 0; at < a.size(); at += 8) {
    const size_t count = a.size() - at;
    if (lowered(krLoadPart(a.data() + at, count)) != lowered(krLoadPart(b.data() + at, count))) return false;
  }
  return true;
}
