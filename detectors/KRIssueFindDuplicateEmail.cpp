#include "detectors/KRIssueFindDuplicateEmail.h"

#include "detectors/KRSeenValues.h"
#include "detectors/KRSinglePersonScan.h"

KRRef<KRIssueContext> KRIssueFindDuplicateEmail::find(const KRPersonList* persons, const KRProgress& progress) {
  KRSeenValues<KRText> seen;
  return krScanRepeated(issue(), persons, progress, KROrdinal::Email,
                        [&](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
                          bool isRepeated = false;
                          seen.empty();
                          person.readTexts(KROrdinal::Email, hold, [&](KRText text) {
                            if (text.isNothing()) return true;
                            isRepeated = seen.placeOrAdd(text) != KRSeenValues<KRText>::kNew;
                            return !isRepeated;
                          });
                          if (!isRepeated) return {};
                          return objectForPerson(&person);
                        });
}

KRRef<KRIssueObject> KRIssueFindDuplicateEmail::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, "This Contact has duplicate email addresses."_kr);
}
