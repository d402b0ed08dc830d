#include "platform/KRFilePreferences.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "platform/KRFile.h"
#include "platform/KRHostInfo.h"
#include "platform/KRLocations.h"
#include "tests/support/KRPlistTrees.h"
#include "tests/support/KRProcesses.h"
#include "tests/support/KRTestFolder.h"

namespace {

class KRFilePreferencesTest : public testing::Test {
 protected:
  ~KRFilePreferencesTest() override { KRFile::setFault(nullptr); }

  KRRef<KRFilePreferences> store() const {
    return krMake<KRFilePreferences>(KRString(folder_.at("folder/settings.plist")));
  }
  std::string file() const { return folder_.content("folder/settings.plist"); }
  void putFile(std::string_view content) const {
    ASSERT_TRUE(KRFile::createFolders(KRString(folder_.at("folder"))));
    folder_.put("folder/settings.plist", content);
  }
  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.at("folder"))) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  std::string textOfFile() const {
    const std::string bytes = file();
    const auto plist = KRBinaryPlist::read(bytes);
    return plist ? KRPlistTrees::textOf(*plist) : "damaged";
  }

  KRTestFolder folder_;
};

/// The list with one more text.
KRPreferences::Change adding(const KRString& text) {
  return [text](const KRValue& now) {
    const auto* there = now.as<KRValueList>();
    KRStringList texts = there != nullptr ? there->texts() : KRStringList();
    texts.push_back(text);
    return KRValue(KRValueList::ofTexts(texts));
  };
}

KRStringList sortedTexts(const KRValue& value) {
  const auto* list = value.as<KRValueList>();
  KRStringList texts = list != nullptr ? list->texts() : KRStringList();
  std::sort(texts.begin(), texts.end(), [](const KRString& a, const KRString& b) { return a.view() < b.view(); });
  return texts;
}

std::string keyText(std::string_view key) {
  return "s" + KRPlistTrees::hex(key);
}

TEST_F(KRFilePreferencesTest, KeepsEveryKindOfValueForTheNextProcess) {
  const auto list = krMake<KRValueList>();
  const auto map = krMake<KRValueMap>();
  map->set("inner"_kr, "é"_kr);
  list->values() = {"a"_kr, map, KRValue::whole(3)};
  const KRValue values[] = {"text"_kr,
                            ""_kr,
                            KRValue::truth(true),
                            KRValue::whole(-5),
                            KRValue::number(0.5),
                            *KRDate::make(1990, 3, 2),
                            *KRDate::make(0, 1, 1),
                            krMake<KRData>(std::string_view("\0\xFF", 2)),
                            list,
                            map};
  const auto first = store();
  for (size_t i = 0; i < std::size(values); ++i) first->setValue(values[i], KRString(std::to_string(i)));
  const auto second = store();
  for (size_t i = 0; i < std::size(values); ++i) {
    EXPECT_TRUE(second->value(KRString(std::to_string(i))).isEqual(values[i])) << i;
    EXPECT_TRUE(first->value(KRString(std::to_string(i))).isEqual(values[i])) << i;
  }
  EXPECT_TRUE(second->value("missing").isNothing());
  EXPECT_TRUE(second->value(nullptr).isNothing());
}

