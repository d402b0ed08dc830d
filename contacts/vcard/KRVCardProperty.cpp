#include "contacts/vcard/KRVCardProperty.h"

#include <array>
#include <cstring>

#include "contacts/vcard/KRVCardText.h"

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
    {"X-SIP", M::ServiceAccount, O::InstantMessage, "sip"},
    {"X-MS-IMADDRESS", M::Account, O::InstantMessage, ""},
    {"X-FACEBOOK", M::ServiceAccount, O::InstantMessage, "facebook"},
    {"PHOTO", M::Photo, O::Thumbnail, ""},
    {"URL", M::TextEntry, O::URL, ""},
    {"X-EVOLUTION-BLOG-URL", M::TextEntry, O::URL, "blog"},
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
    // Our own, for what no other line holds.
    {"X-KR-OTHER", M::TextEntry, O::Other, ""},
};

constexpr KRVCardProperty kUnknown{};
constexpr size_t kSlots = 512;
constexpr size_t kLongestName = 32;

/// Up to eight bytes of a name as a number, with the bit cleared in which the cases of a letter differ.
constexpr uint64_t kCaseless = 0xDFDFDFDFDFDFDFDFU;

template <class Bytes>
uint64_t load(const char* from) noexcept {
  Bytes bytes;
  std::memcpy(&bytes, from, sizeof bytes);
  return bytes;
}

uint64_t wordAt(std::string_view name, size_t at) noexcept {
  const char* bytes = name.data() + at;
  const size_t size = name.size() - at;
  uint64_t word = 0;
  if (size >= 8) {
    word = load<uint64_t>(bytes);
  } else if (size >= 4) {
    word = load<uint32_t>(bytes) | load<uint32_t>(bytes + size - 4) << (8 * (size - 4));
  } else if (size >= 2) {
    word = load<uint16_t>(bytes) | load<uint16_t>(bytes + size - 2) << (8 * (size - 2));
  } else {
    word = static_cast<unsigned char>(*bytes);
  }
  return word & kCaseless;
}

/// The names of the properties by hash, with open addressing.
class Index {
 public:
  static const Index& shared() {
    static const Index& index = *new Index;
    return index;
  }

  const KRVCardProperty& find(std::string_view name) const noexcept {
    const Key key = keyOf(name);
    for (size_t slot = key.slot(); slots_[slot].property != nullptr; slot = (slot + 1) % kSlots) {
      if (!(slots_[slot].key == key)) continue;
      // A long name has bytes that the key does not hold.
      if (name.size() > 16 && !krEqualsIgnoringCase(slots_[slot].property->name, name)) continue;
      return *slots_[slot].property;
    }
    return kUnknown;
  }

 private:
  struct Key {
    uint64_t first = 0;
    uint64_t last = 0;
    uint64_t size = 0;

    size_t slot() const noexcept {
      return static_cast<size_t>(((first ^ last * 31 ^ size) * 0x9e3779b97f4a7c15U) >> 55U);
    }
    friend bool operator==(const Key&, const Key&) noexcept = default;
  };
  struct Slot {
    Key key;
    const KRVCardProperty* property = nullptr;
  };

  Index() {
    for (const KRVCardProperty& property : kProperties) {
      const Key key = keyOf(property.name);
      size_t slot = key.slot();
      while (slots_[slot].property != nullptr) slot = (slot + 1) % kSlots;
      slots_[slot] = {key, &property};
    }
  }

  /// The start and, of a long name, the end tell nearly all names apart.
  static Key keyOf(std::string_view name) noexcept {
    return {wordAt(name, 0), name.size() > 8 ? wordAt(name, name.size() - 8) : 0, name.size()};
  }

  std::array<Slot, kSlots> slots_;
};

}  // namespace

const KRVCardProperty& krVCardProperty(std::string_view name) noexcept {
  if (name.empty() || name.size() > kLongestName) return kUnknown;
  return Index::shared().find(name);
}
