#include "import/KRCSVSplitter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Rows = std::vector<std::vector<std::string>>;

Rows split(std::string_view text, KRCSVMarks marks = {}, size_t pieceSize = SIZE_MAX, size_t* openQuoteLine = nullptr) {
  Rows rows;
  KRCSVSplitter splitter(marks, [&](const KRCSVRow& row) {
    rows.emplace_back();
    for (size_t i = 0; i < row.count(); ++i) rows.back().emplace_back(row.view(i));
    return true;
  });
  while (!text.empty()) {
    splitter.feed(text.substr(0, pieceSize));
    text.remove_prefix(std::min(pieceSize, text.size()));
  }
  splitter.finish();
  if (openQuoteLine != nullptr) *openQuoteLine = splitter.openQuoteLine();
  return rows;
}

TEST(KRCSVSplitter, SplitsRowsIntoCells) {
  const struct {
    const char* text;
    Rows rows;
  } kRows[] = {
      {"", {}},
      {"a", {{"a"}}},
      {"a,b", {{"a", "b"}}},
      {"a,b\n", {{"a", "b"}}},
      {"a,\n,b", {{"a", ""}, {"", "b"}}},
      {"a\nb\rc\r\nd", {{"a"}, {"b"}, {"c"}, {"d"}}},
      {"\n\r\n\ra", {{"a"}}},
      {",", {{"", ""}}},
      {"\"a,b\",c", {{"a,b", "c"}}},
      {"\"a\nb\r\nc\",d", {{"a\nb\r\nc", "d"}}},
      {"\"a\"\"b\",\"\"\"\",\"\"", {{"a\"b", "\"", ""}}},
      {"a\"b,c\"\"d", {{"a\"b", "c\"\"d"}}},
      {" \"a\",b", {{" \"a\"", "b"}}},
      {"\"a\" b,\"c\"d\"", {{"a b", "cd\""}}},
      {"\"\"", {{""}}},
      {"\"a\"\n\"b\"\r\n\"c\"", {{"a"}, {"b"}, {"c"}}},
      {"ä,\xE6\x97\xA5", {{"ä", "日"}}},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(split(row.text), row.rows) << row.text;
    // Whatever the pieces in which the text comes.
    for (size_t size = 1; size < 5; ++size)
      EXPECT_EQ(split(row.text, {}, size), row.rows) << row.text << " by " << size;
  }
}

TEST(KRCSVSplitter, TakesOtherMarks) {
  EXPECT_EQ(split("a;'b;c';d,\"e", {';', '\''}), (Rows{{"a", "b;c", "d,\"e"}}));
  EXPECT_EQ(split("a\t\"b\tc\"", {'\t', '"'}), (Rows{{"a", "b\tc"}}));
  EXPECT_EQ(split("\"a,b\n\"", {',', 0}), (Rows{{"\"a", "b"}, {"\""}}));
  EXPECT_EQ(split("Lee, Ann\n\"a\nb\"", {0, '"'}), (Rows{{"Lee, Ann"}, {"a\nb"}}));
}

TEST(KRCSVSplitter, TellsTheLineOnWhichARowBegins) {
  std::vector<size_t> lines;
  KRCSVSplitter splitter(KRCSVMarks{}, [&](const KRCSVRow& row) {
    lines.push_back(row.line());
    return true;
  });
  splitter.feed("a\n\n\"b\r\nc\rd\n\"\r\ne\rf\n");
  splitter.finish();
  EXPECT_EQ(lines, (std::vector<size_t>{1, 3, 7, 8}));
}

TEST(KRCSVSplitter, TellsEmptyCellsInQuotesFromEmptyOnes) {
  KRCSVSplitter splitter(KRCSVMarks{}, [&](const KRCSVRow& row) {
    EXPECT_FALSE(row.isQuoted(0));
    EXPECT_TRUE(row.isQuoted(1));
    EXPECT_FALSE(row.isQuoted(9));
    EXPECT_TRUE(row.view(9).empty());
    EXPECT_EQ(row.text(9), "");
    EXPECT_TRUE(row.isBlank());
    return true;
  });
  splitter.feed(",\"\", \n");
  splitter.finish();
}

