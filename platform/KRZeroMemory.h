#pragma once

#include <cstddef>
#include <utility>

/// Memory that begins as zeros, for tables. Moved, never copied.
///
/// Pages that nobody touches cost nothing, so a table may be made as large as it could ever become. From a few
/// megabytes up the system may use large pages: looks at random places then hardly ever wait for the page's address.
/// Such pages cost much to get, so of the memory that was let go one stretch stays for who comes next, also where that
/// is larger: memory of 4 to 64 MiB is the beginning of 64 MiB of addresses, of which little more is touched than was
/// asked for. Different objects may be used by different threads.
class KRZeroMemory {
 public:
  /// No memory.
  KRZeroMemory() noexcept = default;
  /// Throws `std::bad_alloc` as `new` does.
  explicit KRZeroMemory(size_t size);
  KRZeroMemory(KRZeroMemory&& other) noexcept { swap(other); }
  KRZeroMemory& operator=(KRZeroMemory other) noexcept {
    swap(other);
    return *this;
  }
  KRZeroMemory(const KRZeroMemory&) = delete;
  ~KRZeroMemory();

  /// At the alignment of `malloc`; null without memory.
  void* data() const noexcept { return data_; }
  /// In bytes, as asked for.
  size_t size() const noexcept { return size_; }

  /// Gives the system what stays for who comes next: for the end of work that needs one table after the other.
  static void giveBackSpare() noexcept;

 private:
  void swap(KRZeroMemory& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(used_, other.used_);
  }

  void* data_ = nullptr;
  size_t size_ = 0;
  /// Of a stretch: how many of its bytes this object or one before it may have touched; 0 for other memory.
  size_t used_ = 0;
};
