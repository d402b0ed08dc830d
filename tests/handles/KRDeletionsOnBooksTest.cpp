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
  expectStored(before);
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
  const KRString handleNames[] = {KRHandleNameDeleteDuplicatePerson,
                                  KRHandleNameDeleteDublicatProperty,
                                  KRHandleNameDeleteProperty,
                                  KRHandleNameAddSupport,
                                  KRHandleNameDeleteContact,
                                  KRHandleNameRemoveSpace,
                                  KRHandleNameUseDefaultString,
                                  KRHandleNameEdit,
                                  KRHandleNameMergeContact,
                                  KRHandleNameIgnore,
                                  "unknown"_kr};
  constexpr size_t kFindings = 5;
  fill(std::vector<KRPersonSketch>(std::size(handleNames) * kFindings * 2, {.first = "Ann"_kr, .note = "b"_kr}));
  addToManager();
  const auto persons = book().allPersons().copy();
  auto next = persons.begin();
  for (const KRString& name : handleNames) {
    const auto context = krContext({}, KRIssueDuplicateInfo);
    const auto handle = KRIssueHandle::issueHandleWithName(name);
    for (size_t i = 0; i < kFindings; ++i, next += 2) {
      const auto made = krFinding({next[0], next[1]});
      made->setHandle(handle);
      context->addIssueObject(made.get());
    }
    result().addContext(context.get());
    std::vector<double> percents;
    context->fixAllForProgress([&](double percent) { percents.push_back(percent); });
    EXPECT_THAT(percents, ElementsAre(20.0, 40.0, 60.0, 80.0, 100.0)) << name.view();
    EXPECT_TRUE(result().contexts().isEmpty());
  }
  // Three of the handles leave one contact of two.
  EXPECT_EQ(book().allPersonsCount(), persons.size() - 3 * kFindings);
  expectKept();
}

}  // namespace
