#include "platform/KRCellPool.h"

#include <cstdint>
#include <mutex>
#include <new>

#include "platform/KRPieces.h"

/// The head of a block, in the place of its first cell. Cells are handed out in order first, then those given back.
struct KRCellPool::Block {
  struct Free {
    Free* next;
  };

  explicit Block(uint32_t size) noexcept : cellSize(size), cells(static_cast<uint32_t>(KRPieces::kSize) / size) {}

  bool isFull() const noexcept { return free == nullptr && untouched == cells; }

  void* take() noexcept {
    ++used;
    if (free == nullptr) return reinterpret_cast<char*>(this) + size_t{cellSize} * untouched++;
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

  Block* previous = nullptr;
  Block* next = nullptr;
  Free* free = nullptr;
  const uint32_t cellSize;
  const uint32_t cells;
  uint32_t untouched = 1;
  uint32_t used = 0;
};

KRCellPool::~KRCellPool() {
  while (open_ != nullptr) {
    Block* block = open_;
    unlink(block);
    KRPieces::give(block);
  }
}

KRCellPool::Block* KRCellPool::addBlock() {
  static_assert(sizeof(Block) <= kLine);
  auto* block = new (KRPieces::take()) Block(cellSize_);
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
  if (empty != nullptr) KRPieces::give(empty);
}

size_t KRCellPool::blockCount() const noexcept {
  const std::lock_guard lock(lock_);
  return blocks_;
}
