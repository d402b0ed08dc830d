#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

#include "platform/KRBuffer.h"

/// Very many numbers of 32 bits, one behind the other: memory that grows without a copy once it is large, so that at no
/// moment more than the numbers themselves is needed. Moved, never copied. One thread at a time.
class KRNumberList {
 public:
  /// Adds a number at the end. Throws `std::bad_alloc` as `new` does, and then nothing is changed.
  void append(uint32_t number) {
    if (!bytes_.grow(sizeof number)) throw std::bad_alloc();
    numbers()[count()] = number;
    bytes_.setSize(bytes_.size() + sizeof number);
  }
  /// Removes the last number; there must be one.
  void removeLast() noexcept { bytes_.setSize(bytes_.size() - sizeof(uint32_t)); }
  void set(size_t place, uint32_t number) noexcept { numbers()[place] = number; }
  uint32_t operator[](size_t place) const noexcept { return all()[place]; }
  size_t count() const noexcept { return bytes_.size() / sizeof(uint32_t); }
  /// Valid until a number is added or removed.
  std::span<const uint32_t> all() const noexcept {
    // The buffer's memory is aligned for everything.
    return {reinterpret_cast<const uint32_t*>(bytes_.data()), count()};
  }

 private:
  uint32_t* numbers() noexcept { return reinterpret_cast<uint32_t*>(bytes_.data()); }

  KRBuffer bytes_;
};
