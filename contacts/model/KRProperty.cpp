#include "contacts/model/KRProperty.h"

#include <array>

#include "platform/KRSupportFuction.h"

/// The table of the standard properties; a struct, so that it may make descriptors.
struct KRPropertyTable {
  static const std::array<KRProperty, kKROrdinalCount> rows;
};

#define KR_ROW(ordinal, constant, type) \
  { KROrdinal::ordinal, constant, #constant##_kr, KRValueType::type, 0 }
#define KR_MULTIPLE_ROW(ordinal, constant, type) \
  { KROrdinal::ordinal, constant, #constant##_kr, KRValueType::Multiple, KRValueType::type }

constexpr std::array<KRProperty, kKROrdinalCount> KRPropertyTable::rows = {{
    KR_ROW(Name, KRProPertyName, PersonName),
    KR_ROW(PhoneticFirstName, KRProPertyPhoneticFirstName, Text),
    KR_ROW(PhoneticMiddleName, KRProPertyPhoneticMiddleName, Text),
    KR_ROW(PhoneticLastName, KRProPertyPhoneticLastName, Text),
    KR_ROW(Nickname, KRProPertyNickname, Text),
    KR_MULTIPLE_ROW(Phone, KRProPertyPhone, Phone),
    KR_MULTIPLE_ROW(Email, KRProPertyEmail, Email),
    KR_MULTIPLE_ROW(Address, KRProPertyAddress, Address),
    KR_MULTIPLE_ROW(InstantMessage, KRProPertyInstantMessage, InstantMessage),
    KR_ROW(Company, KRProPertyCompany, Text),
    KR_ROW(Department, KRProPertyDepartment, Text),
    KR_ROW(JobTitle, KRProPertyJobTitle, Text),
    KR_ROW(Role, KRProPertyRole, Text),
    KR_ROW(Title, KRProPertyTitle, Text),
    KR_ROW(Suffix, KRProPertySuffix, Text),
    KR_ROW(Birthday, KRProPertyBirthday, Date),
    KR_MULTIPLE_ROW(URL, KRProPertyURL, Text),
    KR_MULTIPLE_ROW(OtherDate, KRProPertyOtherDate, Date),
    KR_MULTIPLE_ROW(RelatedName, KRProPertyRelatedName, Text),
    KR_MULTIPLE_ROW(SocialProfile, KRProPertySocialProfile, Text),
    KR_ROW(Note, KRProPertyNote, Text),
    KR_ROW(Tags, KRProPertyTags, TextList),
    KR_ROW(Thumbnail, KRProPertyThumbnail, Data),
    KR_ROW(IsOrganization, KRProPertyIsOrganization, Text),
    KR_MULTIPLE_ROW(Other, KRProPertyOther, Text),
}};

#undef KR_ROW
#undef KR_MULTIPLE_ROW

namespace {

constexpr size_t kSlots = 64;
constexpr uint8_t kFree = 0xFF;

constexpr size_t slotOf(std::string_view name, uint32_t seed) noexcept {
  // Length and three characters tell the names of the table apart; a seed is sought that spreads them.
  const auto at = [&](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(name[i])); };
  const uint32_t mixed = static_cast<uint32_t>(name.size()) * 0x9E3779B1U + at(0) * 0x85EBCA77U +
                         at(name.size() / 2) * 0xC2B2AE3DU + at(name.size() - 1) * 0x27D4EB2FU;
  return ((mixed ^ (mixed >> 15U)) * seed) >> 26U;
}

struct Slots {
  uint32_t seed = 0;
  std::array<uint8_t, kSlots> rows{};
};

/// A table in which every standard name has a slot of its own, so that a look-up is one step.
consteval Slots makeSlots() {
  for (uint32_t seed = 1;; seed += 2) {
    Slots slots;
    slots.seed = seed;
    slots.rows.fill(kFree);
    bool fits = true;
    for (size_t row = 0; fits && row < kKROrdinalCount; ++row) {
      uint8_t& slot = slots.rows[slotOf(KRPropertyTable::rows[row].name().view(), seed)];
      fits = slot == kFree;
      slot = static_cast<uint8_t>(row);
    }
    if (fits) return slots;
  }
}

constexpr Slots kSlotTable = makeSlots();

consteval bool rowsStandInTheirPlaces() {
  for (size_t row = 0; row < kKROrdinalCount; ++row) {
    if (KRPropertyTable::rows[row].ordinal() != static_cast<KROrdinal>(row)) return false;
  }
  return true;
}
static_assert(rowsStandInTheirPlaces());

}  // namespace

const std::vector<const KRProperty*>& KRProperty::StandardPropertyArray() {
  static const auto* const all = [] {
    auto* list = new std::vector<const KRProperty*>;
    list->reserve(kKROrdinalCount);
    for (const KRProperty& property : KRPropertyTable::rows) list->push_back(&property);
    return list;
  }();
  return *all;
}

const KRProperty* KRProperty::propertyWithName(KRText name) {
  if (name.isEmpty()) return nullptr;
  const uint8_t row = kSlotTable.rows[slotOf(name.view(), kSlotTable.seed)];
  if (row == kFree) return nullptr;
  const KRProperty& property = KRPropertyTable::rows[row];
  return property.name_.view() == name.view() ? &property : nullptr;
}

const KRProperty* KRProperty::propertyWithOrdinal(KROrdinal ordinal) {
  return &KRPropertyTable::rows[static_cast<size_t>(ordinal)];
}

KRString KRProperty::displayName() const {
  return KRSupportFuction::loadString(krConcat({"KRProperty_", name_}));
}
