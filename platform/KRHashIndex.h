#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/KRPrefetch.h"
#include "platform/KRZeroMemory.h"

/// Finds numbers (places in some list of the caller's) by the hash of what stands there. The list itself is not known
/// here: the caller compares. Eight bytes a number, without memory of its own for each, so that large archives are
/// written at nearly the same speed for each object as small ones.
///
/// The upper half of a hash says where its number stands. Where those of some hashes follow one another, their numbers
/// stand side by side.
///
/// A caller with many numbers to look for asks for the slots of some of them first (`prefetch`, then `likely`), so that
/// it waits for memory once and not for each.
class KRHashIndex {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFFU;

  /// How full a table may become before it grows: half is fastest, three quarters takes less memory in the long run.
  enum class Fill : uint8_t { Half, ThreeQuarters };

  KRHashIndex() noexcept = default;
  explicit KRHashIndex(Fill fill) noexcept : fill_(fill) {}
  KRHashIndex(KRHashIndex&& other) noexcept { swap(other); }
  KRHashIndex& operator=(KRHashIndex other) noexcept {
    swap(other);
    return *this;
  }
  KRHashIndex(const KRHashIndex&) = delete;
  ~KRHashIndex() = default;

  /// The number that was added under the hash and for which `isSame(number)` is true; `kNone` when there is none.
  template <class IsSame>
  uint32_t find(uint64_t hash, IsSame isSame) const {
    const Slot* slot = slotOf(hash, isSame);
    return slot != nullptr ? ~slot->coded : kNone;
  }

  /// The number that `find` most likely answers, or `kNone` where it is sure to answer that.
  uint32_t likely(uint64_t hash) const noexcept {
    return find(hash, [](uint32_t) { return true; });
  }

  /// Asks for the memory where a search for the hash begins.
  void prefetch(uint64_t hash) const noexcept {
    if (size_ != 0) krPrefetch(slots() + (tagOf(hash) & mask()));
  }

  /// Adds a number that is not there yet.
  void add(uint64_t hash, uint32_t number) {
    if (count_ >= most(size_)) resize(size_ == 0 ? 64 : size_ * 2);
    put({tagOf(hash), ~number});
    ++count_;
  }

  /// Puts a number in the place of one that `find` answers, or adds it where there is none.
  template <class IsSame>
  void replace(uint64_t hash, uint32_t number, IsSame isSame) {
    if (Slot* slot = slotOf(hash, isSame)) {
      slot->coded = ~number;
    } else {
      add(hash, number);
    }
  }

  /// Makes room for so many numbers in all. Room that is not used costs next to nothing.
  void reserve(size_t count) {
    size_t size = 64;
    while (most(size) < count) size *= 2;
    if (size > size_) resize(size);
  }

 private:
  struct Slot {
    /// Half of the hash: it says where the search begins, and spares most comparisons.
    uint32_t tag;
    /// The number's complement, so that memory of zeros is a table of free slots.
    uint32_t coded;
  };

  static uint32_t tagOf(uint64_t hash) noexcept { return static_cast<uint32_t>(hash >> 32U); }
  size_t most(size_t size) const noexcept { return fill_ == Fill::Half ? size / 2 : size / 4 * 3; }
  size_t mask() const noexcept { return size_ - 1; }
  Slot* slots() const noexcept { return static_cast<Slot*>(memory_.data()); }

  template <class IsSame>
  Slot* slotOf(uint64_t hash, IsSame isSame) const {
    if (size_ == 0) return nullptr;
    const uint32_t tag = tagOf(hash);
    for (size_t place = tag & mask(); slots()[place].coded != 0; place = (place + 1) & mask()) {
      if (slots()[place].tag == tag && isSame(~slots()[place].coded)) return slots() + place;
    }
    return nullptr;
  }

  void put(Slot slot) noexcept {
    size_t place = slot.tag & mask();
    while (slots()[place].coded != 0) place = (place + 1) & mask();
    slots()[place] = slot;
  }

  void resize(size_t size) {
    const KRZeroMemory former = std::exchange(memory_, KRZeroMemory(size * sizeof(Slot)));
    const size_t formerSize = std::exchange(size_, size);
    if (count_ == 0) return;
    const auto* each = static_cast<const Slot*>(former.data());
    for (const Slot* end = each + formerSize; each != end; ++each) {
      if (each->coded != 0) put(*each);
    }
  }

  void swap(KRHashIndex& other) noexcept {
    std::swap(memory_, other.memory_);
    std::swap(size_, other.size_);
    std::swap(count_, other.count_);
    std::swap(fill_, other.fill_);
  }

  KRZeroMemory memory_;
  /// A power of two; 0 at first.
  size_t size_ = 0;
  size_t count_ = 0;
  Fill fill_ = Fill::Half;
};
