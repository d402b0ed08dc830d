#include "platform/KRResources.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "platform/KRValue.h"

namespace {

std::set<std::string> keysOf(const KRStringTable& table) {
  std::set<std::string> keys;
  for (const KRString& key : table.keys()) keys.emplace(key.view());
  return keys;
}

TEST(KRResources, BothLanguagesHaveTheSameKeysAndNoMistakes) {
  const KRStringTable& english = KRResources::strings("en");
  const KRStringTable& french = KRResources::strings("fr");
  EXPECT_EQ(english.mistakes(), 0U);
  EXPECT_EQ(french.mistakes(), 0U);
  EXPECT_GT(english.count(), 40U);
  EXPECT_EQ(keysOf(english), keysOf(french));
  EXPECT_EQ(KRResources::languages(), (KRStringList{"en"_kr, "fr"_kr}));
  EXPECT_EQ(KRResources::strings("tlh").count(), 0U);
  EXPECT_EQ(KRResources::strings(KRText()).count(), 0U);
}

TEST(KRResources, NoTextIsEmptyOrStandsForTwoThingsOfOneKind) {
  for (const char* language : {"en", "fr"}) {
    const KRStringTable& table = KRResources::strings(language);
    std::map<std::string, std::string> seen;
    for (const KRString& key : table.keys()) {
      const KRString text = table.find(key);
      EXPECT_FALSE(text.isEmpty()) << key.view();
      const std::string kind(key.view().substr(0, key.view().rfind('_')));
      const auto [place, isNew] = seen.emplace(kind + ": " + std::string(text.view()), key.view());
      EXPECT_TRUE(isNew) << language << ": " << key.view() << " reads like " << place->second;
    }
  }
}

TEST(KRResources, FilesAreFoundByTheirPath) {
  EXPECT_TRUE(KRResources::file("en.lproj/Localizable.strings").starts_with("/*"));
  EXPECT_EQ(KRResources::file("en.lproj").data(), nullptr);
  EXPECT_EQ(KRResources::file(KRText()).data(), nullptr);
}

TEST(KRResources, EveryNamedImageIsAPicture) {
  for (const char* name :
       {"pic_trash_logo1", "pic_trash_logo2", "pic_G", "pic_F", "pic_T", "pic_L", "pic_E", "pic_O"}) {
    const KRRef<KRData> image = KRResources::imageNamed(name);
    ASSERT_TRUE(image) << name;
    EXPECT_TRUE(image->bytes().starts_with("\x89PNG\r\n\x1A\n")) << name;
    EXPECT_EQ(image, KRResources::imageNamed(name)) << name;
  }
  EXPECT_FALSE(KRResources::imageNamed("pic_none"));
  EXPECT_FALSE(KRResources::imageNamed("images/pic_G"));
  EXPECT_FALSE(KRResources::imageNamed(KRText()));
}

}  // namespace
