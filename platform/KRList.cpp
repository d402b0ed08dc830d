#include "platform/KRList.h"

#include "platform/KRFatal.h"
#include "platform/KRPrefetch.h"
#include "platform/KRZeroMemory.h"

/// From object to slots, built when a removal or a look-up first needs it in a long list, and dropped when slots move.
/// Open addressing over slot numbers: eight to sixteen bytes an element.
struct KRListCore::Index {
  /// A cell holds the number of a slot and this much more, so that memory of zeros is a table of free cells.
  static constexpr uint32_t kFirst = 2;
  static constexpr uint32_t kTaken = 1;
  static constexpr uint32_t kNone = 0xFFFFFFFFU;

  explicit Index(bool ofNodes) noexcept : areNodes(ofNodes) {}

  /// Nodes of a graph are compared by identity, always: they need not be looked at.
  const bool areNodes;
  KRZeroMemory memory;
  size_t size = 0;
  size_t used = 0;

  uint32_t* cells() const noexcept { return static_cast<uint32_t*>(memory.data()); }

  uint64_t hashOf(const KRObject* object) const {
    return areNodes ? static_cast<const KRGraphNode*>(object)->KRGraphNode::hash() : object->hash();
  }
  bool areEqual(const KRObject* a, const KRObject* b) const { return a == b || (!areNodes && krEqualObjects(a, b)); }
  size_t cellOf(const KRObject* object) const { return hashOf(object) & (size - 1); }
  size_t next(size_t cell) const { return (cell + 1) & (size - 1); }

  void build(const std::vector<KRObject*>& slots, size_t from, size_t count) {
    size = 64;
    while (size < count * 2) size *= 2;
    memory = KRZeroMemory(size * sizeof(uint32_t));
    constexpr size_t kAhead = 16;
    for (size_t slot = from; slot < slots.size(); ++slot) {
      if (!areNodes && slot + kAhead < slots.size()) krPrefetch(slots[slot + kAhead]);
      if (slots[slot] != nullptr) add(slots[slot], slot);
    }
  }

  void add(const KRObject* object, size_t slot) {
    size_t cell = cellOf(object);
    while (cells()[cell] != 0) cell = next(cell);
    cells()[cell] = static_cast<uint32_t>(slot) + kFirst;
    ++used;
  }

  bool isFull() const { return used * 4 >= size * 3; }

  void remove(const KRObject* object, size_t slot) {
    size_t cell = cellOf(object);
    while (cells()[cell] != slot + kFirst) cell = next(cell);
    cells()[cell] = kTaken;
  }

  /// The earliest slot that holds an equal object, or `kNone`.
  uint32_t find(const std::vector<KRObject*>& slots, const KRObject* object) const {
    uint32_t earliest = kNone;
    for (size_t cell = cellOf(object); cells()[cell] != 0; cell = next(cell)) {
      const uint32_t slot = cells()[cell] - kFirst;
      if (cells()[cell] == kTaken || slot >= earliest) continue;
      if (areEqual(slots[slot], object)) earliest = slot;
    }
    return earliest;
  }
};

void KRListCore::IndexDeleter::operator()(Index* index) const noexcept {
  delete index;
}

KRListCore::~KRListCore() {
  if (owner_ != nullptr && owner_->diesWithGroup()) return;
  for (const KRObject* object : slots_) {
    if (object != nullptr) drop(object);
  }
}

void KRListCore::changedWhileWalked() noexcept {
  KRFatal("a list was changed while it was being walked");
}

void KRListCore::keep(const KRObject* object) const {
  if (owner_ != nullptr) {
    owner_->beginReference(static_cast<const KRGraphNode*>(object));
  } else {
    object->retain();
  }
}

void KRListCore::drop(const KRObject* object) const {
  if (owner_ != nullptr) {
    owner_->endReference(static_cast<const KRGraphNode*>(object));
  } else {
    object->release();
  }
}

KRListCore::Index& KRListCore::index() const {
  if (!index_) {
    std::unique_ptr<Index, IndexDeleter> made(new Index(owner_ != nullptr));
    made->build(slots_, head_, count());
    index_ = std::move(made);
  }
  return *index_;
}

