#include "contacts/stores/KRAddedBooks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/KRHostInfo.h"
#include "tests/support/KRTestFolder.h"

namespace {

/// A list of its own for each test.
class KRAddedBooksTest : public testing::Test {
 protected:
  KRAddedBooksTest() {
    const char* configuration = getenv("XDG_CONFIG_HOME");
    before_ = configuration == nullptr ? "" : configuration;
    setenv("XDG_CONFIG_HOME", folder_.at("config").c_str(), 1);
    KRHostInfo::setIdentifier("org.example.books"_kr);
  }
  ~KRAddedBooksTest() override {
    setenv("XDG_CONFIG_HOME", before_.c_str(), 1);
    KRHostInfo::setIdentifier({});
  }

  KRTestFolder folder_;

 private:
  std::string before_;
};

TEST_F(KRAddedBooksTest, KeepsPathsInTheOrderInWhichTheyWereAdded) {
  EXPECT_TRUE(KRAddedBooks::paths().empty());
  EXPECT_TRUE(KRAddedBooks::add("/b/second.vcf").value());
  EXPECT_TRUE(KRAddedBooks::add("/a/first").value());
  EXPECT_FALSE(KRAddedBooks::add("/b/second.vcf").value());
  EXPECT_THAT(KRAddedBooks::paths(), testing::ElementsAre("/b/second.vcf"_kr, "/a/first"_kr));
  EXPECT_EQ(KRAddedBooks::listPath(), folder_.at("config/org.example.books.books.plist").c_str());
  EXPECT_TRUE(KRTestFolder::contentOf(folder_.at("config/org.example.books.books.plist")).starts_with("bplist00"));
}

TEST_F(KRAddedBooksTest, MakesPathsAbsolute) {
  EXPECT_TRUE(KRAddedBooks::add("some/../book.vcf").value());
  EXPECT_TRUE(KRAddedBooks::add("/a/folder/").value());
  const std::string here = std::filesystem::current_path().string();
  EXPECT_THAT(KRAddedBooks::paths(), testing::ElementsAre(KRString(here + "/book.vcf"), "/a/folder"_kr));
  EXPECT_TRUE(KRAddedBooks::remove("./book.vcf").value());
  EXPECT_TRUE(KRAddedBooks::remove("/a/folder").value());
  EXPECT_TRUE(KRAddedBooks::paths().empty());
}

TEST_F(KRAddedBooksTest, AFileIsOneBookByAllItsNames) {
  namespace fs = std::filesystem;
  folder_.put("book.vcf", "");
  fs::create_directory(folder_.at("folder"));
  fs::create_symlink(folder_.at("book.vcf"), folder_.at("link.vcf"));
  fs::create_hard_link(folder_.at("book.vcf"), folder_.at("hard.vcf"));
  fs::create_symlink(folder_.at("folder"), folder_.at("other"));
  const auto add = [&](const std::string& name) {
    const std::string path = folder_.at(name);
    return KRAddedBooks::add(KRText(std::string_view(path))).value();
  };
  EXPECT_TRUE(add("link.vcf"));
  EXPECT_TRUE(add("folder"));
  for (const char* name : {"book.vcf", "hard.vcf", "link.vcf", "other", "folder/../book.vcf"})
    EXPECT_FALSE(add(name)) << name;
  EXPECT_THAT(KRAddedBooks::paths(),
              testing::ElementsAre(KRString(folder_.at("link.vcf")), KRString(folder_.at("folder"))));
  const std::string hard = folder_.at("hard.vcf");
  EXPECT_TRUE(KRAddedBooks::remove(KRText(std::string_view(hard))).value());
  EXPECT_THAT(KRAddedBooks::paths(), testing::ElementsAre(KRString(folder_.at("folder"))));
}

TEST_F(KRAddedBooksTest, FilesThatBecameOneAreListedOnce) {
  folder_.put("a.vcf", "");
  folder_.put("b.vcf", "");
  for (const char* name : {"a.vcf", "b.vcf"}) {
    const std::string path = folder_.at(name);
    ASSERT_TRUE(KRAddedBooks::add(KRText(std::string_view(path))).value());
  }
  EXPECT_EQ(KRAddedBooks().sources().size(), 2U);
  std::filesystem::remove(folder_.at("b.vcf"));
  std::filesystem::create_symlink("a.vcf", folder_.at("b.vcf"));
  EXPECT_EQ(KRAddedBooks().sources().size(), 1U);
  EXPECT_EQ(KRAddedBooks::paths().size(), 2U);
}

TEST_F(KRAddedBooksTest, ForgettingTouchesNothingElse) {
  folder_.put("book.vcf", "content");
  const std::string path = folder_.at("book.vcf");
  ASSERT_TRUE(KRAddedBooks::add(KRText(std::string_view(path))));
  ASSERT_TRUE(KRAddedBooks::add("/another"));
  EXPECT_TRUE(KRAddedBooks::remove(KRText(std::string_view(path))).value());
  EXPECT_FALSE(KRAddedBooks::remove(KRText(std::string_view(path))).value());
  EXPECT_THAT(KRAddedBooks::paths(), testing::ElementsAre("/another"_kr));
  EXPECT_EQ(folder_.content("book.vcf"), "content");
}

TEST_F(KRAddedBooksTest, NoPathIsAnError) {
  for (const KRText path : {KRText(), KRText("")}) {
    const KRResult<bool> added = KRAddedBooks::add(path);
    ASSERT_FALSE(added);
    EXPECT_EQ(added.error().code, KRErrorCode::InvalidArgument);
    EXPECT_FALSE(KRAddedBooks::remove(path).value());
  }
}

TEST_F(KRAddedBooksTest, AListThatCannotBeWrittenSaysSoAndAddsNothing) {
  folder_.put("config", "a file where the folder would be");
  EXPECT_FALSE(KRAddedBooks::add("/a"));
  EXPECT_TRUE(KRAddedBooks::paths().empty());
}

TEST_F(KRAddedBooksTest, KnowsOneBookForEachPath) {
  ASSERT_TRUE(KRAddedBooks::add("/no/such/file.vcf"));
  const auto sources = KRAddedBooks().sources();
  ASSERT_EQ(sources.size(), 1U);
  EXPECT_EQ(sources[0].name, "file.vcf"_kr);
  EXPECT_EQ(sources[0].place, "/no/such/file.vcf"_kr);
  EXPECT_FALSE(sources[0].open());
}

TEST_F(KRAddedBooksTest, HidingTheOnlyBookAtAPathForgetsThePath) {
  ASSERT_TRUE(KRAddedBooks::add("/no/such/file.vcf"));
  EXPECT_TRUE(KRAddedBooks::hide(KRAddedBooks().sources().at(0).ID).value());
  EXPECT_TRUE(KRAddedBooks::paths().empty());
  EXPECT_TRUE(KRAddedBooks::hiddenIDs().empty());
}

TEST_F(KRAddedBooksTest, AnyOtherBookIsHiddenUntilItIsShownAgain) {
  EXPECT_TRUE(KRAddedBooks::hide("desktop:1").value());
  EXPECT_FALSE(KRAddedBooks::hide("desktop:1").value());
  EXPECT_FALSE(KRAddedBooks::hide({}).value());
  EXPECT_THAT(KRAddedBooks::hiddenIDs(), testing::ElementsAre("desktop:1"_kr));
  EXPECT_TRUE(KRAddedBooks::show("desktop:1").value());
  EXPECT_FALSE(KRAddedBooks::show("desktop:1").value());
  EXPECT_TRUE(KRAddedBooks::hiddenIDs().empty());
}

}  // namespace
