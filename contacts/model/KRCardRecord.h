#pragma once

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
  /// In `detail` of the thumbnail: how its text stands for bytes.
  enum ImageForm : uint8_t { Base64 = 1, Plain = 2 };

  /// `KROrdinal` or `KRCardPart`.
  uint8_t what;
  uint8_t detail;
  /// Number of the label's name in `KRLabelTable`; 0 for none.
  uint16_t label;
  /// Place of the first byte, counted from the start of the record's bytes.
  uint32_t offset;
  uint32_t size;

  constexpr bool is(KRCardPart part) const noexcept { return what == static_cast<uint8_t>(part); }
  constexpr bool isDetail() const noexcept { return what >= static_cast<uint8_t>(KRCardPart::AddressField); }
  /// A part of the name or the identifier.
  constexpr bool isPart() const noexcept { return what >= kKROrdinalCount && !isDetail(); }
};

/// The bytes of one record, counted and immutable: its table of rows, the text that had to be decoded, and the card's
/// own bytes as they were read, one after the other in a block that it shares with its neighbours. Copied like a value.
///
/// Rows of one property stand together, in the card's order, and the properties in the order of their numbers. The
/// texts of rows are well-formed; the card's own bytes need not be.
class KRCardRecord {
 public:
  /// No rows, no card.
  KRCardRecord() noexcept = default;
  /// Bytes of the number that stands in front of the rows: how many bytes of decoded text there are. It is not in the
  /// record itself, so that a person takes one line of the processor's cache.
  static constexpr uint32_t kHeadSize = sizeof(uint32_t);
  /// Takes over one reference to the block. From `offset` (a multiple of four, and at least `kHeadSize`) on it holds
  /// `rowCount` rows, the decoded text and `cardSize` bytes of the card, and before them the size of the decoded text;
  /// `present` has a bit for each number that a row has.
  KRCardRecord(KRSlab* slab, uint32_t offset, uint32_t rowCount, uint32_t cardSize, uint32_t present) noexcept
      : slab_(slab), offset_(offset), rowCount_(rowCount), cardSize_(cardSize), present_(present) {}
  KRCardRecord(const KRCardRecord& other) noexcept;
  KRCardRecord(KRCardRecord&& other) noexcept { swap(other); }
  KRCardRecord& operator=(KRCardRecord other) noexcept {
    swap(other);
    return *this;
  }
  ~KRCardRecord() {
    if (slab_ != nullptr) slab_->release();
  }

  std::span<const KRCardRow> rows() const noexcept { return {reinterpret_cast<const KRCardRow*>(bytes()), rowCount_}; }
  /// The card's own bytes; no bytes for a record that no card stands behind.
  std::string_view card() const noexcept {
    if (slab_ == nullptr) return {};
    return {bytes() + rowCount_ * sizeof(KRCardRow) + decodedSize(), cardSize_};
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
  const KRCardRow* find(uint8_t what) const noexcept {
    if (!has(what)) return nullptr;
    return what < kKROrdinalCount ? firstOf(what) : firstOfPart(what);
  }
  const KRCardRow* find(KRCardPart what) const noexcept { return find(static_cast<uint8_t>(what)); }

  /// Asks the processor for the rows and what stands right behind them.
  void prefetch() const noexcept {
    if (slab_ == nullptr) return;
    constexpr size_t kLine = 64;
    constexpr size_t kLines = 6;
    for (size_t i = 0; i < kLines; ++i) krPrefetch(bytes() + i * kLine);
  }
  /// The same for the first row of a property alone (the last of the name's, which stand last); when that has come, for
  /// its text.
  void prefetchRow(KROrdinal property) const noexcept {
    if (!has(property)) return;
    krPrefetch(property == KROrdinal::Name ? rows().data() + rowCount_ - 1
                                           : rows().data() + rowsBefore(static_cast<uint8_t>(property)));
  }
  void prefetchText(KROrdinal property) const noexcept {
    if (!has(property)) return;
    const KRCardRow* row =
        property == KROrdinal::Name ? firstOfPart(firstPart()) : firstOf(static_cast<uint8_t>(property));
    krPrefetch(bytes() + row->offset);
  }
  /// The text of a row, as a view that is valid as long as the block lives.
  KRText view(const KRCardRow& row) const noexcept { return {bytes() + row.offset, row.size}; }
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
  /// How many rows stand before those of a number at the least: one for each lower number.
  uint32_t rowsBefore(uint8_t what) const noexcept { return bitsIn(present_ & ((1U << what) - 1U)); }
  const KRCardRow* firstOf(uint8_t what) const noexcept {
    const KRCardRow* row = rows().data() + rowsBefore(what);
    while (row->what != what) ++row;
    return row;
  }
  /// The lowest part that there is; for a record that has one.
  uint8_t firstPart() const noexcept {
    return static_cast<uint8_t>(kKROrdinalCount + std::countr_zero(present_ >> kKROrdinalCount));
  }
  /// Parts are the last rows, and few.
  const KRCardRow* firstOfPart(uint8_t what) const noexcept {
    const KRCardRow* first = rows().data();
    const KRCardRow* row = first + rowCount_ - 1;
    while (row->what != what) --row;
    while (row != first && row[-1].what == what) --row;
    return row;
  }
  uint32_t decodedSize() const noexcept {
    uint32_t size;
    std::memcpy(&size, bytes() - kHeadSize, sizeof size);
    return size;
  }
  const char* bytes() const noexcept { return slab_ == nullptr ? nullptr : slab_->bytes() + offset_; }

  KRSlab* slab_ = nullptr;
  uint32_t offset_ = 0;
  uint32_t rowCount_ = 0;
  uint32_t cardSize_ = 0;
  uint32_t present_ = 0;
};
