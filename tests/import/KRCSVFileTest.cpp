#include "import/KRCSVFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/KRLog.h"
#include "tests/support/KRTestFolder.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

class KRCSVFileTest : public testing::Test {
 protected:
  KRRef<KRCSVFile> read(std::string_view content) const {
    folder_.put("a.csv", content);
    return KRCSVFile::initWithFile(KRString(folder_.at("a.csv")));
  }

  static Rows rowsOf(const KRCSVFile& file) {
    Rows rows;
    for (uint64_t row = 0; row < file.rowCount(); ++row) {
      rows.emplace_back();
      const KRStringList values = *file.valuesOfRow(row);
      for (const KRString& value : values) rows.back().emplace_back(value.view());
    }
    return rows;
  }
  Rows rows(std::string_view content) const { return rowsOf(*read(content)); }

  KRTestFolder folder_;
};

TEST_F(KRCSVFileTest, CutsRowsToTheHeadingsWidthAndDropsShortOnes) {
  const auto file = read("First,Last,\nAnn,Lee,extra\nalone\nBo,Ng");
  EXPECT_EQ(rowsOf(*file), (Rows{{"First", "Last"}, {"Ann", "Lee"}, {"Bo", "Ng"}}));
  EXPECT_EQ(file->columnCount(), 2U);
  EXPECT_EQ(file->rowCount(), 3U);
  EXPECT_EQ(file->droppedLines(), (std::vector<uint64_t>{3}));
  EXPECT_EQ(file->lineOfRow(2), 4U);
  EXPECT_EQ(file->lineOfRow(3), 0U);
}

TEST_F(KRCSVFileTest, TakesQuotesOffBothFieldsOfATabbedLine) {
  EXPECT_EQ(rows("A\tB\n\"one\"\t\"two\""), (Rows{{"A", "B"}, {"one", "two"}}));
}

TEST_F(KRCSVFileTest, LeavesTheQuoteOfAPieceThatTheQuoteTabHides) {
  // Once a quote before a tab is found, plain tabs no longer separate.
  EXPECT_EQ(rows("A\n\"one\"\ttwo\tthree"), (Rows{{"A"}, {"one"}}));
  EXPECT_EQ(rows("\"A\"\tB\tC\n1,2"), (Rows{{"A", "B\tC"}, {"1", "2"}}));
}

TEST_F(KRCSVFileTest, SplitsAtACommaInsideQuotes) {
  EXPECT_EQ(rows("A,B,C\n\"one,two\",three"), (Rows{{"A", "B", "C"}, {"one", "two\"", "three"}}));
}

TEST_F(KRCSVFileTest, CountsATabMoreThanACommaLineByLine) {
  EXPECT_EQ(rows("A,B\na,b\tc\nd,e"), (Rows{{"A", "B"}, {"a,b", "c"}, {"d", "e"}}));
}

TEST_F(KRCSVFileTest, LeavesTheCarriageReturnOfAWindowsLineEndAsALineFeed) {
  EXPECT_EQ(rows("A,B\r\n1,2\r\n\"3\",\"4\"\r\n"), (Rows{{"A", "B\n"}, {"1", "2\n"}, {"3", "4\"\n"}}));
}

TEST_F(KRCSVFileTest, SplitsAtCarriageReturnsWhenThereIsNoLineFeed) {
  EXPECT_EQ(rows("A,B\r1,2\r"), (Rows{{"A", "B"}, {"1", "2"}}));
}

TEST_F(KRCSVFileTest, SkipsEmptyLinesBeforeTheHeadings) {
  EXPECT_EQ(rows("\n\n\"\"\n\"\nA,B\n1,2"), (Rows{{"A", "B"}, {"1", "2"}}));
  EXPECT_EQ(read("\n\nA,B\n1,2")->lineOfRow(0), 3U);
}

TEST_F(KRCSVFileTest, TakesALineOfSeparatorsForHeadings) {
  EXPECT_EQ(rows(",,\nA,B\n"), (Rows{{"", ""}, {"A", "B"}}));
  EXPECT_EQ(rows(",\nA\n"), (Rows{{""}, {"A"}, {""}}));
}

TEST_F(KRCSVFileTest, DropsAnEmptyLineUnlessThereIsOneColumn) {
  const auto wide = read("A,B\n\n1,2\n");
  EXPECT_EQ(rowsOf(*wide), (Rows{{"A", "B"}, {"1", "2"}}));
  EXPECT_TRUE(wide->droppedLines().empty());
  EXPECT_EQ(rows("A\n\n1\n"), (Rows{{"A"}, {""}, {"1"}, {""}}));
}

