#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRCardDraft.h"
#include "contacts/vcard/KRVCardCharset.h"
#include "contacts/vcard/KRVCardLabels.h"
#include "contacts/vcard/KRVCardLines.h"
#include "contacts/vcard/KRVCardNote.h"
#include "contacts/vcard/KRVCardProperty.h"
#include "contacts/vcard/KRVCardText.h"
#include "platform/KRText.h"

/// Turns the lines of one card into the rows of a record. Used for one card after the other; not locked.
///
/// What a line means follows RFC 6350, RFC 2426 and the vCard 2.1 text, and the habits of the programs that write such
/// files: the first value of a single-valued property counts, empty values are none, no text is trimmed.
class KRVCardParser {
 public:
  /// Starts a card at `card`, in a text that ends at `end`.
  void start(const char* card, const char* end);
  /// Takes one line, anything but the card's own BEGIN and END.
  void take(const KRVCardLine& line);
  /// Ends the card, whose bytes are `card`, and gives its record.
  KRCardRecord finish(std::string_view card);

  /// Whether the card is that of a group, known after its last line.
  bool isGroup() const noexcept { return isGroup_; }
  /// What was passed over in this card, with the lines' numbers.
  struct Passed {
    KRVCardReason reason;
    size_t line;
  };
  const std::vector<Passed>& passed() const noexcept { return passed_; }

  /// Starts another document: what was guessed about the last one's character set does not hold.
  void startDocument() { charset_.reset(); }
  const std::string& documentCharset() const noexcept { return charset_.documentCharset(); }

 private:
  using Place = KRCardDraft::Place;
  using Entry = KRCardDraft::Entry;

  enum class Shape { Text, Structured };
  bool is21();
  /// Whether the line has nothing but ASCII, and no escape sequences.
  bool isASCII() const noexcept;
  KREscapes escapes(Shape shape);
  /// The text of the line's value, or of a part of it that is written the same way.
  Place decode(std::string_view raw, Shape shape = Shape::Text);
  Place undoEscapes(std::string_view text, Shape shape);
  /// The parts of the line's value between separators, each decoded.
  const std::vector<Place>& split(char separator);

  void takeName();
  void takeOrganisation();
  void takeFirstText(KROrdinal ordinal);
  void takeTags();
  void takeAddress();
  void takeUnwrapped(KROrdinal ordinal, std::string_view scheme);
  void takeAccount();
  void takeServiceAccount(std::string_view service);
  void takePhoto();
  bool takeDataURI();
  void takeBirthday();
  void takeTextEntry(KROrdinal ordinal, std::string_view label);
  void takeDateEntry(KROrdinal ordinal, std::string_view label);
  void takeUID();
  void takeKind();
  void takeGiven(bool isLabel);
  void takeAndroidCustom();
  void takeSound();

  Place dateOf(const Place& written);
  Place withoutScheme(const Place& uri, std::string_view scheme);
  Entry addEntry(KROrdinal ordinal, const Place& value);
  void addAccount(const Place& user, std::string_view service);
  void addImage(const Place& text, uint8_t form);
  void pass(KRVCardReason reason) { passed_.push_back({reason, line_->number}); }

  void finishOrganisation();
  void finishName();

  KRCardDraft draft_;
  KRCardSlabs slabs_;
  KRVCardCharset charset_;
  const char* card_ = nullptr;
  const char* end_ = nullptr;
  const KRVCardLine* line_ = nullptr;

  enum class Version : uint8_t { Unknown, V21, Later };
  Version version_ = Version::Unknown;
  bool isGroup_ = false;
  bool isOrganisation_ = false;
  bool hasName_ = false;
  Place formattedName_;
  Place company_;
  Place department_;
  std::array<Place, 3> sound_;
  std::vector<Place> parts_;
  KRVCardLabels labels_;
  std::vector<Passed> passed_;
  /// The line's whole value where it had to be decoded before it could be split.
  std::string whole_;
};
