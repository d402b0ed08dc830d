#include "detectors/KRNearMissFind.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <utility>

#include "detectors/KRIssueFindDuplicateInfo.h"
#include "detectors/KRNameKey.h"
#include "detectors/KRPersonGroups.h"
#include "detectors/KRPersonKey.h"
#include "detectors/KRSharedValues.h"
#include "issues/KRIssueConfig.h"
#include "issues/KRIssueNames.h"
#include "platform/KRFolding.h"
#include "platform/KRHash.h"

namespace {

using Part = KRNearMiss::Part;
using Parts = std::vector<Part>;
using Reason = KRNearMissReason;

constexpr size_t kPhoneDigits = 9;

KRString foldedPhone(KRText phone) {
  const KRString digits = krDigitsOf(phone);
  if (digits.isEmpty()) return krFolded(phone);
  const std::string_view all = digits.view();
  return KRString(all.substr(all.size() - std::min(all.size(), kPhoneDigits)));
}

/// The text of a property as keys hold it, without the marks of absent texts.
KRString foldedProperty(const IKRPerson& person, const KRProperty& property, std::string text, KRHold& hold) {
  if (property.ordinal() == KROrdinal::Phone) {
    std::string folded;
    person.readEntries(KROrdinal::Phone, hold, [&](const KREntryView& entry) {
      folded.append(krFolded(entry.label).view()).append(":").append(foldedPhone(entry.text).view()).append(";");
      return true;
    });
    return KRString::trusted(folded);
  }
  constexpr std::string_view kAbsent = "(null)";
  for (size_t at = text.find(kAbsent); at != std::string::npos; at = text.find(kAbsent, at)) {
    text.erase(at, kAbsent.size());
  }
  return krFolded(KRText(std::string_view(text)));
}

Parts nameParts(const IKRPerson& person, int64_t setting, KRHold& hold) {
  Parts parts;
  const KRNameKey key(person, setting, hold);
  for (const KRNameKey::Part& part : key.parts()) {
    const std::string_view label = part.label.substr(0, part.label.size() - 1);
    // The key's own spelling of this one is not for people.
    const KRString name = label == "lasst" ? "last"_kr : KRString(label);
    parts.push_back({name, KRString(part.text), krFolded(part.text)});
  }
  return parts;
}

Parts propertyParts(const IKRPerson& person, KRHold& hold) {
  Parts parts;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (property->ordinal() == KROrdinal::Thumbnail) continue;
    std::string text;
    krAppendProperty(text, person, *property, hold);
    if (text.empty()) continue;
    // Without the property's name and its colon, which stand before each.
    text.erase(0, property->name().size() + 1);
    const KRString kept = KRString::trusted(text);
    parts.push_back({property->name(), kept, foldedProperty(person, *property, std::move(text), hold)});
  }
  const KRString digest = KRIssueFindDuplicateInfo().HashValueByData(person.imageData().get());
  if (!digest.isNothing()) parts.push_back({KRProPertyThumbnail, digest, digest});
  return parts;
}

void appendFoldedKey(std::string& to, const Parts& parts) {
  for (const Part& part : parts) {
    if (part.folded.isEmpty()) continue;
    // Folded texts have no blanks, so one between them keeps keys apart.
    if (!to.empty()) to += ' ';
    to.append(part.name.view()).append(":").append(part.folded.view());
  }
}

const Part* partNamed(const Parts& parts, KRText name) {
  const auto found = std::find_if(parts.begin(), parts.end(), [&](const Part& each) { return each.name == name; });
  return found != parts.end() ? &*found : nullptr;
}

