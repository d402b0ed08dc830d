#include "contacts/stores/KRVCardFolderStore.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

#include "contacts/stores/KRVCardGroups.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRASCII.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "platform/KRFileWriter.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnd = ".vcf";
/// Longer names are cut: file systems hold 255 bytes.
constexpr size_t kLongestName = 120;

KRText text(const std::string& string) {
  return {std::string_view(string)};
}

bool isContactFile(const fs::directory_entry& entry) {
  const std::string name = entry.path().filename().string();
  if (name.size() <= kEnd.size() || name[0] == '.') return false;
  return krEqualsIgnoringCase(std::string_view(name).substr(name.size() - kEnd.size()), kEnd) &&
         KRFile::kind(text(entry.path().string())) == KRFile::Kind::Regular;
}

bool mayStandInName(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
         c == '.' || c == '@' || c == '+';
}

}  // namespace

std::string KRVCardFolderStore::pathOf(std::string_view name) const {
  return std::string(path_.view()).append("/").append(name);
}

KRError KRVCardFolderStore::error(const KRError& cause, std::string_view name) const {
  return {cause.code, krWellFormed(pathOf(name)) + ": " + cause.sentence};
}

KRResult<std::vector<std::string>> KRVCardFolderStore::namesIn(KRText folder) {
  std::vector<std::string> names;
  std::error_code failed;
  fs::directory_iterator each(std::string(folder.view()), failed);
  for (; !failed && each != fs::directory_iterator(); each.increment(failed)) {
    if (isContactFile(*each)) names.push_back(each->path().filename().string());
  }
  if (failed) return KRFile::systemError(failed.value(), "read the folder", folder);
  std::sort(names.begin(), names.end());
  return names;
}

KRResult<size_t> KRVCardFolderStore::count() {
  const KRResult<std::vector<std::string>> all = namesIn(path_);
  if (!all) return all.error();
  size_t count = 0;
  for (const std::string& name : *all) {
    const KRResult<KRVCardFile> file = KRVCardFile::open(text(pathOf(name)));
    if (!file) return file.error();
    count += file->contactCount();
  }
  return count;
}

KRResult<KRStoreContent> KRVCardFolderStore::read() {
  const KRResult<std::vector<std::string>> all = namesIn(path_);
  if (!all) return all.error();
  KRStoreContent content;
  KRVCardGroups groups;
  std::vector<File> files;
  for (const std::string& name : *all) {
    const KRResult<KRVCardFile> file = KRVCardFile::open(text(pathOf(name)));
    // One that is gone by now never was.
    if (!file && file.error().code == KRErrorCode::NotFound) continue;
    if (!file) return file.error();
    krAppendContacts(*file, {static_cast<int64_t>(files.size()), 0}, content.persons);
    groups.read(*file);
    files.push_back({name, krContentMark(file->bytes()), krGroupsOf(*file)});
  }
  content.groups = groups.withMembers(content.persons);
  files_ = std::move(files);
  return content;
}

// Writing

std::vector<KRVCardFolderStore::Step> KRVCardFolderStore::stepsOf(KRStoreChanges& changes) const {
  std::map<size_t, KRVCardEdition> editions;
  auto changed = changes.changed.begin();
  auto removed = changes.removed.begin();
  // Contacts of one file stand together, in the file's order.
  size_t inFile = 0;
  for (size_t i = 0; i < changes.stored.size(); ++i) {
    const auto file = static_cast<size_t>(changes.stored[i].key.place);
    inFile = i > 0 && changes.stored[i - 1].key.place == changes.stored[i].key.place ? inFile + 1 : 0;
    if (changed != changes.changed.end() && changed->index == i) editions[file].change(inFile, *changed++);
    if (removed != changes.removed.end() && removed->index == i) editions[file].remove(inFile, *removed++);
  }
  std::vector<Step> steps;
  steps.reserve(editions.size());
  for (auto& [file, edition] : editions) steps.push_back({file, std::move(edition)});
  return steps;
}

