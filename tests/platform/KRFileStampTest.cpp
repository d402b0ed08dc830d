#include "platform/KRFileStamp.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/support/KRTestFolder.h"

namespace {

std::optional<KRFileStamp> stampOf(const std::string& path) {
  return KRFileStamp::of(KRText(std::string_view(path)));
}

TEST(KRFileStamp, IsTheSameUntilTheFileIsChangedOrReplaced) {
  const KRTestFolder folder;
  folder.put("a", "one");
  folder.put("b", "one");
  const auto first = stampOf(folder.at("a"));
  ASSERT_TRUE(first);
  EXPECT_EQ(first, stampOf(folder.at("a")));
  EXPECT_NE(first, stampOf(folder.at("b")));
  folder.put("a", "longer");
  const auto changed = stampOf(folder.at("a"));
  EXPECT_NE(changed, first);
  std::filesystem::rename(folder.at("b"), folder.at("a"));
  EXPECT_NE(stampOf(folder.at("a")), changed);
}

TEST(KRFileStamp, FollowsLinks) {
  const KRTestFolder folder;
  folder.put("a", "one");
  ASSERT_EQ(symlink(folder.at("a").c_str(), folder.at("link").c_str()), 0);
  EXPECT_EQ(stampOf(folder.at("link")), stampOf(folder.at("a")));
}

TEST(KRFileStamp, IsNothingWithoutAFile) {
  const KRTestFolder folder;
  EXPECT_FALSE(stampOf(folder.at("missing")));
  EXPECT_FALSE(KRFileStamp::of({}));
  EXPECT_FALSE(KRFileStamp::of(""));
  EXPECT_FALSE(KRFileStamp::of(KRText("a\0b", 3)));
}

}  // namespace
