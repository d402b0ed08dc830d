#include "import/KRBookImport.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "contacts/model/KRPersonIDs.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "detectors/KRPersonKey.h"
#include "platform/KRFile.h"
#include "platform/KRFileReader.h"
#include "platform/KRHash.h"
#include "platform/KRTextDecoding.h"

namespace {

constexpr size_t kPiece = size_t{1} << 20U;

uint64_t hashOf(std::string_view text) {
  return krHashBytes(text.data(), text.size());
}

bool isWide(KRTextEncoding encoding) {
  return encoding != KRTextEncoding::Utf8 && encoding != KRTextEncoding::Other;
}

/// The bytes of a card in a file that was read piece by piece.
std::string bytesAt(std::ifstream& file, const KRVCardPlace& place) {
  std::string bytes(place.size, '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(place.offset));
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return bytes;
}

/// The text of a file that the places count in: its bytes, or what it says as UTF-8.
std::string textOf(std::string_view bytes, KRTextEncoding encoding) {
  if (!isWide(encoding)) return std::string(bytes);
  auto text = krDecodeText(bytes, KRDecodeOptions::westernFallback());
  return text ? std::move(text->utf8) : std::string();
}

std::string_view part(std::string_view text, const KRVCardPlace& place) {
  return place.offset < text.size() ? text.substr(place.offset, place.size) : std::string_view();
}

bool isBlank(std::string_view bytes) {
  return bytes.find_first_not_of(std::string_view(" \t\r\n\xef\xbb\xbf\0", 8)) == std::string_view::npos;
}

}  // namespace

KRBookImport::KRBookImport(KRRef<KRStoredBook> book, Options options)
    : book_(std::move(book)), options_(std::move(options)) {
  const size_t count = book_->allPersonsCount();
  byContent_.reserve(count);
  byUID_.reserve(count);
  for (IKRPerson& person : book_->allPersons()) {
    if (auto* record = dynamic_cast<ABPerson*>(&person)) enter(*record);
  }
}

// What is there already

const std::string& KRBookImport::contentKey(const IKRPerson& person, std::string& to) {
  to.clear();
  hold_.empty();
  std::string digest;
  if (const KRRef<KRData> image = person.imageData()) {
    digest = std::to_string(hashOf(image->bytes())) + "," + std::to_string(image->bytes().size());
  }
  krAppendPersonKey(to, person, digest.empty() ? KRText() : KRText(std::string_view(digest)), hold_);
  return to;
}

void KRBookImport::enter(ABPerson& person) {
  byContent_.emplace(hashOf(contentKey(person, key_)), &person);
  byUID_.emplace(hashOf(krPlainUID(person.baseID()).view()), &person);
}

ABPerson* KRBookImport::equalTo(const ABPerson& person, uint64_t& content) {
  content = hashOf(contentKey(person, key_));
  const auto found = byContent_.find(content);
  // The one that is found may have been updated since, or have another content of the same hash.
  return found != byContent_.end() && contentKey(*found->second, otherKey_) == key_ ? found->second : nullptr;
}

ABPerson* KRBookImport::holderOf(KRText UID) const {
  const auto found = byUID_.find(hashOf(krPlainUID(UID).view()));
  return found != byUID_.end() ? found->second : nullptr;
}

// Reading

template <class Read>
KRResult<void> KRBookImport::read(KRString file, Read feed) {
  bool hasText = false;
  file_ = std::move(file);
  const size_t before = counts_.all() + groups_.size();
  KRVCardReader reader([this](const KRRef<ABPerson>& person) { take(person); },
                       [this](const KRVCardNote& note) {
                         if (!note.isCardLost) ++counts_.notes;
                         if (options_.notes) options_.notes(note);
                       });
  reader.setPlaceSink([this](const KRVCardPlace& place) {
    place_ = place;
    if (place.kind == KRVCardPlace::Kind::Lost) lost_.push_back(place);
  });
  reader.setGroups([this](const KRRef<ABPerson>& group) {
    groups_.push_back(
        {KRVCardGroup::read(group->card()), {file_, place_.line, place_.number, {}, std::string(group->card())}});
  });
  KRResult<void> done = feed(reader, hasText);
  flushRejects();
  if (!done) return done;
  if (hasText && counts_.all() + groups_.size() == before) {
    return KRError{KRErrorCode::InvalidArgument, "there is no contact in this file"};
  }
  return {};
}

KRResult<void> KRBookImport::addFile(KRText path) {
  KRResult<KRFileReader> opened = KRFileReader::open(path);
  if (!opened) return opened.error();
  return read(KRString(path), [&](KRVCardReader& reader, bool& isText) -> KRResult<void> {
    for (;;) {
      char* const piece = reader.room(kPiece).data();
      const KRResult<size_t> size = opened->read(piece, kPiece);
      if (!size) return KRError{size.error().code, std::string(path.view()) + ": " + size.error().sentence};
      if (*size == 0) break;
      isText = isText || !isBlank({piece, *size});
      reader.feedRoom(*size);
      if (options_.progress) options_.progress(*size);
    }
    reader.finish();
    if (lost_.empty()) return {};
    // Lost cards are rare: their bytes are fetched again rather than kept while the file goes by.
    if (isWide(reader.encoding())) {
      const KRResult<KRBuffer> all = KRFile::read(path);
      const std::string text = all ? textOf(all->view(), reader.encoding()) : std::string();
      for (const KRVCardPlace& place : lost_) takeLost(place, std::string(part(text, place)));
    } else {
      std::ifstream file(std::string(path.view()), std::ios::binary);
      for (const KRVCardPlace& place : lost_) takeLost(place, bytesAt(file, place));
    }
    return {};
  });
}

KRResult<void> KRBookImport::addStandardInput() {
  const KRResult<KRBuffer> bytes = KRFile::readStandardInput();
  if (!bytes) return bytes.error();
  return read("standard input"_kr, [&](KRVCardReader& reader, bool& isText) -> KRResult<void> {
    isText = !isBlank(bytes->view());
    reader.read(bytes->view());
    const std::string text = lost_.empty() ? std::string() : textOf(bytes->view(), reader.encoding());
    for (const KRVCardPlace& place : lost_) takeLost(place, std::string(part(text, place)));
    return {};
  });
}

void KRBookImport::addLoaded(KRText file, const Loading& load) {
  file_ = KRString(file);
  load([this](const IKRPerson& person) { addPerson(person); },
       [this](const KRPersonLoadNote& note) {
         ++(note.isPersonLost ? counts_.lost : counts_.notes);
         if (!note.isPersonLost) return;
         rejects_.push_back({file_, note.line, note.card, note.sentence, std::string(note.record.view())});
       });
  flushRejects();
}

void KRBookImport::takeLost(const KRVCardPlace& place, std::string bytes) {
  const KRVCardNote note{place.reason, place.line, place.number, true};
  rejects_.push_back({file_, place.line, place.number, KRString(note.sentence()), std::move(bytes)});
  ++counts_.lost;
}

void KRBookImport::flushRejects() {
  lost_.clear();
  std::stable_sort(rejects_.begin(), rejects_.end(), [](const Reject& a, const Reject& b) { return a.line < b.line; });
  for (Reject& each : rejects_) {
    if (options_.rejects) options_.rejects(std::move(each));
  }
  rejects_.clear();
}

// Contacts

void KRBookImport::reject(const ABPerson& person, KRString reason) {
  rejects_.push_back({file_, place_.line, place_.number, std::move(reason), std::string(person.card())});
}

void KRBookImport::take(const KRRef<ABPerson>& person) {
  uint64_t content = 0;
  ABPerson* equal = equalTo(*person, content);
  if (equal != nullptr && !options_.addsEqual) {
    ++counts_.equal;
    // Groups may name it by the identifier that it has in the file.
    byUID_.emplace(hashOf(krPlainUID(person->baseID()).view()), equal);
    return;
  }
  ABPerson* holder = holderOf(person->baseID());
  if (holder != nullptr && equal == nullptr) {
    takeConflict(person, *holder);
    return;
  }
  if (holder != nullptr) person->setID(KRPersonIDs::newIdentifier());
  add(person, content);
}

void KRBookImport::addPerson(const IKRPerson& person) {
  // As it will be read again from the book, so that the same file brings nothing new the next time.
  card_.clear();
  KRVCardWriter(KRVCardVersion::V40).write(person, card_, KRPersonIDs::newIdentifier());
  const KRRef<ABPerson> record = KRVCardReader::readOne(card_);
  if (!record) {
    rejects_.push_back({file_, 0, 0, "no card can hold this contact"_kr});
    ++counts_.lost;
    return;
  }
  uint64_t content = 0;
  if (equalTo(*record, content) != nullptr && !options_.addsEqual) {
    ++counts_.equal;
  } else {
    add(record, content);
  }
}

void KRBookImport::takeConflict(const KRRef<ABPerson>& person, ABPerson& existing) {
  switch (options_.ask ? options_.ask(*person, existing) : options_.existing) {
    case Choice::Skip:
      ++counts_.conflicts;
      reject(*person, krConcat({placeOf(existing), " has a contact of the same UID with other content"}));
      return;
    case Choice::Update:
      update(existing, *person);
      ++counts_.updated;
      return;
    case Choice::Both:
      break;
  }
  person->setID(KRPersonIDs::newIdentifier());
  add(person, hashOf(contentKey(*person, key_)));
}

KRString KRBookImport::placeOf(const ABPerson& existing) const {
  const auto found = fileOf_.find(&existing);
  if (found == fileOf_.end()) return "the book"_kr;
  return found->second == file_ ? "the same file"_kr : found->second;
}

void KRBookImport::add(const KRRef<ABPerson>& person, uint64_t content) {
  book_->addPerson(person.get());
  fileOf_.emplace(person.get(), file_);
  byContent_.emplace(content, person.get());
  byUID_.emplace(hashOf(krPlainUID(person->baseID()).view()), person.get());
  ++counts_.added;
}

void KRBookImport::update(ABPerson& existing, const ABPerson& person) {
  if (options_.former) options_.former->addPerson(&existing);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> value = person.valueByPropertyName(property->name());
    const KRRef<KRStoredValue> present = existing.valueByPropertyName(property->name());
    if (!krEqualObjects(value.get(), present.get())) existing.setValue(value, property->name());
  }
  byContent_.insert_or_assign(hashOf(contentKey(existing, key_)), &existing);
}

