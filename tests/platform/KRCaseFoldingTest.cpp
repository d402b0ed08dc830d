#include "platform/KRCaseFolding.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

int sign(int number) {
  return (number > 0) - (number < 0);
}

TEST(KRCaseFolding, OrdersRegardlessOfCase) {
  const struct {
    KRText a;
    KRText b;
    int order;
  } kRows[] = {
      {"b", "A", 1}, {"a", "A", 0},       {"ANN", "ann", 0},  {"ann", "anna", -1},     {"", "a", -1},
      {"É", "é", 0}, {"é", "f", 1},       {"Σ", "ς", 0},      {"ß", "ss", 1},          {"ẞ", "ß", 0},
      {"Ж", "ж", 0}, {"_", "a", -1},      {"_", "A", -1},     {"I", "ı", -1},          {"K", "k", 0},
      {"𐐀", "𐐨", 0}, {"\uFFFD", "𐐀", -1}, {KRText(), "", -1}, {KRText(), KRText(), 0}, {"a b", "ab", -1},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(sign(krCompareCaseless(row.a, row.b)), row.order) << row.a.view() << " " << row.b.view();
    EXPECT_EQ(sign(krCompareCaseless(row.b, row.a)), -row.order) << row.b.view() << " " << row.a.view();
  }
}

TEST(KRCaseFolding, IsATotalOrderAndItsKeysSortTheSameWay) {
  std::mt19937 random(7);
  constexpr std::u32string_view kLetters = U"aAbB_zZ0 éÉßẞΣσςІіıIİKk\uFB00\uFFFD𐐀𐐨王";
  std::vector<KRString> texts;
  for (int i = 0; i < 150; ++i) {
    std::u32string text;
    for (size_t length = random() % 4; length > 0; --length) text += kLetters[random() % kLetters.size()];
    std::string utf8;
    for (const char32_t point : text) {
      char bytes[4];
      int32_t size = 0;
      U8_APPEND_UNSAFE(bytes, size, static_cast<UChar32>(point));
      utf8.append(bytes, static_cast<size_t>(size));
    }
    texts.emplace_back(utf8);
  }
  for (const KRString& a : texts) {
    for (const KRString& b : texts) {
      const int order = sign(krCompareCaseless(a, b));
      EXPECT_EQ(order, -sign(krCompareCaseless(b, a)));
      EXPECT_EQ(order, sign(krCaselessKey(a).view().compare(krCaselessKey(b).view())));
      for (const KRString& c : texts) {
        if (order <= 0 && krCompareCaseless(b, c) <= 0) {
          ASSERT_LE(krCompareCaseless(a, c), 0);
        }
      }
    }
  }
}

TEST(KRCaseFolding, EveryCharacterEqualsItsOwnCases) {
  size_t pairs = 0;
  for (UChar32 point = 0; point <= 0x1FFFF; ++point) {
    if (U_IS_SURROGATE(point)) continue;
    const UChar32 folded = u_foldCase(point, U_FOLD_CASE_DEFAULT);
    if (folded == point) continue;
    char one[4];
    char other[4];
    int32_t size = 0;
    int32_t otherSize = 0;
    U8_APPEND_UNSAFE(one, size, point);
    U8_APPEND_UNSAFE(other, otherSize, folded);
    ++pairs;
    EXPECT_EQ(krCompareCaseless(KRText(one, static_cast<size_t>(size)), KRText(other, static_cast<size_t>(otherSize))),
              0);
  }
  EXPECT_GT(pairs, 1400U);
}

TEST(KRCaseFolding, ChangesTheCaseOfWholeTexts) {
  EXPECT_EQ(krUpper("Straße, é ŉ 王 z{"), "STRASSE, É ʼN 王 Z{");
  EXPECT_EQ(krLower("ÀB İ ΟΔΟΣ Z["), "àb i̇ οδος z[");
  EXPECT_EQ(krUpper("abc @`{ z"), "ABC @`{ Z");
  EXPECT_EQ(krLower("ABC @[` Z"), "abc @[` z");
  EXPECT_EQ(krUpper(""), "");
  EXPECT_TRUE(krUpper(KRText()).isNothing());
  EXPECT_TRUE(krLower(KRText()).isNothing());
  EXPECT_TRUE(krCaselessKey(KRText()).isNothing());
  EXPECT_FALSE(krCaselessKey("").isNothing());
}

TEST(KRCaseFolding, ATextThatGrowsMuchIsWhole) {
  std::string small;
  std::string large;
  for (int i = 0; i < 1000; ++i) {
    small += "\u0390";
    large += "\u0399\u0308\u0301";
  }
  EXPECT_TRUE(krUpper(KRString(small)).view() == large);
}

}  // namespace
