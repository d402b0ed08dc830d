#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <vector>

#include "platform/KRFatal.h"
#include "platform/KRObject.h"
#include "platform/KRPrefetch.h"

/// An immutable, ordered list of shared objects, as a value: eight bytes, cheap to copy, no memory of its own for none
/// or one element. Its elements live at least as long as it does. Safe to read and copy from any thread.
template <class T>
class KRArray {
 public:
  KRArray() noexcept = default;
  /// One element; nothing makes the empty array.
  explicit KRArray(T* only) noexcept : word_(reinterpret_cast<uintptr_t>(only)) {
    if (only != nullptr) only->retain();
  }
  explicit KRArray(const KRRef<T>& only) noexcept : KRArray(only.get()) {}
  explicit KRArray(std::span<T* const> objects) { fill(objects); }
  explicit KRArray(const std::vector<KRRef<T>>& objects) {
    static_assert(sizeof(KRRef<T>) == sizeof(T*));
    std::vector<T*> plain;
    plain.reserve(objects.size());
    for (const KRRef<T>& object : objects) plain.push_back(object.get());
    fill(plain);
  }
  KRArray(const KRArray& other) noexcept : word_(other.word_) {
    if (isBlock()) {
      block()->count.fetch_add(1, std::memory_order_relaxed);
    } else if (word_ != 0) {
      only()->retain();
    }
  }
  KRArray(KRArray&& other) noexcept : word_(std::exchange(other.word_, 0)) {}
  KRArray& operator=(KRArray other) noexcept {
    std::swap(word_, other.word_);
    return *this;
  }
  ~KRArray() {
    if (isBlock()) {
      if (block()->count.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy(block());
    } else if (word_ != 0) {
      only()->release();
    }
  }

  size_t count() const noexcept { return isBlock() ? block()->size : word_ != 0 ? 1 : 0; }
  bool isEmpty() const noexcept { return word_ == 0; }

  /// Pointers to the elements in order; valid as long as this array (or a copy of it) lives.
  T* const* begin() const noexcept { return isBlock() ? block()->elements() : reinterpret_cast<T* const*>(&word_); }
  T* const* end() const noexcept { return begin() + count(); }

  /// The element at `index`, from 0; out of range is a programming error (`KRFatal`).
  T* at(size_t index) const {
    if (index >= count()) KRFatal("an index is out of the range of an array");
    return begin()[index];
  }
  T* first() const { return at(0); }

  /// Asks the processor for the only element, or for the list of several, both of which copying counts.
  void prefetch() const noexcept { krPrefetchToWrite(reinterpret_cast<const void*>(word_ & ~uintptr_t{1})); }

  /// Membership by the elements' own `isEqual`; identity for the persons and findings of this library.
  bool contains(const T* object) const {
    return std::any_of(begin(), end(), [&](const T* each) { return krEqualObjects(each, object); });
  }

  /// A new array that lacks every element equal to `object`.
  KRArray without(const T* object) const {
    std::vector<T*> kept;
    kept.reserve(count());
    std::copy_if(begin(), end(), std::back_inserter(kept),
                 [&](const T* each) { return !krEqualObjects(each, object); });
    return KRArray(std::span<T* const>(kept));
  }

 private:
  struct Block {
    std::atomic<uint32_t> count{1};
    uint32_t size = 0;
    T** elements() noexcept { return reinterpret_cast<T**>(this + 1); }
  };
  static_assert(sizeof(Block) % alignof(T*) == 0);

  bool isBlock() const noexcept { return (word_ & 1U) != 0; }
  Block* block() const noexcept { return reinterpret_cast<Block*>(word_ & ~uintptr_t{1}); }
  T* only() const noexcept { return reinterpret_cast<T*>(word_); }

  void fill(std::span<T* const> objects) {
    if (objects.empty()) return;
    constexpr size_t kAhead = 16;
    for (size_t i = 0; i < objects.size(); ++i) {
      if (i + kAhead < objects.size()) krPrefetchToWrite(objects[i + kAhead]);
      objects[i]->retain();
    }
    if (objects.size() == 1) {
      word_ = reinterpret_cast<uintptr_t>(objects[0]);
      return;
    }
    auto* block = new (::operator new(sizeof(Block) + objects.size() * sizeof(T*))) Block;
    block->size = static_cast<uint32_t>(objects.size());
    std::copy(objects.begin(), objects.end(), block->elements());
    word_ = reinterpret_cast<uintptr_t>(block) | 1U;
  }

  static void destroy(Block* block) noexcept {
    for (uint32_t i = 0; i < block->size; ++i) block->elements()[i]->release();
    ::operator delete(block);
  }

  // Nothing, the only element, or with the lowest bit set the block that holds two or more.
  uintptr_t word_ = 0;
};
