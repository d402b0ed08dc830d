#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRCardDraft.h"
#include "contacts/vcard/KRVCardLabels.h"
#include "contacts/vcard/KRVCardLines.h"
#include "contacts/vcard/KRVCardNote.h"
#include "contacts/vcard/KRVCardProperty.h"
#include "contacts/vcard/KRVCardValueReader.h"
#include "platform/KRText.h"

/// Turns the lines of one card into the rows of a record. Used for one card after the other; not locked.
///
/// What a line means follows RFC 6350, RFC 2426 and the vCard 2.1 text, and the habits of the programs that write such
/// files: the first value of a single-valued property counts, empty values are none, no text is trimmed.
class KRVCardParser {
 public:
  KRVCardParser() = default;
  KRVCardParser(const KRVCardParser&) = delete;
  KRVCardParser& operator=(const KRVCardParser&) = delete;

  /// Starts a card at `card`, in a text that ends at `end`.
  void start(const char* card, const char* end);
  /// Takes one line, anything but the card's own BEGIN and END.
  void take(const KRVCardLine& line);
  /// Ends the card, whose bytes are `card`, and gives its record.
  KRCardRecord finish(std::string_view card);

  /// Whether the card is that of a group, known after its last line.
  bool isGroup() const noexcept { return isGroup_; }
  /// What the lines so far have made.
  const KRCardDraft& draft() const noexcept { return draft_; }
  /// What was passed over in this card, with the lines' numbers.
  struct Passed {
    KRVCardReason reason;
    size_t line;
  };
  const std::vector<Passed>& passed() const noexcept { return passed_; }

  /// Starts another document: what was guessed about the last one's character set does not hold. `charset` is what is
  /// known about this one's already, when it is read from its midst.
  void startDocument(std::string_view charset = {}) { values_.startDocument(charset); }
  const std::string& documentCharset() const noexcept { return values_.documentCharset(); }

 private:
  using Place = KRCardDraft::Place;
  using Entry = KRCardDraft::Entry;

  Place decode(std::string_view raw) { return values_.decode(raw); }
  const std::vector<Place>& split(char separator) { return values_.split(separator); }

  void takeName();
  std::vector<Place> unpackedName(const Place& whole) const;
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
  KRCardSlabs cards_;
  KRVCardValueReader values_{draft_};
  const KRVCardLine* line_ = nullptr;

  bool isGroup_ = false;
  bool isOrganisation_ = false;
  bool hasName_ = false;
  Place formattedName_;
  Place company_;
  Place department_;
  std::array<Place, 3> sound_;
  KRVCardLabels labels_;
  std::vector<Passed> passed_;
};
