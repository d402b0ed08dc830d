#include "contacts/vcard/KRVCardEntryMatch.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

/// The old text's letters that the new one's go on; letters that differ in case are the same value only.
std::string match(const std::string& old, const std::string& made) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  std::string shown;
  for (const auto& place : krMatchEntries(old.size(), made.size(), [&](size_t a, size_t b, int stage) {
         return stage == 0 ? old[a] == made[b] : lower(old[a]) == lower(made[b]);
       })) {
    shown.push_back(place ? old[*place] : '-');
  }
  return shown;
}

TEST(KRVCardEntryMatch, FindsWhatStaysFirst) {
  EXPECT_EQ(match("abc", "abc"), "abc");
  EXPECT_EQ(match("abc", "ac"), "ac");
  EXPECT_EQ(match("abc", "bcd"), "bc-");
  EXPECT_EQ(match("", "ab"), "--");
  EXPECT_EQ(match("ab", ""), "");
}

TEST(KRVCardEntryMatch, ThenTheSameValueThenWhatIsLeftInOrder) {
  EXPECT_EQ(match("abc", "aBc"), "abc");
  EXPECT_EQ(match("axBc", "abc"), "aBc");
  EXPECT_EQ(match("xy", "pqr"), "xy-");
  EXPECT_EQ(match("axb", "aPQb"), "ax-b");
}

TEST(KRVCardEntryMatch, NeverCrossesAndUsesEachOnce) {
  std::mt19937 random(1);
  for (int i = 0; i < 500; ++i) {
    std::string texts[2];
    for (std::string& text : texts) {
      for (size_t count = random() % 12; count > 0; --count) text.push_back("abcdABCD"[random() % 8]);
    }
    size_t from = 0;
    for (const auto& place : krMatchEntries(texts[0].size(), texts[1].size(),
                                            [&](size_t a, size_t b, int) { return texts[0][a] == texts[1][b]; })) {
      if (!place) continue;
      ASSERT_GE(*place, from);
      ASSERT_LT(*place, texts[0].size());
      from = *place + 1;
    }
  }
}

TEST(KRVCardEntryMatch, TakesTimeInLineWithTheEntriesWhereTheyAreVeryMany) {
  size_t asked = 0;
  constexpr size_t kMany = 20000;
  krMatchEntries(kMany, kMany, [&](size_t a, size_t b, int) {
    ++asked;
    return a == b && a != 0 && a != kMany - 1;
  });
  EXPECT_LT(asked, 10 * kMany);
}

}  // namespace
