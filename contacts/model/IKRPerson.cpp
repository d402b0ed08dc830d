#include "contacts/model/IKRPerson.h"

#include <algorithm>

#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRStoredReading.h"

namespace {

KRString nameOf(KROrdinal ordinal) {
  return KRProperty::propertyWithOrdinal(ordinal)->name();
}

/// Whether the text, upper-cased, is "YES". One character beyond ASCII has an ASCII upper case that matters here: the
/// long s.
bool saysYes(KRText text) {
  const std::string_view word = text.view();
  if (word.size() < 3 || (word[0] | 0x20) != 'y' || (word[1] | 0x20) != 'e') return false;
  const std::string_view end = word.substr(2);
  return end == "s" || end == "S" || end == "\xC5\xBF";
}

/// Whether a value given through the record interface is of the kind that the property holds.
bool fits(const KRValue& value, int32_t type) {
  switch (type) {
    case KRValueType::Text:
      return value.asText() != nullptr;
    case KRValueType::Date:
      return value.asDate() != nullptr;
    case KRValueType::PersonName:
      return value.as<KRObjectPersonName>() != nullptr;
    case KRValueType::TextList:
      return value.as<KRValueList>() != nullptr;
    case KRValueType::Data:
      return value.as<KRData>() != nullptr;
    default:
      return false;
  }
}

enum class NamePart { First, Middle, Last };

/// The part of the name that a key of the record interface stands for.
struct PartKey {
  KRString key;
  NamePart part;
};
constexpr PartKey kPartKeys[] = {
    {kABFirstNameProperty, NamePart::First},
    {kABMiddleNameProperty, NamePart::Middle},
    {kABLastNameProperty, NamePart::Last},
};

const PartKey* partKey(KRText key) {
  const auto* found =
      std::find_if(std::begin(kPartKeys), std::end(kPartKeys), [&](const PartKey& each) { return each.key == key; });
  return found != std::end(kPartKeys) ? found : nullptr;
}

}  // namespace

KRRef<KRMutableSingleValue> krSingleValue(KRValue value, const KRProperty& property) {
  if (value.isNothing()) return {};
  return krMake<KRMutableSingleValue>(std::move(value), krMake<KRLabel>(property.displayName()), property.valueType());
}

KRRef<KRStoredValue> IKRPerson::valueByProperty(const KRProperty* property) const {
  return property != nullptr ? valueByPropertyName(property->name()) : KRRef<KRStoredValue>();
}

void IKRPerson::setValue(KRRef<KRStoredValue> value, const KRProperty* byProperty) {
  if (byProperty != nullptr) setValue(std::move(value), byProperty->name());
}

const KRMutableSingleValue* IKRPerson::singleValue(const KRString& name, KRHold& hold) const {
  return dynamic_cast<const KRMutableSingleValue*>(hold.keep(valueByPropertyName(name)));
}

KRRef<KRData> IKRPerson::thumbnail() const {
  KRHold hold;
  const KRMutableSingleValue* single = singleValue(KRProPertyThumbnail, hold);
  return KRRef<KRData>(single != nullptr ? single->value().as<KRData>() : nullptr);
}

void IKRPerson::setThumbnail(KRRef<KRData> thumbnail) {
  const KRProperty* property = KRProperty::propertyWithOrdinal(KROrdinal::Thumbnail);
  setValue(krSingleValue(std::move(thumbnail), *property), property);
}

namespace {

/// The value object of the main entry of a multiple value, when it is a `T`.
template <class T>
KRRef<T> mainObject(const IKRPerson& person, const KRString& name) {
  const KRRef<KRStoredValue> stored = person.valueByPropertyName(name);
  const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
  const KRMutableSingleValue* entry = multiple != nullptr ? multiple->mainValue() : nullptr;
  return KRRef<T>(entry != nullptr ? entry->value().as<T>() : nullptr);
}

}  // namespace

KRRef<KRObjectPhone> IKRPerson::mainPhone() const {
  return mainObject<KRObjectPhone>(*this, KRProPertyPhone);
}

KRRef<KRObjectEmail> IKRPerson::mainEmail() const {
  return mainObject<KRObjectEmail>(*this, KRProPertyEmail);
}

std::vector<KRRef<KRGroup>> IKRPerson::groups() const {
  return {};
}

std::vector<const KRProperty*> IKRPerson::notNullValueProperty() const {
  std::vector<const KRProperty*> held;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (valueByPropertyName(property->name())) held.push_back(property);
  }
  return held;
}

KRStringList IKRPerson::tagArray() const {
  KRStringList tags;
  KRHold hold;
  readEntries(KROrdinal::Tags, hold, [&](const KREntryView& entry) {
    tags.emplace_back(entry.text);
    return true;
  });
  return tags;
}

void IKRPerson::addTag(const KRString& tag) {
  if (tag.isNothing()) return;
  KRStringList tags = tagArray();
  if (std::find(tags.begin(), tags.end(), tag) != tags.end()) return;
  tags.push_back(tag);
  setTags(tags);
}

void IKRPerson::removeTag(const KRString& tag) {
  KRStringList tags = tagArray();
  const auto kept = std::remove(tags.begin(), tags.end(), tag);
  if (kept == tags.end()) return;
  tags.erase(kept, tags.end());
  setTags(tags);
}

