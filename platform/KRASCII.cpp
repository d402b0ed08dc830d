#include "platform/KRASCII.h"

std::string krLowerASCII(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = krLowerASCII(c);
  return lowered;
}

bool krEqualsIgnoringCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && krLowerASCII(a[i]) != krLowerASCII(b[i])) return false;
  }
  return true;
}
