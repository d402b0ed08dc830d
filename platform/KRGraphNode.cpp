#include "platform/KRGraphNode.h"

#include <atomic>
#include <mutex>
#include <vector>

#include "platform/KRFatal.h"
#include "platform/KRSpinLock.h"

namespace {

// One lock for all graphs: it is held for a few instructions, and graphs are built by one thread at a time.
KRSpinLock& graphLock() noexcept {
  static constinit KRSpinLock lock;
  return lock;
}

std::atomic<uint64_t> liveNodes{0};

}  // namespace

/// Nodes that live and die together: a ring-free list of them, and how many are held from outside.
struct KRGraphNode::Group {
  const KRGraphNode* first = nullptr;
  uint64_t size = 0;
  uint64_t held = 0;

  void add(const KRGraphNode* node) noexcept {
    node->group_ = this;
    node->previous_ = nullptr;
    node->next_ = first;
    if (first != nullptr) first->previous_ = node;
    first = node;
    ++size;
    held += node->held_ ? 1U : 0U;
  }

  void remove(const KRGraphNode* node) noexcept {
    (node->previous_ != nullptr ? node->previous_->next_ : first) = node->next_;
    if (node->next_ != nullptr) node->next_->previous_ = node->previous_;
    node->group_ = nullptr;
    node->previous_ = nullptr;
    node->next_ = nullptr;
    --size;
    held -= node->held_ ? 1U : 0U;
  }
};

/// The graph's lock, and the nodes that turned out to be dead while it was held; they are destroyed after it is left,
/// since destructors run code of others.
class KRGraphNode::Locked {
 public:
  Locked() : lock_(graphLock()) {}
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
  ~Locked() {
    lock_.unlock();
    if (alone_ != nullptr || !dead_.empty()) destroyDead();
  }

  /// Settles a node after one of its counts fell.
  void settle(const KRGraphNode* node) {
    if (node->life_ != Life::Alive) return;
    if (node->group_ != nullptr && node->group_->held == 0) {
      dieTogether(node->group_);
    } else if (!node->held_ && node->incoming_ == 0) {
      die(node);
    } else if (node->incoming_ == 0 && node->outgoing_ == 0) {
      leave(node);
    }
  }

  void leave(const KRGraphNode* node) {
    Group* group = node->group_;
    if (group == nullptr) return;
    group->remove(node);
    if (group->size == 0) {
      delete group;
    } else if (group->held == 0) {
      dieTogether(group);
    }
  }

  static void join(const KRGraphNode* a, const KRGraphNode* b) {
    if (a->group_ == nullptr && b->group_ == nullptr) {
      auto* group = new Group;
      group->add(a);
      if (a != b) group->add(b);
    } else if (a->group_ == nullptr) {
      b->group_->add(a);
    } else if (b->group_ == nullptr) {
      a->group_->add(b);
    } else if (a->group_ != b->group_) {
      merge(a->group_, b->group_);
    }
  }

 private:
  static void merge(Group* a, Group* b) {
    Group* large = a->size >= b->size ? a : b;
    Group* small = large == a ? b : a;
    while (small->first != nullptr) {
      const KRGraphNode* node = small->first;
      small->remove(node);
      large->add(node);
    }
    delete small;
  }

  void die(const KRGraphNode* node) {
    node->life_ = Life::DyingAlone;
    // Its references end one after the other while it is destroyed; until the last has ended it holds its group.
    node->held_ = true;
    if (node->group_ != nullptr) ++node->group_->held;
    // At most one: only the target of a reference that ended, or a node just let go, can die by itself.
    alone_ = node;
  }

  void dieTogether(Group* group) {
    dead_.reserve(dead_.size() + group->size);
    for (const KRGraphNode* node = group->first; node != nullptr; node = node->next_) {
      node->life_ = Life::DyingWithGroup;
      node->group_ = nullptr;
      dead_.push_back(node);
    }
    delete group;
  }

  /// Destroys the dead, and those that die of it: one after the other, not inside one another, so that a chain of any
  /// length takes no more of the stack than one node.
  void destroyDead() {
    thread_local std::vector<const KRGraphNode*>* open = nullptr;
    const bool isInside = open != nullptr;
    std::vector<const KRGraphNode*>& queue = isInside ? *open : dead_;
    if (isInside) queue.insert(queue.end(), dead_.begin(), dead_.end());
    if (alone_ != nullptr) queue.push_back(alone_);
    if (isInside) return;
    open = &queue;
    while (!queue.empty()) {
      const KRGraphNode* node = queue.back();
      queue.pop_back();
      delete node;
    }
    open = nullptr;
  }

  std::unique_lock<KRSpinLock> lock_;
  const KRGraphNode* alone_ = nullptr;
  std::vector<const KRGraphNode*> dead_;
};

KRGraphNode::KRGraphNode() noexcept {
  isGraphNode_ = true;
  liveNodes.fetch_add(1, std::memory_order_relaxed);
}

KRGraphNode::~KRGraphNode() {
  if (life_ == Life::DyingAlone) {
    Locked graph;
    graph.leave(this);
  }
  liveNodes.fetch_sub(1, std::memory_order_relaxed);
}

uint64_t KRGraphNode::liveCount() noexcept {
  return liveNodes.load(std::memory_order_relaxed);
}

/// Begins a reference; under the lock.
void KRGraphNode::link(const KRGraphNode* target) const {
  if (life_ != Life::Alive || target->life_ != Life::Alive)
    KRFatal("an object was linked into a graph while it was being destroyed");
  ++outgoing_;
  ++target->incoming_;
  Locked::join(this, target);
}

void KRGraphNode::beginReference(const KRGraphNode* target) const {
  const Locked graph;
  link(target);
}

void KRGraphNode::beginReferences(std::span<const KRGraphNode* const> targets) const {
  const Locked graph;
  for (const KRGraphNode* target : targets) link(target);
}

void KRGraphNode::endReference(const KRGraphNode* target) const {
  Locked graph;
  // Of a group that dies as a whole the targets may be gone already; their counts no longer matter.
  if (diesWithGroup()) return;
  --outgoing_;
  --target->incoming_;
  graph.settle(target);
  if (target != this) graph.settle(this);
}

bool KRGraphNode::isReferredTo() const {
  const Locked graph;
  return incoming_ != 0;
}

void KRGraphNode::firstReference() const noexcept {
  const Locked graph;
  if (held_ || life_ != Life::Alive) return;
  held_ = true;
  if (group_ != nullptr) ++group_->held;
}

void KRGraphNode::releaseInGraph() const noexcept {
  uint32_t count = count_.load(std::memory_order_relaxed);
  while (count > 1) {
    if (count_.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel, std::memory_order_relaxed)) return;
  }
  // The last one goes under the lock: otherwise another thread could reach the node through the graph, take and drop a
  // reference, and destroy it before this thread gets here.
  Locked graph;
  if (count_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  // A destructor may take and drop a reference to its own node, which goes on holding its group.
  if (life_ != Life::Alive) return;
  held_ = false;
  if (group_ != nullptr) --group_->held;
  graph.settle(this);
}
