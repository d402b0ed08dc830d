#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "contacts/model/KRProperty.h"
#include "platform/KRPrefetch.h"
#include "platform/KRSlab.h"
#include "platform/KRString.h"
#include "platform/KRText.h"

/// What a row of a record's table is about: one of the standard properties (values below `kKROrdinalCount` are
/// `KROrdinal`s), a part of one, or a detail of the row before it.
enum class KRCardPart : uint8_t {
  FirstName = kKROrdinalCount,
  MiddleName,
  LastName,
  /// The card's own identifier.
  UID,
  // Details: they follow the row that they belong to.
  /// The field `KRCardRow::detail` (`KRAddressField`) of an address.
  AddressField,
  /// The country code given with an address.
  AddressCountryCode,
  /// The service of an account: the name numbered `KRCardRow::label`, or the row's text when that is 0.
  AccountService,
  /// The label of an entry whose name is not in the table of labels, as text.
  LabelText,
};

/// One row of a record's table: where the text of one value stands. Twelve bytes.
struct KRCardRow {
  /// In `detail` of an entry: it is the main one.
  static constexpr uint8_t kMain = 0x80;
  /// In `size`: the text stands in the card.
  static constexpr uint32_t kInCard = 0x80000000U;
  /// In `detail` of the thumbnail: how its text stands for bytes.
  enum ImageForm : uint8_t { Base64 = 1, Plain = 2 };

  /// `KROrdinal` or `KRCardPart`.
  uint8_t what;
  uint8_t detail;
  /// Number of the label's name in `KRLabelTable`; 0 for none.
  uint16_t label;
  /// Place of the first byte, counted from the first row (less than 0, modulo 2^32, before it), of a text in the card
  /// from the card's first byte.
  uint32_t offset;
  /// In bytes; with `kInCard` when the text stands in the card.
  uint32_t size;

  constexpr bool isInCard() const noexcept { return (size & kInCard) != 0; }
  constexpr uint32_t textSize() const noexcept { return size & ~kInCard; }
  constexpr bool is(KRCardPart part) const noexcept { return what == static_cast<uint8_t>(part); }
  constexpr bool isDetail() const noexcept { return what >= static_cast<uint8_t>(KRCardPart::AddressField); }
  /// A part of the name or the identifier.
  constexpr bool isPart() const noexcept { return what >= kKROrdinalCount && !isDetail(); }
};

/// The bytes of one record, counted and immutable, in blocks that it shares with its neighbours. In the one stand its
/// table of rows and the texts that are looked at most, in the other the card's own bytes as they were read, with all
/// other texts: what a walk over a large book reads lies close together. Copied like a value.
///
/// Rows of one property stand together, in the card's order: first the parts of the name and the identifier, then the
/// properties in the order of their numbers. The texts of rows are well-formed; the card's own bytes need not be.
class KRCardRecord {
 public:
  /// No rows, no card.
  KRCardRecord() noexcept = default;
  /// What stands in front of the rows, so that a person takes one line of the processor's cache: where the card is.
  struct Head {
    /// Null when there is no card.
    KRSlab* slab = nullptr;
    uint32_t offset = 0;
  };
  static constexpr uint32_t kHeadSize = sizeof(Head);
  static void write(const Head& head, char* rows) noexcept { std::memcpy(rows - kHeadSize, &head, kHeadSize); }
  /// Takes over one reference to the block, and that to the card's block which stands in the head. From `offset` (a
  /// multiple of four) on the block holds `rowCount` rows, before them the head, and before and behind these the texts
  /// that do not stand in the card; the card has `cardSize` bytes; `present` has a bit for each number that a row has.
  KRCardRecord(KRSlab* slab, uint32_t offset, uint32_t rowCount, uint32_t cardSize, uint32_t present) noexcept
      : slab_(slab), offset_(offset), rowCount_(rowCount), cardSize_(cardSize), present_(present) {}
  KRCardRecord(const KRCardRecord& other) noexcept;
  KRCardRecord(KRCardRecord&& other) noexcept { swap(other); }
  KRCardRecord& operator=(KRCardRecord other) noexcept {
    swap(other);
    return *this;
  }
  ~KRCardRecord() {
    if (slab_ != nullptr) release();
  }

  std::span<const KRCardRow> rows() const noexcept { return {reinterpret_cast<const KRCardRow*>(bytes()), rowCount_}; }
  /// The card's own bytes; no bytes for a record that no card stands behind.
  std::string_view card() const noexcept {
    return cardSize_ == 0 ? std::string_view() : std::string_view(cardBytes(), cardSize_);
  }

