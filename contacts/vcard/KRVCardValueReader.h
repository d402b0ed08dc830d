#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRCardDraft.h"
#include "contacts/vcard/KRVCardCharset.h"
#include "contacts/vcard/KRVCardLines.h"
#include "contacts/vcard/KRVCardText.h"

/// Reads the values of a card's lines as text: quoted-printable, character sets, escapes and what separates parts. The
/// texts go to the draft of the card. Used for one card after the other; not locked.
class KRVCardValueReader {
 public:
  using Place = KRCardDraft::Place;
  enum class Shape { Text, Structured };

  explicit KRVCardValueReader(KRCardDraft& draft) noexcept : draft_(draft) {}

  /// Starts a card at `card`, in a text that ends at `end`.
  void start(const char* card, const char* end) noexcept;
  /// What the VERSION line says. Before it comes, the card is looked through for it.
  void setVersion(std::string_view version) noexcept;
  /// The line that the next calls are about; it must stay.
  void setLine(const KRVCardLine& line) noexcept { line_ = &line; }

  /// The text of the line's value, or of a part of it that is written the same way.
  Place decode(std::string_view raw, Shape shape = Shape::Text) {
    return isPlain() ? draft_.place(raw) : decodeWritten(raw, shape);
  }
  /// The parts of the line's value between separators, each decoded; valid until the next call.
  const std::vector<Place>& split(char separator);

  /// Starts another document, whose character set is what was guessed for it already, or empty.
  void startDocument(std::string_view charset) { charset_.reset(charset); }
  const std::string& documentCharset() const noexcept { return charset_.documentCharset(); }

 private:
  bool is21();
  /// Whether the line has nothing but ASCII, and no escape sequences.
  bool isASCII() const noexcept { return (line_->flags & (KRVCardScan::High | KRVCardScan::Escape)) == 0; }
  /// Whether there is a backslash, or quoted-printable that may hide one.
  bool mayHaveEscapes() const noexcept {
    return (line_->flags & KRVCardScan::Backslash) != 0 ||
           line_->parameters->encoding == KRVCardParameters::QuotedPrintable;
  }
  /// Whether values stand in the line just as they are, as most do.
  bool isPlain() const noexcept { return isASCII() && !mayHaveEscapes(); }
  Place decodeWritten(std::string_view raw, Shape shape);
  void splitPlain(std::string_view value, char separator);
  KREscapes escapes(Shape shape);
  Place undoEscapes(std::string_view text, Shape shape);

  KRCardDraft& draft_;
  KRVCardCharset charset_;
  const char* card_ = nullptr;
  const char* end_ = nullptr;
  const KRVCardLine* line_ = nullptr;
  enum class Version : uint8_t { Unknown, V21, Later };
  Version version_ = Version::Unknown;
  std::vector<Place> parts_;
  /// The line's whole value where it had to be decoded before it could be split.
  std::string whole_;
};
