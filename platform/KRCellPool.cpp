#include "platform/KRCellPool.h"

#include <cstdint>
#include <mutex>
#include <new>

namespace {

constexpr size_t kBlockSize = size_t{64} << 10U;

}  // namespace

/// The head of a block, in the place of its first cell. Cells are handed out in order first, then those given back.
struct KRCellPool::Block {
  static constexpr uint32_t kCells = kBlockSize / kCellSize;

  struct Free {
    Free* next;
  };

  Block* previous = nullptr;
  Block* next = nullptr;
  Free* free = nullptr;
  uint32_t untouched = 1;
  uint32_t used = 0;

  bool isFull() const noexcept { return free == nullptr && untouched == kCells; }

  void* take() noexcept {
    ++used;
    if (free == nullptr) return reinterpret_cast<char*>(this) + kCellSize * untouched++;
    Free* cell = free;
    free = cell->next;
    return cell;
  }
  void give(void* cell) noexcept {
    free = new (cell) Free{free};
    // An empty block is as good as a new one, and fills in order again.
    if (--used > 0) return;
    free = nullptr;
    untouched = 1;
  }
};

KRCellPool::~KRCellPool() {
  while (open_ != nullptr) {
    Block* block = open_;
    unlink(block);
    ::operator delete(block, std::align_val_t(kBlockSize));
  }
}

KRCellPool::Block* KRCellPool::blockOf(void* cell) noexcept {
  return reinterpret_cast<Block*>(reinterpret_cast<uintptr_t>(cell) & ~uintptr_t{kBlockSize - 1});
}

KRCellPool::Block* KRCellPool::addBlock() {
  static_assert(sizeof(Block) <= kCellSize);
  auto* block = new (::operator new(kBlockSize, std::align_val_t(kBlockSize))) Block;
  ++blocks_;
  link(block);
  return block;
}

void KRCellPool::link(Block* block) noexcept {
  block->previous = nullptr;
  block->next = open_;
  if (open_ != nullptr) open_->previous = block;
  open_ = block;
}

void KRCellPool::unlink(Block* block) noexcept {
  (block->previous != nullptr ? block->previous->next : open_) = block->next;
  if (block->next != nullptr) block->next->previous = block->previous;
}

void* KRCellPool::take() {
  const std::lock_guard lock(lock_);
  Block* block = open_ != nullptr ? open_ : addBlock();
  void* cell = block->take();
  if (block->isFull()) unlink(block);
  return cell;
}

void KRCellPool::give(void* cell) noexcept {
  Block* block = blockOf(cell);
  Block* empty = nullptr;
  {
    const std::lock_guard lock(lock_);
    const bool wasFull = block->isFull();
    block->give(cell);
    if (wasFull) link(block);
    // The only one with free cells stays.
    if (block->used == 0 && (block->previous != nullptr || block->next != nullptr)) {
      unlink(block);
      --blocks_;
      empty = block;
    }
  }
  if (empty != nullptr) ::operator delete(empty, std::align_val_t(kBlockSize));
}

size_t KRCellPool::blockCount() const noexcept {
  const std::lock_guard lock(lock_);
  return blocks_;
}
