#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "platform/KRPieces.h"
#include "platform/KRPrefetch.h"
#include "platform/KRSpinLock.h"

/// Memory for many objects of one size that live long and are walked over in the order in which they were made: they
/// stand behind each other, each in lines of the processor's cache of its own, and without the allocator's words
/// between them.
///
/// Cells come in blocks of 64 KiB. A block that becomes empty goes back, but for one that is kept, so
/// that who makes and drops one object at a time does not ask for a block each time. Safe from any thread. A pool lives
/// as long as its cells.
class KRCellPool {
 public:
  /// Bytes of the smallest cell, and the alignment of all.
  static constexpr size_t kLine = kKRCacheLine;

  /// For objects of that size, at most a kilobyte.
  explicit KRCellPool(size_t objectSize) noexcept
      : cellSize_(static_cast<uint32_t>((objectSize + kLine - 1) / kLine * kLine)) {}
  KRCellPool(const KRCellPool&) = delete;
  KRCellPool& operator=(const KRCellPool&) = delete;
  ~KRCellPool();

  /// A free cell. Throws `std::bad_alloc` as `new` does.
  void* take();
  /// Takes back a cell of this pool.
  void give(void* cell) noexcept;

  /// Asks the processor for the head of a cell's block. Says and changes nothing.
  static void prefetchToGive(const void* cell) noexcept { krPrefetchToWrite(blockOf(cell)); }

  /// How many blocks the pool has from the system now; for tests.
  size_t blockCount() const noexcept;

 private:
  struct Block;
  static Block* blockOf(const void* cell) noexcept {
    return reinterpret_cast<Block*>(reinterpret_cast<uintptr_t>(cell) & ~uintptr_t{KRPieces::kSize - 1});
  }
  Block* addBlock();
  void link(Block* block) noexcept;
  void unlink(Block* block) noexcept;

  const uint32_t cellSize_;
  mutable KRSpinLock lock_;
  /// Those that have free cells.
  Block* open_ = nullptr;
  size_t blocks_ = 0;
};

/// For a class whose objects stand in cells: what its `operator new` and `operator delete` call. Objects of classes
/// derived from it, which may be larger, are where `new` puts them; under the address sanitizer all are, so that it
/// sees each by itself.
template <class T>
class KRCells {
 public:
  static void* take(size_t size) { return isInCell(size) ? pool().take() : ::operator new(size); }
  static void give(void* room, size_t size) noexcept { isInCell(size) ? pool().give(room) : ::operator delete(room); }
  /// Asks the processor for what giving back an object takes besides the object. Says and changes nothing.
  static void prefetchToGive(const void* room) noexcept {
    if (KRPieces::kAreUsed) KRCellPool::prefetchToGive(room);
  }

 private:
  static constexpr bool isInCell(size_t size) noexcept { return KRPieces::kAreUsed && size == sizeof(T); }
  // Never destroyed: an object may outlive everything else of the process.
  static KRCellPool& pool() {
    static auto& pool = *new KRCellPool(sizeof(T));
    return pool;
  }
};
