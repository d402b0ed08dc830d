#include "platform/KRHostInfo.h"

#include <gtest/gtest.h>

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

}  // namespace
