#include "platform/KRLatinSpacing.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// The text with "|" where a space is set.
std::u32string spaced(std::u32string_view text) {
  std::u32string result;
  KRLatinSpacing spacing;
  for (const char32_t character : text) {
    if (spacing.before(krLatinTraitsOf(character))) result += U'|';
    result += character;
  }
  return result;
}

TEST(KRLatinSpacing, SetsIdeographsOffFromLettersAndFromEachOther) {
  EXPECT_EQ(spaced(U"Lee王小ab"), U"Lee|王|小|ab");
  EXPECT_EQ(spaced(U"王 小"), U"王 小");
  EXPECT_EQ(spaced(U"5王5"), U"5王5");
}

TEST(KRLatinSpacing, SetsLettersOffFromWhatEndsBeforeThemAndWhatOpensBehindThem) {
  EXPECT_EQ(spaced(U"Smith,Ann"), U"Smith,|Ann");
  EXPECT_EQ(spaced(U"a(b)c"), U"a|(b)|c");
  EXPECT_EQ(spaced(U"a，b"), U"a，|b");
  EXPECT_EQ(spaced(U"1,2"), U"1,2");
}

TEST(KRLatinSpacing, TakesMarksForPartsOfTheirLetters) {
  EXPECT_EQ(spaced(U"e\u0301("), U"e\u0301|(");
  EXPECT_EQ(spaced(U"5\u0301("), U"5\u0301(");
}

}  // namespace
