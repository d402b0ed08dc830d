#include "contacts/stores/KRUndoSteps.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "contacts/stores/KRDesktopUndoStep.h"
#include "contacts/stores/KRSQLite.h"
#include "contacts/stores/KRSQLiteJournal.h"
#include "contacts/stores/KRSQLiteSchema.h"
#include "contacts/undo/KRUndoMark.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "platform/KRFilePreferences.h"
#include "platform/KRFileWriter.h"
#include "platform/KRRegularFile.h"

namespace {

namespace fs = std::filesystem;
using Mark = std::optional<uint64_t>;

KRText text(const std::string& string) {
  return {std::string_view(string)};
}

KRError changed(const std::string& what) {
  return {KRErrorCode::Changed, what + " has changed since that run"};
}

KRError damaged(const std::string& path) {
  return {KRErrorCode::Damaged, "the undo record is damaged: " + path};
}

KRResult<Mark> markOfFile(const std::string& path) {
  const KRResult<KRBuffer> bytes = krReadRegularFile(text(path));
  if (bytes) return Mark(krUndoMark(bytes->view()));
  if (bytes.error().code == KRErrorCode::NotFound) return Mark();
  return bytes.error();
}

/// Files that stand for themselves, or in a folder.
class FilesStep : public KRUndoStep {
 public:
  FilesStep(const KRUndoRecords::Run& run, int64_t part, KRUndoFiles content)
      : run_(run), part_(part), content_(std::move(content)) {}

  KRResult<KRUndo::Target> check(KRUndoStates& states) override {
    KRUndo::Target target;
    const bool isFolder = !content_.folder.empty();
    const std::string place = isFolder ? content_.folder : content_.files.empty() ? "" : content_.files.front().path;
    target.kind = isFolder ? "folder"_kr : "file"_kr;
    target.place = KRString(place);
    back_.clear();
    for (size_t i = 0; i < content_.files.size(); ++i) {
      const KRUndoFiles::File& file = content_.files[i];
      const KRResult<Mark> now = stateOf(content_.pathOf(file), states);
      if (!now) return now.error();
      if (*now == file.after) {
        back_.push_back(i);
      } else if (!(*now == file.before)) {
        return changed(content_.pathOf(file));
      }
    }
    for (const size_t i : back_) {
      if (KRResult<void> whole = checkKept(i); !whole) return whole.error();
      if (KRResult<void> may = KRFileWriter::mayReplace(text(pathOf(i))); !may) return may.error();
      states[content_.pathOf(content_.files[i])] = content_.files[i].before;
    }
    target.changes = content_.files.size();
    target.isPutBack = !back_.empty();
    return target;
  }

  KRResult<void> putBack() override {
    const KRResult<KRFileLock> lock = KRFileLock::hold(text(content_.lockedAt));
    if (!lock && lock.error().code != KRErrorCode::NotFound) return lock.error();
    KRUndoStates states;
    if (const KRResult<KRUndo::Target> same = check(states); !same) return same.error();
    std::vector<KRBuffer> now;
    std::vector<KRBuffer> kept;
    for (const size_t i : back_) {
      KRResult<KRBuffer> bytes = content_.files[i].after ? krReadRegularFile(text(pathOf(i))) : KRBuffer();
      KRResult<KRBuffer> before = content_.files[i].before ? krReadRegularFile(text(keptAt(i))) : KRBuffer();
      if (!bytes) return bytes.error();
      if (!before) return before.error();
      now.push_back(*std::move(bytes));
      kept.push_back(*std::move(before));
    }
    KRResult<KRUndoNote> note = record(now, kept);
    if (!note) return note.error();
    // Links after what they may lead to. Removals last: of contacts that moved from one file to another there is one at
    // any time.
    for (const Kind kind : {Kind::File, Kind::Link, Kind::Removal}) {
      for (size_t each = 0; each < back_.size(); ++each) {
        if (kindOf(content_.files[back_[each]]) != kind) continue;
        if (KRResult<void> done = putBack(back_[each], kept[each]); !done) return done;
      }
    }
    note->keep();
    return {};
  }

