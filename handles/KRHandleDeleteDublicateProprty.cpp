#include "handles/KRHandleDeleteDublicateProprty.h"

#include <algorithm>
#include <unordered_map>

#include "handles/KRHandleFinding.h"
#include "handles/KRHandleTexts.h"
#include "issues/KRIssueNames.h"

namespace {

constexpr KRHandleTexts kTexts[] = {
    {KRIssueDuplicateAddress, "Delete duplicate addresses"_kr, "Delete duplicate addresses and keep only one."_kr},
    {KRIssueDuplicatePhoneNumber, "Delete duplicate phone numbers"_kr,
     "Delete duplicate phone numbers and keep only one."_kr},
    {KRIssueDuplicateEmailAddress, "Delete duplicate email addresses"_kr,
     "Delete duplicate email addresses and keep only one."_kr},
    {KRString(), "Delete the duplicate property"_kr, "Delete the duplicate property"_kr},
};

struct Field {
  KRString issueName;
  KRString propertyName;
};
constexpr Field kFields[] = {
    {KRIssueDuplicateAddress, KRProPertyAddress},
    {KRIssueDuplicatePhoneNumber, KRProPertyPhone},
    {KRIssueDuplicateEmailAddress, KRProPertyEmail},
};

/// Places of the entries whose value stands in an earlier entry, in order.
std::vector<size_t> repeats(const KRHandleDeleteDublicateProprty& handle, const KRMutableMultipleValue& entries,
                            const KRString& issueName) {
  std::vector<size_t> places;
  // The kept values by their hash, so that a card with very many entries is not compared each with each.
  std::unordered_map<uint64_t, std::vector<KRValue>> kept;
  for (size_t i = 0; i < entries.count(); ++i) {
    const KRValue& value = entries.valueAtIndex(i)->value();
    std::vector<KRValue>& alike = kept[value.hash()];
    if (handle.isExistInArray(alike, value, issueName)) {
      places.push_back(i);
    } else {
      alike.push_back(value);
    }
  }
  return places;
}

}  // namespace

void KRHandleDeleteDublicateProprty::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleDeleteDublicateProprty::fix(KRIssueObject* issueObject, const KRFlagProgress& progress) {
  const KRString issueName = krIssueNameOf(issueObject);
  const KRRef<IKRPerson> person = krMainPersonOf(issueObject);
  const Field* field = std::find_if(std::begin(kFields), std::end(kFields),
                                    [&](const Field& each) { return sameText(each.issueName, issueName); });
  if (person && field != std::end(kFields)) {
    const KRRef<KRStoredValue> stored = person->valueByPropertyName(field->propertyName);
    if (const auto* entries = dynamic_cast<const KRMutableMultipleValue*>(stored.get())) {
      const KRRef<KRMutableMultipleValue> changed = entries->mutableCopy();
      const std::vector<size_t> places = repeats(*this, *changed, issueName);
      // From the end, so that the places before stay valid.
      std::for_each(places.rbegin(), places.rend(), [&](size_t place) { changed->removeValueAtIndex(place); });
      person->setValue(changed, field->propertyName);
    }
  }
  krReportFixed(progress);
  resetFindResult(issueObject);
}

bool KRHandleDeleteDublicateProprty::isExistInArray(const std::vector<KRValue>& array, const KRValue& value,
                                                    const KRString& issueName) const {
  const auto any = [&](auto equal) { return std::any_of(array.begin(), array.end(), equal); };
  if (sameText(issueName, KRIssueDuplicateAddress)) {
    const auto* address = value.as<KRObjectAddress>();
    return any([&](const KRValue& each) { return isEqualAdressObject(each.as<KRObjectAddress>(), address); });
  }
  if (sameText(issueName, KRIssueDuplicatePhoneNumber)) {
    const auto* phone = value.as<KRObjectPhone>();
    return any([&](const KRValue& each) { return isEqualPhoneObject(each.as<KRObjectPhone>(), phone); });
  }
  if (sameText(issueName, KRIssueDuplicateEmailAddress)) {
    const auto* email = value.as<KRObjectEmail>();
    return any([&](const KRValue& each) { return isEqualEmailObject(each.as<KRObjectEmail>(), email); });
  }
  return false;
}

bool KRHandleDeleteDublicateProprty::isEqualPhoneObject(const KRObjectPhone* phone1,
                                                        const KRObjectPhone* phone2) const {
  return phone1 != nullptr && phone2 != nullptr && sameText(phone1->phoneNumber(), phone2->phoneNumber());
}

bool KRHandleDeleteDublicateProprty::isEqualEmailObject(const KRObjectEmail* email1,
                                                        const KRObjectEmail* email2) const {
  return email1 != nullptr && email2 != nullptr && sameText(email1->email(), email2->email());
}

bool KRHandleDeleteDublicateProprty::isEqualAdressObject(const KRObjectAddress* address1,
                                                         const KRObjectAddress* address2) const {
  return address1 != nullptr && address1->isequalToAddress(address2);
}

KRString KRHandleDeleteDublicateProprty::title(KRIssueObject* issueObject) const {
  return krHandleTexts(kTexts, issueObject).title;
}

KRString KRHandleDeleteDublicateProprty::resultInfo(KRIssueObject* issueObject) const {
  return krHandleTexts(kTexts, issueObject).resultInfo;
}
