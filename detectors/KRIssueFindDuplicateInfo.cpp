#include "detectors/KRIssueFindDuplicateInfo.h"

#include <algorithm>
#include <string>
#include <vector>

#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "detectors/KRLikelyEqual.h"
#include "detectors/KRPersonGroups.h"
#include "detectors/KRPersonKey.h"
#include "platform/KRDigest.h"

namespace {

/// So much of a key holds the name and some of what follows.
constexpr size_t kKeyStart = 56;
constexpr size_t kAhead = 4;

/// A group with the place of its second person, by which groups are ordered.
struct Found {
  uint32_t second;
  KRPersonArray persons;
};

uint32_t secondPlace(const KRPersonGroups& groups, uint32_t key) {
  uint32_t second = groups.firstPlace(key);
  size_t count = 0;
  groups.forPlaces(key, [&](uint32_t place) { second = ++count == 2 ? place : second; });
  return second;
}

/// Most contacts have no image, and those of a key that has none are one group.
bool anyHasImage(const KRPersonGroups& groups, uint32_t key, const KRPersonList& persons) {
  bool any = false;
  groups.forPlaces(key, [&](uint32_t place) { any = any || persons.at(place)->imageData(); });
  return any;
}

/// The persons of one key, told apart by the bytes of their images.
class ImageGroups {
 public:
  explicit ImageGroups(const KRPersonList& persons) : persons_(persons) {}

  void add(uint32_t place) {
    const KRRef<KRData> image = persons_.at(place)->imageData();
    groups_.add(image ? image->hash() : 0, place,
                [&](uint32_t number) { return krEqualObjects(imageAt(groups_.firstPlace(number)), image.get()); });
  }

  void takeGroups(std::vector<Found>& to) const {
    std::vector<IKRPerson*> room;
    for (const uint32_t key : groups_.groupKeys()) {
      to.push_back({secondPlace(groups_, key), krPersonsOf(groups_, key, persons_, room)});
    }
  }

 private:
  /// The image of the place asked for last is kept: a contact is mostly compared with the same one as the contact
  /// before it.
  const KRData* imageAt(uint32_t place) {
    if (place != place_) image_ = persons_.at(place)->imageData();
    place_ = place;
    return image_.get();
  }

  const KRPersonList& persons_;
  KRPersonGroups groups_;
  uint32_t place_ = KRPersonGroups::kNone;
  KRRef<KRData> image_;
};

/// The places of the persons whose keys begin alike: few, since keys begin with the name.
std::vector<uint32_t> likelyEqual(const KRPersonList& persons, const KRProgress& progress) {
  KRLikelyEqual likely(persons.count());
  const KRPersonAhead ahead(persons);
  KRHold hold;
  std::string start;
  for (uint32_t i = 0; i < persons.count(); ++i) {
    progress(krPercent(i, persons.count()));
    ahead.reach(i);
    hold.empty();
    start.clear();
    krAppendPersonKeyStart(start, *persons.at(i), kKeyStart, hold);
    likely.add(i, KRText(std::string_view(start)).hash());
  }
  return likely.places();
}

/// The persons at those places by their whole keys, but for the images: they need to be decoded only where everything
/// else is equal.
KRPersonGroups groupByKey(const KRPersonList& persons, const std::vector<uint32_t>& places) {
  const auto writeKey = [](const IKRPerson& person, KRHold& hold, std::string& key) {
    krAppendPersonKey(key, person, {}, hold);
    return true;
  };
  KRPersonGrouping<decltype(writeKey)> grouping(persons, writeKey);
  grouping.reserve(places.size());
  for (size_t i = 0; i < places.size(); ++i) {
    if (i + 3 * kAhead < places.size()) krPrefetch(persons.at(places[i + 3 * kAhead]));
    if (i + 2 * kAhead < places.size()) persons.at(places[i + 2 * kAhead])->prefetch();
    if (i + kAhead < places.size()) persons.at(places[i + kAhead])->prefetchRest();
    grouping.take(places[i]);
  }
  return grouping.finish();
}

bool equalValues(const KRValue& a, const KRValue& b, const KRProperty& property) {
  return property.valueType() == KRValueType::Text ? sameText(a.text(), b.text()) : a.isEqual(b);
}

KRText labelName(const KRMutableSingleValue& value) {
  const KRRef<KRLabel> label = value.label();
  return label ? label->name().text() : KRText();
}

template <class Value>
const Value* as(const KRStoredValue* value) {
  return dynamic_cast<const Value*>(value);
}

template <class Write>
KRString written(Write write) {
  std::string text;
  write(text);
  return KRString::trusted(text);
}

}  // namespace

KRRef<KRIssueContext> KRIssueFindDuplicateInfo::find(const KRPersonList* persons, const KRProgress& progress) {
  return find3(persons, progress);
}

KRRef<KRIssueContext> KRIssueFindDuplicateInfo::find3(const KRPersonList* persons, const KRProgress& progress) const {
  if (persons == nullptr) return {};
  const KRPersonGroups groups = groupByKey(*persons, likelyEqual(*persons, progress));
  std::vector<Found> found;
  std::vector<IKRPerson*> room;
  for (const uint32_t key : groups.groupKeys()) {
    if (!anyHasImage(groups, key, *persons)) {
      found.push_back({secondPlace(groups, key), krPersonsOf(groups, key, *persons, room)});
      continue;
    }
    ImageGroups byImage(*persons);
    groups.forPlaces(key, [&](uint32_t place) { byImage.add(place); });
    byImage.takeGroups(found);
  }
  if (found.empty()) return {};
  const auto isBefore = [](const Found& a, const Found& b) { return a.second < b.second; };
  if (!std::is_sorted(found.begin(), found.end(), isBefore)) std::sort(found.begin(), found.end(), isBefore);
  auto context = krMake<KRIssueContext>(issue());
  for (const Found& group : found) context->addIssueObject(objectForPerson(group.persons).get());
  return context;
}

