#include "contacts/model/KRAddressBook.h"

#include <gtest/gtest.h>

#include <ctime>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/ABPerson.h"
#include "tests/contacts/ModelSamples.h"

namespace {

KRRef<KRAddressBook> newBook() {
  return krMake<KRAddressBook>("book-1"_kr, "Friends"_kr);
}

TEST(KRAddressBook, BeginsEmpty) {
  const auto book = newBook();
  EXPECT_EQ(book->ID(), "book-1");
  EXPECT_EQ(book->name(), "Friends");
  EXPECT_EQ(book->thumbnail(), nullptr);
  EXPECT_EQ(book->logo1(), nullptr);
  EXPECT_EQ(book->logo2(), nullptr);
  EXPECT_FALSE(book->isInternetAdressBook());
  EXPECT_EQ(book->allPersonsCount(), 0U);
  EXPECT_TRUE(book->rootGroups().empty());
  EXPECT_EQ(book->rootGroupsCount(), 0U);
  EXPECT_EQ(book->supportProperty(), KRProperty::StandardPropertyArray());
  EXPECT_EQ(book->tagManager(), KRTagManager::tagManagerWithID("book-1"_kr));
}

TEST(KRAddressBook, ShowsTheCommonPropertiesInTheirOrder) {
  KRStringList names;
  for (const KRProperty* property : newBook()->commonProperty()) names.push_back(property->name());
  EXPECT_EQ(names, (KRStringList{KRProPertyThumbnail, KRProPertyName, KRProPertyTags, KRProPertyPhone, KRProPertyEmail,
                                 KRProPertyCompany, KRProPertyBirthday, KRProPertyAddress, KRProPertyNote}));
}

TEST(KRAddressBook, OwnsANewPersonAtOnce) {
  const auto book = newBook();
  const auto person = book->newPerson();
  EXPECT_EQ(person->addressBookID(), "book-1");
  EXPECT_EQ(book->allPersonsCount(), 1U);
  EXPECT_EQ(book->allPersons().first(), person.get());
  EXPECT_TRUE(person->notNullValueProperty().empty());
  EXPECT_NE(dynamic_cast<ABPerson*>(person.get()), nullptr);
}

TEST(KRAddressBook, GivesNewPersonsIdentifiersOfTheirOwn) {
  const auto book = newBook();
  std::set<std::string> IDs;
  for (int i = 0; i < 100; ++i) IDs.insert(std::string(book->newPerson()->ID().view()));
  EXPECT_EQ(IDs.size(), 100U);
  EXPECT_EQ(IDs.count(""), 0U);
}

TEST(KRAddressBook, RemovesPersonsAndPassesOverOthers) {
  const auto book = newBook();
  const auto first = book->newPerson();
  const auto second = book->newPerson();
  const KRString ID = second->ID();
  const auto stranger = krMake<ABPerson>();
  const std::vector<KRRef<IKRPerson>> removed = {second, stranger, second};
  book->removePersons(KRPersonArray(removed));
  EXPECT_EQ(book->allPersonsCount(), 1U);
  EXPECT_EQ(book->allPersons().first(), first.get());
  EXPECT_TRUE(second->addressBookID().isNothing());
  EXPECT_EQ(second->ID(), ID);
  EXPECT_EQ(first->addressBookID(), "book-1");
  book->removePersons(KRPersonArray());
  EXPECT_EQ(book->allPersonsCount(), 1U);
}

TEST(KRAddressBook, KeepsTheIdentifierOfARemovedPersonThatNobodyAskedFor) {
  const auto book = newBook();
  for (int i = 0; i < 2; ++i) {
    const auto person = krMake<ABPerson>();
    person->setID("same"_kr);
    book->addPerson(person.get());
  }
  const KRRef<IKRPerson> second(book->allPersons().at(1));
  book->removePersons(KRPersonArray(second));
  EXPECT_EQ(second->ID(), "same-2");
  EXPECT_EQ(book->allPersons().first()->ID(), "same");
}

namespace {

KRRef<ABPerson> personCalled(KRString ID) {
  auto person = krMake<ABPerson>();
  person->setID(ID);
  return person;
}

}  // namespace

TEST(KRAddressBook, GivesACopyOfARemovedPersonItsIdentifier) {
  const auto book = newBook();
  const auto ann = personCalled("ann"_kr);
  book->addPerson(ann.get());
  EXPECT_EQ(ann->ID(), "ann");
  book->removePersons(KRPersonArray(ann));
  const auto again = personCalled("ann"_kr);
  book->addPerson(again.get());
  EXPECT_EQ(again->ID(), "ann");
}

TEST(KRAddressBook, GivesAPersonThatComesBackAnotherIdentifierWhenItsOwnIsTaken) {
  const auto book = newBook();
  const auto ann = personCalled("ann"_kr);
  book->addPerson(ann.get());
  EXPECT_EQ(ann->ID(), "ann");
  book->removePersons(KRPersonArray(ann));
  const auto other = personCalled("ann"_kr);
  book->addPerson(other.get());
  EXPECT_EQ(other->ID(), "ann");
  book->addPerson(ann.get());
  EXPECT_EQ(ann->ID(), "ann-2");
  EXPECT_EQ(other->ID(), "ann");
}

TEST(KRAddressBook, KeepsIdentifiersUniqueWhileManyComeAndGo) {
  const auto book = newBook();
  std::vector<KRRef<ABPerson>> persons;
  for (int i = 0; i < 3000; ++i) {
    persons.push_back(personCalled(KRString("p" + std::to_string(i % 1000))));
    book->addPerson(persons.back().get());
  }
  const auto isUnique = [&] {
    std::set<std::string> seen;
    for (const IKRPerson& person : book->allPersons()) seen.emplace(person.ID().view());
    return seen.size() == book->allPersonsCount();
  };
  EXPECT_TRUE(isUnique());
  for (size_t round = 0; round < 5; ++round) {
    std::vector<KRRef<IKRPerson>> gone;
    for (size_t i = round; i < persons.size(); i += 3) gone.emplace_back(persons[i]);
    std::map<const IKRPerson*, std::string> before;
    for (const auto& person : gone) before[person.get()] = person->ID().view();
    book->removePersons(KRPersonArray(gone));
    EXPECT_TRUE(isUnique());
    for (const auto& person : gone) book->addPerson(person.get());
    for (const auto& person : gone) EXPECT_EQ(person->ID().view(), before[person.get()]);
    EXPECT_TRUE(isUnique());
  }
}

TEST(KRAddressBook, TakesOverAPersonOfAnotherBook) {
  auto first = newBook();
  const auto second = krMake<KRAddressBook>("book-2"_kr, "Work"_kr);
  const auto person = first->newPerson();
  second->addPerson(person.get());
  second->addPerson(person.get());
  second->addPerson(nullptr);
  EXPECT_EQ(second->allPersonsCount(), 1U);
  EXPECT_EQ(person->addressBookID(), "book-2");
  // The book that the person came from has no say in it any more.
  first->removePersons(KRPersonArray(person));
  EXPECT_EQ(person->addressBookID(), "book-2");
  first = nullptr;
  EXPECT_EQ(person->addressBookID(), "book-2");
}

TEST(KRAddressBook, HoldsAPersonOnceThatComesBack) {
  const auto first = newBook();
  const auto second = krMake<KRAddressBook>("book-2"_kr, "Work"_kr);
  const auto person = first->newPerson();
  second->addPerson(person.get());
  first->addPerson(person.get());
  EXPECT_EQ(first->allPersonsCount(), 1U);
  EXPECT_EQ(person->addressBookID(), "book-1");
  second->addPerson(person.get());
  second->removePersons(KRPersonArray(person));
  EXPECT_EQ(second->allPersonsCount(), 0U);
  first->addPerson(person.get());
  EXPECT_EQ(first->allPersonsCount(), 1U);
  EXPECT_EQ(person->addressBookID(), "book-1");
}

TEST(KRAddressBook, HoldsPersonsOfEveryKind) {
  const auto book = newBook();
  const auto host = krMake<HostPerson>();
  const auto temporary = krMake<KRTempPerson>("t-1"_kr);
  book->addPersons({host, temporary, KRRef<IKRPerson>()});
  EXPECT_EQ(book->allPersonsCount(), 2U);
  EXPECT_EQ(host->addressBookID(), "host-book");
  const auto found = book->personsForIDs({"t-1"_kr, "host-1"_kr, "nobody"_kr});
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].get(), host.get());
  EXPECT_EQ(found[1].get(), temporary.get());
  EXPECT_TRUE(book->personsForIDs({"nobody"_kr}).empty());
  EXPECT_TRUE(book->personsForIDs({}).empty());
}

