#include "platform/KRFileWriter.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/KRKilledProcess.h"
#include "tests/support/KRTestFolder.h"

namespace {

namespace fs = std::filesystem;

KRText asPath(const std::string& path) {
  return std::string_view(path);
}

class KRFileWriterTest : public testing::Test {
 protected:
  ~KRFileWriterTest() override { KRFile::setFault(nullptr); }

  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(folder_.path())) all.push_back(entry.path().filename().string());
    std::sort(all.begin(), all.end());
    return all;
  }
  /// What a process leaves that dies before its file has its name.
  void dieWhileWriting() const {
    ASSERT_TRUE(krDieBeforeRename([&] { static_cast<void>(KRFile::write(asPath(folder_.at("file")), "half")); }));
  }

  KRTestFolder folder_;
};

TEST_F(KRFileWriterTest, PutsPiecesTogetherWhenItIsCommitted) {
  folder_.put("file", "old");
  auto writer = KRFileWriter::open(asPath(folder_.at("file")));
  ASSERT_TRUE(writer);
  EXPECT_TRUE(writer->append("one "));
  EXPECT_TRUE(writer->append(""));
  EXPECT_TRUE(writer->append("two"));
  EXPECT_EQ(folder_.content("file"), "old");
  EXPECT_TRUE(writer->commit());
  EXPECT_EQ(folder_.content("file"), "one two");
  EXPECT_THAT(names(), testing::ElementsAre("file"));
}

TEST_F(KRFileWriterTest, WithoutACommitNothingHasHappened) {
  folder_.put("file", "old");
  {
    auto writer = KRFileWriter::open(asPath(folder_.at("file")));
    ASSERT_TRUE(writer);
    EXPECT_TRUE(writer->append("new"));
    const KRFileWriter moved = *std::move(writer);
  }
  EXPECT_EQ(folder_.content("file"), "old");
  EXPECT_THAT(names(), testing::ElementsAre("file"));
}

TEST_F(KRFileWriterTest, AFailedPieceCannotBeCommitted) {
  folder_.put("file", "old");
  auto writer = KRFileWriter::open(asPath(folder_.at("file")));
  ASSERT_TRUE(writer);
  KRFile::setFault([](KRFile::Step step) { return step == KRFile::Step::WritePiece ? ENOSPC : 0; });
  EXPECT_EQ(writer->append("new").error().code, KRErrorCode::NoSpace);
  KRFile::setFault(nullptr);
  EXPECT_EQ(writer->append("more").error().code, KRErrorCode::NoSpace);
  EXPECT_EQ(writer->commit().error().code, KRErrorCode::NoSpace);
  EXPECT_EQ(folder_.content("file"), "old");
  EXPECT_THAT(names(), testing::ElementsAre("file"));
}

TEST_F(KRFileWriterTest, FilesWithoutAFlushOfTheirOwnAreFlushedTogether) {
  std::vector<KRFile::Step> steps;
  KRFile::setFault([&](KRFile::Step step) {
    steps.push_back(step);
    return 0;
  });
  for (const char* name : {"a", "b"}) {
    auto writer = KRFileWriter::open(asPath(folder_.at(name)), {.isPrivate = true, .isFlushed = false});
    ASSERT_TRUE(writer);
    EXPECT_TRUE(writer->append(name));
    EXPECT_TRUE(writer->commit());
  }
  EXPECT_THAT(steps, testing::Not(testing::Contains(KRFile::Step::FlushTemporary)));
  EXPECT_TRUE(KRFileWriter::flushAll(asPath(folder_.path())));
  EXPECT_EQ(steps.back(), KRFile::Step::FlushTemporary);
  EXPECT_THAT(names(), testing::ElementsAre("a", "b"));
  EXPECT_EQ(folder_.content("b"), "b");
  EXPECT_EQ(KRFileWriter::flushAll(asPath(folder_.at("none"))).error().code, KRErrorCode::NotFound);
}

TEST_F(KRFileWriterTest, LeftoversOfTheDeadAreRemovedAndNothingElse) {
  dieWhileWriting();
  const std::vector<std::string> left = names();
  ASSERT_EQ(left.size(), 1U);
  const std::string pattern = left[0].substr(0, left[0].size() - 6);
  folder_.put("file", "x");
  folder_.put("file.backup", "x");
  folder_.put(pattern + "toolong", "x");
  folder_.put("a" + left[0], "x");
  fs::create_directory(folder_.at(pattern + "folder"));
  fs::create_symlink("file", folder_.at(pattern + "linked"));
  auto atWork = KRFileWriter::open(asPath(folder_.at("other")));
  ASSERT_TRUE(atWork);
  EXPECT_TRUE(atWork->append("still here"));
  const size_t before = names().size();
  KRFileWriter::removeLeftovers(asPath(folder_.at("file")));
  EXPECT_EQ(names().size(), before - 1);
  EXPECT_FALSE(fs::exists(folder_.at(left[0])));
  EXPECT_TRUE(atWork->commit());
  EXPECT_EQ(folder_.content("other"), "still here");
  KRFileWriter::removeLeftovers(asPath(folder_.at("none/file")));
  KRFileWriter::removeLeftovers(KRText());
}

TEST_F(KRFileWriterTest, LeftoversBesideWhatALinkLeadsToAreFound) {
  dieWhileWriting();
  folder_.put("file", "x");
  const KRTestFolder elsewhere;
  fs::create_symlink(folder_.at("file"), elsewhere.at("link"));
  KRFileWriter::removeLeftovers(asPath(elsewhere.at("link")));
  EXPECT_THAT(names(), testing::ElementsAre("file"));
}

TEST_F(KRFileWriterTest, AFileWithoutWritePermissionMayNotBeReplaced) {
  folder_.put("file", "x");
  fs::create_symlink("file", folder_.at("link"));
  EXPECT_TRUE(KRFileWriter::mayReplace(asPath(folder_.at("file"))));
  EXPECT_TRUE(KRFileWriter::mayReplace(asPath(folder_.at("none"))));
  EXPECT_TRUE(KRFileWriter::mayReplace(KRText()));
  ASSERT_EQ(chmod(folder_.at("file").c_str(), 0444), 0);
  for (const char* name : {"file", "link"}) {
    const KRResult<void> may = KRFileWriter::mayReplace(asPath(folder_.at(name)));
    ASSERT_FALSE(may);
    EXPECT_EQ(may.error().code, KRErrorCode::NotAllowed);
    EXPECT_THAT(may.error().sentence, testing::HasSubstr(folder_.at(name)));
    EXPECT_THAT(may.error().sentence, testing::HasSubstr("read-only"));
  }
}

TEST_F(KRFileWriterTest, WritesManyMegabytesWhole) {
  // More than is carried to the disk at a time, in pieces that do not divide it.
  std::string expected;
  auto writer = KRFileWriter::open(asPath(folder_.at("file")));
  ASSERT_TRUE(writer);
  for (int i = 0; i < 21; ++i) {
    const std::string piece(1'000'003, static_cast<char>('a' + i));
    ASSERT_TRUE(writer->append(piece));
    expected += piece;
  }
  ASSERT_TRUE(writer->commit());
  EXPECT_TRUE(folder_.content("file") == expected);
}

}  // namespace
