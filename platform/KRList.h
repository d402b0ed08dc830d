#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "platform/KRGraphNode.h"
#include "platform/KRObject.h"

/// The part of `KRList` that does not depend on the element's type: slots, holes, and the index from object to slots.
class KRListCore {
 public:
  KRListCore(const KRListCore&) = delete;
  KRListCore& operator=(const KRListCore&) = delete;

  /// Number of elements. Constant time, as are `isEmpty` and taking from the front.
  size_t count() const noexcept { return slots_.size() - head_ - holes_; }
  bool isEmpty() const noexcept { return count() == 0; }

  /// Counts the changes made to the list; a walk stops the process when it finds that the list changed under it.
  uint32_t changes() const noexcept { return changes_; }

 protected:
  explicit KRListCore(const KRGraphNode* owner) noexcept : owner_(owner) {}
  ~KRListCore();

  KRObject* objectAt(size_t index) const;
  /// Whether the element at that index, which is in range, stands in the slot of that number: in most lists all do.
  bool isAt(size_t index) const noexcept { return (head_ | holes_) == 0 && index < slots_.size(); }
  KRObject* objectAhead(size_t slots) const noexcept {
    const size_t slot = firstSlot() + slots;
    return slot < slots_.size() ? slots_[slot] : nullptr;
  }
  size_t firstEqual(const KRObject* object) const;
  bool holds(const KRObject* object) const;
  void appendObject(KRObject* object);
  void appendOwned(KRRef<KRObject> object);
  void insertObject(KRObject* object, size_t index);
  void setObjectAt(KRObject* object, size_t index);
  bool removeEqual(const KRObject* object);
  void removeObjectAt(size_t index);
  void clear();
  void reserveSlots(size_t count) { slots_.reserve(count); }
  /// Closes the holes, so that elements lie next to each other from slot 0.
  void settle() const;
  std::vector<KRObject*>& settledSlots() {
    settle();
    return slots_;
  }
  void noteChange() noexcept {
    ++changes_;
    index_.reset();
  }

  // A slot is passed over when it is a hole.
  size_t nextSlot(size_t slot) const noexcept {
    while (slot < slots_.size() && slots_[slot] == nullptr) ++slot;
    return slot;
  }
  size_t firstSlot() const noexcept { return nextSlot(head_); }
  size_t endSlot() const noexcept { return slots_.size(); }
  KRObject* objectInSlot(size_t slot) const noexcept { return slots_[slot]; }
  [[noreturn]] static void changedWhileWalked() noexcept;

 private:
  struct Index;
  struct IndexDeleter {
    void operator()(Index* index) const noexcept;
  };
  static constexpr size_t kSmall = 16;

  void addSlot(KRObject* object);
  void keep(const KRObject* object) const;
  void drop(const KRObject* object) const;
  void take(size_t slot);
  Index& index() const;
  size_t findSlot(const KRObject* object) const;

  mutable std::vector<KRObject*> slots_;
  mutable uint32_t head_ = 0;
  mutable uint32_t holes_ = 0;
  uint32_t changes_ = 0;
  mutable std::unique_ptr<Index, IndexDeleter> index_;
  const KRGraphNode* owner_;
};

/// A list that is handed out live: by reference, valid while its owner lives, changed in place.
///
/// Appending, taking from the front and removing an object are constant time over the life of the list; reading at an
/// index is constant time too, after a removal from the middle once linear. Objects are found by `isEqual` and `hash`,
/// which for findings, contexts and all persons of this library is identity. The same object may stand in the list more
/// than once. A walk (`for (T& object : list)`) that finds the list changed stops the process through `KRFatal`.
///
/// A list made with an owner holds its elements by references from inside the owner's graph; it is a member of that
/// owner. Not locked: one thread at a time, or readers only.
template <class T>
class KRList : public KRListCore {
 public:
  KRList() noexcept : KRListCore(nullptr) {}
  explicit KRList(const KRGraphNode& owner) noexcept : KRListCore(&owner) {}

  /// The element at `index`, from 0; an index that is not below `count()` is a programming error (`KRFatal`).
  T* at(size_t index) const { return static_cast<T*>(isAt(index) ? objectInSlot(index) : objectAt(index)); }
  T* first() const { return at(0); }
  /// The element in the slot so many behind the first one's, or nothing where there is none (any more): for a wish to
  /// the processor, which need not be right. Nothing moves.
  T* ahead(size_t slots) const noexcept { return static_cast<T*>(objectAhead(slots)); }

  bool contains(const T* object) const { return holds(object); }
  /// Place of the first element equal to `object`, or `count()` when there is none. Linear.
  size_t indexOf(const T* object) const { return firstEqual(object); }

  void append(T* object) { appendObject(object); }
  void append(const KRRef<T>& object) { appendObject(object.get()); }
  /// Takes the reference over, also when it throws for want of memory.
  void append(KRRef<T>&& object) { appendOwned(std::move(object)); }
  /// Inserts before `index`; at the end when `index` is greater than the count. Linear.
  void insert(T* object, size_t index) { insertObject(object, index); }
  void replace(T* object, size_t index) { setObjectAt(object, index); }
  /// Removes every element equal to `object`; whether there was one.
  bool remove(const T* object) { return removeEqual(object); }
  void removeAt(size_t index) { removeObjectAt(index); }
  void removeAll() { clear(); }
  void reserve(size_t count) { reserveSlots(count); }

  /// A copy of the list that is not affected by later changes and keeps its elements alive.
  std::vector<KRRef<T>> copy() const {
    std::vector<KRRef<T>> result;
    result.reserve(count());
    for (T& object : *this) result.emplace_back(&object);
    return result;
  }

  /// Puts the elements into the order given: `order[i]` is the present place of the element that comes to place `i`.
  void reorder(const std::vector<uint32_t>& order) {
    auto& slots = settledSlots();
    std::vector<KRObject*> sorted;
    sorted.reserve(order.size());
    for (const uint32_t place : order) sorted.push_back(slots[place]);
    slots.swap(sorted);
    noteChange();
  }

  class Iterator {
   public:
    Iterator(const KRList& list, size_t slot) noexcept : list_(&list), slot_(slot), changes_(list.changes()) {}
    T& operator*() const { return *static_cast<T*>(list_->objectInSlot(slot_)); }
    Iterator& operator++() {
      if (changes_ != list_->changes()) changedWhileWalked();
      slot_ = list_->nextSlot(slot_ + 1);
      return *this;
    }
    bool operator!=(const Iterator& other) const {
      if (changes_ != list_->changes()) changedWhileWalked();
      return slot_ != other.slot_;
    }

   private:
    const KRList* list_;
    size_t slot_;
    uint32_t changes_;
  };
  Iterator begin() const { return Iterator(*this, firstSlot()); }
  Iterator end() const { return Iterator(*this, endSlot()); }
};
