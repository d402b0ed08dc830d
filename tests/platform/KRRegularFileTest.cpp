#include "platform/KRRegularFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/KRTestFolder.h"

namespace {

class KRRegularFileTest : public testing::Test {
 protected:
  KRResult<KRBuffer> read(const std::string& name) const {
    const std::string path = folder_.at(name);
    return krReadRegularFile(std::string_view(path));
  }

  KRTestFolder folder_;
};

TEST_F(KRRegularFileTest, ReadsAFileAlsoThroughALink) {
  folder_.put("a", "one");
  folder_.put("empty", "");
  std::filesystem::create_symlink("a", folder_.at("link"));
  EXPECT_EQ(read("a")->view(), "one");
  EXPECT_EQ(read("link")->view(), "one");
  EXPECT_EQ(read("empty")->view(), "");
}

TEST_F(KRRegularFileTest, WaitsForNoPipeAndReadsNoDevice) {
  ASSERT_EQ(mkfifo(folder_.at("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", folder_.at("device"));
  for (const char* name : {"pipe", "device"}) {
    const auto content = read(name);
    ASSERT_FALSE(content);
    EXPECT_EQ(content.error().code, KRErrorCode::Failed);
    EXPECT_EQ(content.error().sentence, "cannot read " + folder_.at(name) + ": it is no regular file");
  }
}

TEST_F(KRRegularFileTest, RefusesWhatFitsIntoNoMemory) {
  folder_.put("large", "");
  // A file of nothing but a hole.
  const auto memory = static_cast<off_t>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
  ASSERT_EQ(truncate(folder_.at("large").c_str(), memory + 1), 0);
  EXPECT_EQ(read("large").error().code, KRErrorCode::TooLarge);
}

TEST_F(KRRegularFileTest, TellsWhatElseIsInTheWay) {
  EXPECT_EQ(read("none").error().code, KRErrorCode::NotFound);
  EXPECT_EQ(read(".").error().code, KRErrorCode::IsFolder);
  EXPECT_EQ(krReadRegularFile(KRText()).error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(krReadRegularFile(KRText(std::string_view("a\0b", 3))).error().code, KRErrorCode::InvalidArgument);
}

}  // namespace
