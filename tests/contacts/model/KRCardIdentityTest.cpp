#include "contacts/model/KRCardIdentity.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr std::string_view kCard = "BEGIN:VCARD\nN:;Ann;;;\nNOTE:Likes tea\nEND:VCARD";

}  // namespace

TEST(KRCardIdentity, IsTheSameInEveryProcess) {
  EXPECT_EQ(krCardIdentity(kCard), krCardIdentity(kCard));
  EXPECT_EQ(krCardIdentity(kCard).size(), 32U);
  EXPECT_EQ(krCardIdentity(kCard).view(), "191f4c2690cb89588a8f842b9a4ba83f");
}

TEST(KRCardIdentity, IgnoresLineEndsFoldsAndEmptyLines) {
  for (const std::string_view same : {"BEGIN:VCARD\r\nN:;Ann;;;\r\nNOTE:Likes tea\r\nEND:VCARD\r\n",
                                      "BEGIN:VCARD\nN:;An\n n;;;\nNOTE:Likes\n  tea\nEND:VCARD",
                                      "BEGIN:VCARD\rN:;Ann;;;\rNOTE:Likes tea\rEND:VCARD\r",
                                      "BEGIN:VCARD\n\nN:;Ann;;;\n\n\nNOTE:Likes tea\n\nEND:VCARD\n\n",
                                      "\r\nBEGIN:VCARD\r\nN:;Ann;;;\r\nNOTE:Likes tea\r\n\nEND:VCARD"}) {
    EXPECT_EQ(krCardIdentity(same), krCardIdentity(kCard)) << same;
  }
}

TEST(KRCardIdentity, TellsTextsApart) {
  for (const std::string_view other :
       {"BEGIN:VCARD\nN:;Anne;;;\nNOTE:Likes tea\nEND:VCARD", "BEGIN:VCARD\nNOTE:Likes tea\nN:;Ann;;;\nEND:VCARD",
        "BEGIN:VCARD\nN:;Ann;;;\nNOTE:Likes  tea\nEND:VCARD", "BEGIN:VCARD\nn:;Ann;;;\nNOTE:Likes tea\nEND:VCARD",
        ""}) {
    EXPECT_NE(krCardIdentity(other), krCardIdentity(kCard)) << other;
  }
}

TEST(KRCardIdentity, OfLongCardsIsFixedToo) {
  // Around the size from which a card does not fit into the room on the stack.
  const auto identity = [](size_t size) {
    return std::string(krCardIdentity("BEGIN:VCARD\r\nNOTE:" + std::string(size, 'x') + "\r\nEND:VCARD").view());
  };
  EXPECT_EQ(identity(2009), "968d01f7297a764a9e7223d2c6f380c7");
  EXPECT_EQ(identity(2010), "59221a93d61a03725455932f757deee7");
  EXPECT_EQ(identity(2011), "402cea6c3e8691376f84773fe2db697b");
  EXPECT_EQ(identity(70000), "d60a56dec04d06678c81044063cbce1f");
}

TEST(KRCardIdentity, DoesNotDependOnWhereLinesAreFolded) {
  // Control characters that end no line, wherever they stand in a word, are text like any other.
  std::string line = "NOTE:";
  for (int i = 0; i < 40; ++i) line += i % 3 == 0 ? "\x01\t" : i % 3 == 1 ? "\x1F\xC3\xA9" : "a b";
  const KRString expected = krCardIdentity(line + "\nEND:VCARD");
  for (size_t width = 1; width < 60; ++width) {
    std::string folded;
    for (size_t at = 0; at < line.size(); at += width) {
      folded += (at == 0 ? "" : width % 2 == 0 ? "\r\n " : "\n\t") + line.substr(at, width);
    }
    ASSERT_EQ(krCardIdentity(folded + "\r\nEND:VCARD\r\n"), expected) << width;
  }
  for (size_t at = 5; at < line.size(); ++at) {
    std::string other = line;
    other[at] = static_cast<char>(other[at] ^ 1);
    ASSERT_NE(krCardIdentity(other + "\nEND:VCARD"), expected) << at;
  }
}

TEST(KRCardIdentity, OfManyCardsIsThatOfEach) {
  // More than are read at once, of sizes that end at different times, some too long for the room on the stack.
  std::vector<std::string> texts;
  for (size_t i = 0; i < 70; ++i)
    texts.push_back("N:;" + std::string(i * 37 % 61 * (i % 23 == 0 ? 90 : 7), 'x') + "\n");
  texts.push_back("");
  for (size_t count = 0; count <= texts.size(); ++count) {
    const std::vector<std::string_view> cards(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(count));
    std::vector<KRCardIdentity> identities(count);
    krCardIdentities(cards, identities);
    for (size_t i = 0; i < count; ++i) {
      ASSERT_EQ(identities[i].text(), krCardIdentity(cards[i]).text()) << count << " " << i;
    }
  }
}