TEST_F(KRCSVFileTest, CountsTheHeadingRow) {
  EXPECT_EQ(read("First,Last")->rowCount(), 1U);
  EXPECT_EQ(read("First,Last\n")->rowCount(), 1U);
}

TEST_F(KRCSVFileTest, HasNoRowsForAnEmptyFile) {
  EXPECT_EQ(read("")->rowCount(), 0U);
  EXPECT_EQ(read("\n\n\n")->rowCount(), 0U);
  EXPECT_EQ(read("\"\"")->columnCount(), 0U);
}

TEST_F(KRCSVFileTest, AnswersNothingOutOfRange) {
  const auto file = read("A,B\n1,");
  EXPECT_FALSE(file->valuesOfRow(2));
  EXPECT_TRUE(file->valueAtRow(2, 0).isNothing());
  EXPECT_TRUE(file->valueAtRow(1, 2).isNothing());
  EXPECT_TRUE(file->viewAtRow(1, 2).isNothing());
  EXPECT_EQ(file->valueAtRow(1, 1), "");
  EXPECT_FALSE(file->valueAtRow(1, 1).isNothing());
  EXPECT_EQ(file->viewAtRow(1, 0), KRText("1"));
  EXPECT_TRUE(file->valueAtRow(UINT64_MAX, UINT64_MAX).isNothing());
}

TEST_F(KRCSVFileTest, ExistsWithoutRowsAndLogsOneLineForAnUnreadableFile) {
  std::vector<std::string> lines;
  krSetLog([&](KRText line) { lines.emplace_back(line.view()); });
  const auto missing = KRCSVFile::initWithFile(KRString(folder_.at("none.csv")));
  krSetLog(nullptr);
  EXPECT_EQ(missing->rowCount(), 0U);
  EXPECT_EQ(missing->columnCount(), 0U);
  EXPECT_EQ(missing->file(), KRString(folder_.at("none.csv")));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines[0].find("none.csv"), std::string::npos);
  EXPECT_EQ(lines[0], missing->failure());
}

TEST_F(KRCSVFileTest, ReadsAgainFromTheBeginning) {
  const auto file = read("A,B\n1,2\nx");
  folder_.put("a.csv", "C\n3");
  file->initItemArray();
  EXPECT_EQ(rowsOf(*file), (Rows{{"C"}, {"3"}}));
  EXPECT_TRUE(file->droppedLines().empty());
}