TEST(KRAddressBook, LeavesAPersonWithoutBookWhenItDies) {
  auto book = newBook();
  const auto person = book->newPerson();
  book = nullptr;
  EXPECT_TRUE(person->addressBookID().isNothing());
  EXPECT_FALSE(person->ID().isNothing());
}

/// Seconds of the processor, which other programs on the machine do not lengthen.
double secondsToRemoveAll(int count) {
  const auto book = newBook();
  std::vector<KRRef<IKRPerson>> persons;
  for (int i = 0; i < count; ++i) persons.push_back(book->newPerson());
  const std::clock_t start = std::clock();
  // One at a time from the front, as fixing finding after finding does.
  for (const auto& person : persons) book->removePersons(KRPersonArray(person));
  const std::clock_t taken = std::clock() - start;
  EXPECT_EQ(book->allPersonsCount(), 0U);
  return static_cast<double>(taken) / CLOCKS_PER_SEC;
}

TEST(KRAddressBook, RemovesALargeBookInLinearTime) {
  secondsToRemoveAll(20000);
  const double small = secondsToRemoveAll(20000);
  const double large = secondsToRemoveAll(160000);
  // Eight times as many; quadratic work would take sixty-four times as long.
  EXPECT_LT(large, small * 30 + 0.05);
}

}  // namespace
