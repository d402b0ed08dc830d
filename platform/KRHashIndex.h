#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Finds numbers (places in some list of the caller's) by the hash of what stands there. The list itself is not known
/// here: the caller compares. Eight bytes a number, without memory of its own for each, so that large archives are
/// written at nearly the same speed for each object as small ones.
class KRHashIndex {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFFU;

  /// The number that was added under the hash and for which `isSame(number)` is true; `kNone` when there is none.
  template <class IsSame>
  uint32_t find(uint64_t hash, IsSame isSame) const {
    if (slots_.empty()) return kNone;
    const auto tag = static_cast<uint32_t>(hash >> 32U);
    for (size_t place = tag & mask(); slots_[place].number != kNone; place = (place + 1) & mask()) {
      if (slots_[place].tag == tag && isSame(slots_[place].number)) return slots_[place].number;
    }
    return kNone;
  }

  /// Adds a number that is not there yet.
  void add(uint64_t hash, uint32_t number) {
    if ((count_ + 1) * 2 > slots_.size()) grow();
    put({static_cast<uint32_t>(hash >> 32U), number});
    ++count_;
  }

 private:
  struct Slot {
    /// Half of the hash: it says where the search begins, and spares most comparisons.
    uint32_t tag = 0;
    uint32_t number = kNone;
  };

  size_t mask() const noexcept { return slots_.size() - 1; }

  void put(Slot slot) {
    size_t place = slot.tag & mask();
    while (slots_[place].number != kNone) place = (place + 1) & mask();
    slots_[place] = slot;
  }

  void grow() {
    std::vector<Slot> former(slots_.empty() ? 64 : slots_.size() * 2);
    former.swap(slots_);
    for (const Slot& slot : former) {
      if (slot.number != kNone) put(slot);
    }
  }

  /// The size is a power of two, at most half of it is taken.
  std::vector<Slot> slots_;
  size_t count_ = 0;
};
