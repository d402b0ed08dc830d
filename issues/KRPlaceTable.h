#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// From hashes to places in a list that the caller keeps: the index over entries that are only ever added.
///
/// Open addressing. A cell holds a place and half of the hash, so that walking over other entries' cells and growing
/// touch no entry; about sixteen bytes an entry.
class KRPlaceTable {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFFU;

  /// The place added under the hash for which `isIt(place)` holds, or `kNone`.
  template <class IsIt>
  uint32_t find(uint64_t hash, IsIt isIt) const {
    if (cells_.empty()) return kNone;
    for (size_t at = home(hash); cells_[at].place != kNone; at = next(at)) {
      if (cells_[at].tag == tag(hash) && isIt(cells_[at].place)) return cells_[at].place;
    }
    return kNone;
  }

  /// Adds a place, which is not `kNone`; one that equals an earlier one is not found any more.
  void add(uint64_t hash, uint32_t place) {
    if ((used_ + 1) * 4 > cells_.size() * 3) grow();
    put({tag(hash), place});
    ++used_;
  }

 private:
  struct Cell {
    uint32_t tag = 0;
    uint32_t place = kNone;
  };

  static uint32_t tag(uint64_t hash) noexcept { return static_cast<uint32_t>(hash >> 32U); }
  // The tag alone says where an entry belongs, so that growing needs no more of the hash.
  size_t home(uint32_t tag) const noexcept { return tag & (cells_.size() - 1); }
  size_t home(uint64_t hash) const noexcept { return home(tag(hash)); }
  size_t next(size_t at) const noexcept { return (at + 1) & (cells_.size() - 1); }

  void put(Cell cell) {
    size_t at = home(cell.tag);
    while (cells_[at].place != kNone) at = next(at);
    cells_[at] = cell;
  }

  void grow() {
    std::vector<Cell> old(cells_.empty() ? 16 : cells_.size() * 2);
    old.swap(cells_);
    for (const Cell& cell : old) {
      if (cell.place != kNone) put(cell);
    }
  }

  std::vector<Cell> cells_;
  size_t used_ = 0;
};