 private:
  /// What putting a file back makes of it.
  enum class Kind : uint8_t { File, Link, Removal };
  static Kind kindOf(const KRUndoFiles::File& file) noexcept {
    if (!file.before) return Kind::Removal;
    return file.link.empty() ? Kind::File : Kind::Link;
  }

  std::string pathOf(size_t i) const { return content_.pathOf(content_.files[i]); }
  std::string keptAt(size_t i) const { return run_.at(part_, std::to_string(i)); }

  static KRResult<Mark> stateOf(const std::string& path, KRUndoStates& states) {
    if (const auto known = states.find(path); known != states.end()) return known->second;
    KRResult<Mark> now = markOfFile(path);
    if (now) states.emplace(path, *now);
    return now;
  }

  KRResult<void> checkKept(size_t i) const {
    if (!content_.files[i].before) return {};
    const KRResult<Mark> kept = markOfFile(keptAt(i));
    if (!kept) return kept.error();
    if (!*kept) return damaged(keptAt(i) + " is missing");
    if (!(*kept == content_.files[i].before)) return damaged(keptAt(i));
    return {};
  }

  KRResult<KRUndoNote> record(const std::vector<KRBuffer>& now, const std::vector<KRBuffer>& kept) const {
    if (content_.folder.empty() && content_.files.front().before)
      return KRUndoRecorder::recordFile(text(pathOf(0)), kept.front().view(), text(content_.lockedAt));
    std::vector<KRUndoRecorder::File> files;
    for (size_t each = 0; each < back_.size(); ++each) {
      const KRUndoFiles::File& file = content_.files[back_[each]];
      KRUndoRecorder::File wanted = {content_.pathOf(file), {}, {}};
      if (file.after) wanted.before = now[each].view();
      if (file.before) wanted.after = kept[each].view();
      files.push_back(std::move(wanted));
    }
    if (content_.folder.empty()) return KRUndoRecorder::recordRemoval(text(pathOf(0)), text(content_.lockedAt));
    return KRUndoRecorder::recordFiles(text(content_.folder), files);
  }

  /// Whether the file was a link, and what it led to is as it was.
  bool leadsToWhatWas(const KRUndoFiles::File& file) const {
    if (file.link.empty()) return false;
    const KRResult<Mark> there = markOfFile((fs::path(content_.pathOf(file)).parent_path() / file.link).string());
    return there && *there == file.before;
  }

  KRResult<void> link(const KRUndoFiles::File& file) const {
    const std::string path = content_.pathOf(file);
    std::error_code failed;
    fs::create_symlink(file.link, path, failed);
    if (failed) return KRFile::systemError(failed.value(), "write", text(path));
    return KRFile::flushFolder(text(content_.folder));
  }

  KRResult<void> putBack(size_t i, const KRBuffer& kept) const {
    const std::string path = pathOf(i);
    const KRUndoFiles::File& file = content_.files[i];
    if (!file.before) return KRFile::remove(text(path));
    if (leadsToWhatWas(file)) return link(file);
    KRFile::WriteOptions options;
    options.isPrivate = true;
    if (KRResult<void> written = KRFile::write(text(path), kept.view(), options); !written) return written;
    std::error_code failed;
    // One that is there has kept its mode.
    if (!file.after) fs::permissions(path, static_cast<fs::perms>(file.mode), failed);
    return {};
  }

  const KRUndoRecords::Run run_;
  const int64_t part_;
  const KRUndoFiles content_;
  /// The files that are as the run left them.
  std::vector<size_t> back_;
};

/// One preference.
class PreferenceStep : public KRUndoStep {
 public:
  explicit PreferenceStep(KRUndoPreference change) : change_(std::move(change)) {}

