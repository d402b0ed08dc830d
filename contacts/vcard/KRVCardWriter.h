#pragma once

#include <string>
#include <string_view>

#include "contacts/model/IKRPerson.h"
#include "contacts/vcard/KRVCardVersion.h"
#include "platform/KRText.h"

/// How the lines of a file end and which character set they are in.
struct KRVCardLineStyle {
  std::string_view lineEnd = "\r\n";
  /// By a name that `krEncodeWith` knows. What it cannot hold is written as quoted-printable UTF-8.
  std::string_view charset = "UTF-8";
};

/// Writes whole cards of any kind of person. What the reader makes of such a card shows the same as the person: every
/// standard property, labels, main entries, dates without a year, the country of an address as written and its code.
///
/// UTF-8 without a mark and CRLF behind each line unless asked otherwise, lines of at most 75 bytes; a fold never cuts
/// a character. Version 2.1 has quoted-printable values where they are not short ASCII. Of a person read from a card,
/// the lines that the contact model does not show are carried along where the version can hold them.
///
/// What no card can hold is left out or made alike: empty texts and entries, a label without a name, a flag of "NO",
/// years 0 and 1604 (they stand for no year), fields of an address beyond the standard ones. Line breaks of any kind
/// come back as line feeds.
///
/// Has no state but the version; any thread, as far as the persons allow.
class KRVCardWriter {
 public:
  explicit KRVCardWriter(KRVCardVersion version, const KRVCardLineStyle& style = {}) noexcept
      : version_(version), style_(style) {}

  KRVCardVersion version() const noexcept { return version_; }

  /// Appends the person's card to `card`, from BEGIN to END with its line end. `UID` is the identifier to be written;
  /// nothing means the person's own, and "" none.
  void write(const IKRPerson& person, std::string& card, KRText UID = {}) const;
  /// The person's card alone.
  std::string card(const IKRPerson& person, KRText UID = {}) const;

 private:
  KRVCardVersion version_;
  KRVCardLineStyle style_;
};
