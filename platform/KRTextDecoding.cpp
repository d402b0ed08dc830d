#include "platform/KRTextDecoding.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "platform/KRCharset.h"
#include "platform/KRString.h"

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";
constexpr std::string_view kUtf32LittleMark("\xFF\xFE\0\0", 4);
constexpr std::string_view kUtf32BigMark("\0\0\xFE\xFF", 4);

constexpr std::string_view markOf(KRTextEncoding encoding) noexcept {
  switch (encoding) {
    case KRTextEncoding::Utf8:
      return kUtf8Mark;
    case KRTextEncoding::Utf16LittleEndian:
      return kUtf16LittleMark;
    case KRTextEncoding::Utf16BigEndian:
      return kUtf16BigMark;
    case KRTextEncoding::Utf32LittleEndian:
      return kUtf32LittleMark;
    case KRTextEncoding::Utf32BigEndian:
      return kUtf32BigMark;
    case KRTextEncoding::Other:
      break;
  }
  return {};
}

constexpr const char* charsetOf(KRTextEncoding encoding) noexcept {
  switch (encoding) {
    case KRTextEncoding::Utf16LittleEndian:
      return "UTF-16LE";
    case KRTextEncoding::Utf16BigEndian:
      return "UTF-16BE";
    case KRTextEncoding::Utf32LittleEndian:
      return "UTF-32LE";
    case KRTextEncoding::Utf32BigEndian:
      return "UTF-32BE";
    case KRTextEncoding::Utf8:
    case KRTextEncoding::Other:
      break;
  }
  return "UTF-8";
}

uint32_t byteAt(std::string_view bytes, size_t place) noexcept {
  return static_cast<unsigned char>(bytes[place]);
}

char16_t unitAt(std::string_view bytes, size_t place, bool isLittle) noexcept {
  const uint32_t first = byteAt(bytes, place);
  const uint32_t second = byteAt(bytes, place + 1);
  return static_cast<char16_t>(isLittle ? first | (second << 8U) : (first << 8U) | second);
}

bool isLineEnd(uint32_t byte) noexcept {
  return byte == '\r' || byte == '\n';
}

bool isPlain(uint32_t byte) noexcept {
  return (byte >= 0x20 && byte < 0x7F) || byte == '\t' || isLineEnd(byte);
}

/// What shows that pairs of bytes are UTF-16 of one byte order.
struct Utf16Signs {
  size_t units = 0;
  /// Units that are plain ASCII, and those below U+2000.
  size_t plainUnits = 0;
  size_t lowUnits = 0;
  /// Line ends as units, and bytes of line ends that are no such units.
  size_t lineEnds = 0;
  size_t strayLineEnds = 0;
  bool isPaired = true;

  Utf16Signs(std::string_view sample, bool isLittle) {
    bool isAfterLead = false;
    size_t place = 0;
    for (; place + 1 < sample.size(); place += 2) {
      const char16_t unit = unitAt(sample, place, isLittle);
      const uint32_t low = unit & 0xFFU;
      const uint32_t high = uint32_t{unit} >> 8U;
      ++units;
      if (isPlain(unit)) ++plainUnits;
      if (unit < 0x2000) ++lowUnits;
      if (high == 0 && isLineEnd(low)) {
        ++lineEnds;
      } else {
        strayLineEnds += static_cast<size_t>(isLineEnd(low)) + static_cast<size_t>(isLineEnd(high));
      }
      const bool isTrail = (unit & 0xFC00U) == 0xDC00U;
      isPaired = isPaired && isTrail == isAfterLead && unit < 0xFFFE;
      isAfterLead = (unit & 0xFC00U) == 0xD800U;
    }
    if (place < sample.size() && isLineEnd(byteAt(sample, place))) ++strayLineEnds;
  }

  /// `isUtf8` tells that the sample would be well-formed UTF-8 as well, as most alphabets in UTF-16 are.
  bool areConvincing(const Utf16Signs& otherOrder, bool isUtf8) const noexcept {
    if (!isPaired || plainUnits == 0 || plainUnits * 32 < units || plainUnits < otherOrder.plainUnits * 2) return false;
    if (lineEnds + strayLineEnds != 0 && lineEnds * 4 < strayLineEnds) return false;
    return !isUtf8 || lowUnits * 2 > units;
  }
};

