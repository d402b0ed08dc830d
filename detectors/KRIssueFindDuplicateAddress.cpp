#include "detectors/KRIssueFindDuplicateAddress.h"

#include "detectors/KRSeenValues.h"
#include "detectors/KRSinglePersonScan.h"

KRRef<KRIssueContext> KRIssueFindDuplicateAddress::find(const KRPersonList* persons, const KRProgress& progress) {
  KRSeenValues<KRAddressView> seen;
  return krScanRepeated(issue(), persons, progress, KROrdinal::Address,
                        [&](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
                          bool isRepeated = false;
                          seen.empty();
                          person.readEntries(KROrdinal::Address, hold, [&](const KREntryView& entry) {
                            if (entry.address == nullptr) return true;
                            isRepeated = seen.placeOrAdd(*entry.address) != KRSeenValues<KRAddressView>::kNew;
                            return !isRepeated;
                          });
                          if (!isRepeated) return {};
                          return objectForPerson(&person);
                        });
}

KRRef<KRIssueObject> KRIssueFindDuplicateAddress::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, "This Contact has duplicate addresses."_kr);
}
