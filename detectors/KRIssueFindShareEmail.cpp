#include "detectors/KRIssueFindShareEmail.h"

#include <algorithm>
#include <vector>

#include "detectors/KRSharedValues.h"

namespace {

bool holds(const KRStringList& emails, KRText email) {
  return std::any_of(emails.begin(), emails.end(), [&](const KRString& each) { return sameText(each, email); });
}

KRStringList emailsOf(const IKRPerson& person) {
  KRStringList emails;
  KRHold hold;
  person.readTexts(KROrdinal::Email, hold, [&](KRText text) {
    if (!text.isNothing()) emails.emplace_back(text);
    return true;
  });
  return emails;
}

}  // namespace

KRRef<KRIssueContext> KRIssueFindShareEmail::find(const KRPersonList* persons, const KRProgress& progress) {
  if (persons == nullptr) return {};
  KRSharedValues values(KROrdinal::Email);
  values.collect(*persons, progress);
  auto context = krMake<KRIssueContext>(issue());
  for (uint32_t key = 0; key < values.keyCount(); ++key) {
    if (values.mayBeShared(key, *persons)) {
      const KRPersonArray holders = values.holders(key, *persons);
      if (!holders.isEmpty()) context->addIssueObject(objectForPersons(holders, values.value(key)).get());
    }
    progress(70.0);
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

KRRef<KRIssueContext> KRIssueFindShareEmail::find1(const KRPersonList* persons, const KRProgress& progress) const {
  if (persons == nullptr) return {};
  auto context = krMake<KRIssueContext>(issue());
  KRStringList handled;
  KRPersonList pool;
  std::vector<const IKRPerson*> leavers;
  for (IKRPerson& person : *persons) pool.append(&person);
  const auto groupOf = [&](const KRString& email) {
    for (const IKRPerson* leaver : leavers) pool.remove(leaver);
    leavers.clear();
    std::vector<IKRPerson*> group;
    for (IKRPerson& other : pool) {
      bool needRemove = false;
      if (personHasEmail(&other, email, handled, needRemove)) group.push_back(&other);
      if (needRemove) leavers.push_back(&other);
    }
    return group;
  };
  for (size_t i = 0; i < persons->count(); ++i) {
    IKRPerson* person = persons->at(i);
    if (pool.remove(person)) {
      for (const KRString& email : emailsOf(*person)) {
        if (holds(handled, email)) continue;
        std::vector<IKRPerson*> group = groupOf(email);
        if (group.empty()) continue;
        group.insert(group.begin(), person);
        handled.push_back(email);
        context->addIssueObject(objectForPersons(KRPersonArray(group), email).get());
      }
    }
    progress(krPercent(i, persons->count()));
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

KRString KRIssueFindShareEmail::KeyString(const KRString& email, const IKRPerson* person) const {
  return KRSharedValues::keyString(email, person);
}

KRRef<KRIssueObject> KRIssueFindShareEmail::objectForPersons(const KRPersonArray& persons,
                                                             const KRString& email) const {
  return krFindingAboutValue(persons, email, "Contacts in this list have the same email address \"%@\"");
}

bool KRIssueFindShareEmail::personHasEmail(const IKRPerson* person, const KRString& email,
                                           const KRStringList& emailArray, bool& needRemove) const {
  if (person == nullptr) return false;
  const KRStringList emails = emailsOf(*person);
  size_t matched = 0;
  bool found = false;
  for (const KRString& each : emails) {
    if (holds(emailArray, each)) {
      ++matched;
    } else if (!found && sameText(each, email)) {
      found = true;
      ++matched;
    }
  }
  if (matched == emails.size()) needRemove = true;
  return found;
}
