#include "platform/KRFile.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/KRTestFolder.h"

namespace {

namespace fs = std::filesystem;

KRText asPath(const std::string& path) {
  return std::string_view(path);
}

std::string contentOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

mode_t modeOf(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class KRFileTest : public testing::Test {
 protected:
  KRFileTest() {
    std::string pattern = (fs::temp_directory_path() / "kr-file-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~KRFileTest() override {
    KRFile::setFault(nullptr);
    fs::remove_all(folder_);
  }
  std::string at(const std::string& name) const { return folder_ + "/" + name; }
  void put(const std::string& name, const std::string& content) const { std::ofstream(at(name)) << content; }
  size_t entries() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  std::string folder_;
};

TEST_F(KRFileTest, TellsKindsApart) {
  put("file", "x");
  ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
  fs::create_symlink(at("file"), at("link"));
  fs::create_symlink(at("gone"), at("dangling"));
  EXPECT_EQ(KRFile::kind(asPath(at("file"))), KRFile::Kind::Regular);
  EXPECT_EQ(KRFile::kind(asPath(at("link"))), KRFile::Kind::Regular);
  EXPECT_EQ(KRFile::kind(asPath(folder_)), KRFile::Kind::Folder);
  EXPECT_EQ(KRFile::kind(asPath(at("pipe"))), KRFile::Kind::Other);
  EXPECT_EQ(KRFile::kind(asPath(at("dangling"))), KRFile::Kind::Missing);
  EXPECT_EQ(KRFile::kind(KRText()), KRFile::Kind::Missing);
  EXPECT_EQ(KRFile::kind(""), KRFile::Kind::Missing);
}

TEST_F(KRFileTest, ReadsAllBytes) {
  put("empty", "");
  put("small", std::string("a\0b\xFF\n", 5));
  std::string large(9 << 20U, 'x');
  large[5000000] = 'y';
  put("large", large);
  for (const char* name : {"empty", "small", "large"}) {
    const auto content = KRFile::read(asPath(at(name)));
    ASSERT_TRUE(content) << name;
    EXPECT_TRUE(content->view() == contentOf(at(name))) << name;
  }
}

TEST_F(KRFileTest, ReadsPipesToTheirEnd) {
  const std::string pipe = at("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::string sent(300000, 'p');
  sent += "end";
  std::thread writer([&] { std::ofstream(pipe) << sent; });
  const auto content = KRFile::read(asPath(pipe));
  writer.join();
  ASSERT_TRUE(content);
  EXPECT_TRUE(content->view() == sent);
}

TEST_F(KRFileTest, ReadingTellsWhyItFails) {
  EXPECT_EQ(KRFile::read(asPath(at("missing"))).error().code, KRErrorCode::NotFound);
  EXPECT_EQ(KRFile::read(asPath(folder_)).error().code, KRErrorCode::IsFolder);
  EXPECT_EQ(KRFile::read(KRText()).error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(KRFile::read(KRText("a\0b", 3)).error().code, KRErrorCode::InvalidArgument);
  put("file", "x");
  EXPECT_EQ(KRFile::read(asPath(at("file/below"))).error().code, KRErrorCode::NotFolder);
  const std::string sentence = KRFile::read(asPath(at("missing"))).error().sentence;
  EXPECT_NE(sentence.find(at("missing")), std::string::npos) << sentence;
}

TEST_F(KRFileTest, SentencesAreWellFormedWhateverThePath) {
  const std::string sentence = KRFile::read(KRText("\xFF\xFE/gone")).error().sentence;
  EXPECT_TRUE(krIsWellFormed(sentence));
}

TEST_F(KRFileTest, WritesNewFilesByTheMaskOrForTheOwnerOnly) {
  const mode_t before = umask(027);
  ASSERT_TRUE(KRFile::write(asPath(at("ordinary")), "text"));
  ASSERT_TRUE(KRFile::write(asPath(at("private")), "secret", {.isPrivate = true}));
  umask(before);
  EXPECT_EQ(contentOf(at("ordinary")), "text");
  EXPECT_EQ(modeOf(at("ordinary")), 0640U);
  EXPECT_EQ(modeOf(at("private")), 0600U);
  EXPECT_EQ(entries(), 2U);
}

TEST_F(KRFileTest, ReplacingKeepsTheMode) {
  put("file", "old");
  ASSERT_EQ(chmod(at("file").c_str(), 0604), 0);
  ASSERT_TRUE(KRFile::write(asPath(at("file")), ""));
  EXPECT_EQ(contentOf(at("file")), "");
  EXPECT_EQ(modeOf(at("file")), 0604U);
}

TEST_F(KRFileTest, ReplacingThroughALinkKeepsTheLink) {
  fs::create_directory(at("elsewhere"));
  put("elsewhere/real", "old");
  fs::create_symlink("elsewhere/real", at("link"));
  ASSERT_TRUE(KRFile::write(asPath(at("link")), "new"));
  EXPECT_TRUE(fs::is_symlink(at("link")));
  EXPECT_EQ(contentOf(at("elsewhere/real")), "new");
}

TEST_F(KRFileTest, WritingTellsWhyItFails) {
  ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
  EXPECT_EQ(KRFile::write(asPath(at("gone/file")), "x").error().code, KRErrorCode::NotFound);
  EXPECT_EQ(KRFile::write(asPath(folder_), "x").error().code, KRErrorCode::IsFolder);
  EXPECT_EQ(KRFile::write(asPath(at("pipe")), "x").error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(KRFile::write(KRText(), "x").error().code, KRErrorCode::InvalidArgument);
}

TEST_F(KRFileTest, AFaultBeforeTheRenameLeavesTheOldFileAloneAndNothingBesideIt) {
  using Step = KRFile::Step;
  for (const Step broken : {Step::CreateTemporary, Step::WritePiece, Step::FlushTemporary, Step::Rename}) {
    put("file", "old");
    KRFile::setFault([&](Step step) { return step == broken ? ENOSPC : 0; });
    EXPECT_EQ(KRFile::write(asPath(at("file")), "new").error().code, KRErrorCode::NoSpace);
    EXPECT_EQ(contentOf(at("file")), "old");
    EXPECT_EQ(entries(), 1U);
  }
}

TEST_F(KRFileTest, AFaultAfterTheRenamePutsTheOldFileBack) {
  put("file", "old");
  struct stat before = {};
  ASSERT_EQ(stat(at("file").c_str(), &before), 0);
  KRFile::setFault([](KRFile::Step step) { return step == KRFile::Step::FlushFolder ? EIO : 0; });
  EXPECT_EQ(KRFile::write(asPath(at("file")), "new").error().code, KRErrorCode::Failed);
  EXPECT_EQ(contentOf(at("file")), "old");
  struct stat after = {};
  ASSERT_EQ(stat(at("file").c_str(), &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino);
  EXPECT_EQ(KRFile::write(asPath(at("other")), "new").error().code, KRErrorCode::Failed);
  EXPECT_EQ(entries(), 1U);
}

TEST_F(KRFileTest, MovesOnToWhatIsThere) {
  put("a", "one");
  put("b", "two");
  EXPECT_TRUE(KRFile::move(asPath(at("a")), asPath(at("b"))));
  EXPECT_EQ(contentOf(at("b")), "one");
  EXPECT_EQ(entries(), 1U);
  EXPECT_EQ(KRFile::move(asPath(at("a")), asPath(at("b"))).error().code, KRErrorCode::NotFound);
  EXPECT_EQ(KRFile::move(asPath(at("b")), asPath(at("none/b"))).error().code, KRErrorCode::NotFound);
  EXPECT_EQ(contentOf(at("b")), "one");
}

TEST_F(KRFileTest, WhatIsKeptOfAFileWithFurtherNamesIsItsOwn) {
  put("file", "old");
  EXPECT_TRUE(KRFile::keep(asPath(at("file")), asPath(at("kept"))));
  struct stat status = {};
  ASSERT_EQ(stat(at("kept").c_str(), &status), 0);
  EXPECT_EQ(status.st_nlink, 2U);
  ASSERT_EQ(unlink(at("kept").c_str()), 0);
  ASSERT_EQ(link(at("file").c_str(), at("further").c_str()), 0);
  EXPECT_TRUE(KRFile::keep(asPath(at("file")), asPath(at("kept"))));
  std::ofstream(at("further")) << "new";
  EXPECT_EQ(contentOf(at("file")), "new");
  EXPECT_EQ(contentOf(at("kept")), "old");
}

TEST_F(KRFileTest, AProcessThatDiesAtAnyStepLeavesOldOrNewWhole) {
  for (int last = 0; last < 5; ++last) {
    put("file", "old content");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      KRFile::setFault([&](KRFile::Step step) {
        if (static_cast<int>(step) == last) _exit(7);
        return 0;
      });
      static_cast<void>(KRFile::write(asPath(at("file")), "new content"));
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 7) << last;
    EXPECT_EQ(contentOf(at("file")), last < 4 ? "old content" : "new content") << last;
  }
}

TEST_F(KRFileTest, ConcurrentWritersLeaveOneWholeContent) {
  std::vector<std::thread> writers;
  for (char letter = 'a'; letter < 'e'; ++letter) {
    writers.emplace_back([&, letter] {
      for (int i = 0; i < 20; ++i) EXPECT_TRUE(KRFile::write(asPath(at("file")), std::string(10000, letter)));
    });
  }
  for (std::thread& writer : writers) writer.join();
  const std::string content = contentOf(at("file"));
  EXPECT_EQ(content, std::string(10000, content[0]));
  EXPECT_EQ(entries(), 1U);
}

TEST_F(KRFileTest, MakesFoldersWithThoseAboveThem) {
  ASSERT_TRUE(KRFile::createFolders(asPath(at("a/b//c/")), true));
  EXPECT_EQ(modeOf(at("a/b/c")), 0700U);
  ASSERT_TRUE(KRFile::createFolders(asPath(at("a/b"))));
  put("file", "x");
  EXPECT_EQ(KRFile::createFolders(asPath(at("file/below"))).error().code, KRErrorCode::NotFolder);
  EXPECT_EQ(KRFile::createFolders(asPath(at("file"))).error().code, KRErrorCode::NotFolder);
  EXPECT_EQ(KRFile::createFolders("").error().code, KRErrorCode::InvalidArgument);
  EXPECT_TRUE(KRFile::createFolders("/"));
}

TEST_F(KRFileTest, RemovesFilesOnly) {
  put("file", "x");
  EXPECT_TRUE(KRFile::remove(asPath(at("file"))));
  EXPECT_EQ(entries(), 0U);
  EXPECT_TRUE(KRFile::remove(asPath(at("file"))));
  EXPECT_FALSE(KRFile::remove(asPath(folder_)));
  EXPECT_TRUE(fs::is_directory(folder_));
}

TEST_F(KRFileTest, ReadsStandardInput) {
  put("file", "from outside");
  const int saved = dup(STDIN_FILENO);
  const int file = open(at("file").c_str(), O_RDONLY);
  ASSERT_GE(dup2(file, STDIN_FILENO), 0);
  close(file);
  const auto content = KRFile::readStandardInput();
  dup2(saved, STDIN_FILENO);
  close(saved);
  ASSERT_TRUE(content);
  EXPECT_EQ(content->view(), "from outside");
}

TEST(KRFile, SetsAFileAsideUnderADatedName) {
  const KRTestFolder folder;
  folder.put("a", "first");
  const std::string path = folder.at("a");
  const KRResult<KRString> first = KRFile::setAside(KRText(std::string_view(path)), "damaged");
  ASSERT_TRUE(first);
  EXPECT_TRUE(first->view().starts_with(path + ".damaged-2"));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(KRTestFolder::contentOf(std::string(first->view())), "first");
  folder.put("a", "second");
  const KRResult<KRString> second = KRFile::setAside(KRText(std::string_view(path)), "damaged");
  ASSERT_TRUE(second);
  EXPECT_FALSE(*first == *second);
  EXPECT_EQ(KRTestFolder::contentOf(std::string(first->view())), "first");
  EXPECT_EQ(KRTestFolder::contentOf(std::string(second->view())), "second");
}

TEST(KRFile, WhatIsNotThereCannotBeSetAside) {
  const KRTestFolder folder;
  const std::string path = folder.at("missing");
  const KRResult<KRString> missing = KRFile::setAside(KRText(std::string_view(path)), "damaged");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().code, KRErrorCode::NotFound);
  EXPECT_EQ(KRFile::setAside({}, "damaged").error().code, KRErrorCode::InvalidArgument);
}

}  // namespace
