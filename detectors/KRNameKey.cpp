#include "detectors/KRNameKey.h"

namespace {

constexpr int64_t kFirst = 1;
constexpr int64_t kMiddle = 2;
constexpr int64_t kLast = 4;

}  // namespace

KRNameKey::KRNameKey(const IKRPerson& person, int64_t setting, KRHold& hold) {
  if (person.isOrganization()) {
    const KRText company = person.readCompanyName(hold);
    if (!company.isEmpty()) add("organization:", company);
    return;
  }
  const KRNameView name = person.readName(hold);
  // A part that is there and empty counts: somebody entered it.
  if ((setting & kFirst) != 0) add("first:", name.first);
  if ((setting & kMiddle) != 0) add("middle:", name.middle);
  // The double s is kept on purpose: hosts know keys so.
  if ((setting & kLast) != 0) add("lasst:", name.last);
}

void KRNameKey::append(std::string& to) const {
  for (const Part& part : parts()) to.append(part.label).append(part.text.view());
}