// Groups

void KRBookImport::addGroups() {
  for (const GroupCard& card : groups_) addGroup(card);
  groups_.clear();
}

KRRef<KRGroup> KRBookImport::groupFor(const KRVCardGroup& group) {
  if (!group.UID.isEmpty()) return book_->groupWithID(group.UID);
  for (const KRRef<KRGroup>& each : book_->rootGroups()) {
    if (sameText(each->name(), group.name)) return each;
  }
  return {};
}

void KRBookImport::addGroup(const GroupCard& card) {
  if (!book_->store().canChangeGroups()) {
    ++counts_.groupsRejected;
    Reject record = card.record;
    record.reason = "this book holds no groups"_kr;
    if (options_.rejects) options_.rejects(std::move(record));
    return;
  }
  KRRef<KRGroup> group = groupFor(card.group);
  ++(group ? counts_.groupsKnown : counts_.groupsAdded);
  if (!group) group = book_->addGroup(card.group.name.isNothing() ? ""_kr : card.group.name, card.group.UID);
  for (const KRString& member : card.group.members) {
    ABPerson* person = holderOf(member);
    if (person == nullptr) {
      ++counts_.missingMembers;
      continue;
    }
    std::vector<KRRef<KRGroup>> groups = person->parentGroups();
    if (std::find(groups.begin(), groups.end(), group) != groups.end()) continue;
    groups.push_back(group);
    book_->setGroups(*person, std::move(groups));
    ++counts_.memberships;
  }
}
