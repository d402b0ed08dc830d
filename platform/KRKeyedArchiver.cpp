#include "platform/KRKeyedArchiver.h"

#include <algorithm>
#include <utility>

#include "platform/KRArchiveFormat.h"
#include "platform/KRBinaryPlist.h"
#include "platform/KRBinaryPlistWriter.h"
#include "platform/KRFatal.h"
#include "platform/KRHash.h"

namespace format = KRArchiveFormat;

namespace {

/// Nobody knows before how many values there will be.
constexpr unsigned kReferenceSize = 4;
/// So many can be named with references of two bytes.
constexpr size_t kMostOfSmall = size_t{1} << 16U;

/// One number for each date, for the table of those already written.
int32_t dateNumber(const KRDate& date) {
  return (date.year().value_or(-1) * 16 + date.month()) * 32 + date.day();
}

/// Objects that stand side by side in memory do so in the index too: they are often met together, and the index of a
/// large archive is too large for any cache. Only a few, since whole stretches of it would run full.
uint64_t hashOf(const KRObject* object) {
  constexpr unsigned kAlignment = 4;
  constexpr unsigned kNeighbours = 4;
  constexpr uint64_t kLow = (uint64_t{1} << kNeighbours) - 1;
  const auto address = reinterpret_cast<uintptr_t>(object);
  const uint64_t far = krHashMix(address >> (kAlignment + kNeighbours), 0);
  return (far & ~(kLow << 32U)) | (((address >> kAlignment) & kLow) << 32U);
}

/// What the engine itself has lists, maps and bytes for; any other object has a class name.
bool isContainerOrData(const KRObject& object) {
  return dynamic_cast<const KRValueList*>(&object) != nullptr || dynamic_cast<const KRValueMap*>(&object) != nullptr ||
         dynamic_cast<const KRData*>(&object) != nullptr;
}

/// An archive with references, and an order, that fit its size.
KRBuffer smallest(KRBuffer archive) {
  const auto list = KRBinaryPlist::read(archive);
  if (!list) KRFatal("an archive was written that cannot be read");
  return KRBinaryPlistWriter(*list).write();
}

}  // namespace

KRKeyedArchiver::KRKeyedArchiver() : bytes_(kReferenceSize) {
  objects_.append(once(bytes_.addText(format::kNull)).number);
}

KRBuffer KRKeyedArchiver::archive(const KRValue& root) {
  return KRKeyedArchiver().finish(root);
}

std::string KRKeyedArchiver::archivedData(const KRValue& root) {
  return std::string(archive(root).view());
}

bool KRKeyedArchiver::canArchive(const KRValue& value) {
  const KRObject* object = value.object();
  if (object == nullptr) return !value.isNothing();
  return !object->archiveClassName().isNothing() || isContainerOrData(*object);
}

KRBuffer KRKeyedArchiver::finish(const KRValue& root) {
  const Number rootReference = reference(root);
  writeBodies();
  const Number top = writeTop(rootReference);
  const bool isSmall = bytes_.count() <= kMostOfSmall;
  KRBuffer archive = bytes_.finish(top);
  return isSmall ? smallest(std::move(archive)) : std::move(archive);
}

void KRKeyedArchiver::writeBodies() {
  size_t place = 0;
  for (size_t i = 0; i < queue_.size(); ++i) {
    // The queue grows meanwhile, but the object stays where it is.
    const KRObject& object = *queue_[i];
    while (objects_[place] != kNone) ++place;
    objects_.set(place, writeBody(object));
    if (object.hasOneReference() && isContainerOrData(object)) queue_[i] = nullptr;
  }
  queue_ = decltype(queue_)();
  queueReferences_ = KRNumberList();
  queueIndex_ = KRHashIndex();
}

KRKeyedArchiver::Number KRKeyedArchiver::writeTop(Number rootReference) {
  const Number rootKey = keyNumber(format::kRootKey);
  const Number keys[] = {keyNumber(format::kArchiverKey), keyNumber(format::kObjectsKey), keyNumber(format::kTopKey),
                         keyNumber(format::kVersionKey)};
  const Number archiver = once(bytes_.addText(format::kArchiver)).number;
  const Number version = once(bytes_.addInteger(format::kVersion)).number;
  scalars_ = decltype(scalars_)();
  scalarIndex_ = KRHashIndex();
  const Number objects = bytes_.addArray(objects_.all());
  objects_ = KRNumberList();
  const Number values[] = {archiver, objects, bytes_.addDictionary({&rootKey, 1}, {&rootReference, 1}), version};
  return bytes_.addDictionary(keys, values);
}

