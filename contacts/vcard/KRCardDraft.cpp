#include "contacts/vcard/KRCardDraft.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace {

// Pointers stand where programs that look for lost memory find them.
constexpr uint32_t kAlignment = alignof(KRCardRecord::Head);
static_assert(kAlignment % alignof(KRCardRow) == 0 && KRCardRecord::kHeadSize % kAlignment == 0);
/// Records from this size on do not share a block.
constexpr uint32_t kOwnBlock = KRSlab::kSharedCapacity / 4;
/// More records than a shared block has room for.
constexpr uint32_t kEnoughReferences = KRSlab::kSharedCapacity / kAlignment + 1;

}  // namespace

KRCardSlabs::Room KRCardSlabs::take(uint32_t size) {
  if (size >= kOwnBlock) return {KRSlab::create(std::max(size, KRSlab::kSharedCapacity + 1)), 0};
  if (current_ == nullptr || used_ + size > current_->capacity()) {
    // First the new one: where there is no memory for it, the old one stays.
    KRSlab* fresh = KRSlab::create(KRSlab::kSharedCapacity);
    letGo();
    fresh->retain(kEnoughReferences - 1);
    current_ = fresh;
    used_ = 0;
    references_ = kEnoughReferences;
  }
  const uint32_t offset = used_;
  used_ = (used_ + size + kAlignment - 1) / kAlignment * kAlignment;
  --references_;
  return {current_, offset};
}

void KRCardDraft::start(const char* card, const char* end) noexcept {
  card_ = card;
  end_ = end;
  present_ = 0;
  nearSize_ = 0;
  decoded_.clear();
  entries_.clear();
  details_.clear();
  counts_ = {};
}

KRCardDraft::Place KRCardDraft::copy(std::string_view text) {
  if (text.size() > kLongestText) return {};
  const Place place{static_cast<uint32_t>(decoded_.size()), static_cast<uint32_t>(text.size()), true};
  decoded_.append(text);
  return place;
}

void KRCardDraft::addDetail(Entry entry, KRCardPart what, uint8_t detail, uint16_t label, const Place& place) {
  ++counts_[entries_[entry].row.what];
  ++entries_[entry].places;
  Detail& added = details_.emplace_back();
  added.entry = entry;
  fill(added.row, static_cast<uint8_t>(what), place);
  added.row.detail = detail;
  added.row.label = label;
}

KRCardRecord KRCardDraft::finish(std::string_view card, KRCardSlabs& slabs, KRCardSlabs& cards) {
  // Entries are sorted by counting, those of one property keep their order; each leaves room for its details. Parts
  // come before properties.
  uint32_t before = 0;
  constexpr uint32_t kParts = ~uint32_t{0} << kKROrdinalCount;
  for (uint32_t left : {present_ & kParts, present_ & ~kParts}) {
    for (; left != 0; left &= left - 1) {
      before += std::exchange(counts_[static_cast<size_t>(std::countr_zero(left))], before);
    }
  }
  const auto rowCount = static_cast<uint32_t>(entries_.size() + details_.size());
  const auto rowsSize = static_cast<uint32_t>(rowCount * sizeof(KRCardRow));
  const auto decodedSize = static_cast<uint32_t>(decoded_.size());
  const auto cardSize = static_cast<uint32_t>(card.size());
  const uint32_t beforeRows = (nearSize_ + kAlignment - 1) / kAlignment * kAlignment + KRCardRecord::kHeadSize;
  const KRCardSlabs::Room room = slabs.take(beforeRows + rowsSize + decodedSize);
  const uint32_t offset = room.offset + beforeRows;
  char* bytes = room.slab->bytes() + offset;
  // The first of them, mostly the name, stand next to the rows.
  uint32_t near = KRCardRecord::kHeadSize;
  const auto write = [&](const KRCardRow& row, uint32_t at) {
    uint32_t text = row.offset;
    uint32_t size = row.size;
    if (isKeptNear(row)) {
      size = row.textSize();
      near += size;
      std::memcpy(bytes - near, card.data() + text, size);
      text = 0U - near;
    } else if (!row.isInCard()) {
      text += rowsSize;
    }
    new (bytes + at * sizeof(KRCardRow)) KRCardRow{row.what, row.detail, row.label, text, size};
  };
  for (Property& entry : entries_) {
    uint32_t& next = counts_[entry.row.what];
    const uint32_t at = std::exchange(next, next + entry.places);
    write(entry.row, at);
    entry.places = at + 1;
  }
  for (const Detail& detail : details_) write(detail.row, entries_[detail.entry].places++);
  if (decodedSize != 0) std::memcpy(bytes + rowsSize, decoded_.data(), decodedSize);
  KRCardRecord::write(kept(card, cards), bytes);
  return {room.slab, offset, rowCount, cardSize, present_};
}

KRCardRecord::Head KRCardDraft::kept(std::string_view card, KRCardSlabs& cards) {
  if (card.empty()) return {};
  const KRCardSlabs::Room room = cards.take(static_cast<uint32_t>(card.size()));
  std::memcpy(room.slab->bytes() + room.offset, card.data(), card.size());
  return {room.slab, room.offset};
}
