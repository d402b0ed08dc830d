#include "import/KRCSVEntryReader.h"

#include <gtest/gtest.h>

#include "tests/support/KRCSVRows.h"
#include "tests/support/KRPersonText.h"

namespace {

/// The text of the person of a row under headings, with what is kept and what is told.
std::string read(const KRStringList& headings, std::string_view text) {
  const KRCSVPlan plan(KRCSVMapping::of(headings, {}));
  std::string result;
  krForRows(text, [&](const KRCSVRow& row) {
    KRCSVCells cells(false, false, {});
    cells.look(row);
    const KRCSVDateReader dates;
    KRCSVRemainder remainder;
    const auto person = krMake<KRTempPerson>();
    KRCSVEntryReader(plan, cells, dates, remainder).read(*person);
    result += krPersonText(*person);
    for (const auto& [column, kept] : remainder.kept) result += "kept: " + std::string(kept.view()) + "\n";
    for (const KRString& problem : remainder.problems) result += "told: " + std::string(problem.view()) + "\n";
  });
  return result;
}

TEST(KRCSVEntryReader, LabelsComeFromTheirColumnInEachRow) {
  const KRStringList headings = {"Phone 1 - Label"_kr, "Phone 1 - Value"_kr};
  EXPECT_EQ(read(headings, "* Home,1\nWork,2\n,3\nBoat,\n"), "phone 'home': '1'\nphone 'work': '2'\nphone -: '3'\n");
}

TEST(KRCSVEntryReader, SeveralValuesOfOneCellBecomeSeveral) {
  EXPECT_EQ(read({"E-mail 1 - Label"_kr, "E-mail 1 - Value"_kr}, "Home ::: Work, a@x ::: b@x ::: "),
            "email 'home': 'a@x'\nemail 'work': 'b@x'\n");
  EXPECT_EQ(read({"E-mail 1 - Label"_kr, "E-mail 1 - Value"_kr}, "Home,a@x ::: b@x"),
            "email 'home': 'a@x'\nemail 'home': 'b@x'\n");
}

TEST(KRCSVEntryReader, BlanksStayAroundNumbersAndGoAroundAddresses) {
  EXPECT_EQ(read({"Mobile Phone"_kr, "Email"_kr}, " 1 , a@x "), "phone 'mobile': ' 1 '\nemail -: 'a@x'\n");
}

TEST(KRCSVEntryReader, AFieldOfSeveralColumnsHasALineOfEach) {
  EXPECT_EQ(read({"Home Street"_kr, "Home Street 2"_kr, "Home City"_kr}, "1 Elm St,Rear,Leeds\n,,\n"),
            "address 'home': ---'1 Elm St\nRear''Leeds'----\n");
}

TEST(KRCSVEntryReader, WhatIsNoDateIsKeptAndTold) {
  EXPECT_EQ(read({"Anniversary"_kr}, "2001-02-03\nsoon\n0000-00-00\n"),
            "otherDate 'anniversary': '2001-02-03'\nkept: soon\ntold: no date: soon\n");
}

TEST(KRCSVEntryReader, SpoiledNumbersAreTold) {
  EXPECT_EQ(read({"Mobile Phone"_kr}, "4.91E+11"),
            "phone 'mobile': '4.91E+11'\ntold: a spreadsheet has spoiled the number 4.91E+11\n");
}

TEST(KRCSVEntryReader, AccountsHaveTheirService) {
  EXPECT_EQ(read({"IM 1 - Service"_kr, "IM 1 - Value"_kr}, "Jabber,ann\n,bo\n"),
            "instantMessage -: 'ann' at 'xmpp'\ninstantMessage -: 'bo'\n");
}

}  // namespace