/// What keeps two texts apart that are the same when folded.
void addReasons(std::vector<Reason>& to, KRText a, KRText b, bool isPhone) {
  const auto add = [&](Reason reason) {
    if (std::find(to.begin(), to.end(), reason) == to.end()) to.push_back(reason);
  };
  const size_t before = to.size();
  bool isFound = false;
  const auto note = [&](bool differs, Reason reason) {
    if (differs) add(reason);
    isFound = isFound || differs;
  };
  if (a.isEmpty() || b.isEmpty()) {
    note(true, Reason::Absent);
    return;
  }
  note(isPhone && krDigitsOf(a) != krDigitsOf(b), Reason::Prefix);
  if (isFound) return;
  static constexpr std::array<std::pair<unsigned, Reason>, 4> kRows = {{{KRFold::Case, Reason::Case},
                                                                        {KRFold::Marks, Reason::Marks},
                                                                        {KRFold::Spaces, Reason::Spaces},
                                                                        {KRFold::Punctuation, Reason::Punctuation}}};
  for (const auto& [fold, reason] : kRows)
    note(krFolded(a, KRFold::All & ~fold) != krFolded(b, KRFold::All & ~fold), reason);
  if (!isFound && to.size() == before) add(Reason::Form);
}

void addDifferences(KRNearMiss& miss, bool isPhone) {
  std::vector<KRString> names;
  for (const KRNearMiss::Side& side : miss.sides) {
    for (const Part& part : side.parts) {
      if (std::find(names.begin(), names.end(), part.name) == names.end()) names.push_back(part.name);
    }
  }
  const auto textOf = [](const KRNearMiss::Side& side, KRText name) {
    const Part* part = partNamed(side.parts, name);
    return part != nullptr ? part->text.text() : KRText();
  };
  for (const KRString& name : names) {
    const KRText first = textOf(miss.sides.front(), name);
    KRNearMiss::Difference difference{name, {}};
    const bool hasPhones = isPhone || name == KRProPertyPhone;
    for (const KRNearMiss::Side& side : miss.sides) {
      const KRText text = textOf(side, name);
      if (text != first) addReasons(difference.reasons, first, text, hasPhones);
    }
    if (difference.reasons.empty()) continue;
    std::sort(difference.reasons.begin(), difference.reasons.end());
    miss.differences.push_back(std::move(difference));
  }
}

/// Tells the places of one folded key apart by their exact keys.
template <class KeyOf, class PartsOf>
KRNearMiss missOf(const KRPersonGroups& groups, uint32_t group, const KRPersonList& persons, KeyOf keyOf,
                  PartsOf partsOf) {
  KRNearMiss miss;
  std::unordered_map<KRString, size_t, KRTextHash, KRTextEqual> sideOf;
  std::vector<std::vector<IKRPerson*>> members;
  groups.forPlaces(group, [&](uint32_t place) {
    IKRPerson* person = persons.at(place);
    const KRString key = keyOf(*person);
    const auto [side, isNew] = sideOf.try_emplace(key, members.size());
    if (isNew) {
      miss.sides.push_back({key, partsOf(*person), {}});
      members.emplace_back();
    }
    members[side->second].push_back(person);
  });
  for (size_t i = 0; i < members.size(); ++i) miss.sides[i].persons = KRPersonArray(members[i]);
  return miss;
}

void finish(KRNearMiss& miss, const KRString& issueName, bool isPhone, std::vector<KRNearMiss>& to) {
  miss.issueName = issueName;
  std::string folded;
  appendFoldedKey(folded, miss.sides.front().parts);
  miss.foldedKey = KRString::trusted(folded);
  addDifferences(miss, isPhone);
  to.push_back(std::move(miss));
}

template <class KeyOf, class PartsOf>
std::vector<KRNearMiss> amongPersons(const KRString& issueName, const KRPersonList& persons, const KRProgress& progress,
                                     KeyOf keyOf, PartsOf partsOf) {
  const KRPersonGroups groups =
      krGroupPersons(persons, progress, [&](const IKRPerson& person, KRHold& hold, std::string& key) {
        appendFoldedKey(key, partsOf(person, hold));
        return !key.empty();
      });
  std::vector<KRNearMiss> misses;
  for (uint32_t group = 0; group < groups.keyCount(); ++group) {
    if (!groups.isGroup(group)) continue;
    KRNearMiss miss = missOf(groups, group, persons, keyOf, [&](const IKRPerson& person) {
      KRHold hold;
      return partsOf(person, hold);
    });
    if (miss.sides.size() > 1) finish(miss, issueName, false, misses);
  }
  return misses;
}

