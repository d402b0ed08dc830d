#include "platform/KREmbeddedResources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "tests/support/KRTestPaths.h"

namespace {

const std::filesystem::path kResources = KR_SOURCE_DIR "/resources";

std::string contents(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST(KREmbeddedResources, HoldEachFileByteForByte) {
  ASSERT_FALSE(krEmbeddedFiles().empty());
  for (const KREmbeddedFile& file : krEmbeddedFiles()) {
    ASSERT_TRUE(std::filesystem::is_regular_file(kResources / file.path)) << file.path;
    EXPECT_EQ(file.bytes, contents(kResources / file.path)) << file.path;
  }
}

TEST(KREmbeddedResources, HoldEveryStringTableAndImage) {
  std::set<std::string> wanted;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kResources)) {
    const std::string extension = entry.path().extension().string();
    if (extension == ".strings" || extension == ".png") {
      wanted.insert(entry.path().lexically_relative(kResources).generic_string());
    }
  }
  std::set<std::string> held;
  for (const KREmbeddedFile& file : krEmbeddedFiles()) {
    held.emplace(file.path);
  }
  EXPECT_EQ(held, wanted);
}

TEST(KREmbeddedResources, StandInByteOrderOfTheirPaths) {
  EXPECT_TRUE(std::ranges::is_sorted(krEmbeddedFiles(), {}, &KREmbeddedFile::path));
}

}  // namespace
