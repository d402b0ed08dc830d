#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// A borrowed view of text: well-formed UTF-8 owned by somebody else, or nothing. Sixteen bytes, passed by value.
///
/// *Nothing* (no text at all) differs from the empty text. A view is valid as long as the text that it looks at lives;
/// a function that keeps text makes a `KRString` of it.
///
/// Comparison is exact: no folding of case, no trimming, no normalisation.
class KRText {
 public:
  constexpr KRText() noexcept = default;
  constexpr KRText(std::nullptr_t) noexcept {}
  constexpr KRText(std::string_view text) noexcept
      : data_(text.data() == nullptr ? "" : text.data()), size_(text.size()) {}
  constexpr KRText(const char* text) noexcept : KRText(std::string_view(text)) {}
  constexpr KRText(const char* data, size_t size) noexcept : data_(data), size_(size) {}

  constexpr bool isNothing() const noexcept { return data_ == nullptr; }
  /// Nothing, or zero length.
  constexpr bool isEmpty() const noexcept { return size_ == 0; }

  /// The UTF-8 bytes; nothing reads as no bytes.
  constexpr std::string_view view() const noexcept {
    return data_ == nullptr ? std::string_view() : std::string_view(data_, size_);
  }
  constexpr const char* data() const noexcept { return data_; }
  /// Count of UTF-8 bytes.
  constexpr size_t size() const noexcept { return size_; }

  /// Count of UTF-16 code units, the unit in which the contract counts lengths. Linear in the text.
  size_t length() const noexcept;

  /// Calls `unit(char16_t)` for each UTF-16 code unit in order until it answers false; returns whether all were true.
  template <class Unit>
  bool allUnits(Unit unit) const;

  bool contains(char byte) const noexcept { return view().find(byte) != std::string_view::npos; }

  /// Seeded; nothing and the empty text hash alike, although they are not equal.
  uint64_t hash() const noexcept;

  /// Regular equality: nothing equals nothing, and nothing else.
  friend constexpr bool operator==(KRText a, KRText b) noexcept {
    return a.isNothing() == b.isNothing() && a.view() == b.view();
  }

 private:
  const char* data_ = nullptr;
  size_t size_ = 0;
};

/// The contract's comparison of two strings: true only when both are there and hold the same characters. False when
/// either is nothing, two nothings included.
constexpr bool sameText(KRText a, KRText b) noexcept {
  return !a.isNothing() && !b.isNothing() && a.view() == b.view();
}

/// One code point of well-formed UTF-8 at `position`, which is moved behind it.
constexpr char32_t krNextCodePoint(std::string_view text, size_t& position) noexcept {
  const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(position);
  if (lead < 0x80) return text[position++] & 0x7F;
  const size_t extra = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  char32_t point = lead & (0x3FU >> extra);
  for (size_t i = 1; i <= extra; ++i) point = (point << 6U) | (byte(position + i) & 0x3FU);
  position += extra + 1;
  return point;
}

template <class Unit>
bool KRText::allUnits(Unit unit) const {
  const std::string_view bytes = view();
  for (size_t position = 0; position < bytes.size();) {
    const char32_t point = krNextCodePoint(bytes, position);
    if (point < 0x10000) {
      if (!unit(static_cast<char16_t>(point))) return false;
    } else {
      const char32_t rest = point - 0x10000;
      if (!unit(static_cast<char16_t>(0xD800 + (rest >> 10U)))) return false;
      if (!unit(static_cast<char16_t>(0xDC00 + (rest & 0x3FFU)))) return false;
    }
  }
  return true;
}
