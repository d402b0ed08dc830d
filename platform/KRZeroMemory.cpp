#include "platform/KRZeroMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "platform/KRSpinLock.h"

namespace {

/// From here on whole pages are taken from the system.
constexpr size_t kWhole = size_t{4} << 20U;
/// What is larger is not kept.
constexpr size_t kMostKept = size_t{64} << 20U;

/// The pages that nobody has.
class Spare {
 public:
  struct Pages {
    void* data = nullptr;
    size_t size = 0;
  };

  /// No pages where there are too few.
  Pages take(size_t size) noexcept {
    const std::lock_guard lock(lock_);
    return kept_.size < size ? Pages() : std::exchange(kept_, Pages());
  }

  /// Keeps the larger of these and those that are kept; the others, to be given back.
  Pages keep(Pages pages) noexcept {
    const std::lock_guard lock(lock_);
    if (pages.size > kept_.size && pages.size <= kMostKept) std::swap(pages, kept_);
    return pages;
  }

 private:
  KRSpinLock lock_;
  Pages kept_;
};

// Never destroyed: tables may live as long as the process.
Spare& spare() {
  static auto& spare = *new Spare;
  return spare;
}

void giveBack(const Spare::Pages& pages) noexcept {
  if (pages.size != 0) munmap(pages.data, pages.size);
}

/// What lies behind the large pages of so many bytes goes back to the system.
Spare::Pages withoutRest(const Spare::Pages& pages, size_t size) noexcept {
  constexpr size_t kLargePage = size_t{2} << 20U;
  const size_t needed = (size + kLargePage - 1) / kLargePage * kLargePage;
  if (needed >= pages.size || munmap(static_cast<char*>(pages.data) + needed, pages.size - needed) != 0) return pages;
  return {pages.data, needed};
}

Spare::Pages pagesOfZeros(size_t size) noexcept {
  if (const Spare::Pages used = spare().take(size); used.size != 0) {
    std::memset(used.data, 0, size);
    return withoutRest(used, size);
  }
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return {};
#ifdef MADV_HUGEPAGE
  madvise(memory, size, MADV_HUGEPAGE);  // A wish only.
#endif
  return {memory, size};
}

}  // namespace

KRZeroMemory::KRZeroMemory(size_t size) : size_(size) {
  if (size == 0) return;
  if (size < kWhole) {
    data_ = std::calloc(size, 1);
  } else {
    const Spare::Pages pages = pagesOfZeros(size);
    data_ = pages.data;
    mapped_ = pages.size;
  }
  if (data_ == nullptr) throw std::bad_alloc();
}

KRZeroMemory::~KRZeroMemory() {
  if (mapped_ == 0) {
    std::free(data_);
  } else {
    giveBack(spare().keep({data_, mapped_}));
  }
}

void KRZeroMemory::giveBackSpare() noexcept {
  giveBack(spare().take(0));
}
