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
#include "platform/KRRegularFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPart = ".part";
/// Before the number of a record that is being removed.
constexpr std::string_view kGone = "gone-";
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

/// How much is in a record's folder, and whether there are parts.
bool look(KRUndoRecords::Run& run) {
  bool hasParts = false;
  std::error_code failed;
  for (fs::directory_iterator each(run.folder, failed); !failed && each != fs::directory_iterator();
       each.increment(failed)) {
    std::error_code unknown;
    const auto size = each->file_size(unknown);
    if (!unknown) run.bytes += size;
    hasParts = hasParts || each->path().extension() == kPart;
  }
  return hasParts;
}

/// Nothing for a folder that was made only just: the first file in it says what it is.
std::optional<KRUndoRecords::Run> runAt(const std::string& folder, int64_t number) {
  const KRResult<KRBuffer> bytes = krReadRegularFile(std::string_view(runFile(folder)));
  const bool isMissing = !bytes && bytes.error().code == KRErrorCode::NotFound;
  KRUndoReader fields(bytes ? bytes->view() : std::string_view());
  KRUndoRecords::Run run;
  run.number = number;
  run.title = KRString(fields.text());
  run.time = fields.number();
  run.isUndo = fields.number() != 0;
  run.folder = folder;
  for (int64_t count = fields.number(); count > 0 && fields.isOk(); --count) run.parts.push_back(fields.number());
  if (!fields.isOk() || !fields.isAtEnd()) {
    run = KRUndoRecords::Run();
    run.number = number;
    run.folder = folder;
    run.damage = KRString(runFile(folder) + (isMissing ? " is missing" : ""));
  }
  const bool hasParts = look(run);
  if (isMissing && !hasParts) return std::nullopt;
  return run;
}

/// The folders of records with their numbers, the largest first; those met before `failed`, if it did.
std::vector<std::pair<int64_t, std::string>> folders(std::error_code& failed) {
  std::vector<std::pair<int64_t, std::string>> found;
  const KRString folder = KRUndoRecords::folder();
  fs::directory_iterator each(fs::path(folder.view()), failed);
  for (; !failed && each != fs::directory_iterator(); each.increment(failed)) {
    if (const auto number = numberIn(each->path().filename().string()))
      found.emplace_back(*number, each->path().string());
  }
  std::sort(found.rbegin(), found.rend());
  return found;
}

/// Gives the folder of a record a name that is no record's: what is left of it when its removal is cut short counts for
/// nothing. Nothing where there is no such folder.
KRResult<std::optional<fs::path>> setAside(const std::string& folder) {
  const fs::path place(folder);
  const fs::path gone = place.parent_path() / (std::string(kGone) + place.filename().string());
  std::error_code failed;
  fs::path free = gone;
  fs::rename(place, free, failed);
  // Another process may be removing one that had the same number: numbers of removed records are given again.
  for (int further = 1; failed == std::errc::directory_not_empty || failed == std::errc::file_exists; ++further) {
    free = gone.string() + "-" + std::to_string(further);
    fs::rename(place, free, failed);
  }
  if (!failed) return std::optional(free);
  if (failed == std::errc::no_such_file_or_directory) return std::optional<fs::path>();
  return KRFile::systemError(failed.value(), "remove", std::string_view(folder));
}

KRResult<void> removeFolder(const std::string& folder) {
  const KRResult<std::optional<fs::path>> aside = setAside(folder);
  if (!aside) return aside.error();
  std::error_code ignored;
  if (*aside) fs::remove_all(**aside, ignored);
  return {};
}

/// Takes away what was set aside, also by removals that were cut short.
void removeGone() {
  std::error_code failed;
  for (const auto& entry : fs::directory_iterator(fs::path(KRUndoRecords::folder().view()), failed)) {
    std::error_code ignored;
    if (entry.path().filename().string().compare(0, kGone.size(), kGone) == 0) fs::remove_all(entry.path(), ignored);
  }
}