  KRResult<KRUndo::Target> check(KRUndoStates& states) override {
    const std::string key = change_.path + "#" + std::string(change_.key.view());
    if (states.find(key) == states.end()) {
      states[key] = KRUndoPreference::markOf(krMake<KRFilePreferences>(KRString(change_.path))->value(change_.key));
    }
    KRUndo::Target target = {"preferences"_kr, KRString(change_.path), 1, false};
    Mark& now = states[key];
    target.isPutBack = now == KRUndoPreference::markOf(change_.after);
    if (target.isPutBack) {
      now = KRUndoPreference::markOf(change_.before);
    } else if (!(now == KRUndoPreference::markOf(change_.before))) {
      return changed("the setting " + std::string(change_.key.view()) + " in " + change_.path);
    }
    return target;
  }

  KRResult<void> putBack() override {
    const auto preferences = krMake<KRFilePreferences>(KRString(change_.path));
    preferences->setValue(change_.before, change_.key);
    return preferences->flush();
  }

 private:
  const KRUndoPreference change_;
};

/// Rows of a book in a library.
class RowsStep : public KRUndoStep {
 public:
  explicit RowsStep(KRUndoRows done) : done_(std::move(done)) {}

  KRResult<KRUndo::Target> check(KRUndoStates& states) override {
    const std::string key = done_.key();
    if (states.find(key) == states.end()) {
      KRSQLiteDatabase database(text(done_.path));
      open(database);
      const Mark now = KRSQLiteJournal::markOf(database, done_.book);
      if (const KRResult<void> read = database.take(); !read) return read.error();
      states[key] = now;
    }
    KRUndo::Target target = {"sqlite"_kr, called(), 0, false};
    target.changes = done_.count();
    Mark& now = states[key];
    target.isPutBack = now == done_.after;
    if (target.isPutBack) {
      now = done_.before;
    } else if (!(now == done_.before)) {
      return changed(std::string(called().view()));
    }
    return target;
  }

  KRResult<void> putBack() override {
    KRSQLiteDatabase database(text(done_.path));
    open(database);
    {
      KRSQLiteTransaction transaction(database, KRSQLiteTransaction::Kind::Writing);
      KRSQLiteJournal journal(database, done_.book);
      if (database.isOk() && !(journal.before() == done_.after))
        database.fail(KRErrorCode::Changed, "it has changed since that run");
      done_.putBack(database);
      KRUndoNote note = journal.finish(done_.ID, done_.name);
      if (transaction.commit()) note.keep();
    }
    return database.take();
  }

 private:
  static void open(KRSQLiteDatabase& database) {
    if (KRFile::kind(text(database.path())) != KRFile::Kind::Regular) {
      return database.fail(KRErrorCode::NotFound, "it is not there any more");
    }
    database.open();
    krPrepareLibrary(database, false);
  }

  KRString called() const { return krConcat({done_.name, " (", done_.ID, ", ", text(done_.path), ")"}); }

  const KRUndoRows done_;
};

}  // namespace

KRResult<std::unique_ptr<KRUndoStep>> KRUndoStep::of(const KRUndoRecords::Run& run, int64_t number) {
  KRResult<KRUndoPart> part = KRUndoPart::read(run, number);
  if (!part) return part.error();
  std::unique_ptr<KRUndoStep> step;
  if (part->kind == KRUndoPart::kFiles.view()) {
    if (auto files = KRUndoFiles::read(part->fields); files && (!files->folder.empty() || files->files.size() == 1))
      step = std::make_unique<FilesStep>(run, number, *std::move(files));
  } else if (part->kind == KRUndoPart::kPreference.view()) {
    if (auto change = KRUndoPreference::read(part->fields)) step = std::make_unique<PreferenceStep>(*std::move(change));
  } else if (part->kind == KRUndoPart::kRows.view()) {
    if (auto rows = KRUndoRows::read(part->fields)) step = std::make_unique<RowsStep>(*std::move(rows));
  } else if (part->kind == KRUndoPart::kCards.view()) {
    if (auto cards = KRUndoCards::read(part->fields)) step = krDesktopUndoStep(run, number, *std::move(cards));
  }
  if (!step) return damaged(run.at(number, "part"));
  return step;
}
