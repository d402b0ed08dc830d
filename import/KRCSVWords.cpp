#include "import/KRCSVWords.h"

namespace {

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

}  // namespace

std::string_view krCSVTrimmed(std::string_view text) noexcept {
  constexpr std::string_view kBlanks = " \t\r\n";
  while (!text.empty()) {
    if (kBlanks.find(text.front()) != std::string_view::npos) {
      text.remove_prefix(1);
    } else if (kBlanks.find(text.back()) != std::string_view::npos) {
      text.remove_suffix(1);
    } else if (text.starts_with(kNoBreakSpace)) {
      text.remove_prefix(kNoBreakSpace.size());
    } else if (text.ends_with(kNoBreakSpace)) {
      text.remove_suffix(kNoBreakSpace.size());
    } else {
      break;
    }
  }
  return text;
}

std::string krCSVSpacedWords(std::string_view text) {
  std::string words = " ";
  for (const char c : text) words += c == ',' || c == '\n' || c == '.' ? ' ' : c;
  return words + " ";
}

bool krCSVHoldsWords(const std::string& told, std::string_view text) {
  const std::string words = krCSVSpacedWords(text);
  for (size_t start = words.find_first_not_of(' '); start != std::string::npos;
       start = words.find_first_not_of(' ', start)) {
    const size_t end = words.find(' ', start);
    if (told.find(words.substr(start - 1, end - start + 2)) == std::string::npos) return false;
    start = end;
  }
  return true;
}

bool krCSVIsSpoiledNumber(std::string_view text) noexcept {
  const size_t exponent = text.find("E+");
  return exponent != std::string_view::npos && exponent > 0 && exponent + 2 < text.size() &&
         text.find_first_not_of("0123456789.,") == exponent &&
         text.find_first_not_of("0123456789", exponent + 2) == std::string_view::npos;
}
