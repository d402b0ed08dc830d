#include "platform/KRCaseFolding.h"

#include <algorithm>
#include <string>

#include "platform/KRICU.h"

namespace {

constexpr char32_t folded(char32_t point) noexcept {
  if (point < 0x80) return point >= 'A' && point <= 'Z' ? point + 32 : point;
  return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(point), U_FOLD_CASE_DEFAULT));
}

bool isAscii(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void append(std::string& text, char32_t point) {
  char bytes[U8_MAX_LENGTH];
  int32_t size = 0;
  U8_APPEND_UNSAFE(bytes, size, static_cast<UChar32>(point));
  text.append(bytes, static_cast<size_t>(size));
}

/// The kind of ICU's two functions for changing the case of a text.
using Change = int32_t (*)(char16_t*, int32_t, const char16_t*, int32_t, const char*, UErrorCode*);

KRString changed(KRText text, char first, int distance, Change change) {
  if (text.isNothing()) return {};
  if (isAscii(text.view())) {
    std::string result(text.view());
    for (char& c : result) {
      if (c >= first && c < first + 26) c = static_cast<char>(c + distance);
    }
    return KRString::trusted(result);
  }
  const auto source = krToUtf16(text.view());
  if (!source) return {};
  const auto result = krFilled(source->size() + 8, [&](char16_t* buffer, int32_t capacity, UErrorCode* status) {
    return change(buffer, capacity, source->data(), static_cast<int32_t>(source->size()), "", status);
  });
  const auto utf8 = result ? krToUtf8(*result) : std::nullopt;
  return utf8 ? KRString::trusted(*utf8) : KRString();
}

}  // namespace

int krCompareCaseless(KRText a, KRText b) noexcept {
  if (a.isNothing() || b.isNothing()) return static_cast<int>(b.isNothing()) - static_cast<int>(a.isNothing());
  const std::string_view first = a.view();
  const std::string_view second = b.view();
  size_t i = 0;
  size_t j = 0;
  while (i < first.size() && j < second.size()) {
    const char32_t one = folded(krNextCodePoint(first, i));
    const char32_t other = folded(krNextCodePoint(second, j));
    if (one != other) return one < other ? -1 : 1;
  }
  return static_cast<int>(i < first.size()) - static_cast<int>(j < second.size());
}

KRString krCaselessKey(KRText text) {
  if (text.isNothing()) return {};
  std::string key;
  key.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const char32_t point = folded(krNextCodePoint(text.view(), i));
    if (point < 0x80) {
      key += static_cast<char>(point);
    } else {
      append(key, point);
    }
  }
  return KRString::trusted(key);
}

KRString krUpper(KRText text) {
  return changed(text, 'a', 'A' - 'a', u_strToUpper);
}

KRString krLower(KRText text) {
  return changed(text, 'A', 'a' - 'A', u_strToLower);
}
