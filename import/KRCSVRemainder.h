#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "import/KRCSVCells.h"
#include "platform/KRString.h"

/// What of a row fits nowhere, and what could not be understood in it.
struct KRCSVRemainder {
  /// Texts with the column that each is from.
  std::vector<std::pair<size_t, KRString>> kept;
  /// Sentences in English.
  std::vector<KRString> problems;

  void clear() {
    kept.clear();
    problems.clear();
  }
  void keep(size_t column, KRString text) { kept.emplace_back(column, std::move(text)); }
  /// Keeps the whole cell, when it holds something.
  void keepCell(const KRCSVCells& cells, size_t column) {
    if (cells.has(column)) keep(column, cells.lines(column));
  }
  void tellNoDate(std::string_view text) { problems.push_back(krConcat({"no date: ", text})); }
};
