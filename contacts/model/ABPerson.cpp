#include "contacts/model/ABPerson.h"

#include <array>
#include <memory>
#include <string>

#include "contacts/model/KRAddressBook.h"
#include "contacts/model/KRCardIdentity.h"
#include "contacts/model/KRCardValues.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardText.h"
#include "platform/KRCellPool.h"
#include "platform/KRTransliteration.h"

static_assert(kKROrdinalCount + 4 <= 32, "the rows of a record are looked up in a map of 32 bits");

namespace {

constexpr uint8_t row(KROrdinal property) noexcept {
  return static_cast<uint8_t>(property);
}

constexpr uint32_t bit(KROrdinal property) noexcept {
  return 1U << row(property);
}

}  // namespace

struct ABPerson::Side {
  Side() = default;
  Side(const Side&) = delete;
  Side& operator=(const Side&) = delete;
  ~Side() { forgetValues(); }

  void put(KROrdinal property, KRRef<KRStoredValue> value) {
    KRStoredValue* old = values[row(property)].exchange(value.detach(), std::memory_order_acq_rel);
    if (old != nullptr) old->release();
  }

  void forgetValues() {
    for (auto& value : values) {
      if (KRStoredValue* old = value.exchange(nullptr, std::memory_order_acq_rel)) old->release();
    }
    changed = 0;
    further.clear();
  }

  /// Values made from the card, or set. Each holds a reference of its own.
  std::array<std::atomic<KRStoredValue*>, kKROrdinalCount> values{};
  /// A bit for each property that was set or cleared.
  uint32_t changed = 0;
  /// Values under names that are no standard property's.
  std::vector<std::pair<KRString, KRRef<KRStoredValue>>> further;
  KRString ID;
  std::vector<KRRef<KRGroup>> groups;
};

void* ABPerson::operator new(size_t size) {
  static_assert(sizeof(ABPerson) <= KRCellPool::kLine, "a person takes one line of the processor's cache");
  return KRCells<ABPerson>::take(size);
}

void ABPerson::operator delete(void* room, size_t size) noexcept {
  KRCells<ABPerson>::give(room, size);
}

ABPerson::ABPerson() {
  side().ID = KRPersonIDs::newIdentifier();
}

ABPerson::ABPerson(KRCardRecord record) noexcept : record_(std::move(record)) {}

ABPerson::~ABPerson() {
  delete side_.load(std::memory_order_acquire);
}

KRRef<ABPerson> ABPerson::initWithVCardRepresentation(KRText text) {
  return KRVCardReader::readOne(text.view());
}

const KRStringList& ABPerson::properties() {
  static const KRStringList& keys = *new KRStringList([] {
    KRStringList names;
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) names.push_back(property->name());
    for (const KRString& part : {kABFirstNameProperty, kABMiddleNameProperty, kABLastNameProperty}) {
      names.push_back(part);
    }
    return names;
  }());
  return keys;
}

ABPerson::Side& ABPerson::side() const {
  Side* present = side_.load(std::memory_order_acquire);
  if (present != nullptr) return *present;
  auto made = std::make_unique<Side>();
  if (side_.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) return *made.release();
  return *present;
}

void ABPerson::setRecord(KRCardRecord record) {
  KRString base = baseID();
  record_ = std::move(record);
  if (Side* present = side_.load(std::memory_order_acquire)) present->forgetValues();
  if (!(baseID() == base)) side().ID = std::move(base);
}

bool ABPerson::isChanged() const noexcept {
  const Side* side = side_.load(std::memory_order_acquire);
  return side != nullptr && (side->changed != 0 || !side->further.empty());
}

bool ABPerson::isChanged(KROrdinal property) const noexcept {
  const Side* side = side_.load(std::memory_order_acquire);
  return side != nullptr && (side->changed & bit(property)) != 0;
}

bool ABPerson::isStored(KROrdinal property) const noexcept {
  const Side* side = side_.load(std::memory_order_acquire);
  return side != nullptr && ((side->changed & bit(property)) != 0 ||
                             side->values[row(property)].load(std::memory_order_acquire) != nullptr);
}

void ABPerson::setAddressBook(KRAddressBook* book) noexcept {
  book_ = book;
  // Another book makes sure of the identifier anew; the one that did already still keeps it.
  if (book != nullptr && book->IDSerial() != serial_) suffix_.store(0, std::memory_order_release);
}

KRString ABPerson::givenID() const {
  const Side* side = side_.load(std::memory_order_acquire);
  return side == nullptr ? KRString() : side->ID;
}

