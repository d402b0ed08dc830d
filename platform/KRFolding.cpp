#include "platform/KRFolding.h"

#include <algorithm>
#include <string>

#include "platform/KRICU.h"

namespace {

bool isAscii(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The kind of a character, as far as it may be taken out; 0 for one that stays.
unsigned kindOf(UChar32 point) {
  const uint32_t type = U_MASK(u_charType(point));
  // Blanks that Unicode counts among the controls, such as the tab, are spaces to people.
  if ((type & U_GC_Z_MASK) != 0 || u_isUWhiteSpace(point)) return KRFold::Spaces;
  if ((type & U_GC_M_MASK) != 0) return KRFold::Marks;
  return (type & (U_GC_P_MASK | U_GC_CC_MASK | U_GC_CF_MASK)) != 0 ? KRFold::Punctuation : 0;
}

KRString foldedAscii(std::string_view text, unsigned what) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if ((kindOf(static_cast<UChar32>(c)) & what) != 0) continue;
    const bool isUpper = c >= 'A' && c <= 'Z';
    result += isUpper && (what & KRFold::Case) != 0 ? static_cast<char>(c + ('a' - 'A')) : c;
  }
  return KRString::trusted(result);
}

std::optional<std::u16string> decomposed(const std::u16string& text) {
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* form = unorm2_getNFDInstance(&status);
  if (U_FAILURE(status)) return std::nullopt;
  return krFilled(text.size() * 2, [&](char16_t* buffer, int32_t capacity, UErrorCode* error) {
    return unorm2_normalize(form, text.data(), static_cast<int32_t>(text.size()), buffer, capacity, error);
  });
}

std::optional<std::u16string> caseFolded(const std::u16string& text) {
  return krFilled(text.size() + 8, [&](char16_t* buffer, int32_t capacity, UErrorCode* error) {
    return u_strFoldCase(buffer, capacity, text.data(), static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, error);
  });
}

std::u16string without(const std::u16string& text, unsigned what) {
  std::u16string kept;
  for (size_t at = 0; at < text.size();) {
    const size_t start = at;
    UChar32 point;
    U16_NEXT(text.data(), at, text.size(), point);
    if ((kindOf(point) & what) == 0) kept.append(text, start, at - start);
  }
  return kept;
}

}  // namespace

KRString krFolded(KRText text, unsigned what) {
  if (text.isNothing()) return {};
  if (isAscii(text.view())) return foldedAscii(text.view(), what);
  std::optional<std::u16string> units = krToUtf16(text.view());
  if (units && (what & KRFold::Case) != 0) units = caseFolded(*units);
  if (units) units = decomposed(*units);
  const auto result = units ? krToUtf8(without(*units, what)) : std::nullopt;
  return result ? KRString::trusted(*result) : KRString();
}

KRString krDigitsOf(KRText text) {
  if (text.isNothing()) return {};
  std::string digits;
  for (size_t at = 0; at < text.size();) {
    const int32_t digit = u_charDigitValue(static_cast<UChar32>(krNextCodePoint(text.view(), at)));
    if (digit >= 0) digits += static_cast<char>('0' + digit);
  }
  return KRString::trusted(digits);
}
