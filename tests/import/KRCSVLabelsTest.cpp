#include "import/KRCSVLabels.h"

#include <gtest/gtest.h>

namespace {

TEST(KRCSVLabels, UsualWordsAreWrittenAsCardsHaveThem) {
  EXPECT_EQ(krCSVUsualLabel("Home"), "home");
  EXPECT_EQ(krCSVUsualLabel("HomeFax"), "home fax");
  EXPECT_EQ(krCSVUsualLabel("CELL"), "mobile");
  EXPECT_EQ(krCSVUsualLabel("IPhone"), "iPhone");
  EXPECT_EQ(krCSVUsualLabel("Boat"), "Boat");
  EXPECT_EQ(krCSVUsualLabel(""), "");
}

TEST(KRCSVLabels, TheStarOfTheExportersOwnNamesGoes) {
  EXPECT_EQ(krCSVWithoutStar(" * Home "), "Home");
  EXPECT_EQ(krCSVWithoutStar("*Home"), "*Home");
}

TEST(KRCSVLabels, ALabelHasItsName) {
  EXPECT_FALSE(krCSVSharedLabel(KRText()));
  EXPECT_EQ(krCSVSharedLabel("home")->name(), "home");
  EXPECT_EQ(krCSVSharedLabel("home").get(), krCSVSharedLabel("home").get());
  EXPECT_EQ(krCSVSharedLabel("Boat")->name(), "Boat");
}

TEST(KRCSVLabels, SingleValuesAreLabelledWithTheirProperty) {
  const KRCSVSingles singles;
  const auto one = krMake<KRTempPerson>();
  const auto other = krMake<KRTempPerson>();
  singles.set(*one, KROrdinal::Note, "a"_kr);
  singles.set(*other, KROrdinal::Note, "b"_kr);
  const auto labelOf = [](const KRTempPerson& person) {
    return dynamic_cast<KRMutableSingleValue&>(*person.valueByPropertyName(KRProPertyNote)).label();
  };
  EXPECT_EQ(labelOf(*one)->name(), "Note");
  EXPECT_EQ(labelOf(*one).get(), labelOf(*other).get());
}

}  // namespace
