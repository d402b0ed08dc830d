#include "contacts/vcard/KRVCardHeads.h"

#include <algorithm>
#include <cstring>
#include <functional>
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

/// Always the same steps, whatever the size: it changes from line to line, and nothing could guess it.
inline KRVCardHeads::Words KRVCardHeads::wordsOf(std::string_view head, const char* end) noexcept {
  // Read from `kWindow - n` on, they keep the first n bytes of a window.
  static constexpr auto kMasks = [] {
    std::array<char, 2 * kWindow> masks{};
    std::fill_n(masks.begin(), kWindow, static_cast<char>(0xFF));
    return masks;
  }();
  const size_t size = std::min(head.size(), kWindow);
  if (static_cast<size_t>(end - head.data()) < kWindow) return copiedWordsOf(head.substr(0, size));
  const char* const from = head.data();
  const char* const mask = kMasks.data() + (kWindow - size);
  const auto word = [&](size_t i) { return krLoadWord(from + 8 * i) & krLoadWord(mask + 8 * i); };
  return {word(0), word(1), word(2), word(3), word(4)};
}

KRVCardHeads::Words KRVCardHeads::copiedWordsOf(std::string_view start) noexcept {
  Words words{};
  std::memcpy(words.data(), start.data(), start.size());
  return words;
}

inline std::string_view KRVCardHeads::restOf(std::string_view head) noexcept {
  return head.substr(std::min(head.size(), kWindow));
}

inline bool KRVCardHeads::isSame(const Known* known, const Words& words, std::string_view head) noexcept {
  if (known == nullptr || known->size != head.size()) return false;
  const auto difference = [&](size_t i) { return known->words[i] ^ words[i]; };
  if ((difference(0) | difference(1) | difference(2) | difference(3) | difference(4)) != 0) return false;
  return head.size() <= kWindow || known->rest == restOf(head);
}

const KRVCardHead& KRVCardHeads::find(std::string_view head, const char* end) {
  // Odd numbers, so that in the highest bits of the sum every byte counts.
  constexpr Words kFactors = {0x9e3779b97f4a7c15U, 0xbf58476d1ce4e5b9U, 0x94d049bb133111ebU, 0xd6e8feb86659fd93U,
                              0xa0761d6478bd642fU};
  constexpr unsigned kSlotBits = 9;
  static_assert(kSlots == size_t{1} << kSlotBits);
  const Words words = wordsOf(head, end);
  const auto product = [&](size_t i) { return words[i] * kFactors[i]; };
  uint64_t sum = product(0) + product(1) + product(2) + product(3) + product(4) + head.size() * 0xe7037ed1a0b428dbU;
  if (head.size() > kWindow) sum += std::hash<std::string_view>()(restOf(head)) * kFactors[0];
  const size_t slot = sum >> (64U - kSlotBits);
  const Known* const first = slots_[slot].get();
  if (isSame(first, words, head)) return first->head;
  const Known* const second = slots_[slot ^ 1U].get();
  if (isSame(second, words, head)) return second->head;
  return keep(head, words, slot);
}

const KRVCardHead& KRVCardHeads::keep(std::string_view head, const Words& words, size_t slot) {
  if (head.size() > kLongest) return other_ = readHead(head);
  std::unique_ptr<Known>& first = slots_[slot];
  // The one that came before makes room and stays beside it; of three the oldest goes.
  KRVCardHead made = readHead(head);
  std::string rest(restOf(head));
  if (first != nullptr) std::swap(first, slots_[slot ^ 1U]);
  if (first == nullptr) first = std::make_unique<Known>();
  first->words = words;
  first->size = head.size();
  first->rest = std::move(rest);
  first->head = std::move(made);
  return first->head;
}
