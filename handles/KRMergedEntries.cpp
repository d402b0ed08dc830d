#include "handles/KRMergedEntries.h"

#include <algorithm>
#include <iterator>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPhone.h"
#include "platform/KRHash.h"

namespace {

// Texts that are nothing are equal to no text, not even to each other.

KRString phoneNumber(const KRValue& value) {
  const auto* phone = value.as<KRObjectPhone>();
  return phone != nullptr ? phone->phoneNumber() : KRString();
}

bool isSamePhone(const KRValue& existing, const KRValue& added) {
  return sameText(phoneNumber(existing), phoneNumber(added));
}

uint64_t hashOfPhone(const KRValue& value) {
  return phoneNumber(value).hash();
}

KRString emailText(const KRValue& value) {
  const auto* email = value.as<KRObjectEmail>();
  return email != nullptr ? email->email() : KRString();
}

bool isSameEmail(const KRValue& existing, const KRValue& added) {
  return sameText(emailText(existing), emailText(added));
}

uint64_t hashOfEmail(const KRValue& value) {
  return emailText(value).hash();
}

bool isSameAddress(const KRValue& existing, const KRValue& added) {
  const auto* address = existing.as<KRObjectAddress>();
  return address != nullptr && address->isequalToAddress(added.as<KRObjectAddress>());
}

// Services are compared by identity, not by name, on purpose: two accounts are the same only when the store gave them
// one and the same service. Two accounts without a service have the same one, and likewise with the user name.

struct Account {
  const KRInstantMessageServer* server = nullptr;
  KRString userName;
};

Account accountOf(const KRValue& value) {
  const auto* account = value.as<KRObjectInstantMessage>();
  return account != nullptr ? Account{account->server(), account->userName()} : Account();
}

bool isSameAccount(const KRValue& existing, const KRValue& added) {
  const Account a = accountOf(existing);
  const Account b = accountOf(added);
  return a.server == b.server && a.userName == b.userName;
}

uint64_t hashOfAccount(const KRValue& value) {
  const Account account = accountOf(value);
  return krHashMix(account.userName.hash(), reinterpret_cast<uintptr_t>(account.server));
}

bool isSameValue(const KRValue& existing, const KRValue& added) {
  return !existing.isNothing() && existing.isEqual(added);
}

uint64_t hashOfValue(const KRValue& value) {
  return value.hash();
}

struct Row {
  KRString propertyName;
  KREntryRule rule;
};
constexpr Row kRows[] = {
    {KRProPertyPhone, {isSamePhone, hashOfPhone}},
    {KRProPertyEmail, {isSameEmail, hashOfEmail}},
    {KRProPertyAddress, {isSameAddress, hashOfValue}},
    {KRProPertyInstantMessage, {isSameAccount, hashOfAccount}},
};
constexpr KREntryRule kOther{isSameValue, hashOfValue};

}  // namespace

const KREntryRule& krEntryRule(const KRString& propertyName) {
  const Row* row = std::find_if(std::begin(kRows), std::end(kRows),
                                [&](const Row& each) { return sameText(each.propertyName, propertyName); });
  return row != std::end(kRows) ? row->rule : kOther;
}

size_t KRMergedEntries::placeOf(KRMutableSingleValue& entry) {
  const KRValue& value = entry.value();
  const size_t place = entries_->count();
  // What is not even the same as itself is not looked for: it would only lengthen every search.
  if (rule_.isSame(value, value)) {
    const uint64_t hash = rule_.hash(value);
    const uint32_t found =
        places_.find(hash, [&](uint32_t each) { return rule_.isSame(entries_->valueAtIndex(each)->value(), value); });
    if (found != KRHashIndex::kNone) return found;
    places_.add(hash, static_cast<uint32_t>(place));
  }
  entries_->addValue(KRRef<KRMutableSingleValue>(&entry));
  return place;
}

void KRMergedEntries::add(const KRMutableMultipleValue& value) {
  const bool isFirst = entries_->count() == 0;
  const KRMutableSingleValue* main = value.mainValue();
  size_t mainPlace = 0;
  for (size_t i = 0; i < value.count(); ++i) {
    const size_t place = placeOf(*value.valueAtIndex(i));
    if (value.valueAtIndex(i) == main) mainPlace = place;
  }
  // The first entry is the main one without a mark.
  if (isFirst && mainPlace != 0) entries_->setMainIndex(mainPlace);
}

KRRef<KRMutableMultipleValue> KRMergedEntries::result() const {
  return entries_->count() != 0 ? entries_ : KRRef<KRMutableMultipleValue>();
}
