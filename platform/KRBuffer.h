#pragma once

#include <cstddef>
#include <string_view>

/// Bytes in memory of their own, as they came from a file. Moved, never copied.
///
/// The memory is not cleared before use, and from a few megabytes up it is taken in whole pages that the system may
/// make large ones, so that reading a big file costs little more than the copy. Such memory grows without a copy where
/// the system can give the pages another address: the old and the new bytes are never there together.
class KRBuffer {
 public:
  KRBuffer() noexcept = default;
  KRBuffer(KRBuffer&& other) noexcept { swap(other); }
  KRBuffer& operator=(KRBuffer other) noexcept {
    swap(other);
    return *this;
  }
  KRBuffer(const KRBuffer&) = delete;
  ~KRBuffer();

  /// The bytes; valid while the buffer lives and does not grow. Moving the buffer leaves them where they are.
  std::string_view view() const noexcept { return {data_, size_}; }
  operator std::string_view() const noexcept { return view(); }
  char* data() noexcept { return data_; }
  const char* data() const noexcept { return data_; }
  size_t size() const noexcept { return size_; }
  bool isEmpty() const noexcept { return size_ == 0; }
  size_t capacity() const noexcept { return capacity_; }

  /// Makes room for `capacity` bytes in all and keeps what is there; false when there is no memory for them.
  [[nodiscard]] bool reserve(size_t capacity) noexcept;
  /// Sets the size after `data()` was filled; at most the capacity.
  void setSize(size_t size) noexcept;
  /// Makes room for `more` bytes behind those that are there, and some to spare where room was missing, so that many
  /// small additions cost no more than one; false when there is no memory for them.
  [[nodiscard]] bool grow(size_t more) noexcept {
    return (more <= capacity_ - size_ && data_ != nullptr) || growToHold(more);
  }
  /// Copies the bytes to the end; false when there is no memory for them.
  [[nodiscard]] bool append(std::string_view bytes) noexcept;

 private:
  bool growToHold(size_t more) noexcept;
  void swap(KRBuffer& other) noexcept;

  char* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};
