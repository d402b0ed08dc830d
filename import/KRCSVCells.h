#pragma once

#include <cstddef>
#include <string_view>

#include "import/KRCSVSplitter.h"
#include "import/KRCSVWords.h"
#include "platform/KRString.h"

/// The cells of one row as they are meant: without the guards of our own files, with line breaks, with the several
/// values that one may hold. Looks at one row after the other; what it gives is valid as long as the row.
class KRCSVCells {
 public:
  /// A column that there is not; it has nothing.
  static constexpr size_t kNone = static_cast<size_t>(-1);

  /// What stands anywhere in the file, so that cells need not be searched for it.
  struct Signs {
    bool hasBackslashes = true;
    bool hasSeveralValues = true;

    static Signs of(std::string_view text);
  };

  /// Whether this library wrote the file, and whether its cells have guards.
  KRCSVCells(bool isOwn, bool isGuarded, Signs signs) noexcept : isOwn_(isOwn), isGuarded_(isGuarded), signs_(signs) {}

  void look(const KRCSVRow& row) noexcept { row_ = &row; }
  const KRCSVRow& row() const noexcept { return *row_; }
  bool isOwn() const noexcept { return isOwn_; }

  /// Whether there is anything but blanks; in our own files a text of no characters, in quotes, is something.
  bool has(size_t column) const {
    if (column == kNone) return false;
    const std::string_view cell = row_->view(column);
    if (isOwn_) return !cell.empty() || row_->isQuoted(column);
    if (cell.empty()) return false;
    const auto first = static_cast<unsigned char>(cell.front());
    return (first > ' ' && first < 0x80) || !krCSVTrimmed(cell).empty();
  }
  std::string_view view(size_t column) const {
    std::string_view cell = row_->view(column);
    if (isGuarded_ && cell.starts_with('\'')) cell.remove_prefix(1);
    return cell;
  }
  /// The view, or no characters for a column that there is not.
  std::string_view viewOrNone(size_t column) const { return column == kNone ? std::string_view() : view(column); }
  KRString text(size_t column) const;
  /// As `text`, with line breaks as they are meant.
  KRString lines(size_t column) const;
  /// Line breaks as line feeds, those too that are written as a backslash and an n.
  static KRString withBreaks(std::string_view text);

  /// How many values stand in the cell.
  size_t pieceCount(size_t column) const;
  /// The value at that place; a null view beyond the last.
  std::string_view piece(size_t column, size_t index) const;

 private:
  bool isOwn_;
  bool isGuarded_;
  Signs signs_;
  const KRCSVRow* row_ = nullptr;
};
