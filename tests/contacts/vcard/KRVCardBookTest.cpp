#include "contacts/vcard/KRVCardBook.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <string>

#include "platform/KRFile.h"
#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/support/KRTestFolder.h"

namespace {

TEST(KRVCardBook, ReadsAFileIntoABookNamedAfterIt) {
  const KRTestFolder folder;
  const std::string path = folder.at("people.vcf");
  ASSERT_TRUE(KRFile::write(KRText(std::string_view(path)), krCard({"N:Lee;Ann"}) + krCard({"N:Ng;Bo"})).isOk());
  const auto book = KRVCardBook::open(KRText(std::string_view(path)));
  ASSERT_TRUE(book.isOk());
  EXPECT_EQ((*book)->name(), "people.vcf");
  EXPECT_EQ((*book)->ID(), KRVCardBook::IDForFile(KRText(std::string_view(path))));
  EXPECT_EQ((*book)->allPersonsCount(), 2U);
  EXPECT_EQ((*book)->allPersons().at(1)->addressBookID(), (*book)->ID());
}

TEST(KRVCardBook, HasOneIdentifierByAllLinksToItsFile) {
  const KRTestFolder folder;
  const KRTestFolder elsewhere;
  folder.put("people.vcf", "");
  std::filesystem::create_symlink(folder.at("people.vcf"), elsewhere.at("link.vcf"));
  const auto IDOf = [](const std::string& path) { return KRVCardBook::IDForFile(KRText(std::string_view(path))); };
  EXPECT_EQ(IDOf(elsewhere.at("link.vcf")), IDOf(folder.at("people.vcf")));
  EXPECT_EQ(IDOf(folder.at("./x/../people.vcf")), IDOf(folder.at("people.vcf")));
  EXPECT_EQ(IDOf("none.vcf"), IDOf((std::filesystem::current_path() / "none.vcf").string()));
}

TEST(KRVCardBook, ReadsSeveralFilesIntoOne) {
  const KRTestFolder folder;
  auto book = krMake<KRVCardBook>("b"_kr, "b"_kr);
  for (const char* name : {"one.vcf", "two.vcf"}) {
    const std::string path = folder.at(name);
    ASSERT_TRUE(KRFile::write(KRText(std::string_view(path)), krCard({std::string("N:") + name})).isOk());
    const auto summary = book->addFile(KRText(std::string_view(path)));
    ASSERT_TRUE(summary.isOk());
    EXPECT_EQ(summary->persons, 1U);
    EXPECT_FALSE(summary->isEmpty);
  }
  EXPECT_EQ(book->allPersons().at(1)->displayName(), "two.vcf");
}

TEST(KRVCardBook, TellsWhatCannotBeRead) {
  const KRTestFolder folder;
  const std::string missing = folder.at("missing.vcf");
  const auto none = KRVCardBook::open(KRText(std::string_view(missing)));
  ASSERT_FALSE(none.isOk());
  EXPECT_EQ(none.error().code, KRErrorCode::NotFound);
  EXPECT_NE(none.error().sentence.find("missing.vcf"), std::string::npos);
  const std::string itself = folder.at(".");
  EXPECT_EQ(KRVCardBook::open(KRText(std::string_view(itself))).error().code, KRErrorCode::IsFolder);
  EXPECT_EQ(KRVCardBook::open(KRText()).error().code, KRErrorCode::InvalidArgument);
}

TEST(KRVCardBook, TellsAnEmptyFileFromOneWithoutCards) {
  const auto summaryOf = [](std::string_view bytes) { return krReadCards(bytes).summary; };
  EXPECT_TRUE(summaryOf("").isEmpty);
  EXPECT_TRUE(summaryOf("\xEF\xBB\xBF\r\n ").isEmpty);
  EXPECT_FALSE(summaryOf("hello").isEmpty);
  EXPECT_EQ(summaryOf("hello").persons, 0U);
  EXPECT_EQ(summaryOf("BEGIN:VCARD\nN:a").lostCards, 1U);
}

}  // namespace
