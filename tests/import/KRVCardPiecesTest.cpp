#include "import/KRVCardPieces.h"

#include <gtest/gtest.h>

#include "platform/KRString.h"
#include "platform/KRTextDecoding.h"

namespace {

std::vector<std::string> cardsOf(std::string_view bytes) {
  KRBuffer buffer;
  EXPECT_TRUE(buffer.append(bytes));
  KRVCardPieces pieces(std::move(buffer));
  const size_t count = pieces.count();
  std::vector<std::string> cards;
  while (pieces.next()) cards.emplace_back(pieces.card());
  EXPECT_EQ(count, cards.size() + 1);
  return cards;
}

using Cards = std::vector<std::string>;

}  // namespace

TEST(KRVCardPieces, CutsAtEveryEndInExactlyThisCase) {
  EXPECT_EQ(cardsOf(""), Cards());
  EXPECT_EQ(cardsOf("BEGIN:VCARD\nend:vcard\nEND:VCARd\nEND: VCARD\n"), Cards());
  EXPECT_EQ(cardsOf("END:VCARD"), Cards{"\nEND:VCARD"});
  EXPECT_EQ(cardsOf("aEND:VCARDbEND:VCARDc"), (Cards{"a\nEND:VCARD", "b\nEND:VCARD"}));
  EXPECT_EQ(cardsOf("END:VCARDEND:VCARD"), (Cards{"\nEND:VCARD", "\nEND:VCARD"}));
  EXPECT_EQ(cardsOf("END:END:VCARD"), Cards{"END:\nEND:VCARD"});
}

TEST(KRVCardPieces, TellsWhatFollowsTheLastOne) {
  KRBuffer buffer;
  ASSERT_TRUE(buffer.append("aEND:VCARD tail"));
  KRVCardPieces pieces(std::move(buffer));
  EXPECT_EQ(pieces.rest(), "aEND:VCARD tail");
  EXPECT_TRUE(pieces.next());
  EXPECT_EQ(pieces.rest(), " tail");
  EXPECT_FALSE(pieces.next());
  EXPECT_EQ(pieces.rest(), " tail");
}

TEST(KRVCardPieces, ReadsEveryEncodingThatShowsItself) {
  const std::string text = "NOTE:Gr\xC3\xBC\xC3\x9F\x65 \xE5\xB1\xB1\nEND:VCARD";
  const Cards expected{"NOTE:Gr\xC3\xBC\xC3\x9F\x65 \xE5\xB1\xB1\n\nEND:VCARD"};
  EXPECT_EQ(cardsOf(text), expected);
  EXPECT_EQ(cardsOf("\xEF\xBB\xBF" + text), expected);
  for (const char* charset : {"UTF-16LE", "UTF-16BE", "UTF-16", "UTF-32"}) {
    const std::optional<std::string> bytes = krEncodeWith(KRText(std::string_view(text)), charset);
    ASSERT_TRUE(bytes) << charset;
    EXPECT_EQ(cardsOf(*bytes), expected) << charset;
  }
}

TEST(KRVCardPieces, ReadsALineInTheCharacterSetThatItNames) {
  const auto isRead = [](const std::string& head, std::string_view charset, std::string_view value) {
    const std::string bytes = head + *krEncodeWith(KRText(value), charset) + "\r\nEND:VCARD";
    EXPECT_EQ(cardsOf(bytes), Cards{head + std::string(value) + "\r\n\nEND:VCARD"}) << head;
  };
  isRead("N;CHARSET=Shift_JIS:", "Shift_JIS", "\xE5\xB1\xB1\xE7\x94\xB0");
  isRead("N;charset=iso-8859-2;LANGUAGE=cs:", "ISO-8859-2", "Dvo\xC5\x99\xC3\xA1k");
  isRead("N;ENCODING=8BIT;CHARSET=KOI8-R:", "KOI8-R", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82");
  // A folded line goes on as its first.
  isRead("N;CHARSET=KOI8-R:a\n ", "KOI8-R", "\xD0\x9F\xD1\x80\xD0\xB8");
}

TEST(KRVCardPieces, OneLineThatIsNotUtf8SpoilsNoOther) {
  const Cards cards =
      cardsOf("FN:\xC3\x84nne\nEND:VCARD\nFN:J\xC3\xB6rg\nNOTE:caf\xE9\nEND:VCARD\nFN:\xE5\xB1\xB1\nEND:VCARD");
  EXPECT_EQ(cards, (Cards{"FN:\xC3\x84nne\n\nEND:VCARD", "\nFN:J\xC3\xB6rg\nNOTE:caf\xC3\xA9\n\nEND:VCARD",
                          "\nFN:\xE5\xB1\xB1\n\nEND:VCARD"}));
}

TEST(KRVCardPieces, ReadsALegacyFileAsAWhole) {
  std::string bytes;
  for (int i = 0; i < 20; ++i) bytes += "FN:J\xF6rg M\xFCller\r\nNOTE:Stra\xDF\x65\r\nEND:VCARD\r\n";
  const Cards cards = cardsOf(bytes);
  ASSERT_EQ(cards.size(), 20U);
  EXPECT_EQ(cards.back(), "\r\nFN:J\xC3\xB6rg M\xC3\xBCller\r\nNOTE:Stra\xC3\x9F\x65\r\n\nEND:VCARD");
}

TEST(KRVCardPieces, PiecesAreAlwaysWellFormed) {
  for (const std::string& card : cardsOf("\xFF\xFE\xFD END:VCARD\xEF\xBB\xBF\xC0\x80\nEND:VCARD\xF8")) {
    EXPECT_TRUE(krIsWellFormed(card));
  }
}
