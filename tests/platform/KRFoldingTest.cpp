#include "platform/KRFolding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

TEST(KRFolding, TakesCaseMarksSpacesAndPunctuationOut) {
  EXPECT_EQ(krFolded("Ann-Marie  O'Neill, Jr."), "annmarieoneilljr");
  EXPECT_EQ(krFolded("Zo\u00EB"), "zoe");
  EXPECT_EQ(krFolded("Zoe\u0308"), "zoe");
  EXPECT_EQ(krFolded("STRAUSS"), krFolded("Strau\u00DF"));
  EXPECT_EQ(krFolded("\u03A3\u039F\u03A6\u0399\u0391"), krFolded("\u03C3\u03BF\u03C6\u03AF\u03B1"));
  EXPECT_EQ(krFolded("\u738B\u3000\u5C0F\u3001\u660E"), "\u738B\u5C0F\u660E");
  EXPECT_EQ(krFolded("no\u00A0break\tor\u200Bseen\u200E"), "nobreakorseen");
  EXPECT_EQ(krFolded(" .-, "), "");
}

TEST(KRFolding, KeepsLettersDigitsAndSigns) {
  EXPECT_EQ(krFolded("a1+b=2$"), "a1+b=2$");
  EXPECT_NE(krFolded("Ann"), krFolded("Anne"));
  EXPECT_EQ(krFolded("\U0001F600"), "\U0001F600");
}

TEST(KRFolding, TakesOnlyOutWhatIsAskedFor) {
  constexpr const char* kText = "\u00C9 -a";
  EXPECT_EQ(krFolded(kText, 0), "E\u0301 -a");
  EXPECT_EQ(krFolded(kText, KRFold::Case), "e\u0301 -a");
  EXPECT_EQ(krFolded(kText, KRFold::Marks), "E -a");
  EXPECT_EQ(krFolded(kText, KRFold::Spaces), "E\u0301-a");
  EXPECT_EQ(krFolded(kText, KRFold::Punctuation), "E\u0301 a");
  EXPECT_EQ(krFolded("B -a", KRFold::Case), "b -a");
  EXPECT_EQ(krFolded("B -a", KRFold::Punctuation), "B a");
}

TEST(KRFolding, KeepsNothingApartFromEmpty) {
  EXPECT_TRUE(krFolded({}).isNothing());
  EXPECT_FALSE(krFolded("").isNothing());
  EXPECT_TRUE(krDigitsOf({}).isNothing());
  EXPECT_EQ(krDigitsOf("none"), "");
}

TEST(KRFolding, ReadsDigitsOfAnyScript) {
  EXPECT_EQ(krDigitsOf("+49 (0)30-12 ext. 4"),
            "4903012"
            "4");
  EXPECT_EQ(krDigitsOf("\uFF15\uFF15 \u0663\u096A"), "5534");
}

TEST(KRFolding, ChangesNothingTheSecondTime) {
  static constexpr const char* kPieces[] = {"a",      "Z",      " ",      "-", "\u00E9", "\u0301",
                                            "\u00DF", "\u738B", "\u3000", "'", "\u0130"};
  std::mt19937 random(4);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (auto i = random() % 12; i > 0; --i) text += kPieces[random() % std::size(kPieces)];
    const KRString once = krFolded(KRText(std::string_view(text)));
    EXPECT_EQ(krFolded(once), once) << text;
  }
}

}  // namespace
