#include "platform/KRFileWriter.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/KRDescriptor.h"
#include "platform/KRFileSteps.h"

namespace {

constexpr size_t kPiece = size_t{1} << 30U;  // One call transfers at most about two gigabytes.
constexpr uint64_t kCarried = uint64_t{8} << 20U;
/// Hidden, and told from what others leave about.
constexpr std::string_view kTemporary = ".krcontacts.new-";
constexpr std::string_view kRandom = "XXXXXX";

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
    if (const int failed = krFaultAt(KRFile::Step::WritePiece)) return failed;
    const ssize_t count = ::write(descriptor, bytes.data(), std::min(bytes.size(), kPiece));
    if (count < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    bytes.remove_prefix(static_cast<size_t>(count));
  } while (!bytes.empty());
  return 0;
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

/// A held file is one whose writer is at work.
bool hold(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

bool isStillThere(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

void removeIfLeft(int folder, const char* name) {
  // Without waiting: a pipe of that name would wait for a reader.
  const KRDescriptor left(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
  struct stat status = {};
  if (!left || fstat(left.number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()) return;
  if (hold(left.number())) unlinkat(folder, name, 0);
}

}  // namespace

KRFileWriter::KRFileWriter(KRText path, std::string target, const Options& options)
    : path_(path.view()), target_(std::move(target)), options_(options) {}

KRFileWriter::KRFileWriter(KRFileWriter&& other) noexcept = default;

KRFileWriter::~KRFileWriter() {
  if (descriptor_) unlink(temporary_.c_str());
}

KRResult<KRFileWriter> KRFileWriter::open(KRText path, const Options& options) {
  if (path.isEmpty() || path.contains('\0'))
    return KRError{KRErrorCode::InvalidArgument, "cannot write: no path is given"};
  KRFileWriter writer(path, linkTarget(std::string(path.view())), options);
  struct stat status = {};
  const bool isThere = stat(writer.target_.c_str(), &status) == 0;
  if (isThere && S_ISDIR(status.st_mode)) return KRFile::systemError(EISDIR, "write", path);
  if (isThere && !S_ISREG(status.st_mode)) return KRFile::systemError(EINVAL, "write", path);
  int failed = krFaultAt(KRFile::Step::CreateTemporary);
  if (failed == 0) failed = writer.openTemporary();
  if (failed != 0) return KRFile::systemError(failed, "write", path);
  const mode_t mode = isThere ? status.st_mode & 07777 : options.isPrivate ? mode_t{0600} : ordinaryMode();
  if (fchmod(writer.descriptor_->number(), mode) != 0) return KRFile::systemError(errno, "write", path);
  return KRResult<KRFileWriter>(std::move(writer));
}

int KRFileWriter::openTemporary() {
  for (;;) {
    temporary_ = folderOf(target_).append("/").append(kTemporary).append(kRandom);
    KRDescriptor made(mkostemp(temporary_.data(), O_CLOEXEC));
    if (!made) return errno;
    descriptor_ = std::make_unique<KRDescriptor>(std::move(made));
    // Somebody who cleans up may take it for left behind in this very moment. Where nothing can be held, nobody cleans
    // up either.
    hold(descriptor_->number());
    if (isStillThere(descriptor_->number())) return 0;
  }
}

KRResult<void> KRFileWriter::append(std::string_view bytes) {
  if (!descriptor_) return KRFile::systemError(EBADF, "write", KRText(std::string_view(path_)));
  if (failed_ == 0) failed_ = writeAll(descriptor_->number(), bytes);
  if (failed_ != 0) return KRFile::systemError(failed_, "write", KRText(std::string_view(path_)));
  written_ += bytes.size();
  if (options_.isFlushed && written_ - carried_ >= kCarried) carry();
  return {};
}

/// The disk works on what was written while the rest is made, so that less is left to flush in the end. A wish: whether
/// the bytes arrived is what the flush says.
void KRFileWriter::carry() {
#ifdef SYNC_FILE_RANGE_WRITE
  sync_file_range(descriptor_->number(), static_cast<off64_t>(carried_), static_cast<off64_t>(written_ - carried_),
                  SYNC_FILE_RANGE_WRITE);
#endif
  carried_ = written_;
}

int KRFileWriter::finish() {
  if (!descriptor_) return EBADF;
  if (failed_ != 0) return failed_;
  if (options_.isFlushed) {
    if (const int failed = krFaultAt(KRFile::Step::FlushTemporary)) return failed;
    if (const int failed = krFlush(descriptor_->number())) return failed;
  }
  // Held until it has its own name. A full disk may be told when it is closed, so it is closed before.
  const KRDescriptor held(fcntl(descriptor_->number(), F_DUPFD_CLOEXEC, 0));
  const int closed = descriptor_->close();
  descriptor_ = nullptr;
  if (closed != 0) return closed;
  if (const int failed = krFaultAt(KRFile::Step::Rename)) return failed;
  return place();
}

int KRFileWriter::place() {
  if (options_.isFlushed) {
    if (renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE) == 0) {
      before_ = Before::Kept;
      return 0;
    }
    if (errno == ENOENT) before_ = Before::Missing;
  }
  return rename(temporary_.c_str(), target_.c_str()) == 0 ? 0 : errno;
}

void KRFileWriter::takeBack() const {
  if (before_ == Before::Kept) rename(temporary_.c_str(), target_.c_str());
  if (before_ == Before::Missing) unlink(target_.c_str());
}

KRResult<void> KRFileWriter::commit() {
  const KRText path{std::string_view(path_)};
  if (const int failed = finish()) {
    unlink(temporary_.c_str());
    descriptor_ = nullptr;
    return KRFile::systemError(failed, "write", path);
  }
  if (!options_.isFlushed) return {};
  if (const KRResult<void> flushed = KRFile::flushFolder(KRText(std::string_view(folderOf(target_)))); !flushed) {
    takeBack();
    return flushed.error();
  }
  if (before_ == Before::Kept) unlink(temporary_.c_str());
  return {};
}

KRResult<void> KRFileWriter::flushAll(KRText folder) {
  const KRDescriptor descriptor(::open(std::string(folder.view()).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  int failed = descriptor ? krFaultAt(KRFile::Step::FlushTemporary) : errno;
  if (failed == 0 && syncfs(descriptor.number()) != 0) failed = errno;
  if (failed != 0) return KRFile::systemError(failed, "write", folder);
  return {};
}

void KRFileWriter::removeLeftovers(KRText path) {
  const std::string folder = folderOf(linkTarget(std::string(path.view())));
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
  if (!entries) return;
  // Each thread reads entries of its own.
  while (const dirent* entry = readdir(entries.get())) {  // NOLINT(concurrency-mt-unsafe)
    const std::string_view name(static_cast<const char*>(entry->d_name));
    if (name.size() == kTemporary.size() + kRandom.size() && name.substr(0, kTemporary.size()) == kTemporary)
      removeIfLeft(dirfd(entries.get()), name.data());
  }
}

KRResult<void> KRFileWriter::mayReplace(KRText path) {
  const std::string target(path.view());
  struct stat status = {};
  if (path.isEmpty() || stat(target.c_str(), &status) != 0) return {};
  // Whom the system lets do everything is kept from it by the mode alone.
  const bool isLocked = (status.st_mode & 0222U) == 0;
  if (!isLocked && (access(target.c_str(), W_OK) == 0 || (errno != EACCES && errno != EROFS && errno != EPERM)))
    return {};
  return KRError{KRErrorCode::NotAllowed, krWellFormed(path.view()) + ": the file is read-only; it is left as it is"};
}
