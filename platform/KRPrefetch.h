#pragma once

#include <cstddef>

/// Bytes of a line of the processor's cache, the least that it fetches.
inline constexpr size_t kKRCacheLine = 64;

/// Asks the processor for the memory at an address that is read soon. Any address will do, also one of nothing: it is a
/// wish, which costs about as much as an addition. In a walk over things that lie scattered in memory, wishes made some
/// steps ahead let their ways there overlap.
inline void krPrefetch(const void* address) noexcept {
  __builtin_prefetch(address);
  // GCC takes a function that does nothing but this for one without any effect, and leaves out the calls to it.
  __asm__ volatile("" : : "r"(address));
}

/// The same for memory that is written soon, such as a count of references.
inline void krPrefetchToWrite(const void* address) noexcept {
  __builtin_prefetch(address, 1);
  __asm__ volatile("" : : "r"(address));
}

/// The same every line's length for so many bytes from the address on. Where that is no line's beginning, the last few
/// bytes may be left out.
inline void krPrefetchLines(const void* begin, size_t size) noexcept {
  for (size_t at = 0; at < size; at += kKRCacheLine) krPrefetch(static_cast<const char*>(begin) + at);
}
inline void krPrefetchLinesToWrite(const void* begin, size_t size) noexcept {
  for (size_t at = 0; at < size; at += kKRCacheLine) krPrefetchToWrite(static_cast<const char*>(begin) + at);
}
