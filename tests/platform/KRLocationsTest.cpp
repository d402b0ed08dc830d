#include "platform/KRLocations.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace {

/// Gives the environment back as it was.
class KRLocationsTest : public testing::Test {
 protected:
  KRLocationsTest() {
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "KRCONTACTS_HOME"}) {
      const char* value = getenv(name);
      before_[name] = value == nullptr ? std::nullopt : std::optional<std::string>(value);
      unsetenv(name);
    }
  }
  ~KRLocationsTest() override {
    for (const auto& [name, value] : before_) {
      if (value) {
        setenv(name.c_str(), value->c_str(), 1);
      } else {
        unsetenv(name.c_str());
      }
    }
  }

 private:
  std::map<std::string, std::optional<std::string>> before_;
};

TEST_F(KRLocationsTest, UsualFoldersLieUnderTheHomeFolder) {
  setenv("HOME", "/home/ann", 1);
  EXPECT_EQ(KRLocations::configurationFolder(), "/home/ann/.config");
  EXPECT_EQ(KRLocations::applicationSupportFolder(), "/home/ann/.local/share");
  EXPECT_EQ(KRLocations::cacheFolder(), "/home/ann/.cache");
}

TEST_F(KRLocationsTest, EachVariableMovesItsFolder) {
  setenv("HOME", "/home/ann/", 1);
  setenv("XDG_CONFIG_HOME", "/c/", 1);
  setenv("XDG_DATA_HOME", "/d", 1);
  setenv("XDG_CACHE_HOME", "/e/f", 1);
  EXPECT_EQ(KRLocations::configurationFolder(), "/c");
  EXPECT_EQ(KRLocations::applicationSupportFolder(), "/d");
  EXPECT_EQ(KRLocations::cacheFolder(), "/e/f");
}

TEST_F(KRLocationsTest, RelativeAndEmptyVariablesAreIgnored) {
  setenv("HOME", "/home/ann", 1);
  setenv("XDG_CONFIG_HOME", "relative", 1);
  setenv("XDG_DATA_HOME", "", 1);
  EXPECT_EQ(KRLocations::configurationFolder(), "/home/ann/.config");
  EXPECT_EQ(KRLocations::applicationSupportFolder(), "/home/ann/.local/share");
}

TEST_F(KRLocationsTest, OneVariableMovesAll) {
  setenv("HOME", "/home/ann", 1);
  setenv("XDG_CONFIG_HOME", "/c", 1);
  setenv("KRCONTACTS_HOME", "/safe/place/", 1);
  EXPECT_EQ(KRLocations::configurationFolder(), "/safe/place/config");
  EXPECT_EQ(KRLocations::applicationSupportFolder(), "/safe/place/data");
  EXPECT_EQ(KRLocations::cacheFolder(), "/safe/place/cache");
  setenv("KRCONTACTS_HOME", "here", 1);
  EXPECT_EQ(KRLocations::cacheFolder().view(), (std::filesystem::current_path() / "here/cache").string());
  setenv("KRCONTACTS_HOME", "", 1);
  EXPECT_EQ(KRLocations::configurationFolder(), "/c");
}

TEST_F(KRLocationsTest, WithoutHomeTheAccountTells) {
  const passwd* account = getpwuid(getuid());
  const std::string home = account == nullptr ? "" : account->pw_dir;
  const KRString folder = KRLocations::configurationFolder();
  if (home.size() > 1) {
    EXPECT_EQ(folder.view(), home + "/.config");
  } else {
    EXPECT_TRUE(folder.isNothing() || folder == "/.config");
  }
}

}  // namespace
