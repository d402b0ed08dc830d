#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "contacts/vcard/KRVCardVersion.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "platform/KRText.h"

/// A line of a card that is to be written: UTF-8, its value escaped as the version wants it. Only in version 2.1 may
/// the value hold line feeds.
struct KRVCardNewLine {
  /// Before the dot; empty for none.
  std::string group{};
  std::string name{};
  /// As they stand before the colon, each with its leading ";", without those about the encoding.
  std::string parameters{};
  std::string value{};
  /// The value is base64 and says so.
  bool isBase64 = false;
};

/// Puts lines into bytes: folding, quoted-printable, character set. What the character set cannot hold is written as
/// quoted-printable UTF-8. A value that holds "END:VCARD" is written so that no search for it ends the card there.
class KRVCardLineWriter {
 public:
  explicit KRVCardLineWriter(KRVCardVersion version, const KRVCardLineStyle& style = {})
      : version_(version), style_(style) {}

  KRVCardVersion version() const noexcept { return version_; }
  std::string_view lineEnd() const noexcept { return style_.lineEnd; }
  /// Appends the line with its line end.
  void append(const KRVCardNewLine& line, std::string& bytes) const;

 private:
  /// Appends a line that needs nothing but its line end; false when it is none, and nothing is appended then.
  bool appendShort(const KRVCardNewLine& line, std::string& bytes) const;
  bool needsQuotedPrintable(std::string_view head, std::string_view value) const;
  void appendQuotedPrintable(std::string head, std::string_view value, std::string& bytes) const;
  void appendBase64(std::string head, std::string_view value, std::string& bytes) const;
  std::string folded(std::string_view line) const;

  KRVCardVersion version_;
  KRVCardLineStyle style_;
};
