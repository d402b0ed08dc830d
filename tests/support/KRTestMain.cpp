// The main function of every test program. It gives the run a home folder and a language of its own, so that no test
// reads or writes what belongs to the person who runs it, or depends on it, and takes the folder away afterwards.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace {

bool hasArgument(int argc, char** argv, std::string_view start) {
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]).starts_with(start)) {
      return true;
    }
  }
  return false;
}

// Makes the folder and points the environment into it; empty when it cannot be made.
std::filesystem::path enterHome() {
  std::string folder = (std::filesystem::temp_directory_path() / "kr-test-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) {
    return {};
  }
  std::filesystem::path home = folder;
  setenv("HOME", home.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
  setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
  setenv("XDG_CACHE_HOME", (home / "cache").c_str(), 1);
  setenv("XDG_STATE_HOME", (home / "state").c_str(), 1);
  unsetenv("KRCONTACTS_HOME");
  // Nor is the desktop asked for its address books.
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"}) {
    unsetenv(name);
  }
  setenv("LANG", "en_US.UTF-8", 1);
  return home;
}

}  // namespace

int main(int argc, char** argv) {
  // A re-executed death test lives in its parent's home, and listing the tests needs none.
  const bool needsHome =
      !hasArgument(argc, argv, "--gtest_internal_run_death_test") && !hasArgument(argc, argv, "--gtest_list_tests");
  std::filesystem::path home;
  if (needsHome) {
    home = enterHome();
    if (home.empty()) {
      std::fputs("The tests cannot make a temporary folder.\n", stderr);
      return 2;
    }
  }
  testing::InitGoogleMock(&argc, argv);
  const int result = RUN_ALL_TESTS();
  if (!home.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(home, ignored);
  }
  return result;
}
