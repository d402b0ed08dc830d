#include "contacts/KRTrashAddressBook.h"

#include <string>
#include <unordered_set>
#include <utility>

#include "contacts/KRAddressBookManager.h"
#include "contacts/KRContactsArchive.h"
#include "contacts/KRTrashMerge.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "contacts/vcard/KRVCardReader.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "platform/KRFileWriter.h"
#include "platform/KRHostInfo.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"
#include "platform/KRLocations.h"
#include "platform/KRResources.h"

namespace {

const KRTempPerson* trashed(const IKRPerson* person) {
  return dynamic_cast<const KRTempPerson*>(person);
}

/// The card that a person was read from, or nothing.
KRRef<KRData> cardOf(const IKRPerson& person) {
  if (const auto* record = dynamic_cast<const ABPerson*>(&person)) {
    return record->card().empty() ? KRRef<KRData>() : krMake<KRData>(record->card());
  }
  const KRTempPerson* temporary = trashed(&person);
  return temporary != nullptr ? temporary->card() : KRRef<KRData>();
}

/// The identifiers of the groups of a system record that is in some.
std::optional<KRStringList> groupsOf(const IKRPerson& person) {
  const auto* record = dynamic_cast<const ABPerson*>(&person);
  if (record == nullptr) return std::nullopt;
  KRStringList IDs;
  for (const KRRef<KRGroup>& group : record->parentGroups()) IDs.push_back(group->uniqueId());
  if (IDs.empty()) return std::nullopt;
  return IDs;
}

using Trashed = std::vector<KRRef<KRTempPerson>>;

/// The persons in the file; `Damaged` when it is no trash.
KRResult<Trashed> contentOf(const KRString& path) {
  const KRResult<KRBuffer> content = KRFile::read(path);
  if (!content) return content.error();
  auto persons = KRTrashAddressBook::personsIn(content->view());
  if (!persons) return KRError{KRErrorCode::Damaged, "the trash is damaged: " + std::string(path.view())};
  return *std::move(persons);
}

KRText folderOf(const KRString& path) {
  const size_t slash = path.view().rfind('/');
  if (slash == std::string_view::npos) return ".";
  return path.view().substr(0, slash == 0 ? 1 : slash);
}

}  // namespace

KRTrashAddressBook* KRTrashAddressBook::ShareTrashAddressBook() {
  static auto* const trash = krMake<KRTrashAddressBook>().detach();
  return trash;
}

// Places.

KRString KRTrashAddressBook::GetUserSupportSupportDirectory() {
  return KRLocations::applicationSupportFolder();
}

KRString KRTrashAddressBook::AppSupportDirectory() {
  return KRHostInfo::dataFolder();
}

bool KRTrashAddressBook::CheckDirectory(const KRString& path) {
  if (path.isNothing()) return false;
  return KRFile::kind(path) != KRFile::Kind::Missing || KRFile::createFolders(path, true).isOk();
}

KRString KRTrashAddressBook::savePath() const {
  const KRString folder = AppSupportDirectory();
  if (folder.isNothing()) return {};
  // Where the folder cannot be made, writing the file tells why.
  CheckDirectory(folder);
  return krConcat({folder, "/", KRTrashFileName});
}

// What it says of itself.

const std::vector<const KRProperty*>& KRTrashAddressBook::CommonProperty() {
  static const auto* const shown = [] {
    auto* properties = new std::vector<const KRProperty*>;
    for (const KRString& name : {KRProPertyThumbnail, KRProPertyName, KRProPertyTags, KRProPertyPhone, KRProPertyEmail,
                                 KRProPertyCompany, KRProPertyBirthday, KRProPertyAddress, KRProPertyNote}) {
      properties->push_back(KRProperty::propertyWithName(name));
    }
    return properties;
  }();
  return *shown;
}

KRString KRTrashAddressBook::kind() const {
  return "trash"_kr;
}

KRRef<KRData> KRTrashAddressBook::logo1() const {
  return loadXCAImageWithName("pic_trash_logo1"_kr, "png"_kr);
}

KRRef<KRData> KRTrashAddressBook::logo2() const {
  return loadXCAImageWithName("pic_trash_logo2"_kr, "png"_kr);
}

KRRef<KRData> KRTrashAddressBook::loadXCAImageWithName(const KRString& name, const KRString&) const {
  return KRResources::imageNamed(name);
}

KRRef<KRData> KRTrashAddressBook::loadImageWithName(const KRString& name, const KRString& type) const {
  const std::string_view bytes = KRResources::file(krConcat({"images/", name, ".", type}));
  return bytes.data() == nullptr ? KRRef<KRData>() : krMake<KRData>(bytes);
}

// The file.

