#include "detectors/KRIssueFindUnusualTitle.h"

#include <unordered_set>

#include "detectors/KRSinglePersonScan.h"
#include "issues/KRNameConstraintManager.h"

KRRef<KRIssueContext> KRIssueFindUnusualTitle::find(const KRPersonList* persons, const KRProgress& progress) {
  const KRStringList items = KRNameConstraintManager::ShareNameConstrainManager().prefixItemArray();
  const std::unordered_set<KRText, KRTextHash, KRTextEqual> allowed(items.begin(), items.end());
  return krScanSinglePersons(
      issue(), persons, progress,
      [&](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (person.isOrganization()) return {};
        const KRText title = person.readText(KROrdinal::Title, hold);
        if (title.isEmpty() || allowed.contains(title)) return {};
        return objectForPerson(&person, KRString(title));
      },
      KROrdinal::Title);
}

KRRef<KRIssueObject> KRIssueFindUnusualTitle::objectForPerson(IKRPerson* person, const KRString& title) const {
  return krFindingAboutPerson(person, krFormat("The prefix \"%@\" of this Contact is invalid.", title), title);
}
