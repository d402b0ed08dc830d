#pragma once

#include <string>
#include <string_view>

/// A buffered file descriptor that notices when writing fails. After the first failure everything further is dropped,
/// so that a long document can be cut short by asking `failed` now and then; `finish` reports the failure.
///
/// One thread at a time.
class Output {
 public:
  explicit Output(int descriptor);

  void write(std::string_view bytes);
  void write(char byte) { write(std::string_view(&byte, 1)); }
  /// Hands the buffer to the system.
  void flush();
  bool failed() const noexcept { return error_ != 0; }
  /// Flushes, and throws `Unusable` when this or an earlier write failed.
  void finish();

 private:
  int descriptor_;
  int error_ = 0;
  std::string buffer_;
};

/// Writes all bytes without a buffer; the error number of a failure, or 0.
int writeAll(int descriptor, std::string_view bytes) noexcept;
