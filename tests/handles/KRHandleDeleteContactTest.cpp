#include "handles/KRHandleDeleteContact.h"

#include <gtest/gtest.h>

#include "contacts/KRAddressBookManager.h"
#include "contacts/KRTempPerson.h"
#include "contacts/KRTrashAddressBook.h"
#include "handles/KRHandleDeleteDuplicateContacts.h"
#include "issues/KRIssueNames.h"
#include "tests/support/KRFindings.h"
#include "tests/support/KRFix.h"

namespace {

TEST(KRHandleDeleteContact, SaysWhatItDoesWhateverTheIssue) {
  krExpectTexts<KRHandleDeleteContact>({
      {KRIssueBlankName, "Delete the contact", "This contact will be deleted."},
      {KRIssueUnusualTitle, "Delete the contact", "This contact will be deleted."},
      {KRString(), "Delete the contact", "This contact will be deleted."},
  });
}

TEST(KRHandleDeleteContact, TakesTheFindingOutOfTheResult) {
  const KRFix fix(KRIssueBlankName, krPerson<KRHostPerson>({.first = "Ann"_kr}));
  krMake<KRHandleDeleteContact>()->fix(fix.finding());
  EXPECT_TRUE(fix.isGone());
}

TEST(KRHandleDeleteContact, AContactOfABookThatTheManagerDoesNotKnowGoesToTheTrashAndStays) {
  KRTrashAddressBook* trash = KRTrashAddressBook::ShareTrashAddressBook();
  trash->clear();
  const auto book = krMake<KRAddressBook>("nobody knows this one"_kr, "Book"_kr);
  const auto person = book->newPerson();
  const auto finding = krFinding({person});
  const auto result = krResult({krContext({finding})});
  krMake<KRHandleDeleteContact>()->fix(finding.get());
  EXPECT_EQ(book->allPersonsCount(), 1U);
  ASSERT_EQ(trash->allPersonsCount(), 1U);
  EXPECT_EQ(dynamic_cast<const KRTempPerson*>(trash->allPersons().first())->fromID(), book->ID());
  EXPECT_TRUE(result->contexts().isEmpty());
  trash->clear();
}

TEST(KRHandleDeleteContact, TheManagersBookIsAskedAndNoOtherOne) {
  KRTrashAddressBook* trash = KRTrashAddressBook::ShareTrashAddressBook();
  trash->clear();
  const auto own = krMake<KRAddressBook>("own"_kr, "Own"_kr);
  const auto scanned = krMake<KRAddressBook>("scanned"_kr, "Scanned"_kr);
  KRAddressBookManager::ShareAddressBookManager()->addAddressBook(own.get());
  const auto person = own->newPerson();
  const auto finding = krFinding({person});
  const auto result = krResult({krContext({finding})});
  result->setAddressBook(scanned);
  krMake<KRHandleDeleteContact>()->fix(finding.get());
  EXPECT_EQ(own->allPersonsCount(), 0U);
  trash->clear();
}

TEST(KRHandleDeletionsDeathTest, AFindingWithoutPersonsIsAProgrammingError) {
  const auto finding = krMake<KRIssueObject>();
  EXPECT_DEATH(krMake<KRHandleDeleteDuplicateContacts>()->fix(finding.get()), "without persons");
  finding->setHandle(KRIssueHandle::issueHandleWithName(KRHandleNameDeleteContact));
  EXPECT_DEATH(finding->fix(), "out of the range");
}

}  // namespace
