#include "issues/KRSortNames.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <typeinfo>
#include <utility>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRObjectPersonName.h"
#include "platform/KRCaseFolding.h"
#include "platform/KRTransliteration.h"

namespace {

/// The first eight bytes as a number that compares as they do; a shorter text is filled with zeros.
uint64_t numberOf(std::string_view text) noexcept {
  uint64_t number = 0;
  std::memcpy(&number, text.data(), std::min(text.size(), sizeof number));
  return std::endian::native == std::endian::little ? __builtin_bswap64(number) : number;
}

}  // namespace

bool KRSortNames::isRecord(const IKRPerson& person) noexcept {
  return typeid(person) == typeid(ABPerson);
}

void KRSortNames::reserve(size_t count) {
  starts_.reserve(count);
  keys_.reserve(count);
}

void KRSortNames::appendName(const IKRPerson& person) {
  hold_.empty();
  if (isRecord(person)) {
    const KRNameView name = person.readName(hold_);
    shown_.clear();
    KRObjectPersonName::appendDisplayString(shown_, name.first, name.middle, name.last);
    if (krAppendMandarinLatinKey(names_, std::string_view(shown_))) return;
  }
  KRString name = person.nameChineesPinyin();
  if (name.isNothing()) name = person.displayName();
  names_ += krCaselessKey(name).view();
}

void KRSortNames::add(const IKRPerson& person) {
  const size_t start = names_.size();
  appendName(person);
  const std::string_view name = std::string_view(names_).substr(start);
  const std::string_view second = name.substr(std::min(name.size(), sizeof(uint64_t)));
  keys_.push_back(
      {numberOf(name), numberOf(second), static_cast<uint32_t>(starts_.size()), static_cast<uint32_t>(name.size())});
  starts_.push_back(start);
}

/// What of a name does not stand in its key.
std::string_view KRSortNames::rest(const Key& key) const noexcept {
  return std::string_view(names_).substr(starts_[key.place] + kInKey, key.size - kInKey);
}

bool KRSortNames::isBefore(const Key& a, const Key& b) const noexcept {
  if (a.first != b.first) return a.first < b.first;
  if (a.second != b.second) return a.second < b.second;
  // A name that ends where another goes on comes first, also where the other goes on with zeros.
  if (a.size <= kInKey || b.size <= kInKey) return a.size != b.size ? a.size < b.size : a.place < b.place;
  const int order = rest(a).compare(rest(b));
  return order != 0 ? order < 0 : a.place < b.place;
}

auto KRSortNames::before() const noexcept {
  return [this](const Key& a, const Key& b) { return isBefore(a, b); };
}

void KRSortNames::sort(std::span<Key> keys) const {
  std::sort(keys.begin(), keys.end(), before());
}

void KRSortNames::sortByDrawers() {
  constexpr unsigned kShift = 48;  // to the first two bytes
  std::vector<uint32_t> ends(size_t{1} << (64U - kShift));
  for (const Key& key : keys_) ++ends[key.first >> kShift];
  std::partial_sum(ends.begin(), ends.end(), ends.begin());
  std::vector<Key> laid(keys_.size());
  // From the last to the first, each drawer is filled from its end; then `ends` tells where it begins.
  for (auto key = keys_.rbegin(); key != keys_.rend(); ++key) laid[--ends[key->first >> kShift]] = *key;
  keys_ = std::move(laid);
  for (size_t i = 0; i < ends.size(); ++i) {
    const size_t end = i + 1 < ends.size() ? ends[i + 1] : keys_.size();
    if (end - ends[i] > 1) sort(std::span(keys_).subspan(ends[i], end - ends[i]));
  }
}

std::vector<uint32_t> KRSortNames::order() {
  constexpr size_t kMany = 4096;
  std::vector<uint32_t> order;
  if (std::is_sorted(keys_.begin(), keys_.end(), before())) return order;
  keys_.size() < kMany ? sort(keys_) : sortByDrawers();
  order.reserve(keys_.size());
  for (const Key& key : keys_) order.push_back(key.place);
  return order;
}
