#include "detectors/KRIssueFindCompanyNoTitle.h"

#include "detectors/KRSinglePersonScan.h"

KRRef<KRIssueContext> KRIssueFindCompanyNoTitle::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        if (person.isOrganization()) return {};
        if (person.readCompanyName(hold).isEmpty()) return {};
        if (!person.readText(KROrdinal::JobTitle, hold).isEmpty()) return {};
        return objectForPerson(&person);
      },
      KROrdinal::Company);
}

KRRef<KRIssueObject> KRIssueFindCompanyNoTitle::objectForPerson(IKRPerson* person) const {
  // The blank at the end belongs to the text: hosts show and compare it so.
  return krFindingAboutPerson(person, "This Contact has company name, but haven't set a job title. "_kr);
}

KRString KRIssueFindCompanyNoTitle::companyNameForPerson(const IKRPerson* person) const {
  if (person == nullptr) return {};
  KRString companyName = person->companyName();
  return companyName.isEmpty() ? KRString() : companyName;
}

KRString KRIssueFindCompanyNoTitle::jobTitleForPerson(const IKRPerson* person) const {
  if (person == nullptr) return {};
  KRHold hold;
  const KRText jobTitle = person->readText(KROrdinal::JobTitle, hold);
  return jobTitle.isEmpty() ? KRString() : KRString(jobTitle);
}
