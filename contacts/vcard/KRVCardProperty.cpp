#include "contacts/vcard/KRVCardProperty.h"

#include <array>
#include <iterator>

namespace {

using M = KRVCardMeaning;
using O = KROrdinal;

constexpr KRVCardProperty kProperties[] = {
    {"BEGIN", M::Begin, O::Other, ""},
    {"END", M::End, O::Other, ""},
    {"VERSION", M::Version, O::Other, ""},
    {"FN", M::FormattedName, O::Name, ""},
    {"N", M::Name, O::Name, ""},
    {"ORG", M::Organisation, O::Company, ""},
    {"NICKNAME", M::FirstText, O::Nickname, ""},
    {"X-NICKNAME", M::FirstText, O::Nickname, ""},
    {"NOTE", M::FirstText, O::Note, ""},
    {"TITLE", M::FirstText, O::JobTitle, ""},
    {"ROLE", M::FirstText, O::Role, ""},
    {"X-PHONETIC-FIRST-NAME", M::FirstText, O::PhoneticFirstName, ""},
    {"X-PHONETIC-MIDDLE-NAME", M::FirstText, O::PhoneticMiddleName, ""},
    {"X-PHONETIC-LAST-NAME", M::FirstText, O::PhoneticLastName, ""},
    {"CATEGORIES", M::Tags, O::Tags, ""},
    {"BDAY", M::Birthday, O::Birthday, ""},
    {"TEL", M::Phone, O::Phone, ""},
    {"EMAIL", M::Email, O::Email, ""},
    {"ADR", M::Address, O::Address, ""},
    {"IMPP", M::Account, O::InstantMessage, ""},
    {"X-AIM", M::ServiceAccount, O::InstantMessage, "aim"},
    {"X-ICQ", M::ServiceAccount, O::InstantMessage, "icq"},
    {"X-JABBER", M::ServiceAccount, O::InstantMessage, "xmpp"},
    {"X-MSN", M::ServiceAccount, O::InstantMessage, "msnim"},
    {"X-YAHOO", M::ServiceAccount, O::InstantMessage, "ymsgr"},
    {"X-SKYPE", M::ServiceAccount, O::InstantMessage, "skype"},
    {"X-SKYPE-USERNAME", M::ServiceAccount, O::InstantMessage, "skype"},
    {"X-GTALK", M::ServiceAccount, O::InstantMessage, "gtalk"},
    {"X-GOOGLE-TALK", M::ServiceAccount, O::InstantMessage, "gtalk"},
    {"X-QQ", M::ServiceAccount, O::InstantMessage, "qq"},
    {"X-GADUGADU", M::ServiceAccount, O::InstantMessage, "gadu-gadu"},
    {"X-GROUPWISE", M::ServiceAccount, O::InstantMessage, "groupwise"},
    {"X-MATRIX", M::ServiceAccount, O::InstantMessage, "matrix"},
    {"X-TELEGRAM", M::ServiceAccount, O::InstantMessage, "telegram"},
    {"X-WHATSAPP", M::ServiceAccount, O::InstantMessage, "whatsapp"},
    {"X-FACEBOOK", M::ServiceAccount, O::InstantMessage, "facebook"},
    {"PHOTO", M::Photo, O::Thumbnail, ""},
    {"URL", M::TextEntry, O::URL, ""},
    {"X-SOCIALPROFILE", M::TextEntry, O::SocialProfile, ""},
    {"SOCIALPROFILE", M::TextEntry, O::SocialProfile, ""},
    {"X-TWITTER", M::TextEntry, O::SocialProfile, "twitter"},
    {"RELATED", M::TextEntry, O::RelatedName, ""},
    {"X-ABRELATEDNAMES", M::TextEntry, O::RelatedName, ""},
    {"X-SPOUSE", M::TextEntry, O::RelatedName, "spouse"},
    {"X-EVOLUTION-SPOUSE", M::TextEntry, O::RelatedName, "spouse"},
    {"X-KADDRESSBOOK-X-SPOUSESNAME", M::TextEntry, O::RelatedName, "spouse"},
    {"X-MS-SPOUSE", M::TextEntry, O::RelatedName, "spouse"},
    {"X-MANAGER", M::TextEntry, O::RelatedName, "manager"},
    {"X-EVOLUTION-MANAGER", M::TextEntry, O::RelatedName, "manager"},
    {"X-KADDRESSBOOK-X-MANAGERSNAME", M::TextEntry, O::RelatedName, "manager"},
    {"X-MS-MANAGER", M::TextEntry, O::RelatedName, "manager"},
    {"X-ASSISTANT", M::TextEntry, O::RelatedName, "assistant"},
    {"X-EVOLUTION-ASSISTANT", M::TextEntry, O::RelatedName, "assistant"},
    {"X-KADDRESSBOOK-X-ASSISTANTSNAME", M::TextEntry, O::RelatedName, "assistant"},
    {"X-MS-ASSISTANT", M::TextEntry, O::RelatedName, "assistant"},
    {"X-ABDATE", M::DateEntry, O::OtherDate, ""},
    {"ANNIVERSARY", M::DateEntry, O::OtherDate, "anniversary"},
    {"X-ANNIVERSARY", M::DateEntry, O::OtherDate, "anniversary"},
    {"X-EVOLUTION-ANNIVERSARY", M::DateEntry, O::OtherDate, "anniversary"},
    {"X-KADDRESSBOOK-X-ANNIVERSARY", M::DateEntry, O::OtherDate, "anniversary"},
    {"X-MS-ANNIVERSARY", M::DateEntry, O::OtherDate, "anniversary"},
    {"UID", M::UID, O::Other, ""},
    {"KIND", M::Kind, O::Other, ""},
    {"X-ADDRESSBOOKSERVER-KIND", M::Kind, O::Other, ""},
    {"X-ABSHOWAS", M::ShowAs, O::IsOrganization, ""},
    {"X-ABLABEL", M::GroupLabel, O::Other, ""},
    {"X-ABADR", M::GroupCountryCode, O::Address, ""},
    {"AGENT", M::Agent, O::Other, ""},
    {"X-ANDROID-CUSTOM", M::AndroidCustom, O::Other, ""},
    {"SOUND", M::Sound, O::Other, ""},
};

constexpr KRVCardProperty kUnknown{};
constexpr size_t kSlots = 512;
constexpr size_t kLongestName = 32;

/// The same for both cases of a letter; names differ enough in length, start and end.
constexpr size_t slotOf(std::string_view name) noexcept {
  uint32_t hash = static_cast<uint32_t>(name.size());
  const size_t step = name.size() > 8 ? 3 : 1;
  for (size_t i = 0; i < name.size(); i += step) hash = hash * 31 + (static_cast<unsigned char>(name[i]) & 0xDFU);
  hash = hash * 31 + (static_cast<unsigned char>(name[name.size() - 1]) & 0xDFU);
  return (hash * 0x9E3779B1U) >> 23U;
}

/// Places in `kProperties`, counted from 1, by hash with open addressing.
constexpr std::array<uint8_t, kSlots> kIndex = [] {
  std::array<uint8_t, kSlots> index{};
  for (size_t i = 0; i < std::size(kProperties); ++i) {
    size_t slot = slotOf(kProperties[i].name);
    while (index[slot] != 0) slot = (slot + 1) % kSlots;
    index[slot] = static_cast<uint8_t>(i + 1);
  }
  return index;
}();

/// Whether `name` is that upper-case name, in any case.
bool isName(std::string_view upper, std::string_view name) noexcept {
  if (upper.size() != name.size()) return false;
  for (size_t i = 0; i < upper.size(); ++i) {
    const char c = name[i];
    if ((c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c) != upper[i]) return false;
  }
  return true;
}

}  // namespace

const KRVCardProperty& krVCardProperty(std::string_view name) noexcept {
  if (name.empty() || name.size() > kLongestName) return kUnknown;
  for (size_t slot = slotOf(name); kIndex[slot] != 0; slot = (slot + 1) % kSlots) {
    const KRVCardProperty& property = kProperties[kIndex[slot] - 1];
    if (isName(property.name, name)) return property;
  }
  return kUnknown;
}
