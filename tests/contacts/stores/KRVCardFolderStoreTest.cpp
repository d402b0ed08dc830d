#include "contacts/stores/KRVCardFolderStore.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/KRFile.h"
#include "tests/contacts/stores/StoreSamples.h"

namespace {

namespace fs = std::filesystem;
using People = std::vector<std::string>;

class KRVCardFolderStoreTest : public testing::Test {
 protected:
  KRRef<KRStoredBook> open() const {
    return krMake<KRStoredBook>(std::make_unique<KRVCardFolderStore>(krPath(folder.path())));
  }
  /// Everything in the folder, hidden or not.
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(folder.path())) all.push_back(entry.path().filename().string());
    std::sort(all.begin(), all.end());
    return all;
  }
  /// A number that every writing of the file changes.
  ino_t place(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(stat(folder.at(name).c_str(), &status), 0) << name;
    return status.st_ino;
  }

  KRTestFolder folder;
};

TEST_F(KRVCardFolderStoreTest, NamesNewFilesAfterTheirContacts) {
  const auto book = open();
  for (const char* UID : {"plain", "urn:uuid:0f-1", "a/../b\\c d", ".hidden", "plain"}) {
    book->addPerson(krPersonOf({"N:;x", std::string("UID:") + UID}).get());
  }
  book->addPerson(krPersonOf({"N:;x", "UID:" + std::string(500, 'u')}).get());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(names(), (std::vector<std::string>{"0f-1.vcf", "_.hidden.vcf", "a_.._b_c_d.vcf", "plain.vcf", "plain_2.vcf",
                                               std::string(120, 'u') + ".vcf"}));
  EXPECT_EQ(open()->allPersonsCount(), 6U);
}

