#include "platform/KRSupportFuction.h"

#include <gtest/gtest.h>

#include "platform/KRLanguage.h"

namespace {

class KRSupportFuctionTest : public testing::Test {
 protected:
  ~KRSupportFuctionTest() override { KRLanguage::set(nullptr); }
};

TEST_F(KRSupportFuctionTest, FindsTextsInTheChosenLanguage) {
  KRLanguage::set("en"_kr);
  EXPECT_EQ(KRSupportFuction::loadString("KR_Language"_kr), "English");
  EXPECT_EQ(KRSupportFuction::loadString("KRIssueName_BlankName"_kr), "Blank name");
  EXPECT_EQ(KRSupportFuction::loadString("KRProperty_email"_kr), "E-mail");
  KRLanguage::set("fr_BE.UTF-8"_kr);
  EXPECT_EQ(KRSupportFuction::loadString("KR_Language"_kr), "French");
  EXPECT_EQ(KRSupportFuction::loadString("KRIssueName_BlankName"_kr), "Nom vide");
}

TEST_F(KRSupportFuctionTest, AnUnknownKeyIsItsOwnText) {
  EXPECT_EQ(KRSupportFuction::loadString("KR_No_Such_Key"_kr), "KR_No_Such_Key");
  EXPECT_EQ(KRSupportFuction::loadString(""_kr), "");
  EXPECT_FALSE(KRSupportFuction::loadString(""_kr).isNothing());
}

TEST_F(KRSupportFuctionTest, NoKeyIsTheKeyNil) {
  EXPECT_EQ(KRSupportFuction::loadString(nullptr), "nil");
}

}  // namespace
