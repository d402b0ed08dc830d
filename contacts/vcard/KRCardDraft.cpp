#include "contacts/vcard/KRCardDraft.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace {

constexpr uint32_t kAlignment = alignof(KRCardRow);
/// Records from this size on do not share a block.
constexpr uint32_t kOwnBlock = KRSlab::kSharedCapacity / 4;

}  // namespace

KRCardSlabs::Room KRCardSlabs::take(uint32_t size) {
  if (size >= kOwnBlock) return {KRSlab::create(std::max(size, KRSlab::kSharedCapacity + 1)), 0};
  if (current_ == nullptr || used_ + size > current_->capacity()) {
    if (current_ != nullptr) current_->release();
    current_ = KRSlab::create(KRSlab::kSharedCapacity);
    used_ = 0;
  }
  const uint32_t offset = used_;
  used_ = (used_ + size + kAlignment - 1) / kAlignment * kAlignment;
  current_->retain();
  return {current_, offset};
}

void KRCardDraft::start(const char* card, const char* end) noexcept {
  card_ = card;
  end_ = end;
  present_ = 0;
  decoded_.clear();
  entries_.clear();
  details_.clear();
  counts_ = {};
  places_.clear();
}

KRCardDraft::Place KRCardDraft::copy(std::string_view text) {
  if (text.size() > kLongestText) return {};
  const Place place{static_cast<uint32_t>(decoded_.size()), static_cast<uint32_t>(text.size()), true};
  decoded_.append(text);
  return place;
}

void KRCardDraft::addDetail(Entry entry, KRCardPart what, uint8_t detail, uint16_t label, const Place& place) {
  ++counts_[entries_[entry].what];
  ++places_[entry];
  const uint32_t mark = place.isDecoded ? kDecoded : 0U;
  details_.push_back({entry, {static_cast<uint8_t>(what), detail, label, place.offset, place.size | mark}});
}

KRCardRecord KRCardDraft::finish(std::string_view card, KRCardSlabs& slabs) {
  // Entries are sorted by counting, those of one property keep their order; each leaves room for its details.
  uint32_t before = 0;
  for (uint32_t left = present_; left != 0; left &= left - 1) {
    before += std::exchange(counts_[static_cast<size_t>(std::countr_zero(left))], before);
  }
  const auto rowCount = static_cast<uint32_t>(entries_.size() + details_.size());
  const auto rowsSize = static_cast<uint32_t>(rowCount * sizeof(KRCardRow));
  const auto decodedSize = static_cast<uint32_t>(decoded_.size());
  const auto cardSize = static_cast<uint32_t>(card.size());
  const KRCardSlabs::Room room = slabs.take(KRCardRecord::kHeadSize + rowsSize + decodedSize + cardSize);
  const uint32_t offset = room.offset + KRCardRecord::kHeadSize;
  char* bytes = room.slab->bytes() + offset;
  std::memcpy(bytes - KRCardRecord::kHeadSize, &decodedSize, KRCardRecord::kHeadSize);
  const auto write = [&](KRCardRow row, uint32_t at) {
    row.offset += rowsSize + ((row.size & kDecoded) != 0 ? 0 : decodedSize);
    row.size &= ~kDecoded;
    std::memcpy(bytes + at * sizeof(KRCardRow), &row, sizeof row);
  };
  for (size_t i = 0; i < entries_.size(); ++i) {
    uint32_t& next = counts_[entries_[i].what];
    const uint32_t at = std::exchange(next, next + places_[i]);
    write(entries_[i], at);
    places_[i] = at + 1;
  }
  for (const Detail& detail : details_) write(detail.row, places_[detail.entry]++);
  if (decodedSize != 0) std::memcpy(bytes + rowsSize, decoded_.data(), decodedSize);
  std::memcpy(bytes + rowsSize + decodedSize, card.data(), cardSize);
  return {room.slab, offset, rowCount, cardSize, present_};
}
