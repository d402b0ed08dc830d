#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardCharset.h"
#include "platform/KRBuffer.h"

/// The text of a vCard file, cut at every "END:VCARD" in exactly this case, one piece after the other.
///
/// The bytes are held once. UTF-16 and UTF-32 are read as a whole; in other text a line that is not UTF-8 is read in
/// the character set that it names, else in the one that the file seems to be in.
class KRVCardPieces {
 public:
  explicit KRVCardPieces(KRBuffer bytes);

  /// How many pieces there are: one more than ends. The last one is what follows the last end.
  size_t count() const noexcept { return count_; }
  /// What of the file follows the last piece taken.
  std::string_view rest() const noexcept { return rest_; }

  /// Takes the next piece; false when only the last one is left.
  bool next();
  /// The piece taken last, as well-formed UTF-8, with a line feed and its end put back. Valid until the next is taken.
  std::string_view card() const noexcept { return card_; }

 private:
  void appendText(std::string_view piece);

  KRBuffer bytes_;
  /// The text of a file in UTF-16 or UTF-32.
  std::string decoded_;
  std::string_view text_;
  std::string_view rest_;
  size_t count_ = 1;
  std::string card_;
  KRVCardCharset charset_;
};
