#include "handles/KRHandleDeleteDuplicateContacts.h"

#include <span>

#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRAddressBook.h"
#include "handles/KRHandleFinding.h"
#include "issues/KRIssueObject.h"
#include "platform/KRFatal.h"

void KRHandleDeleteDuplicateContacts::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleDeleteDuplicateContacts::fix(KRIssueObject* issueObject, const KRFlagProgress& /*progress*/) {
  if (issueObject == nullptr) return;
  const KRPersonArray persons = issueObject->persons();
  if (persons.isEmpty()) KRFatal("a finding without persons has no duplicates to delete");
  const KRPersonArray others(std::span<IKRPerson* const>(persons.begin() + 1, persons.end()));
  KRTrashAddressBook::ShareTrashAddressBook()->addPersons(others);
  if (const KRRef<KRAddressBook> book = krBookOf(issueObject)) book->removePersons(others);
  resetFindResult(issueObject);
}

KRString KRHandleDeleteDuplicateContacts::title(KRIssueObject* /*issueObject*/) const {
  return "Delete duplicate contacts"_kr;
}

KRString KRHandleDeleteDuplicateContacts::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "Delete duplicate Contacts and keep only one."_kr;
}
