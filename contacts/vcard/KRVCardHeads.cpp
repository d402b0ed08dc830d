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

}  // namespace

bool KRVCardHeads::isSame(const Known* known, const std::array<uint64_t, kWords>& words, size_t size) noexcept {
  if (known == nullptr || known->size != size) return false;
  for (size_t i = 0; i * sizeof(uint64_t) < size; ++i) {
    if (known->words[i] != words[i]) return false;
  }
  return true;
}

const KRVCardHead& KRVCardHeads::find(std::string_view head) {
  const size_t size = head.size();
  if (size > kLongest) return other_ = readHead(head);
  std::array<uint64_t, kWords> words;
  uint64_t hash = size;
  for (size_t i = 0; i * sizeof(uint64_t) < size; ++i) {
    words[i] = krLoadPart(head.data() + i * sizeof(uint64_t), size - i * sizeof(uint64_t));
    hash = (hash ^ words[i]) * 0x9e3779b97f4a7c15U;
    hash ^= hash >> 32U;
  }
  const size_t slot = hash % kSlots;
  std::unique_ptr<Known>& first = slots_[slot];
  std::unique_ptr<Known>& second = slots_[slot ^ 1U];
  if (isSame(first.get(), words, size)) return first->head;
  if (isSame(second.get(), words, size)) return second->head;
  // The one that came before makes room and stays beside it; of three the oldest goes.
  KRVCardHead made = readHead(head);
  if (first != nullptr) std::swap(first, second);
  if (first == nullptr) first = std::make_unique<Known>();
  std::copy_n(words.begin(), (size + sizeof(uint64_t) - 1) / sizeof(uint64_t), first->words.begin());
  first->size = size;
  first->head = std::move(made);
  return first->head;
}
