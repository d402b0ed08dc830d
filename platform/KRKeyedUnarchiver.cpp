#include "platform/KRKeyedUnarchiver.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_set>
#include <utility>

#include "platform/KRArchiveFormat.h"
#include "platform/KRPlistValue.h"

namespace format = KRArchiveFormat;

namespace {

/// No chain of classes is longer; what follows is not looked at.
constexpr size_t kLongestChain = 32;

/// Bytes of a map's key that count as a value more.
constexpr size_t kBytesOfValue = 64;

/// Values that may always be reached when shared ones are counted at every place, whatever the size of the archive.
constexpr uint64_t kFreelyExpanded = uint64_t{16} << 20U;

}  // namespace

KRKeyedUnarchiver::KRKeyedUnarchiver(const KRBinaryPlist& plist, size_t size, std::span<const KRArchiveClass> classes)
    : plist_(plist), elementsLeft_(size), largestExpanded_(kFreelyExpanded + uint64_t{size} * 16) {
  for (const KRArchiveClass& each : classes) {
    own_.emplace(each.name, &each);
    longestName_ = std::max(longestName_, each.name.size());
  }
}

std::optional<KRValue> KRKeyedUnarchiver::unarchive(std::string_view data, std::span<const KRArchiveClass> classes) {
  const std::optional<KRBinaryPlist> plist = KRBinaryPlist::read(data);
  if (!plist) return std::nullopt;
  return KRKeyedUnarchiver(*plist, data.size(), classes).decodeRoot();
}

std::optional<KRValue> KRKeyedUnarchiver::decodeRoot() {
  if (!openObjects()) return std::nullopt;
  const Node root = plist_.find(plist_.find(plist_.root(), format::kTopKey), format::kRootKey);
  if (plist_.kind(root) != KRBinaryPlist::Kind::Uid) return std::nullopt;
  KRValue value = decodeNode(root);
  if (failed_) return std::nullopt;
  return value;
}

bool KRKeyedUnarchiver::openObjects() {
  const Node root = plist_.root();
  const Node version = plist_.find(root, format::kVersionKey);
  if (!sameText(plist_.text(plist_.find(root, format::kArchiverKey)), format::kArchiver)) return false;
  if (plist_.integer(version) != format::kVersion) return false;
  objects_ = plist_.elements(plist_.find(root, format::kObjectsKey));
  if (objects_.empty() || !sameText(plist_.text(objects_[0]), format::kNull)) return false;

  entries_.resize(objects_.size());
  firstPlace_.reserve(objects_.size());
  std::vector<uint32_t> placeOfNode(plist_.count(), KRBinaryPlist::kNone);
  for (const Node node : objects_) {
    uint32_t& place = placeOfNode[node];
    if (place == KRBinaryPlist::kNone) place = static_cast<uint32_t>(firstPlace_.size());
    firstPlace_.push_back(place);
  }
  return true;
}

KRValue KRKeyedUnarchiver::damaged() {
  failed_ = true;
  return {};
}

KRValue KRKeyedUnarchiver::decodeNode(Node node) {
  if (plist_.kind(node) == KRBinaryPlist::Kind::Uid) return decodePlace(plist_.uid(node));
  ++expanded_;
  return plainValue(node);
}

KRValue KRKeyedUnarchiver::decodePlace(uint64_t place) {
  if (failed_ || place >= objects_.size()) return damaged();
  // Nothing is known by its place, not by its text: a text may read "$null" too.
  if (place == 0) return {};
  // The text of the first place may serve as a text elsewhere, where it does not mean nothing.
  const uint32_t first = firstPlace_[place] == 0 ? static_cast<uint32_t>(place) : firstPlace_[place];
  Entry& entry = entries_[first];
  if (entry.is(State::Busy)) {
    // A record that leads back to itself: fine when its decoder has told the object, else there is none to give.
    return entry.value.isNothing() ? damaged() : entry.value;
  }
  if (entry.is(State::Untouched)) decodeEntry(first);
  expanded_ += entry.expanded;
  height_ = std::max(height_, entry.depth());
  // What was decoded nearer to the root may stand too deep here.
  if (expanded_ > largestExpanded_ || depth_ + entry.depth() > kDeepest) return damaged();
  return failed_ ? KRValue() : entry.value;
}

void KRKeyedUnarchiver::decodeEntry(uint32_t place) {
  Entry& entry = entries_[place];
  const Node node = objects_[place];
  if (plist_.kind(node) != KRBinaryPlist::Kind::Dictionary) {
    entry.value = newPlainValue(node);
    entry.become(State::Done);
    return;
  }
  if (depth_ == kDeepest) {
    failed_ = true;
    return;
  }
  entry.become(State::Busy);
  ++depth_;
  const Record outerRecord = std::exchange(record_, {plist_.keys(node), plist_.values(node)});
  const uint32_t outerPlace = std::exchange(place_, place);
  const uint64_t outerExpanded = std::exchange(expanded_, 1);
  const int outerHeight = std::exchange(height_, 0);
  KRValue value = decodeRecord();
  if (value.isNothing()) failed_ = true;
  entry.value = std::move(value);
  entry.expanded = expanded_ & 0xFFFFFFFFFFFFFU;
  entry.height = static_cast<unsigned>(height_ + 1) & 0x3FFU;
  entry.become(State::Done);
  height_ = outerHeight;
  expanded_ = outerExpanded;
  place_ = outerPlace;
  record_ = outerRecord;
  --depth_;
}