KRResult<void> KRVCardFolderStore::edit(Step& step, const KRStoreChanges& changes, const UIDs& names,
                                        KRStoreConflicts& conflicts) const {
  const std::string& name = files_[step.file].name;
  const KRResult<KRBuffer> bytes = KRFile::read(text(pathOf(name)));
  if (!bytes && bytes.error().code != KRErrorCode::NotFound) return bytes.error();
  // One that another program removed too is as it should be.
  if (!bytes && step.edition.isRemovalOnly()) return {};
  if (!bytes || krContentMark(bytes->view()) != files_[step.file].mark) {
    for (const auto& each : step.edition.changed()) conflicts.add(*changes.stored[each.second->index].person);
    for (const auto& each : step.edition.removed()) conflicts.add(*changes.stored[each.second->index].person);
    return {};
  }
  step.before = KRVCardFile::read(std::string(bytes->view()));
  KRResult<KRVCardFile> edited = step.edition.of(step.before, changes.stored, names);
  if (!edited) return error(edited.error(), name);
  step.content = *std::move(edited);
  return {};
}

KRResult<void> KRVCardFolderStore::open(Step& step) const {
  const File& file = files_[step.file];
  const KRResult<KRBuffer> bytes = KRFile::read(text(pathOf(file.name)));
  if (!bytes && bytes.error().code != KRErrorCode::NotFound) return bytes.error();
  if (!bytes || krContentMark(bytes->view()) != file.mark) {
    const std::string group(file.groups.front().name.view());
    return error({KRErrorCode::Changed, "the group " + group + " was changed by another program since reading"},
                 file.name);
  }
  step.before = KRVCardFile::read(std::string(bytes->view()));
  step.content = step.before;
  return {};
}

KRResult<void> KRVCardFolderStore::editGroups(const KRStoreChanges& changes, std::vector<Step>& edits,
                                              std::unordered_set<std::string>& newNames) {
  KRVCardGroupEdition edition(changes);
  std::unordered_map<size_t, size_t> stepOf;
  for (size_t i = 0; i < edits.size(); ++i) stepOf.emplace(edits[i].file, i);
  for (const File& file : files_) edition.consider(file.groups);
  for (size_t i = 0; i < files_.size(); ++i) {
    const KRVCardGroupEdition::OfFile wanted = edition.next(files_[i].groups);
    if (wanted.isEmpty()) continue;
    const auto [place, isNew] = stepOf.emplace(i, edits.size());
    if (isNew) edits.push_back({i, {}});
    Step& step = edits[place->second];
    // A file that is gone has no content yet either.
    if (step.before.cards().empty()) {
      if (KRResult<void> opened = open(step); !opened) return opened;
    }
    KRResult<KRVCardFile> changed = step.content.with(wanted.in(step.content));
    if (!changed) return error(changed.error(), files_[i].name);
    step.content = *std::move(changed);
  }
  const KRVCardVersion version = versionOf(changes);
  for (const KRVCardGroup& group : edition.added()) {
    Step step{files_.size(), {}};
    step.content = KRVCardFile::read(KRVCardGroupRewriter::card(group, version));
    files_.push_back({freshName(group.UID, newNames), 0});
    newNames.insert(files_.back().name);
    edits.push_back(std::move(step));
  }
  return {};
}

KRVCardVersion KRVCardFolderStore::versionOf(const KRStoreChanges& changes) {
  std::string_view neighbour;
  if (!changes.stored.empty()) {
    neighbour = changes.stored.back().person->card();
  } else if (!changes.added.empty()) {
    neighbour = changes.added.back().record.card();
  }
  return KRVCardFile::read(std::string(neighbour)).version();
}

