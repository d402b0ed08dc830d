#include "contacts/vcard/KRVCardEntryMatch.h"

#include <algorithm>
#include <cstdint>

namespace {

/// Beyond so many pairs only equal entries at both ends are looked for, as every pair takes a comparison.
constexpr size_t kMostPairs = 250000;
constexpr int kLastStage = 1;

class Matching {
 public:
  Matching(size_t newCount, const std::function<bool(size_t, size_t, int)>& isSame)
      : isSame_(isSame), result_(newCount) {}

  struct Span {
    size_t oldBegin;
    size_t oldEnd;
    size_t newBegin;
    size_t newEnd;
  };

  void match(Span span, int stage) {
    if (stage > kLastStage) {
      while (span.oldBegin < span.oldEnd && span.newBegin < span.newEnd) result_[span.newBegin++] = span.oldBegin++;
      return;
    }
    while (!isEmpty(span) && isSame_(span.oldBegin, span.newBegin, stage)) {
      result_[span.newBegin++] = span.oldBegin++;
    }
    while (!isEmpty(span) && isSame_(span.oldEnd - 1, span.newEnd - 1, stage)) {
      result_[--span.newEnd] = --span.oldEnd;
    }
    if (isEmpty(span)) return;
    if ((span.oldEnd - span.oldBegin) * (span.newEnd - span.newBegin) > kMostPairs) {
      match(span, kLastStage + 1);
      return;
    }
    Span gap{span.oldBegin, span.oldBegin, span.newBegin, span.newBegin};
    for (const auto& [old, made] : longest(span, stage)) {
      gap.oldEnd = old;
      gap.newEnd = made;
      match(gap, stage + 1);
      result_[made] = old;
      gap = {old + 1, old + 1, made + 1, made + 1};
    }
    match({gap.oldBegin, span.oldEnd, gap.newBegin, span.newEnd}, stage + 1);
  }

  std::vector<std::optional<size_t>> take() { return std::move(result_); }

 private:
  static bool isEmpty(const Span& span) { return span.oldBegin == span.oldEnd || span.newBegin == span.newEnd; }

  /// The longest common subsequence.
  std::vector<std::pair<size_t, size_t>> longest(const Span& span, int stage) const {
    const size_t rows = span.oldEnd - span.oldBegin;
    const size_t columns = span.newEnd - span.newBegin;
    std::vector<uint32_t> lengths((rows + 1) * (columns + 1), 0);
    std::vector<bool> same(rows * columns);
    const auto length = [&](size_t row, size_t column) -> uint32_t& { return lengths[row * (columns + 1) + column]; };
    for (size_t row = rows; row-- > 0;) {
      for (size_t column = columns; column-- > 0;) {
        const bool isSame = isSame_(span.oldBegin + row, span.newBegin + column, stage);
        same[row * columns + column] = isSame;
        length(row, column) =
            isSame ? length(row + 1, column + 1) + 1 : std::max(length(row + 1, column), length(row, column + 1));
      }
    }
    std::vector<std::pair<size_t, size_t>> pairs;
    for (size_t row = 0, column = 0; row < rows && column < columns;) {
      if (same[row * columns + column]) {
        pairs.emplace_back(span.oldBegin + row++, span.newBegin + column++);
      } else if (length(row + 1, column) >= length(row, column + 1)) {
        ++row;
      } else {
        ++column;
      }
    }
    return pairs;
  }

  const std::function<bool(size_t, size_t, int)>& isSame_;
  std::vector<std::optional<size_t>> result_;
};

}  // namespace

std::vector<std::optional<size_t>> krMatchEntries(size_t oldCount, size_t newCount,
                                                  const std::function<bool(size_t, size_t, int)>& isSame) {
  Matching matching(newCount, isSame);
  matching.match({0, oldCount, 0, newCount}, 0);
  return matching.take();
}
