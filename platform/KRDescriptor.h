#pragma once

#include <errno.h>
#include <unistd.h>

#include <utility>

/// Owns one of the system's open file descriptors, or none, and closes it.
class KRDescriptor {
 public:
  KRDescriptor() noexcept = default;
  /// Takes the descriptor over; a negative number is none.
  explicit KRDescriptor(int number) noexcept : number_(number) {}
  KRDescriptor(KRDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  KRDescriptor& operator=(KRDescriptor other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  KRDescriptor(const KRDescriptor&) = delete;
  ~KRDescriptor() { static_cast<void>(close()); }

  explicit operator bool() const noexcept { return number_ >= 0; }
  int number() const noexcept { return number_; }

  /// Closes it now; the system's error number, as a full disk may be told only here, or 0.
  int close() noexcept {
    const int number = std::exchange(number_, -1);
    return number < 0 || ::close(number) == 0 || errno == EINTR ? 0 : errno;
  }

 private:
  int number_ = -1;
};
