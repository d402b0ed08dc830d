#include "contacts/KRTempPerson.h"

#include <algorithm>
#include <bit>

#include "contacts/model/KRDecoding.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRStoredReading.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRTransliteration.h"

namespace {

/// Where the card stands in the archive: a key that no property has, behind all others.
constexpr KRText kCardKey = "vCard";

constexpr uint32_t bitOf(KROrdinal property) {
  return uint32_t{1} << static_cast<uint32_t>(property);
}

bool contains(const KRStringList& tags, const KRString& tag) {
  return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

}  // namespace

KRTempPerson::KRTempPerson() : KRTempPerson("123"_kr) {}

KRTempPerson::KRTempPerson(KRString ID) : ID_(std::move(ID)) {}

// Values.

size_t KRTempPerson::placeOf(KROrdinal property) const noexcept {
  return static_cast<size_t>(std::popcount(present_ & (bitOf(property) - 1)));
}

KRStoredValue* KRTempPerson::stored(KROrdinal property) const noexcept {
  return (present_ & bitOf(property)) != 0 ? standard_[placeOf(property)].get() : nullptr;
}

KRStoredValue* KRTempPerson::stored(const KRString& name) const noexcept {
  if (const KRProperty* property = KRProperty::propertyWithName(name)) return stored(property->ordinal());
  const auto found =
      std::find_if(further_.begin(), further_.end(), [&](const auto& entry) { return entry.first == name; });
  return found != further_.end() ? found->second.get() : nullptr;
}

KRRef<KRStoredValue> KRTempPerson::valueByPropertyName(const KRString& name) const {
  return KRRef<KRStoredValue>(stored(name));
}

void KRTempPerson::setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) {
  if (!value || byPropertyName.isNothing()) return;
  if (const KRProperty* property = KRProperty::propertyWithName(byPropertyName)) {
    setStandard(std::move(value), property->ordinal());
    return;
  }
  const auto found =
      std::find_if(further_.begin(), further_.end(), [&](const auto& entry) { return entry.first == byPropertyName; });
  if (found != further_.end()) {
    found->second = std::move(value);
  } else {
    further_.emplace_back(byPropertyName, std::move(value));
  }
}

void KRTempPerson::setValue(KRRef<KRStoredValue> value, const KRProperty* byProperty) {
  if (value && byProperty != nullptr) setStandard(std::move(value), byProperty->ordinal());
}

void KRTempPerson::setStandard(KRRef<KRStoredValue> value, KROrdinal property) {
  const auto place = standard_.begin() + static_cast<ptrdiff_t>(placeOf(property));
  if ((present_ & bitOf(property)) != 0) {
    *place = std::move(value);
  } else {
    standard_.insert(place, std::move(value));
    present_ |= bitOf(property);
  }
  const bool isNaming =
      property == KROrdinal::Name || property == KROrdinal::Company || property == KROrdinal::IsOrganization;
  if (isNaming) removeDisplayNameCache();
}

void KRTempPerson::setRecordValue(KRValue value, const KRString& forProperty) {
  // Before the other parts of a name are put together without the one that is to be cleared.
  if (!value.isNothing()) IKRPerson::setRecordValue(std::move(value), forProperty);
}

void KRTempPerson::setThumbnail(KRRef<KRData> thumbnail) {
  const KRProperty* property = KRProperty::propertyWithOrdinal(KROrdinal::Thumbnail);
  setValue(singleValueByMacValue(std::move(thumbnail), property), property);
}

std::vector<const KRProperty*> KRTempPerson::notNullValueProperty() const {
  std::vector<const KRProperty*> held;
  held.reserve(standard_.size());
  for (uint32_t left = present_; left != 0; left &= left - 1) {
    held.push_back(KRProperty::propertyWithOrdinal(static_cast<KROrdinal>(std::countr_zero(left))));
  }
  return held;
}

KRRef<KRMutableSingleValue> KRTempPerson::singleValueByMacValue(KRValue value, const KRProperty* property) {
  if (property != nullptr) return krSingleValue(std::move(value), *property);
  return singleValueByMacValue(std::move(value), krMake<KRLabel>(), KRValueType::Text);
}

KRRef<KRMutableSingleValue> KRTempPerson::singleValueByMacValue(KRValue value, KRRef<KRLabel> label, int32_t type) {
  if (value.isNothing()) return {};
  return krMake<KRMutableSingleValue>(std::move(value), std::move(label), type);
}

KRMutableSingleValue* KRTempPerson::mainValueForProPertyName(const KRString& name) const {
  const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored(name));
  return multiple != nullptr ? multiple->mainValue() : nullptr;
}

