#include "issues/KRPersonIndex.h"

#include <charconv>
#include <optional>

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

void addOnce(KRList<KRIssueObject>& list, KRIssueObject* object) {
  if (!list.contains(object)) list.append(object);
}

}  // namespace

size_t KRPersonIndex::cellOf(int64_t key) const noexcept {
  const size_t mask = cells_.size() - 1;
  size_t cell = krHashMix(krHashSeed(), static_cast<uint64_t>(key)) & mask;
  while (cells_[cell] != kFree && entries_[cells_[cell]].key != key) cell = (cell + 1) & mask;
  return cell;
}

void KRPersonIndex::grow() {
  cells_.assign(cells_.empty() ? 16 : cells_.size() * 2, kFree);
  for (size_t number = 0; number < entries_.size(); ++number) {
    cells_[cellOf(entries_[number].key)] = static_cast<Cell>(number);
  }
}

KRList<KRIssueObject>* KRPersonIndex::findNumber(int64_t key) noexcept {
  if (cells_.empty()) return nullptr;
  const Cell number = cells_[cellOf(key)];
  return number == kFree ? nullptr : unlessEmpty(entries_[number].objects);
}

KRList<KRIssueObject>& KRPersonIndex::listOfNumber(int64_t key) {
  if ((entries_.size() + 1) * 4 > cells_.size() * 3) grow();
  Cell& cell = cells_[cellOf(key)];
  if (cell == kFree) {
    cell = static_cast<Cell>(entries_.size());
    entries_.emplace_back(owner_, key);
  }
  return entries_[cell].objects;
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
  addOnce(listOfNumber(numberOf(person)), object);
}

void KRPersonIndex::add(KRIssueObject* object, KRText key) {
  if (key.isNothing()) return;
  if (const auto number = numberOf(key)) return addOnce(listOfNumber(*number), object);
  addOnce(texts_.try_emplace(KRString(key), owner_).first->second, object);
}