std::string KRVCardFolderStore::freshName(KRText ID, const std::unordered_set<std::string>& newNames) const {
  std::string start(krPlainUID(ID).view().substr(0, kLongestName));
  for (char& c : start) c = mayStandInName(c) ? c : '_';
  if (start.empty() || start[0] == '.') start.insert(0, "_");
  std::string name = start + std::string(kEnd);
  const auto isTaken = [&] { return newNames.count(name) != 0 || fs::exists(fs::symlink_status(pathOf(name))); };
  for (size_t number = 2; isTaken(); ++number) name = start + "_" + std::to_string(number) + std::string(kEnd);
  return name;
}

KRResult<void> KRVCardFolderStore::addFile(KRStoreChanges::Added& addition, const UIDs& names, std::vector<Step>& steps,
                                           std::unordered_set<std::string>& newNames) {
  Step step{files_.size(), {}};
  step.edition.add(addition);
  KRResult<KRVCardFile> made = step.edition.of(KRVCardFile(), {}, names);
  const std::string name = freshName(addition.person->baseID(), newNames);
  if (!made) return error(made.error(), name);
  step.content = *std::move(made);
  addition.key = {static_cast<int64_t>(files_.size()), 0};
  files_.push_back({name, 0});
  newNames.insert(name);
  steps.push_back(std::move(step));
  return {};
}

KRResult<void> KRVCardFolderStore::write(KRStoreChanges& changes) {
  // Held until all files stand: two programs that both find one unchanged would lose what one of them wrote.
  const KRResult<KRFileLock> lock = KRFileLock::hold(path_);
  if (!lock) return lock.error();
  const UIDs names = krNameMembers(changes);
  std::vector<Step> edits = stepsOf(changes);
  KRStoreConflicts conflicts;
  for (Step& step : edits) {
    if (KRResult<void> done = edit(step, changes, names, conflicts); !done) return done;
    for (const auto& each : step.edition.changed()) each.second->key = changes.stored[each.second->index].key;
  }
  if (!conflicts.isEmpty())
    return KRError{KRErrorCode::Changed, std::string(path_.view()) + ": " + conflicts.sentence()};
  const size_t known = files_.size();
  std::vector<Step> steps;
  std::unordered_set<std::string> newNames;
  KRResult<void> done;
  for (KRStoreChanges::Added& each : changes.added) {
    done = addFile(each, names, steps, newNames);
    if (!done) break;
  }
  if (done && changes.groups != nullptr) done = editGroups(changes, edits, newNames);
  if (done) {
    // What is removed goes last: a contact that moves is there twice rather than not at all when this is cut short.
    std::stable_partition(edits.begin(), edits.end(), [](const Step& step) {
      return !step.edition.isRemovalOnly() || step.edition.removed().empty();
    });
    for (Step& step : edits) steps.push_back(std::move(step));
    done = finish(steps);
  }
  // Numbers of files that did not come into being are free again.
  while (files_.size() > known && files_.back().mark == 0) files_.pop_back();
  return done;
}

KRResult<KRUndoNote> KRVCardFolderStore::recordUndo(const std::vector<Step>& steps) const {
  if (!KRUndoRecorder::isOpen()) return KRUndoNote();
  std::vector<KRUndoRecorder::File> files;
  for (const Step& step : steps) {
    if (!step.isWritten() && !step.isRemoved()) continue;
    if (!step.wasThere() && step.isRemoved()) continue;
    KRUndoRecorder::File each = {pathOf(files_[step.file].name), {}, {}};
    if (step.wasThere()) each.before = step.before.bytes();
    if (!step.isRemoved()) each.after = step.content.bytes();
    files.push_back(std::move(each));
  }
  if (files.empty()) return KRUndoNote();
  return KRUndoRecorder::recordFiles(path_, files);
}

KRResult<void> KRVCardFolderStore::checkReplaced(const Step& step) const {
  if (!step.wasThere() || (!step.isRemoved() && !step.isWritten())) return {};
  return KRFileWriter::mayReplace(text(pathOf(files_[step.file].name)));
}

