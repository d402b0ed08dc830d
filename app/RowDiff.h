#pragma once

#include <string>
#include <vector>

#include "app/PersonRows.h"
#include "app/Terminal.h"

/// What differs between two states of a contact, value by value.
struct RowDiff {
  enum class Sign { Kept, Removed, Added };
  struct Line {
    Sign sign;
    PersonRow row;
  };

  /// Every value of both, in the order of the contact's values; of one property those of the former state first. A
  /// value that only stands in another place is kept. Linear.
  static std::vector<Line> of(const std::vector<PersonRow>& before, const std::vector<PersonRow>& after);

  /// Writes the lines with "-", "+" or nothing in front, wrapped to the terminal's width and indented.
  static void print(Terminal& terminal, const std::vector<Line>& lines, size_t indent);

  /// "-", "+" or " ".
  static std::string_view mark(Sign sign);
};
