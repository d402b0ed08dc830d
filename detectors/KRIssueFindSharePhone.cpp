#include "detectors/KRIssueFindSharePhone.h"

#include <vector>

#include "detectors/KRSharedValues.h"

KRRef<KRIssueContext> KRIssueFindSharePhone::find(const KRPersonList* persons, const KRProgress& progress) {
  if (persons == nullptr) return {};
  KRSharedValues values(KROrdinal::Phone);
  values.collect(*persons, progress);
  auto context = krMake<KRIssueContext>(issue());
  const auto keyCount = static_cast<float>(values.keyCount());
  for (uint32_t key = 0; key < values.keyCount(); ++key) {
    if (values.mayBeShared(key, *persons)) {
      const KRPersonArray holders = values.holders(key, *persons);
      if (!holders.isEmpty()) context->addIssueObject(objectForPersons(holders, values.value(key)).get());
    }
    progress(static_cast<double>(70.0F + static_cast<float>(key) / keyCount * 30.0F));
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

KRRef<KRIssueContext> KRIssueFindSharePhone::find1(const KRPersonList* persons, const KRProgress& progress) const {
  if (persons == nullptr) return {};
  auto context = krMake<KRIssueContext>(issue());
  const auto lookFor = [&](IKRPerson* person, const KRString& phone) {
    std::vector<IKRPerson*> group;
    for (IKRPerson& other : *persons) {
      if (&other == person || !personHasPhone(&other, phone)) continue;
      if (!existPerson(&other, context.get(), phone)) group.push_back(&other);
    }
    if (group.empty()) return;
    group.insert(group.begin(), person);
    context->addIssueObject(objectForPersons(KRPersonArray(group), phone).get());
  };
  for (size_t i = 0; i < persons->count(); ++i) {
    IKRPerson* person = persons->at(i);
    KRHold hold;
    person->readTexts(KROrdinal::Phone, hold, [&](KRText text) {
      if (!text.isNothing()) lookFor(person, KRString(text));
      return true;
    });
    progress(krPercent(i, persons->count()));
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

KRString KRIssueFindSharePhone::KeyString(const KRString& phone, const IKRPerson* person) const {
  return KRSharedValues::keyString(phone, person);
}

KRRef<KRIssueObject> KRIssueFindSharePhone::objectForPersons(const KRPersonArray& persons,
                                                             const KRString& phone) const {
  return krFindingAboutValue(persons, phone, "Contacts in this list have the same phone number \"%@\"");
}

bool KRIssueFindSharePhone::personHasPhone(const IKRPerson* person, const KRString& phone) const {
  if (person == nullptr) return false;
  bool found = false;
  KRHold hold;
  person->readTexts(KROrdinal::Phone, hold, [&](KRText text) {
    found = sameText(text, phone);
    return !found;
  });
  return found;
}

bool KRIssueFindSharePhone::existPerson(const IKRPerson* person, const KRIssueContext* fromContext,
                                        const KRString& phone) const {
  if (person == nullptr || fromContext == nullptr) return false;
  for (const KRIssueObject& object : fromContext->objects()) {
    if (sameText(object.info().text(), phone) && object.persons().contains(person)) return true;
  }
  return false;
}
