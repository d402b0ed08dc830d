#include "contacts/KRAcountType.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

TEST(KRAcountType, ThereAreSixKindsInAFixedOrderEachWithItsIcon) {
  struct Row {
    const char* name;
    KRString constant;
    KRString icon;
  };
  const Row rows[] = {
      {"Google", KRAccountTypeGoogle, "pic_G"_kr},     {"Facebook", KRAccountTypeFacebook, "pic_F"_kr},
      {"Twitter", KRAccountTypeTwitter, "pic_T"_kr},   {"LinkedIn", KRAccountTypeLinkedIn, "pic_L"_kr},
      {"Exchange", KRAccountTypeExchange, "pic_E"_kr}, {"Outlook", KRAccountTypeOutlook, "pic_O"_kr},
  };
  const auto& types = KRAcountType::supportAddressBoolType();
  ASSERT_EQ(types.size(), std::size(rows));
  std::vector<std::string> icons;
  for (size_t i = 0; i < types.size(); ++i) {
    EXPECT_EQ(types[i]->name(), rows[i].name);
    EXPECT_EQ(rows[i].constant, rows[i].name);
    EXPECT_TRUE(types[i]->displayName().isNothing());
    ASSERT_TRUE(types[i]->thumbnail()) << rows[i].name;
    EXPECT_TRUE(types[i]->thumbnail()->bytes().starts_with("\x89PNG"));
    EXPECT_EQ(types[i]->thumbnail(), KRAcountType::loadImageByName(rows[i].icon));
    EXPECT_EQ(KRAcountType::typeWithName(rows[i].constant), types[i].get());
    icons.emplace_back(types[i]->thumbnail()->bytes());
  }
  std::sort(icons.begin(), icons.end());
  EXPECT_EQ(std::unique(icons.begin(), icons.end()), icons.end());
  EXPECT_EQ(KRAcountType::addressBoolTypeDictionary().size(), types.size());
}

TEST(KRAcountType, NamesMatchExactly) {
  EXPECT_EQ(KRAcountType::typeWithName("google"_kr), nullptr);
  EXPECT_EQ(KRAcountType::typeWithName(" Google"_kr), nullptr);
  EXPECT_EQ(KRAcountType::typeWithName(""_kr), nullptr);
  EXPECT_EQ(KRAcountType::typeWithName({}), nullptr);
}

TEST(KRAcountType, AnImageThatThereIsNotIsNothing) {
  EXPECT_FALSE(KRAcountType::loadImageByName("pic_Z"_kr));
  EXPECT_FALSE(KRAcountType::loadImageByName({}));
}

TEST(KRAcountType, EveryThreadGetsTheSameList) {
  std::vector<const void*> seen(4);
  std::vector<std::thread> threads;
  for (const void*& each : seen) threads.emplace_back([&each] { each = &KRAcountType::supportAddressBoolType(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(seen, testing::Each(&KRAcountType::supportAddressBoolType()));
}

}  // namespace