KRString ABPerson::baseID() const {
  if (KRString given = givenID(); !given.isNothing()) return given;
  const KRCardRow* UID = record_.find(KRCardPart::UID);
  return UID != nullptr ? record_.text(*UID) : krCardIdentity(record_.card());
}

void ABPerson::setID(const KRString& ID) {
  side().ID = ID;
  suffix_.store(0, std::memory_order_release);
}

bool ABPerson::isIDOfCard() const {
  if (book_ != nullptr && !isIDAssigned()) book_->assignIDs(this);
  return suffix_.load(std::memory_order_acquire) < 2 && givenID().isNothing();
}

KRString ABPerson::ID() const {
  if (book_ != nullptr && !isIDAssigned()) book_->assignIDs(this);
  KRString base = baseID();
  const uint32_t suffix = suffix_.load(std::memory_order_acquire);
  if (suffix < 2) return base;
  const std::string number = "-" + std::to_string(suffix);
  return krConcat({base, KRText(std::string_view(number))});
}

KRString ABPerson::addressBookID() const {
  return book_ == nullptr ? KRString() : book_->ID();
}

KRString ABPerson::displayName() const {
  KRHold hold;
  const KRNameView name = readName(hold);
  return name.isPresent ? KRObjectPersonName::displayString(name.first, name.middle, name.last) : ""_kr;
}

KRRef<KRStoredValue> ABPerson::makeValue(const KRProperty& property) const {
  if (property.valueType() != KRValueType::Data) return krRecordValue(record_, property);
  const KRRef<KRData> picture = imageData();
  return picture ? KRRef<KRStoredValue>(krSingleValue(picture, property)) : KRRef<KRStoredValue>();
}

KRRef<KRStoredValue> ABPerson::valueByPropertyName(const KRString& name) const {
  const KRProperty* property = KRProperty::propertyWithName(name);
  Side* present = side_.load(std::memory_order_acquire);
  if (property == nullptr) {
    if (present == nullptr) return {};
    for (const auto& [key, value] : present->further) {
      if (key == name) return value;
    }
    return {};
  }
  if (present != nullptr && (present->changed & bit(property->ordinal())) != 0) {
    return KRRef<KRStoredValue>(present->values[row(property->ordinal())].load(std::memory_order_acquire));
  }
  if (present != nullptr) {
    KRStoredValue* kept = present->values[row(property->ordinal())].load(std::memory_order_acquire);
    if (kept != nullptr) return KRRef<KRStoredValue>(kept);
  }
  KRRef<KRStoredValue> made = makeValue(*property);
  if (!made) return {};
  // Several threads may have made one; all answer the first that was put in place.
  KRStoredValue* expected = nullptr;
  auto& slot = side().values[row(property->ordinal())];
  made->retain();
  if (slot.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel)) return made;
  made->release();
  return KRRef<KRStoredValue>(expected);
}

void ABPerson::setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) {
  if (const KRProperty* property = KRProperty::propertyWithName(byPropertyName)) {
    Side& beside = side();
    beside.changed |= bit(property->ordinal());
    beside.put(property->ordinal(), std::move(value));
    return;
  }
  if (byPropertyName.isNothing()) return;
  auto& further = side().further;
  for (auto each = further.begin(); each != further.end(); ++each) {
    if (!(each->first == byPropertyName)) continue;
    if (value) {
      each->second = std::move(value);
    } else {
      further.erase(each);
    }
    return;
  }
  if (value) further.emplace_back(byPropertyName, std::move(value));
}

std::vector<const KRProperty*> ABPerson::notNullValueProperty() const {
  std::vector<const KRProperty*> held;
  const Side* side = side_.load(std::memory_order_acquire);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KROrdinal ordinal = property->ordinal();
    bool holds = record_.has(row(ordinal));
    if (side != nullptr && (side->changed & bit(ordinal)) != 0) {
      holds = side->values[row(ordinal)].load(std::memory_order_acquire) != nullptr;
    } else if (ordinal == KROrdinal::Name) {
      holds = record_.has(KRCardPart::FirstName) || record_.has(KRCardPart::MiddleName) ||
              record_.has(KRCardPart::LastName);
    }
    if (holds) held.push_back(property);
  }
  return held;
}

std::vector<KRRef<KRGroup>> ABPerson::groups() const {
  return parentGroups();
}

std::vector<KRRef<KRGroup>> ABPerson::parentGroups() const {
  const Side* side = side_.load(std::memory_order_acquire);
  return side == nullptr ? std::vector<KRRef<KRGroup>>() : side->groups;
}

