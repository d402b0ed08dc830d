#pragma once

#include <string>
#include <string_view>

/// Reads the bytes of values as text. Most are UTF-8 already; the others are in the character set that their line
/// names, or else in the one that the whole document seems to be in. One for each document, not locked.
class KRVCardCharset {
 public:
  /// Starts another document, or goes on with one whose character set was guessed elsewhere.
  void reset(std::string_view documentCharset) { documentCharset_ = documentCharset; }

  /// Whether bytes of a line with that CHARSET must go through `decode`. Not when they are well-formed UTF-8 and the
  /// line does not say otherwise.
  static bool needsDecoding(std::string_view bytes, std::string_view charset) noexcept;
  /// The bytes as well-formed UTF-8. `document` is the text around them, from which the document's character set is
  /// guessed once, should it matter.
  std::string decode(std::string_view bytes, std::string_view charset, std::string_view document);

  /// The character set guessed for the document, or empty while none was needed.
  const std::string& documentCharset() const noexcept { return documentCharset_; }

 private:
  void guess(std::string_view document, std::string_view bytes);

  std::string documentCharset_;
};