TEST(KRCSVSplitter, StopsWhenNoMoreIsWanted) {
  size_t rows = 0;
  KRCSVSplitter splitter(KRCSVMarks{}, [&](const KRCSVRow&) { return ++rows < 2; });
  EXPECT_FALSE(splitter.feed("a\nb\nc\nd"));
  splitter.finish();
  EXPECT_EQ(rows, 2U);
}

TEST(KRCSVSplitter, TellsAQuoteThatNothingCloses) {
  size_t line = 0;
  EXPECT_EQ(split("a,b\nc,\"d\ne\n", {}, SIZE_MAX, &line), (Rows{{"a", "b"}, {"c", "d\ne\n"}}));
  EXPECT_EQ(line, 2U);
  split("a,\"b\"", {}, SIZE_MAX, &line);
  EXPECT_EQ(line, 0U);
  Rows rows;
  KRCSVSplitter splitter(KRCSVMarks{}, [&](const KRCSVRow& row) {
    rows.push_back({std::string(row.view(0)), std::string(row.view(1))});
    return true;
  });
  splitter.endQuotesWithLinesFrom(1);
  splitter.feed("\"a\nb\",c\nd,\"e\nf,\"g,h\"\n");
  splitter.finish();
  EXPECT_EQ(rows, (Rows{{"a", ""}, {"b\"", "c"}, {"d", "e"}, {"f", "g,h"}}));
}

TEST(KRCSVSplitter, HoldsRowsLongerThanABlock) {
  const std::string longCell(200'000, 'x');
  const Rows rows = split("1,\"" + longCell + "\"\"" + longCell + "\",2\n3", {}, 1000);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"1", longCell + "\"" + longCell, "2"}));
  EXPECT_EQ(rows[1], (std::vector<std::string>{"3"}));
}

TEST(KRCSVSplitter, LeavesItsTextsAlive) {
  std::vector<KRString> kept;
  {
    KRCSVSplitter splitter(KRCSVMarks{}, [&](const KRCSVRow& row) {
      kept.push_back(row.text(0));
      return true;
    });
    for (int i = 0; i < 30'000; ++i) splitter.feed("cell " + std::to_string(i) + ",x\n");
    splitter.finish();
  }
  ASSERT_EQ(kept.size(), 30'000U);
  for (size_t i = 0; i < kept.size(); ++i) ASSERT_EQ(kept[i], KRString("cell " + std::to_string(i)));
}

/// The obvious way: one character after the other.
Rows splitSlowly(const std::string& text) {
  Rows rows;
  std::vector<std::string> row;
  std::string cell;
  bool isCellBegun = false;
  bool isQuoted = false;
  bool wasQuoted = false;
  const auto endRow = [&] {
    if (row.empty() && cell.empty() && !wasQuoted) return;
    row.push_back(cell);
    rows.push_back(row);
    row.clear();
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (isQuoted) {
      if (c != '"') {
        cell += c;
      } else if (i + 1 < text.size() && text[i + 1] == '"') {
        cell += c;
        ++i;
      } else {
        isQuoted = false;
      }
      continue;
    }
    if (c == '"' && !isCellBegun) {
      isQuoted = isCellBegun = wasQuoted = true;
    } else if (c == ',' || c == '\n' || c == '\r') {
      if (c == ',') {
        row.push_back(cell);
      } else {
        endRow();
        if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      }
      cell.clear();
      isCellBegun = wasQuoted = false;
    } else {
      cell += c;
      isCellBegun = true;
    }
  }
  endRow();
  return rows;
}

TEST(KRCSVSplitter, AgreesWithTheObviousWayOnRandomText) {
  std::mt19937 random(7);
  for (int round = 0; round < 20'000; ++round) {
    std::string text;
    for (size_t left = random() % 24; left > 0; --left) text += "ab,,\"\"\"\r\n "[random() % 10];
    const Rows expected = splitSlowly(text);
    ASSERT_EQ(split(text), expected) << text;
    ASSERT_EQ(split(text, {}, 1 + random() % 5), expected) << text;
  }
}

}  // namespace
