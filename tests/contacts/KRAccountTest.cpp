#include "contacts/KRAccount.h"

#include <gtest/gtest.h>

namespace {

TEST(KRAccount, HoldsNothingUntilItIsSet) {
  const auto account = krMake<KRAccount>();
  EXPECT_FALSE(account->accountType());
  EXPECT_FALSE(account->addressBook());
  EXPECT_TRUE(account->userName().isNothing());
  EXPECT_TRUE(account->connectInfo().isNothing());
  EXPECT_TRUE(account->displayName().isNothing());
}

TEST(KRAccount, KeepsWhatIsSet) {
  const auto account = krMake<KRAccount>();
  account->setAccountType(KRRef<KRAcountType>(KRAcountType::typeWithName(KRAccountTypeTwitter)));
  account->setUserName("ann"_kr);
  account->setConnectInfo("anything"_kr);
  account->setDisplayName("Ann"_kr);
  account->connect();
  EXPECT_EQ(account->accountType()->name(), "Twitter"_kr);
  EXPECT_EQ(account->userName(), "ann"_kr);
  EXPECT_EQ(account->connectInfo().text(), "anything"_kr);
  EXPECT_EQ(account->displayName(), "Ann"_kr);
  EXPECT_FALSE(account->addressBook());
}

TEST(KRAccount, OnlyOneUserNameIsInvalid) {
  struct Row {
    KRString userName;
    bool valid;
  };
  for (const Row& row :
       {Row{"wangwu"_kr, false}, Row{"Wangwu"_kr, true}, Row{"wangwu "_kr, true}, Row{""_kr, true}, Row{{}, true}}) {
    const auto account = krMake<KRAccount>();
    account->setUserName(row.userName);
    EXPECT_EQ(account->valid(), row.valid) << row.userName.view();
  }
}

}  // namespace
