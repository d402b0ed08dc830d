#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRObject.h"
#include "platform/KRSlab.h"
#include "platform/KRString.h"

/// A delimited text file in memory as a table of strings: the first line that is not empty is the heading row and fixes
/// the number of columns, every later line is one row. Deliberately simple: lines are cut at fixed separators, the
/// quotes around a field are dropped, and nothing else of the usual quoting is honoured. Files that need it are read by
/// `KRCSVSplitter`.
///
/// The table holds slices of the text: eight bytes a field beside it. A line may be at most 4 GiB; a longer one is
/// dropped. Reading is safe from any thread once the file is read.
class KRCSVFile : public KRObject {
 public:
  /// Reads the file at once (written form: `initWithFile:`). There is always an object; one of a file that cannot be
  /// read has no rows, and a line in the system's log tells why.
  static KRRef<KRCSVFile> initWithFile(const KRString& path);
  ~KRCSVFile() override;

  const KRString& file() const noexcept { return file_; }
  /// Number of rows kept, the heading row included.
  uint64_t rowCount() const noexcept { return rows_.size(); }
  /// Number of fields of the heading row.
  uint64_t columnCount() const noexcept { return static_cast<uint64_t>(numberOfColumn_); }

  /// The fields of a row, or nothing when there is no such row; row 0 is the heading row (written form:
  /// `valuesOfRow:`).
  std::optional<KRStringList> valuesOfRow(uint64_t row) const;
  /// The field at that place, or nothing when the row does not exist or has no such field (written form:
  /// `valueAtRow:column:`).
  KRString valueAtRow(uint64_t row, uint64_t column) const;
  /// The same as a view, valid as long as the table is not read anew.
  KRText viewAtRow(uint64_t row, uint64_t column) const noexcept;

  /// Number of the line on which the row stands, from 1; 0 when there is no such row.
  uint64_t lineOfRow(uint64_t row) const noexcept;
  /// The numbers of the lines that hold something and were dropped because they have fewer fields than the heading row,
  /// in order.
  const std::vector<uint64_t>& droppedLines() const noexcept { return droppedLines_; }
  /// What those lines hold, without the line feed behind them; nothing for a line that was too long.
  const KRStringList& droppedTexts() const noexcept { return droppedTexts_; }
  /// Why the file could not be read; empty when it could.
  const std::string& failure() const noexcept { return failure_; }
  /// The name of the character set in which the file was read.
  const std::string& charset() const noexcept { return charset_; }

  // The steps, callable on their own.

  /// Reads the file from the beginning.
  void initItemArray();
  /// The fields of a line as the reading makes them now: while there is no heading row, as a heading row, else cut to
  /// its width (written form: `loadRowItem:`). None for nothing.
  KRStringList loadRowItem(const KRString& line) const;
  /// A raw field without its quotes, carriage returns made line feeds (written form: `itemStringByOriginal:`). Nothing
  /// for nothing.
  static KRString itemStringByOriginal(const KRString& original);

 private:
  explicit KRCSVFile(KRString file) : file_(std::move(file)) {}
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);

  /// A field by its place in the row's block.
  struct Cell {
    uint32_t offset;
    uint32_t size;
  };
  struct Row {
    uint64_t firstCell;
    uint64_t line;
    uint32_t slab;
  };

  void clear();
  void loadText(std::string_view text);
  void loadLine(std::string_view line, uint64_t number);
  uint32_t copyLine(std::string_view line);
  template <class Put>
  void cut(std::string_view line, Put put) const;
  const Cell* cellAt(uint64_t row, uint64_t column) const noexcept;
  uint64_t endOfCells(uint64_t row) const noexcept;

  KRString file_;
  /// The blocks of text, each with a reference of this table's.
  std::vector<KRSlab*> slabs_;
  uint32_t filled_ = 0;
  std::vector<Cell> cells_;
  /// The kept rows, the heading row first (`itemArray`).
  std::vector<Row> rows_;
  int64_t numberOfColumn_ = 0;
  bool loadHead_ = false;
  std::vector<uint64_t> droppedLines_;
  KRStringList droppedTexts_;
  std::string failure_;
  std::string charset_ = "UTF-8";
};
