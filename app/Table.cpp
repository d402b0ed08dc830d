#include "app/Table.h"

#include <algorithm>
#include <numeric>

#include "app/DisplayText.h"

namespace {

constexpr size_t kGap = 2;
constexpr size_t kNarrowest = 16;

std::string repeated(std::string_view piece, size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) result += piece;
  return result;
}

}  // namespace

Table::Table(std::vector<std::string> headings, Cells cells) : cells_(cells) {
  rows_.push_back({std::move(headings), Style::Faint});
}

void Table::addRow(std::vector<std::string> cells, Style style) {
  cells.resize(rows_.front().cells.size());
  rows_.push_back({std::move(cells), style});
}

void Table::addRule() {
  rows_.push_back({{}, Style::Faint});
}

std::vector<size_t> Table::widths(size_t room) const {
  std::vector<size_t> result(rows_.front().cells.size(), 0);
  for (const Row& row : rows_) {
    for (size_t i = 0; i < row.cells.size(); ++i) result[i] = std::max(result[i], displayWidth(row.cells[i]));
  }
  const size_t others = std::accumulate(result.begin() + 1, result.end(), (result.size() - 1) * kGap);
  const size_t first = room > others + kNarrowest ? room - others : kNarrowest;
  result[0] = std::min(result[0], first);
  return result;
}

void Table::print(Terminal& terminal, size_t indent) const {
  const std::vector<size_t> columns = widths(terminal.width() - std::min(terminal.width(), indent));
  for (const Row& row : rows_) printRow(terminal, row, columns, indent);
}

void Table::printRow(Terminal& terminal, const Row& row, const std::vector<size_t>& widths, size_t indent) const {
  const std::string margin(indent, ' ');
  if (row.cells.empty()) {
    const size_t whole = std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * kGap);
    terminal.line(margin + terminal.styled(row.style, repeated("─", whole)));
    return;
  }
  const std::vector<std::string> lines = wrappedText(row.cells[0], widths[0]);
  for (size_t i = 0; i < lines.size(); ++i) {
    std::string text = lines[i];
    // The figures stand beside the last line, where the eye ends.
    if (i + 1 == lines.size()) {
      text += padding(lines[i], widths[0]);
      for (size_t column = 1; column < row.cells.size(); ++column) {
        const std::string& cell = row.cells[column];
        const std::string room = padding(cell, widths[column]);
        const bool isLast = column + 1 == row.cells.size();
        text += std::string(kGap, ' ');
        text += cells_ == Cells::Figures ? room + cell : isLast ? cell : cell + room;
      }
    }
    terminal.line(margin + terminal.styled(row.style, text));
  }
}
