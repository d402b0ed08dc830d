#pragma once

#include <cstddef>

#include "platform/KRSpinLock.h"

/// Memory for many objects of one size that live long and are walked over in the order in which they were made: they
/// stand behind each other, each in a line of the processor's cache, and without the allocator's own words between
/// them.
///
/// Cells come in blocks of 64 KiB. A block that becomes empty goes back to the system, but for one that is kept, so
/// that who makes and drops one object at a time does not ask for a block each time. Safe from any thread. A pool lives
/// as long as its cells.
class KRCellPool {
 public:
  /// Bytes of a cell, and its alignment.
  static constexpr size_t kCellSize = 64;

  KRCellPool() noexcept = default;
  KRCellPool(const KRCellPool&) = delete;
  KRCellPool& operator=(const KRCellPool&) = delete;
  ~KRCellPool();

  /// A free cell. Throws `std::bad_alloc` as `new` does.
  void* take();
  /// Takes back a cell of this pool.
  void give(void* cell) noexcept;

  /// How many blocks the pool has from the system now; for tests.
  size_t blockCount() const noexcept;

 private:
  struct Block;
  static Block* blockOf(void* cell) noexcept;
  Block* addBlock();
  void link(Block* block) noexcept;
  void unlink(Block* block) noexcept;

  mutable KRSpinLock lock_;
  /// Those that have free cells.
  Block* open_ = nullptr;
  size_t blocks_ = 0;
};
