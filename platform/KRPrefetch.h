#pragma once

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
