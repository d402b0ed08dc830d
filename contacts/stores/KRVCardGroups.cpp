#include "contacts/stores/KRVCardGroups.h"

#include <unordered_map>

#include "contacts/model/KRCardIdentity.h"

std::vector<KRVCardGroup> krGroupsOf(const KRVCardFile& file) {
  std::vector<KRVCardGroup> groups;
  for (const KRVCardFile::Card& card : file.cards()) {
    if (card.kind != KRVCardPlace::Kind::Group) continue;
    KRVCardGroup group = file.groupOf(card);
    if (group.UID.isEmpty()) group.UID = krCardIdentity(file.bytesOf(card));
    groups.push_back(std::move(group));
  }
  return groups;
}

void KRVCardGroups::read(const KRVCardFile& file) {
  for (KRVCardGroup& group : krGroupsOf(file)) groups_.push_back(std::move(group));
}

std::vector<KRStoredGroup> KRVCardGroups::withMembers(const std::vector<KRStoredPerson>& persons) const {
  std::vector<KRStoredGroup> stored;
  if (groups_.empty()) return stored;
  std::unordered_map<KRString, KRRef<ABPerson>> holders;
  for (const KRStoredPerson& each : persons) holders.emplace(KRString(krPlainUID(each.person->baseID())), each.person);
  std::unordered_map<KRString, size_t> places;
  for (const KRVCardGroup& group : groups_) {
    const auto [place, isNew] = places.emplace(group.UID, stored.size());
    if (isNew) stored.push_back({krMake<KRGroup>(group.UID, group.name), {}});
    for (const KRString& member : group.members) {
      const auto holder = holders.find(KRString(krPlainUID(member)));
      if (holder != holders.end()) stored[place->second].members.push_back(holder->second);
    }
  }
  return stored;
}