KRTrashAddressBook::KRTrashAddressBook() : KRAddressBook(KRTrashAddressBookID, "Trash"_kr), reading_(read()) {}

std::optional<std::vector<KRRef<KRTempPerson>>> KRTrashAddressBook::personsIn(std::string_view archive) {
  const std::optional<KRValue> root = KRKeyedUnarchiver::unarchive(archive, krContactsArchiveClasses());
  const auto* list = root ? root->as<KRValueList>() : nullptr;
  if (list == nullptr) return std::nullopt;
  std::vector<KRRef<KRTempPerson>> persons;
  persons.reserve(list->values().size());
  for (const KRValue& value : list->values()) {
    auto* person = value.as<KRTempPerson>();
    if (person == nullptr) return std::nullopt;
    persons.emplace_back(person);
  }
  return persons;
}

KRResult<void> KRTrashAddressBook::read() {
  const KRString path = savePath();
  // Before the content: a file that is replaced meanwhile then counts as another.
  stamp_ = KRFileStamp::of(path);
  const KRResult<Trashed> persons = contentOf(path);
  if (!persons) {
    if (persons.error().code == KRErrorCode::NotFound) return {};
    return persons.error();
  }
  inFile_.assign(persons->begin(), persons->end());
  persons_.reserve(inFile_.size());
  for (const auto& person : inFile_) persons_.append(person);
  return {};
}

KRResult<void> KRTrashAddressBook::load() {
  return reading_;
}

KRResult<void> KRTrashAddressBook::merge(const KRString& path, Persons& persons) {
  const KRResult<Trashed> theirs = contentOf(path);
  if (theirs) {
    theirs_ = *theirs;
    persons = KRTrashMerge::merged(inFile_, persons, *theirs);
    return {};
  }
  switch (theirs.error().code) {
    case KRErrorCode::NotFound:
      return {};
    case KRErrorCode::Damaged:
    case KRErrorCode::IsFolder: {
      const KRResult<KRString> aside = KRFile::setAside(path, "damaged");
      return aside ? KRResult<void>() : aside.error();
    }
    default:
      return KRError{theirs.error().code,
                     theirs.error().sentence + "; the trash is left as it is, and nothing is put into it"};
  }
}

KRResult<void> KRTrashAddressBook::put(const KRString& path, std::string_view bytes, Persons persons) {
  KRFile::WriteOptions options;
  options.isPrivate = true;
  KRResult<KRUndoNote> note = KRUndoRecorder::recordFile(path, bytes, folderOf(path));
  if (!note) return note.error();
  if (KRResult<void> written = KRFile::write(path, bytes, options); !written) return written;
  note->keep();
  stamp_ = KRFileStamp::of(path);
  inFile_ = std::move(persons);
  return {};
}

KRResult<size_t> KRTrashAddressBook::write(Persons persons) {
  const KRString path = savePath();
  if (path.isNothing()) return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep the trash in"};
  // Held until the new file stands, so that nothing is lost of what another program writes meanwhile. Without a folder
  // there is nothing to hold, and writing tells of it.
  const KRResult<KRFileLock> lock = KRFileLock::hold(folderOf(path));
  KRFileWriter::removeLeftovers(path);
  const std::optional<KRFileStamp> now = KRFileStamp::of(path);
  size_t before = now ? inFile_.size() : 0;
  if (now && (!reading_ || now != stamp_)) {
    if (KRResult<void> merged = merge(path, persons); !merged) return merged.error();
    before = theirs_.size();
  }
  auto list = krMake<KRValueList>();
  list->values().reserve(persons.size());
  for (const auto& person : persons) list->values().emplace_back(person);
  const KRBuffer archive = KRKeyedArchiver::archive(list);
  if (KRResult<void> done = put(path, archive, std::move(persons)); !done) return done.error();
  isFileNew_ = !now;
  reading_ = {};
  return before;
}

KRResult<void> KRTrashAddressBook::putBack(Persons persons) {
  const KRString path = savePath();
  const KRResult<KRFileLock> lock = KRFileLock::hold(folderOf(path));
  if (KRFileStamp::of(path) != stamp_) return KRError{KRErrorCode::Changed, "the trash was changed meanwhile"};
  const KRResult<KRBuffer> bytes = KRUndoRecorder::contentBefore(path, writesBefore_);
  if (!bytes) return bytes.error();
  return put(path, bytes->view(), std::move(persons));
}

KRResult<void> KRTrashAddressBook::removeFile() {
  const KRString path = savePath();
  const KRResult<KRFileLock> lock = KRFileLock::hold(folderOf(path));
  if (KRFileStamp::of(path) != stamp_) return KRError{KRErrorCode::Changed, "the trash was changed meanwhile"};
  KRResult<KRUndoNote> note = KRUndoRecorder::recordRemoval(path, folderOf(path));
  if (!note) return note.error();
  if (KRResult<void> removed = KRFile::remove(path); !removed) return removed;
  note->keep();
  stamp_ = {};
  inFile_.clear();
  return {};
}

