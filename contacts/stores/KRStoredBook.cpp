#include "contacts/stores/KRStoredBook.h"

#include <algorithm>
#include <unordered_map>

#include "contacts/model/KRPersonIDs.h"

KRStoredBook::KRStoredBook(std::unique_ptr<KRBookStore> store)
    : KRAddressBook(store->ID(), store->name()), store_(std::move(store)) {}

KRResult<void> KRStoredBook::load() {
  if (isRead()) return readError_;
  const std::lock_guard lock(reading_);
  if (isRead()) return readError_;
  KRResult<KRStoreContent> content = store_->read();
  if (content) {
    take(*std::move(content));
  } else {
    readError_ = content.error();
  }
  isRead_.store(true, std::memory_order_release);
  return readError_;
}

KRResult<void> KRStoredBook::readAgain() {
  const std::lock_guard lock(reading_);
  KRResult<KRStoreContent> content = store_->read();
  if (!content) return content.error();
  dropPersons();
  take(*std::move(content));
  readError_ = {};
  isRead_.store(true, std::memory_order_release);
  return {};
}

void KRStoredBook::take(KRStoreContent content) {
  stored_ = std::move(content.persons);
  persons_.reserve(stored_.size());
  for (const KRStoredPerson& each : stored_) {
    each.person->setAddressBook(this);
    persons_.append(each.person.get());
  }
  std::unordered_map<ABPerson*, std::vector<KRRef<KRGroup>>> groupsOf;
  for (const KRStoredGroup& each : content.groups) {
    groups_.push_back(each.group);
    for (const KRRef<ABPerson>& member : each.members) {
      auto& groups = groupsOf[member.get()];
      if (groups.empty() || !(groups.back() == each.group)) groups.push_back(each.group);
    }
  }
  for (auto& [person, groups] : groupsOf) person->setParentGroups(std::move(groups));
}

void KRStoredBook::dropPersons() {
  for (IKRPerson& person : persons_) {
    auto* own = dynamic_cast<ABPerson*>(&person);
    if (own != nullptr && own->addressBook() == this) own->setAddressBook(nullptr);
  }
  persons_.removeAll();
  stored_.clear();
  groups_.clear();
  areGroupsChanged_ = false;
}

KRPersonList& KRStoredBook::allPersons() {
  static_cast<void>(load());
  return persons_;
}

size_t KRStoredBook::allPersonsCount() {
  if (!isRead() && !store_->canCount()) static_cast<void>(load());
  if (isRead()) return persons_.count();
  const std::lock_guard lock(reading_);
  if (isRead()) return persons_.count();
  const KRResult<size_t> count = store_->count();
  return count ? *count : 0;
}

std::vector<KRRef<KRGroup>> KRStoredBook::rootGroups() {
  static_cast<void>(load());
  return groups_;
}

KRRef<IKRPerson> KRStoredBook::newPerson() {
  static_cast<void>(load());
  return KRAddressBook::newPerson();
}

KRRef<ABPerson> KRStoredBook::addCopy(const IKRPerson& person) {
  static_cast<void>(load());
  const auto* record = dynamic_cast<const ABPerson*>(&person);
  auto copy = record != nullptr ? krMake<ABPerson>(record->record()) : krMake<ABPerson>();
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (record != nullptr && !record->isChanged(property->ordinal())) continue;
    KRRef<KRStoredValue> value = person.valueByPropertyName(property->name());
    if (record != nullptr || value) copy->setValue(std::move(value), property->name());
  }
  // An identifier may stand nowhere but beside the card.
  const KRString ID = record != nullptr ? record->givenID() : person.ID();
  if (!ID.isEmpty()) copy->setID(ID);
  copy->setAddressBook(this);
  persons_.append(copy.get());
  return copy;
}

void KRStoredBook::addPerson(IKRPerson* person) {
  if (person == nullptr) return;
  static_cast<void>(load());
  auto* record = dynamic_cast<ABPerson*>(person);
  if (record != nullptr && (record->addressBook() == nullptr || record->addressBook() == this)) {
    KRAddressBook::addPerson(person);
  } else {
    addCopy(*person);
  }
}

void KRStoredBook::removePersons(const KRPersonArray& persons) {
  static_cast<void>(load());
  KRAddressBook::removePersons(persons);
}

// Groups

KRRef<KRGroup> KRStoredBook::groupWithID(KRText uniqueId) {
  static_cast<void>(load());
  for (const KRRef<KRGroup>& group : groups_) {
    if (sameText(group->uniqueId(), uniqueId)) return group;
  }
  return {};
}

KRRef<KRGroup> KRStoredBook::addGroup(KRString name, KRString uniqueId) {
  if (KRRef<KRGroup> present = groupWithID(uniqueId)) return present;
  if (!canChangeGroups()) return {};
  if (uniqueId.isEmpty()) uniqueId = KRPersonIDs::newIdentifier();
  auto group = krMake<KRGroup>(std::move(uniqueId), std::move(name));
  groups_.push_back(group);
  areGroupsChanged_ = true;
  return group;
}

