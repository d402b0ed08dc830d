#include "detectors/KRIssueFindDuplicatecontacts.h"

#include <string>
#include <vector>

#include "detectors/KRNameKey.h"
#include "detectors/KRPersonGroups.h"
#include "issues/KRIssueConfig.h"
#include "platform/KRSupportFuction.h"

KRRef<KRIssueContext> KRIssueFindDuplicatecontacts::find(const KRPersonList* persons, const KRProgress& progress) {
  if (persons == nullptr) return {};
  const int64_t setting = KRIssueConfig::shareObject().duplicateNameScanSetting();
  const KRPersonGroups groups =
      krGroupPersons(*persons, progress, [setting](const IKRPerson& person, KRHold& hold, std::string& key) {
        const KRNameKey name(person, setting, hold);
        name.append(key);
        return !name.isEmpty();
      });
  if (groups.groupKeys().empty()) return {};
  auto context = krMake<KRIssueContext>(issue());
  std::vector<IKRPerson*> room;
  for (uint32_t key = 0; key < groups.keyCount(); ++key) {
    groups.prefetchAhead(key, *persons);
    if (groups.isGroup(key)) context->addIssueObject(objectForPerson(krPersonsOf(groups, key, *persons, room)).get());
  }
  return context;
}

KRRef<KRIssueContext> KRIssueFindDuplicatecontacts::find2(const KRPersonList* persons,
                                                          const KRProgress& progress) const {
  if (persons == nullptr) return {};
  auto context = krMake<KRIssueContext>(issue());
  const size_t total = persons->count();
  // What is left to be looked at; a group leaves it as a whole, so it is the pool to search as well.
  std::vector<IKRPerson*> left;
  for (IKRPerson& person : *persons) left.push_back(&person);
  while (!left.empty()) {
    IKRPerson* person = left.front();
    const KRString key = keyNameForPerson(person);
    std::vector<IKRPerson*> group{person};
    std::vector<IKRPerson*> others;
    for (IKRPerson* other : left) {
      if (other == person) continue;
      const bool isSame = !key.isEmpty() && sameText(key, keyNameForPerson(other));
      (isSame ? group : others).push_back(other);
    }
    if (group.size() > 1) context->addIssueObject(objectForPerson(KRPersonArray(group)).get());
    left.swap(others);
    const float share = static_cast<float>(left.size()) * 100.0F / static_cast<float>(total);
    progress(static_cast<double>(100.0F - share));
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

KRString KRIssueFindDuplicatecontacts::keyNameForPerson(const IKRPerson* person) const {
  if (person == nullptr) return {};
  KRHold hold;
  const KRNameKey name(*person, KRIssueConfig::shareObject().duplicateNameScanSetting(), hold);
  if (name.isEmpty() && (person->isOrganization() || !person->readName(hold).isPresent)) return {};
  std::string key;
  name.append(key);
  return KRString::trusted(key);
}

KRRef<KRIssueObject> KRIssueFindDuplicatecontacts::objectForPerson(const KRPersonArray& persons) const {
  auto object = krMake<KRIssueObject>();
  object->setPersons(persons);
  object->setDescribe(KRSupportFuction::loadString("KR_Issue_Info_Duplicatecontacts"_kr));
  return object;
}