KRKeyedArchiver::Number KRKeyedArchiver::reference(const KRValue& value) {
  if (KRObject* object = value.object()) return referenceToObject(object);
  if (const KRString* text = value.asText()) return referenceToScalar(bytes_.addText(*text));
  if (const KRDate* date = value.asDate()) return referenceToDate(*date);
  if (const bool* truth = value.asTruth()) return referenceToScalar(bytes_.addTruth(*truth));
  if (const int64_t* whole = value.asWhole()) return referenceToScalar(bytes_.addInteger(*whole));
  if (const double* number = value.asNumber()) return referenceToScalar(bytes_.addReal(*number));
  return referenceToNothing();
}

KRKeyedArchiver::Number KRKeyedArchiver::referenceToNothing() {
  if (nothing_ == kNone) nothing_ = bytes_.addUid(0);
  return nothing_;
}

KRKeyedArchiver::Number KRKeyedArchiver::referenceToObject(KRObject* object) {
  const uint64_t hash = hashOf(object);
  const uint32_t known = queueIndex_.find(hash, [&](uint32_t number) { return queue_[number].get() == object; });
  if (known != KRHashIndex::kNone) return queueReferences_[known];
  KRRef<KRObject> kept(object);
  if (!canArchive(kept)) return referenceToNothing();
  const Number made = newReference(kNone);
  // At the same address one may have stood that was let go of.
  queueIndex_.replace(hash, static_cast<uint32_t>(queue_.size()), [&](uint32_t number) { return !queue_[number]; });
  queue_.push_back(std::move(kept));
  queueReferences_.append(made);
  return made;
}

KRKeyedArchiver::Number KRKeyedArchiver::referenceToDate(const KRDate& date) {
  const auto [found, isNew] = dates_.try_emplace(dateNumber(date), kNone);
  if (!isNew) return found->second;
  std::vector<Number> keys;
  std::vector<Number> values;
  const auto set = [&](KRText key, Number value) {
    keys.push_back(keyNumber(key));
    values.push_back(value);
  };
  if (date.hasYear()) set(format::kYearKey, once(bytes_.addInteger(*date.year())).number);
  set(format::kMonthKey, once(bytes_.addInteger(date.month())).number);
  set(format::kDayKey, once(bytes_.addInteger(date.day())).number);
  set(format::kClassKey, referenceToClass(format::kCalendarDate, nullptr));
  found->second = newReference(bytes_.addDictionary(keys, values));
  return found->second;
}

KRKeyedArchiver::Number KRKeyedArchiver::referenceToScalar(Number fresh) {
  Scalar& scalar = once(fresh);
  if (scalar.reference == kNone) scalar.reference = newReference(scalar.number);
  return scalar.reference;
}

KRKeyedArchiver::Number KRKeyedArchiver::referenceToClass(KRText name, KRText base) {
  if (const auto known = classes_.find(name); known != classes_.end()) return known->second;
  std::vector<Number> chain = {keyNumber(name)};
  if (!base.isNothing()) chain.push_back(keyNumber(base));
  chain.push_back(keyNumber(format::kRootClass));
  const Number keys[] = {keyNumber(format::kClassesKey), keyNumber(format::kClassNameKey)};
  const Number values[] = {bytes_.addArray(chain), keyNumber(name)};
  const Number made = newReference(bytes_.addDictionary(keys, values));
  classes_.emplace(KRString(name), made);
  return made;
}

KRKeyedArchiver::Number KRKeyedArchiver::newReference(Number value) {
  const size_t place = objects_.count();
  objects_.append(value);
  return bytes_.addUid(place);
}

KRKeyedArchiver::Scalar& KRKeyedArchiver::once(Number fresh) {
  const std::string_view written = bytes_.from(fresh);
  const uint64_t hash = krHashBytes(written.data(), written.size());
  const uint32_t known =
      scalarIndex_.find(hash, [&](uint32_t place) { return bytes_.from(scalars_[place].number).starts_with(written); });
  if (known != KRHashIndex::kNone) {
    bytes_.removeLast();
    return scalars_[known];
  }
  scalarIndex_.add(hash, static_cast<uint32_t>(scalars_.size()));
  return scalars_.emplace_back(Scalar{fresh});
}

