#pragma once

#include <cstdint>
#include <span>

#include "platform/KRAtomic.h"
#include "platform/KRObject.h"
#include "platform/KRPrefetch.h"

/// A shared object that refers to others of its kind in both directions, such as finding, context and result.
///
/// References in a circle would never be dropped by counting alone. So references between nodes are *inside* references
/// (`KREdge`, or a `KRList` made with its owner) and are told apart from references from outside (`KRRef`). Nodes that
/// are linked belong to one group; as long as any node of the group is held from outside, every node of it lives, and
/// with the last outside reference the whole group dies, without a call. A node that is neither held from outside nor
/// referred to from inside dies at once; one without any inside reference either way is on its own again.
///
/// Threads: counting and linking are safe from any thread.
class KRGraphNode : public KRObject {
 public:
  /// An inside reference from this node to `target` begins, respectively ends; `target` may die of the end. Called by
  /// edges and lists, which keep the pairs balanced.
  void beginReference(const KRGraphNode* target) const;
  void endReference(const KRGraphNode* target) const;
  /// As `beginReference` for each of them, the graph's lock taken once.
  void beginReferences(std::span<const KRGraphNode* const> targets) const;

  /// Whether this node dies together with its group: then its targets may be gone already, and its references need not
  /// be ended.
  bool diesWithGroup() const noexcept { return life_ == Life::DyingWithGroup; }

  /// Whether another node, or this one, refers to this node from inside.
  bool isReferredTo() const;

  /// Nodes are compared by identity, always: lists rely on it.
  bool isEqual(const KRObject* other) const final { return this == other; }
  uint64_t hash() const final { return KRObject::hash(); }

  /// Asks the processor for the nodes next to this one in its group, which taking it out of there changes.
  void prefetchNeighbours() const noexcept {
    krPrefetchToWrite(&previous_->next_);
    krPrefetchToWrite(&next_->next_);
  }

  /// How many nodes exist in the process; for tests that show that nothing is left behind.
  static uint64_t liveCount() noexcept;

 protected:
  KRGraphNode() noexcept;
  ~KRGraphNode() override;

 private:
  struct Group;
  class Locked;
  enum class Life : uint8_t { Alive, DyingAlone, DyingWithGroup };
  void firstReference() const noexcept override;
  void releaseInGraph() const noexcept override;
  void link(const KRGraphNode* target) const;

  mutable uint32_t incoming_ = 0;
  mutable uint32_t outgoing_ = 0;
  mutable bool held_ = true;
  mutable Life life_ = Life::Alive;
  mutable Group* group_ = nullptr;
  mutable const KRGraphNode* previous_ = nullptr;
  mutable const KRGraphNode* next_ = nullptr;
};

/// A field that refers to another node from inside the graph, or to nothing. The owning node passes itself to `set` and
/// clears the edge in its destructor. Accessors are atomic.
template <class T>
class KREdge {
 public:
  KREdge() = default;
  KREdge(const KREdge&) = delete;
  KREdge& operator=(const KREdge&) = delete;

  /// A counted reference, which holds the target from outside while the caller keeps it.
  KRRef<T> get() const {
    const std::lock_guard lock(krFieldLock(this));
    return KRRef<T>(target_);
  }

  /// The target without counting: for use while the owner is known not to change.
  T* borrow() const noexcept { return target_; }

  void set(const KRGraphNode& owner, T* target) {
    if (target != nullptr) owner.beginReference(target);
    T* old = target;
    {
      const std::lock_guard lock(krFieldLock(this));
      std::swap(target_, old);
    }
    if (old != nullptr) owner.endReference(old);
  }

 private:
  T* target_ = nullptr;
};
