#include "contacts/stores/KRVCardGroupEdition.h"

#include <algorithm>

#include "contacts/model/KRCardRecord.h"

using Kind = KRVCardPlace::Kind;

namespace {

KRText identifierOf(const KRCardRecord& record) {
  const KRCardRow* UID = record.find(KRCardPart::UID);
  return UID == nullptr ? KRText() : record.view(*UID);
}

KRString plain(KRText UID) {
  return KRString(krPlainUID(UID));
}

}  // namespace

std::unordered_map<const IKRPerson*, KRString> krNameMembers(KRStoreChanges& changes) {
  std::unordered_map<const IKRPerson*, KRString> UIDs;
  if (changes.groups == nullptr) return UIDs;
  for (const KRStoredGroup& group : *changes.groups) {
    for (const KRRef<ABPerson>& member : group.members) {
      // Twins without an identifier are told apart by the book.
      if (identifierOf(member->record()).isEmpty()) UIDs.try_emplace(member.get(), member->ID());
    }
  }
  if (UIDs.empty()) return UIDs;
  std::vector<KRStoreChanges::Changed> changed;
  auto next = changes.changed.begin();
  for (size_t i = 0; i < changes.stored.size(); ++i) {
    if (next != changes.changed.end() && next->index == i) {
      changed.push_back(std::move(*next++));
    } else if (UIDs.count(changes.stored[i].person.get()) != 0) {
      changed.push_back({i});
    }
  }
  changes.changed = std::move(changed);
  return UIDs;
}

KRVCardGroupEdition::KRVCardGroupEdition(const KRStoreChanges& changes) : isActive_(changes.groups != nullptr) {
  if (isActive_) gather(changes);
}

void KRVCardGroupEdition::gather(const KRStoreChanges& changes) {
  std::unordered_map<const ABPerson*, KRText> UIDs;
  for (const KRStoredPerson& each : changes.stored) {
    contacts_.insert(plain(each.person->baseID()));
    UIDs[each.person.get()] = identifierOf(each.person->record());
  }
  for (const KRStoreChanges::Changed& each : changes.changed)
    UIDs[changes.stored[each.index].person.get()] = identifierOf(each.record);
  for (const KRStoreChanges::Added& each : changes.added) UIDs[each.person.get()] = identifierOf(each.record);
  for (const auto& [person, UID] : UIDs) contacts_.insert(plain(UID));
  for (const KRStoredGroup& group : *changes.groups) {
    const auto [place, isNew] = wanted_.try_emplace(group.group->uniqueId());
    Wanted& wanted = place->second;
    if (isNew) {
      order_.push_back(group.group->uniqueId());
      wanted.name = group.group->name();
    }
    for (const KRRef<ABPerson>& member : group.members) {
      const auto UID = UIDs.find(member.get());
      if (UID == UIDs.end() || UID->second.isEmpty()) continue;
      if (wanted.names.insert(plain(UID->second)).second) wanted.members.push_back(KRString(UID->second));
    }
  }
}

void KRVCardGroupEdition::consider(const std::vector<KRVCardGroup>& groups) {
  for (const KRVCardGroup& group : groups) {
    const auto wanted = wanted_.find(group.UID);
    if (wanted == wanted_.end()) continue;
    wanted->second.isPresent = true;
    for (const KRString& member : group.members) wanted->second.present.insert(plain(member));
  }
}

KRVCardGroupChange KRVCardGroupEdition::changeOf(const KRVCardGroup& group, Wanted& wanted) const {
  KRVCardGroupChange change;
  for (const KRString& each : group.members) {
    KRString member = plain(each);
    if (wanted.names.count(member) == 0 && contacts_.count(member) != 0) change.dropped.insert(std::move(member));
  }
  if (!wanted.isBegun) {
    for (const KRString& each : wanted.members) {
      if (wanted.present.count(plain(each)) == 0) change.added.push_back(each);
    }
  }
  wanted.isBegun = true;
  change.UID = group.UID;
  return change;
}

KRVCardGroupEdition::OfFile KRVCardGroupEdition::next(const std::vector<KRVCardGroup>& groups) {
  OfFile changes;
  if (!isActive_) return changes;
  for (size_t i = 0; i < groups.size(); ++i) {
    const auto wanted = wanted_.find(groups[i].UID);
    if (wanted == wanted_.end()) {
      changes.removed.push_back(i);
      continue;
    }
    KRVCardGroupChange change = changeOf(groups[i], wanted->second);
    if (!change.dropped.empty() || !change.added.empty()) changes.changed.emplace_back(i, std::move(change));
  }
  return changes;
}

KRVCardFile::Changes KRVCardGroupEdition::OfFile::in(const KRVCardFile& file) const {
  std::vector<size_t> places;
  for (size_t i = 0; i < file.cards().size(); ++i) {
    if (file.cards()[i].kind == Kind::Group) places.push_back(i);
  }
  KRVCardFile::Changes changes;
  for (const auto& [group, change] : changed) {
    if (group < places.size()) changes.groups.emplace_back(places[group], change);
  }
  for (const size_t group : removed) {
    if (group < places.size()) changes.removed.push_back(places[group]);
  }
  return changes;
}

std::vector<KRVCardGroup> KRVCardGroupEdition::added() const {
  std::vector<KRVCardGroup> groups;
  for (const KRString& UID : order_) {
    const Wanted& wanted = wanted_.at(UID);
    if (!wanted.isPresent) groups.push_back({wanted.name, UID, wanted.members});
  }
  return groups;
}