std::vector<KRNearMiss> amongNames(const KRString& issueName, const KRPersonList& persons, const KRProgress& progress) {
  const int64_t setting = KRIssueConfig::shareObject().duplicateNameScanSetting();
  const auto keyOf = [setting](const IKRPerson& person) {
    KRHold hold;
    std::string key;
    KRNameKey(person, setting, hold).append(key);
    return KRString::trusted(key);
  };
  return amongPersons(issueName, persons, progress, keyOf,
                      [setting](const IKRPerson& person, KRHold& hold) { return nameParts(person, setting, hold); });
}

std::vector<KRNearMiss> amongContacts(const KRString& issueName, const KRPersonList& persons,
                                      const KRProgress& progress) {
  return amongPersons(
      issueName, persons, progress,
      [](const IKRPerson& person) { return KRIssueFindDuplicateInfo().personKey(&person); }, propertyParts);
}

/// Whether the sides concern two contacts or more; one contact that writes its own number in two ways is no near-miss.
bool concernsSeveral(const std::vector<KRNearMiss::Side>& sides) {
  const IKRPerson* first = sides.front().persons.first();
  return std::any_of(sides.begin(), sides.end(), [&](const KRNearMiss::Side& side) {
    return std::any_of(side.persons.begin(), side.persons.end(), [&](const IKRPerson* each) { return each != first; });
  });
}

std::vector<KRNearMiss> amongValues(const KRString& issueName, const KRPersonList& persons,
                                    const KRProgress& progress) {
  const bool isPhone = issueName == KRIssuePhonesDuplicatedAmongMultipleContacts;
  KRSharedValues values(isPhone ? KROrdinal::Phone : KROrdinal::Email);
  values.collect(persons, progress);
  const auto foldedOf = [&](uint32_t key) {
    const KRString value = values.value(key);
    return isPhone ? foldedPhone(value) : krFolded(value);
  };
  KRPersonGroups groups;
  for (uint32_t key = 0; key < values.keyCount(); ++key) {
    const KRString folded = foldedOf(key);
    if (folded.isEmpty()) continue;
    groups.add(krHashMix(folded.hash(), values.isMarked(key) ? 1 : 0), key, [&](uint32_t number) {
      const uint32_t other = groups.firstPlace(number);
      return values.isMarked(other) == values.isMarked(key) && foldedOf(other) == folded;
    });
  }
  std::vector<KRNearMiss> misses;
  for (uint32_t group = 0; group < groups.keyCount(); ++group) {
    if (!groups.isGroup(group)) continue;
    KRNearMiss miss;
    groups.forPlaces(group, [&](uint32_t key) {
      const KRString value = values.value(key);
      miss.sides.push_back(
          {value, {{isPhone ? "phone"_kr : "email"_kr, value, foldedOf(key)}}, values.all(key, persons)});
    });
    if (concernsSeveral(miss.sides)) finish(miss, issueName, isPhone, misses);
  }
  return misses;
}

struct Row {
  KRString issueName;
  std::vector<KRNearMiss> (*find)(const KRString&, const KRPersonList&, const KRProgress&);
};

constexpr Row kRows[] = {
    {KRIssueDuplicateNames, amongNames},
    {KRIssueDuplicateInfo, amongContacts},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, amongValues},
    {KRIssueEmailsDuplicatedAmongMultipleContacts, amongValues},
};

const Row* rowOf(KRText issueName) {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                 [&](const Row& each) { return sameText(each.issueName, issueName); });
  return row != std::end(kRows) ? row : nullptr;
}

}  // namespace

bool KRNearMissFind::canExplain(const KRString& issueName) {
  return rowOf(issueName) != nullptr;
}

std::vector<KRNearMiss> KRNearMissFind::find(const KRString& issueName, const KRPersonList* persons,
                                             const KRProgress& progress) {
  const Row* row = rowOf(issueName);
  if (row == nullptr || persons == nullptr) return {};
  return row->find(issueName, *persons, progress);
}
