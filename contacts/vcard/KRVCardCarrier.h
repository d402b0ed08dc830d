#pragma once

#include <optional>
#include <set>
#include <string>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardComposer.h"
#include "contacts/vcard/KRVCardLineWriter.h"
#include "contacts/vcard/KRVCardOutline.h"

/// Carries what a record's card holds beyond the contact model over to a card of another version.
class KRVCardCarrier {
 public:
  /// The person's card must live as long as the carrier. A person without one has nothing to carry.
  KRVCardCarrier(const ABPerson& person, KRVCardVersion version);

  /// The lines that the model does not show, as the version has them; none that it cannot hold.
  KRVCardComposer::Lines lines() const;
  /// Whether a line among them is in that group (lower case).
  const std::set<std::string>& groups() const noexcept { return groups_; }
  /// What belongs to the line that makes a row, but not to the model. Empty when the property has another value now.
  KRVCardRemainder remainder(uint8_t what, size_t index, size_t shownParts) const;
  KRVCardRemainder remainder(KROrdinal what, size_t index, size_t shownParts) const {
    return remainder(static_cast<uint8_t>(what), index, shownParts);
  }
  /// The same for the line of the name: the first of its parts' lines that has any.
  KRVCardRemainder nameRemainder(size_t shownParts) const;
  /// The text of the card's FN line as it is to be written, or nothing when the person's name is another one now.
  std::optional<std::string> formattedName() const;

 private:
  bool isCarried(const KRVCardOutline::Line& line) const;
  bool isBare(KROrdinal property) const;
  std::optional<KRVCardNewLine> carried(const KRVCardOutline::Line& line) const;
  bool carryPicture(const KRVCardOutline::Line& line, KRVCardNewLine& made) const;
  std::string converted(const KRVCardOutline::Line& line) const;
  std::string parameters(const KRVCardOutline::Line& line) const;

  const ABPerson& person_;
  KRVCardVersion version_;
  KRVCardOutline outline_;
  std::set<std::string> groups_;
};
