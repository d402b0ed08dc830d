#include "app/Output.h"

#include <unistd.h>
#include <cerrno>
#include <system_error>

#include "app/Unusable.h"

namespace {

constexpr size_t kBufferSize = size_t{64} * 1024;

}  // namespace

int writeAll(int descriptor, std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return 0;
}

Output::Output(int descriptor) : descriptor_(descriptor) {
  buffer_.reserve(kBufferSize);
}

void Output::write(std::string_view bytes) {
  if (failed()) return;
  if (buffer_.size() + bytes.size() > kBufferSize) flush();
  if (bytes.size() >= kBufferSize) {
    error_ = error_ == 0 ? writeAll(descriptor_, bytes) : error_;
  } else {
    buffer_.append(bytes);
  }
}

void Output::flush() {
  if (error_ == 0) error_ = writeAll(descriptor_, buffer_);
  buffer_.clear();
}

void Output::finish() {
  flush();
  if (failed()) throw Unusable("cannot write the result: " + std::generic_category().message(error_));
}