KRKeyedArchiver::Number KRKeyedArchiver::keyNumber(KRText text) {
  // Most keys are constants of the program, so what stood at an address is likely to stand there still.
  const auto address = reinterpret_cast<uintptr_t>(text.data());
  const Keys::value_type*& recent = recentKeys_[(address ^ (address >> 6U)) % recentKeys_.size()];
  if (recent != nullptr && sameText(recent->first, text)) return recent->second;
  auto known = keys_.find(text);
  if (known == keys_.end()) known = keys_.emplace(KRString(text), once(bytes_.addText(text)).number).first;
  recent = &*known;
  return known->second;
}

KRKeyedArchiver::Number KRKeyedArchiver::fieldKey(KRText key) {
  std::string room;
  return keyNumber(format::escaped(key, room));
}

KRKeyedArchiver::Number KRKeyedArchiver::writeBody(const KRObject& object) {
  fieldKeys_.clear();
  fieldValues_.clear();
  if (const KRText className = object.archiveClassName(); !className.isNothing()) {
    object.encodeWithCoder(*this);
    return closeRecord(className, nullptr);
  }
  if (const auto* list = dynamic_cast<const KRValueList*>(&object)) {
    writeList(*list);
    return closeRecord("NSMutableArray", "NSArray");
  }
  if (const auto* map = dynamic_cast<const KRValueMap*>(&object)) {
    writeMap(*map);
    return closeRecord("NSMutableDictionary", "NSDictionary");
  }
  const auto* data = dynamic_cast<const KRData*>(&object);
  return once(bytes_.addData(data->bytes())).number;
}

void KRKeyedArchiver::writeList(const KRValueList& list) {
  std::vector<Number> elements;
  elements.reserve(list.values().size());
  for (const KRValue& value : list.values()) elements.push_back(reference(value));
  const Number key = keyNumber(format::kElementsKey);
  setField(key, bytes_.addArray(elements));
}

void KRKeyedArchiver::writeMap(const KRValueMap& map) {
  std::vector<Number> keys;
  std::vector<Number> values;
  keys.reserve(map.entries().size());
  values.reserve(map.entries().size());
  for (const KRValueMap::Entry& entry : map.entries()) {
    if (entry.key.isNothing()) continue;
    keys.push_back(reference(entry.key));
    values.push_back(reference(entry.value));
  }
  const Number keysKey = keyNumber(format::kKeysKey);
  setField(keysKey, bytes_.addArray(keys));
  const Number elementsKey = keyNumber(format::kElementsKey);
  setField(elementsKey, bytes_.addArray(values));
}

void KRKeyedArchiver::encode(const KRValue& value, KRText forKey) {
  const Number key = fieldKey(forKey);
  setField(key, reference(value));
}

void KRKeyedArchiver::encodeInteger(int64_t value, KRText forKey) {
  const Number key = fieldKey(forKey);
  setField(key, once(bytes_.addInteger(value)).number);
}

void KRKeyedArchiver::encodeBool(bool value, KRText forKey) {
  const Number key = fieldKey(forKey);
  setField(key, once(bytes_.addTruth(value)).number);
}

void KRKeyedArchiver::encodeNumber(double value, KRText forKey) {
  const Number key = fieldKey(forKey);
  setField(key, once(bytes_.addReal(value)).number);
}

void KRKeyedArchiver::setField(Number key, Number value) {
  const auto known = std::find(fieldKeys_.begin(), fieldKeys_.end(), key);
  if (known != fieldKeys_.end()) {
    fieldValues_[static_cast<size_t>(known - fieldKeys_.begin())] = value;
  } else {
    fieldKeys_.push_back(key);
    fieldValues_.push_back(value);
  }
}

KRKeyedArchiver::Number KRKeyedArchiver::closeRecord(KRText className, KRText base) {
  const Number key = keyNumber(format::kClassKey);
  setField(key, referenceToClass(className, base));
  return bytes_.addDictionary(fieldKeys_, fieldValues_);
}
