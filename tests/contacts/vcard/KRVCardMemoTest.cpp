#include "contacts/vcard/KRVCardMemo.h"

#include <gtest/gtest.h>

#include <string>

TEST(KRVCardMemo, MakesOnceWhatIsAskedForTwice) {
  KRVCardMemo<std::string> memo;
  int made = 0;
  for (const char* text : {"home", "work", "home", "", "work", ""}) {
    EXPECT_EQ(memo.of(text, [&] { return ++made, std::string(text) + "!"; }), std::string(text) + "!");
  }
  EXPECT_EQ(made, 3);
}

TEST(KRVCardMemo, NeverGrowsBeyondItsBounds) {
  KRVCardMemo<size_t> memo;
  for (size_t i = 0; i < 3 * KRVCardMemo<size_t>::kMost; ++i) {
    for (const std::string& text : {std::to_string(i), std::string(KRVCardMemo<size_t>::kLongest + 1 + i, 'x')}) {
      ASSERT_EQ(memo.of(text, [&] { return text.size(); }), text.size());
    }
    ASSERT_LE(memo.count(), KRVCardMemo<size_t>::kMost);
  }
}
