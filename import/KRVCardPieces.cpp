#include "import/KRVCardPieces.h"

#include <optional>

#include "contacts/vcard/KRVCardText.h"
#include "platform/KRString.h"
#include "platform/KRTextDecoding.h"

namespace {

constexpr std::string_view kEnd = "END:VCARD";

/// The character set that the line names before its colon, or empty.
std::string_view charsetOf(std::string_view line) noexcept {
  constexpr std::string_view kName = "CHARSET=";
  const std::string_view head = line.substr(0, line.find(':'));
  for (size_t at = head.find(';'); at != std::string_view::npos; at = head.find(';', at)) {
    ++at;
    const std::string_view parameter = head.substr(at, head.find(';', at) - at);
    if (krEqualsIgnoringCase(parameter.substr(0, kName.size()), kName)) return parameter.substr(kName.size());
  }
  return {};
}

}  // namespace

KRVCardPieces::KRVCardPieces(KRBuffer bytes) : bytes_(std::move(bytes)) {
  const KRTextEncoding encoding = krGuessEncoding(bytes_.view());
  if (encoding == KRTextEncoding::Utf8 || encoding == KRTextEncoding::Other) {
    text_ = bytes_.view().substr(krMarkSize(bytes_.view(), encoding));
  } else {
    std::optional<KRDecodedText> decoded = krDecodeText(bytes_.view(), KRDecodeOptions::westernFallback());
    bytes_ = KRBuffer();
    if (decoded) decoded_ = std::move(decoded->utf8);
    text_ = decoded_;
  }
  rest_ = text_;
  for (size_t at = text_.find(kEnd); at != std::string_view::npos; at = text_.find(kEnd, at + kEnd.size())) ++count_;
}

bool KRVCardPieces::next() {
  const size_t end = rest_.find(kEnd);
  if (end == std::string_view::npos) return false;
  card_.clear();
  appendText(rest_.substr(0, end));
  card_.append("\n").append(kEnd);
  rest_.remove_prefix(end + kEnd.size());
  return true;
}

void KRVCardPieces::appendText(std::string_view piece) {
  if (krIsWellFormed(piece)) {
    card_.append(piece);
    return;
  }
  std::string_view charset;
  while (!piece.empty()) {
    const std::string_view line = piece.substr(0, std::min(piece.find_first_of("\r\n"), piece.size() - 1) + 1);
    piece.remove_prefix(line.size());
    // A folded line goes on in the character set of its first.
    if (line.front() != ' ' && line.front() != '\t') charset = charsetOf(line);
    if (krIsWellFormed(line)) {
      card_.append(line);
    } else {
      card_.append(charset_.decode(line, charset, text_));
    }
  }
}