KRValue KRKeyedUnarchiver::newPlainValue(Node node) {
  switch (plist_.kind(node)) {
    case KRBinaryPlist::Kind::Truth:
    case KRBinaryPlist::Kind::Integer:
    case KRBinaryPlist::Kind::Real:
    case KRBinaryPlist::Kind::Data:
    case KRBinaryPlist::Kind::Text:
      return krPlainValueOfPlist(plist_, node);
    default:
      return damaged();
  }
}

KRValue KRKeyedUnarchiver::plainValue(Node node) {
  const KRBinaryPlist::Kind kind = plist_.kind(node);
  if (kind != KRBinaryPlist::Kind::Data && kind != KRBinaryPlist::Kind::Text) return newPlainValue(node);
  const auto [known, isNew] = plainValues_.try_emplace(node);
  if (isNew) known->second = newPlainValue(node);
  return known->second;
}

KRValue KRKeyedUnarchiver::decodeRecord() {
  const Class recordClass = classOfRecord();
  switch (recordClass.kind) {
    case Kind::List:
      return decodeList();
    case Kind::Map:
      return decodeMap();
    case Kind::Instant:
      return decodeInstant();
    case Kind::CalendarDate:
      return decodeCalendarDate();
    case Kind::Bytes: {
      const Node bytes = field(format::kBytesKey);
      return plist_.kind(bytes) == KRBinaryPlist::Kind::Data ? plainValue(bytes) : damaged();
    }
    case Kind::Text: {
      const Node text = field(format::kTextKey);
      return plist_.kind(text) == KRBinaryPlist::Kind::Text ? plainValue(text) : damaged();
    }
    case Kind::Own:
      return decodeOwn(*recordClass.own);
    case Kind::Unknown:
      break;
  }
  return damaged();
}

KRValue KRKeyedUnarchiver::decodeOwn(const KRArchiveClass& own) {
  return own.decode == nullptr ? damaged() : KRValue(own.decode(*this));
}

KRBinaryPlist::Links KRKeyedUnarchiver::elements(KRText key) {
  const Node array = find(key);
  const KRBinaryPlist::Links all = plist_.elements(array);
  if (plist_.kind(array) != KRBinaryPlist::Kind::Array || all.size() > elementsLeft_) {
    failed_ = true;
    return {};
  }
  elementsLeft_ -= all.size();
  return all;
}

KRValue KRKeyedUnarchiver::decodeList() {
  const KRBinaryPlist::Links nodes = elements(format::kElementsKey);
  std::vector<KRValue> values;
  values.reserve(nodes.size());
  for (const Node node : nodes) {
    values.push_back(decodeNode(node));
    if (failed_) return {};
  }
  return krMake<KRValueList>(std::move(values));
}

KRValue KRKeyedUnarchiver::decodeMap() {
  const KRBinaryPlist::Links keys = elements(format::kKeysKey);
  const KRBinaryPlist::Links values = elements(format::kElementsKey);
  if (failed_ || keys.size() != values.size()) return damaged();
  std::vector<KRValueMap::Entry> entries;
  entries.reserve(keys.size());
  std::unordered_set<KRString, KRTextHash, KRTextEqual> known;
  for (size_t i = 0; i < keys.size(); ++i) {
    KRString key = decodeNode(keys[i]).text();
    // Keys are looked at as a whole in each map, however many maps share them.
    expanded_ += key.size() / kBytesOfValue;
    if (expanded_ > largestExpanded_) return damaged();
    if (key.isNothing() || !known.insert(key).second) return damaged();
    entries.push_back({std::move(key), decodeNode(values[i])});
    if (failed_) return {};
  }
  return krMake<KRValueMap>(std::move(entries));
}

KRValue KRKeyedUnarchiver::decodeInstant() {
  const std::optional<double> seconds = decodeNumber(format::kInstantKey);
  const std::optional<KRDate> date = seconds ? krDateOfInstant(*seconds) : std::nullopt;
  return date ? KRValue(*date) : damaged();
}

KRValue KRKeyedUnarchiver::decodeCalendarDate() {
  const auto part = [&](KRText key) {
    return static_cast<int>(std::clamp<int64_t>(decodeInteger(key).value_or(-1), -1, 10000));
  };
  std::optional<int> year;
  if (contains(format::kYearKey)) year = part(format::kYearKey);
  const std::optional<KRDate> date = KRDate::make(year, part(format::kMonthKey), part(format::kDayKey));
  return date ? KRValue(*date) : damaged();
}