KRValue KRTempPerson::valueOfMainValueForProPertyName(const KRString& name) const {
  const KRMutableSingleValue* entry = mainValueForProPertyName(name);
  return entry != nullptr && entry->type() != KRValueType::Multiple ? entry->value() : KRValue();
}

KRRef<KRObjectPhone> KRTempPerson::mainPhone() const {
  return KRRef<KRObjectPhone>(valueOfMainValueForProPertyName(KRProPertyPhone).as<KRObjectPhone>());
}

KRRef<KRObjectEmail> KRTempPerson::mainEmail() const {
  return KRRef<KRObjectEmail>(valueOfMainValueForProPertyName(KRProPertyEmail).as<KRObjectEmail>());
}

// Tags.

void KRTempPerson::addTag(const KRString& tag) {
  if (contains(tags_, tag)) tags_.push_back(tag);
}

void KRTempPerson::removeTag(const KRString& tag) {
  // A copy: the tag may be an element of the list itself.
  std::erase(tags_, KRString(tag));
}

void KRTempPerson::setTags(const KRStringList& tags) {
  const KRStringList given = tags;
  tags_.erase(std::remove_if(tags_.begin(), tags_.end(), [&](const KRString& tag) { return contains(given, tag); }),
              tags_.end());
  std::copy_if(given.begin(), given.end(), std::back_inserter(tags_),
               [](const KRString& tag) { return !tag.isNothing(); });
}

// Names.

KRString KRTempPerson::displayName() const {
  const KRNameView name = krReadName(stored(KROrdinal::Name));
  return KRObjectPersonName::displayString(name.first, name.middle, name.last);
}

KRNameCache& KRTempPerson::dictionaryPinyinSave() {
  static auto* const cache = new KRNameCache;
  return *cache;
}

void KRTempPerson::removeDisplayNameCache() {
  if (!ID_.isNothing()) dictionaryPinyinSave().remove(ID_);
}

KRString KRTempPerson::transformChinese(const KRString& text) {
  return text.isNothing() ? KRString() : krMandarinLatinUpper(text);
}

KRString KRTempPerson::companyNameSaveID() const {
  return krFormat("company_%@", ID_);
}

KRString KRTempPerson::cachedPinyin(const KRString& key, const KRString& name) const {
  KRString pinyin = transformChinese(name);
  if (pinyin.isNothing()) pinyin = ""_kr;
  dictionaryPinyinSave().set(key, pinyin);
  return pinyin;
}

KRString KRTempPerson::nameChineesPinyin() const {
  const KRString cached = dictionaryPinyinSave().find(ID_);
  return cached.isNothing() ? cachedPinyin(ID_, displayName()) : cached;
}

KRString KRTempPerson::showNameChineesPinyin() const {
  const KRString key = companyNameSaveID();
  const KRString cached = dictionaryPinyinSave().find(key);
  return cached.isNothing() ? cachedPinyin(key, showName()) : cached;
}

// Reading without making objects.

KRText KRTempPerson::readText(KROrdinal property, KRHold& hold) const {
  return krReadText(stored(property), hold);
}

KRNameView KRTempPerson::readName(KRHold&) const {
  return krReadName(stored(KROrdinal::Name));
}

void KRTempPerson::readEntries(KROrdinal property, KRHold& hold, KREntryVisitor visitor) const {
  krReadEntries(stored(property), hold, visitor);
}

size_t KRTempPerson::entryCount(KROrdinal property) const {
  return krEntryCount(stored(property));
}

// The archive.

KRText KRTempPerson::archiveClassName() const {
  return "KRTempPerson";
}

void KRTempPerson::encodeWithCoder(KRKeyedArchiver& coder) const {
  for (const KRProperty* property : notNullValueProperty()) {
    coder.encode(valueByProperty(property), property->name());
  }
  coder.encode(fromID(), "fromID");
  coder.encode(ID_, "ID");
  if (const auto groups = groupIDs()) coder.encode(KRValueList::ofTexts(*groups), "groupIDs");
  if (card_) coder.encode(card_, kCardKey);
}

KRRef<KRObject> KRTempPerson::decode(KRKeyedUnarchiver& coder) {
  const KRString ID = krDecodeText(coder, "ID");
  auto person = krMake<KRTempPerson>(ID.isNothing() ? ""_kr : ID);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    person->setValue(krDecodeObject<KRStoredValue>(coder, property->name()), property);
  }
  person->setFromID(krDecodeText(coder, "fromID"));
  if (const auto groups = krDecodeObject<KRValueList>(coder, "groupIDs")) person->setGroupIDs(groups->texts());
  person->setCard(krDecodeObject<KRData>(coder, kCardKey));
  return person;
}
