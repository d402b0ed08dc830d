#include "contacts/vcard/KRVCardWriter.h"

#include <optional>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardCarrier.h"
#include "contacts/vcard/KRVCardComposer.h"

namespace {

using O = KROrdinal;

/// The identifier that all persons share who are made without one: it names nobody.
constexpr std::string_view kSharedID = "123";

/// One card while it is written.
class Writing {
 public:
  Writing(const IKRPerson& person, KRVCardVersion version, const KRVCardLineStyle& style, std::string& card)
      : person_(person), version_(version), composer_(version), lines_(version, style), card_(card) {
    const auto* record = dynamic_cast<const ABPerson*>(&person);
    if (record == nullptr || record->card().empty()) return;
    carrier_.emplace(*record, version);
    for (const std::string& group : carrier_->groups()) composer_.takeGroup(group);
    record_ = record;
  }

  void all(KRText UID) {
    put({{}, "BEGIN", {}, "VCARD"});
    put({{}, "VERSION", {}, std::string(krVCardVersionName(version_))});
    if (person_.isOrganization()) put(composer_.organisationMark());
    name();
    for (const O property : {O::PhoneticFirstName, O::PhoneticMiddleName, O::PhoneticLastName, O::Nickname}) {
      text(property);
    }
    organisation();
    text(O::JobTitle);
    text(O::Role);
    for (const O property : {O::Phone, O::Email, O::Address, O::InstantMessage, O::URL}) entries(property);
    birthday();
    for (const O property : {O::OtherDate, O::RelatedName, O::SocialProfile, O::Other}) entries(property);
    tags();
    text(O::Note);
    photo();
    if (!UID.isEmpty()) put(composer_.identifier(UID));
    if (carrier_) {
      for (const KRVCardNewLine& line : carrier_->lines()) put(line);
    }
    card_.append("END:VCARD").append(lines_.lineEnd());
  }

 private:
  void put(const KRVCardNewLine& line) { lines_.append(line, card_); }

  /// What the person's own card has on the line of a value that is still the same.
  KRVCardRemainder remainder(KROrdinal property, size_t index = 0, size_t shownParts = 0) const {
    if (!carrier_ || record_->isChanged(property)) return {};
    return carrier_->remainder(property, index, shownParts);
  }

  void name() {
    constexpr size_t kParts = 5;
    const bool isSame = carrier_ && !record_->isChanged(O::Name);
    put(composer_.name(person_, isSame ? carrier_->nameRemainder(kParts) : KRVCardRemainder()));
    KRVCardNewLine shown = composer_.formattedName(person_);
    if (carrier_) shown.value = carrier_->formattedName().value_or(shown.value);
    put(shown);
  }

  void text(KROrdinal property) {
    KRHold hold;
    const KRText text = person_.readText(property, hold);
    if (!text.isEmpty()) put(composer_.text(property, text, remainder(property)));
  }

  void organisation() {
    constexpr size_t kParts = 2;
    KRHold hold;
    if (person_.readText(O::Company, hold).isEmpty() && person_.readText(O::Department, hold).isEmpty()) return;
    put(composer_.organisation(person_, remainder(O::Company, 0, kParts)));
  }

  void birthday() {
    KRHold hold;
    const KRText date = person_.readText(O::Birthday, hold);
    if (!date.isEmpty()) put(composer_.birthday(date, remainder(O::Birthday)));
  }

  void photo() {
    const KRRef<KRData> image = person_.imageData();
    if (image && !image->bytes().empty()) put(composer_.photo(image->bytes(), remainder(O::Thumbnail)));
  }

  void tags() {
    std::vector<std::string> tags;
    KRHold hold;
    person_.readEntries(O::Tags, hold, [&](const KREntryView& tag) {
      if (!tag.text.isEmpty()) tags.emplace_back(tag.text.view());
      return true;
    });
    if (!tags.empty()) put(composer_.tags(tags));
  }

  void entries(KROrdinal property) {
    const std::optional<size_t> main = KRVCardComposer::mainEntry(person_, property);
    const size_t shownParts = property == O::Address ? kKRAddressFieldCount : 0;
    KRHold hold;
    size_t index = 0;
    person_.readEntries(property, hold, [&](const KREntryView& entry) {
      const bool isMain = main == index;
      for (const KRVCardNewLine& line :
           composer_.entry(property, entry, isMain, remainder(property, index, shownParts))) {
        put(line);
      }
      ++index;
      return true;
    });
  }

  const IKRPerson& person_;
  const ABPerson* record_ = nullptr;
  KRVCardVersion version_;
  KRVCardComposer composer_;
  KRVCardLineWriter lines_;
  std::optional<KRVCardCarrier> carrier_;
  std::string& card_;
};

KRString identifierOf(const IKRPerson& person) {
  const auto* record = dynamic_cast<const ABPerson*>(&person);
  // Not the one that its book gave it: read again, the card gets that one anew.
  const KRString ID = record != nullptr ? record->baseID() : person.ID();
  return ID == kSharedID ? KRString() : ID;
}

}  // namespace

void KRVCardWriter::write(const IKRPerson& person, std::string& card, KRText UID) const {
  const KRString own = UID.isNothing() ? identifierOf(person) : KRString();
  Writing(person, version_, style_, card).all(UID.isNothing() ? own.text() : UID);
}

std::string KRVCardWriter::card(const IKRPerson& person, KRText UID) const {
  std::string text;
  write(person, text, UID);
  return text;
}
