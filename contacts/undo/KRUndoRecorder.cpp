#include "contacts/undo/KRUndoRecorder.h"

#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "contacts/undo/KRUndoMark.h"
#include "contacts/undo/KRUndoPart.h"
#include "platform/KRFile.h"
#include "platform/KRFilePreferences.h"
#include "platform/KRRegularFile.h"

namespace {

namespace fs = std::filesystem;

std::atomic<KRUndoRecorder*> openRecorder{nullptr};

/// A path that means the same wherever a later run stands, and links followed.
std::string wholePath(KRText path) {
  std::error_code failed;
  const fs::path whole = fs::weakly_canonical(fs::absolute(fs::path(path.view()), failed), failed);
  return failed ? std::string(path.view()) : whole.string();
}

int64_t modeOf(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// What the path is a link to; empty for anything else.
std::string linkAt(const std::string& path) {
  std::error_code failed;
  return fs::read_symlink(path, failed).string();
}

/// Keeps what a file holds, of a link by a copy: who removes a link leaves what it leads to where others may write.
KRResult<void> keep(const std::string& path, const std::string& place) {
  if (linkAt(path).empty()) return KRFile::keep(std::string_view(path), std::string_view(place));
  const KRResult<KRBuffer> content = krReadRegularFile(std::string_view(path));
  if (!content) return content.error();
  KRFile::WriteOptions options;
  options.isPrivate = true;
  return KRFile::write(std::string_view(place), content->view(), options);
}

KRError named(const KRError& cause) {
  return {cause.code, "no undo record can be written: " + cause.sentence};
}

}  // namespace

// The note

KRUndoNote::KRUndoNote(KRUndoNote&& other) noexcept
    : recorder_(std::exchange(other.recorder_, nullptr)), part_(other.part_), files_(std::move(other.files_)) {}

KRUndoNote::~KRUndoNote() {
  if (recorder_ == nullptr) return;
  for (const Watched& each : files_) {
    if (!(KRFileStamp::of(std::string_view(each.path)) == each.stamp)) return;
  }
  recorder_->takeBack(part_);
}

void KRUndoNote::drop() {
  if (KRUndoRecorder* recorder = std::exchange(recorder_, nullptr)) recorder->takeBack(part_);
}

void KRUndoNote::keep(KRText kind, const std::string& fields, std::vector<KRUndoChange> changes) {
  if (recorder_ != nullptr) recorder_->rewrite(part_, kind, fields, std::move(changes));
  keep();
}

// The run

KRUndoRecorder::KRUndoRecorder(KRText title) : title_(title) {
  KRUndoRecorder* none = nullptr;
  if (openRecorder.compare_exchange_strong(none, this)) observePreferences();
}

KRUndoRecorder::~KRUndoRecorder() {
  KRUndoRecorder* self = this;
  if (!openRecorder.compare_exchange_strong(self, nullptr)) return;
  KRFilePreferences::setObserver({});
  if (!begun_) return;
  // Also when nothing was written.
  if (isAsAfter(0)) static_cast<void>(KRUndoRecords::remove(begun_->run));
  begun_.reset();
  KRUndoRecords::prune(time(nullptr));
}

bool KRUndoRecorder::isAsAfter(int64_t count) const {
  struct Way {
    std::optional<uint64_t> first;
    std::optional<uint64_t> last;
  };
  std::unordered_map<std::string_view, Way> ways;
  for (const auto& [part, changes] : kept_) {
    if (part <= count) continue;
    for (const KRUndoChange& change : changes) {
      ways.emplace(change.what, Way{change.before, {}}).first->second.last = change.after;
    }
  }
  return std::all_of(ways.begin(), ways.end(), [](const auto& way) { return way.second.first == way.second.last; });
}

bool KRUndoRecorder::isOpen() noexcept {
  return openRecorder.load() != nullptr;
}

void KRUndoRecorder::setTitle(KRText title, bool isUndo) {
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return;
  const std::lock_guard lock(recorder->lock_);
  recorder->title_ = KRString(title);
  recorder->isUndo_ = isUndo;
}

KRString KRUndoRecorder::failure() {
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return {};
  const std::lock_guard lock(recorder->lock_);
  return recorder->failure_;
}

int64_t KRUndoRecorder::count() {
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return 0;
  const std::lock_guard lock(recorder->lock_);
  return recorder->parts_;
}

bool KRUndoRecorder::hasChangedSince(int64_t count) {
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return false;
  const std::lock_guard lock(recorder->lock_);
  return !recorder->isAsAfter(count);
}

KRResult<KRBuffer> KRUndoRecorder::contentBefore(KRText path, int64_t count) {
  const KRError none = {KRErrorCode::NotFound, "nothing is kept of " + std::string(path.view())};
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return none;
  const std::string whole = wholePath(path);
  const std::lock_guard lock(recorder->lock_);
  for (auto part = recorder->kept_.upper_bound(count); part != recorder->kept_.end(); ++part) {
    for (size_t i = 0; i < part->second.size(); ++i) {
      const KRUndoChange& change = part->second[i];
      if (change.what != whole) continue;
      if (!change.before) return none;
      const std::string kept = recorder->begun_->run.at(part->first, std::to_string(i));
      KRResult<KRBuffer> content = krReadRegularFile(std::string_view(kept));
      if (content && krUndoMark(content->view()) != *change.before) return none;
      return content;
    }
  }
  return none;
}

KRUndoRecorder::Pause::Pause() : paused_(openRecorder.exchange(nullptr)) {}

KRUndoRecorder::Pause::~Pause() {
  openRecorder.store(paused_);
}

void KRUndoRecorder::observePreferences() {
  KRFilePreferences::setObserver([](const KRFilePreferences::Observed& change) {
    KRUndoRecorder* recorder = openRecorder.load();
    if (recorder == nullptr || change.before.isEqual(change.after)) return;
    const KRUndoChange done = {std::string(change.path.view()) + "#" + std::string(change.key.view()),
                               KRUndoPreference::markOf(change.before), KRUndoPreference::markOf(change.after)};
    KRResult<KRUndoNote> note = record(KRUndoPart::kPreference, KRUndoPreference::of(change), {done});
    if (note) {
      note->keep();
      return;
    }
    const std::lock_guard lock(recorder->lock_);
    recorder->failure_ = KRString(note.error().sentence);
  });
}

// Taking note

KRResult<KRUndoNote> KRUndoRecorder::record(KRText kind, const std::string& fields, std::vector<KRUndoChange> changes) {
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return KRUndoNote();
  return recorder->add(kind, fields, {}, std::move(changes));
}

KRResult<KRUndoNote> KRUndoRecorder::recordFile(KRText path, std::string_view after, KRText lockedAt) {
  KRUndoRecorder* recorder = openRecorder.load();
  return recorder == nullptr ? KRUndoNote() : recorder->addFile(path, after, lockedAt);
}

KRResult<KRUndoNote> KRUndoRecorder::recordRemoval(KRText path, KRText lockedAt) {
  KRUndoRecorder* recorder = openRecorder.load();
  return recorder == nullptr ? KRUndoNote() : recorder->addFile(path, {}, lockedAt);
}

KRResult<KRUndoNote> KRUndoRecorder::addFile(KRText path, std::optional<std::string_view> after, KRText lockedAt) {
  const KRResult<KRBuffer> before = krReadRegularFile(path);
  if (!before && before.error().code != KRErrorCode::NotFound) return named(before.error());
  File file = {std::string(path.view()), {}, after};
  if (before) file.before = before->view();
  if (file.before == file.after) return KRUndoNote();
  return addFiles({}, lockedAt.isNothing() ? path : lockedAt, {std::move(file)});
}

KRResult<KRUndoNote> KRUndoRecorder::recordFiles(KRText folder, const std::vector<File>& files) {
  KRUndoRecorder* recorder = openRecorder.load();
  if (recorder == nullptr) return KRUndoNote();
  return recorder->addFiles(folder, folder, files);
}

KRResult<KRUndoNote> KRUndoRecorder::addFiles(KRText folder, KRText lockedAt, const std::vector<File>& files) {
  KRUndoFiles content;
  content.folder = folder.isNothing() ? std::string() : wholePath(folder);
  content.lockedAt = wholePath(lockedAt);
  std::vector<std::string> kept;
  std::vector<KRUndoChange> changes;
  std::vector<KRUndoNote::Watched> watched;
  for (const File& each : files) {
    // The name of a file of a folder says where it stands, also when it is a link.
    const std::string path = folder.isNothing() ? wholePath(std::string_view(each.path)) : each.path;
    KRUndoFiles::File file;
    file.path = folder.isNothing() ? path : fs::path(path).filename().string();
    if (each.before) {
      file.before = krUndoMark(*each.before);
      file.mode = modeOf(path);
      if (!each.after) file.link = linkAt(path);
    }
    if (each.after) file.after = krUndoMark(*each.after);
    changes.push_back({content.pathOf(file), file.before, file.after});
    content.files.push_back(std::move(file));
    kept.push_back(each.before ? path : std::string());
    watched.push_back({path, KRFileStamp::of(std::string_view(path))});
  }
  KRResult<KRUndoNote> note = add(KRUndoPart::kFiles, content.fields(), kept, std::move(changes));
  if (note) note->files_ = std::move(watched);
  return note;
}

KRResult<KRUndoNote> KRUndoRecorder::add(KRText kind, const std::string& fields, const std::vector<std::string>& kept,
                                         std::vector<KRUndoChange> changes) {
  const std::lock_guard lock(lock_);
  if (!begun_) {
    KRResult<KRUndoRecords::Held> begun = KRUndoRecords::begin(title_, isUndo_);
    if (!begun) return named(begun.error());
    begun_ = *std::move(begun);
  }
  ++parts_;
  if (KRResult<void> written = writePart(kind, fields, kept); !written) return named(written.error());
  kept_[parts_] = std::move(changes);
  if (KRResult<void> written = writeRun(); !written) {
    kept_.erase(parts_);
    return named(written.error());
  }
  KRUndoNote note;
  note.recorder_ = this;
  note.part_ = parts_;
  return note;
}

KRResult<void> KRUndoRecorder::writePart(KRText kind, const std::string& fields, const std::vector<std::string>& kept) {
  for (size_t i = 0; i < kept.size(); ++i) {
    if (kept[i].empty()) continue;
    const std::string place = begun_->run.at(parts_, std::to_string(i));
    if (KRResult<void> done = keep(kept[i], place); !done) return done;
  }
  // The flush of the folder that ends this makes the files above safe too.
  return KRUndoPart{parts_, std::string(kind.view()), fields}.write(begun_->run);
}

KRResult<void> KRUndoRecorder::writeRun() {
  KRUndoRecords::Run& run = begun_->run;
  run.parts.clear();
  for (const auto& [part, changes] : kept_) run.parts.push_back(part);
  return KRUndoRecords::write(run);
}

void KRUndoRecorder::rewrite(int64_t part, KRText kind, const std::string& fields, std::vector<KRUndoChange> changes) {
  const std::lock_guard lock(lock_);
  const KRResult<void> written = KRUndoPart{part, std::string(kind.view()), fields}.write(begun_->run);
  if (!written) failure_ = KRString(written.error().sentence);
  kept_[part] = std::move(changes);
}

void KRUndoRecorder::takeBack(int64_t part) {
  const std::lock_guard lock(lock_);
  const auto kept = kept_.extract(part);
  if (!writeRun()) {
    // It stays a part of the record, which then has something to say of what is as it was.
    kept_[part] = kept.empty() ? std::vector<KRUndoChange>() : kept.mapped();
    return;
  }
  std::error_code ignored;
  const std::string start = std::to_string(part) + ".";
  for (const auto& entry : fs::directory_iterator(begun_->run.folder, ignored)) {
    std::error_code failed;
    if (entry.path().filename().string().compare(0, start.size(), start) == 0) fs::remove(entry.path(), failed);
  }
}
