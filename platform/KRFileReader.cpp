#include "platform/KRFileReader.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "platform/KRFile.h"

KRResult<KRFileReader> KRFileReader::open(KRText path) {
  if (path.isEmpty() || path.contains('\0')) {
    return KRError{KRErrorCode::InvalidArgument, "cannot read a file without a path"};
  }
  const std::string name(path.view());
  KRFileReader reader(::open(name.c_str(), O_RDONLY | O_CLOEXEC), true);
  if (reader.number_ < 0) return KRFile::systemError(errno, "read", path);
  struct stat status = {};
  if (fstat(reader.number_, &status) != 0) return KRFile::systemError(errno, "read", path);
  if (S_ISDIR(status.st_mode)) return KRFile::systemError(EISDIR, "read", path);
  return reader;
}

KRFileReader::KRFileReader(KRFileReader&& other) noexcept
    : number_(std::exchange(other.number_, -1)), isOwned_(std::exchange(other.isOwned_, false)) {}

KRFileReader& KRFileReader::operator=(KRFileReader other) noexcept {
  std::swap(number_, other.number_);
  std::swap(isOwned_, other.isOwned_);
  return *this;
}

KRFileReader::~KRFileReader() {
  if (isOwned_ && number_ >= 0) ::close(number_);
}

KRResult<size_t> KRFileReader::read(char* bytes, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    const ssize_t count = ::read(number_, bytes + filled, size - filled);
    if (count == 0) break;
    if (count > 0) {
      filled += static_cast<size_t>(count);
    } else if (errno != EINTR) {
      return KRFile::systemError(errno, "read", "the file");
    }
  }
  return filled;
}
