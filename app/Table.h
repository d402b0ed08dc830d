#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/Terminal.h"

/// Rows and columns for people. The first column is as wide as what it holds, unless the whole would be wider than the
/// terminal: then its texts are wrapped. The others hold figures, which stand at the right of their column, or short
/// words, which stand at the left.
class Table {
 public:
  enum class Cells { Figures, Words };

  Table(std::vector<std::string> headings, Cells cells);

  /// One cell for each heading. Texts are escaped by the caller.
  void addRow(std::vector<std::string> cells, Style style = Style::Plain);
  void addRule();
  /// Writes the table, indented by `indent` cells.
  void print(Terminal& terminal, size_t indent = 0) const;

 private:
  struct Row {
    std::vector<std::string> cells;
    Style style;
  };

  std::vector<size_t> widths(size_t room) const;
  void printRow(Terminal& terminal, const Row& row, const std::vector<size_t>& widths, size_t indent) const;

  std::vector<Row> rows_;
  Cells cells_;
};
