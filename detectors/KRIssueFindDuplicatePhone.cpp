#include "detectors/KRIssueFindDuplicatePhone.h"

#include <vector>

#include "detectors/KRSeenValues.h"
#include "detectors/KRSinglePersonScan.h"

namespace {

/// Kept over a whole run, so that a contact needs no memory of its own.
class Repeated {
 public:
  /// The numbers that the person holds more than once.
  KRStringList of(const IKRPerson& person, KRHold& hold) {
    seen_.empty();
    isListed_.clear();
    KRStringList numbers;
    person.readTexts(KROrdinal::Phone, hold, [&](KRText text) {
      if (text.isNothing()) return true;
      const size_t place = seen_.placeOrAdd(text);
      if (place == KRSeenValues<KRText>::kNew) {
        isListed_.push_back(false);
      } else if (!isListed_[place]) {
        isListed_[place] = true;
        numbers.emplace_back(text);
      }
      return true;
    });
    return numbers;
  }

 private:
  KRSeenValues<KRText> seen_;
  std::vector<bool> isListed_;
};

}  // namespace

KRRef<KRIssueContext> KRIssueFindDuplicatePhone::find(const KRPersonList* persons, const KRProgress& progress) {
  Repeated repeated;
  return krScanRepeated(issue(), persons, progress, KROrdinal::Phone,
                        [&](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
                          const KRStringList numbers = repeated.of(person, hold);
                          if (numbers.empty()) return {};
                          KRRef<KRIssueObject> object = objectForPerson(&person);
                          object->setInfo(KRValueList::ofTexts(numbers));
                          return object;
                        });
}

KRRef<KRIssueObject> KRIssueFindDuplicatePhone::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, "This Contact has duplicate phone numbers."_kr);
}
