#include "contacts/model/KRCardUnfolding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

namespace {

/// In room of exactly the size that is asked for, from a card that nothing may be read behind.
std::string unfolded(KRCardUnfolder unfold, const std::string& card) {
  const auto exact = std::make_unique<char[]>(card.size());
  std::copy(card.begin(), card.end(), exact.get());
  std::string room(card.size() + kKRUnfoldingRoom, '\x55');
  room.resize(unfold({exact.get(), card.size()}, room.data()) + sizeof(uint64_t));
  EXPECT_EQ(room.substr(room.size() - sizeof(uint64_t)), std::string(sizeof(uint64_t), '\0'));
  return room.substr(0, room.size() - sizeof(uint64_t));
}

/// The same, byte after byte.
std::string slowly(std::string_view card) {
  std::string text;
  for (size_t at = 0; at < card.size();) {
    if (card[at] != '\r' && card[at] != '\n') {
      text.push_back(card[at++]);
      continue;
    }
    while (at < card.size() && card[at] == '\r') ++at;
    if (at < card.size() && card[at] == '\n') ++at;
    if (at < card.size() && (card[at] == ' ' || card[at] == '\t')) {
      ++at;
    } else if (!text.empty() && text.back() != '\n') {
      text.push_back('\n');
    }
  }
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

TEST(KRCardUnfolding, UndoesFoldsAndLineEnds) {
  const std::string expected = "BEGIN:VCARD\nN:;Ann;;;\nNOTE:Likes tea\nEND:VCARD";
  for (const KRCardUnfolder unfold : krCardUnfolders()) {
    for (const char* card : {"BEGIN:VCARD\r\nN:;Ann;;;\r\nNOTE:Likes tea\r\nEND:VCARD\r\n",
                             "BEGIN:VCARD\nN:;An\n n;;;\nNOTE:Li\n\tkes\r\n  tea\nEND:VCARD",
                             "BEGIN:VCARD\rN:;Ann;;;\rNOTE:Likes tea\rEND:VCARD\r",
                             "\r\nBEGIN:VCARD\n\nN:;Ann;;;\r\r\nNOTE:Likes tea\n\nEND:VCARD\n\n"}) {
      EXPECT_EQ(unfolded(unfold, card), expected) << card;
    }
    EXPECT_EQ(unfolded(unfold, ""), "");
    EXPECT_EQ(unfolded(unfold, "\r\n"), "");
    EXPECT_EQ(unfolded(unfold, " \n"), " ");
  }
}

TEST(KRCardUnfolding, IsTheSameInEveryWay) {
  std::mt19937 random(1);
  for (int round = 0; round < 20000; ++round) {
    const std::string_view kinds[] = {"\r\n", "\n", "\r", "\r\n ", "\n\t", " ", "\t", "x", "\x01", "\xC3\xA9"};
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    std::string card;
    // Rounds in which few lines end, and such in which all that can stand next to each other does.
    const unsigned share = 1 + below(30);
    const unsigned ends = 1 + below(10);
    const size_t size = below(300);
    while (card.size() < size) {
      card += below(share) == 0 ? kinds[below(ends)] : kinds[5 + below(5)];
    }
    const std::string expected = slowly(card);
    for (const KRCardUnfolder unfold : krCardUnfolders()) {
      ASSERT_EQ(unfolded(unfold, card), expected) << testing::PrintToString(card);
    }
  }
}
