#include "contacts/stores/KRMacAddressBook.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contacts/stores/KRAddedBooks.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/stores/KRUnavailableBook.h"
#include "platform/KRFile.h"
#include "platform/KRHostInfo.h"
#include "tests/contacts/KRListedBooks.h"
#include "tests/support/KRTestFolder.h"

namespace {

using testing::ElementsAre;

std::vector<std::string> IDs(const KRMacAddressBook::Books& books) {
  std::vector<std::string> all;
  for (const auto& book : books) all.emplace_back(book->ID().view());
  return all;
}

TEST(KRMacAddressBook, OpensTheBooksOfAllProvidersInTheirOrder) {
  const KRListedBooks listed({KRListedBooks::book("a"_kr), KRListedBooks::book("b"_kr)});
  KRMacAddressBook::addProvider(
      std::make_shared<KRListedBooks::Provider>(std::vector<KRBookSource>{KRListedBooks::book("c"_kr)}));
  KRMacAddressBook::addProvider(nullptr);
  std::vector<double> percents;
  const auto books =
      KRMacAddressBook::addressBookArrayWithProgressBlock([&](double percent) { percents.push_back(percent); });
  EXPECT_THAT(IDs(books), ElementsAre("a", "b", "c"));
  EXPECT_THAT(percents, ElementsAre(0.0, krPercent(1, 3), krPercent(2, 3), 100.0));
}

TEST(KRMacAddressBook, WithoutBooksTheProgressStillRunsToItsEnd) {
  const KRListedBooks listed({});
  std::vector<double> percents;
  EXPECT_TRUE(KRMacAddressBook::addressBookArrayWithProgressBlock([&](double percent) {
                percents.push_back(percent);
              }).empty());
  EXPECT_THAT(percents, ElementsAre(0.0, 100.0));
}

TEST(KRMacAddressBook, ABookThatCannotBeOpenedStandsInItsPlaceAndSaysWhy) {
  KRBookSource without = KRListedBooks::book("no opener"_kr);
  without.open = {};
  const KRListedBooks listed(
      {KRListedBooks::book("a"_kr), KRListedBooks::broken("b"_kr), without, KRListedBooks::book("c"_kr)});
  const auto books = KRMacAddressBook::addressBookArrayWithProgressBlock([](double) {});
  EXPECT_THAT(IDs(books), ElementsAre("a", "b", "no opener", "c"));
  auto* broken = dynamic_cast<KRUnavailableBook*>(books[1].get());
  ASSERT_NE(broken, nullptr);
  EXPECT_EQ(broken->name(), "Broken"_kr);
  EXPECT_EQ(broken->kind(), "sqlite"_kr);
  EXPECT_EQ(broken->place(), "/some/where"_kr);
  EXPECT_EQ(broken->error().code, KRErrorCode::Damaged);
  EXPECT_EQ(broken->allPersonsCount(), 0U);
  EXPECT_FALSE(broken->load());
  ASSERT_FALSE(broken->saveNow());
  EXPECT_EQ(broken->saveNow().error().sentence, "the library is damaged");
  EXPECT_FALSE(books[2]->load());
}

TEST(KRMacAddressBook, OfTwoSourcesOfOneBookTheFirstCounts) {
  const KRListedBooks listed({KRListedBooks::book("a"_kr), KRListedBooks::broken("a"_kr)});
  const auto books = KRMacAddressBook::addressBookArrayWithProgressBlock([](double) {});
  ASSERT_EQ(books.size(), 1U);
  EXPECT_TRUE(books[0]->load());
}

TEST(KRMacAddressBook, TheSharedListIsTheOneOfTheLastReset) {
  const KRListedBooks listed({KRListedBooks::book("a"_kr)});
  KRMacAddressBook::resetGAddressArray([](double) {});
  const auto first = KRMacAddressBook::addressBookArray();
  EXPECT_THAT(IDs(first), ElementsAre("a"));
  EXPECT_EQ(KRMacAddressBook::addressBookArray(), first);
  EXPECT_NE(KRMacAddressBook::addressBookArrayWithProgressBlock([](double) {})[0], first[0]);
  EXPECT_EQ(KRMacAddressBook::addressBookArray(), first);
  listed->given.push_back(KRListedBooks::book("b"_kr));
  double last = 0;
  KRMacAddressBook::resetGAddressArray([&](double percent) { last = percent; });
  EXPECT_EQ(last, 100.0);
  EXPECT_THAT(IDs(KRMacAddressBook::addressBookArray()), ElementsAre("a", "b"));
}

TEST(KRMacAddressBook, ListsTheBooksAtPathsThatTheUserAdded) {
  const KRTestFolder folder;
  folder.put("family.vcf", "BEGIN:VCARD\nVERSION:3.0\nN:Lee;Ann;;;\nEND:VCARD\n");
  ASSERT_TRUE(KRAddedBooks::add(KRText(std::string_view(folder.at("family.vcf")))));
  ASSERT_TRUE(KRAddedBooks::add(KRText(std::string_view(folder.at("missing.vcf")))));
  const auto books = KRMacAddressBook::addressBookArrayWithProgressBlock([](double) {});
  ASSERT_TRUE(KRAddedBooks::remove(KRText(std::string_view(folder.at("family.vcf")))));
  ASSERT_TRUE(KRAddedBooks::remove(KRText(std::string_view(folder.at("missing.vcf")))));
  ASSERT_EQ(books.size(), 2U);
  EXPECT_EQ(books[0]->name(), "family.vcf"_kr);
  EXPECT_EQ(books[0]->allPersonsCount(), 1U);
  ASSERT_FALSE(books[1]->load());
  EXPECT_EQ(books[1]->load().error().code, KRErrorCode::NotFound);
}

TEST(KRMacAddressBook, ListsTheBooksOfTheLibraryBeforeThoseAtPaths) {
  const KRTestFolder folder;
  const KRString path = KRMacAddressBook::libraryPath();
  EXPECT_EQ(path, krConcat({KRHostInfo::dataFolder(), "/contacts.sqlite"}));
  ASSERT_TRUE(KRFile::createFolders(KRHostInfo::dataFolder(), true));
  const auto another = folder.at("another.sqlite");
  {
    const auto library = KRSQLiteLibrary::open(path, KRSQLiteLibrary::Mode::Create);
    ASSERT_TRUE(library);
    ASSERT_TRUE((*library)->addBook("Home"_kr));
    ASSERT_TRUE((*library)->addBook("Work"_kr));
    const auto second = KRSQLiteLibrary::open(KRText(std::string_view(another)), KRSQLiteLibrary::Mode::Create);
    ASSERT_TRUE(second);
    ASSERT_TRUE((*second)->addBook("Club"_kr));
  }
  ASSERT_TRUE(KRAddedBooks::add(KRText(std::string_view(another))));
  std::vector<std::string> names;
  for (const auto& book : KRMacAddressBook::addressBookArrayWithProgressBlock([](double) {})) {
    EXPECT_TRUE(book->load());
    EXPECT_EQ(book->kind(), "sqlite"_kr);
    names.emplace_back(book->name().view());
  }
  EXPECT_THAT(names, ElementsAre("Home", "Work", "Club"));
  ASSERT_TRUE(KRAddedBooks::remove(KRText(std::string_view(another))));
  ASSERT_TRUE(KRFile::remove(path));
}

}  // namespace
