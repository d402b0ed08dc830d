#include "platform/KRPieces.h"

#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <new>
#include <span>

#include "platform/KRSpinLock.h"

namespace {

/// Pieces are cut from regions, of which the system lays none ready before its pieces are taken.
constexpr size_t kRegionSize = size_t{2} << 20U;

/// Has the system lay the pages of a piece ready in one go, which takes two thirds of the time that they take one by
/// one when they are first written to. A wish: without it they come as they are touched. They stay small: large ones
/// are a little better to walk over, but where the memory that nobody uses goes back to the host of a virtual machine,
/// making them took longer than all of loading.
void layReady([[maybe_unused]] void* piece) noexcept {
#ifdef MADV_POPULATE_WRITE
  madvise(piece, KRPieces::kSize, MADV_POPULATE_WRITE);
#endif
}

char* mapRegion() {
  // As much more as it takes to come to a multiple; that goes back at once.
  void* memory = mmap(nullptr, 2 * kRegionSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  auto* const from = static_cast<char*>(memory);
  const size_t before = (kRegionSize - reinterpret_cast<uintptr_t>(from) % kRegionSize) % kRegionSize;
  if (before != 0) munmap(from, before);
  munmap(from + before + kRegionSize, kRegionSize - before);
  return from + before;
}

/// The pieces that nobody has.
class Supply {
 public:
  struct Taken {
    char* piece;
    bool isNew;
  };

  Taken take() {
    const std::lock_guard lock(lock_);
    if (keptCount_ > 0) return {kept_[--keptCount_], false};
    if (left_.empty()) left_ = {mapRegion(), kRegionSize};
    char* piece = left_.data();
    left_ = left_.subspan(KRPieces::kSize);
    return {piece, true};
  }

  /// Whether the piece is kept for another time.
  bool keep(char* piece) noexcept {
    const std::lock_guard lock(lock_);
    if (keptCount_ == kept_.size()) return false;
    kept_[keptCount_++] = piece;
    return true;
  }

 private:
  KRSpinLock lock_;
  std::array<char*, 16> kept_{};
  size_t keptCount_ = 0;
  /// What is left of the last region.
  std::span<char> left_;
};

// Never destroyed: what stands in pieces may outlive everything else of the process.
Supply& supply() {
  static auto& supply = *new Supply;
  return supply;
}

}  // namespace

void* KRPieces::take() {
  const Supply::Taken taken = supply().take();
  if (taken.isNew) layReady(taken.piece);
  return taken.piece;
}

void KRPieces::give(void* piece) noexcept {
  if (supply().keep(static_cast<char*>(piece))) return;
  // A process that holds too many mappings may not take one apart; then the memory goes back, and the room stays.
  if (munmap(piece, kSize) != 0) madvise(piece, kSize, MADV_DONTNEED);
}
