#include "contacts/KRTrashMerge.h"

#include <functional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace {

const KRTempPerson* trashed(const KRRef<IKRPerson>& person) {
  return dynamic_cast<const KRTempPerson*>(person.get());
}

std::string_view cardOf(const KRTempPerson& person) {
  const KRRef<KRData> card = person.card();
  return card ? card->bytes() : std::string_view();
}

/// Equal for equal persons. Not the identifier alone: many may have the same one.
size_t mark(const KRTempPerson& person) {
  const std::hash<std::string_view> hash;
  const KRString ID = person.ID();
  return hash(ID.view()) * 31 + hash(cardOf(person));
}

/// The file's persons that nobody of this process's has been matched with.
class Unmatched {
 public:
  explicit Unmatched(const std::vector<KRRef<KRTempPerson>>& theirs) : theirs_(theirs) {
    for (size_t i = 0; i < theirs.size(); ++i) {
      places_[mark(*theirs[i])].push_back(i);
      ++IDs_[theirs[i]->ID()];
    }
  }

  /// The place of the first one that is the same as the person, which is then matched; or the count.
  size_t take(const KRTempPerson& person) {
    const auto found = places_.find(mark(person));
    if (found == places_.end()) return theirs_.size();
    std::vector<size_t>& places = found->second;
    for (auto each = places.begin(); each != places.end(); ++each) {
      const size_t place = *each;
      if (!KRTrashMerge::areSame(*theirs_[place], person)) continue;
      places.erase(each);
      --IDs_[person.ID()];
      return place;
    }
    return theirs_.size();
  }

  bool hasID(const KRTempPerson& person) const {
    const auto found = IDs_.find(person.ID());
    return found != IDs_.end() && found->second > 0;
  }

 private:
  const std::vector<KRRef<KRTempPerson>>& theirs_;
  std::unordered_map<size_t, std::vector<size_t>> places_;
  std::unordered_map<KRString, size_t> IDs_;
};

}  // namespace

bool KRTrashMerge::areSame(const KRTempPerson& a, const KRTempPerson& b) {
  if (!(a.ID() == b.ID()) || !(a.fromID() == b.fromID()) || a.groupIDs() != b.groupIDs() || cardOf(a) != cardOf(b))
    return false;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (!krEqualObjects(a.valueByPropertyName(property->name()).get(), b.valueByPropertyName(property->name()).get()))
      return false;
  }
  return true;
}

KRTrashMerge::Persons KRTrashMerge::merged(const Persons& before, const Persons& mine,
                                           const std::vector<KRRef<KRTempPerson>>& theirs) {
  std::unordered_set<const IKRPerson*> wanted;
  for (const auto& person : mine) wanted.insert(person.get());
  std::unordered_set<const IKRPerson*> known;
  for (const auto& person : before) known.insert(person.get());

  Persons result(theirs.begin(), theirs.end());
  Persons further;
  Unmatched unmatched(theirs);
  Persons gone;
  for (const auto& person : before) {
    const KRTempPerson* each = trashed(person);
    const size_t place = each != nullptr ? unmatched.take(*each) : theirs.size();
    const bool isWanted = wanted.count(person.get()) != 0;
    if (place != theirs.size()) {
      result[place] = isWanted ? person : KRRef<IKRPerson>();
    } else if (isWanted) {
      gone.push_back(person);
    }
  }
  for (const auto& person : mine) {
    if (known.count(person.get()) != 0) continue;
    const KRTempPerson* each = trashed(person);
    const size_t place = each != nullptr ? unmatched.take(*each) : theirs.size();
    if (place != theirs.size()) {
      result[place] = person;
    } else {
      further.push_back(person);
    }
  }
  std::erase_if(result, [](const auto& person) { return !person; });
  // The others took it out, unless the file still has one like it: then either was changed, and both stay.
  for (const auto& person : gone) {
    const KRTempPerson* each = trashed(person);
    if (each == nullptr || unmatched.hasID(*each)) result.push_back(person);
  }
  result.insert(result.end(), further.begin(), further.end());
  return result;
}
