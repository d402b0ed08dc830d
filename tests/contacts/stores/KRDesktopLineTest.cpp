#include "contacts/stores/KRDesktopLine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

KRDesktopLine lineOf(const std::string& text) {
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(text, true, 1);
  EXPECT_EQ(lines.next(line), KRVCardLines::Result::Line);
  return KRDesktopLine(line);
}

TEST(KRDesktopLineTest, TakesALineApartAndPutsItTogetherAgain) {
  const KRDesktopLine line = lineOf("item1.TEL;TYPE=\"a;b:c\",HOME;X-A=b:12:3;4\r\n");
  EXPECT_EQ(line.name, "item1.TEL");
  ASSERT_EQ(line.parameters.size(), 2U);
  EXPECT_EQ(line.parameter("TYPE"), "a;b:c,HOME");
  EXPECT_EQ(line.parameter("X-A"), "b");
  EXPECT_EQ(line.parameter("X"), "");
  EXPECT_EQ(line.value, "12:3;4");
  EXPECT_EQ(line.text(), "item1.TEL;TYPE=\"a;b:c\",HOME;X-A=b:12:3;4\r\n");
}

TEST(KRDesktopLineTest, UndoesFolds) {
  EXPECT_EQ(lineOf("NOTE;X-A=o\r\n ne:first \r\n second\n\tthird\r\n").text(), "NOTE;X-A=one:first secondthird\r\n");
}

TEST(KRDesktopLineTest, RemovesParametersOfAnyCase) {
  KRDesktopLine line = lineOf("TEL;x-evolution-e164=+441234,;TYPE=HOME:1\r\n");
  EXPECT_TRUE(line.removeParameter(kKRDesktopPhoneParameter));
  EXPECT_EQ(line.text(), "TEL;TYPE=HOME:1\r\n");
  EXPECT_FALSE(line.removeParameter(kKRDesktopPhoneParameter));
}

TEST(KRDesktopLineTest, HasTheSameStampHoweverTheServiceWritesIt) {
  const uint64_t stamp = lineOf("TEL;TYPE=HOME;X-A=b:1\r\n").stamp();
  EXPECT_EQ(lineOf("TEL;X-A=\"b\";TYPE=HOME:1\r\n").stamp(), stamp);
  EXPECT_EQ(lineOf("TEL;X-EVOLUTION-E164=1,;TYPE=HOME;X-A=b:1\n").stamp(), stamp);
  for (const char* other : {"TEL;TYPE=HOME;X-A=b:2\r\n", "TEL;TYPE=HOME;X-A=c:1\r\n", "TEL;TYPE=HOME:1\r\n",
                            "item1.TEL;TYPE=HOME;X-A=b:1\r\n", "EMAIL;TYPE=HOME;X-A=b:1\r\n"})
    EXPECT_NE(lineOf(other).stamp(), stamp) << other;
}

TEST(KRDesktopLineTest, KeepsALineWithoutAColonAsAName) {
  const KRDesktopLine line = lineOf("nothing here\r\n");
  EXPECT_EQ(line.name, "nothing here");
  EXPECT_EQ(line.value, "");
  EXPECT_TRUE(line.parameters.empty());
}

}  // namespace
