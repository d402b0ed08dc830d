#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// What separates the cells of a file, and what encloses those that hold a separator or a line break.
struct KRCSVMarks {
  /// 0 when nothing does: every line is one cell.
  char separator = ',';
  /// 0 when cells are never enclosed.
  char quote = '"';

  friend bool operator==(const KRCSVMarks&, const KRCSVMarks&) = default;
};

/// How a delimited file is to be read. What is nothing is found out from the file.
struct KRCSVDialect {
  enum class Kind : uint8_t {
    /// As `KRCSVFile` does: lines cut at fixed separators, outer quotes dropped.
    Strict,
    /// As RFC 4180 has it, and as people have it: cells in quotes may hold separators, line breaks and doubled quotes.
    RFC4180,
  };

  Kind kind = Kind::Strict;

  // For RFC4180 only:

  /// Comma, semicolon, tab, or any other ASCII character.
  std::optional<char> separator{};
  /// The double quote, the single one, or 0 for none.
  std::optional<char> quote{};
  /// Whether the first row names the columns.
  std::optional<bool> hasHeadings{};
  /// Whether the day stands before the month in dates such as 3/2/1990.
  std::optional<bool> isDayFirst{};
  /// Whether a whole name without a comma begins with the last name. With a comma it always does.
  bool isLastNameFirst = false;
  /// Takes the cells of this library's own files as they stand, without removing the apostrophe that guards a cell.
  bool hasRawCells = false;

  static KRCSVDialect strict() { return {}; }
  static KRCSVDialect rfc4180() {
    KRCSVDialect dialect;
    dialect.kind = Kind::RFC4180;
    return dialect;
  }
  /// The dialect called "strict" or "rfc4180"; nothing for another name.
  static std::optional<KRCSVDialect> named(std::string_view name) {
    if (name == "strict") return strict();
    if (name == "rfc4180") return rfc4180();
    return std::nullopt;
  }
};
