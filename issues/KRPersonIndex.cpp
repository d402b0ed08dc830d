#include "issues/KRPersonIndex.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <utility>

#include "platform/KRHash.h"
#include "platform/KRPrefetch.h"

namespace {

int64_t numberOf(const IKRPerson* person) noexcept {
  return reinterpret_cast<intptr_t>(person);
}

/// The number whose decimal text this is, exactly as a person's key is written: no plus sign, no leading zeros.
std::optional<int64_t> numberOf(KRText key) noexcept {
  const std::string_view text = key.view();
  const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
  if (digits.empty() || (digits.front() == '0' && text.size() > 1)) return std::nullopt;
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

KRList<KRIssueObject>* unlessEmpty(KRList<KRIssueObject>& list) noexcept {
  return list.isEmpty() ? nullptr : &list;
}

uint64_t hashOf(int64_t key) noexcept {
  return krHashMix(krHashSeed(), static_cast<uint64_t>(key));
}

/// The first persons of a finding; asking for all of a long list would drive out what was asked for before.
std::span<IKRPerson* const> firstOf(const KRIssueObject& object) noexcept {
  constexpr size_t kMost = 4;
  const KRPersonArray& persons = object.personsAtHand();
  return {persons.begin(), std::min(persons.count(), kMost)};
}

void addOnce(KRList<KRIssueObject>& list, KRIssueObject* object) {
  if (!list.contains(object)) list.append(object);
}

}  // namespace

KRPersonIndex::~KRPersonIndex() {
  if (owner_.diesWithGroup()) return;
  for (const Entry& entry : entries_) {
    if (entry.first == nullptr) continue;
    owner_.endReference(entry.first);
    for (uint32_t at = entry.further; at != kNone; at = links_[at].next) owner_.endReference(links_[at].object);
  }
}

KRPersonIndex::Entry* KRPersonIndex::entryOf(int64_t key, uint64_t hash) {
  const uint32_t place = places_.find(hash, [&](uint32_t at) { return entries_[at].key == key; });
  return place == KRHashIndex::kNone ? nullptr : &entries_[place];
}

/// The list of an entry; made of its findings on the first request, and nothing when it has none.
KRPersonIndex::List* KRPersonIndex::listOf(Entry& entry) {
  if (entry.list != kNone) return &lists_[entry.list];
  if (entry.first == nullptr) return nullptr;
  entry.list = static_cast<uint32_t>(lists_.size());
  List& list = lists_.emplace_back(owner_);
  const auto move = [&](KRIssueObject* object) {
    list.append(object);
    owner_.endReference(object);
  };
  move(std::exchange(entry.first, nullptr));
  for (uint32_t at = std::exchange(entry.further, kNone); at != kNone; at = links_[at].next) move(links_[at].object);
  return &list;
}

KRPersonIndex::List* KRPersonIndex::findNumber(int64_t key) {
  Entry* entry = entryOf(key, hashOf(key));
  List* list = entry != nullptr ? listOf(*entry) : nullptr;
  return list != nullptr ? unlessEmpty(*list) : nullptr;
}

void KRPersonIndex::addNumber(KRIssueObject* object, int64_t key, uint64_t hash) {
  Entry* entry = entryOf(key, hash);
  if (entry == nullptr) {
    places_.add(hash, static_cast<uint32_t>(entries_.size()));
    entry = &entries_.emplace_back(Entry{key});
  }
  if (entry->list != kNone) {
    addOnce(lists_[entry->list], object);
  } else if (entry->first == nullptr) {
    referred_.push_back(object);
    entry->first = object;
  } else {
    addLink(*entry, object);
  }
}

/// Adds a further finding to an entry that has one and no list.
void KRPersonIndex::addLink(Entry& entry, KRIssueObject* object) {
  if (entry.first == object) return;
  uint32_t last = kNone;
  size_t count = 1;
  for (uint32_t at = entry.further; at != kNone; at = links_[at].next, ++count) {
    if (links_[at].object == object) return;
    last = at;
  }
  if (count == kLongest) {
    // The list ends the references of what it takes over.
    beginReferences();
    return listOf(entry)->append(object);
  }
  referred_.push_back(object);
  const auto added = static_cast<uint32_t>(links_.size());
  links_.push_back({object});
  (last == kNone ? entry.further : links_[last].next) = added;
}

void KRPersonIndex::prefetchPlaces(const KRIssueObject& object) const noexcept {
  for (const IKRPerson* person : firstOf(object)) {
    krPrefetchToWrite(person);
    places_.prefetch(hashOf(numberOf(person)));
  }
}

const KRPersonIndex::Entry* KRPersonIndex::likelyEntry(const IKRPerson* person) const noexcept {
  const uint32_t likely = places_.likely(hashOf(numberOf(person)));
  return likely == kNone ? nullptr : entries_.data() + likely;
}

void KRPersonIndex::prefetchEntries(const KRIssueObject& object) const noexcept {
  for (const IKRPerson* person : firstOf(object)) krPrefetchToWrite(likelyEntry(person));
}

void KRPersonIndex::prefetchLinks(const KRIssueObject& object) const noexcept {
  for (const IKRPerson* person : firstOf(object)) {
    const Entry* entry = likelyEntry(person);
    if (entry != nullptr && entry->further != kNone) krPrefetch(links_.data() + entry->further);
  }
}

void KRPersonIndex::prefetchFindings(const KRIssueObject& object) const noexcept {
  for (const IKRPerson* person : firstOf(object)) {
    const Entry* entry = likelyEntry(person);
    if (entry == nullptr || entry->first == nullptr) continue;
    entry->first->prefetchWhole();
    for (uint32_t at = entry->further; at != kNone; at = links_[at].next) links_[at].object->prefetchWhole();
  }
}

void KRPersonIndex::removeNumber(const KRIssueObject* object, int64_t key) {
  Entry* entry = entryOf(key, hashOf(key));
  if (entry == nullptr || object == nullptr) return;
  if (entry->list != kNone) {
    lists_[entry->list].remove(object);
  } else {
    removeLink(*entry, object);
  }
}

/// Takes a finding out of an entry without a list. Its link is not used again: fixes take out what a run has added, and
/// a run adds nothing afterwards.
void KRPersonIndex::removeLink(Entry& entry, const KRIssueObject* object) {
  if (entry.first == object) {
    const uint32_t second = entry.further;
    entry.first = second == kNone ? nullptr : links_[second].object;
    if (second != kNone) entry.further = links_[second].next;
    owner_.endReference(object);
    return;
  }
  for (uint32_t* at = &entry.further; *at != kNone; at = &links_[*at].next) {
    if (links_[*at].object != object) continue;
    *at = links_[*at].next;
    owner_.endReference(object);
    return;
  }
}

void KRPersonIndex::addAll(const KRList<KRIssueObject>& objects) {
  std::vector<Pending> block;
  block.reserve(kBlock);
  for (KRIssueObject& object : objects) {
    for (const IKRPerson* person : object.borrowPersons()) {
      const int64_t key = numberOf(person);
      const uint64_t hash = hashOf(key);
      places_.prefetch(hash);
      block.push_back({&object, key, hash, kNone});
      if (block.size() == kBlock) addBlock(block);
    }
  }
  addBlock(block);
}

/// Looks for the keys of a block together, so that they wait for memory together.
void KRPersonIndex::addBlock(std::vector<Pending>& block) {
  for (Pending& each : block) {
    each.likely = places_.likely(each.hash);
    if (each.likely != kNone) krPrefetch(entries_.data() + each.likely);
  }
  for (const Pending& each : block) {
    if (each.likely != kNone && entries_[each.likely].further != kNone) {
      krPrefetch(links_.data() + entries_[each.likely].further);
    }
  }
  for (const Pending& each : block) addNumber(each.object, each.key, each.hash);
  beginReferences();
  block.clear();
}

void KRPersonIndex::beginReferences() {
  owner_.beginReferences(referred_);
  referred_.clear();
}

KRList<KRIssueObject>* KRPersonIndex::find(const IKRPerson* person) {
  return findNumber(numberOf(person));
}

std::vector<KRRef<KRIssueObject>> KRPersonIndex::copy(const IKRPerson* person) {
  const Entry* entry = entryOf(numberOf(person), hashOf(numberOf(person)));
  if (entry == nullptr) return {};
  if (entry->list != kNone) return lists_[entry->list].copy();
  std::vector<KRRef<KRIssueObject>> findings;
  if (entry->first != nullptr) findings.emplace_back(entry->first);
  for (uint32_t at = entry->further; at != kNone; at = links_[at].next) findings.emplace_back(links_[at].object);
  return findings;
}

KRList<KRIssueObject>* KRPersonIndex::find(KRText key) {
  if (const auto number = numberOf(key)) return findNumber(*number);
  const auto found = texts_.find(key);
  return key.isNothing() || found == texts_.end() ? nullptr : unlessEmpty(found->second);
}

void KRPersonIndex::add(KRIssueObject* object, const IKRPerson* person) {
  addNumber(object, numberOf(person), hashOf(numberOf(person)));
  beginReferences();
}

void KRPersonIndex::add(KRIssueObject* object, KRText key) {
  if (key.isNothing()) return;
  if (const auto number = numberOf(key)) {
    addNumber(object, *number, hashOf(*number));
    beginReferences();
    return;
  }
  addOnce(texts_.try_emplace(KRString(key), owner_).first->second, object);
}

void KRPersonIndex::remove(const KRIssueObject* object, const IKRPerson* person) {
  removeNumber(object, numberOf(person));
}

void KRPersonIndex::remove(const KRIssueObject* object, KRText key) {
  if (const auto number = numberOf(key)) return removeNumber(object, *number);
  if (auto* list = find(key)) list->remove(object);
}
