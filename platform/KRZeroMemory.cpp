#include "platform/KRZeroMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace {

/// From here on whole pages are taken from the system.
constexpr size_t kWhole = size_t{4} << 20U;

void* takeMemory(size_t size) noexcept {
  if (size < kWhole) return std::calloc(size, 1);
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
#ifdef MADV_HUGEPAGE
  madvise(memory, size, MADV_HUGEPAGE);  // A wish only.
#endif
  return memory;
}

}  // namespace

KRZeroMemory::KRZeroMemory(size_t size) : size_(size) {
  if (size == 0) return;
  data_ = takeMemory(size);
  if (data_ == nullptr) throw std::bad_alloc();
}

KRZeroMemory::~KRZeroMemory() {
  if (size_ < kWhole) {
    std::free(data_);
  } else {
    munmap(data_, size_);
  }
}
