#include "detectors/KRIssueFindSpacingInFirst.h"

#include "detectors/KRSinglePersonScan.h"

KRRef<KRIssueContext> KRIssueFindSpacingInFirst::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (person.isOrganization()) return {};
        if (!person.readName(hold).first.contains(' ')) return {};
        return objectForPerson(&person);
      },
      KROrdinal::Name);
}

KRRef<KRIssueObject> KRIssueFindSpacingInFirst::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, "This Contact's first name has blank spaces."_kr);
}