/// UTF-16 without a mark; `Other` when nothing shows it.
KRTextEncoding guessUtf16(std::string_view bytes) noexcept {
  constexpr size_t kSample = size_t{16} << 10U;
  const std::string_view sample = bytes.substr(0, kSample);
  // Text in UTF-16 has a space, a digit, a comma or a line end somewhere, and so a zero byte.
  if (std::memchr(sample.data(), 0, sample.size()) == nullptr) return KRTextEncoding::Other;
  // A sequence cut at the end of the sample is no mistake.
  std::string_view whole = sample;
  for (int i = 0; i < 3 && whole.size() < bytes.size() && !krIsWellFormed(whole); ++i) whole.remove_suffix(1);
  const bool isUtf8 = krIsWellFormed(whole);
  // Nearly all plain bytes are plain text with a zero byte in it: in UTF-16, half of them would not be plain.
  const auto plain =
      std::count_if(sample.begin(), sample.end(), [](char c) { return isPlain(static_cast<uint8_t>(c)); });
  if (static_cast<size_t>(plain) * 5 >= sample.size() * 4) return KRTextEncoding::Other;
  const Utf16Signs little(sample, true);
  const Utf16Signs big(sample, false);
  if (little.areConvincing(big, isUtf8)) return KRTextEncoding::Utf16LittleEndian;
  if (big.areConvincing(little, isUtf8)) return KRTextEncoding::Utf16BigEndian;
  return KRTextEncoding::Other;
}

std::string decodeUtf16(std::string_view bytes, bool isLittle) {
  KRUtf8Collector collector(bytes.size());
  std::array<char16_t, 1024> units;
  while (bytes.size() >= 2) {
    const size_t count = std::min(bytes.size() / 2, units.size());
    for (size_t i = 0; i < count; ++i) units[i] = unitAt(bytes, 2 * i, isLittle);
    collector.put({units.data(), count});
    bytes.remove_prefix(2 * count);
  }
  if (!bytes.empty()) collector.putMistake();
  return collector.finish().utf8;
}

std::string decodeUtf32(std::string_view bytes, bool isLittle) {
  KRUtf8Collector collector(bytes.size() / 2);
  size_t place = 0;
  for (; place + 3 < bytes.size(); place += 4) {
    uint32_t point = 0;
    for (size_t i = 0; i < 4; ++i) point = (point << 8U) | byteAt(bytes, place + (isLittle ? 3 - i : i));
    if (point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) {
      collector.putMistake();
    } else if (point < 0x10000) {
      const auto unit = static_cast<char16_t>(point);
      collector.put({&unit, 1});
    } else {
      const char16_t units[] = {static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10U)),
                                static_cast<char16_t>(0xDC00 + (point & 0x3FFU))};
      collector.put({units, 2});
    }
  }
  if (place < bytes.size()) collector.putMistake();
  return collector.finish().utf8;
}

std::string decodeWide(std::string_view bytes, KRTextEncoding encoding) {
  switch (encoding) {
    case KRTextEncoding::Utf16LittleEndian:
    case KRTextEncoding::Utf16BigEndian:
      return decodeUtf16(bytes, encoding == KRTextEncoding::Utf16LittleEndian);
    case KRTextEncoding::Utf32LittleEndian:
    case KRTextEncoding::Utf32BigEndian:
      return decodeUtf32(bytes, encoding == KRTextEncoding::Utf32LittleEndian);
    case KRTextEncoding::Utf8:
    case KRTextEncoding::Other:
      break;
  }
  return krWellFormed(bytes);
}

/// Whether text that is not quite UTF-8 is UTF-8 with damage: far more of its characters are right than wrong. In other
/// charsets bytes hardly ever fall into the pattern.
bool isDamagedUtf8(std::string_view bytes) {
  constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  constexpr size_t kPiece = size_t{64} << 10U;
  constexpr std::ptrdiff_t kEnough = 1000;
  std::ptrdiff_t right = 0;
  std::ptrdiff_t wrong = 0;
  // Piece by piece; a character cut at the end of one makes hardly a difference.
  for (; !bytes.empty() && right + wrong < kEnough; bytes.remove_prefix(std::min(kPiece, bytes.size()))) {
    const std::string repaired = krWellFormed(bytes.substr(0, kPiece));
    right += std::count_if(repaired.begin(), repaired.end(), [](char c) { return (c & 0xC0) == 0xC0; });
    for (size_t place = 0; (place = repaired.find(kReplacement, place)) != std::string::npos; ++place) {
      --right;
      ++wrong;
    }
  }
  return right >= 3 && right > 4 * wrong;
}

