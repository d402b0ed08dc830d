#include "contacts/vcard/KRVCardCharset.h"

#include <algorithm>
#include <optional>

#include "contacts/vcard/KRVCardText.h"
#include "platform/KRString.h"
#include "platform/KRTextDecoding.h"

namespace {

/// What every byte has a meaning in: the character set of most old address books.
constexpr std::string_view kWestern = "windows-1252";
/// How much text a guess looks at, and how many bytes beyond ASCII it needs to be believed.
constexpr size_t kLargestSample = 64 * 1024;
constexpr std::ptrdiff_t kEnoughBytes = 6;

bool isHigh(char c) noexcept {
  return static_cast<unsigned char>(c) >= 0x80;
}

bool isUTF8(std::string_view charset) noexcept {
  return krEqualsIgnoringCase(charset, "UTF-8") || krEqualsIgnoringCase(charset, "UTF8");
}

/// Japanese mail text in seven bits: it shows by its escape sequences and looks like ASCII otherwise.
bool isEscapedJapanese(std::string_view bytes) noexcept {
  return bytes.find("\x1B$") != std::string_view::npos || bytes.find("\x1B(") != std::string_view::npos;
}

bool isEastAsian(std::string_view charset) noexcept {
  const std::string lowered = krLowerASCII(charset);
  constexpr std::string_view kFamilies[] = {"shift", "sjis", "euc", "gb", "big5", "ks_", "cp932", "windows-31j"};
  return std::any_of(std::begin(kFamilies), std::end(kFamilies),
                     [&](std::string_view family) { return lowered.find(family) != std::string::npos; });
}

/// Whether the bytes, read as UTF-8, hold a character of three bytes or more, as every East Asian text does.
bool hasLongCharacter(std::string_view bytes) noexcept {
  return std::any_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xE0; });
}

/// The lines of the document that are no UTF-8: what the guess is about.
std::string foreignLines(std::string_view document) {
  std::string sample;
  for (size_t at = 0; at < document.size() && sample.size() < kLargestSample;) {
    size_t end = document.find_first_of("\r\n", at);
    if (end == std::string_view::npos) end = document.size();
    const std::string_view line = document.substr(at, end - at);
    at = end + 1;
    if (line.find('=') == std::string_view::npos) {
      if (!krIsWellFormed(line)) sample.append(line).push_back('\n');
      continue;
    }
    const std::string decoded = krDecodeQuotedPrintable(line);
    if (!krIsWellFormed(decoded)) sample.append(decoded).push_back('\n');
  }
  return sample;
}

}  // namespace

bool KRVCardCharset::needsDecoding(std::string_view bytes, std::string_view charset) noexcept {
  if (!krIsWellFormed(bytes)) return true;
  // A legacy character set that is named but not used is a common mistake, and well-formed UTF-8 beyond ASCII no
  // accident, except in short texts of half-width letters.
  if (!charset.empty() && std::any_of(bytes.begin(), bytes.end(), isHigh) && isEastAsian(charset)) {
    return !hasLongCharacter(bytes);
  }
  return bytes.find('\x1B') != std::string_view::npos &&
         (isEscapedJapanese(bytes) || charset.substr(0, 8) == "ISO-2022");
}

void KRVCardCharset::guess(std::string_view document, std::string_view bytes) {
  std::string sample = foreignLines(document.substr(0, 4 * kLargestSample));
  if (sample.empty()) sample = bytes;
  documentCharset_ = kWestern;
  if (std::count_if(sample.begin(), sample.end(), isHigh) < kEnoughBytes) return;
  const std::optional<KRDecodedText> decoded = krDecodeText(sample, KRDecodeOptions::westernFallback());
  if (decoded && !isUTF8(decoded->charset)) documentCharset_ = decoded->charset;
}

std::string KRVCardCharset::decode(std::string_view bytes, std::string_view charset, std::string_view document) {
  if (isEscapedJapanese(bytes) && (charset.empty() || isUTF8(charset))) charset = "ISO-2022-JP";
  if (!charset.empty() && !isUTF8(charset)) {
    if (std::optional<std::string> text = krDecodeWith(bytes, charset)) return *std::move(text);
  }
  if (krIsWellFormed(bytes)) return std::string(bytes);
  if (documentCharset_.empty()) guess(document, bytes);
  if (std::optional<std::string> text = krDecodeWith(bytes, KRText(std::string_view(documentCharset_)))) {
    return *std::move(text);
  }
  return krWellFormed(bytes);
}
