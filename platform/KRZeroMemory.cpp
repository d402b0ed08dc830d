#include "platform/KRZeroMemory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "platform/KRSpinLock.h"

namespace {

/// From here on whole pages are taken from the system.
constexpr size_t kWhole = size_t{4} << 20U;
/// A stretch that is kept. Smaller ones are made as large, so that a larger table that comes next can use one, too.
constexpr size_t kStretch = size_t{64} << 20U;

/// The stretch that nobody has.
class Spare {
 public:
  struct Stretch {
    void* data = nullptr;
    /// What lies behind so many bytes was never touched.
    size_t used = 0;
  };

  /// Nothing where there is none.
  Stretch take() noexcept {
    const std::lock_guard lock(lock_);
    return std::exchange(kept_, Stretch());
  }

  /// Keeps the one of both of which more was used, and answers the other one.
  Stretch keep(Stretch stretch) noexcept {
    const std::lock_guard lock(lock_);
    if (stretch.used > kept_.used) std::swap(stretch, kept_);
    return stretch;
  }

 private:
  KRSpinLock lock_;
  Stretch kept_;
};

// Never destroyed: tables may live as long as the process.
Spare& spare() {
  static auto& spare = *new Spare;
  return spare;
}

void giveBack(const Spare::Stretch& stretch) noexcept {
  if (stretch.data != nullptr) munmap(stretch.data, kStretch);
}

/// Pages of zeros, or null.
void* newPages(size_t size) noexcept {
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
  if (size < kWhole) {
    data_ = std::calloc(size, 1);
  } else if (size > kStretch) {
    data_ = newPages(size);
  } else if (const Spare::Stretch stretch = spare().take(); stretch.data != nullptr) {
    data_ = stretch.data;
    used_ = std::max(stretch.used, size);
    std::memset(data_, 0, std::min(stretch.used, size));
  } else {
    data_ = newPages(kStretch);
    used_ = size;
  }
  if (data_ == nullptr) throw std::bad_alloc();
}

KRZeroMemory::~KRZeroMemory() {
  if (used_ != 0) {
    giveBack(spare().keep({data_, used_}));
  } else if (size_ > kStretch) {
    munmap(data_, size_);
  } else {
    std::free(data_);
  }
}

void KRZeroMemory::giveBackSpare() noexcept {
  giveBack(spare().take());
}
