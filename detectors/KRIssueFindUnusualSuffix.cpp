#include "detectors/KRIssueFindUnusualSuffix.h"

#include <unordered_set>

#include "detectors/KRSinglePersonScan.h"
#include "issues/KRNameConstraintManager.h"

KRRef<KRIssueContext> KRIssueFindUnusualSuffix::find(const KRPersonList* persons, const KRProgress& progress) {
  const KRStringList items = KRNameConstraintManager::ShareNameConstrainManager().suffixItemArray();
  const std::unordered_set<KRText, KRTextHash, KRTextEqual> allowed(items.begin(), items.end());
  return krScanSinglePersons(
      issue(), persons, progress,
      [&](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (person.isOrganization()) return {};
        const KRText suffix = person.readText(KROrdinal::Suffix, hold);
        if (suffix.isEmpty() || allowed.contains(suffix)) return {};
        return objectForPerson(&person, KRString(suffix));
      },
      KROrdinal::Suffix);
}

KRRef<KRIssueObject> KRIssueFindUnusualSuffix::objectForPerson(IKRPerson* person, const KRString& suffix) const {
  return krFindingAboutPerson(person, krFormat("The suffix \"%@\" of this Contact is invalid.", suffix), suffix);
}
