// Deleting contacts, on every kind of book.
#include <gmock/gmock.h>

#include "contacts/model/KRSaveScope.h"
#include "handles/KRHandleDeleteContact.h"
#include "handles/KRHandleDeleteDuplicateContacts.h"
#include "tests/support/KRBookFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KRDeletionsOnBooksTest : public KRBookFixture {
 protected:
  void deleteDuplicates(const std::vector<size_t>& places) {
    fix(KRHandleNameDeleteDuplicatePerson, KRIssueDuplicateInfo, places);
  }
  /// Has the manager know the book, as a host does that opened it.
  void addToManager() { KRAddressBookManager::ShareAddressBookManager()->addAddressBook(&book()); }
};
INSTANTIATE_TEST_SUITE_P(Books, KRDeletionsOnBooksTest, testing::ValuesIn(krBookMakers()),
                         testing::PrintToStringParamName());

TEST_P(KRDeletionsOnBooksTest, OfDuplicatesTheFirstStaysAndTheOthersGoToTheTrash) {
  fill({{.first = "Ann"_kr},
        {.first = "Bob"_kr, .note = "b"_kr},
        {.first = "Bob"_kr, .note = "b"_kr},
        {.first = "Bob"_kr, .note = "b"_kr}});
  const auto kept = person(2);
  const std::string bob = shown(*kept);
  deleteDuplicates({2, 1, 3});
  EXPECT_THAT(names(), ElementsAre("Ann", "Bob"));
  EXPECT_EQ(person(1), kept);
  EXPECT_EQ(shown(*trashBook()), (std::vector<std::string>{bob, bob}));
  EXPECT_EQ(dynamic_cast<const KRTempPerson*>(trashBook()->allPersons().at(0))->fromID(), book().ID());
  expectKept();
}

TEST_P(KRDeletionsOnBooksTest, OtherFindingsLoseTheDeletedDuplicates) {
  fill({{.first = "A"_kr}, {.first = "A"_kr}, {.first = "A"_kr}, {.first = "D"_kr}, {.first = "E"_kr}});
  const auto ofKept = finding(KRHandleNameIgnore, KRIssueBlankName, {0});
  const auto ofDeleted = finding(KRHandleNameIgnore, KRIssueBlankName, {1});
  const auto pair = finding(KRHandleNameIgnore, KRIssueDuplicateNames, {2, 3});
  const auto group = finding(KRHandleNameIgnore, KRIssueDuplicateNames, {1, 3, 2, 4});
  const auto three = finding(KRHandleNameIgnore, KRIssueDuplicateNames, {0, 1, 2});
  const auto d = person(3);
  const auto e = person(4);
  deleteDuplicates({0, 1, 2});
  EXPECT_TRUE(isListed(ofKept));
  EXPECT_FALSE(isListed(ofDeleted));
  EXPECT_FALSE(isListed(pair));
  EXPECT_FALSE(isListed(three));
  ASSERT_TRUE(isListed(group));
  EXPECT_EQ(krPlain(group->persons()), (std::vector<IKRPerson*>{d.get(), e.get()}));
}

TEST_P(KRDeletionsOnBooksTest, NeitherTheBookNorTheTrashIsSaved) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}, {.first = "Bob"_kr}});
  addToManager();
  const auto before = shown(book());
  deleteDuplicates({0, 1});
  fix(KRHandleNameDeleteContact, KRIssueBlankName, {1});
  EXPECT_THAT(names(), ElementsAre("Ann"));
  EXPECT_EQ(trash()->allPersonsCount(), 0U);
  if (GetParam().keeps) EXPECT_EQ(shown(*GetParam().open(folder_)), before);
}

