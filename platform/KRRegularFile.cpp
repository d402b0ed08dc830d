#include "platform/KRRegularFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "platform/KRDescriptor.h"
#include "platform/KRFile.h"
#include "platform/KRFileSteps.h"
#include "platform/KRString.h"

namespace {

uint64_t memorySize() noexcept {
  return static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

KRResult<KRBuffer> krReadRegularFile(KRText path) {
  if (path.isEmpty() || path.contains('\0')) return KRFile::systemError(EINVAL, "read", path);
  const KRDescriptor descriptor(open(std::string(path.view()).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!descriptor) return KRFile::systemError(errno, "read", path);
  struct stat status = {};
  if (fstat(descriptor.number(), &status) != 0) return KRFile::systemError(errno, "read", path);
  if (S_ISDIR(status.st_mode)) return KRFile::systemError(EISDIR, "read", path);
  if (!S_ISREG(status.st_mode)) {
    return KRError{KRErrorCode::Failed, "cannot read " + krWellFormed(path.view()) + ": it is no regular file"};
  }
  if (static_cast<uint64_t>(status.st_size) > memorySize()) return KRFile::systemError(EFBIG, "read", path);
  return krReadAll(descriptor.number(), path);
}
