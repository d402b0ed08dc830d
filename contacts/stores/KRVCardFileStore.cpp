#include "contacts/stores/KRVCardFileStore.h"

#include <string>

#include "contacts/stores/KRVCardEdition.h"
#include "contacts/stores/KRVCardGroupEdition.h"
#include "contacts/stores/KRVCardGroups.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "platform/KRFileWriter.h"

KRError KRVCardFileStore::error(const KRError& cause) const {
  return {cause.code, std::string(path_.view()) + ": " + cause.sentence};
}

KRResult<size_t> KRVCardFileStore::count() {
  const KRResult<KRVCardFile> file = KRVCardFile::open(path_);
  if (!file) return file.error();
  return file->contactCount();
}

KRResult<KRStoreContent> KRVCardFileStore::read() {
  const KRResult<KRVCardFile> file = KRVCardFile::open(path_);
  if (!file) return file.error();
  if (krIsNoCardFile(*file)) return error({KRErrorCode::InvalidArgument, "there are no vCards in it"});
  KRStoreContent content;
  content.persons.reserve(file->contactCount());
  krAppendContacts(*file, {}, content.persons);
  KRVCardGroups groups;
  groups.read(*file);
  content.groups = groups.withMembers(content.persons);
  mark_ = krContentMark(file->bytes());
  return content;
}

KRResult<KRVCardFile> KRVCardFileStore::unchanged() const {
  KRResult<KRBuffer> bytes = KRFile::read(path_);
  if (!bytes && bytes.error().code != KRErrorCode::NotFound) return bytes.error();
  if (!bytes) return error({KRErrorCode::Changed, "it was removed by another program since reading"});
  if (krContentMark(bytes->view()) != mark_)
    return error({KRErrorCode::Changed, "it was changed by another program since reading"});
  return KRVCardFile::read(std::string(bytes->view()));
}

bool KRVCardFileStore::isThere(std::string_view bytes) const {
  const KRResult<KRBuffer> content = KRFile::read(path_);
  return content && content->view() == bytes;
}

KRResult<KRVCardFile> KRVCardFileStore::withGroups(const KRVCardFile& file, const KRStoreChanges& changes) {
  KRVCardGroupEdition edition(changes);
  const std::vector<KRVCardGroup> groups = krGroupsOf(file);
  edition.consider(groups);
  KRVCardFile::Changes wanted = edition.next(groups).in(file);
  wanted.newGroups = edition.added();
  return file.with(wanted);
}

KRResult<void> KRVCardFileStore::write(KRStoreChanges& changes) {
  // Held until the new file stands: two programs that both find it unchanged would lose what one of them wrote.
  const KRResult<KRFileLock> lock = KRFileLock::hold(path_);
  if (!lock && lock.error().code != KRErrorCode::NotFound) return lock.error();
  KRFileWriter::removeLeftovers(path_);
  const KRResult<KRVCardFile> file = unchanged();
  if (!file) return file.error();
  const auto UIDs = krNameMembers(changes);
  KRVCardEdition edition;
  for (KRStoreChanges::Changed& each : changes.changed) edition.change(each.index, each);
  for (KRStoreChanges::Removed& each : changes.removed) edition.remove(each.index, each);
  for (KRStoreChanges::Added& each : changes.added) edition.add(each);
  KRResult<KRVCardFile> edited = edition.of(*file, changes.stored, UIDs);
  if (edited && changes.groups != nullptr) edited = withGroups(*edited, changes);
  if (!edited) return error(edited.error());
  KRResult<void> written;
  if (edited->bytes() != file->bytes()) {
    if (KRResult<void> may = KRFileWriter::mayReplace(path_); !may) return may;
    KRResult<KRUndoNote> note = KRUndoRecorder::recordFile(path_, edited->bytes());
    if (!note) return note.error();
    written = KRFile::write(path_, edited->bytes());
    // The new file may stand although the system did not promise to keep it.
    if (!written && !isThere(edited->bytes())) return written;
    note->keep();
  }
  mark_ = krContentMark(edited->bytes());
  edition.markDone();
  return written;
}