void ABPerson::setParentGroups(std::vector<KRRef<KRGroup>> groups) {
  side().groups = std::move(groups);
}

KRString ABPerson::nameChineesPinyin() const {
  return krMandarinLatinUpper(displayName());
}

KRString ABPerson::showNameChineesPinyin() const {
  return krMandarinLatinUpper(showName());
}

bool ABPerson::isOrganization() const {
  // Nearly all records are persons' and say nothing.
  if (!record_.has(KROrdinal::IsOrganization) && !isStored(KROrdinal::IsOrganization)) return false;
  return IKRPerson::isOrganization();
}

bool ABPerson::hasEntryRows(KROrdinal property) const noexcept {
  if (!record_.has(row(property))) return false;
  const KRProperty& descriptor = *KRProperty::propertyWithOrdinal(property);
  return descriptor.isMultiple() || descriptor.valueType() == KRValueType::TextList;
}

KRText ABPerson::readText(KROrdinal property, KRHold& hold) const {
  if (isStored(property)) return IKRPerson::readText(property, hold);
  const KRCardRow* place = record_.find(row(property));
  if (place == nullptr) return {};
  const int32_t type = KRProperty::propertyWithOrdinal(property)->valueType();
  return type == KRValueType::Text || type == KRValueType::Date ? record_.view(*place) : KRText();
}

KRNameView ABPerson::readName(KRHold& hold) const {
  if (isStored(KROrdinal::Name)) return IKRPerson::readName(hold);
  KRNameView name;
  // Parts are the first rows.
  for (const KRCardRow& part : record_.rows()) {
    if (!part.isPart()) break;
    if (part.is(KRCardPart::FirstName)) name.first = record_.view(part);
    if (part.is(KRCardPart::MiddleName)) name.middle = record_.view(part);
    if (part.is(KRCardPart::LastName)) name.last = record_.view(part);
  }
  name.isPresent = record_.has(KROrdinal::Name);
  return name;
}

void ABPerson::readEntries(KROrdinal property, KRHold& hold, KREntryVisitor visitor) const {
  if (isStored(property)) {
    IKRPerson::readEntries(property, hold, visitor);
    return;
  }
  if (!hasEntryRows(property)) return;
  krForRows(record_, property, [&](const KRCardRow& entry, std::span<const KRCardRow> details) {
    KREntryView view;
    view.label = krLabelOf(record_, entry);
    if (property != KROrdinal::Address) {
      view.text = record_.view(entry);
      if (property == KROrdinal::InstantMessage) view.server = krServiceOf(record_, details);
      return visitor(view);
    }
    KRAddressView address;
    for (const KRCardRow& detail : details) {
      if (detail.what == static_cast<uint8_t>(KRCardPart::AddressCountryCode)) {
        address.countryCode = record_.view(detail);
      } else if (detail.what == static_cast<uint8_t>(KRCardPart::AddressField)) {
        address.fields[detail.detail] = record_.view(detail);
      }
    }
    view.address = &address;
    return visitor(view);
  });
}

void ABPerson::readTexts(KROrdinal property, KRHold& hold, KRTextVisitor visitor) const {
  // An address has no text, and its rows stand for something else.
  if (isStored(property) || property == KROrdinal::Address) return IKRPerson::readTexts(property, hold, visitor);
  if (!hasEntryRows(property)) return;
  const KRCardRow* end = record_.rows().data() + record_.rows().size();
  for (const KRCardRow* entry = record_.find(row(property)); entry != end; ++entry) {
    if (entry->isDetail()) continue;
    if (entry->what != row(property) || !visitor(record_.view(*entry))) return;
  }
}

size_t ABPerson::entryCount(KROrdinal property) const {
  if (isStored(property)) return IKRPerson::entryCount(property);
  if (!hasEntryRows(property)) return 0;
  size_t count = 0;
  krForRows(record_, property, [&](const KRCardRow&, std::span<const KRCardRow>) { return ++count != 0; });
  return count;
}

KRRef<KRData> ABPerson::imageData() const {
  if (isStored(KROrdinal::Thumbnail)) return IKRPerson::thumbnail();
  const KRCardRow* place = record_.find(row(KROrdinal::Thumbnail));
  if (place == nullptr) return {};
  const std::string_view text = record_.view(*place).view();
  return krMake<KRData>(place->detail == KRCardRow::Base64 ? krDecodeBase64(text) : std::string(text));
}
