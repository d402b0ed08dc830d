#include "import/KRCSVFile.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "import/KRCSVText.h"
#include "platform/KRLog.h"

namespace {

constexpr std::string_view kQuoteTab = "\"\t";
constexpr size_t kLongestLine = 0xFFFF'0000U;

/// Calls `put(piece)` for each piece of the text between separators, until it answers false.
template <class Put>
void split(std::string_view text, std::string_view separator, Put put) {
  while (true) {
    const size_t end = separator.size() == 1 ? text.find(separator.front()) : text.find(separator);
    if (!put(text.substr(0, end)) || end == std::string_view::npos) return;
    text.remove_prefix(end + separator.size());
  }
}

/// By what a line is cut. A tab behind a quote counts more than a tab, a tab more than a comma.
std::string_view separatorOf(std::string_view line) noexcept {
  if (line.find('\t') == std::string_view::npos) return ",";
  return line.find(kQuoteTab) == std::string_view::npos ? "\t" : kQuoteTab;
}

/// A field without its opening quote, and without its closing one when it is the last character. Doubled quotes stay
/// doubled and blanks stay, on purpose.
std::string_view unquoted(std::string_view field) noexcept {
  if (field.empty() || field.front() != '"') return field;
  field.remove_prefix(1);
  if (!field.empty() && field.back() == '"') field.remove_suffix(1);
  return field;
}

}  // namespace

KRRef<KRCSVFile> KRCSVFile::initWithFile(const KRString& path) {
  auto file = krMake<KRCSVFile>(path);
  file->initItemArray();
  return file;
}

KRCSVFile::~KRCSVFile() {
  clear();
}

void KRCSVFile::clear() {
  for (KRSlab* slab : slabs_) slab->release();
  slabs_.clear();
  filled_ = 0;
  cells_.clear();
  rows_.clear();
  numberOfColumn_ = 0;
  loadHead_ = false;
  droppedLines_.clear();
  droppedTexts_.clear();
  failure_.clear();
}

void KRCSVFile::initItemArray() {
  clear();
  const KRResult<KRCSVText> text = KRCSVText::read(file_);
  if (!text) {
    failure_ = text.error().sentence;
    krLog(std::string_view(failure_));
    return;
  }
  charset_ = text->charset();
  loadText(text->view());
}

void KRCSVFile::loadText(std::string_view text) {
  // Carriage returns count only in a text without any line feed; before one they stay at the line's end.
  const std::string_view lineEnd = text.find('\n') == std::string_view::npos ? "\r" : "\n";
  uint64_t number = 0;
  split(text, lineEnd, [&](std::string_view line) {
    loadLine(line, ++number);
    return true;
  });
}

template <class Put>
void KRCSVFile::cut(std::string_view line, Put put) const {
  int64_t left = numberOfColumn_;
  split(line, separatorOf(line), [&](std::string_view piece) {
    if (loadHead_ && left-- == 0) return false;
    const std::string_view field = unquoted(piece);
    const bool isLast = piece.data() + piece.size() == line.data() + line.size();
    if (!loadHead_ && isLast && field.empty()) return false;
    put(field);
    return true;
  });
}

void KRCSVFile::loadLine(std::string_view line, uint64_t number) {
  if (line.size() > kLongestLine) {
    droppedLines_.push_back(number);
    droppedTexts_.push_back(KRString());
    return;
  }
  const uint32_t start = copyLine(line);
  const char* block = slabs_.back()->bytes();
  const size_t before = cells_.size();
  cut({block + start, line.size()}, [&](std::string_view field) {
    cells_.push_back({static_cast<uint32_t>(field.data() - block), static_cast<uint32_t>(field.size())});
  });
  const size_t count = cells_.size() - before;
  if (count == 0) return;
  if (loadHead_ && count < static_cast<size_t>(numberOfColumn_)) {
    const bool isBlank = std::all_of(cells_.begin() + static_cast<ptrdiff_t>(before), cells_.end(), [&](Cell cell) {
      return cell.size == 0 || (cell.size == 1 && (block[cell.offset] == '\r' || block[cell.offset] == '\n'));
    });
    if (!isBlank) {
      droppedLines_.push_back(number);
      droppedTexts_.push_back(KRString::trusted(line));
    }
    cells_.resize(before);
    return;
  }
  filled_ = start + static_cast<uint32_t>(line.size());
  std::replace(slabs_.back()->bytes() + start, slabs_.back()->bytes() + filled_, '\r', '\n');
  rows_.push_back({before, number, static_cast<uint32_t>(slabs_.size() - 1)});
  if (!loadHead_) {
    numberOfColumn_ = static_cast<int64_t>(count);
    loadHead_ = true;
  }
}

/// Puts the line behind the text of the rows kept so far and tells where it begins; it counts once `filled_` does.
uint32_t KRCSVFile::copyLine(std::string_view line) {
  if (slabs_.empty() || line.size() > slabs_.back()->capacity() - filled_) {
    slabs_.push_back(KRSlab::create(std::max(KRSlab::kSharedCapacity, static_cast<uint32_t>(line.size()))));
    filled_ = 0;
  }
  if (!line.empty()) std::memcpy(slabs_.back()->bytes() + filled_, line.data(), line.size());
  return filled_;
}

uint64_t KRCSVFile::endOfCells(uint64_t row) const noexcept {
  return row + 1 < rows_.size() ? rows_[row + 1].firstCell : cells_.size();
}

const KRCSVFile::Cell* KRCSVFile::cellAt(uint64_t row, uint64_t column) const noexcept {
  if (row >= rows_.size() || column >= endOfCells(row) - rows_[row].firstCell) return nullptr;
  return &cells_[rows_[row].firstCell + column];
}

std::optional<KRStringList> KRCSVFile::valuesOfRow(uint64_t row) const {
  if (row >= rows_.size()) return std::nullopt;
  const uint64_t count = endOfCells(row) - rows_[row].firstCell;
  KRStringList values;
  values.reserve(count);
  for (uint64_t column = 0; column < count; ++column) values.push_back(valueAtRow(row, column));
  return values;
}

KRString KRCSVFile::valueAtRow(uint64_t row, uint64_t column) const {
  const Cell* cell = cellAt(row, column);
  if (cell == nullptr) return {};
  if (cell->size == 0) return ""_kr;
  return KRString::slice(slabs_[rows_[row].slab], cell->offset, cell->size);
}

KRText KRCSVFile::viewAtRow(uint64_t row, uint64_t column) const noexcept {
  const Cell* cell = cellAt(row, column);
  return cell == nullptr ? KRText() : KRText(slabs_[rows_[row].slab]->bytes() + cell->offset, cell->size);
}

uint64_t KRCSVFile::lineOfRow(uint64_t row) const noexcept {
  return row < rows_.size() ? rows_[row].line : 0;
}

KRStringList KRCSVFile::loadRowItem(const KRString& line) const {
  KRStringList values;
  if (line.isNothing()) return values;
  cut(line.view(), [&](std::string_view field) {
    std::string text(field);
    std::replace(text.begin(), text.end(), '\r', '\n');
    values.push_back(KRString::trusted(text));
  });
  return values;
}

KRString KRCSVFile::itemStringByOriginal(const KRString& original) {
  if (original.isNothing()) return {};
  std::string text(unquoted(original.view()));
  std::replace(text.begin(), text.end(), '\r', '\n');
  return KRString::trusted(text);
}
