#include "contacts/stores/KRVCardStaging.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/KRFile.h"
#include "platform/KRFileWriter.h"

namespace {

namespace fs = std::filesystem;

/// Before the number of the process.
constexpr std::string_view kStart = ".krcontacts-";
constexpr size_t kMostFlushedEach = 16;

KRText text(const std::string& string) {
  return {std::string_view(string)};
}

}  // namespace

KRVCardStaging::KRVCardStaging(const std::string& folder, size_t count)
    : path_(folder + "/" + std::string(kStart) + std::to_string(getpid())), isFlushedEach_(count <= kMostFlushedEach) {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
    const std::string name = entry.path().filename().string();
    if (name.compare(0, kStart.size(), kStart) != 0) continue;
    const auto process = static_cast<pid_t>(std::atol(name.c_str() + kStart.size()));
    const bool isAlive = process > 0 && process != getpid() && (kill(process, 0) == 0 || errno != ESRCH);
    if (!isAlive) fs::remove_all(entry.path(), ignored);
  }
}

KRVCardStaging::~KRVCardStaging() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

KRResult<void> KRVCardStaging::make() {
  if (isMade_) return {};
  KRResult<void> made = KRFile::createFolders(text(path_), true);
  isMade_ = made.isOk();
  return made;
}

KRResult<void> KRVCardStaging::put(size_t index, std::string_view bytes, const std::string& target) {
  if (KRResult<void> made = make(); !made) return made;
  KRFileWriter::Options options;
  options.isFlushed = isFlushedEach_;
  KRResult<KRFileWriter> writer = KRFileWriter::open(text(at(index)), options);
  if (!writer) return writer.error();
  if (KRResult<void> written = writer->append(bytes); !written) return written;
  if (KRResult<void> done = writer->commit(); !done) return done;
  std::error_code none;
  const fs::file_status status = fs::status(target, none);
  if (fs::exists(status)) fs::permissions(at(index), status.permissions(), none);
  return {};
}

void KRVCardStaging::keep(size_t index, const std::string& target) {
  if (!make()) return;
  static_cast<void>(linkat(AT_FDCWD, target.c_str(), AT_FDCWD, keptAt(index).c_str(), AT_SYMLINK_FOLLOW));
}

KRResult<void> KRVCardStaging::putBack(size_t index, const std::string& target) const {
  return KRFile::move(text(keptAt(index)), text(target));
}

KRResult<void> KRVCardStaging::flush() {
  if (!isMade_ || isFlushedEach_) return {};
  return KRFileWriter::flushAll(text(path_));
}
