#include "platform/KRStringTable.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

TEST(KRStringTable, ReadsEntriesAndPassesOverComments) {
  const KRStringTable table = KRStringTable::parse(
      "/* a \"comment\" = \"x\"; */\n"
      "\"first\" = \"One\"; // to the end\r\n"
      "\"second\"=\"Two\";third.key = word_1;\n"
      "\n  \"alone\" ;\n"
      "\"spread\"\n=\n\"over\nlines\"\n;");
  EXPECT_EQ(table.mistakes(), 0U);
  EXPECT_EQ(table.count(), 5U);
  EXPECT_EQ(table.find("first"), "One");
  EXPECT_EQ(table.find("second"), "Two");
  EXPECT_EQ(table.find("third.key"), "word_1");
  EXPECT_EQ(table.find("alone"), "alone");
  EXPECT_EQ(table.find("spread"), "over\nlines");
  EXPECT_EQ(table.keys().front(), "first");
  EXPECT_EQ(table.keys().back(), "spread");
}

TEST(KRStringTable, WhatIsNotThereIsNothing) {
  const KRStringTable table = KRStringTable::parse("\"empty\" = \"\";");
  EXPECT_TRUE(table.find("other").isNothing());
  EXPECT_TRUE(table.find(KRText()).isNothing());
  EXPECT_FALSE(table.find("empty").isNothing());
  EXPECT_EQ(KRStringTable::parse("").count(), 0U);
  EXPECT_EQ(KRStringTable::parse(std::string_view()).mistakes(), 0U);
}

TEST(KRStringTable, UndoesEscapes) {
  const struct {
    const char* written;
    std::string_view meant;
  } kRows[] = {
      {R"(\n\t\r)", "\n\t\r"},
      {R"(a\\nb)", "a\\nb"},
      {R"(\"\'\q\/)", "\"'q/"},
      {R"(\U00e9\u00E9)", "éé"},
      {R"(\UD83D\UDE00)", "😀"},
      {R"(\UD83Dx\UDE00)", "\xEF\xBF\xBDx\xEF\xBF\xBD"},
      {R"(\UD83D\U0041)",
       "\xEF\xBF\xBD"
       "A"},
      {R"(\351\12)", "é\n"},
      {R"(\Uxyz)", "Uxyz"},
      {R"(\0)", std::string_view("\0", 1)},
  };
  for (const auto& row : kRows) {
    const KRStringTable table = KRStringTable::parse(std::string("k = \"") + row.written + "\";");
    EXPECT_EQ(table.find("k").view(), row.meant) << row.written;
    EXPECT_EQ(table.mistakes(), 0U) << row.written;
  }
}

TEST(KRStringTable, AMistakeCostsItsEntryOnly) {
  const struct {
    const char* text;
    size_t mistakes;
  } kRows[] = {
      {"a = ; good = 1;", 1},          {"= x; good = 1;", 1},        {"a b; good = 1;", 1},
      {"\"a\" = \"b\"\ngood = 1;", 1}, {"{}\ngood = 1;", 1},         {"good = 1; a = \"no end", 1},
      {"good = 1; /* no end", 1},      {"good = 0; good = 1;", 1},   {"good = 1; a", 1},
      {"good = 1; a = \"\\", 1},       {"\xEF\xBB\xBFgood = 1;", 0},
  };
  for (const auto& row : kRows) {
    const KRStringTable table = KRStringTable::parse(row.text);
    EXPECT_EQ(table.mistakes(), row.mistakes) << row.text;
    if (std::string_view(row.text).find("\"a\" = \"b\"\n") == std::string_view::npos) {
      EXPECT_EQ(table.find("good"), "1") << row.text;
    }
  }
}

TEST(KRStringTable, IllFormedTextBecomesWellFormed) {
  const KRStringTable table = KRStringTable::parse("\"a\" = \"x\xFFy\";");
  EXPECT_EQ(table.find("a"), "x\xEF\xBF\xBDy");
}

}  // namespace