TEST_F(KRCSVFileTest, CleansAFieldOfItsOuterQuotesOnly) {
  const struct {
    KRString original;
    KRString cleaned;
  } kRows[] = {
      {"plain"_kr, "plain"_kr},   {""_kr, ""_kr},
      {"\""_kr, ""_kr},           {"\"\""_kr, ""_kr},
      {"\"a\""_kr, "a"_kr},       {"\"a"_kr, "a"_kr},
      {"a\""_kr, "a\""_kr},       {"\"a\"\"b\""_kr, "a\"\"b"_kr},
      {"\"\"\""_kr, "\""_kr},     {" \"a\" "_kr, " \"a\" "_kr},
      {"a\rb\r"_kr, "a\nb\n"_kr}, {"\"a\"\r"_kr, "a\"\n"_kr},
      {" a "_kr, " a "_kr},       {KRString(), KRString()},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(KRCSVFile::itemStringByOriginal(row.original), row.cleaned) << row.original.view();
}

TEST_F(KRCSVFileTest, SplitsALineAsItsStateTells) {
  const auto none = read("");
  EXPECT_EQ(none->loadRowItem("A,B,"_kr).size(), 2U);
  EXPECT_TRUE(none->loadRowItem(""_kr).empty());
  const auto file = read("A,B");
  EXPECT_EQ(file->loadRowItem("1,2,3"_kr), (KRStringList{"1"_kr, "2"_kr}));
  EXPECT_EQ(file->loadRowItem("1,"_kr), (KRStringList{"1"_kr, ""_kr}));
  EXPECT_EQ(file->loadRowItem(""_kr), (KRStringList{""_kr}));
  EXPECT_EQ(file->loadRowItem("\"1\"\t2\r"_kr), (KRStringList{"1"_kr, "2\n"_kr}));
  EXPECT_TRUE(file->loadRowItem(KRString()).empty());
}

TEST_F(KRCSVFileTest, ReadsTheEncodingsThatFilesHave) {
  const std::string utf16(
      "\xFF\xFE"
      "A\0,\0B\0\n\0\xFC\0,\0x\0",
      16);
  const struct {
    std::string bytes;
    const char* value;
    const char* charset;
  } kRows[] = {
      {"A,B\nü,x", "ü", "UTF-8"},
      {"\xEF\xBB\xBF"
       "A,B\nü,x",
       "ü", "UTF-8"},
      {utf16, "ü", "UTF-16LE"},
      {"A,B\nMichelle,\x8E\x8F", "Michelle", "macintosh"},
      {"Vorname,Nachname,Notiz\nJ\xFCrgen,Gr\xF6\xDFler,f\xFCr die Stra\xDF"
       "e nach K\xF6ln und M\xFCnchen",
       "Jürgen", "windows-1252"},
  };
  for (const auto& row : kRows) {
    const auto file = read(row.bytes);
    EXPECT_EQ(file->valueAtRow(1, 0).view(), row.value);
    EXPECT_EQ(file->viewAtRow(0, 0).view().substr(0, 1), row.bytes.find("Vorname") == 0 ? "V" : "A");
    EXPECT_EQ(file->charset(), row.charset);
  }
}

TEST_F(KRCSVFileTest, TakesItsEncodingFromTheWholeFile) {
  // Plain English far into the file, then Cyrillic of an old code page.
  std::string text = "First Name,Last Name\n";
  for (int i = 0; i < 4000; ++i) text += "Ann,Lee\n";
  for (const char* note :
       {"\xC7\xE0\xE2\xF2\xF0\xE0 \xEC\xFB \xE2\xF1\xF2\xF0\xE5\xF7\xE0\xE5\xEC\xF1\xFF \xE2 \xEE\xF4\xE8\xF1\xE5 "
        "\xED\xE0 \xF3\xEB\xE8\xF6\xE5 \xCF\xF3\xF8\xEA\xE8\xED\xE0",
        "\xCF\xEE\xE7\xE2\xEE\xED\xE8\xF2\xFC \xEF\xEE\xF1\xEB\xE5 \xEE\xE1\xE5\xE4\xE0 \xE8 "
        "\xF1\xEF\xF0\xEE\xF1\xE8\xF2\xFC \xEF\xF0\xEE \xE4\xEE\xE3\xEE\xE2\xEE\xF0",
        "\xC8\xE2\xE0\xED \xCF\xE5\xF2\xF0\xEE\xE2\xE8\xF7 \xEB\xFE\xE1\xE8\xF2 \xF7\xE0\xE9 \xE8 \xED\xE5 "
        "\xEB\xFE\xE1\xE8\xF2 \xEA\xEE\xF4\xE5",
        "\xC4\xEE\xE3\xEE\xE2\xEE\xF0 \xEF\xEE\xE4\xEF\xE8\xF1\xE0\xED \xE8 \xEE\xF2\xEF\xF0\xE0\xE2\xEB\xE5\xED "
        "\xEF\xEE \xEF\xEE\xF7\xF2\xE5 \xE2 \xEF\xEE\xED\xE5\xE4\xE5\xEB\xFC\xED\xE8\xEA"}) {
    text += std::string(note) + "," + note + "\n";
  }
  const auto file = read(text);
  EXPECT_EQ(file->valueAtRow(4003, 0).view(), "Иван Петрович любит чай и не любит кофе");
}

TEST_F(KRCSVFileTest, KeepsZeroBytesAndDamageAsText) {
  const auto file = read(std::string("A,B\na\0b,\xFF\xFE\xFA\n", 12));
  EXPECT_EQ(file->valueAtRow(1, 0).size(), 3U);
  EXPECT_FALSE(file->valueAtRow(1, 1).isEmpty());
}

TEST_F(KRCSVFileTest, HoldsLinesLongerThanABlock) {
  const std::string longCell(300'000, 'x');
  const auto file = read("A,B\n1,2\n" + longCell + ",y\n3,4\n");
  EXPECT_EQ(file->rowCount(), 4U);
  EXPECT_EQ(file->valueAtRow(2, 0).size(), longCell.size());
  EXPECT_EQ(file->valueAtRow(2, 1), "y");
  EXPECT_EQ(file->valueAtRow(3, 1), "4");
}

TEST_F(KRCSVFileTest, LeavesItsStringsAliveWhenItGoes) {
  KRString kept;
  {
    const auto file = read("A,B\nlong lived,2");
    kept = file->valueAtRow(1, 0);
  }
  EXPECT_EQ(kept, "long lived");
}

}  // namespace