/// Sets aside what is beyond the limits; for who holds the folder.
void setBeyondAside(int64_t now) {
  size_t kept = 0;
  uint64_t bytes = 0;
  std::error_code unknown;
  for (const auto& [number, path] : folders(unknown)) {
    // One that is being written is let be; what a stopped run left without a part is nothing. It is read only when it
    // is held: a run that ended between the two would seem to have no part.
    const KRResult<KRFileLock> held = KRFileLock::holdNow(std::string_view(path));
    if (!held) continue;
    const std::optional<KRUndoRecords::Run> run = runAt(path, number);
    const bool isRecord = run && (!run->parts.empty() || !run->damage.isNothing());
    if (isRecord) bytes += run->bytes;
    const bool isBeyond =
        isRecord && (kept >= KRUndoRecords::kMostRuns || now - run->time > KRUndoRecords::kMostSeconds ||
                     bytes > KRUndoRecords::kMostBytes);
    if (!isRecord || (isBeyond && kept > 0)) {
      static_cast<void>(setAside(path));
    } else {
      ++kept;
    }
  }
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
  std::error_code failed;
  const auto known = folders(failed);
  if (failed) return KRFile::systemError(failed.value(), "read", place);
  for (const auto& [number, path] : known) {
    if (std::optional<Run> run = runAt(path, number)) runs.push_back(*std::move(run));
  }
  return runs;
}

KRResult<KRUndoRecords::Held> KRUndoRecords::begin(KRText title, bool isUndo) {
  const KRString place = folder();
  if (place.isNothing()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep undo records in"};
  if (KRResult<void> made = KRFile::createFolders(place, true); !made) return made.error();
  const KRResult<KRFileLock> lock = KRFileLock::hold(place);
  if (!lock) return lock.error();
  std::error_code unknown;
  const auto known = folders(unknown);
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
  KRResult<void> done = write(run);
  if (done) done = KRFile::flushFolder(place);
  if (!done) {
    static_cast<void>(removeFolder(run.folder));
    return done.error();
  }
  return Held{std::move(run), *std::move(begun)};
}

KRResult<void> KRUndoRecords::write(const Run& run) {
  KRUndoWriter fields;
  fields.add(run.title).add(run.time).add(int64_t{run.isUndo ? 1 : 0}).add(static_cast<int64_t>(run.parts.size()));
  for (const int64_t part : run.parts) fields.add(part);
  KRFile::WriteOptions options;
  options.isPrivate = true;
  return KRFile::write(std::string_view(runFile(run.folder)), fields.take(), options);
}

KRResult<KRUndoRecords::Held> KRUndoRecords::hold(const Run& run) {
  // Who takes away what is beyond the limits holds each record for a moment, which is not putting it back.
  const KRResult<KRFileLock> quiet = KRFileLock::hold(folder());
  KRResult<KRFileLock> lock = KRFileLock::holdNow(std::string_view(run.folder));
  if (!lock && lock.error().code == KRErrorCode::Busy)
    return KRError{KRErrorCode::Busy, "it goes on still, or another process undoes it right now"};
  if (!lock && lock.error().code != KRErrorCode::NotFound) return lock.error();
  std::optional<Run> now = lock ? runAt(run.folder, run.number) : std::nullopt;
  // The number may be another run's by now.
  const bool isIt = now && (!now->damage.isNothing() || (now->time == run.time && now->title == run.title &&
                                                         now->isUndo == run.isUndo && !now->parts.empty()));
  if (!isIt) return KRError{KRErrorCode::NotFound, "another process has undone it meanwhile"};
  return Held{*std::move(now), *std::move(lock)};
}

KRResult<void> KRUndoRecords::remove(const Run& run) {
  return removeFolder(run.folder);
}

void KRUndoRecords::prune(int64_t now) {
  {
    const KRResult<KRFileLock> lock = KRFileLock::hold(folder());
    if (!lock) return;
    setBeyondAside(now);
  }
  // Others wait for the folder, so what may take long comes afterwards.
  removeGone();
}
