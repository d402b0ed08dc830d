#include "contacts/model/KRAddressFormater.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "contacts/model/KRCountry.h"

namespace {

/// Sets the locale variables for one test and puts them back.
class LocaleVariables {
 public:
  using Values = std::map<std::string, std::string>;
  explicit LocaleVariables(const Values& values) {
    for (const char* name : {"LC_ALL", "LC_ADDRESS", "LANG"}) {
      const char* old = std::getenv(name);
      old_[name] = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
      const auto value = values.find(name);
      set(name, value != values.end() ? std::optional<std::string>(value->second) : std::nullopt);
    }
  }
  ~LocaleVariables() {
    for (const auto& [name, value] : old_) set(name, value);
  }
  LocaleVariables(const LocaleVariables&) = delete;
  LocaleVariables& operator=(const LocaleVariables&) = delete;

 private:
  static void set(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
  std::map<std::string, std::optional<std::string>> old_;
};

std::string localCode(const LocaleVariables::Values& values) {
  const LocaleVariables locale(values);
  return std::string(KRCountry::local()->code().view());
}

TEST(KRCountry, ReadsTheRegionOfTheLocale) {
  EXPECT_EQ(localCode({{"LANG", "de_AT.UTF-8@euro"}}), "AT");
  EXPECT_EQ(localCode({{"LANG", "zh_Hant_TW.UTF-8"}}), "TW");
  EXPECT_EQ(localCode({{"LANG", "fr-ch"}}), "CH");
  EXPECT_EQ(localCode({{"LANG", "en_US.UTF-8"}, {"LC_ADDRESS", "ja_JP.UTF-8"}}), "JP");
  EXPECT_EQ(localCode({{"LC_ADDRESS", "ja_JP.UTF-8"}, {"LC_ALL", "en_GB.UTF-8"}}), "GB");
  EXPECT_EQ(localCode({{"LC_ALL", ""}, {"LANG", "pt_BR"}}), "BR");
}

TEST(KRCountry, IsTheUnitedStatesWhenTheLocaleNamesNoRegion) {
  for (const char* value : {"C", "POSIX", "C.UTF-8", "de", "es_419", "_", "x_y", "sr_\xD0\xA0"}) {
    EXPECT_EQ(localCode({{"LANG", value}}), "US") << value;
  }
  EXPECT_EQ(localCode({}), "US");
  // The variable that governs is the first that is set, whatever it says.
  EXPECT_EQ(localCode({{"LC_ALL", "C"}, {"LANG", "fr_FR.UTF-8"}}), "US");
}

std::string order(const char* locale) {
  const LocaleVariables variables(LocaleVariables::Values{{"LC_ALL", locale}});
  std::string names;
  for (const KRAddressFieldItem* item : KRAddressFormater::fieldArrayLocal()) {
    names.append(names.empty() ? "" : " ").append(item->name().view());
  }
  return names;
}

TEST(KRAddressFormater, OrdersTheFieldsAsTheCountryDoes) {
  EXPECT_EQ(order("en_US.UTF-8"), "street extended poBox city region postalCode country");
  EXPECT_EQ(order("en_GB.UTF-8"), "street extended poBox city region postalCode country");
  EXPECT_EQ(order("de_DE.UTF-8"), "street extended poBox postalCode city region country");
  EXPECT_EQ(order("fr_FR.UTF-8"), "street extended poBox postalCode city region country");
  EXPECT_EQ(order("ja_JP.UTF-8"), "country postalCode region city street extended poBox");
  EXPECT_EQ(order("zh_CN.UTF-8"), "country region city street extended poBox postalCode");
  EXPECT_EQ(order("hu_HU.UTF-8"), "city street extended poBox postalCode region country");
  EXPECT_EQ(order("xx_XX.UTF-8"), order("en_US.UTF-8"));
}

TEST(KRAddressFormater, ListsEveryFieldOnceWhateverTheCountry) {
  for (const char* locale : {"en_US", "de_DE", "ja_JP", "zh_CN", "hu_HU", "C"}) {
    const LocaleVariables variables(LocaleVariables::Values{{"LC_ALL", locale}});
    std::set<std::string> names;
    for (const KRAddressFieldItem* item : KRAddressFormater::fieldArrayLocal()) {
      names.insert(std::string(item->name().view()));
    }
    EXPECT_EQ(names.size(), kKRAddressFieldCount) << locale;
    EXPECT_EQ(&KRAddressFormater::fieldArrayLocal(), &KRAddressFormater::fieldArrayLocal());
  }
}

TEST(KRAddressFormater, WritesOneLineWithEveryField) {
  auto address = krMake<KRObjectAddress>();
  address->setStringValue("Exeter"_kr, "city"_kr);
  address->setStringValue("1 Main Road"_kr, "street"_kr);
  address->setStringValue("9"_kr, "zone"_kr);
  EXPECT_EQ(KRAddressFormater(address.get()).formatString(), "street: 1 Main Road, city: Exeter, zone: 9");
}

TEST(KRAddressFormater, MarksWhatWouldPassForAnotherFieldOrBreakTheLine) {
  auto address = krMake<KRObjectAddress>();
  address->setStringValue("1, city: x\\\n\r\ty"_kr, "street"_kr);
  EXPECT_EQ(KRAddressFormater(address.get()).formatString(), "street: 1\\, city\\: x\\\\\\n\\r\\ty");
}

TEST(KRAddressFormater, IsEmptyWithoutFieldsOrAddress) {
  EXPECT_EQ(KRAddressFormater(krMake<KRObjectAddress>().get()).formatString(), "");
  EXPECT_EQ(KRAddressFormater(nullptr).formatString(), "");
}

}  // namespace
