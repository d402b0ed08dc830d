#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/KRHashIndex.h"

/// Tells from hashes alone which of many places may have an equal: a place whose hash no other has is sure to have
/// none. Where most are different, only few need to be compared. Hashes are told apart by half of their bits, so that a
/// place may be named that has no equal after all, one in some thousands of a million.
class KRLikelyEqual {
 public:
  /// Makes room for so many places.
  explicit KRLikelyEqual(size_t count);

  /// Adds a place with the hash of what stands there. Places come in ascending order.
  void add(uint32_t place, uint64_t hash);
  /// The places that may have an equal, ascending.
  std::vector<uint32_t> places();

 private:
  struct Pending {
    uint64_t hash;
    uint32_t place;
  };
  /// So many are looked for together, so that they wait for memory together.
  static constexpr size_t kBlock = 64;

  void addBlock();

  KRHashIndex index_;
  std::vector<bool> isShared_;
  std::array<Pending, kBlock> block_;
  size_t count_ = 0;
};
