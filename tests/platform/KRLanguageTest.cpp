#include "platform/KRLanguage.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <map>
#include <optional>
#include <string>

namespace {

/// Gives environment and choice back as they were.
class KRLanguageTest : public testing::Test {
 protected:
  KRLanguageTest() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LC_ADDRESS", "LANG"}) {
      const char* value = getenv(name);
      before_[name] = value == nullptr ? std::nullopt : std::optional<std::string>(value);
      unsetenv(name);
    }
    KRLanguage::set(nullptr);
  }
  ~KRLanguageTest() override {
    for (const auto& [name, value] : before_) {
      if (value) {
        setenv(name.c_str(), value->c_str(), 1);
      } else {
        unsetenv(name.c_str());
      }
    }
    KRLanguage::set(nullptr);
  }

 private:
  std::map<std::string, std::optional<std::string>> before_;
};

TEST_F(KRLanguageTest, AnEmptyEnvironmentSpeaksEnglish) {
  EXPECT_EQ(KRLanguage::current(), "en");
  EXPECT_TRUE(KRLanguage::country().isNothing());
}

TEST_F(KRLanguageTest, TheFirstVariableThatIsSetDecides) {
  setenv("LANG", "fr_CA.UTF-8", 1);
  EXPECT_EQ(KRLanguage::current(), "fr");
  KRLanguage::set(nullptr);
  setenv("LC_MESSAGES", "C", 1);
  EXPECT_EQ(KRLanguage::current(), "en");
  KRLanguage::set(nullptr);
  setenv("LC_ALL", "fr", 1);
  EXPECT_EQ(KRLanguage::current(), "fr");
  KRLanguage::set(nullptr);
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(KRLanguage::current(), "en");
}

TEST_F(KRLanguageTest, LanguagesAreReadFromLocaleNames) {
  const struct {
    const char* locale;
    const char* language;
  } kRows[] = {{"fr_FR.UTF-8", "fr"}, {"fr-CA", "fr"}, {"FR", "fr"},    {"fr@euro", "fr"}, {"frr_DE", "en"},
               {"de_DE", "en"},       {"C", "en"},     {"POSIX", "en"}, {"_FR", "en"},     {"en_GB", "en"}};
  for (const auto& row : kRows) {
    KRLanguage::set(KRString(row.locale));
    EXPECT_EQ(KRLanguage::current(), row.language) << row.locale;
  }
}

TEST_F(KRLanguageTest, WhatTheHostSetsComesFirst) {
  setenv("LC_ALL", "fr_FR.UTF-8", 1);
  KRLanguage::set("en"_kr);
  EXPECT_EQ(KRLanguage::current(), "en");
  EXPECT_EQ(KRLanguage::country(), "FR");
  KRLanguage::set("en_US"_kr);
  EXPECT_EQ(KRLanguage::country(), "US");
  KRLanguage::set(""_kr);
  EXPECT_EQ(KRLanguage::current(), "fr");
}

TEST_F(KRLanguageTest, CountriesAreReadFromLocaleNames) {
  const struct {
    const char* locale;
    const char* country;
  } kRows[] = {{"de_AT.UTF-8", "AT"}, {"zh-Hant-tw", "TW"}, {"de_CH@euro", "CH"}, {"ca_ES.UTF-8@valencia", "ES"}};
  for (const auto& row : kRows) {
    KRLanguage::set(KRString(row.locale));
    EXPECT_EQ(KRLanguage::country(), row.country) << row.locale;
  }
  KRLanguage::set("zh_Hant"_kr);
  EXPECT_TRUE(KRLanguage::country().isNothing());
  setenv("LANG", "fr_FR", 1);
  setenv("LC_ADDRESS", "nl_BE", 1);
  EXPECT_EQ(KRLanguage::country(), "BE");
}

}  // namespace
