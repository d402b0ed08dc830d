#include "platform/KRFileLock.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <string>
#include <utility>

#include "platform/KRDescriptor.h"
#include "platform/KRFile.h"

namespace {

/// Whether the path still names what is open.
bool isAt(const std::string& path, int descriptor) {
  struct stat open {};
  struct stat there {};
  return fstat(descriptor, &open) == 0 && stat(path.c_str(), &there) == 0 && open.st_dev == there.st_dev &&
         open.st_ino == there.st_ino;
}

}  // namespace

KRFileLock::KRFileLock(std::unique_ptr<KRDescriptor> held) noexcept : held_(std::move(held)) {}
KRFileLock::KRFileLock(KRFileLock&&) noexcept = default;
KRFileLock& KRFileLock::operator=(KRFileLock&&) noexcept = default;
KRFileLock::~KRFileLock() = default;

KRResult<KRFileLock> KRFileLock::hold(KRText path) {
  return hold(path, true);
}

KRResult<KRFileLock> KRFileLock::holdNow(KRText path) {
  return hold(path, false);
}

KRResult<KRFileLock> KRFileLock::hold(KRText path, bool waits) {
  const std::string place(path.view());
  for (;;) {
    // Without waiting: opening a pipe would wait for a writer.
    KRDescriptor descriptor(open(place.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!descriptor) return KRFile::systemError(errno, "open", path);
    int failed = 0;
    do {
      failed = flock(descriptor.number(), waits ? LOCK_EX : LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
    } while (failed == EINTR);
    if (failed == EWOULDBLOCK && !waits) return KRFile::systemError(EBUSY, "hold", path);
    if (failed != 0) return KRFileLock(nullptr);
    if (isAt(place, descriptor.number())) return KRFileLock(std::make_unique<KRDescriptor>(std::move(descriptor)));
  }
}
