#include "import/KRCSVSplitter.h"

#include <algorithm>
#include <cstring>
#include <utility>

bool KRCSVRow::isBlank() const noexcept {
  for (size_t i = 0; i < cells_.size(); ++i) {
    if (view(i).find_first_not_of(" \t\r\n") != std::string_view::npos) return false;
  }
  return true;
}

KRCSVSplitter::KRCSVSplitter(KRCSVMarks marks, RowSink sink, size_t firstLine)
    : marks_(marks),
      sink_(std::move(sink)),
      slab_(KRSlab::create(KRSlab::kSharedCapacity)),
      line_(firstLine),
      rowLine_(firstLine) {
  endsPlain_[static_cast<unsigned char>('\n')] = true;
  endsPlain_[static_cast<unsigned char>('\r')] = true;
  if (marks_.separator != 0) endsPlain_[static_cast<unsigned char>(marks_.separator)] = true;
}

KRCSVSplitter::~KRCSVSplitter() {
  slab_->release();
}

const char* KRCSVSplitter::plainRun(const char* from, const char* end) noexcept {
  const char* at = from;
  while (at != end && !endsPlain_[static_cast<unsigned char>(*at)]) ++at;
  return at;
}

const char* KRCSVSplitter::quotedRun(const char* from, const char* end) noexcept {
  const auto* quote = static_cast<const char*>(std::memchr(from, marks_.quote, static_cast<size_t>(end - from)));
  if (quote == nullptr) quote = end;
  if (line_ >= boundFrom_) {
    const char* lineEnd = std::find_if(from, quote, [](char c) { return c == '\n' || c == '\r'; });
    if (lineEnd != quote) return lineEnd;
  }
  for (const char* at = from; at != quote; ++at) {
    if (*at == '\n' || *at == '\r') {
      endLine(*at);
    } else {
      isAfterReturn_ = false;
    }
  }
  return quote;
}

/// Counts a line end; a carriage return and the line feed behind it are one.
void KRCSVSplitter::endLine(char mark) noexcept {
  if (mark != '\n' || !isAfterReturn_) ++line_;
  isAfterReturn_ = mark == '\r';
}

bool KRCSVSplitter::feed(std::string_view piece) {
  const char* at = piece.data();
  const char* const end = at + piece.size();
  KRCSVNext lineFeeds('\n', end);
  KRCSVNext returns('\r', end);
  KRCSVNext quotes(marks_.quote, end);
  while (at != end && wantsMore_) {
    if (state_ == State::CellStart && cells_.empty() && !isAfterReturn_) {
      // A whole row without quotes is copied at once.
      const char* lineEnd = std::min(lineFeeds.from(at), returns.from(at));
      const bool isPlain = lineEnd != end && (marks_.quote == 0 || quotes.from(at) > lineEnd);
      if (isPlain && static_cast<size_t>(lineEnd - at) <= kLongestRow) {
        if (lineEnd != at) takePlainRow({at, static_cast<size_t>(lineEnd - at)});
        endLine(*lineEnd);
        rowLine_ = line_;
        at = lineEnd + 1;
        continue;
      }
    }
    if (state_ == State::CellStart) {
      if (isAfterReturn_ && *at == '\n' && cells_.empty()) {
        isAfterReturn_ = false;
        ++at;
        continue;
      }
      isAfterReturn_ = false;
      if (marks_.quote != 0 && *at == marks_.quote) {
        isCellQuoted_ = true;
        quoteLine_ = line_;
        state_ = State::Quoted;
        ++at;
        continue;
      }
      state_ = State::Plain;
    }
    if (state_ == State::Quoted) {
      const char* stop = quotedRun(at, end);
      append({at, static_cast<size_t>(stop - at)});
      at = stop;
      if (at == end) break;
      if (*at == marks_.quote) {
        state_ = State::QuoteInQuoted;
        isAfterReturn_ = false;
        ++at;
        continue;
      }
      // A line end where quotes end with their line: it ends the row below.
      state_ = State::Plain;
    }
    if (state_ == State::QuoteInQuoted) {
      if (*at == marks_.quote) {
        append({at, 1});
        state_ = State::Quoted;
        ++at;
        continue;
      }
      state_ = State::Plain;
    }
    const char* stop = plainRun(at, end);
    append({at, static_cast<size_t>(stop - at)});
    at = stop;
    if (at == end) break;
    if (*at == '\n' || *at == '\r') {
      endRow();
      endLine(*at);
      rowLine_ = line_;
    } else {
      endCell();
    }
    ++at;
  }
  return wantsMore_;
}

/// Splits a line that has no quotes: the separators stay in the block, between the cells.
void KRCSVSplitter::takePlainRow(std::string_view line) {
  append(line);
  const char* const block = slab_->bytes();
  const char* at = block + filled_ - line.size();
  const char* const end = block + filled_;
  while (marks_.separator != 0) {
    const auto* next = static_cast<const char*>(std::memchr(at, marks_.separator, static_cast<size_t>(end - at)));
    if (next == nullptr) break;
    cells_.push_back({static_cast<uint32_t>(at - block), static_cast<uint32_t>(next - at), false});
    at = next + 1;
  }
  cellStart_ = static_cast<uint32_t>(at - block);
  endRow();
}

void KRCSVSplitter::finish() {
  if (state_ == State::Quoted) openQuoteLine_ = quoteLine_;
  if (wantsMore_ && (state_ != State::CellStart || !cells_.empty())) endRow();
}

void KRCSVSplitter::append(std::string_view run) {
  if (run.empty()) return;
  const uint32_t held = filled_ - rowStart_;
  run = run.substr(0, kLongestRow - std::min(held, kLongestRow));
  if (run.size() > slab_->capacity() - filled_) makeRoom(run.size());
  std::memcpy(slab_->bytes() + filled_, run.data(), run.size());
  filled_ += static_cast<uint32_t>(run.size());
}

/// Moves the row that is being read into a new block with room for more.
void KRCSVSplitter::makeRoom(size_t size) {
  const uint32_t held = filled_ - rowStart_;
  const size_t wanted = std::max<size_t>(KRSlab::kSharedCapacity, held + std::max<size_t>(size, held));
  KRSlab* wider = KRSlab::create(static_cast<uint32_t>(wanted));
  if (held != 0) std::memcpy(wider->bytes(), slab_->bytes() + rowStart_, held);
  for (KRCSVRow::Cell& cell : cells_) cell.offset -= rowStart_;
  cellStart_ -= rowStart_;
  filled_ = held;
  rowStart_ = 0;
  std::swap(slab_, wider);
  wider->release();
}

void KRCSVSplitter::endCell() {
  cells_.push_back({cellStart_, filled_ - cellStart_, isCellQuoted_});
  cellStart_ = filled_;
  isCellQuoted_ = false;
  state_ = State::CellStart;
}

void KRCSVSplitter::endRow() {
  const bool isEmptyLine = cells_.empty() && filled_ == cellStart_ && !isCellQuoted_;
  if (!isEmptyLine) {
    endCell();
    wantsMore_ = sink_(KRCSVRow(slab_, cells_, rowLine_));
  }
  cells_.clear();
  rowStart_ = filled_;
  cellStart_ = filled_;
  isCellQuoted_ = false;
  state_ = State::CellStart;
}
