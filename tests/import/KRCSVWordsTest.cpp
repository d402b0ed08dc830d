#include "import/KRCSVWords.h"

#include <gtest/gtest.h>

namespace {

TEST(KRCSVWords, BlanksAreTrimmedThoseThatDoNotBreakToo) {
  EXPECT_EQ(krCSVTrimmed(" \t\xC2\xA0 a b\xC2\xA0\r\n"), "a b");
  EXPECT_EQ(krCSVTrimmed("\xC2\xA0"), "");
  EXPECT_EQ(krCSVTrimmed(""), "");
  // The second byte of a no-break space ends other characters too.
  EXPECT_EQ(krCSVTrimmed("\xC3\xA0"), "\xC3\xA0");
}

TEST(KRCSVWords, WholeWordsAreFoundInAnyOrder) {
  const std::string told = krCSVSpacedWords("Lee, Ann\nLeeds.");
  EXPECT_TRUE(krCSVHoldsWords(told, "Ann Lee"));
  EXPECT_TRUE(krCSVHoldsWords(told, "Leeds"));
  EXPECT_TRUE(krCSVHoldsWords(told, ""));
  EXPECT_FALSE(krCSVHoldsWords(told, "Ann Le"));
  EXPECT_FALSE(krCSVHoldsWords(told, "nn"));
}

TEST(KRCSVWords, NumbersWithAnExponentAreSpoiled) {
  for (const char* text : {"4.91512E+11", "4,9E+11", "4E+1"}) EXPECT_TRUE(krCSVIsSpoiledNumber(text)) << text;
  for (const char* text : {"", "E+11", "4.9E+", "4.9E+1x", "+4E+11", "49151"}) {
    EXPECT_FALSE(krCSVIsSpoiledNumber(text)) << text;
  }
}

}  // namespace
