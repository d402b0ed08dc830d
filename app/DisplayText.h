#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Text as it stands on a screen of fixed-width cells. All texts are well-formed UTF-8 but where it is said otherwise.

/// The cells that the text takes: two for a wide character (Chinese, Japanese, Korean, most emoji), none for a
/// combining mark, one for any other.
size_t displayWidth(std::string_view text);

/// The text with everything escaped that could move the cursor, start a terminal sequence or turn the direction of
/// writing: "\n", "\t", "\x1B", "\u202E". Other characters stay as they are. The text may be any bytes: what is not
/// well-formed shows as U+FFFD.
std::string shownText(std::string_view text);

/// The text cut to at most `width` cells, with "…" at the end when something is missing.
std::string fittedText(std::string_view text, size_t width);

/// The text cut to at most `width` cells, with "…" in its middle for what is missing.
std::string shortenedText(std::string_view text, size_t width);

/// Lines of at most `width` cells (at least 8). Broken at spaces, which the break swallows, and before wide characters;
/// a word longer than a line is broken where the line ends. Never empty: no text makes one empty line.
std::vector<std::string> wrappedText(std::string_view text, size_t width);

/// "1 contact", "2 contacts".
std::string counted(size_t count, std::string_view one, std::string_view many);

/// Spaces for a text of that width to fill `width` cells.
std::string padding(std::string_view text, size_t width);
