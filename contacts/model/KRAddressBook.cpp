#include "contacts/model/KRAddressBook.h"

#include <unordered_set>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRSaveScope.h"

namespace {

/// The person as a record of this library, which knows its book; or null.
ABPerson* record(IKRPerson* person) {
  return dynamic_cast<ABPerson*>(person);
}

}  // namespace

KRAddressBook::KRAddressBook(KRString ID, KRString name) : ID_(std::move(ID)), name_(std::move(name)) {}

KRAddressBook::~KRAddressBook() {
  for (IKRPerson& person : persons_) {
    ABPerson* own = record(&person);
    if (own != nullptr && own->addressBook() == this) own->setAddressBook(nullptr);
  }
}

KRString KRAddressBook::ID() const {
  return ID_;
}

KRString KRAddressBook::name() const {
  return name_;
}

KRRef<KRData> KRAddressBook::thumbnail() const {
  return {};
}

KRRef<KRData> KRAddressBook::logo1() const {
  return {};
}

KRRef<KRData> KRAddressBook::logo2() const {
  return {};
}

bool KRAddressBook::isInternetAdressBook() const {
  return false;
}

KRString KRAddressBook::kind() const {
  return "memory"_kr;
}

KRString KRAddressBook::place() const {
  return {};
}

KRResult<void> KRAddressBook::load() {
  return {};
}

KRPersonList& KRAddressBook::allPersons() {
  return persons_;
}

size_t KRAddressBook::allPersonsCount() {
  return allPersons().count();
}

std::vector<KRRef<KRGroup>> KRAddressBook::rootGroups() {
  return {};
}

size_t KRAddressBook::rootGroupsCount() {
  return rootGroups().size();
}

std::vector<const KRProperty*> KRAddressBook::supportProperty() {
  return KRProperty::StandardPropertyArray();
}

std::vector<const KRProperty*> KRAddressBook::commonProperty() {
  std::vector<const KRProperty*> shown;
  for (const KROrdinal ordinal :
       {KROrdinal::Thumbnail, KROrdinal::Name, KROrdinal::Tags, KROrdinal::Phone, KROrdinal::Email, KROrdinal::Company,
        KROrdinal::Birthday, KROrdinal::Address, KROrdinal::Note}) {
    shown.push_back(KRProperty::propertyWithOrdinal(ordinal));
  }
  return shown;
}

KRTagManager* KRAddressBook::tagManager() {
  return KRTagManager::tagManagerWithID(ID());
}

std::vector<KRRef<IKRPerson>> KRAddressBook::personsForIDs(const KRStringList& IDs) {
  std::vector<KRRef<IKRPerson>> found;
  const std::unordered_set<KRString> wanted(IDs.begin(), IDs.end());
  if (wanted.empty()) return found;
  for (IKRPerson& person : allPersons()) {
    if (wanted.count(person.ID()) != 0) found.emplace_back(&person);
  }
  return found;
}

KRRef<IKRPerson> KRAddressBook::newPerson() {
  auto person = krMake<ABPerson>();
  person->setAddressBook(this);
  persons_.append(person.get());
  return person;
}

void KRAddressBook::addPerson(IKRPerson* person) {
  if (person == nullptr) return;
  // A record tells itself whether it is here, so that reading a book in builds no index of its persons.
  ABPerson* own = record(person);
  KRAddressBook* holder = own != nullptr ? own->addressBook() : nullptr;
  if (holder == this) return;
  const bool mayBeHere = own == nullptr || hasLostPersons_;
  if (!mayBeHere || !persons_.contains(person)) persons_.append(person);
  if (holder != nullptr) holder->hasLostPersons_ = true;
  if (own == nullptr) return;
  own->setAddressBook(this);
  // One that was here before comes back with its identifier.
  if (own->isIDAssigned() && !IDs_.reclaim(*own)) own->setIDSuffix(0);
}

void KRAddressBook::addPersons(const std::vector<KRRef<IKRPerson>>& persons) {
  for (const auto& person : persons) addPerson(person.get());
}

void KRAddressBook::removePersons(const KRPersonArray& persons) {
  for (IKRPerson* person : persons) {
    ABPerson* own = record(person);
    const bool isMine = own != nullptr && own->addressBook() == this;
    // The person keeps the identifier that it has here, also when nobody asked for it before.
    if (isMine && !own->isIDAssigned()) assignIDs();
    if (!persons_.remove(person) || !isMine) continue;
    own->setAddressBook(nullptr);
    IDs_.release(*own);
  }
}

void KRAddressBook::save() {
  // A failure is not told here; who wants to know calls `saveNow` or commits a scope.
  if (!KRSaveScope::gather(this)) static_cast<void>(saveNow());
}

KRResult<void> KRAddressBook::saveNow() {
  return {};
}

bool KRAddressBook::isSavedFirst() const {
  return false;
}

KRStringList KRAddressBook::unsavedIDs() {
  return {};
}

bool KRAddressBook::takeBack(KRAddressBook&) {
  return false;
}

void KRAddressBook::sync() {}

void KRAddressBook::update() {}
