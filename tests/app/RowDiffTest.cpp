#include "app/RowDiff.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

#include "app/DisplayText.h"
#include "tests/support/KRTestFolder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Rows = std::vector<PersonRow>;

/// "- Phone home 1", a line each.
std::vector<std::string> shown(const Rows& before, const Rows& after) {
  std::vector<std::string> lines;
  for (const RowDiff::Line& line : RowDiff::of(before, after)) {
    lines.push_back(std::string(RowDiff::mark(line.sign)) + " " + line.row.heading + " " + line.row.label + " " +
                    line.row.text);
  }
  return lines;
}

/// What is printed with lines of 60 cells.
std::string printed(const std::vector<RowDiff::Line>& lines, size_t indent) {
  const KRTestFolder folder;
  const int before = dup(STDOUT_FILENO);
  std::FILE* file = std::fopen(folder.at("out").c_str(), "w");
  dup2(fileno(file), STDOUT_FILENO);
  setenv("COLUMNS", "60", 1);
  {
    Terminal terminal;
    RowDiff::print(terminal, lines, indent);
    terminal.out().finish();
  }
  unsetenv("COLUMNS");
  dup2(before, STDOUT_FILENO);
  close(before);
  std::fclose(file);
  return folder.content("out");
}

TEST(RowDiff, EqualStatesKeepEverything) {
  EXPECT_THAT(shown({}, {}), IsEmpty());
  const Rows rows = {{"Phone", "home", "1"}, {"Phone", "work", "2"}, {"Note", "", "tea"}};
  EXPECT_THAT(shown(rows, rows), ElementsAre("  Phone home 1", "  Phone work 2", "  Note  tea"));
}

TEST(RowDiff, OfAPropertyTheFormerValuesComeFirst) {
  EXPECT_THAT(shown({{"Note", "", "tea"}, {"Phone", "home", "1"}}, {{"Note", "", "milk"}, {"Phone", "home", "1"}}),
              ElementsAre("- Note  tea", "+ Note  milk", "  Phone home 1"));
  EXPECT_THAT(shown({{"Phone", "home", "1"}, {"Phone", "home", "2"}}, {{"Phone", "work", "1"}, {"Phone", "home", "2"}}),
              ElementsAre("- Phone home 1", "  Phone home 2", "+ Phone work 1"));
}

TEST(RowDiff, AValueThatOnlyMovedIsKept) {
  EXPECT_THAT(shown({{"Phone", "home", "1"}, {"Phone", "home", "2"}}, {{"Phone", "home", "2"}, {"Phone", "home", "1"}}),
              ElementsAre("  Phone home 1", "  Phone home 2"));
}

TEST(RowDiff, OfEqualValuesAsManyAreKeptAsThereAreInBoth) {
  const PersonRow phone{"Phone", "home", "1"};
  EXPECT_THAT(shown({phone, phone, phone}, {phone}), ElementsAre("  Phone home 1", "- Phone home 1", "- Phone home 1"));
  EXPECT_THAT(shown({phone}, {phone, phone}), ElementsAre("  Phone home 1", "+ Phone home 1"));
}

TEST(RowDiff, PropertiesThatCameOrWentStandAtTheirPlaces) {
  EXPECT_THAT(shown({{"A", "", "1"}, {"C", "", "3"}}, {{"A", "", "1"}, {"B", "", "2"}, {"C", "", "3"}}),
              ElementsAre("  A  1", "+ B  2", "  C  3"));
  EXPECT_THAT(shown({{"A", "", "1"}, {"B", "", "2"}, {"C", "", "3"}}, {{"A", "", "1"}, {"C", "", "3"}}),
              ElementsAre("  A  1", "- B  2", "  C  3"));
  EXPECT_THAT(shown({{"A", "", "1"}}, {}), ElementsAre("- A  1"));
  EXPECT_THAT(shown({}, {{"A", "", "1"}}), ElementsAre("+ A  1"));
}

TEST(RowDiff, TextsThatRunTogetherAlikeAreNotTakenForEachOther) {
  EXPECT_THAT(shown({{"A", "b", "c"}}, {{"A", "", "bc"}}), ElementsAre("- A b c", "+ A  bc"));
}

TEST(RowDiff, LongValuesAreWrappedUnderTheirStart) {
  const std::string text =
      printed({{RowDiff::Sign::Added, {"Note", "", "one two three four five six seven eight nine"}},
               {RowDiff::Sign::Kept, {"Phone", "home", " 1"}},
               {RowDiff::Sign::Removed, {"Role", "", ""}}},
              2);
  std::vector<std::string> lines;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end - start));
    EXPECT_LE(displayWidth(lines.back()), 60U);
    start = end + 1;
  }
  ASSERT_EQ(lines.size(), 4U) << text;
  EXPECT_TRUE(lines[0].starts_with("  + Note")) << lines[0];
  const size_t column = lines[0].find("one");
  EXPECT_EQ(lines[1].find_first_not_of(' '), column) << text;
  // Blanks at the ends of a text are seen.
  EXPECT_EQ(lines[2].find("\" 1\""), column) << text;
  EXPECT_EQ(lines[3].find("\"\""), column) << text;
}

}  // namespace