/// The detection knows no Mac OS Roman and takes it for another western charset. Where it is a fallback, the reading
/// with fewer misplaced characters is taken.
void preferMacintosh(KRDetectedText& detected, std::string_view bytes, const KRDecodeOptions& options) {
  constexpr std::string_view kMacintosh = "macintosh";
  if (std::find(options.fallbacks.begin(), options.fallbacks.end(), kMacintosh) == options.fallbacks.end()) return;
  if (!krIsWesternCharset(detected.charset)) return;
  auto other = krConvertFromCharset(bytes, kMacintosh);
  if (!other || krMisplacedCharacters(other->utf8) >= krMisplacedCharacters(detected.text.utf8)) return;
  detected = {std::string(kMacintosh), std::move(*other)};
}

std::string withoutMark(std::string text) {
  if (text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
  return text;
}

}  // namespace

KRDecodeOptions KRDecodeOptions::westernFallback() {
  static constexpr std::array<std::string_view, 1> kCharsets = {"windows-1252"};
  KRDecodeOptions options;
  options.fallbacks = kCharsets;
  return options;
}

KRDecodeOptions KRDecodeOptions::plainFallbacks() {
  static constexpr std::array<std::string_view, 2> kCharsets = {"US-ASCII", "macintosh"};
  KRDecodeOptions options;
  options.fallbacks = kCharsets;
  return options;
}

size_t krMarkSize(std::string_view bytes, KRTextEncoding encoding) noexcept {
  const std::string_view mark = markOf(encoding);
  return bytes.starts_with(mark) ? mark.size() : 0;
}

KRTextEncoding krGuessEncoding(std::string_view bytes) noexcept {
  if (bytes.empty()) return KRTextEncoding::Utf8;
  // The short mark begins the long one; text of whole four-byte units that begins with a zero character is rarer than
  // UTF-32.
  if (bytes.starts_with(kUtf32LittleMark) && bytes.size() % 4 == 0) return KRTextEncoding::Utf32LittleEndian;
  for (const KRTextEncoding encoding : {KRTextEncoding::Utf8, KRTextEncoding::Utf16LittleEndian,
                                        KRTextEncoding::Utf16BigEndian, KRTextEncoding::Utf32BigEndian}) {
    if (krMarkSize(bytes, encoding) != 0) return encoding;
  }
  const KRTextEncoding wide = guessUtf16(bytes);
  if (wide != KRTextEncoding::Other) return wide;
  return krIsWellFormed(bytes) ? KRTextEncoding::Utf8 : KRTextEncoding::Other;
}

std::optional<KRDecodedText> krDecodeText(std::string_view bytes, const KRDecodeOptions& options) {
  KRDecodedText decoded;
  decoded.encoding = krGuessEncoding(bytes);
  if (decoded.encoding != KRTextEncoding::Other) {
    const size_t mark = krMarkSize(bytes, decoded.encoding);
    decoded.hadMark = mark != 0;
    decoded.charset = charsetOf(decoded.encoding);
    decoded.utf8 = decoded.encoding == KRTextEncoding::Utf8 && mark == 0
                       ? std::string(bytes)
                       : decodeWide(bytes.substr(mark), decoded.encoding);
    return decoded;
  }
  if (isDamagedUtf8(bytes)) {
    decoded.encoding = KRTextEncoding::Utf8;
    decoded.utf8 = krWellFormed(bytes);
    return decoded;
  }
  if (options.detectsCharset) {
    auto detected = krDetectCharset(bytes);
    if (detected) preferMacintosh(*detected, bytes, options);
    if (detected) {
      decoded.charset = std::move(detected->charset);
      decoded.utf8 = std::move(detected->text.utf8);
      return decoded;
    }
  }
  for (const std::string_view charset : options.fallbacks) {
    auto text = krConvertFromCharset(bytes, charset);
    if (!text || text->mistakes != 0) continue;
    decoded.charset = charset;
    decoded.utf8 = std::move(text->utf8);
    return decoded;
  }
  return std::nullopt;
}

std::optional<std::string> krDecodeWith(std::string_view bytes, KRText charsetName) {
  const std::string charset = krUsualCharset(charsetName.view());
  auto text = krConvertFromCharset(bytes, charset);
  if (!text) return std::nullopt;
  return withoutMark(std::move(text->utf8));
}

std::optional<std::string> krEncodeWith(KRText text, KRText charsetName) {
  return text.isNothing() ? std::nullopt : krConvertToCharset(text.view(), charsetName.view());
}
