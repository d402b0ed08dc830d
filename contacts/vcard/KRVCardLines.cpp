#include "contacts/vcard/KRVCardLines.h"

#include <algorithm>

#include "contacts/vcard/KRVCardText.h"

namespace {

std::string_view between(const char* begin, const char* end) noexcept {
  return {begin, static_cast<size_t>(end - begin)};
}

/// Where the colon stands that ends the parameters: the first one outside quotes, or where quotes are left open the
/// first one at all.
size_t findColon(std::string_view text, size_t from) noexcept {
  const size_t first = text.find(':', from);
  if (first == std::string_view::npos) return first;
  if (text.substr(from, first - from).find('"') == std::string_view::npos) return first;
  bool isQuoted = false;
  for (size_t i = from; i < text.size(); ++i) {
    if (text[i] == '"') isQuoted = !isQuoted;
    if (text[i] == ':' && !isQuoted) return i;
  }
  return first;
}

bool isBase64Line(std::string_view text) noexcept {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' ||
           c == '=' || c == ' ' || c == '\t';
  });
}

/// Whether a value goes on in the next line: it ends in "=", blanks behind it not counted. Takes it off.
bool takeSoftBreak(std::string& text) {
  const size_t last = text.find_last_not_of(" \t");
  if (last == std::string::npos || text[last] != '=' || text.find(':') == std::string::npos) return false;
  text.resize(last);
  return true;
}

bool endsWithSoftBreak(std::string_view text) noexcept {
  const size_t last = text.find_last_not_of(" \t");
  return last != std::string_view::npos && text[last] == '=';
}

/// The longest name that is looked for behind a lone carriage return.
constexpr size_t kLongestPropertyStart = 64;

}  // namespace

bool KRVCardLine::isOfCard() const noexcept {
  constexpr std::string_view kCard = "VCARD";
  return value == kCard || krEqualsIgnoringCase(krTrimmedBlanks(value), kCard);
}

void KRVCardLines::start(std::string_view text, bool isWhole, size_t firstNumber) {
  position_ = text.data();
  end_ = text.data() + text.size();
  isWhole_ = isWhole;
  returnsEnd_ = nullptr;
  returnsEndLines_ = true;
  number_ = firstNumber;
}

bool KRVCardLines::isReturnALineEnd(const char* after) const noexcept {
  if (returnsEndLines_) return true;
  const auto room = std::min(static_cast<size_t>(end_ - after), kLongestPropertyStart);
  const std::string_view text(after, room);
  const size_t nameEnd = text.find_first_of(":; \t\r\n");
  if (nameEnd == std::string_view::npos || (text[nameEnd] != ':' && text[nameEnd] != ';')) return false;
  std::string_view name = text.substr(0, nameEnd);
  name.remove_prefix(name.rfind('.') + 1);
  return krVCardProperty(name).meaning != KRVCardMeaning::Unknown ||
         (name.size() > 2 && krEqualsIgnoringCase(name.substr(0, 2), "X-"));
}

inline KRVCardLines::Piece KRVCardLines::pieceOf(const char* begin, const KRVCardScan& scan) {
  const bool isReturn = end_ - scan.end > 1 && scan.end[0] == '\r';
  const char* const feed = isReturn ? scan.end + 1 : scan.end;
  if (feed == end_ || *feed != '\n') return pieceWithReturns(begin, scan);
  return {begin, scan.end, feed + 1, scan.colon, scan.flags, false, false};
}

/// The same where the text ends with the line, or where a carriage return does not stand before a line feed.
KRVCardLines::Piece KRVCardLines::pieceWithReturns(const char* begin, KRVCardScan scan) {
  Piece piece{begin, end_, end_, nullptr, 0, false, false};
  for (;; scan = krScanLine(piece.next, end_)) {
    if (piece.colon == nullptr) piece.colon = scan.colon;
    piece.flags |= scan.flags;
    piece.end = scan.end;
    if (scan.end == end_) {
      piece.isCut = !isWhole_;
      return piece;
    }
    piece.next = scan.end + 1;
    if (*scan.end == '\n') return piece;
    if (piece.next != end_ && *piece.next == '\n') {
      ++piece.next;
      return piece;
    }
    // Any number of carriage returns before a line feed make one line end with it.
    const char* after = std::max(piece.next, returnsEnd_);
    while (after != end_ && *after == '\r') ++after;
    if (isWhole_ && after == end_) {
      piece.next = end_;
      return piece;
    }
    if (after != end_ && *after == '\n') {
      piece.next = after + 1;
      return piece;
    }
    returnsEnd_ = after;
    const auto behind = static_cast<size_t>(end_ - piece.next);
    if (!isWhole_ && (after == end_ || (!returnsEndLines_ && behind < kLongestPropertyStart))) {
      piece.isCut = true;
      return piece;
    }
    if (isReturnALineEnd(piece.next)) {
      piece.endedWithReturn = true;
      return piece;
    }
  }
}

/// Tells a line's head apart; bytes up to `end`, behind the line, may be looked at.
inline void KRVCardLines::readHead(std::string_view text, const char* colon, const char* end, KRVCardLine& line) {
  const char* const begin = text.data();
  line.flags = flags_;
  if (colon != nullptr && (flags_ & KRVCardScan::Quote) != 0) {
    colon = begin + findColon(text, text.find_first_of(":;"));
  }
  const KRVCardHead& head = heads_.find(between(begin, colon == nullptr ? begin : colon), end);
  line.head = &head;
  line.headText = begin;
  line.property = head.property;
  line.parameters = &head.parameters;
  // Both from the registers: copied from the one just written to the other, they would wait for that write to end.
  const std::string_view value = between(colon == nullptr ? begin : colon + 1, begin + text.size());
  line.value = value;
  line.raw = value;
}