KRRef<KRIssueContext> KRIssueFindDuplicateInfo::find2(const KRPersonList* persons, const KRProgress& progress) const {
  if (persons == nullptr) return {};
  auto context = krMake<KRIssueContext>(issue());
  const size_t total = persons->count();
  std::vector<IKRPerson*> remaining;
  for (IKRPerson& person : *persons) remaining.push_back(&person);
  for (size_t pass = 0; !remaining.empty(); ++pass) {
    IKRPerson* first = remaining.front();
    std::vector<IKRPerson*> matches;
    std::vector<IKRPerson*> others;
    const size_t candidates = remaining.size() - 1;
    for (size_t j = 1; j <= candidates; ++j) {
      (person(first, remaining[j]) ? matches : others).push_back(remaining[j]);
      const double share = static_cast<double>(j) / static_cast<double>(candidates) + static_cast<double>(pass);
      progress(share * 100.0 / static_cast<double>(total));
    }
    if (!matches.empty()) {
      matches.push_back(first);
      context->addIssueObject(objectForPerson(KRPersonArray(matches)).get());
    }
    remaining.swap(others);
    progress(krPercent(pass + 1, total));
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

KRString KRIssueFindDuplicateInfo::personKey(const IKRPerson* person) const {
  if (person == nullptr) return {};
  KRHold hold;
  const KRString digest = HashValueByData(person->imageData().get());
  return written([&](std::string& to) { krAppendPersonKey(to, *person, digest, hold); });
}

KRString KRIssueFindDuplicateInfo::HashValueByData(const KRData* data) const {
  return KRDigest::md5(data);
}

KRString KRIssueFindDuplicateInfo::valueString(const KRStoredValue* value, const KRProperty& property) const {
  if (value == nullptr) return {};
  return written([&](std::string& to) { krAppendValue(to, *value, property); });
}

KRString KRIssueFindDuplicateInfo::singValueString(const KRMutableSingleValue* value,
                                                   const KRProperty& property) const {
  return valueString(value, property);
}

KRString KRIssueFindDuplicateInfo::mulitipleValueString(const KRMutableMultipleValue* value,
                                                        const KRProperty& property) const {
  return valueString(value, property);
}

KRString KRIssueFindDuplicateInfo::mulitipleSubValueString(const KRMutableSingleValue* value,
                                                           const KRProperty& property) const {
  if (value == nullptr) return {};
  return written([&](std::string& to) { krAppendEntry(to, *value, property); });
}

bool KRIssueFindDuplicateInfo::person(const IKRPerson* person, const IKRPerson* isEqualToPerson) const {
  if (person == nullptr || isEqualToPerson == nullptr) return false;
  const std::vector<const KRProperty*> properties = person->notNullValueProperty();
  if (properties != isEqualToPerson->notNullValueProperty()) return false;
  return std::all_of(properties.begin(), properties.end(), [&](const KRProperty* property) {
    if (property->ordinal() == KROrdinal::Thumbnail) {
      return krEqualObjects(person->imageData().get(), isEqualToPerson->imageData().get());
    }
    return value(person->valueByProperty(property).get(), isEqualToPerson->valueByProperty(property).get(), *property);
  });
}

bool KRIssueFindDuplicateInfo::value(const KRStoredValue* value, const KRStoredValue* isEqualToValue,
                                     const KRProperty& property) const {
  if (property.isMultiple()) {
    return mulitipleValue(as<KRMutableMultipleValue>(value), as<KRMutableMultipleValue>(isEqualToValue), property);
  }
  return singValue(as<KRMutableSingleValue>(value), as<KRMutableSingleValue>(isEqualToValue), property);
}

bool KRIssueFindDuplicateInfo::singValue(const KRMutableSingleValue* value, const KRMutableSingleValue* isEqualToValue,
                                         const KRProperty& property) const {
  if (value == nullptr || isEqualToValue == nullptr) return false;
  // Names, dates, lists and bytes are equal when their parts are; two absent parts of a name are equal.
  return equalValues(value->value(), isEqualToValue->value(), property);
}

bool KRIssueFindDuplicateInfo::mulitipleValue(const KRMutableMultipleValue* value,
                                              const KRMutableMultipleValue* isEqualToValue,
                                              const KRProperty& property) const {
  if (value == nullptr || isEqualToValue == nullptr || value->count() != isEqualToValue->count()) return false;
  for (size_t i = 0; i < value->count(); ++i) {
    if (!mulitipleSubValue(value->valueAtIndex(i), isEqualToValue->valueAtIndex(i), property)) return false;
  }
  return true;
}

bool KRIssueFindDuplicateInfo::mulitipleSubValue(const KRMutableSingleValue* value,
                                                 const KRMutableSingleValue* isEqualToValue,
                                                 const KRProperty& property) const {
  if (value == nullptr || isEqualToValue == nullptr) return false;
  if (labelName(*value) != labelName(*isEqualToValue)) return false;
  // Phones and addresses are equal by their texts; accounts only with the very same service.
  return equalValues(value->value(), isEqualToValue->value(), property);
}

KRRef<KRIssueObject> KRIssueFindDuplicateInfo::objectForPerson(const KRPersonArray& persons) const {
  auto object = krMake<KRIssueObject>();
  object->setPersons(persons);
  object->setDescribe("Contacts in this list have duplicates in all fields."_kr);
  return object;
}