  /// Whether there is a row of that number (below 32). Constant time.
  bool has(uint8_t what) const noexcept { return (present_ >> what & 1U) != 0; }
  bool has(KRCardPart what) const noexcept { return has(static_cast<uint8_t>(what)); }
  /// Whether there is any row of the property: of a part of it, for the name.
  bool has(KROrdinal property) const noexcept {
    constexpr uint32_t kName = 1U << static_cast<uint8_t>(KRCardPart::FirstName) |
                               1U << static_cast<uint8_t>(KRCardPart::MiddleName) |
                               1U << static_cast<uint8_t>(KRCardPart::LastName);
    return property == KROrdinal::Name ? (present_ & kName) != 0 : has(static_cast<uint8_t>(property));
  }
  /// The first row of that number, or null; the others follow it, between them the details of each.
  const KRCardRow* find(uint8_t what) const noexcept { return has(what) ? firstOf(what) : nullptr; }
  const KRCardRow* find(KRCardPart what) const noexcept { return find(static_cast<uint8_t>(what)); }

  /// Asks the processor for the rows and the texts that stand before them.
  void prefetch() const noexcept {
    if (slab_ == nullptr) return;
    constexpr size_t kBefore = 80;
    krPrefetchLines(bytes() - kBefore, 5 * kKRCacheLine);
  }
  /// Asks for the card, of a long one for its beginning; when the rows have come.
  void prefetchCard() const noexcept {
    if (cardSize_ != 0) krPrefetchLines(cardBytes(), std::min<size_t>(cardSize_, 8 * kKRCacheLine));
  }
  /// The same for the first row of a property alone; when that has come, for its text.
  void prefetchRow(KROrdinal property) const noexcept {
    if (has(property)) krPrefetch(rows().data() + rowsBefore(firstNumber(property)));
  }
  void prefetchText(KROrdinal property) const noexcept {
    if (!has(property)) return;
    const KRCardRow* row = firstOf(firstNumber(property));
    // That of an address stands in its details.
    const bool isInDetail = row->textSize() == 0 && row + 1 != rows().data() + rowCount_;
    krPrefetch(textOf(isInDetail ? row[1] : row[0]));
  }
  /// The text of a row, as a view that is valid as long as the block lives.
  KRText view(const KRCardRow& row) const noexcept { return {textOf(row), row.textSize()}; }
  /// The text of the first row of that number, or nothing.
  KRText view(uint8_t what) const noexcept {
    const KRCardRow* row = find(what);
    return row == nullptr ? KRText() : view(*row);
  }
  /// The text of a row to be kept: a slice of a shared block, a copy where the block is one big card's own.
  KRString text(const KRCardRow& row) const;

 private:
  void swap(KRCardRecord& other) noexcept {
    std::swap(slab_, other.slab_);
    std::swap(offset_, other.offset_);
    std::swap(rowCount_, other.rowCount_);
    std::swap(cardSize_, other.cardSize_);
    std::swap(present_, other.present_);
  }
  /// How many bits are set. Written out, since the plainest processors have no instruction for it, and a call costs
  /// more.
  static constexpr uint32_t bitsIn(uint32_t bits) noexcept {
    bits -= bits >> 1U & 0x55555555U;
    bits = (bits & 0x33333333U) + (bits >> 2U & 0x33333333U);
    return ((bits + (bits >> 4U)) & 0x0F0F0F0FU) * 0x01010101U >> 24U;
  }
  static constexpr uint32_t kParts = ~uint32_t{0} << kKROrdinalCount;
  /// How many rows stand before those of a number at the least: one for each number that comes before it.
  uint32_t rowsBefore(uint8_t what) const noexcept {
    const uint32_t lower = (1U << what) - 1U;
    return bitsIn(present_ & (what < kKROrdinalCount ? lower | kParts : lower & kParts));
  }
  const KRCardRow* firstOf(uint8_t what) const noexcept {
    const KRCardRow* row = rows().data() + rowsBefore(what);
    while (row->what != what) ++row;
    return row;
  }
  /// The number of a property's first row; of the name, which there is, that of its first part.
  uint8_t firstNumber(KROrdinal property) const noexcept {
    return static_cast<uint8_t>(property == KROrdinal::Name ? std::countr_zero(present_ & kParts)
                                                            : static_cast<int>(property));
  }
  void retain() const noexcept;
  void release() const noexcept;
  Head head() const noexcept {
    Head head;
    std::memcpy(&head, bytes() - kHeadSize, kHeadSize);
    return head;
  }
  const char* cardBytes() const noexcept {
    const Head head = this->head();
    return head.slab->bytes() + head.offset;
  }
  const char* textOf(const KRCardRow& row) const noexcept {
    return row.isInCard() ? cardBytes() + row.offset : bytes() + static_cast<int32_t>(row.offset);
  }
  const char* bytes() const noexcept { return slab_ == nullptr ? nullptr : slab_->bytes() + offset_; }

  KRSlab* slab_ = nullptr;
  uint32_t offset_ = 0;
  uint32_t rowCount_ = 0;
  uint32_t cardSize_ = 0;
  uint32_t present_ = 0;
};