void KRVCardLines::readJoinedHead(KRVCardLine& line) {
  const size_t colon = joined_.find(':');
  readHead(joined_, colon == std::string::npos ? nullptr : joined_.data() + colon, joined_.data() + joined_.size(),
           line);
}

/// Takes what nearly every line is: one that ends in a line feed, with a carriage return before it or without, and does
/// not go on in the next, of which the text has some. Anything else is left to a closer look.
inline bool KRVCardLines::takePlain(const KRVCardScan& scan, KRVCardLine& line) {
  const char* const begin = position_;
  if (end_ - scan.end < 3 || scan.end == begin) return false;
  const char* const feed = *scan.end == '\r' ? scan.end + 1 : scan.end;
  const char* const behind = feed + 1;
  if (*feed != '\n' || *behind == ' ' || *behind == '\t') return false;
  flags_ = scan.flags;
  readHead(between(begin, scan.end), scan.colon, end_, line);
  if (line.parameters->encoding != KRVCardParameters::None) return false;
  line.bytes = between(begin, behind);
  line.number = number_++;
  endedWithReturn_ = false;
  position_ = behind;
  return true;
}

KRVCardLines::Result KRVCardLines::next(KRVCardLine& line) {
  while (true) {
    if (position_ == end_) return isWhole_ ? Result::AtEnd : Result::NeedsMore;
    const KRVCardScan scan = krScanLine(position_, end_);
    if (takePlain(scan, line)) return Result::Line;
    const Piece piece = pieceOf(position_, scan);
    if (piece.isCut || isOpen(piece.next)) return Result::NeedsMore;
    if (piece.begin == piece.end) {
      position_ = piece.next;
      ++number_;
      continue;
    }
    pieces_ = 1;
    flags_ = piece.flags;
    const std::string_view text = between(piece.begin, piece.end);
    readHead(text, piece.colon, end_, line);
    if (line.parameters->encoding != KRVCardParameters::None) {
      if (line.parameters->encoding == KRVCardParameters::Base64) return takeBase64(piece, line);
      if (endsWithSoftBreak(text) || isFold(piece.next)) return takeSoftBroken(piece, line);
    }
    if (isFold(piece.next)) return takeFolded(piece, line);
    return finish(piece, piece, line);
  }
}

KRVCardLines::Result KRVCardLines::takeFolded(Piece first, KRVCardLine& line) {
  joined_.assign(first.begin, first.end);
  Piece last = first;
  while (isFold(last.next)) {
    last = pieceAt(last.next);
    if (last.isCut || isOpen(last.next)) return Result::NeedsMore;
    joined_.append(last.begin + 1, last.end);
    flags_ |= last.flags;
    ++pieces_;
  }
  // The fold may have hidden how the value is written.
  readJoinedHead(line);
  if (line.parameters->encoding != KRVCardParameters::None) {
    if (line.parameters->encoding == KRVCardParameters::Base64) return takeBase64(first, line);
    if (endsWithSoftBreak(joined_)) return takeSoftBroken(first, line);
  }
  return finish(first, last, line);
}

KRVCardLines::Result KRVCardLines::takeSoftBroken(Piece first, KRVCardLine& line) {
  joined_.assign(first.begin, first.end);
  Piece last = first;
  pieces_ = 1;
  while (last.next != end_) {
    const bool isSoft = takeSoftBreak(joined_);
    if (!isSoft && !isFold(last.next)) break;
    const Piece piece = pieceAt(last.next);
    if (piece.isCut || isOpen(piece.next)) return Result::NeedsMore;
    // A soft break in the last value of a card leads nowhere.
    if (isSoft && krEqualsIgnoringCase(krTrimmedBlanks(between(piece.begin, piece.end)), "END:VCARD")) break;
    joined_.append(isSoft ? piece.begin : piece.begin + 1, piece.end);
    flags_ |= piece.flags;
    last = piece;
    ++pieces_;
  }
  if (last.next == end_) takeSoftBreak(joined_);
  readJoinedHead(line);
  return finish(first, last, line);
}

KRVCardLines::Result KRVCardLines::takeBase64(Piece first, KRVCardLine& line) {
  // The value stands in the text as it is, unless a fold runs through what is before it.
  const bool isInPlace = line.value.data() >= first.begin && line.value.data() <= first.end;
  const char* const valueBegin = line.value.data();
  if (!isInPlace) joined_.assign(first.begin, first.end);
  pieces_ = 1;
  Piece last = first;
  while (last.next != end_) {
    const Piece piece = pieceAt(last.next);
    if (piece.isCut || isOpen(piece.next)) return Result::NeedsMore;
    const bool fold = isFold(last.next);
    if (!fold && !isBase64Line(between(piece.begin, piece.end))) break;
    if (!isInPlace) joined_.append(fold ? piece.begin + 1 : piece.begin, piece.end);
    last = piece;
    ++pieces_;
  }
  if (isInPlace) {
    finish(first, last, line);
    line.raw = between(valueBegin, last.end);
    return Result::Line;
  }
  readJoinedHead(line);
  return finish(first, last, line);
}

KRVCardLines::Result KRVCardLines::finish(const Piece& first, const Piece& last, KRVCardLine& line) {
  line.bytes = between(first.begin, last.next);
  line.number = number_;
  endedWithReturn_ = last.endedWithReturn;
  position_ = last.next;
  number_ += pieces_;
  return Result::Line;
}
