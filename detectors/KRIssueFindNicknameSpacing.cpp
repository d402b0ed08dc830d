#include "detectors/KRIssueFindNicknameSpacing.h"

#include "detectors/KRSinglePersonScan.h"

KRRef<KRIssueContext> KRIssueFindNicknameSpacing::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        const KRText nickname = person.readText(KROrdinal::Nickname, hold);
        if (nickname.isEmpty() || nickname.view().find_first_not_of(' ') != std::string_view::npos) return {};
        return objectForPerson(&person);
      },
      KROrdinal::Nickname);
}

KRRef<KRIssueObject> KRIssueFindNicknameSpacing::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, "The nickname of this contact only has spaces. It should be removed."_kr);
}
