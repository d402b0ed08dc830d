#include "contacts/undo/KRUndoRecords.h"

#include <errno.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>

#include "contacts/undo/KRUndoFields.h"
#include "platform/KRFile.h"
#include "platform/KRHostInfo.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPart = ".part";
constexpr size_t kDigits = 6;

std::optional<int64_t> numberIn(std::string_view text) {
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number <= 0) return std::nullopt;
  return number;
}

std::string folderName(int64_t number) {
  std::string name = std::to_string(number);
  if (name.size() < kDigits) name.insert(0, kDigits - name.size(), '0');
  return name;
}

std::string runFile(const std::string& folder) {
  return folder + "/run";
}

/// What is in a record's folder.
void look(KRUndoRecords::Run& run) {
  std::error_code failed;
  for (fs::directory_iterator each(run.folder, failed); !failed && each != fs::directory_iterator();
       each.increment(failed)) {
    std::error_code unknown;
    const auto size = each->file_size(unknown);
    if (!unknown) run.bytes += size;
    const std::string name = each->path().filename().string();
    const size_t end = name.size() > kPart.size() ? name.size() - kPart.size() : 0;
    if (end == 0 || name.compare(end, kPart.size(), kPart) != 0) continue;
    if (const auto part = numberIn(std::string_view(name).substr(0, end))) run.parts.push_back(*part);
  }
  std::sort(run.parts.begin(), run.parts.end());
}

std::optional<KRUndoRecords::Run> runAt(const std::string& folder, int64_t number) {
  const KRResult<KRBuffer> bytes = KRFile::read(std::string_view(runFile(folder)));
  if (!bytes) return std::nullopt;
  KRUndoReader fields(bytes->view());
  KRUndoRecords::Run run;
  run.number = number;
  run.title = KRString(fields.text());
  run.time = fields.number();
  run.isUndo = fields.number() != 0;
  run.folder = folder;
  if (!fields.isOk()) return std::nullopt;
  look(run);
  return run;
}

/// The folders of records with their numbers, the largest first.
std::vector<std::pair<int64_t, std::string>> folders() {
  std::vector<std::pair<int64_t, std::string>> found;
  const KRString folder = KRUndoRecords::folder();
  std::error_code failed;
  fs::directory_iterator each(fs::path(folder.view()), failed);
  for (; !failed && each != fs::directory_iterator(); each.increment(failed)) {
    if (const auto number = numberIn(each->path().filename().string()))
      found.emplace_back(*number, each->path().string());
  }
  std::sort(found.rbegin(), found.rend());
  return found;
}

void removeFolder(const std::string& folder) {
  std::error_code ignored;
  // The run first: what is left when this is cut short is no record.
  fs::remove(runFile(folder), ignored);
  fs::remove_all(folder, ignored);
}

}  // namespace

std::string KRUndoRecords::Run::at(int64_t part, const std::string& ending) const {
  return folder + "/" + std::to_string(part) + "." + ending;
}

KRString KRUndoRecords::folder() {
  const KRString data = KRHostInfo::dataFolder();
  return data.isNothing() ? KRString() : krConcat({data, "/undo"});
}

KRResult<std::vector<KRUndoRecords::Run>> KRUndoRecords::all() {
  const KRString place = folder();
  if (place.isNothing()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep undo records in"};
  std::vector<Run> runs;
  if (KRFile::kind(place) == KRFile::Kind::Missing) return runs;
  for (const auto& [number, path] : folders()) {
    if (std::optional<Run> run = runAt(path, number)) runs.push_back(*std::move(run));
  }
  return runs;
}

KRResult<KRUndoRecords::Begun> KRUndoRecords::begin(KRText title, bool isUndo) {
  const KRString place = folder();
  if (place.isNothing()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep undo records in"};
  if (KRResult<void> made = KRFile::createFolders(place, true); !made) return made.error();
  const KRResult<KRFileLock> lock = KRFileLock::hold(place);
  if (!lock) return lock.error();
  const auto known = folders();
  Run run;
  run.number = known.empty() ? 1 : known.front().first + 1;
  run.title = KRString(title);
  run.time = time(nullptr);
  run.isUndo = isUndo;
  run.folder = std::string(place.view()) + "/" + folderName(run.number);
  if (mkdir(run.folder.c_str(), 0700) != 0)
    return KRFile::systemError(errno, "make the folder", std::string_view(run.folder));
  KRResult<KRFileLock> begun = KRFileLock::holdNow(std::string_view(run.folder));
  if (!begun) return begun.error();
  KRUndoWriter fields;
  fields.add(run.title).add(run.time).add(int64_t{isUndo ? 1 : 0});
  KRFile::WriteOptions options;
  options.isPrivate = true;
  KRResult<void> done = KRFile::write(std::string_view(runFile(run.folder)), fields.take(), options);
  if (done) done = KRFile::flushFolder(place);
  if (!done) {
    removeFolder(run.folder);
    return done.error();
  }
  return Begun{std::move(run), *std::move(begun)};
}

KRResult<KRFileLock> KRUndoRecords::hold(const Run& run) {
  KRResult<KRFileLock> lock = KRFileLock::holdNow(std::string_view(run.folder));
  if (lock || lock.error().code != KRErrorCode::Busy) return lock;
  return KRError{KRErrorCode::Busy, "that run goes on still: " + std::string(run.title.view())};
}

KRResult<void> KRUndoRecords::remove(const Run& run) {
  removeFolder(run.folder);
  if (KRFile::kind(std::string_view(run.folder)) == KRFile::Kind::Missing) return {};
  return KRFile::systemError(EACCES, "remove", std::string_view(run.folder));
}

void KRUndoRecords::prune(int64_t now) {
  const KRResult<KRFileLock> lock = KRFileLock::hold(folder());
  if (!lock) return;
  size_t kept = 0;
  uint64_t bytes = 0;
  for (const auto& [number, path] : folders()) {
    const std::optional<Run> run = runAt(path, number);
    // One that is being written is let be; what a stopped run left without a part is nothing.
    if (!KRFileLock::holdNow(std::string_view(path))) continue;
    const bool isRecord = run && !run->parts.empty();
    if (isRecord) bytes += run->bytes;
    const bool isBeyond = isRecord && (kept >= kMostRuns || now - run->time > kMostSeconds || bytes > kMostBytes);
    if (!isRecord || (isBeyond && kept > 0)) {
      removeFolder(path);
    } else {
      ++kept;
    }
  }
}
