#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// What the rules for spaces ask about a character.
struct KRLatinTraits {
  /// A letter that may follow one of those below.
  bool isLetter = false;
  /// Belongs to the letter before it.
  bool isMark = false;
  /// A letter right behind it is set off by a space: ideographs, closing brackets, and punctuation that ends something.
  bool setsOffLetter = false;
  /// Is set off from a letter before it: ideographs and opening brackets.
  bool isSetOff = false;
};

/// Those of each ASCII character.
inline constexpr auto kKRLatinAsciiTraits = [] {
  std::array<KRLatinTraits, 128> table = {};
  for (size_t c = 'A'; c <= 'Z'; ++c) table[c].isLetter = table[c + 32].isLetter = true;
  for (const char c : std::string_view(".,:;?!)]}")) table[static_cast<unsigned char>(c)].setsOffLetter = true;
  for (const char c : std::string_view("([{")) table[static_cast<unsigned char>(c)].isSetOff = true;
  return table;
}();

/// Those of any character.
KRLatinTraits krLatinTraitsOf(char32_t character) noexcept;

/// Puts spaces between the characters of a text that is written in Latin letters, one after the other, as ICU's
/// transliterator from Han to Latin does.
class KRLatinSpacing {
 public:
  /// Whether a space stands before this character.
  bool before(const KRLatinTraits& next) noexcept {
    const bool isSpaced = (setsOffLetter_ && next.isLetter) || (followsLetter_ && next.isSetOff);
    followsLetter_ = next.isLetter || (next.isMark && followsLetter_);
    setsOffLetter_ = next.setsOffLetter;
    return isSpaced;
  }

 private:
  bool followsLetter_ = false;
  bool setsOffLetter_ = false;
};
