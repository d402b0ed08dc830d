#include "platform/KRKeyedArchiver.h"

#include <algorithm>
#include <bit>

#include "platform/KRArchiveFormat.h"
#include "platform/KRHash.h"

namespace format = KRArchiveFormat;

namespace {

/// One number for each date, for the table of those already written.
int32_t dateNumber(const KRDate& date) {
  return (date.year().value_or(-1) * 16 + date.month()) * 32 + date.day();
}

}  // namespace

KRKeyedArchiver::KRKeyedArchiver() {
  objects_.push_back(plist_.addText(format::kNull));
}

std::string KRKeyedArchiver::archivedData(const KRValue& root) {
  return KRKeyedArchiver().finish(root);
}

bool KRKeyedArchiver::canArchive(const KRValue& value) {
  const KRObject* object = value.object();
  if (object == nullptr) return !value.isNothing();
  return dynamic_cast<const KRValueList*>(object) != nullptr || dynamic_cast<const KRValueMap*>(object) != nullptr ||
         dynamic_cast<const KRData*>(object) != nullptr || !object->archiveClassName().isNothing();
}

std::string KRKeyedArchiver::finish(const KRValue& root) {
  const Node rootReference = reference(root);
  for (size_t i = 0; i < queue_.size(); ++i) {
    // Writing a body makes the queue grow, so nothing may refer into it.
    const Kept next = queue_[i];
    writeBody(next.place, *next.object);
  }
  const Node rootKey = plist_.addText(format::kRootKey);
  const Node keys[] = {plist_.addText(format::kArchiverKey), plist_.addText(format::kObjectsKey),
                       plist_.addText(format::kTopKey), plist_.addText(format::kVersionKey)};
  const Node values[] = {plist_.addText(format::kArchiver), plist_.addArray(objects_),
                         plist_.addDictionary({&rootKey, 1}, {&rootReference, 1}), plist_.addInteger(format::kVersion)};
  plist_.setRoot(plist_.addDictionary(keys, values));
  return plist_.write();
}

uint32_t KRKeyedArchiver::newPlace(Node node) {
  objects_.push_back(node);
  return static_cast<uint32_t>(objects_.size() - 1);
}

uint32_t KRKeyedArchiver::place(const KRValue& value) {
  if (KRObject* object = value.object()) return placeOfObject(object);
  if (const KRDate* date = value.asDate()) return placeOfDate(*date);
  if (const KRString* text = value.asText()) return placeOfText(*text);
  if (const bool* truth = value.asTruth()) {
    uint32_t& known = placeOfTruth_[*truth ? 1 : 0];
    if (known == 0) known = newPlace(plist_.addTruth(*truth));
    return known;
  }
  if (const int64_t* whole = value.asWhole()) {
    const auto [found, isNew] = placeOfWhole_.try_emplace(*whole, 0);
    if (isNew) found->second = newPlace(plist_.addInteger(*whole));
    return found->second;
  }
  if (const double* number = value.asNumber()) {
    const auto [found, isNew] = placeOfNumber_.try_emplace(std::bit_cast<uint64_t>(*number), 0);
    if (isNew) found->second = newPlace(plist_.addReal(*number));
    return found->second;
  }
  return 0;
}

uint32_t KRKeyedArchiver::placeOfObject(KRObject* object) {
  const auto address = reinterpret_cast<uintptr_t>(object);
  const uint64_t hash = krHashBytes(&address, sizeof address);
  const uint32_t known = queueIndex_.find(hash, [&](uint32_t number) { return queue_[number].object.get() == object; });
  if (known != KRHashIndex::kNone) return queue_[known].place;
  KRRef<KRObject> kept(object);
  if (!canArchive(kept)) return 0;
  const uint32_t place = newPlace(KRBinaryPlist::kNone);
  queueIndex_.add(hash, static_cast<uint32_t>(queue_.size()));
  queue_.push_back({std::move(kept), place});
  return place;
}

uint32_t KRKeyedArchiver::placeOfText(KRText text) {
  const uint64_t hash = text.hash();
  const uint32_t known =
      textIndex_.find(hash, [&](uint32_t place) { return plist_.text(objects_[place]).view() == text.view(); });
  if (known != KRHashIndex::kNone) return known;
  const uint32_t place = newPlace(plist_.addText(text));
  textIndex_.add(hash, place);
  return place;
}

uint32_t KRKeyedArchiver::placeOfDate(const KRDate& date) {
  const auto [found, isNew] = placeOfDate_.try_emplace(dateNumber(date), 0);
  if (!isNew) return found->second;
  std::vector<Node> keys;
  std::vector<Node> values;
  const auto set = [&](KRText key, Node value) {
    keys.push_back(keyNode(key));
    values.push_back(value);
  };
  if (date.hasYear()) set(format::kYearKey, plist_.addInteger(*date.year()));
  set(format::kMonthKey, plist_.addInteger(date.month()));
  set(format::kDayKey, plist_.addInteger(date.day()));
  set(format::kClassKey, plist_.addUid(placeOfClass(format::kCalendarDate, nullptr)));
  found->second = newPlace(plist_.addDictionary(keys, values));
  return found->second;
}

