#include "import/KRCSVCells.h"

#include <string>

namespace {

/// Between several values in one cell.
constexpr std::string_view kBetween = " ::: ";

}  // namespace

KRCSVCells::Signs KRCSVCells::Signs::of(std::string_view text) {
  return {text.find('\\') != std::string_view::npos, text.find(kBetween) != std::string_view::npos};
}

KRString KRCSVCells::text(size_t column) const {
  const std::string_view cell = view(column);
  // Only in quotes can a cell hold a line break.
  if (isOwn_ || !row_->isQuoted(column) || cell.find('\r') == std::string_view::npos) return row_->slice(cell);
  return withBreaks(cell);
}

KRString KRCSVCells::lines(size_t column) const {
  const std::string_view cell = view(column);
  const bool hasReturn = row_->isQuoted(column) && cell.find('\r') != std::string_view::npos;
  const bool hasBackslash = signs_.hasBackslashes && cell.find('\\') != std::string_view::npos;
  return isOwn_ || (!hasReturn && !hasBackslash) ? row_->slice(cell) : withBreaks(cell);
}

KRString KRCSVCells::withBreaks(std::string_view text) {
  std::string broken;
  for (size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (text[i] == '\r') {
      if (next != '\n') broken += '\n';
    } else if (text[i] == '\\' && next == 'n') {
      broken += '\n';
      ++i;
    } else {
      broken += text[i];
    }
  }
  return KRString::trusted(broken);
}

size_t KRCSVCells::pieceCount(size_t column) const {
  if (!has(column)) return 0;
  size_t count = 1;
  if (isOwn_ || !signs_.hasSeveralValues) return count;
  const std::string_view cell = view(column);
  for (size_t at = cell.find(kBetween); at != std::string_view::npos; at = cell.find(kBetween, at + kBetween.size())) {
    ++count;
  }
  return count;
}

std::string_view KRCSVCells::piece(size_t column, size_t index) const {
  std::string_view cell = view(column);
  if (isOwn_) return index == 0 ? cell : std::string_view();
  for (; index > 0; --index) {
    const size_t end = cell.find(kBetween);
    if (end == std::string_view::npos) return {};
    cell.remove_prefix(end + kBetween.size());
  }
  return cell.substr(0, cell.find(kBetween));
}
