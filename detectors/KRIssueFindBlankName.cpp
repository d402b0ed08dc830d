#include "detectors/KRIssueFindBlankName.h"

#include "detectors/KRSinglePersonScan.h"
#include "platform/KRSupportFuction.h"

namespace {

bool isBlank(const IKRPerson& person, KRHold& hold) {
  if (person.isOrganization()) return person.companyName().isEmpty();
  const KRNameView name = person.readName(hold);
  return name.first.isNothing() && name.last.isNothing();
}

}  // namespace

KRRef<KRIssueContext> KRIssueFindBlankName::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (!isBlank(person, hold)) return {};
        return objectForPerson(&person);
      },
      KROrdinal::Name);
}

KRRef<KRIssueObject> KRIssueFindBlankName::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, KRSupportFuction::loadString("KR_Issue_Info_BlankName"_kr));
}
