#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/KRASCII.h"
#include "platform/KRDate.h"

// The encodings inside vCard values, on bytes. Nothing here fails: what is broken is kept as it stands.

/// Without spaces and tabs at both ends.
std::string_view krTrimmedBlanks(std::string_view text) noexcept;

/// Quoted-printable, soft line breaks taken out before: "=41" is "A"; a "=" that starts no such pair stays.
std::string krDecodeQuotedPrintable(std::string_view text);

/// The bytes with a line feed for each line break, as what is written otherwise has it; in quoted-printable they are
/// spelled "=0D=0A".
std::string krWithLineFeeds(std::string bytes);

/// The bytes of base64 text; white space in it is passed over and both alphabets are read. Empty when the text is not
/// base64.
std::string krDecodeBase64(std::string_view text);
/// Whether `krDecodeBase64` gives any bytes, found without making them.
bool krIsBase64(std::string_view text) noexcept;
/// The bytes in base64, padded, without line breaks.
std::string krEncodeBase64(std::string_view bytes);

/// "%41" is "A"; a "%" that starts no such pair stays.
std::string krDecodePercent(std::string_view text);

/// How backslashes are read: as RFC 6350 and RFC 2426 define them, or as version 2.1 does, which has no line breaks
/// written that way and in plain text no doubled backslashes.
enum class KREscapes { Full, Structured21, Text21 };

/// Undoes the escapes in one pass: "\n" is a line feed, "\;" ";", "\\" "\". A backslash before anything else stays.
std::string krUndoEscapes(std::string_view text, KREscapes escapes);

/// Where the next `separator` stands that no backslash precedes, from `from` on, or the size of the text.
size_t krFindUnescaped(std::string_view text, char separator, size_t from) noexcept;

/// The calendar date of a vCard: YYYY-MM-DD, YYYYMMDD, either followed by a time, --MM-DD, --MMDD; also with slashes or
/// dots and with numbers of one digit, as long as the year comes first. The years 0000 and
/// 1604 stand for no year. Nothing for any other text.
std::optional<KRDate> krParseCardDate(std::string_view text) noexcept;
