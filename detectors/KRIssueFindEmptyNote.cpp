#include "detectors/KRIssueFindEmptyNote.h"

#include "detectors/KRSinglePersonScan.h"

KRRef<KRIssueContext> KRIssueFindEmptyNote::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (!person.readText(KROrdinal::Note, hold).isEmpty()) return {};
        return objectForPerson(&person);
      },
      KROrdinal::Note);
}

KRRef<KRIssueObject> KRIssueFindEmptyNote::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, "This Contact's notes is empty."_kr);
}
