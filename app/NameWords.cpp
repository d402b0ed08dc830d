#include "app/NameWords.h"

#include "platform/KRASCII.h"

namespace {

/// "BlankName" -> "blank-name".
std::string dashed(std::string_view name) {
  std::string result;
  for (const char letter : name) {
    if (krLowerASCII(letter) != letter && !result.empty()) result += '-';
    result += krLowerASCII(letter);
  }
  return result;
}

}  // namespace

bool NameWords::isConstant(std::string_view word, std::string_view constant, std::string_view prefix) {
  return krEqualsIgnoringCase(word, constant) || krLowerASCII(word) == dashed(constant.substr(prefix.size()));
}
