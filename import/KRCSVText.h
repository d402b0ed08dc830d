#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/KRBuffer.h"
#include "platform/KRResult.h"
#include "platform/KRText.h"

/// The text of a delimited file as well-formed UTF-8, without its byte-order mark: a marked encoding, UTF-16, UTF-8,
/// what ICU recognises with a confidence of at least 50 of 100, else 7-bit text, else Mac OS Roman. Moved, never
/// copied.
///
/// The whole file decides about its encoding, as many begin with plain English headings.
class KRCSVText {
 public:
  /// What is taken when nothing is sure.
  enum class Fallback : uint8_t {
    /// 7-bit text, else Mac OS Roman.
    Plain,
    /// windows-1252, in which desktop programs write, else Mac OS Roman: a file that is too short to be recognised is
    /// much likelier to be theirs.
    Western,
  };

  /// Reads the file; the failure is one of the file system's.
  static KRResult<KRCSVText> read(KRText path, Fallback fallback = Fallback::Plain);
  /// The text of bytes that are at hand.
  static KRCSVText of(KRBuffer bytes, Fallback fallback = Fallback::Plain);

  /// Valid as long as this object.
  std::string_view view() const noexcept;
  /// The name of the character set in which the file was read, such as "UTF-8" or "windows-1252".
  const std::string& charset() const noexcept { return charset_; }

 private:
  KRBuffer bytes_;
  size_t mark_ = 0;
  std::string decoded_;
  bool isDecoded_ = false;
  std::string charset_ = "UTF-8";
};
