#include "platform/KRHostInfo.h"

#include <gtest/gtest.h>

#include "platform/KRLocations.h"

namespace {

TEST(KRHostInfo, TheIdentifierIsTheExecutablesNameUntilTheHostSetsOne) {
  EXPECT_EQ(KRHostInfo::identifier(), "tests_platform");
  KRHostInfo::setIdentifier("org.example.contacts"_kr);
  EXPECT_EQ(KRHostInfo::identifier(), "org.example.contacts");
  KRHostInfo::setIdentifier(""_kr);
  EXPECT_EQ(KRHostInfo::identifier(), "tests_platform");
  KRHostInfo::setIdentifier(nullptr);
  EXPECT_EQ(KRHostInfo::identifier(), "tests_platform");
}

TEST(KRHostInfo, TheIdentifierNamesOneFolderWhateverItHolds) {
  KRHostInfo::setIdentifier("../a/b"_kr);
  EXPECT_EQ(KRHostInfo::fileName(), ".._a_b");
  EXPECT_EQ(KRHostInfo::dataFolder(), krConcat({KRLocations::applicationSupportFolder(), "/.._a_b"}));
  KRHostInfo::setIdentifier(nullptr);
  EXPECT_EQ(KRHostInfo::fileName(), "tests_platform");
}

}  // namespace