void IKRPerson::setTags(const KRStringList& tags) {
  const KRProperty* property = KRProperty::propertyWithOrdinal(KROrdinal::Tags);
  KRRef<KRValueList> list;
  if (!tags.empty()) list = KRValueList::ofTexts(tags);
  setValue(krSingleValue(std::move(list), *property), property);
}

bool IKRPerson::isOrganization() const {
  KRHold hold;
  return saysYes(readText(KROrdinal::IsOrganization, hold));
}

void IKRPerson::setIsOrganization(bool isOrganization) {
  auto single = krMake<KRMutableSingleValue>();
  single->setValue(isOrganization ? "YES"_kr : "NO"_kr);
  setValue(std::move(single), KRProPertyIsOrganization);
}

KRString IKRPerson::showName() const {
  return isOrganization() ? companyName() : displayName();
}

KRString IKRPerson::companyName() const {
  KRHold hold;
  const KRText company = readText(KROrdinal::Company, hold);
  return company.isNothing() ? ""_kr : KRString(company);
}

KRString IKRPerson::jobTitle() const {
  KRHold hold;
  const KRText title = readText(KROrdinal::JobTitle, hold);
  return title.isEmpty() ? KRString() : KRString(title);
}

KRString IKRPerson::nameChineesPinyin() const {
  return {};
}

KRString IKRPerson::showNameChineesPinyin() const {
  return {};
}

KRText IKRPerson::readText(KROrdinal property, KRHold& hold) const {
  return krReadText(hold.keep(valueByPropertyName(nameOf(property))), hold);
}

KRNameView IKRPerson::readName(KRHold& hold) const {
  return krReadName(hold.keep(valueByPropertyName(KRProPertyName)));
}

void IKRPerson::readEntries(KROrdinal property, KRHold& hold, KREntryVisitor visitor) const {
  krReadEntries(hold.keep(valueByPropertyName(nameOf(property))), hold, visitor);
}

void IKRPerson::readTexts(KROrdinal property, KRHold& hold, KRTextVisitor visitor) const {
  readEntries(property, hold, [&](const KREntryView& entry) { return visitor(entry.text); });
}

size_t IKRPerson::entryCount(KROrdinal property) const {
  return krEntryCount(valueByPropertyName(nameOf(property)).get());
}

KRText IKRPerson::readCompanyName(KRHold& hold) const {
  return hold.keep(companyName());
}

bool IKRPerson::readsWhole(KROrdinal /*property*/) const {
  return false;
}

KRRecordValue IKRPerson::valueForProperty(const KRString& key) const {
  KRRecordValue value;
  if (const PartKey* part = partKey(key)) {
    const KRNameView name = readName(value.hold_);
    value.text_ = part->part == NamePart::First ? name.first : part->part == NamePart::Middle ? name.middle : name.last;
    return value;
  }
  const auto add = [&](const KREntryView& entry) {
    value.list_.entries_.push_back(
        {entry.label, entry.text, entry.address != nullptr ? *entry.address : KRAddressView()});
    return true;
  };
  if (const KRProperty* property = KRProperty::propertyWithName(key)) {
    if (property->isMultiple() || property->valueType() == KRValueType::TextList) {
      readEntries(property->ordinal(), value.hold_, add);
    } else {
      value.text_ = readText(property->ordinal(), value.hold_);
    }
  } else if (const KRStoredValue* stored = value.hold_.keep(valueByPropertyName(key))) {
    value.text_ = krReadText(stored, value.hold_);
    krReadEntries(stored, value.hold_, add);
  }
  value.isList_ = value.list_.count() > 0;
  return value;
}

void IKRPerson::setRecordValue(KRValue value, const KRString& forProperty) {
  if (const PartKey* part = partKey(forProperty)) {
    if (!value.isNothing() && value.asText() == nullptr) return;
    KRHold hold;
    const KRNameView old = readName(hold);
    const auto text = [&](NamePart which, KRText kept) { return part->part == which ? value.text() : KRString(kept); };
    const KRString first = text(NamePart::First, old.first);
    const KRString middle = text(NamePart::Middle, old.middle);
    const KRString last = text(NamePart::Last, old.last);
    KRRef<KRObjectPersonName> name;
    if (!first.isNothing() || !middle.isNothing() || !last.isNothing()) {
      name = krMake<KRObjectPersonName>(first, middle, last);
    }
    setValue(krSingleValue(std::move(name), *KRProperty::propertyWithOrdinal(KROrdinal::Name)), KRProPertyName);
    return;
  }
  if (value.isNothing()) {
    setValue(KRRef<KRStoredValue>(), forProperty);
    return;
  }
  const KRProperty* property = KRProperty::propertyWithName(forProperty);
  const int32_t type = property != nullptr ? property->valueType() : KRValueType::Text;
  if (auto* multiple = value.as<KRMutableMultipleValue>()) {
    if (property == nullptr || property->isMultiple()) setValue(KRRef<KRStoredValue>(multiple), forProperty);
  } else if (fits(value, type)) {
    setValue(property != nullptr ? krSingleValue(std::move(value), *property)
                                 : krMake<KRMutableSingleValue>(std::move(value), krMake<KRLabel>(forProperty), type),
             forProperty);
  }
}

KRRef<KRData> IKRPerson::imageData() const {
  return thumbnail();
}

std::vector<KRRef<KRGroup>> IKRPerson::parentGroups() const {
  return groups();
}
