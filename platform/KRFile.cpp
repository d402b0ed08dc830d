#include "platform/KRFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>

#include "platform/KRDescriptor.h"
#include "platform/KRFileSteps.h"
#include "platform/KRFileWriter.h"

namespace {

constexpr size_t kPiece = size_t{1} << 30U;  // One call transfers at most about two gigabytes.
constexpr size_t kFirstPipeRoom = size_t{64} << 10U;

struct Fault {
  std::mutex lock;
  std::shared_ptr<const std::function<int(KRFile::Step)>> call;
};

/// Never destroyed: a detached thread may still write while the process ends.
Fault& fault() {
  static auto* const only = new Fault;
  return *only;
}

KRErrorCode codeOf(int number) noexcept {
  switch (number) {
    case ENOENT:
      return KRErrorCode::NotFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return KRErrorCode::NotAllowed;
    case EISDIR:
      return KRErrorCode::IsFolder;
    case ENOTDIR:
      return KRErrorCode::NotFolder;
    case ENOSPC:
    case EDQUOT:
      return KRErrorCode::NoSpace;
    case EFBIG:
    case ENOMEM:
    case EOVERFLOW:
      return KRErrorCode::TooLarge;
    case EBUSY:
    case EAGAIN:
      return KRErrorCode::Busy;
    case EINVAL:
    case ENAMETOOLONG:
      return KRErrorCode::InvalidArgument;
    default:
      return KRErrorCode::Failed;
  }
}

/// The path for the system, or nothing when it cannot be one.
std::optional<std::string> systemPath(KRText path) {
  if (path.isEmpty() || path.contains('\0')) return std::nullopt;
  return std::string(path.view());
}

KRError noPath(std::string_view doing) {
  return {KRErrorCode::InvalidArgument, "cannot " + std::string(doing) + ": no path is given"};
}

int flushFolder(const std::string& folder) {
  if (const int failed = krFaultAt(KRFile::Step::FlushFolder)) return failed;
  const KRDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor) return errno == EACCES ? 0 : errno;  // A folder may be writable and yet not readable.
  return krFlush(descriptor.number());
}

std::string nowInUtc() {
  const time_t now = time(nullptr);
  tm parts = {};
  char text[32] = "";
  if (gmtime_r(&now, &parts) != nullptr) strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts);
  return text;
}

bool isTaken(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

}  // namespace

int krFaultAt(KRFile::Step step) {
  std::shared_ptr<const std::function<int(KRFile::Step)>> call;
  {
    const std::lock_guard lock(fault().lock);
    call = fault().call;
  }
  return call ? (*call)(step) : 0;
}

int krFlush(int descriptor) {
  while (fsync(descriptor) != 0) {
    if (errno == EINVAL || errno == ENOTSUP) return 0;  // A file system that knows no flushing.
    if (errno != EINTR) return errno;
  }
  return 0;
}

KRResult<KRBuffer> krReadAll(int descriptor, KRText name) {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0) return KRFile::systemError(errno, "read", name);
  if (S_ISDIR(status.st_mode)) return KRFile::systemError(EISDIR, "read", name);
  KRBuffer content;
  // One byte more than the file has, so that its end is seen without growing.
  const size_t expected = S_ISREG(status.st_mode) ? static_cast<size_t>(status.st_size) : 0;
  if (!content.reserve(std::max(expected + 1, expected == 0 ? kFirstPipeRoom : 1)))
    return KRFile::systemError(ENOMEM, "read", name);
  while (true) {
    if (content.size() == content.capacity() && !content.reserve(content.capacity() * 2))
      return KRFile::systemError(ENOMEM, "read", name);
    const size_t room = std::min(content.capacity() - content.size(), kPiece);
    const ssize_t count = ::read(descriptor, content.data() + content.size(), room);
    if (count < 0) {
      if (errno == EINTR) continue;
      return KRFile::systemError(errno, "read", name);
    }
    if (count == 0) return content;
    content.setSize(content.size() + static_cast<size_t>(count));
  }
}

KRError KRFile::systemError(int number, std::string_view doing, KRText path) {
  std::string sentence = "cannot ";
  sentence.append(doing).append(" ").append(krWellFormed(path.view())).append(": ");
  sentence.append(std::generic_category().message(number));
  return {codeOf(number), std::move(sentence)};
}

