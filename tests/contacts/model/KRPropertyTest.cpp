#include "contacts/model/KRProperty.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(KRProperty, FindsEveryStandardPropertyByItsName) {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    EXPECT_EQ(KRProperty::propertyWithName(property->name()), property) << property->name().view();
    EXPECT_EQ(KRProperty::propertyWithOrdinal(property->ordinal()), property);
  }
  EXPECT_EQ(KRProperty::StandardPropertyArray().size(), kKROrdinalCount);
}

TEST(KRProperty, FindsNothingUnderOtherNames) {
  for (const char* name : {"", "Name", "names", "nam", "heading", "phones", "E-mail", "xhone", "KRProPertyPhone"}) {
    EXPECT_EQ(KRProperty::propertyWithName(name), nullptr) << name;
  }
  EXPECT_EQ(KRProperty::propertyWithName(KRText()), nullptr);
}

TEST(KRProperty, TellsNamesApartThatDifferInOneCharacter) {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const std::string name(property->name().view());
    for (size_t i = 0; i < name.size(); ++i) {
      for (const char c : {'a', 'e', 'o', 'Z', '\0'}) {
        std::string changed = name;
        changed[i] = c;
        const KRProperty* found = KRProperty::propertyWithName(std::string_view(changed));
        EXPECT_TRUE(changed == name ? found == property : found == nullptr || found->name().view() == changed);
      }
    }
  }
}

TEST(KRProperty, KeepsTheOrderThatOrdinalsName) {
  const auto& all = KRProperty::StandardPropertyArray();
  for (size_t place = 0; place < all.size(); ++place) EXPECT_EQ(all[place]->ordinal(), static_cast<KROrdinal>(place));
  EXPECT_EQ(all.front()->name(), KRProPertyName);
  EXPECT_EQ(all.back()->name(), KRProPertyOther);
  EXPECT_LT(KROrdinal::Phone, KROrdinal::Company);
  EXPECT_LT(KROrdinal::Email, KROrdinal::Company);
  EXPECT_LT(KROrdinal::Address, KROrdinal::Company);
}

struct Row {
  KRString name;
  const char* constant;
  int32_t valueType;
  int32_t subValueType;
};

TEST(KRProperty, CarriesItsConstantAndItsTypes) {
  const Row rows[] = {
      {KRProPertyName, "KRProPertyName", 5, 0},
      {KRProPertyNickname, "KRProPertyNickname", 0, 0},
      {KRProPertyTitle, "KRProPertyTitle", 0, 0},
      {KRProPertySuffix, "KRProPertySuffix", 0, 0},
      {KRProPertyCompany, "KRProPertyCompany", 0, 0},
      {KRProPertyJobTitle, "KRProPertyJobTitle", 0, 0},
      {KRProPertyIsOrganization, "KRProPertyIsOrganization", 0, 0},
      {KRProPertyNote, "KRProPertyNote", 0, 0},
      {KRProPertyBirthday, "KRProPertyBirthday", 3, 0},
      {KRProPertyTags, "KRProPertyTags", 10, 0},
      {KRProPertyThumbnail, "KRProPertyThumbnail", 11, 0},
      {KRProPertyPhone, "KRProPertyPhone", 12, 6},
      {KRProPertyEmail, "KRProPertyEmail", 12, 7},
      {KRProPertyAddress, "KRProPertyAddress", 12, 9},
      {KRProPertyInstantMessage, "KRProPertyInstantMessage", 12, 13},
      {KRProPertyOther, "KRProPertyOther", 12, 0},
      {KRProPertyPhoneticFirstName, "KRProPertyPhoneticFirstName", 0, 0},
      {KRProPertyPhoneticMiddleName, "KRProPertyPhoneticMiddleName", 0, 0},
      {KRProPertyPhoneticLastName, "KRProPertyPhoneticLastName", 0, 0},
      {KRProPertyDepartment, "KRProPertyDepartment", 0, 0},
      {KRProPertyRole, "KRProPertyRole", 0, 0},
      {KRProPertyURL, "KRProPertyURL", 12, 0},
      {KRProPertyOtherDate, "KRProPertyOtherDate", 12, 3},
      {KRProPertyRelatedName, "KRProPertyRelatedName", 12, 0},
      {KRProPertySocialProfile, "KRProPertySocialProfile", 12, 0},
  };
  ASSERT_EQ(std::size(rows), kKROrdinalCount);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.constant);
    const KRProperty* property = KRProperty::propertyWithName(row.name);
    ASSERT_NE(property, nullptr);
    EXPECT_EQ(property->constantName(), row.constant);
    EXPECT_EQ(property->valueType(), row.valueType);
    EXPECT_EQ(property->subValueType(), row.subValueType);
    EXPECT_EQ(property->isMultiple(), row.valueType == 12);
  }
}

TEST(KRProperty, ShowsEveryPropertyUnderANameOfItsOwn) {
  std::set<std::string> shown;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const std::string name(property->displayName().view());
    EXPECT_NE(name.find_first_not_of(' '), std::string::npos);
    EXPECT_TRUE(shown.insert(name).second) << name;
    // A property that the tables do not name would show its key.
    EXPECT_EQ(name.find("KRProperty_"), std::string::npos) << name;
  }
}

TEST(KRProperty, ShowsTheNamesThatHeadingsOfExportsCarry) {
  EXPECT_EQ(KRProperty::propertyWithName(KRProPertyTitle)->displayName(), "Prefix");
  EXPECT_EQ(KRProperty::propertyWithName(KRProPertyJobTitle)->displayName(), "Job Title");
  EXPECT_EQ(KRProperty::propertyWithName(KRProPertyEmail)->displayName(), "E-mail");
}

}  // namespace
