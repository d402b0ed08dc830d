// How Chinese characters are read in Mandarin.
#pragma once

#include <string_view>

/// The reading of a character standing by itself, "WANG" for U+738B; empty for a character without one. Constant time;
/// the first call builds the index. Thread-safe.
std::string_view krHanReading(char32_t character) noexcept;