KRResult<void> KRVCardFolderStore::finish(std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (KRResult<void> may = checkReplaced(step); !may) return may;
  }
  const auto count = std::count_if(steps.begin(), steps.end(), [](const Step& step) { return step.isWritten(); });
  KRVCardStaging staging(std::string(path_.view()), static_cast<size_t>(count));
  for (size_t i = 0; i < steps.size(); ++i) {
    if (!steps[i].isWritten()) continue;
    const std::string target = pathOf(files_[steps[i].file].name);
    if (KRResult<void> put = staging.put(i, steps[i].content.bytes(), target); !put) return put;
  }
  if (KRResult<void> flushed = staging.flush(); !flushed) return flushed;
  KRResult<KRUndoNote> note = recordUndo(steps);
  if (!note) return note.error();
  // After the record, which would copy a file that has several names.
  for (size_t i = 0; i < steps.size(); ++i) {
    if (steps[i].wasThere()) staging.keep(i, pathOf(files_[steps[i].file].name));
  }
  for (size_t i = 0; i < steps.size(); ++i) {
    if (KRResult<void> done = finish(steps[i], staging.at(i)); !done)
      return takeBack(steps, i, staging, *note, done.error());
  }
  if (KRResult<void> flushed = KRFile::flushFolder(path_); !flushed)
    return takeBack(steps, steps.size(), staging, *note, flushed.error());
  for (Step& step : steps) step.edition.markDone();
  note->keep();
  return {};
}

KRResult<void> KRVCardFolderStore::finish(const Step& step, const std::string& staged) {
  File& file = files_[step.file];
  const std::string path = pathOf(file.name);
  if (step.isRemoved()) {
    if (KRResult<void> removed = KRFile::remove(text(path)); !removed) return removed;
    file.groups.clear();
    file.mark = 0;
    return {};
  }
  if (!step.isWritten()) return {};
  // A link stays a link, also one that leads to another disk.
  std::error_code failed;
  const fs::path target = fs::weakly_canonical(path, failed);
  if (failed) return KRFile::systemError(failed.value(), "write", text(path));
  if (KRResult<void> moved = KRFile::move(text(staged), text(target.string())); !moved) return moved;
  file.mark = krContentMark(step.content.bytes());
  file.groups = krGroupsOf(step.content);
  return {};
}

KRResult<void> KRVCardFolderStore::takeBack(const Step& step, size_t index, const KRVCardStaging& staging) {
  if (!step.isRemoved() && !step.isWritten()) return {};
  File& file = files_[step.file];
  const std::string path = pathOf(file.name);
  if (!step.wasThere()) {
    if (KRResult<void> removed = KRFile::remove(text(path)); !removed) return removed;
    file.groups.clear();
    file.mark = 0;
    return {};
  }
  std::error_code failed;
  const fs::path target = fs::weakly_canonical(path, failed);
  KRResult<void> back = staging.putBack(index, failed ? path : target.string());
  if (!back) back = KRFile::write(text(path), step.before.bytes());
  if (!back) return back;
  file.mark = krContentMark(step.before.bytes());
  file.groups = krGroupsOf(step.before);
  return {};
}

KRError KRVCardFolderStore::takeBack(std::vector<Step>& steps, size_t done, const KRVCardStaging& staging,
                                     KRUndoNote& note, const KRError& cause) {
  size_t left = 0;
  for (size_t i = done; i-- > 0;) {
    if (takeBack(steps[i], i, staging)) continue;
    steps[i].edition.markDone();
    ++left;
  }
  static_cast<void>(KRFile::flushFolder(path_));
  if (left == 0) {
    note.drop();
    return cause;
  }
  note.keep();
  return {cause.code, cause.sentence + "; " + std::to_string(left) + " of the " + std::to_string(done) +
                          " files that were written before could not be put back"};
}
