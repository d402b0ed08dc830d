#include "platform/KRPages.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

void* KRPages::take(size_t size, size_t alignment) {
  // As much more as it may take to come to a multiple, which goes back at once.
  const size_t asked = size + alignment;
  void* memory = mmap(nullptr, asked, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  auto* const from = static_cast<char*>(memory);
  const size_t before = (alignment - reinterpret_cast<uintptr_t>(from) % alignment) % alignment;
  if (before != 0) munmap(from, before);
  munmap(from + before + size, alignment - before);
  return from + before;
}

void KRPages::give(void* pages, size_t size) noexcept {
  // A process that holds too many pieces may not take one apart; then their memory goes back, and the room stays.
  if (munmap(pages, size) != 0) madvise(pages, size, MADV_DONTNEED);
}

void KRPages::layReady([[maybe_unused]] void* room, [[maybe_unused]] size_t size) noexcept {
#ifdef MADV_POPULATE_WRITE
  constexpr uintptr_t kPage = 4096;
  const uintptr_t from = (reinterpret_cast<uintptr_t>(room) + kPage - 1) / kPage * kPage;
  const uintptr_t to = (reinterpret_cast<uintptr_t>(room) + size) / kPage * kPage;
  if (from < to) madvise(reinterpret_cast<void*>(from), to - from, MADV_POPULATE_WRITE);
#endif
}
