#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardHeads.h"
#include "contacts/vcard/KRVCardParameters.h"
#include "contacts/vcard/KRVCardProperty.h"
#include "contacts/vcard/KRVCardScan.h"

/// One logical line of a vCard: folds and soft line breaks undone, values as they are written otherwise. Views into the
/// text that was scanned or, for a line of several, into the scanner; valid until the next line is taken.
struct KRVCardLine {
  /// What stands before the colon, told apart, and where it stands.
  const KRVCardHead* head = nullptr;
  const char* headText = nullptr;
  const KRVCardParameters* parameters = nullptr;
  /// What the name means.
  const KRVCardProperty* property = nullptr;
  /// What the line holds anywhere (`KRVCardScan::Flag`).
  uint8_t flags = 0;
  std::string_view value;
  /// The whole line where it was scanned, its line end included.
  std::string_view bytes;
  /// For base64 the value where it was scanned, with its line breaks; else as `value`.
  std::string_view raw;
  /// Number of its first line, from 1.
  size_t number = 0;

  std::string_view group() const noexcept { return head->group.of(headText); }
  bool hasGroup() const noexcept { return head->group.size != 0; }
  /// Empty for a line without a colon, which then stands in `value` whole.
  std::string_view name() const noexcept { return head->name.of(headText); }
  bool hasName() const noexcept { return head->name.size != 0; }
  /// The parameters as they are written, from their first ";" to the colon.
  std::string_view parameterText() const noexcept { return head->parameterText.of(headText); }

  bool means(KRVCardMeaning meaning) const noexcept { return property->meaning == meaning; }
  /// Whether this is "BEGIN:VCARD", respectively "END:VCARD", in any case.
  bool isBegin() const noexcept { return means(KRVCardMeaning::Begin) && isOfCard(); }
  bool isEnd() const noexcept { return means(KRVCardMeaning::End) && isOfCard(); }

 private:
  bool isOfCard() const noexcept;
};

/// Takes logical lines from text, one after the other. The text may be cut anywhere: as long as more may follow, a line
/// that could go on is not given.
class KRVCardLines {
 public:
  enum class Result { Line, NeedsMore, AtEnd };

  /// Starts on new text. `isWhole` when nothing follows it; `firstNumber` is the number of its first line.
  void start(std::string_view text, bool isWhole, size_t firstNumber);
  Result next(KRVCardLine& line);

  /// Whether a line may end with a carriage return alone, as decided by the line that begins a card. Otherwise one ends
  /// a line only where the next begins like a property.
  void setReturnsEndLines(bool value) noexcept { returnsEndLines_ = value; }
  /// Whether the last line given ended so.
  bool endedWithReturn() const noexcept { return endedWithReturn_; }

  /// Where the next line begins, and its number.
  const char* position() const noexcept { return position_; }
  size_t number() const noexcept { return number_; }
  const char* end() const noexcept { return end_; }

 private:
  /// One line of the text: its content, and where the next begins.
  struct Piece {
    const char* begin;
    const char* end;
    const char* next;
    /// The first colon, or null.
    const char* colon;
    uint8_t flags;
    /// The text ends before the line does.
    bool isCut;
    bool endedWithReturn;
  };

  Piece pieceAt(const char* begin) { return pieceOf(begin, krScanLine(begin, end_)); }
  Piece pieceOf(const char* begin, const KRVCardScan& scan);
  Piece pieceWithReturns(const char* begin, KRVCardScan scan);
  bool isReturnALineEnd(const char* after) const noexcept;
  bool isFold(const char* next) const noexcept { return next < end_ && (*next == ' ' || *next == '\t'); }
  /// Whether the text after a line end is not there yet.
  bool isOpen(const char* next) const noexcept { return next == end_ && !isWhole_; }
  bool takePlain(const KRVCardScan& scan, KRVCardLine& line);
  void readHead(std::string_view text, const char* colon, const char* end, KRVCardLine& line);
  void readJoinedHead(KRVCardLine& line);
  Result takeFolded(Piece first, KRVCardLine& line);
  Result takeSoftBroken(Piece first, KRVCardLine& line);
  Result takeBase64(Piece first, KRVCardLine& line);
  Result finish(const Piece& first, const Piece& last, KRVCardLine& line);

  const char* position_ = nullptr;
  const char* end_ = nullptr;
  /// Where the carriage returns end that were looked at last and are not followed by a line feed.
  const char* returnsEnd_ = nullptr;
  bool isWhole_ = true;
  bool returnsEndLines_ = true;
  bool endedWithReturn_ = false;
  size_t number_ = 1;
  size_t pieces_ = 0;
  uint8_t flags_ = 0;
  std::string joined_;
  KRVCardHeads heads_;
};
