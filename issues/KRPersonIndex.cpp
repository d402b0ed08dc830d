#include "issues/KRPersonIndex.h"

#include <charconv>
#include <optional>
#include <utility>

#include "platform/KRHash.h"

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

void addOnce(KRList<KRIssueObject>& list, KRIssueObject* object) {
  if (!list.contains(object)) list.append(object);
}

}  // namespace

KRPersonIndex::~KRPersonIndex() {
  if (owner_.diesWithGroup()) return;
  for (const Entry& entry : entries_) {
    if (entry.only != nullptr) owner_.endReference(entry.only);
  }
}

KRPersonIndex::Entry* KRPersonIndex::entryOf(int64_t key) {
  const uint32_t place = places_.find(hashOf(key), [&](uint32_t at) { return entries_[at].key == key; });
  return place == KRPlaceTable::kNone ? nullptr : &entries_[place];
}

/// The list of an entry that has at least one finding; made of the only one on the first request.
KRPersonIndex::List* KRPersonIndex::listOf(Entry& entry) {
  if (entry.only != nullptr) {
    entry.list = &lists_.emplace_back(owner_);
    entry.list->append(entry.only);
    owner_.endReference(std::exchange(entry.only, nullptr));
  }
  return entry.list;
}

KRPersonIndex::List* KRPersonIndex::findNumber(int64_t key) {
  Entry* entry = entryOf(key);
  List* list = entry != nullptr ? listOf(*entry) : nullptr;
  return list != nullptr ? unlessEmpty(*list) : nullptr;
}

void KRPersonIndex::addNumber(KRIssueObject* object, int64_t key) {
  Entry* entry = entryOf(key);
  if (entry == nullptr) {
    places_.add(hashOf(key), static_cast<uint32_t>(entries_.size()));
    entry = &entries_.emplace_back(Entry{key});
  }
  if (entry->only == object) return;
  if (List* list = listOf(*entry)) return addOnce(*list, object);
  owner_.beginReference(object);
  entry->only = object;
}

void KRPersonIndex::removeNumber(const KRIssueObject* object, int64_t key) {
  Entry* entry = entryOf(key);
  if (entry == nullptr || object == nullptr) return;
  if (entry->list != nullptr) {
    entry->list->remove(object);
  } else if (entry->only == object) {
    entry->only = nullptr;
    owner_.endReference(object);
  }
}

KRList<KRIssueObject>* KRPersonIndex::find(const IKRPerson* person) {
  return findNumber(numberOf(person));
}

KRList<KRIssueObject>* KRPersonIndex::find(KRText key) {
  if (const auto number = numberOf(key)) return findNumber(*number);
  const auto found = texts_.find(key);
  return key.isNothing() || found == texts_.end() ? nullptr : unlessEmpty(found->second);
}

void KRPersonIndex::add(KRIssueObject* object, const IKRPerson* person) {
  addNumber(object, numberOf(person));
}

void KRPersonIndex::add(KRIssueObject* object, KRText key) {
  if (key.isNothing()) return;
  if (const auto number = numberOf(key)) return addNumber(object, *number);
  addOnce(texts_.try_emplace(KRString(key), owner_).first->second, object);
}

void KRPersonIndex::remove(const KRIssueObject* object, const IKRPerson* person) {
  removeNumber(object, numberOf(person));
}

void KRPersonIndex::remove(const KRIssueObject* object, KRText key) {
  if (const auto number = numberOf(key)) return removeNumber(object, *number);
  if (auto* list = find(key)) list->remove(object);
}
