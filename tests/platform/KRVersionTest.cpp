#include "platform/KRVersion.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/KRTestPaths.h"

namespace {

TEST(KRVersion, NumberAndTextAgreeWithTheBuild) {
  EXPECT_EQ(KRAddressBookManagerSDKVersionNumber, 1.0);
  EXPECT_TRUE(KRAddressBookManagerSDKVersionString.view().starts_with("1.0 ("));
  EXPECT_TRUE(KRAddressBookManagerSDKVersionString.view().ends_with(")"));
  std::ifstream stream(KR_SOURCE_DIR "/CMakeLists.txt");
  const std::string build{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  EXPECT_NE(build.find("project(KRAddressBookManagerSDK VERSION 1.0 "), std::string::npos);
}

}  // namespace
