#pragma once

#include <cstddef>

/// Pieces of memory for what a large book consists of: records, persons, findings. They come from the system past the
/// allocator, one behind the other and each at a multiple of its size. Safe from any thread.
class KRPieces {
 public:
  KRPieces() = delete;

  /// Bytes of a piece, and its alignment.
  static constexpr size_t kSize = size_t{64} << 10U;

  /// A piece whose bytes may be anything. Throws `std::bad_alloc` as `new` does.
  static void* take();
  /// Takes a piece back. A few are kept for who asks next, the others go back to the system.
  static void give(void* piece) noexcept;

  /// Whether objects are to be put into pieces at all. Not under the address sanitizer, which is to see each by itself.
#if defined(__SANITIZE_ADDRESS__)
  static constexpr bool kAreUsed = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
  static constexpr bool kAreUsed = false;
#else
  static constexpr bool kAreUsed = true;
#endif
#else
  static constexpr bool kAreUsed = true;
#endif
};
