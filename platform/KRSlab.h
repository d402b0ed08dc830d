#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// A counted block of bytes that many strings are slices of. Bytes are written while one thread alone has the block,
/// and never changed once a slice has been handed out.
///
/// Readers fill blocks of at most `kSharedCapacity` bytes with the values of many contacts, so that keeping one name
/// keeps at most 64 KiB alive; a longer text gets a block of its own.
class KRSlab {
 public:
  static constexpr uint32_t kSharedCapacity = 64 * 1024 - 64;

  /// A new block with one reference, owned by the caller.
  static KRSlab* create(uint32_t capacity);

  char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
  const char* bytes() const noexcept { return reinterpret_cast<const char*>(this + 1); }
  uint32_t capacity() const noexcept { return capacity_; }

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  /// Adds many references at once, for a reader that hands out one a contact.
  void retain(uint32_t times) noexcept { count_.fetch_add(times, std::memory_order_relaxed); }
  /// Drops so many, at least one.
  void release(uint32_t times = 1) noexcept {
    if (count_.fetch_sub(times, std::memory_order_acq_rel) == times) destroy();
  }

 private:
  explicit KRSlab(uint32_t capacity) noexcept : capacity_(capacity) {}
  void destroy() noexcept;

  std::atomic<uint32_t> count_{1};
  uint32_t capacity_;
};
