#include "app/ContactColumns.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// "≠ Phone | home: 1 | –", a row in one line.
std::vector<std::string> shown(const std::vector<std::vector<PersonRow>>& contacts) {
  constexpr std::string_view kMarks[] = {" ", "≠", "="};
  std::vector<std::string> lines;
  for (const ContactColumns::Row& row : ContactColumns::of(contacts)) {
    std::string line(kMarks[static_cast<size_t>(row.mark)]);
    line += " " + row.heading;
    for (const std::string& cell : row.cells) line += " | " + (cell.empty() ? "–" : cell);
    lines.push_back(line);
  }
  return lines;
}

TEST(ContactColumns, OfNoContactsThereAreNoRows) {
  EXPECT_THAT(shown({}), IsEmpty());
  EXPECT_THAT(shown({{}, {}}), IsEmpty());
}

TEST(ContactColumns, OneContactDiffersFromNobody) {
  EXPECT_THAT(shown({{{"Phone", "home", "1"}, {"Note", "", "tea"}}}), ElementsAre("  Phone | home: 1", "  Note | tea"));
}

TEST(ContactColumns, APropertyOfOneValueInEachHasOneRow) {
  EXPECT_THAT(shown({{{"Note", "", "tea"}, {"Role", "", "cook"}}, {{"Note", "", "milk"}, {"Role", "", "cook"}}}),
              ElementsAre("≠ Note | tea | milk", "  Role | cook | cook"));
}

TEST(ContactColumns, EqualValuesStandInOneRowWhateverTheirPlacesAndLabels) {
  EXPECT_THAT(
      shown({{{"Phone", "home", "1"}, {"Phone", "work", "2"}}, {{"Phone", "work", "2"}, {"Phone", "cell", "1"}}}),
      ElementsAre("≠ Phone | home: 1 | cell: 1", "  Phone | work: 2 | work: 2"));
}

TEST(ContactColumns, WhatAContactLacksIsAnEmptyCellAndDiffers) {
  EXPECT_THAT(shown({{{"Phone", "", "1"}, {"Phone", "", "2"}}, {{"Phone", "", "2"}}, {}}),
              ElementsAre("≠ Phone | 1 | – | –", "≠ Phone | 2 | 2 | –"));
}

TEST(ContactColumns, AValueThatAContactHasTwiceIsMarked) {
  EXPECT_THAT(shown({{{"Phone", "home", "1"}, {"Phone", "work", "1"}}}),
              ElementsAre("  Phone | home: 1", "= Phone | work: 1"));
  EXPECT_THAT(shown({{{"Phone", "", "1"}, {"Phone", "", "1"}}, {{"Phone", "", "1"}, {"Phone", "", "1"}}}),
              ElementsAre("  Phone | 1 | 1", "= Phone | 1 | 1"));
}

TEST(ContactColumns, PropertiesStandInTheOrderOfTheContactsOwn) {
  EXPECT_THAT(
      shown({{{"Name", "", "a"}, {"Note", "", "n"}}, {{"Name", "", "a"}, {"Phone", "", "1"}, {"Note", "", "n"}}}),
      ElementsAre("  Name | a | a", "≠ Phone | – | 1", "  Note | n | n"));
  EXPECT_THAT(shown({{{"Note", "", "n"}}, {{"Name", "", "a"}}}), ElementsAre("≠ Name | – | a", "≠ Note | n | –"));
}

TEST(ContactColumns, CellsAreEscaped) {
  EXPECT_THAT(shown({{{"Note", "a\nb", "tea\tand\x1b[2J"}}}), ElementsAre("  Note | a\\nb: tea\\tand\\x1B[2J"));
}

}  // namespace
