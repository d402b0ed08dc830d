#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/KRCardRecord.h"

/// Fills blocks with the bytes of records, one after the other. A record that would waste much of a shared block gets
/// one of its own. Not locked.
class KRCardSlabs {
 public:
  KRCardSlabs() = default;
  KRCardSlabs(const KRCardSlabs&) = delete;
  KRCardSlabs& operator=(const KRCardSlabs&) = delete;
  ~KRCardSlabs() { letGo(); }

  struct Room {
    /// With a reference for the caller.
    KRSlab* slab;
    uint32_t offset;
  };
  /// Room for so many bytes, at least one.
  Room take(uint32_t size);

 private:
  /// Gives back the references that nobody got.
  void letGo() noexcept {
    if (current_ != nullptr) current_->release(references_);
  }

  KRSlab* current_ = nullptr;
  uint32_t used_ = 0;
  /// Taken at once for all the records that find room, as taking one each time would be the dearest of handing it out.
  uint32_t references_ = 0;
};

/// Collects the rows of one record while its card is read. Used again for the next card, so that nothing is allocated
/// once it has grown.
class KRCardDraft {
 public:
  /// Where a text stands: in the card that is being read, or in the text decoded so far.
  struct Place {
    uint32_t offset = 0;
    uint32_t size = 0;
    bool isDecoded = false;

    bool isEmpty() const noexcept { return size == 0; }
    Place part(size_t from, size_t count) const noexcept {
      return {offset + static_cast<uint32_t>(from), static_cast<uint32_t>(count), isDecoded};
    }
  };

  /// The number of an entry, as `add` gives it.
  using Entry = uint32_t;

  /// Starts a card in the text [card, end); texts that lie there stay there.
  void start(const char* card, const char* end) noexcept;

  /// Makes a place of a text: as it is when it lies in the card, else a copy. The text is well-formed.
  Place place(std::string_view text) {
    const std::less_equal<const char*> notAfter;
    if (!notAfter(card_, text.data()) || !notAfter(text.data(), end_) || text.size() > kLongestText) return copy(text);
    return {static_cast<uint32_t>(text.data() - card_), static_cast<uint32_t>(text.size()), false};
  }
  /// The text of a place; valid until the next `place`.
  std::string_view text(const Place& place) const noexcept {
    return {(place.isDecoded ? decoded_.data() : card_) + place.offset, place.size};
  }

  Entry add(uint8_t what, const Place& place) {
    present_ |= 1U << what;
    ++counts_[what];
    Property& added = entries_.emplace_back();
    added.places = 1;
    fill(added.row, what, place);
    if (isKeptNear(added.row)) nearSize_ += place.size;
    return static_cast<Entry>(entries_.size() - 1);
  }
  Entry add(KROrdinal what, const Place& place) { return add(static_cast<uint8_t>(what), place); }
  Entry add(KRCardPart what, const Place& place) { return add(static_cast<uint8_t>(what), place); }
  /// Adds a detail to an entry, at any time.
  void addDetail(Entry entry, KRCardPart what, uint8_t detail, uint16_t label, const Place& place);
  size_t entryCount() const noexcept { return entries_.size(); }
  uint8_t what(Entry entry) const noexcept { return entries_[entry].row.what; }
  KRCardRow& row(Entry entry) { return entries_[entry].row; }

  bool has(uint8_t what) const noexcept { return (present_ >> what & 1U) != 0; }
  bool has(KROrdinal what) const noexcept { return has(static_cast<uint8_t>(what)); }
  bool has(KRCardPart what) const noexcept { return has(static_cast<uint8_t>(what)); }

  /// The record: its rows in order with the texts that do not stand in the card, into the first blocks, and the card's
  /// bytes, into the second.
  KRCardRecord finish(std::string_view card, KRCardSlabs& slabs, KRCardSlabs& cards);

 private:
  struct Property {
    KRCardRow row;
    /// How many rows it takes with its details; once it stands in the record, the place of its next detail.
    uint32_t places;
  };
  struct Detail {
    Entry entry;
    KRCardRow row;
  };
  /// No text in a card is longer: the highest bit of a size says where a text stands.
  static constexpr size_t kLongestText = KRCardRow::kInCard - 1;
  /// Texts of the card up to this size that walks look at most are copied to the rows.
  static constexpr uint32_t kLongestNear = 64;

  static constexpr uint32_t sizeOf(const Place& place) noexcept {
    return place.size | (place.isDecoded ? 0U : KRCardRow::kInCard);
  }
  /// Fills a new row, all zeros, where it stands: copied in words of eight bytes, one that was just made of smaller
  /// members waits until they have arrived.
  static void fill(KRCardRow& row, uint8_t what, const Place& place) noexcept {
    row.what = what;
    row.offset = place.offset;
    row.size = sizeOf(place);
  }
  static constexpr bool isKeptNear(const KRCardRow& row) noexcept {
    constexpr uint32_t kNear =
        1U << static_cast<uint8_t>(KROrdinal::Phone) | 1U << static_cast<uint8_t>(KROrdinal::Email) |
        1U << static_cast<uint8_t>(KRCardPart::FirstName) | 1U << static_cast<uint8_t>(KRCardPart::MiddleName) |
        1U << static_cast<uint8_t>(KRCardPart::LastName);
    return !row.isDetail() && (kNear >> row.what & 1U) != 0 && row.isInCard() && row.textSize() <= kLongestNear;
  }

  static KRCardRecord::Head kept(std::string_view card, KRCardSlabs& cards);
  /// Copies a text to the decoded ones; an empty place for one that is too long.
  Place copy(std::string_view text);

  const char* card_ = nullptr;
  const char* end_ = nullptr;
  uint32_t present_ = 0;
  /// Bytes of the texts of the card that are copied to the rows.
  uint32_t nearSize_ = 0;
  std::string decoded_;
  std::vector<Property> entries_;
  std::vector<Detail> details_;
  /// How many rows there are of each number, details included.
  std::array<uint32_t, 32> counts_{};
};
