#include "import/KRCSVPersonMaker.h"

#include <gtest/gtest.h>

#include "tests/support/KRCSVRows.h"
#include "tests/support/KRPersonText.h"

namespace {

/// The text of the persons of all rows under headings, with what is told of each; "nothing" for none.
std::string made(const KRStringList& headings, std::string_view text) {
  KRCSVPersonMaker maker(KRCSVMapping::of(headings, {}), KRCSVDialect::rfc4180(), {});
  krForRows(text, [&](const KRCSVRow& row) {
    if (maker.wantsToLearn()) maker.learn(row);
  });
  std::string result;
  krForRows(text, [&](const KRCSVRow& row) {
    const KRRef<KRTempPerson> person = maker.person(row);
    result += person ? krPersonText(*person) : "nothing\n";
    for (const KRString& problem : maker.problems()) result += "told: " + std::string(problem.view()) + "\n";
  });
  return result;
}

TEST(KRCSVPersonMaker, ABlankRowMakesNobody) {
  EXPECT_EQ(made({"First Name"_kr, "Notes"_kr}, " ,\nAnn,\n"), "nothing\nname: 'Ann'--\n");
}

TEST(KRCSVPersonMaker, WhatFitsNowhereIsKeptUnderItsHeading) {
  EXPECT_EQ(made({"Nickname"_kr, "Nickname"_kr}, "a,b,c\na,a\n"),
            "nickname: 'a'\nother 'Nickname': 'b'\nother 'Column 3': 'c'\nnickname: 'a'\n");
}

TEST(KRCSVPersonMaker, DatesAreReadAsTheFileWritesThem) {
  EXPECT_EQ(made({"Birthday"_kr}, "2/3/1980\n24/3/1980\n"), "birthday: '1980-03-02'\nbirthday: '1980-03-24'\n");
  EXPECT_EQ(made({"Birthday"_kr}, "2/3/1980\n3/24/1980\n"), "birthday: '1980-02-03'\nbirthday: '1980-03-24'\n");
}

TEST(KRCSVPersonMaker, PartsThatAreNoDateAreKeptAndTold) {
  EXPECT_EQ(made({"Birth Year"_kr, "Birth Month"_kr, "Birth Day"_kr}, "1980,7,4\n1980,13,4\n"),
            "birthday: '1980-07-04'\n"
            "other 'Birth Year': '1980'\nother 'Birth Month': '13'\nother 'Birth Day': '4'\n"
            "told: no date: 1980-13-4\n");
}

TEST(KRCSVPersonMaker, TagsAreCutAtWhatTheCellHas) {
  const std::string ab = "tags -: 'a'\ntags -: 'b'\n";
  EXPECT_EQ(made({"Categories"_kr}, "a;b\n\"a, b\"\na ::: * b\n"), ab + ab + ab);
}

}  // namespace
