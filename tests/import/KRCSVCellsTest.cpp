#include "import/KRCSVCells.h"

#include <gtest/gtest.h>

#include "tests/support/KRCSVRows.h"

namespace {

/// Calls `check` with the cells of the first row.
template <class Check>
void look(std::string_view text, KRCSVCells cells, Check check) {
  size_t count = 0;
  krForRows(text, [&](const KRCSVRow& row) {
    cells.look(row);
    if (count++ == 0) check(cells);
  });
  EXPECT_GE(count, 1U);
}

const KRCSVCells kForeign(false, false, {});
const KRCSVCells kOwn(true, true, {});

TEST(KRCSVCells, BlankCellsHaveNothing) {
  look("a, ,\xC2\xA0,\"\",\" b\",\xC3\xA4", kForeign, [](const KRCSVCells& cells) {
    EXPECT_TRUE(cells.has(0));
    for (const size_t column : {1U, 2U, 3U, 6U, 99U}) EXPECT_FALSE(cells.has(column)) << column;
    EXPECT_TRUE(cells.has(4));
    EXPECT_TRUE(cells.has(5));
    EXPECT_FALSE(cells.has(KRCSVCells::kNone));
    EXPECT_EQ(cells.viewOrNone(KRCSVCells::kNone), "");
  });
}

TEST(KRCSVCells, InOurOwnFilesQuotesTellAnEmptyTextFromNone) {
  look("\"\",, ", kOwn, [](const KRCSVCells& cells) {
    EXPECT_TRUE(cells.has(0));
    EXPECT_FALSE(cells.has(1));
    EXPECT_TRUE(cells.has(2));
  });
}

TEST(KRCSVCells, OneGuardIsTakenOffInOurOwnFiles) {
  look("'=1,''x,'", kOwn, [](const KRCSVCells& cells) {
    EXPECT_EQ(cells.view(0), "=1");
    EXPECT_EQ(cells.view(1), "'x");
    EXPECT_EQ(cells.view(2), "");
  });
  look("'=1", kForeign, [](const KRCSVCells& cells) { EXPECT_EQ(cells.view(0), "'=1"); });
  look("'=1", KRCSVCells(true, false, {}), [](const KRCSVCells& cells) { EXPECT_EQ(cells.view(0), "'=1"); });
}

TEST(KRCSVCells, LineBreaksAreLineFeeds) {
  look("\"a\r\nb\rc\",d\\ne,\"f\r\"", kForeign, [](const KRCSVCells& cells) {
    EXPECT_EQ(cells.text(0), "a\nb\nc");
    EXPECT_EQ(cells.text(1), "d\\ne");
    EXPECT_EQ(cells.lines(1), "d\ne");
    EXPECT_EQ(cells.text(2), "f\n");
  });
  look("\"a\r\nb\\nc\"", kOwn, [](const KRCSVCells& cells) { EXPECT_EQ(cells.lines(0), "a\r\nb\\nc"); });
}

TEST(KRCSVCells, SeveralValuesStandInOneCell) {
  look("a ::: b :::  ::: c,,d", kForeign, [](const KRCSVCells& cells) {
    ASSERT_EQ(cells.pieceCount(0), 4U);
    EXPECT_EQ(cells.piece(0, 0), "a");
    EXPECT_EQ(cells.piece(0, 2), "");
    EXPECT_EQ(cells.piece(0, 3), "c");
    EXPECT_EQ(cells.piece(0, 4).data(), nullptr);
    EXPECT_EQ(cells.pieceCount(1), 0U);
    EXPECT_EQ(cells.pieceCount(2), 1U);
  });
  look("a ::: b", kOwn, [](const KRCSVCells& cells) {
    EXPECT_EQ(cells.pieceCount(0), 1U);
    EXPECT_EQ(cells.piece(0, 0), "a ::: b");
  });
}

TEST(KRCSVCells, SignsAreWhatStandsAnywhere) {
  EXPECT_FALSE(KRCSVCells::Signs::of("a,b").hasBackslashes);
  EXPECT_FALSE(KRCSVCells::Signs::of("a:::b").hasSeveralValues);
  EXPECT_TRUE(KRCSVCells::Signs::of("a\\nb").hasBackslashes);
  EXPECT_TRUE(KRCSVCells::Signs::of("a ::: b").hasSeveralValues);
}

}  // namespace
