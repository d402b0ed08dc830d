#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

class KRString;
class KRText;
class KRKeyedArchiver;

/// The root of everything that is shared by reference: persons, books, values, findings, handles.
///
/// An object is born with one reference, which `krMake` puts into a `KRRef`; it dies with the last. Objects are
/// compared by identity unless a class redefines `isEqual` and, in step with it, `hash`. Objects are neither copied nor
/// moved.
///
/// Counting is atomic, so references may be taken and dropped on any thread; what an object holds is protected only
/// where its own header says so.
class KRObject {
 public:
  KRObject(const KRObject&) = delete;
  KRObject& operator=(const KRObject&) = delete;

  /// Whether this object counts as the same as `other`; false for nothing. By default identity.
  virtual bool isEqual(const KRObject* other) const;

  /// A number that is the same for equal objects; seeded per process, never stored.
  virtual uint64_t hash() const;

  /// The text form; for a plain object some text that names it. Deterministic for every value object.
  virtual KRString description() const;

  /// The class name written into keyed archives, or nothing for an object that cannot be archived.
  virtual KRText archiveClassName() const;

  /// Writes the object's fields into the archive (written form: `encodeWithCoder:`). Called by the archiver only, and
  /// only on objects with an `archiveClassName`.
  virtual void encodeWithCoder(KRKeyedArchiver& coder) const;

  void retain() const noexcept {
    if (count_.fetch_add(1, std::memory_order_relaxed) == 0) firstReference();
  }

  /// Whether there is no reference but one: whoever has that can let the object go, and nobody meets it again. Another
  /// object may get its address then.
  bool hasOneReference() const noexcept { return count_.load(std::memory_order_acquire) == 1; }

  void release() const noexcept {
    if (isGraphNode_) {
      releaseInGraph();
    } else if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete this;
    }
  }

 protected:
  KRObject() noexcept = default;
  virtual ~KRObject() = default;

 private:
  friend class KRGraphNode;

  /// Only nodes of a graph can be referred to again after their count fell to nothing.
  virtual void firstReference() const noexcept;
  virtual void releaseInGraph() const noexcept;

  mutable std::atomic<uint32_t> count_{1};
  bool isGraphNode_ = false;
};

/// A counted reference to a `T` (a class derived from `KRObject`), or nothing. Eight bytes.
///
/// A borrowed pointer may be kept by wrapping it: `KRRef<IKRPerson>(pointer)` adds a reference of its own.
template <class T>
class KRRef {
 public:
  constexpr KRRef() noexcept = default;
  constexpr KRRef(std::nullptr_t) noexcept {}
  explicit KRRef(T* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->retain();
  }
  KRRef(const KRRef& other) noexcept : KRRef(other.object_) {}
  KRRef(KRRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  KRRef(const KRRef<U>& other) noexcept : KRRef(static_cast<T*>(other.get())) {}
  template <class U>
  KRRef(KRRef<U>&& other) noexcept : object_(other.detach()) {}
  ~KRRef() {
    if (object_ != nullptr) object_->release();
  }
  KRRef& operator=(KRRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  /// Takes over the reference that a new object is born with.
  static KRRef adopt(T* object) noexcept {
    KRRef reference;
    reference.object_ = object;
    return reference;
  }

  /// Gives the reference up without dropping it; the caller owns it now.
  T* detach() noexcept { return std::exchange(object_, nullptr); }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Identity, as everywhere in the engine; equality of content is `isEqual`.
  template <class U>
  friend bool operator==(const KRRef& a, const KRRef<U>& b) noexcept {
    return a.get() == b.get();
  }
  friend bool operator==(const KRRef& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  T* object_ = nullptr;
};

/// Makes a shared object: `auto label = krMake<KRLabel>();`.
template <class T, class... Arguments>
KRRef<T> krMake(Arguments&&... arguments) {
  return KRRef<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

/// Equality of two objects of which either may be nothing: two nothings are equal.
inline bool krEqualObjects(const KRObject* a, const KRObject* b) {
  return a == b || (a != nullptr && a->isEqual(b));
}