TEST_F(KRVCardFolderStoreTest, WritesTheFilesOfChangedContactsOnly) {
  for (const char* name : {"a.vcf", "b.VCF", "c.vcf"})
    folder.put(name, krCard(krNoted(std::string(1, name[0]), "old")));
  fs::permissions(folder.at("b.VCF"), fs::perms::owner_read | fs::perms::owner_write);
  std::map<std::string, ino_t> before;
  for (const auto& name : names()) before[name] = place(name);
  const auto book = open();
  krSetText(*krPersonNamed(*book, "b"), KRProPertyNote, "new");
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(place("a.vcf"), before["a.vcf"]);
  EXPECT_EQ(place("c.vcf"), before["c.vcf"]);
  EXPECT_NE(place("b.VCF"), before["b.VCF"]);
  EXPECT_EQ(fs::status(folder.at("b.VCF")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(names(), (std::vector<std::string>{"a.vcf", "b.VCF", "c.vcf"}));
  book->removePersons(KRPersonArray(krPersonNamed(*book, "a")));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(names(), (std::vector<std::string>{"b.VCF", "c.vcf"}));
}

TEST_F(KRVCardFolderStoreTest, LooksAtFilesOfContactsOnly) {
  folder.put("a.vcf", krCard(krNoted("a", "x")));
  folder.put(".b.vcf", krCard(krNoted("b", "x")));
  folder.put("c.txt", krCard(krNoted("c", "x")));
  folder.put(".vcf", krCard(krNoted("d", "x")));
  folder.put("e.vcf.tmp", krCard(krNoted("e", "x")));
  fs::create_directory(folder.at("f.vcf"));
  fs::create_directory(folder.at("g"));
  folder.put("g/g.vcf", krCard(krNoted("g", "x")));
  EXPECT_EQ(krPeople(*open()), (People{"a: x"}));
}

TEST_F(KRVCardFolderStoreTest, UnderstandsFilesOfSeveralContacts) {
  folder.put("many.vcf",
             "before\n" + krCard(krNoted("a", "1")) + krCard(krNoted("b", "2")) + krCard(krNoted("c", "3")));
  folder.put("one.vcf", krCard(krNoted("d", "4")));
  const auto book = open();
  krSetText(*krPersonNamed(*book, "c"), KRProPertyNote, "new");
  book->removePersons(KRPersonArray(krPersonNamed(*book, "a")));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(krPeople(*open()), (People{"b: 2", "c: new", "d: 4"}));
  krSetText(*krPersonNamed(*book, "c"), KRProPertyNote, "newer");
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(krPeople(*open()), (People{"b: 2", "c: newer", "d: 4"}));
  book->removePersons(KRPersonArray(book->allPersons().copy()));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(names(), std::vector<std::string>{});
}

TEST_F(KRVCardFolderStoreTest, KeepsLinks) {
  const KRTestFolder elsewhere;
  elsewhere.put("real.vcf", krCard(krNoted("a", "old")));
  fs::create_symlink(elsewhere.at("real.vcf"), folder.at("a.vcf"));
  const auto book = open();
  krSetText(*krPersonNamed(*book, "a"), KRProPertyNote, "new");
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_TRUE(fs::is_symlink(folder.at("a.vcf")));
  EXPECT_NE(elsewhere.content("real.vcf").find("NOTE:new"), std::string::npos);
}

TEST_F(KRVCardFolderStoreTest, TakesAwayWhatAKilledSaveLeftBehind) {
  fs::create_directory(folder.at(".krcontacts-999999999"));
  folder.put(".krcontacts-999999999/0", "half");
  // One of a program that is running is not ours to touch.
  fs::create_directory(folder.at(".krcontacts-1"));
  const auto book = open();
  book->addPerson(krPersonOf(krNoted("a", "x")).get());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(names(), (std::vector<std::string>{".krcontacts-1", "uid-a.vcf"}));
}

TEST_F(KRVCardFolderStoreTest, ASaveThatTouchesAReadOnlyFileChangesNothing) {
  for (const char* name : {"a", "b"}) folder.put(std::string(name) + ".vcf", krCard(krNoted(name, "old")));
  fs::permissions(folder.at("b.vcf"), fs::perms(0444));
  for (const bool isRemoved : {false, true}) {
    const auto book = open();
    krSetText(*krPersonNamed(*book, "a"), KRProPertyNote, "new");
    if (isRemoved) {
      book->removePersons(KRPersonArray(krPersonNamed(*book, "b")));
    } else {
      krSetText(*krPersonNamed(*book, "b"), KRProPertyNote, "new");
    }
    const auto saved = book->saveNow();
    ASSERT_FALSE(saved.isOk());
    EXPECT_EQ(saved.error().code, KRErrorCode::NotAllowed);
    EXPECT_NE(saved.error().sentence.find("b.vcf: the file is read-only"), std::string::npos);
    EXPECT_EQ(krPeople(*open()), (People{"a: old", "b: old"}));
  }
  const auto book = open();
  krSetText(*krPersonNamed(*book, "a"), KRProPertyNote, "new");
  EXPECT_TRUE(book->saveNow().isOk());
}

TEST_F(KRVCardFolderStoreTest, ManyFilesAreFlushedTogetherAndFewOneByOne) {
  int flushes = 0;
  const auto book = open();
  const auto add = [&](int count) {
    for (int i = 0; i < count; ++i) book->addPerson(krPersonOf({"N:;x", "NOTE:" + std::to_string(i)}).get());
    flushes = 0;
    KRFile::setFault([&](KRFile::Step step) {
      flushes += step == KRFile::Step::FlushTemporary ? 1 : 0;
      return 0;
    });
    const auto saved = book->saveNow();
    KRFile::setFault(nullptr);
    EXPECT_TRUE(saved.isOk());
    return flushes;
  };
  EXPECT_EQ(add(3), 3);
  EXPECT_EQ(add(200), 1);
  EXPECT_EQ(open()->allPersonsCount(), 203U);
}

TEST_F(KRVCardFolderStoreTest, WhenManyFilesCannotBeFlushedNoneIsThere) {
  const auto book = open();
  for (int i = 0; i < 100; ++i) book->addPerson(krPersonOf({"N:;x", "NOTE:" + std::to_string(i)}).get());
  KRFile::setFault([](KRFile::Step step) { return step == KRFile::Step::FlushTemporary ? ENOSPC : 0; });
  const auto saved = book->saveNow();
  KRFile::setFault(nullptr);
  ASSERT_FALSE(saved.isOk());
  EXPECT_EQ(saved.error().code, KRErrorCode::NoSpace);
  EXPECT_EQ(names(), std::vector<std::string>{});
  EXPECT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(open()->allPersonsCount(), 100U);
}

TEST_F(KRVCardFolderStoreTest, ASaveThatFailsAnywhereLeavesTheFolderAsItWas) {
  using Step = KRFile::Step;
  const KRTestFolder elsewhere;
  elsewhere.put("real.vcf", krCard(krNoted("d", "old")));
  fs::create_symlink(elsewhere.at("real.vcf"), folder.at("d.vcf"));
  for (const char* name : {"a", "b", "c"}) folder.put(std::string(name) + ".vcf", krCard(krNoted(name, "old")));
  const auto seen = [&] {
    std::map<std::string, std::pair<std::string, ino_t>> all;
    for (const std::string& name : names()) all[name] = {folder.content(name), place(name)};
    return all;
  };
  const auto before = seen();
  const auto book = open();
  for (const char* name : {"x", "y"}) book->addPerson(krPersonOf(krNoted(name, "new")).get());
  for (const char* name : {"a", "d"}) krSetText(*krPersonNamed(*book, name), KRProPertyNote, "new");
  book->removePersons(KRPersonArray(krPersonNamed(*book, "b")));
  size_t failures = 0;
  for (int step = 0; step < 40; ++step) {
    int count = 0;
    bool isReached = false;
    KRFile::setFault([&](Step) {
      if (isReached || count++ < step) return 0;
      isReached = true;
      return step % 2 == 0 ? ENOSPC : EACCES;
    });
    const auto saved = book->saveNow();
    KRFile::setFault(nullptr);
    if (!isReached) {
      EXPECT_TRUE(saved.isOk());
      break;
    }
    ASSERT_FALSE(saved.isOk()) << step;
    ++failures;
    ASSERT_EQ(seen(), before) << step;
    EXPECT_TRUE(fs::is_symlink(folder.at("d.vcf")));
    EXPECT_TRUE(book->hasChanges());
    EXPECT_EQ(book->unsavedIDs().size(), 3U);
  }
  // Four files are prepared in five steps each, five are moved or removed, and the folder is flushed.
  EXPECT_EQ(failures, 26U);
  EXPECT_EQ(krPeople(*open()), (People{"a: new", "c: old", "d: new", "x: new", "y: new"}));
}

TEST_F(KRVCardFolderStoreTest, WhatCannotBeTakenBackIsSavedAndTold) {
  using Step = KRFile::Step;
  for (const char* name : {"a", "b"}) folder.put(std::string(name) + ".vcf", krCard(krNoted(name, "old")));
  const auto book = open();
  for (const char* name : {"a", "b"}) krSetText(*krPersonNamed(*book, name), KRProPertyNote, "new");
  int moves = 0;
  KRFile::setFault([&](Step step) { return (step == Step::Move && ++moves > 1) || moves > 1 ? ENOSPC : 0; });
  const auto saved = book->saveNow();
  KRFile::setFault(nullptr);
  ASSERT_FALSE(saved.isOk());
  EXPECT_NE(saved.error().sentence.find("1 of the 1 files that were written before could not be put back"),
            std::string::npos)
      << saved.error().sentence;
  EXPECT_EQ(krPeople(*open()), (People{"a: new", "b: old"}));
  EXPECT_EQ(book->unsavedIDs(), KRStringList{"uid-b"_kr});
  EXPECT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(krPeople(*open()), (People{"a: new", "b: new"}));
}

TEST_F(KRVCardFolderStoreTest, DoesNotTakeTheNameOfAnotherFile) {
  folder.put("uid-a.vcf", "not a card");
  const auto book = open();
  EXPECT_EQ(book->allPersonsCount(), 0U);
  book->addPerson(krPersonOf(krNoted("a", "x")).get());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(folder.content("uid-a.vcf"), "not a card");
  EXPECT_EQ(krPeople(*open()), (People{"a: x"}));
}

TEST_F(KRVCardFolderStoreTest, FindsTheMembersOfGroupsInOtherFiles) {
  folder.put("group.vcf", krCard({"FN:Friends", "KIND:group", "UID:g", "MEMBER:uid-a"}, "4.0"));
  folder.put("z.vcf", krCard(krNoted("a", "x")));
  const auto book = open();
  EXPECT_EQ(book->allPersonsCount(), 1U);
  ASSERT_EQ(krPersonNamed(*book, "a")->parentGroups().size(), 1U);
  EXPECT_EQ(krPersonNamed(*book, "a")->parentGroups()[0]->name(), "Friends");
}

TEST_F(KRVCardFolderStoreTest, WritesTheFilesOfChangedGroupsOnly) {
  folder.put("a.vcf", krCard(krNoted("a", "x"), "4.0"));
  folder.put("b.vcf", krCard({"N:;b"}, "4.0"));
  folder.put("g.vcf", krCard({"FN:Friends", "KIND:group", "UID:g", "MEMBER:uid-a", "MEMBER:nobody"}, "4.0"));
  folder.put("h.vcf", krCard({"FN:Work", "KIND:group", "UID:h"}, "4.0"));
  folder.put("i.vcf", krCard({"FN:Gone", "KIND:group", "UID:i"}, "4.0"));
  const ino_t person = place("a.vcf");
  const ino_t work = place("h.vcf");
  const auto book = open();
  const auto friends = book->groupWithID("g"_kr);
  book->setGroups(*krPersonNamed(*book, "a"), {book->addGroup("New"_kr, "new"_kr)});
  book->setGroups(*krPersonNamed(*book, "b"), {friends});
  book->removeGroup(*book->groupWithID("i"_kr));
  const std::string ID(krPersonNamed(*book, "b")->ID().view());
  const auto saved = book->saveNow();
  ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
  EXPECT_EQ(names(), (std::vector<std::string>{"a.vcf", "b.vcf", "g.vcf", "h.vcf", "new.vcf"}));
  EXPECT_EQ(place("a.vcf"), person);
  EXPECT_EQ(place("h.vcf"), work);
  EXPECT_EQ(folder.content("g.vcf"),
            krCard({"FN:Friends", "KIND:group", "UID:g", "MEMBER:nobody", "MEMBER:urn:uuid:" + ID}, "4.0"));
  EXPECT_EQ(folder.content("new.vcf"),
            krCard({"KIND:group", "FN:New", "UID;VALUE=text:new", "MEMBER:urn:uuid:uid-a"}, "4.0"));
  EXPECT_EQ(krPersonNamed(*open(), "b")->ID(), krPath(ID));
  // What was just written is known, so that it can be changed again.
  book->setGroups(*krPersonNamed(*book, "b"), {book->groupWithID("new"_kr)});
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(folder.content("g.vcf"), krCard({"FN:Friends", "KIND:group", "UID:g", "MEMBER:nobody"}, "4.0"));
  EXPECT_EQ(krPersonNamed(*open(), "b")->parentGroups().front()->name(), "New");
  EXPECT_EQ(open()->rootGroupsCount(), 3U);
}

TEST_F(KRVCardFolderStoreTest, LeavesTheGroupThatAnotherProgramChanged) {
  folder.put("a.vcf", krCard(krNoted("a", "x")));
  folder.put("g.vcf", krCard({"FN:Friends", "KIND:group", "UID:g"}, "4.0"));
  folder.put("h.vcf", krCard({"FN:Work", "KIND:group", "UID:h"}, "4.0"));
  const auto book = open();
  ASSERT_TRUE(book->load().isOk());
  const std::string theirs = krCard({"FN:Friends", "KIND:group", "UID:g", "MEMBER:other"}, "4.0");
  folder.put("g.vcf", theirs);
  // One that this save does not touch is nothing to it.
  book->setGroups(*krPersonNamed(*book, "a"), {book->groupWithID("h"_kr)});
  ASSERT_TRUE(book->saveNow().isOk());
  book->setGroups(*krPersonNamed(*book, "a"), {book->groupWithID("g"_kr)});
  krSetText(*krPersonNamed(*book, "a"), KRProPertyNote, "mine");
  const auto saved = book->saveNow();
  EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
  EXPECT_NE(saved.error().sentence.find("Friends"), std::string::npos) << saved.error().sentence;
  EXPECT_EQ(folder.content("g.vcf"), theirs);
  EXPECT_EQ(krPeople(*open()), (People{"a: x"}));
  EXPECT_TRUE(book->hasChanges());
  fs::remove(folder.at("g.vcf"));
  EXPECT_EQ(book->saveNow().error().code, KRErrorCode::Changed);
  EXPECT_EQ(names(), (std::vector<std::string>{"a.vcf", "h.vcf"}));
}

TEST_F(KRVCardFolderStoreTest, ChangesGroupsBesideContactsOfTheSameFile) {
  const std::string group = krCard({"FN:Friends", "KIND:group", "UID:g"}, "4.0");
  folder.put("all.vcf", krCard(krNoted("a", "x")) + group + krCard(krNoted("b", "x")));
  const auto book = open();
  krSetText(*krPersonNamed(*book, "a"), KRProPertyNote, "new");
  book->removePersons(KRPersonArray(krPersonNamed(*book, "b")));
  book->setGroups(*krPersonNamed(*book, "a"), {book->groupWithID("g"_kr)});
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(
      folder.content("all.vcf"),
      krCard(krNoted("a", "new")) + krCard({"FN:Friends", "KIND:group", "UID:g", "MEMBER:urn:uuid:uid-a"}, "4.0"));
  book->removePersons(KRPersonArray(krPersonNamed(*book, "a")));
  book->removeGroup(*book->groupWithID("g"_kr));
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(names(), std::vector<std::string>{});
}

}  // namespace
