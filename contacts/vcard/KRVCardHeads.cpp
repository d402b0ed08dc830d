#include "contacts/vcard/KRVCardHeads.h"

#include <algorithm>
#include <utility>

#include "contacts/vcard/KRVCardText.h"
#include "platform/KRBytes.h"

namespace {

KRVCardHead readHead(std::string_view text) {
  KRVCardHead head;
  // The name is all before the first colon or semicolon, and before its last dot the group.
  const size_t nameEnd = std::min(text.find_first_of(":;"), text.size());
  std::string_view name = text.substr(0, nameEnd);
  const size_t dot = name.rfind('.');
  if (dot != std::string_view::npos) {
    const std::string_view group = krTrimmedBlanks(name.substr(0, dot));
    head.group = {static_cast<size_t>(group.data() - text.data()), group.size()};
    name.remove_prefix(dot + 1);
  }
  name = krTrimmedBlanks(name);
  head.name = {static_cast<size_t>(name.data() - text.data()), name.size()};
  head.parameterText = {nameEnd, text.size() - nameEnd};
  head.property = &krVCardProperty(name);
  head.parameters = krParseParameters(text.substr(nameEnd));
  return head;
}

/// By whole words, of which the last may begin in the one before it.
uint64_t hashOf(std::string_view head) noexcept {
  constexpr uint64_t kOdd = 0x9e3779b97f4a7c15U;
  const size_t size = head.size();
  uint64_t hash = size;
  if (size < 8) {
    hash = (hash ^ krLoadPart(head.data(), size)) * kOdd;
  } else {
    for (size_t at = 0; at + 8 < size; at += 8) hash = (hash ^ krLoadWord(head.data() + at)) * kOdd;
    hash = (hash ^ krLoadWord(head.data() + size - 8)) * kOdd;
  }
  return hash;
}

}  // namespace

bool KRVCardHeads::isSame(const Known* known, std::string_view head) noexcept {
  const size_t size = head.size();
  if (known == nullptr || known->size != size) return false;
  const char* const one = known->text.data();
  const char* const other = head.data();
  if (size < 8) return krLoadPart(one, size) == krLoadPart(other, size);
  for (size_t at = 0; at + 8 < size; at += 8) {
    if (krLoadWord(one + at) != krLoadWord(other + at)) return false;
  }
  return krLoadWord(one + size - 8) == krLoadWord(other + size - 8);
}

const KRVCardHead& KRVCardHeads::find(std::string_view head) {
  const size_t size = head.size();
  if (size > kLongest) return other_ = readHead(head);
  // In its highest bits every byte counts.
  constexpr unsigned kSlotBits = 9;
  static_assert(kSlots == size_t{1} << kSlotBits);
  const size_t slot = hashOf(head) >> (64U - kSlotBits);
  const Known* const first = slots_[slot].get();
  if (isSame(first, head)) return first->head;
  const Known* const second = slots_[slot ^ 1U].get();
  if (isSame(second, head)) return second->head;
  return keep(head, slot);
}

const KRVCardHead& KRVCardHeads::keep(std::string_view head, size_t slot) {
  std::unique_ptr<Known>& first = slots_[slot];
  // The one that came before makes room and stays beside it; of three the oldest goes.
  KRVCardHead made = readHead(head);
  if (first != nullptr) std::swap(first, slots_[slot ^ 1U]);
  if (first == nullptr) first = std::make_unique<Known>();
  std::copy(head.begin(), head.end(), first->text.begin());
  first->size = head.size();
  first->head = std::move(made);
  return first->head;
}
