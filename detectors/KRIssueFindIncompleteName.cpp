#include "detectors/KRIssueFindIncompleteName.h"

#include "detectors/KRSinglePersonScan.h"
#include "platform/KRSupportFuction.h"

KRRef<KRIssueContext> KRIssueFindIncompleteName::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (person.isOrganization()) return {};
        const KRNameView name = person.readName(hold);
        if (name.first.isEmpty() == name.last.isEmpty()) return {};
        return objectForPerson(&person);
      },
      KROrdinal::Name);
}

KRRef<KRIssueObject> KRIssueFindIncompleteName::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, KRSupportFuction::loadString("KR_Issue_Info_IncompleteName"_kr));
}
