#include "contacts/vcard/KRVCardValueReader.h"

#include "contacts/vcard/KRVCardValues.h"
#include "platform/KRBytes.h"

void KRVCardValueReader::start(const char* card, const char* end) noexcept {
  card_ = card;
  end_ = end;
  version_ = Version::Unknown;
}

void KRVCardValueReader::setVersion(std::string_view version) noexcept {
  version_ = version == "2.1" ? Version::V21 : Version::Later;
}

bool KRVCardValueReader::is21() {
  if (version_ == Version::Unknown) {
    // The line may stand anywhere in the card.
    const std::string_view rest(card_, static_cast<size_t>(end_ - card_));
    const size_t end = rest.find("END:");
    const size_t place = rest.substr(0, end).find("VERSION:2.1");
    version_ = place == std::string_view::npos ? Version::Later : Version::V21;
  }
  return version_ == Version::V21;
}

KREscapes KRVCardValueReader::escapes(Shape shape) {
  if (!is21()) return KREscapes::Full;
  return shape == Shape::Text ? KREscapes::Text21 : KREscapes::Structured21;
}

KRCardDraft::Place KRVCardValueReader::undoEscapes(std::string_view text, Shape shape) {
  if (!mayHaveEscapes() || text.find('\\') == std::string_view::npos) return draft_.place(text);
  return draft_.place(krUndoEscapes(text, escapes(shape)));
}

KRCardDraft::Place KRVCardValueReader::decodeWritten(std::string_view raw, Shape shape) {
  const KRVCardParameters& parameters = *line_->parameters;
  std::string bytes;
  if (parameters.encoding == KRVCardParameters::QuotedPrintable) {
    bytes = krWithLineFeeds(krDecodeQuotedPrintable(raw));
    raw = bytes;
  } else if (isASCII()) {
    return undoEscapes(raw, shape);
  }
  if (!KRVCardCharset::needsDecoding(raw, parameters.charset)) return undoEscapes(raw, shape);
  const std::string_view document(card_, static_cast<size_t>(end_ - card_));
  return undoEscapes(charset_.decode(raw, parameters.charset, document), shape);
}

/// The parts are what stands between the separators.
void KRVCardValueReader::splitPlain(std::string_view value, char separator) {
  const Place whole = draft_.place(value);
  size_t begin = 0;
  krForEachByte(value, separator, [&](const char* at) {
    const auto end = static_cast<size_t>(at - value.data());
    parts_.push_back(whole.part(begin, end - begin));
    begin = end + 1;
  });
  parts_.push_back(whole.part(begin, value.size() - begin));
}

const std::vector<KRCardDraft::Place>& KRVCardValueReader::split(char separator) {
  parts_.clear();
  std::string_view value = line_->value;
  if (isPlain()) {
    splitPlain(value, separator);
    return parts_;
  }
  const KRVCardParameters& parameters = *line_->parameters;
  // In some character sets a backslash or a semicolon may be half of a letter: such text is decoded before it is split.
  // Quoted-printable is split first, as its encoded bytes are no separators.
  const bool isQuotedPrintable = parameters.encoding == KRVCardParameters::QuotedPrintable;
  const bool isWhole = !isQuotedPrintable || krStartsIgnoringCase(parameters.charset, "ISO-2022");
  if (isWhole) {
    std::string bytes;
    if (isQuotedPrintable) value = bytes = krDecodeQuotedPrintable(value);
    if (isQuotedPrintable || (!isASCII() && KRVCardCharset::needsDecoding(value, parameters.charset))) {
      const std::string_view document(card_, static_cast<size_t>(end_ - card_));
      whole_ = charset_.decode(value, parameters.charset, document);
      value = whole_;
    }
  }
  const bool hasEscapes = value.data() != line_->value.data() || (line_->flags & KRVCardScan::Backslash) != 0;
  if (isWhole && !hasEscapes) {
    splitPlain(value, separator);
    return parts_;
  }
  for (size_t at = 0; at <= value.size();) {
    const size_t end = krFindUnescaped(value, separator, at);
    const std::string_view raw = value.substr(at, end - at);
    parts_.push_back(isWhole ? undoEscapes(raw, Shape::Structured) : decode(raw, Shape::Structured));
    at = end + 1;
  }
  return parts_;
}
