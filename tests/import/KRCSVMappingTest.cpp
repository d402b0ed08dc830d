#include "import/KRCSVMapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "import/KRCSVHeadings.h"
#include "platform/KRFilePreferences.h"
#include "tests/support/KRCSVTable.h"
#include "tests/support/KRPersonText.h"
#include "tests/support/KRPrivatePreferences.h"
#include "tests/support/KRProcesses.h"
#include "tests/support/KRTestFolder.h"

namespace {

using testing::HasSubstr;

KRCSVMapping mappingOf(const KRStringList& headings) {
  return KRCSVMapping::of(headings, {});
}

TEST(KRCSVMapping, SaysWhyAColumnFeedsWhatItFeeds) {
  KRCSVMapping mapping = KRCSVMapping::of({"First Name"_kr, "Phone 1 - Value"_kr, "x"_kr, "y"_kr, "z"_kr},
                                          {{"Ann"_kr, "1"_kr, "a@b.c"_kr, "0171 55501"_kr, "?"_kr}});
  ASSERT_TRUE(mapping.set("z", "role"));
  const auto& columns = mapping.columns();
  EXPECT_EQ(columns[0].reason(), "heading, phone-book");
  EXPECT_EQ(columns[1].reason(), "heading, numbered-pairs");
  EXPECT_EQ(columns[2].reason(), "first values");
  EXPECT_EQ(columns[2].target.name(), "email");
  EXPECT_EQ(columns[3].target.name(), "phone");
  EXPECT_EQ(columns[4].reason(), "chosen");
  EXPECT_EQ(mappingOf({"q"_kr}).columns()[0].reason(), "not known, kept as it is");
}

TEST(KRCSVMapping, IsChangedByTheHost) {
  KRCSVReading reading = krCSVReading("Who,Ring,Where\nAnn Lee,0171,Leeds\n");
  ASSERT_TRUE(reading.mapping().set("Who=name"));
  ASSERT_TRUE(reading.mapping().set("ring=phone:Werk:statt"));
  ASSERT_TRUE(reading.mapping().set("column 3=address.city:home"));
  EXPECT_EQ(krPersonText(*KRCSVPersons::of(std::move(reading)).persons.at(0)),
            "name: 'Ann'-'Lee'\nphone 'Werk:statt': '0171'\naddress 'home': ----'Leeds'----\n");
}

TEST(KRCSVMapping, JoinsChosenPartsOfOneAddress) {
  KRCSVReading reading = krCSVReading("a,b,c,d,e\nAnn,Elm St,Leeds,x,y\n");
  for (const char* each :
       {"a=firstName", "b=address.street:home", "c=address.city:home", "d=address.city:work", "e=ignore"}) {
    ASSERT_TRUE(reading.mapping().set(each)) << each;
  }
  EXPECT_EQ(krPersonText(*KRCSVPersons::of(std::move(reading)).persons.at(0)),
            "name: 'Ann'--\naddress 'home': ---'Elm St''Leeds'----\naddress 'work': ----'x'----\n");
}

TEST(KRCSVMapping, TakesTheLongestHeadingBeforeAnEqualsSign) {
  KRCSVMapping mapping = mappingOf({"a=b"_kr, "a"_kr});
  ASSERT_TRUE(mapping.set("a=b=note"));
  EXPECT_EQ(mapping.columns()[0].target.name(), "note");
  EXPECT_EQ(mapping.columns()[1].target.name(), "other");
  ASSERT_TRUE(mapping.set("a=note"));
  EXPECT_EQ(mapping.columns()[1].target.name(), "note");
}

TEST(KRCSVMapping, ListsWhatIsKnownWhenSomethingIsNot) {
  KRCSVMapping mapping = mappingOf({"Name"_kr, "Shoe size"_kr});
  const auto heading = mapping.set("Hat size=note");
  EXPECT_EQ(heading.error().code, KRErrorCode::InvalidArgument);
  EXPECT_THAT(heading.error().sentence, HasSubstr("Name, Shoe size"));
  const auto property = mapping.set("Shoe size=shoes");
  EXPECT_EQ(property.error().code, KRErrorCode::InvalidArgument);
  EXPECT_THAT(property.error().sentence, HasSubstr("firstName"));
  EXPECT_EQ(mapping.set("Shoe size").error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(mapping.set("").error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(mapping.set("=note").error().code, KRErrorCode::InvalidArgument);
}

TEST(KRCSVMapping, IsSavedUnderANameAndUsedAgain) {
  const KRPrivatePreferences preferences;
  KRCSVMapping first = mappingOf({"Who"_kr, "Ring"_kr, "Phone 1 - Value"_kr});
  ASSERT_TRUE(first.set("Who=lastName"));
  ASSERT_TRUE(first.set("Ring=phone:mobile"));
  ASSERT_TRUE(first.save("club"_kr));
  ASSERT_TRUE(first.save("another"_kr));
  EXPECT_EQ(KRCSVMapping::savedNames(), (KRStringList{"another"_kr, "club"_kr}));

  KRCSVMapping later = mappingOf({"Ring"_kr, "New"_kr, "WHO"_kr, "Phone 1 - Value"_kr});
  ASSERT_TRUE(later.use("club"_kr));
  EXPECT_EQ(later.columns()[0].target.name(), "phone");
  EXPECT_EQ(later.columns()[0].label, "mobile");
  EXPECT_EQ(later.columns()[0].reason(), "saved mapping");
  EXPECT_EQ(later.columns()[1].reason(), "not known, kept as it is");
  EXPECT_EQ(later.columns()[2].target.name(), "lastName");
  EXPECT_EQ(later.columns()[3].number, 1U);

  const auto missing = later.use("choir"_kr);
  EXPECT_EQ(missing.error().code, KRErrorCode::NotFound);
  EXPECT_THAT(missing.error().sentence, HasSubstr("another, club"));
  EXPECT_EQ(later.save(""_kr).error().code, KRErrorCode::InvalidArgument);
  ASSERT_TRUE(KRCSVMapping::removeSaved("club"_kr));
  EXPECT_EQ(KRCSVMapping::savedNames(), (KRStringList{"another"_kr}));
  EXPECT_EQ(later.use("club"_kr).error().code, KRErrorCode::NotFound);
}

TEST(KRCSVMapping, KeepsToAPresetWhenOneIsNamed) {
  EXPECT_EQ(KRCSVMapping::of({"Ort"_kr, "Name"_kr}, {}, "office-columns").columns()[0].target.name(), "other");
  EXPECT_EQ(KRCSVMapping::of({"Ort"_kr, "Name"_kr}, {}, "office-columns").columns()[1].target.name(), "name");
  EXPECT_EQ(KRCSVMapping::of({"Ort"_kr}, {}, "office-columns-de").columns()[0].target.name(), "address.city");
  EXPECT_EQ(mappingOf({"Ort"_kr, "PLZ"_kr, "Name"_kr}).preset(), "office-columns-de");
  EXPECT_TRUE(mappingOf({"?"_kr}).preset().isNothing());
}

TEST(KRCSVMapping, TakesAPlainNameForThePartThatIsMissing) {
  EXPECT_EQ(mappingOf({"Vorname"_kr, "Name"_kr}).columns()[1].target.name(), "lastName");
  EXPECT_EQ(mappingOf({"Nombre"_kr, "Apellidos"_kr}).columns()[0].target.name(), "firstName");
  EXPECT_EQ(mappingOf({"Vorname"_kr, "Nachname"_kr, "Name"_kr}).columns()[2].target.name(), "name");
  EXPECT_EQ(mappingOf({"Display Name"_kr, "First Name"_kr}).columns()[0].target.name(), "name");
}

TEST(KRCSVMapping, ManyProcessesSaveMappingsAtOnce) {
  constexpr int kProcesses = 6;
  const KRPrivatePreferences preferences;
  const KRTestFolder folder;
  const KRString path(folder.at("settings.plist"));
  KRPreferences::setStandard(krMake<KRFilePreferences>(path));
  const KRCSVMapping mapping = mappingOf({"Name"_kr});
  ASSERT_TRUE(mapping.save("old"_kr));
  krRunInProcesses(kProcesses, [&](int number) {
    bool isWell = number != 0 || KRCSVMapping::removeSaved("old"_kr);
    for (int i = 0; i < 5; ++i) {
      isWell = isWell && mapping.save(KRString(std::to_string(number) + "." + std::to_string(i)));
    }
    return isWell;
  });
  EXPECT_EQ(KRCSVMapping::savedNames().size(), size_t{kProcesses} * 5);
}

}  // namespace
