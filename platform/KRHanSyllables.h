// The table of Mandarin readings.
#pragma once

#include <span>
#include <string_view>

/// One syllable and the characters that are read so.
struct KRHanSyllable {
  /// Latin capitals without tone: "WANG".
  std::string_view syllable;
  /// The characters in UTF-8, in the order of their code points.
  std::string_view characters;
};

/// All syllables in alphabetical order; no character stands under two of them. Generated.
std::span<const KRHanSyllable> krHanSyllables() noexcept;
