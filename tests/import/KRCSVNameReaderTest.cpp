#include "import/KRCSVNameReader.h"

#include <gtest/gtest.h>

#include "tests/support/KRCSVRows.h"
#include "tests/support/KRPersonText.h"

namespace {

struct Row {
  const char* whole;
  bool isLastNameFirst;
  const char* parts;
};

const Row kRows[] = {
    {"Ann", false, "Ann|-|-"},
    {"Ann Lee", false, "Ann|-|Lee"},
    {"Ann Marie van Lee", false, "Ann|Marie van|Lee"},
    {" Ann  Lee ", false, "Ann|-|Lee"},
    {"Lee, Ann Marie", false, "Ann|Marie|Lee"},
    {"Lee, Ann", true, "Ann|-|Lee"},
    {"Lee Ann Marie", true, "Ann|Marie|Lee"},
    {"Lee,", false, "Lee,|-|-"},
    {",Lee", false, ",Lee|-|-"},
    {"", false, "-|-|-"},
};

TEST(KRCSVNameReader, WholeNamesComeIntoTheirNaturalParts) {
  const auto shown = [](const KRString& text) {
    return text.isNothing() ? std::string("-") : std::string(text.view());
  };
  for (const Row& row : kRows) {
    const KRCSVNameReader::Parts parts = KRCSVNameReader(row.isLastNameFirst).split(row.whole);
    EXPECT_EQ(shown(parts.first) + "|" + shown(parts.middle) + "|" + shown(parts.last), row.parts) << row.whole;
  }
}

/// The text of a person of the row, and what is kept of it.
std::string read(std::string_view text, const KRCSVPlan::Name& columns, const KRString& company = {}) {
  std::string result;
  krForRows(text, [&](const KRCSVRow& row) {
    KRCSVCells cells(false, false, {});
    cells.look(row);
    const KRCSVSingles singles;
    const auto person = krMake<KRTempPerson>();
    if (!company.isNothing()) singles.set(*person, KROrdinal::Company, company);
    KRCSVRemainder remainder;
    KRCSVNameReader(false).read(columns, cells, singles, *person, remainder);
    result += krPersonText(*person);
    for (const auto& [column, kept] : remainder.kept) result += "kept: " + std::string(kept.view()) + "\n";
  });
  return result;
}

TEST(KRCSVNameReader, PartsGoBeforeWholeNamesAndWhatTheyDoNotSayIsKept) {
  EXPECT_EQ(read("Ann,Lee,Ann Lee", {{0}, {}, {1}, {2}}), "name: 'Ann'-'Lee'\n");
  EXPECT_EQ(read("Ann,Lee,Annie Lee", {{0}, {}, {1}, {2}}), "name: 'Ann'-'Lee'\nkept: Annie Lee\n");
  EXPECT_EQ(read(",,Ann Lee", {{0}, {}, {1}, {2}}), "name: 'Ann'-'Lee'\n");
  EXPECT_EQ(read("Ann,Marie", {{0, 1}, {}, {}, {}}), "name: 'Ann Marie'--\n");
  EXPECT_EQ(read("x", {{1}, {}, {}, {2}}), "");
}

TEST(KRCSVNameReader, ARowNamedAsItsCompanyIsACompany) {
  const std::string text = read("Acme", {{}, {}, {}, {0}}, "Acme"_kr);
  EXPECT_EQ(text.find("name:"), std::string::npos) << text;
  EXPECT_NE(text.find("isOrganization"), std::string::npos) << text;
}

}  // namespace
