#include "platform/KRFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>

#include "platform/KRDescriptor.h"

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

int faultAt(KRFile::Step step) {
  std::shared_ptr<const std::function<int(KRFile::Step)>> call;
  {
    const std::lock_guard lock(fault().lock);
    call = fault().call;
  }
  return call ? (*call)(step) : 0;
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

KRResult<KRBuffer> readAll(int descriptor, KRText name) {
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

/// The file that a path leads to through links; the path itself when it leads nowhere yet.
std::string linkTarget(const std::string& path) {
  const std::unique_ptr<char, decltype(&free)> real(realpath(path.c_str(), nullptr), &free);
  return real ? std::string(real.get()) : path;
}

std::string folderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

int writeAll(int descriptor, std::string_view bytes) {
  do {
    if (const int failed = faultAt(KRFile::Step::WritePiece)) return failed;
    const ssize_t count = ::write(descriptor, bytes.data(), std::min(bytes.size(), kPiece));
    if (count < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    bytes.remove_prefix(static_cast<size_t>(count));
  } while (!bytes.empty());
  return 0;
}

int flush(int descriptor) {
  while (fsync(descriptor) != 0) {
    if (errno == EINVAL || errno == ENOTSUP) return 0;  // A file system that knows no flushing.
    if (errno != EINTR) return errno;
  }
  return 0;
}

int flushFolder(const std::string& folder) {
  if (const int failed = faultAt(KRFile::Step::FlushFolder)) return failed;
  const KRDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor) return errno == EACCES ? 0 : errno;  // A folder may be writable and yet not readable.
  return flush(descriptor.number());
}

/// Fills the temporary file; 0, or the error number.
int fillTemporary(int descriptor, std::string_view bytes, mode_t mode) {
  if (fchmod(descriptor, mode) != 0) return errno;
  if (const int failed = writeAll(descriptor, bytes)) return failed;
  if (const int failed = faultAt(KRFile::Step::FlushTemporary)) return failed;
  return flush(descriptor);
}

/// The mode that an ordinary new file gets. The mask can only be asked by setting it, which other threads would see, so
/// it is read from the kernel's report about this process.
mode_t ordinaryMode() {
  constexpr std::string_view kField = "\nUmask:\t";
  const KRResult<KRBuffer> report = KRFile::read("/proc/self/status");
  if (!report) return 0644;
  const std::string_view text = report->view();
  const size_t place = text.find(kField);
  if (place == std::string_view::npos) return 0644;
  unsigned mask = 0;
  for (size_t i = place + kField.size(); i < text.size() && text[i] >= '0' && text[i] <= '7'; ++i)
    mask = mask * 8 + static_cast<unsigned>(text[i] - '0');
  return 0666 & ~mask & 0777;
}

}  // namespace

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
  return readAll(descriptor.number(), path);
}

KRResult<KRBuffer> KRFile::readStandardInput() {
  return readAll(STDIN_FILENO, "standard input");
}

KRResult<void> KRFile::write(KRText path, std::string_view bytes, const WriteOptions& options) {
  const auto name = systemPath(path);
  if (!name) return noPath("write");
  const std::string target = linkTarget(*name);
  struct stat status = {};
  const bool isThere = stat(target.c_str(), &status) == 0;
  if (isThere && S_ISDIR(status.st_mode)) return systemError(EISDIR, "write", path);
  if (isThere && !S_ISREG(status.st_mode)) return systemError(EINVAL, "write", path);
  const mode_t mode = isThere ? status.st_mode & 07777 : options.isPrivate ? mode_t{0600} : ordinaryMode();

  if (const int failed = faultAt(Step::CreateTemporary)) return systemError(failed, "write", path);
  std::string temporary = target + ".XXXXXX";
  KRDescriptor descriptor(mkostemp(temporary.data(), O_CLOEXEC));
  if (!descriptor) return systemError(errno, "write", path);
  int failed = fillTemporary(descriptor.number(), bytes, mode);
  if (const int closing = descriptor.close(); failed == 0) failed = closing;
  if (failed == 0) failed = faultAt(Step::Rename);
  if (failed == 0 && rename(temporary.c_str(), target.c_str()) != 0) failed = errno;
  if (failed != 0) {
    unlink(temporary.c_str());
    return systemError(failed, "write", path);
  }
  failed = flushFolder(folderOf(target));
  if (failed != 0) return systemError(failed, "write", path);
  return {};
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

KRResult<void> KRFile::remove(KRText path) {
  const auto name = systemPath(path);
  if (!name) return noPath("remove");
  if (unlink(name->c_str()) == 0 || errno == ENOENT) return {};
  return systemError(errno, "remove", path);
}

void KRFile::setFault(std::function<int(Step)> fault) {
  auto call = fault ? std::make_shared<const std::function<int(Step)>>(std::move(fault)) : nullptr;
  const std::lock_guard lock(::fault().lock);
  ::fault().call.swap(call);
}
