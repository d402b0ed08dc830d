#pragma once

#include <string>
#include <string_view>

// The case of ASCII letters, in names that are no language's text: of properties, schemes, extensions, options. All
// other bytes stay as they are.

constexpr char krLowerASCII(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
std::string krLowerASCII(std::string_view text);
bool krEqualsIgnoringCase(std::string_view a, std::string_view b) noexcept;