void KRStoredBook::removeGroup(const KRGroup& group) {
  static_cast<void>(load());
  if (!canChangeGroups()) return;
  const auto place =
      std::find_if(groups_.begin(), groups_.end(), [&](const auto& each) { return each.get() == &group; });
  if (place == groups_.end()) return;
  for (IKRPerson& person : persons_) {
    auto* record = dynamic_cast<ABPerson*>(&person);
    if (record == nullptr) continue;
    auto groups = record->parentGroups();
    if (std::erase_if(groups, [&](const auto& each) { return each.get() == &group; }) != 0)
      record->setParentGroups(std::move(groups));
  }
  groups_.erase(place);
  areGroupsChanged_ = true;
}

void KRStoredBook::setGroups(ABPerson& person, std::vector<KRRef<KRGroup>> groups) {
  static_cast<void>(load());
  if (!canChangeGroups()) return;
  std::erase_if(groups,
                [&](const auto& group) { return std::find(groups_.begin(), groups_.end(), group) == groups_.end(); });
  person.setParentGroups(std::move(groups));
  areGroupsChanged_ = true;
}

std::vector<KRStoredGroup> KRStoredBook::gatherGroups() {
  std::vector<KRStoredGroup> gathered;
  std::unordered_map<const KRGroup*, size_t> places;
  for (const KRRef<KRGroup>& group : groups_) {
    places.emplace(group.get(), gathered.size());
    gathered.push_back({group, {}});
  }
  for (IKRPerson& person : persons_) {
    auto* record = dynamic_cast<ABPerson*>(&person);
    if (record == nullptr) continue;
    for (const KRRef<KRGroup>& group : record->parentGroups()) {
      const auto place = places.find(group.get());
      if (place != places.end()) gathered[place->second].members.emplace_back(record);
    }
  }
  return gathered;
}

// Saving

void KRStoredBook::findChanges(KRStoreChanges& changes) {
  // Persons keep the store's order and new ones stand behind them, so one walk over both lists is enough. A person that
  // was taken out and put back is a removal and an addition.
  size_t next = 0;
  for (IKRPerson& person : persons_) {
    auto* record = dynamic_cast<ABPerson*>(&person);
    if (record == nullptr) continue;
    while (next < stored_.size() && stored_[next].person.get() != record) changes.removed.push_back({next++});
    if (next == stored_.size()) {
      changes.added.push_back({KRRef<ABPerson>(record)});
    } else {
      if (record->isChanged()) changes.changed.push_back({next});
      ++next;
    }
  }
  while (next < stored_.size()) changes.removed.push_back({next++});
}

bool KRStoredBook::hasChanges() {
  if (!isRead()) return false;
  KRStoreChanges changes{stored_};
  findChanges(changes);
  return areGroupsChanged_ || !changes.isEmpty();
}

KRResult<void> KRStoredBook::saveNow() {
  if (!isRead()) return {};
  KRStoreChanges changes{stored_};
  findChanges(changes);
  std::vector<KRStoredGroup> groups;
  if (areGroupsChanged_) {
    groups = gatherGroups();
    changes.groups = &groups;
  }
  if (changes.isEmpty()) return {};
  if (!readError_) return readError_;
  KRResult<void> written = store_->write(changes);
  settle(changes);
  isUncertain_ = !written && written.error().code == KRErrorCode::Failed;
  if (written) areGroupsChanged_ = false;
  return written;
}

KRStringList KRStoredBook::unsavedIDs() {
  KRStringList IDs;
  if (!isRead() || isUncertain_) return IDs;
  KRStoreChanges changes{stored_};
  findChanges(changes);
  for (const auto& each : changes.changed) IDs.push_back(stored_[each.index].person->ID());
  for (const auto& each : changes.removed) IDs.push_back(stored_[each.index].person->ID());
  return IDs;
}

void KRStoredBook::settle(KRStoreChanges& changes) {
  for (KRStoreChanges::Changed& each : changes.changed) {
    if (!each.isDone) continue;
    stored_[each.index].key = each.key;
    stored_[each.index].person->setRecord(std::move(each.record));
  }
  for (const KRStoreChanges::Removed& each : changes.removed) {
    if (each.isDone) stored_[each.index].person = {};
  }
  std::erase_if(stored_, [](const KRStoredPerson& each) { return !each.person; });
  for (KRStoreChanges::Added& each : changes.added) {
    if (!each.isDone) continue;
    const bool isKept = !each.person->isChanged() && each.record.card().data() == each.person->card().data();
    if (!isKept) each.person->setRecord(std::move(each.record));
    stored_.push_back({std::move(each.person), each.key});
  }
}

void KRStoredBook::update() {
  if (isRead() && !hasChanges()) static_cast<void>(readAgain());
}
