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

/// Takes back the pages of a stretch behind what a table needs: tables live long, and may be the last that comes.
Spare::Stretch withoutRest(const Spare::Stretch& stretch, size_t size) noexcept {
  constexpr size_t kLargePage = size_t{2} << 20U;
  const size_t needed = (size + kLargePage - 1) / kLargePage * kLargePage;
  if (needed >= stretch.used) return stretch;
  if (madvise(static_cast<char*>(stretch.data) + needed, stretch.used - needed, MADV_DONTNEED) != 0) return stretch;
  return {stretch.data, needed};
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
  } else if (const Spare::Stretch kept = spare().take(); kept.data != nullptr) {
    const Spare::Stretch stretch = withoutRest(kept, size);
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
