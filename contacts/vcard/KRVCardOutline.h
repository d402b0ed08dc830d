#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRVCardLines.h"
#include "contacts/vcard/KRVCardParameters.h"
#include "contacts/vcard/KRVCardProperty.h"
#include "contacts/vcard/KRVCardVersion.h"

/// What stands before a colon, told apart by what has a say in it. Each text is as written, every parameter with its
/// leading ";".
struct KRVCardParameterParts {
  /// What makes the label, without the mark of the main entry.
  std::string types;
  /// What marks the main entry or gives a rank.
  std::string ranks;
  /// What says nothing about encoding, kind of value, label or rank.
  std::string others;
};
KRVCardParameterParts krPartParameters(std::string_view parameters);

/// Where the parts of a value begin that stand behind the first `count`, the ";" before them included; the end of the
/// text when there are none.
size_t krFurtherParts(std::string_view value, size_t count) noexcept;

/// Which line of a card gives which value of the contact, for those who write the card again. Holds copies of names and
/// values, and places in the card.
class KRVCardOutline {
 public:
  /// A row of the record that the line makes: what it is about (`KROrdinal` or `KRCardPart`), and which of that kind.
  struct Made {
    uint8_t what;
    size_t index;
  };
  struct Line {
    /// In the card's bytes, with the line end, and the empty line that some versions have behind base64.
    size_t offset = 0;
    size_t size = 0;
    KRVCardMeaning meaning = KRVCardMeaning::Unknown;
    KROrdinal ordinal = KROrdinal::Other;
    std::string group;
    std::string name;
    std::string parameters;
    /// Folds and soft breaks undone, as written otherwise.
    std::string value;
    KRVCardParameters::Encoding encoding = KRVCardParameters::None;
    std::string charset;
    uint8_t preference = 0;
    std::vector<Made> made;

    bool makes(uint8_t what) const noexcept;
    bool makes(KROrdinal what) const noexcept { return makes(static_cast<uint8_t>(what)); }
  };

  explicit KRVCardOutline(std::string_view card);

  /// All lines but those inside of cards inside the card, which belong to the AGENT line before them.
  const std::vector<Line>& lines() const noexcept { return lines_; }
  /// As the card says; 3.0 where it does not.
  KRVCardVersion version() const noexcept { return version_; }
  /// How the card's first line ends.
  std::string_view lineEnd() const noexcept { return lineEnd_; }
  /// Where the END line begins, or the end of the card.
  size_t endOffset() const noexcept { return endOffset_; }

  /// The line that makes that row, or null.
  const Line* lineOf(KROrdinal what, size_t index) const noexcept { return lineOf(static_cast<uint8_t>(what), index); }
  const Line* lineOf(uint8_t what, size_t index) const noexcept;
  /// The first line of that meaning, or null.
  const Line* firstOf(KRVCardMeaning meaning) const noexcept;
  /// Whether another line than the given one, labels and country codes aside, is in its group.
  bool sharesGroup(const Line& line) const noexcept;

  /// The line's value as UTF-8: quoted-printable and character set undone, escapes not.
  std::string decodedValue(const Line& line) const;

 private:
  void add(const KRVCardLine& line, std::string_view card);

  std::string_view card_;
  std::vector<Line> lines_;
  /// The place of the line that makes each row, by what it is about: asked once for each of a contact's values, which
  /// may be many.
  std::array<std::vector<size_t>, 32> makers_;
  KRVCardVersion version_ = KRVCardVersion::V30;
  std::string lineEnd_ = "\r\n";
  size_t endOffset_ = 0;
};