TEST_F(KRFilePreferencesTest, WritesEachChangeAtOnceForTheOwnerOnly) {
  const auto preferences = store();
  preferences->setValue("1"_kr, "a");
  EXPECT_EQ(textOfFile(), "{" + keyText("a") + ":s31,}");
  preferences->setValue("2"_kr, "a");
  EXPECT_EQ(textOfFile(), "{" + keyText("a") + ":s32,}");
  preferences->remove("a");
  EXPECT_EQ(textOfFile(), "{}");
  struct stat status = {};
  ASSERT_EQ(stat(folder_.at("folder/settings.plist").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  ASSERT_EQ(stat(folder_.at("folder").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(KRFilePreferencesTest, WritesNothingForReadingOrForRemovingWhatIsNotThere) {
  const auto preferences = store();
  EXPECT_TRUE(preferences->value("a").isNothing());
  EXPECT_TRUE(preferences->flush());
  EXPECT_FALSE(std::filesystem::exists(folder_.at("folder")));
  preferences->remove("a");
  preferences->setValue(KRValue(), "a");
  EXPECT_FALSE(std::filesystem::exists(folder_.at("folder/settings.plist")));
}

TEST_F(KRFilePreferencesTest, IgnoresWhatCannotStandInAPropertyList) {
  const auto preferences = store();
  preferences->setValue("kept"_kr, "a");
  class Plain : public KRObject {};
  const auto cycle = krMake<KRValueList>();
  cycle->values().push_back(cycle);
  const auto withNothing = krMake<KRValueList>();
  withNothing->values().push_back(KRValue());
  preferences->setValue(*KRDate::make(std::nullopt, 3, 2), "a");
  preferences->setValue(krMake<Plain>(), "a");
  preferences->setValue(cycle, "a");
  preferences->setValue(withNothing, "a");
  preferences->setValue("x"_kr, nullptr);
  EXPECT_EQ(textOfFile(), "{" + keyText("a") + ":" + keyText("kept") + ",}");
  cycle->values().clear();
}

TEST_F(KRFilePreferencesTest, CopiesListsInAndOut) {
  const auto preferences = store();
  const auto list = krMake<KRValueList>();
  list->values().push_back("a"_kr);
  preferences->setValue(list, "list");
  list->values().push_back("b"_kr);
  const KRValue read = preferences->value("list");
  EXPECT_EQ(read.description(), "(a)");
  read.as<KRValueList>()->values().clear();
  EXPECT_EQ(preferences->value("list").description(), "(a)");
}

TEST_F(KRFilePreferencesTest, KeepsWhatOthersWroteAndSeesIt) {
  const auto ours = store();
  ours->setValue("1"_kr, "ours");
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const auto theirs = store();
    theirs->setValue("2"_kr, "theirs");
    theirs->setValue("3"_kr, "ours");
    _exit(theirs->flush() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(ours->value("theirs").text(), "2"_kr);
  EXPECT_EQ(ours->value("ours").text(), "3"_kr);
  ours->setValue("4"_kr, "more");
  EXPECT_EQ(store()->value("theirs").text(), "2"_kr);
}

TEST_F(KRFilePreferencesTest, KeepsWhatItHasNoValuesFor) {
  KRBinaryPlist plist;
  const KRBinaryPlist::Node keys[] = {plist.addText("uid"), plist.addText("large"), plist.addText("instant"),
                                      plist.addText("null")};
  const KRBinaryPlist::Node values[] = {plist.addUid(5), plist.addUnsigned(UINT64_MAX), plist.addInstant(0.25),
                                        plist.addNull()};
  plist.setRoot(plist.addDictionary(keys, values));
  putFile(plist.write());
  const std::string before = textOfFile();
  const auto preferences = store();
  EXPECT_TRUE(preferences->value("uid").isNothing());
  EXPECT_EQ(preferences->value("instant").description(), "2001-01-01");
  preferences->setValue("x"_kr, "mine");
  preferences->remove("mine");
  EXPECT_EQ(textOfFile(), before);
}

TEST_F(KRFilePreferencesTest, LeavesAFileAloneThatMayNotBeRead) {
  store()->setValue("1"_kr, "kept");
  const std::string folder = folder_.at("folder");
  std::filesystem::remove(folder + "/settings.plist.lock");
  ASSERT_EQ(chmod((folder + "/settings.plist").c_str(), 0), 0);
  ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
  ASSERT_EQ(chmod(std::string(folder_.path()).c_str(), 0777), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // Nothing keeps the system's own user from reading.
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0 && setuid(kNobody) != 0) _exit(2);
    const auto theirs = store();
    theirs->setValue("2"_kr, "more");
    const KRResult<void> flushed = theirs->flush();
    _exit(!flushed && flushed.error().code == KRErrorCode::NotAllowed ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(chmod((folder + "/settings.plist").c_str(), 0600), 0);
  std::filesystem::remove(folder + "/settings.plist.lock");
  EXPECT_EQ(store()->value("kept").text(), "1"_kr);
  for (const std::string& name : files()) EXPECT_EQ(name.find("damaged"), std::string::npos) << name;
}

TEST_F(KRFilePreferencesTest, PutsADamagedFileAsideBeforeItWrites) {
  for (const std::string_view damage :
       {std::string_view("bplist00 damaged"), std::string_view(""), std::string_view("<?xml ")}) {
    const KRTestFolder fresh;
    fresh.put("settings.plist", damage);
    const auto preferences = krMake<KRFilePreferences>(KRString(fresh.at("settings.plist")));
    EXPECT_TRUE(preferences->value("a").isNothing());
    EXPECT_EQ(fresh.content("settings.plist"), damage);
    preferences->setValue("1"_kr, "a");
    EXPECT_EQ(preferences->value("a").text(), "1"_kr);
    std::vector<std::string> aside;
    for (const auto& entry : std::filesystem::directory_iterator(fresh.path())) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with("settings.plist.damaged-")) aside.push_back(name);
    }
    ASSERT_EQ(aside.size(), 1U);
    EXPECT_EQ(fresh.content(aside[0]), damage);
    EXPECT_EQ(aside[0].size(), std::string_view("settings.plist.damaged-20010101T000000Z").size());
  }
}

TEST_F(KRFilePreferencesTest, PutsEveryDamagedFileAsideUnderANameOfItsOwn) {
  const auto preferences = store();
  for (int i = 0; i < 5; ++i) {
    putFile("damaged " + std::to_string(i));
    preferences->setValue(KRValue::whole(i), "a");
  }
  size_t aside = 0;
  for (const std::string& name : files()) aside += name.find(".damaged-") != std::string::npos ? 1 : 0;
  EXPECT_EQ(aside, 5U);
}

TEST_F(KRFilePreferencesTest, KeepsInMemoryWhatCannotBeWrittenAndWritesItLater) {
  const KRFile::Step steps[] = {KRFile::Step::CreateTemporary, KRFile::Step::WritePiece, KRFile::Step::FlushTemporary,
                                KRFile::Step::Rename};
  for (const KRFile::Step failing : steps) {
    const auto preferences = store();
    preferences->setValue("old"_kr, "a");
    preferences->remove("b");
    const std::string before = file();
    KRFile::setFault([failing](KRFile::Step step) { return step == failing ? ENOSPC : 0; });
    preferences->setValue("new"_kr, "a");
    preferences->setValue("more"_kr, "b");
    EXPECT_EQ(file(), before);
    EXPECT_EQ(preferences->value("a").text(), "new"_kr);
    const auto failed = preferences->flush();
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().code, KRErrorCode::NoSpace);
    KRFile::setFault(nullptr);
    EXPECT_TRUE(preferences->flush());
    EXPECT_EQ(store()->value("a").text(), "new"_kr);
    EXPECT_EQ(store()->value("b").text(), "more"_kr);
  }
}

TEST_F(KRFilePreferencesTest, WorksInMemoryWithoutAPath) {
  const auto preferences = krMake<KRFilePreferences>(KRString());
  preferences->setValue("1"_kr, "a");
  EXPECT_EQ(preferences->value("a").text(), "1"_kr);
  const auto failed = preferences->flush();
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, KRErrorCode::InvalidArgument);
}

TEST_F(KRFilePreferencesTest, TellsWhenTheFolderCannotBeMade) {
  folder_.put("folder", "a file");
  const auto preferences = store();
  preferences->setValue("1"_kr, "a");
  const auto failed = preferences->flush();
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, KRErrorCode::NotFolder);
  EXPECT_EQ(folder_.content("folder"), "a file");
}

TEST_F(KRFilePreferencesTest, LosesNothingWhenManyThreadsAndStoresWrite) {
  constexpr int kThreads = 4;
  constexpr int kKeys = 8;
  const auto shared = store();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      const auto mine = thread % 2 == 0 ? shared : store();
      for (int i = 0; i < kKeys; ++i) {
        const KRString key(std::to_string(thread) + "." + std::to_string(i));
        mine->setValue(KRValue::whole(i), key);
        EXPECT_TRUE(mine->value(key).isEqual(KRValue::whole(i)));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto after = store();
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int i = 0; i < kKeys; ++i) {
      EXPECT_TRUE(after->value(KRString(std::to_string(thread) + "." + std::to_string(i))).isEqual(KRValue::whole(i)));
    }
  }
}

TEST_F(KRFilePreferencesTest, ManyProcessesAddToOneList) {
  constexpr int kProcesses = 6;
  constexpr int kEach = 12;
  krRunInProcesses(kProcesses, [&](int number) {
    const auto mine = store();
    for (int i = 0; i < kEach; ++i) {
      mine->update("list", adding(KRString(std::to_string(number) + "." + std::to_string(i))));
    }
    return static_cast<bool>(mine->flush());
  });
  const KRStringList texts = sortedTexts(store()->value("list"));
  EXPECT_EQ(texts.size(), size_t{kProcesses} * kEach);
  EXPECT_EQ(std::adjacent_find(texts.begin(), texts.end()), texts.end());
}

TEST_F(KRFilePreferencesTest, AnUpdateThatCouldNotBeWrittenIsMadeOfWhatIsThereLater) {
  const auto preferences = store();
  preferences->update("list", adding("a"_kr));
  KRFile::setFault([](KRFile::Step step) { return step == KRFile::Step::Rename ? ENOSPC : 0; });
  preferences->update("list", adding("b"_kr));
  EXPECT_EQ(preferences->value("list").description(), "(a, b)");
  KRFile::setFault(nullptr);
  store()->update("list", adding("theirs"_kr));
  EXPECT_EQ(preferences->value("list").description(), "(a, theirs, b)");
  EXPECT_TRUE(preferences->flush());
  EXPECT_EQ(store()->value("list").description(), "(a, theirs, b)");
}

TEST_F(KRFilePreferencesTest, WritesNothingWhenAllIsAsItWas) {
  const auto preferences = store();
  preferences->setValue(KRValueList::ofTexts({"a"_kr}), "list");
  const auto written = KRFileStamp::of(KRText(folder_.at("folder/settings.plist")));
  preferences->setValue(KRValueList::ofTexts({"a"_kr}), "list");
  preferences->update("list", [](const KRValue& now) { return now; });
  EXPECT_TRUE(KRFileStamp::of(KRText(folder_.at("folder/settings.plist"))) == written);
}

TEST_F(KRFilePreferencesTest, IsOneFilePerHostInTheConfigurationFolder) {
  KRHostInfo::setIdentifier("org.example.contacts"_kr);
  EXPECT_EQ(KRFilePreferences::pathForHost(),
            krConcat({KRLocations::configurationFolder(), "/org.example.contacts.plist"}));
  EXPECT_EQ(KRFilePreferences::forHost()->path(), KRFilePreferences::pathForHost());
  KRHostInfo::setIdentifier("a/../b"_kr);
  EXPECT_EQ(KRFilePreferences::pathForHost(), krConcat({KRLocations::configurationFolder(), "/a_.._b.plist"}));
  KRHostInfo::setIdentifier(KRString());
}

}  // namespace
