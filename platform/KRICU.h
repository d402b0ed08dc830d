// The one place that includes ICU, and what several sources need of it. An ICU failure is told as an absent result; the
// input is never handed back unchanged instead.
#pragma once

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucsdet.h>
#include <unicode/unorm2.h>
#include <unicode/uscript.h>
#include <unicode/ustring.h>

#include <climits>
#include <optional>
#include <string>
#include <string_view>

#include "platform/KRText.h"

/// Lengths are 32-bit numbers in ICU; this leaves room for results that are three times as long.
inline constexpr size_t kKRICULimit = INT32_MAX / 4;

/// The text in UTF-16; nothing when it is too long for ICU.
inline std::optional<std::u16string> krToUtf16(std::string_view utf8) {
  if (utf8.size() > kKRICULimit) return std::nullopt;
  std::u16string result(utf8.size(), u'\0');
  int32_t size = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(result.data(), static_cast<int32_t>(result.size()), &size, utf8.data(),
                       static_cast<int32_t>(utf8.size()), 0xFFFD, nullptr, &status);
  if (U_FAILURE(status)) return std::nullopt;
  result.resize(static_cast<size_t>(size));
  return result;
}

/// The text in UTF-8; an unpaired surrogate becomes U+FFFD.
inline std::optional<std::string> krToUtf8(std::u16string_view utf16) {
  if (utf16.size() > kKRICULimit) return std::nullopt;
  std::string result(utf16.size() * 3, '\0');
  int32_t size = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(result.data(), static_cast<int32_t>(result.size()), &size, utf16.data(),
                     static_cast<int32_t>(utf16.size()), 0xFFFD, nullptr, &status);
  if (U_FAILURE(status)) return std::nullopt;
  result.resize(static_cast<size_t>(size));
  return result;
}

/// Calls an ICU function that fills a buffer, `fill(char16_t* buffer, int32_t capacity, UErrorCode* status)`, again
/// with more room when the first was too small. Nothing when it fails.
template <class Fill>
std::optional<std::u16string> krFilled(size_t expected, Fill fill) {
  std::u16string result(expected, u'\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    const int32_t size = fill(result.data(), static_cast<int32_t>(result.size()), &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return std::nullopt;
    result.resize(static_cast<size_t>(size));
    if (status != U_BUFFER_OVERFLOW_ERROR) return result;
  }
  return std::nullopt;
}
