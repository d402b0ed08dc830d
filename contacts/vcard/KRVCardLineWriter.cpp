#include "contacts/vcard/KRVCardLineWriter.h"

#include <algorithm>
#include <optional>

#include "contacts/vcard/KRVCardText.h"
#include "platform/KRString.h"
#include "platform/KRTextDecoding.h"

namespace {

/// Bytes of a line without its line end.
constexpr size_t kLongestLine = 75;
/// How far a fold moves to the left so that no blank stands beside it.
constexpr size_t kFarthestMove = 16;
constexpr std::string_view kEnd = "END:VCARD";

bool isASCII(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isBlank(char c) noexcept {
  return c == ' ' || c == '\t';
}

bool continuesCharacter(char c) noexcept {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

size_t findEnd(std::string_view text) noexcept {
  // Few lines have more than one colon.
  constexpr size_t kBeforeColon = kEnd.find(':');
  for (size_t colon = text.find(':', kBeforeColon); colon != std::string_view::npos;
       colon = text.find(':', colon + 1)) {
    const size_t place = colon - kBeforeColon;
    if (krEqualsIgnoringCase(text.substr(place, kEnd.size()), kEnd)) return place;
  }
  return std::string_view::npos;
}

/// How many bytes of the text go on a line that has room for `room`.
size_t foldAt(std::string_view text, size_t room) noexcept {
  size_t at = std::min(room, text.size());
  if (at < text.size()) {
    while (at > 1 && continuesCharacter(text[at])) --at;
    // Some programs take blanks away at either side of a fold.
    size_t better = at;
    while (better > 1 && at - better < kFarthestMove &&
           (isBlank(text[better]) || isBlank(text[better - 1]) || continuesCharacter(text[better]))) {
      --better;
    }
    if (better > 1 && at - better < kFarthestMove) at = better;
  }
  const size_t end = findEnd(text.substr(0, std::min(at + kEnd.size(), text.size())));
  return end == std::string_view::npos ? at : std::min(at, end + 4);
}

/// The bytes of one character in quoted-printable.
void appendQuoted(std::string_view character, bool isWhole, std::string& text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char c : character) {
    const auto byte = static_cast<unsigned char>(c);
    if (!isWhole && ((byte >= 0x21 && byte < 0x7F && c != '=') || isBlank(c))) {
      text.push_back(c);
    } else {
      text.append({'=', kDigits[byte >> 4U], kDigits[byte & 15U]});
    }
  }
}

}  // namespace

bool KRVCardLineWriter::needsQuotedPrintable(std::string_view head, std::string_view value) const {
  if (version_ != KRVCardVersion::V21) return false;
  // Programs do not agree on how lines of version 2.1 are folded, but all know soft line breaks.
  return head.size() + value.size() > kLongestLine || !isASCII(value) || findEnd(value) != std::string_view::npos ||
         std::any_of(value.begin(), value.end(), [](char c) { return c < ' ' && c != '\t'; });
}

bool KRVCardLineWriter::appendShort(const KRVCardNewLine& line, std::string& bytes) const {
  const size_t before = bytes.size();
  if (!line.group.empty()) bytes.append(line.group).push_back('.');
  bytes.append(line.name).append(line.parameters).append(":").append(line.value);
  const std::string_view written = std::string_view(bytes).substr(before);
  const bool isShort = written.size() <= kLongestLine && findEnd(written) == std::string_view::npos;
  if (isShort) {
    bytes.append(style_.lineEnd);
  } else {
    bytes.resize(before);
  }
  return isShort;
}

std::string KRVCardLineWriter::folded(std::string_view line) const {
  std::string text;
  text.reserve(line.size() + line.size() / 16 + 8);
  size_t room = kLongestLine;
  while (true) {
    const size_t size = foldAt(line, room);
    text.append(line.substr(0, size));
    line.remove_prefix(size);
    text.append(style_.lineEnd);
    if (line.empty()) return text;
    text.push_back(' ');
    room = kLongestLine - 1;
  }
}

void KRVCardLineWriter::appendQuotedPrintable(std::string head, std::string_view value, std::string& bytes) const {
  if (!isASCII(value)) head += ";CHARSET=UTF-8";
  head += ";ENCODING=QUOTED-PRINTABLE:";
  bytes += head;
  size_t used = head.size();
  std::string quoted;
  for (size_t at = 0; at < value.size();) {
    size_t size = 1;
    while (at + size < value.size() && continuesCharacter(value[at + size])) ++size;
    quoted.clear();
    if (value[at] == '\n') {
      quoted = "=0D=0A";
    } else {
      // A blank that ends the value, and the first letter of what would look like the end of the card.
      const bool isLastBlank = at + 1 == value.size() && isBlank(value[at]);
      appendQuoted(value.substr(at, size), isLastBlank || findEnd(value.substr(at, kEnd.size())) == 0, quoted);
    }
    if (used + quoted.size() > kLongestLine) {
      bytes.append("=").append(style_.lineEnd);
      used = 0;
    }
    if (used == 0 && isBlank(value[at])) {
      quoted.clear();
      appendQuoted(value.substr(at, 1), true, quoted);
    }
    bytes += quoted;
    used += quoted.size();
    at += size;
  }
  bytes.append(style_.lineEnd);
}

void KRVCardLineWriter::appendBase64(std::string head, std::string_view value, std::string& bytes) const {
  if (version_ != KRVCardVersion::V21) {
    bytes += folded(head.append(";ENCODING=b:").append(value));
    return;
  }
  bytes.append(head).append(";ENCODING=BASE64:").append(style_.lineEnd);
  for (size_t at = 0; at < value.size(); at += kLongestLine - 1) {
    bytes.append(" ").append(value.substr(at, kLongestLine - 1)).append(style_.lineEnd);
  }
  // Some programs of that version need an empty line to know where the value ends.
  bytes.append(style_.lineEnd);
}

void KRVCardLineWriter::append(const KRVCardNewLine& line, std::string& bytes) const {
  const bool isForeign = !krEqualsIgnoringCase(style_.charset, "UTF-8");
  if (version_ != KRVCardVersion::V21 && !line.isBase64 && !isForeign && appendShort(line, bytes)) return;
  std::string head = line.group;
  if (!head.empty()) head.push_back('.');
  head.append(line.name).append(line.parameters);
  if (line.isBase64) {
    appendBase64(std::move(head), line.value, bytes);
    return;
  }
  if (needsQuotedPrintable(head, line.value)) {
    appendQuotedPrintable(std::move(head), line.value, bytes);
    return;
  }
  const std::string whole = head + ":" + line.value;
  const std::string text = version_ == KRVCardVersion::V21 ? whole + std::string(style_.lineEnd) : folded(whole);
  if (!isForeign || isASCII(text)) {
    bytes += text;
    return;
  }
  const std::optional<std::string> encoded = krEncodeWith(KRText(text), KRText(style_.charset));
  // Bytes that look like UTF-8 would be read as that.
  if (encoded && !krIsWellFormed(*encoded)) {
    bytes += *encoded;
  } else {
    appendQuotedPrintable(std::move(head), line.value, bytes);
  }
}
