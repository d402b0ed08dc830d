#include "import/KRCSVHeadings.h"

#include <gtest/gtest.h>

#include <string>

#include "import/KRCSVHeadingTable.h"

namespace {

/// "target label number".
std::string meaningOf(KRText heading) {
  const auto meaning = KRCSVHeadings::meaningOf(heading);
  if (!meaning) return "unknown";
  std::string text(meaning->target.name().view());
  if (!meaning->label.isNothing()) text += " " + std::string(meaning->label.view());
  if (meaning->number != 0) text += " " + std::to_string(meaning->number);
  return text;
}

TEST(KRCSVHeadings, UnderstandsEveryRowOfTheTableAsItIsWritten) {
  for (const auto& preset : KRCSVHeadingTable::presets()) {
    for (const auto& heading : preset.headings) {
      ASSERT_TRUE(KRCSVTarget::named(heading.target)) << heading.text.view();
      std::string written(heading.text.view());
      if (const size_t number = written.find('#'); number != std::string::npos) written[number] = '3';
      const auto meaning = KRCSVHeadings::meaningOf(std::string_view(written), preset.name);
      ASSERT_TRUE(meaning) << written;
      EXPECT_EQ(meaning->target.name(), KRCSVTarget::named(heading.target)->name()) << written;
      EXPECT_EQ(meaning->preset, preset.name);
    }
  }
}

TEST(KRCSVHeadings, ComparesWordsOnly) {
  const struct {
    const char* heading;
    const char* normalized;
    uint32_t number;
  } kRows[] = {
      {" E-Mail 2: Adresse", "email # adresse", 2},
      {"Home ZipCode", "home zip code", 0},
      {"first_name", "first name", 0},
      {"Phone 12 - Value", "phone # value", 12},
      {"Home Address2", "home address #", 2},
      {"givenName", "given name", 0},
      {"Straße (geschäftlich)", "straße geschäftlich", 0},
      {"iPhone", "iphone", 0},
      {"ÜBER", "über", 0},
      {"Manager’s Name", "manager s name", 0},
      {"a\u00A0b", "a b", 0},
      {"", "", 0},
      {"Phone 10000 - Value", "phone # value", 10000},
      {"Phone 131072 - Value", "phone # value", 131072},
      {"1234567", "1234567", 0},
      {"URL", "url", 0},
  };
  for (const auto& row : kRows) {
    uint32_t number = 99;
    EXPECT_EQ(KRCSVHeadings::normalized(row.heading, number), row.normalized) << row.heading;
    EXPECT_EQ(number, row.number) << row.heading;
  }
}

TEST(KRCSVHeadings, FindsTheLabelBeforeOrBehind) {
  const struct {
    const char* heading;
    const char* meaning;
  } kRows[] = {
      {"First Name", "firstName"},
      {"LAST NAME ", "lastName"},
      {"Home Phone 2", "phone home"},
      {"Business Fax", "phone work fax"},
      {"Other Street 3", "address.street other"},
      {"Business Country/Region", "address.country work"},
      {"Phone 2 - Type", "phone.label 2"},
      {"Address 3 - Extended Address", "address.extended 3"},
      {"E-mail 2 Address", "email"},
      {"Work ZipCode", "address.postalCode work"},
      {"Home Address PO Box", "address.poBox home"},
      {"Privat: Ort", "address.city home"},
      {"Dienstlich: Adresse 2", "address work"},
      {"Tel. dienstlich", "phone work"},
      {"Fax (privat)", "phone home fax"},
      // Look-alikes: one is the country, the other is not.
      {"Region geschäftlich", "address.region work"},
      {"Land/Region geschäftlich", "address.country work"},
      {"Bundesland/Kanton privat", "address.region home"},
      {"Rue (bureau) 2", "address.street work"},
      {"Pays/Région (domicile)", "address.country home"},
      {"Dép/Région (bureau)", "address.region work"},
      {"Télécopie (bureau)", "phone work fax"},
      {"Calle del trabajo", "address.street work"},
      {"Custom 1", "unknown"},
      {"Office Location", "unknown"},
      {"Company Yomi", "unknown"},
      {"", "unknown"},
      {"---", "unknown"},
  };
  for (const auto& row : kRows) EXPECT_EQ(meaningOf(row.heading), row.meaning) << row.heading;
}

TEST(KRCSVHeadings, KeepsToAPreset) {
  EXPECT_TRUE(KRCSVHeadings::meaningOf("Vorname", "office-columns-de"));
  EXPECT_FALSE(KRCSVHeadings::meaningOf("Vorname", "office-columns"));
  EXPECT_FALSE(KRCSVHeadings::meaningOf("Vorname", "no such preset"));
  EXPECT_EQ(KRCSVHeadings::presets().size(), KRCSVHeadingTable::presets().size());
}

}  // namespace
