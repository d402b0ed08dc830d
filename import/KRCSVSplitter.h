#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

#include "import/KRCSVDialect.h"
#include "platform/KRSlab.h"
#include "platform/KRString.h"

/// Where a character stands next in a text: looked for once for each place at which it stands, however often it is
/// asked for. Asked from front to back.
class KRCSVNext {
 public:
  KRCSVNext(char sought, const char* end) noexcept : sought_(sought), end_(end) {}

  /// The first place from `from` on, or the end.
  const char* from(const char* from) noexcept {
    if (found_ != nullptr && found_ >= from) return found_;
    const auto* found = static_cast<const char*>(std::memchr(from, sought_, static_cast<size_t>(end_ - from)));
    found_ = found == nullptr ? end_ : found;
    return found_;
  }

 private:
  char sought_;
  const char* end_;
  const char* found_ = nullptr;
};

/// One row of a delimited file, valid during the call that hands it out.
class KRCSVRow {
 public:
  /// A cell by its place in the row's block.
  struct Cell {
    uint32_t offset;
    uint32_t size;
    /// Whether the cell was enclosed in quotes, which tells an empty text from no text.
    bool isQuoted;
  };

  KRCSVRow(KRSlab* slab, const std::vector<Cell>& cells, size_t line) noexcept
      : slab_(slab), cells_(cells), line_(line) {}

  /// Number of the line on which the row begins, from 1.
  size_t line() const noexcept { return line_; }
  size_t count() const noexcept { return cells_.size(); }
  /// The text of a cell as it stands between the marks, doubled quotes made one; empty beyond the last cell.
  std::string_view view(size_t column) const noexcept {
    if (column >= cells_.size()) return {};
    return {slab_->bytes() + cells_[column].offset, cells_[column].size};
  }
  /// The same as text that can be kept: a slice, not a copy.
  KRString text(size_t column) const noexcept {
    if (column >= cells_.size() || cells_[column].size == 0) return ""_kr;
    return KRString::slice(slab_, cells_[column].offset, cells_[column].size);
  }
  /// A slice of the cell's text; `part` is a view into what `view` gives.
  KRString slice(std::string_view part) const noexcept {
    if (part.empty()) return ""_kr;
    return KRString::slice(slab_, static_cast<uint32_t>(part.data() - slab_->bytes()),
                           static_cast<uint32_t>(part.size()));
  }
  bool isQuoted(size_t column) const noexcept { return column < cells_.size() && cells_[column].isQuoted; }
  /// Whether no cell holds anything but blanks.
  bool isBlank() const noexcept;

 private:
  KRSlab* slab_;
  const std::vector<Cell>& cells_;
  size_t line_;
};

/// Splits delimited text into rows, piece by piece: cells between separators, enclosed in quotes where they hold
/// separators, line breaks or quotes (which are then doubled). A quote inside a cell that does not begin with one is an
/// ordinary character, as is what follows a closing quote. Rows end at line feeds, carriage returns, or both together;
/// empty lines are no rows.
///
/// Linear whatever the text and its pieces. One thread at a time.
class KRCSVSplitter {
 public:
  /// Receives the rows in order; answers false when it wants no more. Does not throw.
  using RowSink = std::function<bool(const KRCSVRow&)>;

  /// What a row may hold; the rest of a longer one is left out.
  static constexpr uint32_t kLongestRow = 0x4000'0000U;

  KRCSVSplitter(KRCSVMarks marks, RowSink sink, size_t firstLine = 1);
  ~KRCSVSplitter();
  KRCSVSplitter(const KRCSVSplitter&) = delete;
  KRCSVSplitter& operator=(const KRCSVSplitter&) = delete;

  /// From that line on a quote that is not closed on its own line ends there, for files in which one is never closed.
  void endQuotesWithLinesFrom(size_t line) noexcept { boundFrom_ = line; }

  /// Splits the next piece of well-formed UTF-8; false once the sink wants no more.
  bool feed(std::string_view piece);
  /// Ends the text: the last row need not have a line end.
  void finish();

  /// After `finish`: the line on which a quote was opened that nothing closed, or 0.
  size_t openQuoteLine() const noexcept { return openQuoteLine_; }

 private:
  enum class State : uint8_t { CellStart, Plain, Quoted, QuoteInQuoted };

  void takePlainRow(std::string_view line);
  const char* plainRun(const char* from, const char* end) noexcept;
  const char* quotedRun(const char* from, const char* end) noexcept;
  void append(std::string_view run);
  void makeRoom(size_t size);
  void endCell();
  void endRow();
  void endLine(char mark) noexcept;

  KRCSVMarks marks_;
  RowSink sink_;
  /// Characters at which a plain run ends.
  bool endsPlain_[256] = {};
  State state_ = State::CellStart;
  bool wantsMore_ = true;
  /// The last character was a carriage return that ended a line: a line feed behind it belongs to it.
  bool isAfterReturn_ = false;

  KRSlab* slab_;
  uint32_t rowStart_ = 0;
  uint32_t cellStart_ = 0;
  uint32_t filled_ = 0;
  bool isCellQuoted_ = false;
  std::vector<KRCSVRow::Cell> cells_;

  size_t line_;
  size_t rowLine_;
  size_t quoteLine_ = 0;
  size_t openQuoteLine_ = 0;
  size_t boundFrom_ = static_cast<size_t>(-1);
};