KRResult<void> KRTrashAddressBook::saveNow() {
  const Persons mine = persons_.copy();
  std::unordered_set<const IKRPerson*> before;
  for (const auto& person : inFile_) before.insert(person.get());
  theirs_.clear();
  writesBefore_ = KRUndoRecorder::count();
  const KRResult<size_t> written = write(mine);
  if (!written) return written.error();
  countBefore_ = *written;
  lastAdded_.clear();
  for (const auto& person : mine) {
    if (before.count(person.get()) == 0) lastAdded_.push_back(person);
  }
  // What another process put there is that one's too: its book may have lost it.
  lastAdded_ = KRTrashMerge::merged({}, lastAdded_, theirs_);
  lastAdded_.erase(lastAdded_.begin(), lastAdded_.begin() + static_cast<std::ptrdiff_t>(theirs_.size()));
  theirs_.clear();
  if (inFile_ == mine) return {};
  persons_.removeAll();
  for (const auto& person : inFile_) persons_.append(person);
  return {};
}

bool KRTrashAddressBook::takeBack(KRAddressBook& book) {
  const KRStringList IDs = book.unsavedIDs();
  const std::unordered_set<KRString> kept(IDs.begin(), IDs.end());
  const KRString from = book.ID();
  std::unordered_set<const IKRPerson*> copies;
  for (const auto& person : lastAdded_) {
    const KRTempPerson* each = trashed(person.get());
    if (each != nullptr && each->fromID() == from && kept.count(each->ID()) != 0) copies.insert(each);
  }
  if (copies.empty() || KRFileStamp::of(savePath()) != stamp_) return false;
  Persons rest;
  for (const auto& person : inFile_) {
    if (copies.count(person.get()) == 0) rest.push_back(person);
  }
  // Without what is taken out everything is as it was before, also when there was no file.
  if (rest.empty() && isFileNew_) return removeFile().isOk();
  // Another form of the same persons would be a change that nobody made.
  if (rest.size() == countBefore_ && putBack(rest)) return true;
  return write(std::move(rest)).isOk();
}

// Persons.

KRRef<IKRPerson> KRTrashAddressBook::newPerson() {
  auto person = krMake<KRTempPerson>(KRPersonIDs::newIdentifier());
  persons_.append(person.get());
  return person;
}

KRRef<KRTempPerson> KRTrashAddressBook::trashPersonWithPerson(const IKRPerson* person) const {
  if (person == nullptr) return {};
  auto made = krMake<KRTempPerson>(person->ID());
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    made->setValue(person->valueByProperty(property), property);
  }
  made->setFromID(person->addressBookID());
  made->setGroupIDs(groupsOf(*person));
  made->setCard(cardOf(*person));
  return made;
}

void KRTrashAddressBook::addPerson(IKRPerson* person) {
  if (person != nullptr) persons_.append(trashPersonWithPerson(person).get());
}

void KRTrashAddressBook::addPersons(const std::vector<KRRef<IKRPerson>>& persons) {
  for (const KRRef<IKRPerson>& person : persons) addPerson(person.get());
}

void KRTrashAddressBook::addPersons(const KRPersonArray& persons) {
  for (IKRPerson* person : persons) addPerson(person);
}

// Putting back.

KRAddressBook* KRTrashAddressBook::addressBookofPersonFrom(const IKRPerson* person) const {
  const KRTempPerson* from = trashed(person);
  return from != nullptr ? KRAddressBookManager::ShareAddressBookManager()->addressBookByID(from->fromID()) : nullptr;
}

std::optional<KRStringList> KRTrashAddressBook::groupIDs(const IKRPerson* person) const {
  const KRTempPerson* from = trashed(person);
  return from != nullptr ? from->groupIDs() : std::nullopt;
}

KRRef<ABPerson> KRTrashAddressBook::restoredPerson(const IKRPerson* person) {
  const KRTempPerson* from = trashed(person);
  if (from == nullptr) return {};
  KRRef<ABPerson> restored;
  if (const KRRef<KRData> card = from->card()) restored = KRVCardReader::readOne(card->bytes());
  if (!restored) restored = krMake<ABPerson>();
  if (!from->ID().isEmpty() && !(restored->baseID() == from->ID())) restored->setID(from->ID());
  // What the card says too is left to the card, so that its lines stay as they were written.
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> value = from->valueByProperty(property);
    if (!krEqualObjects(value.get(), restored->valueByProperty(property).get())) restored->setValue(value, property);
  }
  return restored;
}