uint32_t KRKeyedArchiver::placeOfClass(KRText name, KRText base) {
  const auto [found, isNew] = placeOfClass_.try_emplace(KRString(name), 0);
  if (!isNew) return found->second;
  std::vector<Node> chain = {keyNode(name)};
  if (!base.isNothing()) chain.push_back(keyNode(base));
  chain.push_back(keyNode(format::kRootClass));
  const Node keys[] = {keyNode(format::kClassesKey), keyNode(format::kClassNameKey)};
  const Node values[] = {plist_.addArray(chain), keyNode(name)};
  found->second = newPlace(plist_.addDictionary(keys, values));
  return found->second;
}

void KRKeyedArchiver::writeBody(uint32_t place, const KRObject& object) {
  if (const auto* data = dynamic_cast<const KRData*>(&object)) {
    objects_[place] = plist_.addData(data->bytes());
    return;
  }
  fieldKeys_.clear();
  fieldValues_.clear();
  Node record = KRBinaryPlist::kNone;
  if (const auto* list = dynamic_cast<const KRValueList*>(&object)) {
    writeList(*list);
    record = closeRecord("NSMutableArray", "NSArray");
  } else if (const auto* map = dynamic_cast<const KRValueMap*>(&object)) {
    writeMap(*map);
    record = closeRecord("NSMutableDictionary", "NSDictionary");
  } else {
    object.encodeWithCoder(*this);
    record = closeRecord(object.archiveClassName(), nullptr);
  }
  objects_[place] = record;
}

void KRKeyedArchiver::writeList(const KRValueList& list) {
  std::vector<Node> elements;
  elements.reserve(list.values().size());
  for (const KRValue& value : list.values()) elements.push_back(reference(value));
  setField(keyNode(format::kElementsKey), plist_.addArray(elements));
}

void KRKeyedArchiver::writeMap(const KRValueMap& map) {
  std::vector<Node> keys;
  std::vector<Node> values;
  keys.reserve(map.entries().size());
  values.reserve(map.entries().size());
  for (const KRValueMap::Entry& entry : map.entries()) {
    if (entry.key.isNothing()) continue;
    keys.push_back(reference(entry.key));
    values.push_back(reference(entry.value));
  }
  setField(keyNode(format::kKeysKey), plist_.addArray(keys));
  setField(keyNode(format::kElementsKey), plist_.addArray(values));
}

void KRKeyedArchiver::encode(const KRValue& value, KRText forKey) {
  setField(fieldKey(forKey), reference(value));
}

void KRKeyedArchiver::encodeInteger(int64_t value, KRText forKey) {
  setField(fieldKey(forKey), plist_.addInteger(value));
}

void KRKeyedArchiver::encodeBool(bool value, KRText forKey) {
  setField(fieldKey(forKey), plist_.addTruth(value));
}

void KRKeyedArchiver::encodeNumber(double value, KRText forKey) {
  setField(fieldKey(forKey), plist_.addReal(value));
}

KRBinaryPlist::Node KRKeyedArchiver::reference(const KRValue& value) {
  const uint32_t to = place(value);
  if (to >= references_.size()) references_.resize(objects_.size(), KRBinaryPlist::kNone);
  Node& known = references_[to];
  if (known == KRBinaryPlist::kNone) known = plist_.addUid(to);
  return known;
}

KRBinaryPlist::Node KRKeyedArchiver::fieldKey(KRText key) {
  std::string room;
  return keyNode(format::escaped(key, room));
}

KRBinaryPlist::Node KRKeyedArchiver::keyNode(KRText text) {
  const auto known = keys_.find(text);
  if (known != keys_.end()) return known->second;
  const Node node = plist_.addText(text);
  keys_.emplace(KRString(text), node);
  return node;
}

void KRKeyedArchiver::setField(Node key, Node value) {
  const auto known = std::find(fieldKeys_.begin(), fieldKeys_.end(), key);
  if (known != fieldKeys_.end()) {
    fieldValues_[static_cast<size_t>(known - fieldKeys_.begin())] = value;
  } else {
    fieldKeys_.push_back(key);
    fieldValues_.push_back(value);
  }
}

KRBinaryPlist::Node KRKeyedArchiver::closeRecord(KRText className, KRText base) {
  setField(keyNode(format::kClassKey), plist_.addUid(placeOfClass(className, base)));
  return plist_.addDictionary(fieldKeys_, fieldValues_);
}