KRKeyedUnarchiver::Class KRKeyedUnarchiver::classOfRecord() {
  const Node reference = find(format::kClassKey);
  if (plist_.kind(reference) != KRBinaryPlist::Kind::Uid) return {};
  const Node classRecord = resolved(reference);
  const auto [known, isNew] = classOfClassRecord_.try_emplace(classRecord);
  if (isNew) known->second = classOfClassRecord(classRecord);
  return known->second;
}

KRKeyedUnarchiver::Class KRKeyedUnarchiver::classOfClassRecord(Node classRecord) const {
  const KRText name = plist_.text(plist_.find(classRecord, format::kClassNameKey));
  const Class named = classOfName(name);
  if (named.kind != Kind::Unknown) return named;
  // A class that is not known reads as the nearest one above it that is.
  const KRBinaryPlist::Links chain = plist_.elements(plist_.find(classRecord, format::kClassesKey));
  for (size_t i = 0; i < chain.size() && i < kLongestChain; ++i) {
    const Class base = classOfName(plist_.text(chain[i]));
    if (base.kind != Kind::Unknown) return base;
  }
  return {};
}

KRKeyedUnarchiver::Class KRKeyedUnarchiver::classOfName(KRText name) const {
  static constexpr struct {
    KRText name;
    Kind kind;
  } kKnown[] = {
      {"NSArray", Kind::List},         {"NSMutableArray", Kind::List},
      {"NSDictionary", Kind::Map},     {"NSMutableDictionary", Kind::Map},
      {"NSDate", Kind::Instant},       {"NSData", Kind::Bytes},
      {"NSMutableData", Kind::Bytes},  {"NSString", Kind::Text},
      {"NSMutableString", Kind::Text}, {format::kCalendarDate, Kind::CalendarDate},
  };
  if (name.isNothing()) return {};
  // A name of megabytes, which many records may share, is not hashed for each.
  const auto own = name.size() <= longestName_ ? own_.find(name) : own_.end();
  if (own != own_.end()) return {Kind::Own, own->second};
  const auto known =
      std::find_if(std::begin(kKnown), std::end(kKnown), [&](const auto& each) { return each.name == name; });
  return {known != std::end(kKnown) ? known->kind : Kind::Unknown, nullptr};
}

KRBinaryPlist::Node KRKeyedUnarchiver::resolved(Node node) const {
  if (plist_.kind(node) != KRBinaryPlist::Kind::Uid) return node;
  const uint64_t place = plist_.uid(node);
  return place == 0 || place >= objects_.size() ? KRBinaryPlist::kNone : objects_[place];
}

KRText KRKeyedUnarchiver::textOfKey(Node key) const {
  Key& known = keys_[key % keys_.size()];
  if (known.node != key) known = {key, plist_.text(key)};
  return known.text;
}

KRBinaryPlist::Node KRKeyedUnarchiver::find(KRText key) const {
  for (size_t i = 0; i < record_.keys.size(); ++i) {
    if (sameText(textOfKey(record_.keys[i]), key)) return record_.values[i];
  }
  return KRBinaryPlist::kNone;
}

KRBinaryPlist::Node KRKeyedUnarchiver::field(KRText key) const {
  return resolved(find(key));
}

bool KRKeyedUnarchiver::contains(KRText key) const {
  std::string room;
  return find(format::escaped(key, room)) != KRBinaryPlist::kNone;
}

KRValue KRKeyedUnarchiver::decode(KRText forKey) {
  if (failed_) return {};
  std::string room;
  const Node node = find(format::escaped(forKey, room));
  return node == KRBinaryPlist::kNone ? KRValue() : decodeNode(node);
}

std::optional<int64_t> KRKeyedUnarchiver::decodeInteger(KRText forKey) const {
  std::string room;
  const Node node = field(format::escaped(forKey, room));
  if (plist_.kind(node) != KRBinaryPlist::Kind::Integer) return std::nullopt;
  return plist_.integer(node);
}

std::optional<bool> KRKeyedUnarchiver::decodeBool(KRText forKey) const {
  std::string room;
  const Node node = field(format::escaped(forKey, room));
  if (plist_.kind(node) == KRBinaryPlist::Kind::Integer) return plist_.integer(node) != 0;
  if (plist_.kind(node) != KRBinaryPlist::Kind::Truth) return std::nullopt;
  return plist_.truth(node);
}

std::optional<double> KRKeyedUnarchiver::decodeNumber(KRText forKey) const {
  std::string room;
  const Node node = field(format::escaped(forKey, room));
  if (plist_.kind(node) == KRBinaryPlist::Kind::Integer) return static_cast<double>(plist_.integer(node));
  if (plist_.kind(node) != KRBinaryPlist::Kind::Real) return std::nullopt;
  return plist_.real(node);
}

void KRKeyedUnarchiver::setObject(KRRef<KRObject> object) {
  if (place_ != 0) entries_[place_].value = std::move(object);
}
