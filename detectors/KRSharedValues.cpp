#include "detectors/KRSharedValues.h"

#include <string>

#include "issues/KRIssueObject.h"
#include "platform/KRHash.h"

namespace {

constexpr std::string_view kMark = ":OrgString##";
/// Groups up to this size are looked through for a contact that is there already; larger ones have an index.
constexpr size_t kFew = 8;

/// Takes out every contact that equals an earlier one. A list may hold a contact more than once.
void keepEachOnce(std::vector<IKRPerson*>& persons) {
  KRHashIndex index;
  size_t kept = 0;
  const bool isLarge = persons.size() > kFew;
  for (IKRPerson* person : persons) {
    const auto isSame = [&](size_t place) { return krEqualObjects(persons[place], person); };
    bool isThere = false;
    if (isLarge) {
      isThere = index.find(person->hash(), isSame) != KRHashIndex::kNone;
      if (!isThere) index.add(person->hash(), static_cast<uint32_t>(kept));
    } else {
      for (size_t place = 0; place < kept && !isThere; ++place) isThere = isSame(place);
    }
    if (!isThere) persons[kept++] = person;
  }
  persons.resize(kept);
}

}  // namespace

void KRSharedValues::collect(const KRPersonList& persons, const KRProgress& progress) {
  // Most contacts have a value or two.
  groups_.reserve(persons.count() * 2);
  keys_.reserve(persons.count() * 2);
  block_.reserve(kBlock);
  const KRPersonAhead ahead(persons, property_, KRPersonAhead::Reach::Places);
  for (uint32_t i = 0; i < persons.count(); ++i) {
    ahead.reach(i);
    const IKRPerson& person = *persons.at(i);
    const bool isOrganization = person.isOrganization();
    person.readTexts(property_, hold_, [&](KRText text) {
      if (!text.isNothing()) read(text, isOrganization, i);
      return true;
    });
    progress(static_cast<double>(static_cast<float>(i) / static_cast<float>(persons.count()) * 70.0F));
  }
  addBlock();
}

void KRSharedValues::read(KRText value, bool isOrganization, uint32_t place) {
  krPrefetch(value.data());
  block_.push_back(
      {0, {value.data(), static_cast<uint32_t>(value.size()), isOrganization}, place, KRPersonGroups::kNone});
  if (block_.size() == kBlock) addBlock();
}

void KRSharedValues::hash(Pending& value) {
  Key& key = value.key;
  // A person's value that ends in the mark is the same text as an organisation's without it.
  if (!key.isMarked && key.text().view().ends_with(kMark)) {
    key.isMarked = true;
    key.size -= static_cast<uint32_t>(kMark.size());
  }
  value.hash = krHashMix(key.text().hash(), key.isMarked ? 1 : 0);
}

void KRSharedValues::addBlock() {
  for (Pending& each : block_) {
    hash(each);
    groups_.prefetch(each.hash);
  }
  for (Pending& each : block_) {
    each.likely = groups_.likely(each.hash);
    if (each.likely == KRPersonGroups::kNone) continue;
    groups_.prefetchKey(each.likely);
    krPrefetch(keys_.data() + each.likely);
  }
  for (const Pending& each : block_) {
    if (each.likely != KRPersonGroups::kNone) krPrefetch(keys_[each.likely].data);
  }
  for (const Pending& each : block_) add(each);
  block_.clear();
}

void KRSharedValues::add(const Pending& value) {
  const auto isSame = [&](uint32_t number) {
    return keys_[number].isMarked == value.key.isMarked && keys_[number].text() == value.key.text();
  };
  const auto known = groups_.find(value.hash, isSame);
  if (known == KRPersonGroups::kNone) {
    groups_.start(value.hash, value.place);
    keys_.push_back(value.key);
  } else if (groups_.lastPlace(known) != value.place) {
    groups_.join(known, value.place);
  }
}

KRString KRSharedValues::value(uint32_t key) const {
  // What is left when the mark is taken out wherever it stands: out of values that hold it, too.
  std::string text(keys_[key].text().view());
  for (size_t at = text.find(kMark); at != std::string::npos; at = text.find(kMark, at)) text.erase(at, kMark.size());
  return KRString::trusted(text);
}

KRPersonArray KRSharedValues::all(uint32_t key, const KRPersonList& persons) {
  room_.clear();
  groups_.forPlaces(key, [&](uint32_t place) { room_.push_back(persons.at(place)); });
  keepEachOnce(room_);
  return KRPersonArray(room_);
}

KRPersonArray KRSharedValues::holders(uint32_t key, const KRPersonList& persons) {
  if (!groups_.isGroup(key)) return {};
  KRPersonArray all = this->all(key, persons);
  return all.count() > 1 ? all : KRPersonArray();
}

KRString KRSharedValues::keyString(const KRString& value, const IKRPerson* person) {
  if (value.isNothing() || person == nullptr || !person->isOrganization()) return value;
  return krConcat({value, kMark});
}

KRRef<KRIssueObject> krFindingAboutValue(const KRPersonArray& persons, const KRString& value, KRText format) {
  auto object = krMake<KRIssueObject>();
  object->setPersons(persons);
  object->setInfo(value);
  object->setDescribe(krFormat(format, value));
  return object;
}
