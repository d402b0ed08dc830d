#pragma once

#include <cstddef>

/// Whole pages of memory from the system, past the allocator. Safe from any thread.
class KRPages {
 public:
  KRPages() = delete;

  /// Pages of zeros that begin at a multiple of `alignment`; both are multiples of 64 KiB, the alignment a power of
  /// two. Throws `std::bad_alloc` as `new` does.
  static void* take(size_t size, size_t alignment);
  /// Gives pages back: all that were taken, or a part at multiples of 64 KiB.
  static void give(void* pages, size_t size) noexcept;
  /// Has the system lay the whole pages of a room ready in one go, which takes two thirds of the time that they take
  /// one by one when they are first written to. A wish: without it they come as they are touched.
  static void layReady(void* room, size_t size) noexcept;
};
