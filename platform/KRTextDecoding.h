#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/KRText.h"

/// How bytes spell text, as far as it shows in the bytes themselves.
enum class KRTextEncoding : uint8_t {
  /// Well-formed UTF-8, plain ASCII and no bytes at all included; or bytes behind a UTF-8 mark.
  Utf8,
  Utf16LittleEndian,
  Utf16BigEndian,
  Utf32LittleEndian,
  Utf32BigEndian,
  /// One of the many others, which must be guessed from the text or told from outside.
  Other,
};

/// Text from outside, made well-formed UTF-8.
struct KRDecodedText {
  /// The text without its mark; what cannot be read stands as U+FFFD.
  std::string utf8;
  KRTextEncoding encoding = KRTextEncoding::Utf8;
  /// Whether the bytes began with a byte-order mark.
  bool hadMark = false;
  /// The name of the charset, "UTF-8" or "windows-1252", by which `krEncodeWith` writes the text back.
  std::string charset = "UTF-8";
};

/// What to do about text that shows no encoding of its own.
struct KRDecodeOptions {
  /// Whether to guess the charset from the text, and to believe a guess that is at least half sure. Mac OS Roman, which
  /// cannot be guessed, is preferred to a western guess when it is a fallback and reads more like words.
  bool detectsCharset = true;
  /// Charsets to try in order when nothing else is sure; the first in which every byte has a meaning is taken. When
  /// none fits, there is no text.
  std::span<const std::string_view> fallbacks;

  /// For vCards and everything else without a rule of its own: windows-1252, in which every byte has a meaning.
  static KRDecodeOptions westernFallback();
  /// For delimited text files: 7-bit text, then Mac OS Roman.
  static KRDecodeOptions plainFallbacks();
};

/// Tells how the bytes spell text, without copying them, so that UTF-8 can be used where it stands: by the byte-order
/// mark, else UTF-16 without a mark by where its zero bytes and line ends lie, else UTF-8 when all bytes are
/// well-formed (one pass at memory speed). Thread-safe, as is everything here.
KRTextEncoding krGuessEncoding(std::string_view bytes) noexcept;

/// How many bytes of a byte-order mark of this encoding stand at the start: 0 to 4.
size_t krMarkSize(std::string_view bytes, KRTextEncoding encoding) noexcept;

/// Reads text of an encoding that is not known: as `krGuessEncoding` tells, else as `options` say. Zero bytes inside
/// the text stay. Nothing when no fallback fits.
std::optional<KRDecodedText> krDecodeText(std::string_view bytes, const KRDecodeOptions& options);

/// Reads text of a charset that is known by name: any IANA or usual name in any case ("UTF-8", "Shift_JIS",
/// "MACINTOSH"). A name that stands for a smaller set than programs mean by it is read as the larger one (ISO-8859-1 as
/// windows-1252, GB2312 as GB18030). A mark is left out. Nothing for an unknown name or none.
std::optional<std::string> krDecodeWith(std::string_view bytes, KRText charsetName);

/// Writes text in a charset known by name, exactly that one, without a mark except where the charset itself demands one
/// ("UTF-16", "UTF-32"). Nothing for an unknown name, for no text, and for text that the charset cannot hold.
std::optional<std::string> krEncodeWith(KRText text, KRText charsetName);