KRFile::Kind KRFile::kind(KRText path) noexcept {
  const auto name = systemPath(path);
  struct stat status = {};
  if (!name || stat(name->c_str(), &status) != 0) return Kind::Missing;
  if (S_ISREG(status.st_mode)) return Kind::Regular;
  return S_ISDIR(status.st_mode) ? Kind::Folder : Kind::Other;
}

KRResult<KRBuffer> KRFile::read(KRText path) {
  const auto name = systemPath(path);
  if (!name) return noPath("read");
  const KRDescriptor descriptor(open(name->c_str(), O_RDONLY | O_CLOEXEC));
  if (!descriptor) return systemError(errno, "read", path);
  return krReadAll(descriptor.number(), path);
}

KRResult<KRBuffer> KRFile::readStandardInput() {
  return krReadAll(STDIN_FILENO, "standard input");
}

KRResult<void> KRFile::write(KRText path, std::string_view bytes, const WriteOptions& options) {
  KRResult<KRFileWriter> writer = KRFileWriter::open(path, {options.isPrivate});
  if (!writer) return writer.error();
  if (KRResult<void> written = writer->append(bytes); !written) return written;
  return writer->commit();
}

KRResult<void> KRFile::createFolders(KRText path, bool isPrivate) {
  const auto name = systemPath(path);
  if (!name) return noPath("make the folder");
  const mode_t mode = isPrivate ? 0700 : 0777;
  for (size_t end = 0; end != std::string::npos;) {
    end = name->find('/', end + 1);
    const std::string part = name->substr(0, end);
    if (mkdir(part.c_str(), mode) == 0) continue;
    const int number = errno;
    const Kind found = kind(KRText(std::string_view(part)));
    if (found == Kind::Folder) continue;
    return systemError(found == Kind::Missing ? number : ENOTDIR, "make the folder", path);
  }
  return {};
}

KRResult<void> KRFile::move(KRText path, KRText to) {
  const auto name = systemPath(path);
  const auto place = systemPath(to);
  if (!name || !place) return noPath("write");
  if (const int failed = krFaultAt(Step::Move)) return systemError(failed, "write", to);
  if (rename(name->c_str(), place->c_str()) == 0) return {};
  if (errno != EXDEV) return systemError(errno, "write", to);
  const KRResult<KRBuffer> content = read(path);
  if (!content) return content.error();
  if (KRResult<void> written = write(to, content->view()); !written) return written;
  return remove(path);
}

KRResult<void> KRFile::remove(KRText path) {
  const auto name = systemPath(path);
  if (!name) return noPath("remove");
  if (const int failed = krFaultAt(Step::Remove)) return systemError(failed, "remove", path);
  if (unlink(name->c_str()) == 0 || errno == ENOENT) return {};
  return systemError(errno, "remove", path);
}

KRResult<KRString> KRFile::setAside(KRText path, KRText why) {
  const auto name = systemPath(path);
  if (!name) return noPath("put aside");
  const std::string dated = *name + "." + std::string(why.view()) + "-" + nowInUtc();
  std::string free = dated;
  for (int number = 2; isTaken(free); ++number) free = dated + "-" + std::to_string(number);
  if (rename(name->c_str(), free.c_str()) != 0) return systemError(errno, "put aside", path);
  return KRString(free);
}

KRResult<void> KRFile::keep(KRText path, KRText at) {
  const auto name = systemPath(path);
  const auto place = systemPath(at);
  if (!name || !place) return noPath("keep");
  struct stat status = {};
  if (stat(name->c_str(), &status) != 0) return systemError(errno, "keep", path);
  if (status.st_nlink == 1) {
    if (linkat(AT_FDCWD, name->c_str(), AT_FDCWD, place->c_str(), AT_SYMLINK_FOLLOW) == 0) return {};
    const bool isOnOneDiskOnly = errno == EXDEV || errno == EPERM || errno == EMLINK || errno == ENOTSUP;
    if (!isOnOneDiskOnly) return systemError(errno, "keep", path);
  }
  const KRResult<KRBuffer> content = read(path);
  if (!content) return content.error();
  WriteOptions options;
  options.isPrivate = true;
  return write(at, content->view(), options);
}

KRResult<void> KRFile::flushFolder(KRText path) {
  const auto name = systemPath(path);
  if (!name) return noPath("write");
  if (const int failed = ::flushFolder(*name)) return systemError(failed, "write", path);
  return {};
}

void KRFile::setFault(std::function<int(Step)> fault) {
  auto call = fault ? std::make_shared<const std::function<int(Step)>>(std::move(fault)) : nullptr;
  const std::lock_guard lock(::fault().lock);
  ::fault().call.swap(call);
}