size_t KRListCore::findSlot(const KRObject* object) const {
  const size_t front = firstSlot();
  if (front < slots_.size() && slots_[front] == object) return front;
  if (count() > kSmall) {
    const uint32_t found = index().find(slots_, object);
    return found == Index::kNone ? slots_.size() : found;
  }
  for (size_t slot = front; slot < slots_.size(); ++slot) {
    if (slots_[slot] != nullptr && krEqualObjects(slots_[slot], object)) return slot;
  }
  return slots_.size();
}

void KRListCore::settle() const {
  if (head_ == 0 && holes_ == 0) return;
  slots_.erase(slots_.begin(), slots_.begin() + head_);
  if (holes_ != 0) std::erase(slots_, nullptr);
  head_ = 0;
  holes_ = 0;
  index_.reset();
}

KRObject* KRListCore::objectAt(size_t index) const {
  if (index >= count()) KRFatal("an index is out of the range of a list");
  if (holes_ != 0) {
    // The front is reached without moving anything, so that taking one element after the other stays linear.
    if (index == 0) return slots_[firstSlot()];
    settle();
  }
  return slots_[head_ + index];
}

size_t KRListCore::firstEqual(const KRObject* object) const {
  if (object == nullptr) return count();
  settle();
  const auto found =
      std::find_if(slots_.begin(), slots_.end(), [&](KRObject* each) { return krEqualObjects(each, object); });
  return static_cast<size_t>(found - slots_.begin());
}

bool KRListCore::holds(const KRObject* object) const {
  return object != nullptr && findSlot(object) < slots_.size();
}

void KRListCore::addSlot(KRObject* object) {
  slots_.push_back(object);
  if (index_ && index_->isFull()) index_.reset();
  if (index_) index_->add(object, slots_.size() - 1);
  ++changes_;
}

void KRListCore::appendObject(KRObject* object) {
  if (object == nullptr) return;
  addSlot(object);
  keep(object);
}

void KRListCore::appendOwned(KRRef<KRObject> object) {
  // References from inside a graph are counted apart.
  if (owner_ != nullptr || !object) return appendObject(object.get());
  addSlot(object.get());
  object.detach();
}

void KRListCore::insertObject(KRObject* object, size_t index) {
  if (object == nullptr) return;
  if (index >= count()) return appendObject(object);
  settle();
  keep(object);
  slots_.insert(slots_.begin() + static_cast<std::ptrdiff_t>(index), object);
  noteChange();
}

void KRListCore::setObjectAt(KRObject* object, size_t index) {
  if (object == nullptr || index >= count()) KRFatal("an index is out of the range of a list");
  settle();
  keep(object);
  std::swap(slots_[index], object);
  noteChange();
  drop(object);
}

/// Empties one slot; the elements before and behind it stay where they are.
void KRListCore::take(size_t slot) {
  const KRObject* object = slots_[slot];
  if (index_) index_->remove(object, slot);
  slots_[slot] = nullptr;
  ++holes_;
  ++changes_;
  while (head_ < slots_.size() && slots_[head_] == nullptr) {
    ++head_;
    --holes_;
  }
  if (head_ == slots_.size()) settle();
  drop(object);
}

bool KRListCore::removeEqual(const KRObject* object) {
  if (object == nullptr) return false;
  // The caller's pointer may be the list's own last reference.
  const KRRef<const KRObject> alive(object);
  bool any = false;
  for (size_t slot = findSlot(object); slot < slots_.size(); slot = findSlot(object)) {
    take(slot);
    any = true;
    // A node that nothing refers to stands nowhere else in this list: no need to look, which would take an index.
    if (owner_ != nullptr && !static_cast<const KRGraphNode*>(object)->isReferredTo()) break;
  }
  return any;
}

void KRListCore::removeObjectAt(size_t index) {
  if (index >= count()) KRFatal("an index is out of the range of a list");
  if (index != 0) settle();
  take(index == 0 ? firstSlot() : head_ + index);
}

void KRListCore::clear() {
  std::vector<KRObject*> old;
  old.swap(slots_);
  head_ = 0;
  holes_ = 0;
  noteChange();
  for (const KRObject* object : old) {
    if (object != nullptr) drop(object);
  }
}
