#include "platform/KRBuffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/KRFatal.h"

namespace {

constexpr size_t kLargePage = size_t{2} << 20U;
/// From here on whole pages are taken from the system.
constexpr size_t kWhole = 4 * kLargePage;

size_t wholePages(size_t size) noexcept {
  return (size + kLargePage - 1) / kLargePage * kLargePage;
}

char* takeMemory(size_t& capacity) noexcept {
  if (capacity < kWhole) return static_cast<char*>(std::malloc(std::max<size_t>(capacity, 1)));
  if (capacity > SIZE_MAX - kLargePage) return nullptr;
  capacity = wholePages(capacity);
  void* memory = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
#ifdef MADV_HUGEPAGE
  madvise(memory, capacity, MADV_HUGEPAGE);  // A wish only.
#endif
  return static_cast<char*>(memory);
}

void giveMemoryBack(char* data, size_t capacity) noexcept {
  if (capacity < kWhole) {
    std::free(data);
  } else {
    munmap(data, capacity);
  }
}

/// The same pages at another address if need be, with more behind them; null where the system cannot.
char* movedPages([[maybe_unused]] char* data, [[maybe_unused]] size_t from, [[maybe_unused]] size_t to) noexcept {
#ifdef MREMAP_MAYMOVE
  if (void* moved = mremap(data, from, to, MREMAP_MAYMOVE); moved != MAP_FAILED) return static_cast<char*>(moved);
#endif
  return nullptr;
}

}  // namespace

KRBuffer::~KRBuffer() {
  if (data_ != nullptr) giveMemoryBack(data_, capacity_);
}

void KRBuffer::swap(KRBuffer& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
}

bool KRBuffer::reserve(size_t capacity) noexcept {
  if (capacity <= capacity_ && data_ != nullptr) return true;
  if (capacity_ >= kWhole && capacity <= SIZE_MAX - kLargePage) {
    const size_t whole = wholePages(capacity);
    if (char* larger = movedPages(data_, capacity_, whole)) {
      data_ = larger;
      capacity_ = whole;
      return true;
    }
  }
  char* larger = takeMemory(capacity);
  if (larger == nullptr) return false;
  if (size_ != 0) std::memcpy(larger, data_, size_);
  if (data_ != nullptr) giveMemoryBack(data_, capacity_);
  data_ = larger;
  capacity_ = capacity;
  return true;
}

bool KRBuffer::growToHold(size_t more) noexcept {
  if (more > SIZE_MAX / 2 - size_) return false;
  // Of memory that is large already, less is put by: growing it again costs no copy, and room may be counted.
  const size_t spare = capacity_ < kWhole ? capacity_ : capacity_ / 4;
  return reserve(std::max(size_ + more, capacity_ + spare));
}

void KRBuffer::setSize(size_t size) noexcept {
  if (size > capacity_) KRFatal("the size of a buffer was set beyond its capacity");
  size_ = size;
}

bool KRBuffer::append(std::string_view bytes) noexcept {
  if (bytes.empty()) return true;
  if (!grow(bytes.size())) return false;
  std::memcpy(data_ + size_, bytes.data(), bytes.size());
  size_ += bytes.size();
  return true;
}
