#include "contacts/KRAccountManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

KRRef<KRAcountType> outlook() {
  return KRRef<KRAcountType>(KRAcountType::typeWithName(KRAccountTypeOutlook));
}

TEST(KRAccountManager, StartsWithThreeSamplesOfWhichTheThirdIsInvalid) {
  const auto manager = krMake<KRAccountManager>();
  ASSERT_EQ(manager->accountCount(), 3U);
  EXPECT_EQ(manager->accountAtIndex(0)->userName(), "zhangsan"_kr);
  EXPECT_EQ(manager->accountAtIndex(1)->userName(), "lisi"_kr);
  EXPECT_EQ(manager->accountAtIndex(2)->userName(), "wangwu"_kr);
  EXPECT_EQ(manager->accountAtIndex(0)->accountType()->name(), "Google"_kr);
  EXPECT_EQ(manager->accountAtIndex(1)->accountType()->name(), "Facebook"_kr);
  EXPECT_EQ(manager->accountAtIndex(2)->accountType()->name(), "Google"_kr);
  EXPECT_TRUE(manager->accountAtIndex(0)->valid());
  EXPECT_TRUE(manager->accountAtIndex(1)->valid());
  EXPECT_FALSE(manager->accountAtIndex(2)->valid());
  EXPECT_EQ(manager->accountAtIndex(3), nullptr);
}

TEST(KRAccountManager, AppendsAccountsAndKeepsNoPassword) {
  const auto manager = krMake<KRAccountManager>();
  KRAccount* account = manager->addAcountByUserName("ann"_kr, "secret"_kr, outlook());
  EXPECT_EQ(manager->accountCount(), 4U);
  EXPECT_EQ(manager->accountAtIndex(3), account);
  EXPECT_EQ(account->userName(), "ann"_kr);
  EXPECT_EQ(account->accountType(), outlook());
  EXPECT_TRUE(account->connectInfo().isNothing());
  EXPECT_TRUE(account->displayName().isNothing());
  EXPECT_EQ(manager->addAcountByUserName({}, {}, {})->accountType(), nullptr);
}

TEST(KRAccountManager, RemovesOnlyWhatIsInTheList) {
  const auto manager = krMake<KRAccountManager>();
  const auto stranger = krMake<KRAccount>();
  stranger->setUserName("lisi"_kr);
  manager->removeAccount(stranger.get());
  manager->removeAccount(nullptr);
  EXPECT_EQ(manager->accountCount(), 3U);
  manager->removeAccount(manager->accountAtIndex(1));
  ASSERT_EQ(manager->accountCount(), 2U);
  EXPECT_EQ(manager->accountAtIndex(1)->userName(), "wangwu"_kr);
  EXPECT_EQ(manager->accountArrray().count(), 2U);
}

TEST(KRAccountManager, KnowsNoAccountOfABook) {
  const auto book = krMake<KRAddressBook>("b"_kr, "Book"_kr);
  EXPECT_EQ(krMake<KRAccountManager>()->accountByAddressBook(book.get()), nullptr);
  EXPECT_EQ(krMake<KRAccountManager>()->accountByAddressBook(nullptr), nullptr);
}

TEST(KRAccountManager, ThereIsOneOfTheProcess) {
  EXPECT_EQ(KRAccountManager::ShareAccountManager(), KRAccountManager::ShareAccountManager());
}

}  // namespace
