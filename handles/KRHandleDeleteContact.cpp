#include "handles/KRHandleDeleteContact.h"

#include "contacts/KRAddressBookManager.h"
#include "contacts/KRTrashAddressBook.h"
#include "handles/KRHandleFinding.h"

void KRHandleDeleteContact::fix(KRIssueObject* issueObject) {
  fix(issueObject, KRFlagProgress());
}

void KRHandleDeleteContact::fix(KRIssueObject* issueObject, const KRFlagProgress& /*progress*/) {
  if (const KRRef<IKRPerson> person = krMainPersonOf(issueObject)) {
    KRAddressBook* book = KRAddressBookManager::ShareAddressBookManager()->addressBookByID(person->addressBookID());
    KRTrashAddressBook::ShareTrashAddressBook()->addPerson(person.get());
    if (book != nullptr) book->removePersons(KRPersonArray(person));
  }
  resetFindResult(issueObject);
}

KRString KRHandleDeleteContact::title(KRIssueObject* /*issueObject*/) const {
  return "Delete the contact"_kr;
}

KRString KRHandleDeleteContact::resultInfo(KRIssueObject* /*issueObject*/) const {
  return "This contact will be deleted."_kr;
}
