#pragma once

#include <string>
#include <string_view>

// The words of cells.

/// Without blanks around it, those that do not break included.
std::string_view krCSVTrimmed(std::string_view text) noexcept;

/// The words of the text, each between two spaces, without the commas and full stops around them.
std::string krCSVSpacedWords(std::string_view text);
/// Whether every word of the text stands in another, which is given as `krCSVSpacedWords` makes it.
bool krCSVHoldsWords(const std::string& told, std::string_view text);

/// Whether a spreadsheet has turned a long number into one with an exponent: "4.91512E+11".
bool krCSVIsSpoiledNumber(std::string_view text) noexcept;