TEST_P(KRDeletionsOnBooksTest, ADeletedContactLeavesTheBookThatTheManagerKnows) {
  fill({{.first = "Ann"_kr, .phones = {"1"_kr}}, {.first = "Bob"_kr}, {.first = "Cid"_kr}});
  addToManager();
  const std::string bob = shown(*person(1));
  // Neither the others of the finding nor the scanned book have a say in it.
  const auto made = finding(KRHandleNameDeleteContact, KRIssueBlankName, {1, 2});
  result().setAddressBook({});
  made->fix();
  EXPECT_FALSE(isListed(made));
  EXPECT_THAT(names(), ElementsAre("Ann", "Cid"));
  EXPECT_EQ(shown(*trashBook()), std::vector<std::string>{bob});
  EXPECT_EQ(trashBook()->addressBookofPersonFrom(trashBook()->allPersons().first()), &book());
  ASSERT_TRUE(trashBook()->saveNow());
  EXPECT_EQ(shown(*trash()), std::vector<std::string>{bob});
  expectKept();
}

TEST_P(KRDeletionsOnBooksTest, ADeletedContactCanBePutBack) {
  fill({{.first = "Ann"_kr, .note = "tea"_kr, .phones = {"1"_kr, "2"_kr}}});
  addToManager();
  const std::string ann = shown(*person(0));
  fix(KRHandleNameDeleteContact, KRIssueBlankName);
  EXPECT_EQ(book().allPersonsCount(), 0U);
  book().addPerson(KRTrashAddressBook::restoredPerson(trashBook()->allPersons().first()).get());
  ASSERT_EQ(book().allPersonsCount(), 1U);
  EXPECT_EQ(shown(*person(0)), ann);
  expectKept();
}

TEST_P(KRDeletionsOnBooksTest, DeletingOneOfAPairDropsThePairAndOneOfThreeLeavesTwo) {
  fill({{.first = "Ann"_kr}, {.first = "Bob"_kr}, {.first = "Cid"_kr}});
  addToManager();
  const auto pair = finding(KRHandleNameIgnore, KRIssueDuplicateNames, {0, 1});
  const auto three = finding(KRHandleNameIgnore, KRIssueDuplicateNames, {2, 1, 0});
  const auto field = finding(KRHandleNameIgnore, KRIssueNoteWithSpacingOnly, {0});
  fix(KRHandleNameDeleteContact, KRIssueBlankName, {0});
  EXPECT_FALSE(isListed(pair));
  EXPECT_FALSE(isListed(field));
  EXPECT_EQ(krPlain(three->persons()), (std::vector<IKRPerson*>{person(1).get(), person(0).get()}));
}

TEST_P(KRDeletionsOnBooksTest, NeitherReportsProgress) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}});
  int reports = 0;
  const auto count = [&](int, double) { ++reports; };
  for (const KRString& name : {KRHandleNameDeleteContact, KRHandleNameDeleteDuplicatePerson}) {
    const auto made = finding(name, KRIssueDuplicateInfo, {0, 1});
    made->handle()->fix(made.get(), count);
    EXPECT_FALSE(isListed(made));
  }
  EXPECT_EQ(reports, 0);
}

TEST_P(KRDeletionsOnBooksTest, FixingAllEndsForEveryHandle) {
  for (const KRString& name :
       {KRHandleNameDeleteDuplicatePerson, KRHandleNameDeleteDublicatProperty, KRHandleNameDeleteProperty,
        KRHandleNameAddSupport, KRHandleNameDeleteContact, KRHandleNameRemoveSpace, KRHandleNameUseDefaultString,
        KRHandleNameEdit, KRHandleNameMergeContact, KRHandleNameIgnore, "unknown"_kr}) {
    const KRSaveScope unwritten;
    const auto source = krMake<KRAddressBook>("source"_kr, "Source"_kr);
    const auto context = krContext({}, KRIssueDuplicateInfo);
    const auto handle = KRIssueHandle::issueHandleWithName(name);
    for (int i = 0; i < 5; ++i) {
      const auto made = krFinding({source->newPerson(), source->newPerson()});
      made->setHandle(handle);
      context->addIssueObject(made.get());
    }
    const auto found = krResult({context});
    found->setAddressBook(source);
    std::vector<double> percents;
    context->fixAllForProgress([&](double percent) { percents.push_back(percent); });
    EXPECT_THAT(percents, ElementsAre(20.0, 40.0, 60.0, 80.0, 100.0)) << name.view();
    EXPECT_TRUE(found->contexts().isEmpty());
  }
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
