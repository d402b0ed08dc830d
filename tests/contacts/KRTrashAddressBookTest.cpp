#include "contacts/KRTrashAddressBook.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <new>
#include <set>

#include "contacts/KRAddressBookManager.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/stores/KRStoredBook.h"
#include "contacts/stores/KRVCardFileStore.h"
#include "contacts/vcard/KRVCardReader.h"
#include "platform/KRFile.h"
#include "platform/KRKeyedArchiver.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/support/KRKilledProcess.h"
#include "tests/support/KRPersonSketch.h"
#include "tests/support/KRTestPaths.h"

namespace {

using KRTrashAddressBookTest = KRTrashSetting;

KRTempPerson* at(KRTrashAddressBook& trash, size_t index) {
  return dynamic_cast<KRTempPerson*>(trash.allPersons().at(index));
}

TEST_F(KRTrashAddressBookTest, SaysOfItselfWhatAnyBookDoes) {
  const auto book = trash();
  EXPECT_EQ(book->ID(), "trash_addressbook"_kr);
  EXPECT_EQ(book->ID(), KRTrashAddressBookID);
  EXPECT_EQ(book->name(), "Trash"_kr);
  EXPECT_EQ(book->kind(), "trash"_kr);
  EXPECT_EQ(book->place(), trashFile().c_str());
  EXPECT_FALSE(book->thumbnail());
  EXPECT_FALSE(book->isInternetAdressBook());
  EXPECT_TRUE(book->rootGroups().empty());
  EXPECT_EQ(book->rootGroupsCount(), 0U);
  EXPECT_EQ(book->supportProperty(), KRProperty::StandardPropertyArray());
  EXPECT_EQ(book->tagManager(), KRTagManager::tagManagerWithID("trash_addressbook"_kr));
  book->sync();
  book->update();
  EXPECT_EQ(book->allPersonsCount(), 0U);
}

TEST_F(KRTrashAddressBookTest, ShowsNineProperties) {
  std::vector<std::string> names;
  for (const KRProperty* property : KRTrashAddressBook::CommonProperty()) names.emplace_back(property->name().view());
  EXPECT_THAT(names, testing::ElementsAre("thumbnail", "name", "tags", "phone", "email", "company", "birthday",
                                          "address", "note"));
  EXPECT_EQ(trash()->commonProperty(), KRTrashAddressBook::CommonProperty());
  EXPECT_EQ(&KRTrashAddressBook::CommonProperty(), &KRTrashAddressBook::CommonProperty());
}

TEST_F(KRTrashAddressBookTest, HasTwoPictures) {
  const auto book = trash();
  ASSERT_TRUE(book->logo1());
  ASSERT_TRUE(book->logo2());
  EXPECT_TRUE(book->logo1()->bytes().starts_with("\x89PNG"));
  EXPECT_FALSE(book->logo1()->isEqual(book->logo2().get()));
  EXPECT_EQ(book->loadXCAImageWithName("pic_trash_logo1"_kr, "ignored"_kr), book->logo1());
  EXPECT_TRUE(book->loadImageWithName("pic_trash_logo2"_kr, "png"_kr)->isEqual(book->logo2().get()));
  EXPECT_FALSE(book->loadImageWithName("pic_trash_logo2"_kr, "jpg"_kr));
  EXPECT_FALSE(book->loadImageWithName("no such"_kr, "png"_kr));
  EXPECT_FALSE(book->loadXCAImageWithName({}, {}));
}

TEST_F(KRTrashAddressBookTest, WithoutAFileItIsEmptyAndTheFirstSaveMakesFolderAndFile) {
  const auto book = trash();
  EXPECT_EQ(book->allPersonsCount(), 0U);
  EXPECT_TRUE(book->load());
  EXPECT_FALSE(std::filesystem::exists(trashFile()));
  std::filesystem::remove_all(folder_.at("data"));
  book->save();
  struct stat status = {};
  ASSERT_EQ(stat(trashFile().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  ASSERT_EQ(stat(trashFolder().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  EXPECT_EQ(trash()->allPersonsCount(), 0U);
}

TEST_F(KRTrashAddressBookTest, TheFolderIsNamedByTheHost) {
  EXPECT_EQ(KRTrashAddressBook::GetUserSupportSupportDirectory(), folder_.at("data").c_str());
  EXPECT_EQ(KRTrashAddressBook::AppSupportDirectory(), trashFolder().c_str());
  KRHostInfo::setIdentifier("a/b"_kr);
  EXPECT_EQ(KRTrashAddressBook::AppSupportDirectory(), folder_.at("data/a_b").c_str());
}

TEST_F(KRTrashAddressBookTest, ADirectoryIsGoodWhenItIsThereOrCanBeMade) {
  EXPECT_FALSE(KRTrashAddressBook::CheckDirectory({}));
  EXPECT_FALSE(KRTrashAddressBook::CheckDirectory(""_kr));
  EXPECT_TRUE(KRTrashAddressBook::CheckDirectory(KRString(folder_.at("x/y/z"))));
  EXPECT_TRUE(KRTrashAddressBook::CheckDirectory(KRString(folder_.at("x/y/z"))));
  folder_.put("file", "");
  EXPECT_FALSE(KRTrashAddressBook::CheckDirectory(KRString(folder_.at("file/below"))));
}

TEST_F(KRTrashAddressBookTest, ATrashedPersonHasTheIdentifierAndTheVeryValues) {
  const auto book = krMake<KRAddressBook>("home book"_kr, "Home"_kr);
  const KRRef<ABPerson> ann = record("UID:ann-1\r\nN:Lee;Ann;;;\r\nTEL;TYPE=home:1\r\nTEL:2\r\nNOTE:x\r\n");
  book->addPerson(ann.get());
  const auto made = trash()->trashPersonWithPerson(ann.get());
  EXPECT_EQ(made->ID(), "ann-1"_kr);
  EXPECT_EQ(made->fromID(), "home book"_kr);
  EXPECT_EQ(made->addressBookID(), KRTrashAddressBookID);
  size_t values = 0;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    EXPECT_EQ(made->valueByProperty(property), ann->valueByProperty(property)) << property->name().view();
    if (made->valueByProperty(property)) ++values;
  }
  EXPECT_EQ(values, 3U);
  EXPECT_FALSE(trash()->trashPersonWithPerson(nullptr));
}

TEST_F(KRTrashAddressBookTest, OnlyARecordThatIsInGroupsHasGroupIdentifiers) {
  const auto book = trash();
  const KRRef<ABPerson> ann = record("N:Lee;Ann;;;\r\n");
  EXPECT_FALSE(book->trashPersonWithPerson(ann.get())->groupIDs());
  ann->setParentGroups({krMake<KRGroup>("g-2"_kr, "Two"_kr), krMake<KRGroup>("g-1"_kr, "One"_kr)});
  EXPECT_THAT(book->trashPersonWithPerson(ann.get())->groupIDs(),
              testing::Optional(testing::ElementsAre("g-2"_kr, "g-1"_kr)));
  const auto imported = krMake<KRTempPerson>("t"_kr);
  imported->setGroupIDs(KRStringList{"g-9"_kr});
  EXPECT_FALSE(book->trashPersonWithPerson(imported.get())->groupIDs());
  EXPECT_FALSE(book->trashPersonWithPerson(krMake<KRHostPerson>().get())->groupIDs());
}

TEST_F(KRTrashAddressBookTest, AddingAppendsACopyEachTimeAndNothingForNobody) {
  const auto book = trash();
  const KRRef<ABPerson> ann = record("UID:ann\r\nN:Lee;Ann;;;\r\n");
  const KRRef<ABPerson> ben = record("UID:ben\r\nN:Lee;Ben;;;\r\n");
  book->addPerson(ann.get());
  book->addPerson(nullptr);
  book->addPersons(std::vector<KRRef<IKRPerson>>{ben, {}, ann});
  book->addPersons(std::vector<KRRef<IKRPerson>>());
  ASSERT_EQ(book->allPersonsCount(), 3U);
  EXPECT_EQ(at(*book, 0)->ID(), "ann"_kr);
  EXPECT_EQ(at(*book, 1)->ID(), "ben"_kr);
  EXPECT_EQ(at(*book, 2)->ID(), "ann"_kr);
  EXPECT_NE(at(*book, 0), at(*book, 2));
  EXPECT_EQ(book->personsForIDs({"ann"_kr}).size(), 2U);
  EXPECT_EQ(book->personsForIDs({"ben"_kr, "nobody"_kr}).at(0).get(), at(*book, 1));
  EXPECT_TRUE(book->personsForIDs({"nobody"_kr}).empty());
  EXPECT_TRUE(book->personsForIDs({}).empty());
  const KRPersonArray both(std::vector<KRRef<IKRPerson>>{ann, ben});
  book->addPersons(both);
  EXPECT_EQ(book->allPersonsCount(), 5U);
}

TEST_F(KRTrashAddressBookTest, RemovesTheGivenPersonsOnly) {
  const auto book = trash();
  const KRRef<ABPerson> ann = record("UID:ann\r\nN:Lee;Ann;;;\r\n");
  book->addPersons(std::vector<KRRef<IKRPerson>>{ann, ann});
  const KRRef<IKRPerson> second(book->allPersons().at(1));
  // The person that was deleted is not the one in the trash.
  book->removePersons(KRPersonArray(ann.get()));
  EXPECT_EQ(book->allPersonsCount(), 2U);
  book->removePersons(KRPersonArray(book->allPersons().at(0)));
  ASSERT_EQ(book->allPersonsCount(), 1U);
  EXPECT_EQ(book->allPersons().at(0), second.get());
  book->clear();
  EXPECT_EQ(book->allPersonsCount(), 0U);
}

TEST_F(KRTrashAddressBookTest, ANewPersonIsATemporaryOneWithAnIdentifierOfItsOwn) {
  const auto book = trash();
  const KRRef<IKRPerson> made = book->newPerson();
  EXPECT_NE(dynamic_cast<KRTempPerson*>(made.get()), nullptr);
  EXPECT_EQ(book->allPersons().at(0), made.get());
  EXPECT_FALSE(made->ID() == book->newPerson()->ID());
}

TEST_F(KRTrashAddressBookTest, WhatIsSavedIsFoundByTheNext) {
  const auto book = trash();
  const KRRef<ABPerson> ann = record("UID:ann\r\nN:Lee;Ann;;;\r\nTEL;TYPE=work:+1 555\r\nBDAY:--03-01\r\n");
  ann->setParentGroups({krMake<KRGroup>("g"_kr, "Group"_kr)});
  book->addPerson(ann.get());
  book->addPerson(krMake<KRTempPerson>("t"_kr).get());
  book->save();
  const auto next = trash();
  EXPECT_TRUE(next->load());
  ASSERT_EQ(next->allPersonsCount(), 2U);
  EXPECT_EQ(at(*next, 0)->ID(), "ann"_kr);
  EXPECT_THAT(next->groupIDs(at(*next, 0)), testing::Optional(testing::ElementsAre("g"_kr)));
  EXPECT_FALSE(next->groupIDs(at(*next, 1)));
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    EXPECT_TRUE(krEqualObjects(at(*next, 0)->valueByProperty(property).get(), ann->valueByProperty(property).get()))
        << property->name().view();
  }
  EXPECT_TRUE(others().empty());
}

TEST_F(KRTrashAddressBookTest, WhatOneProcessSavesAnotherReads) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const auto book = trash();
    book->addPerson(record("UID:from the child\r\nN:Lee;Ann;;;\r\n").get());
    _exit(book->saveNow() ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  const auto book = trash();
  ASSERT_EQ(book->allPersonsCount(), 1U);
  EXPECT_EQ(at(*book, 0)->ID(), "from the child"_kr);
}

TEST_F(KRTrashAddressBookTest, ClearingWithoutSavingLeavesTheFile) {
  const auto book = trash();
  book->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
  book->save();
  const std::string before = content();
  book->clear();
  EXPECT_EQ(content(), before);
  EXPECT_EQ(trash()->allPersonsCount(), 1U);
  book->save();
  EXPECT_EQ(trash()->allPersonsCount(), 0U);
}

TEST_F(KRTrashAddressBookTest, AnEmptyTrashIsAnArchiveOfAnEmptyList) {
  trash()->save();
  EXPECT_EQ(content(), KRKeyedArchiver::archivedData(KRValue(krMake<KRValueList>())));
}

/// For which there is no memory left when it is written.
class TooMuch : public KRTempPerson {
 public:
  TooMuch() : KRTempPerson("much"_kr) {}
  void encodeWithCoder(KRKeyedArchiver&) const override { throw std::bad_alloc(); }
};

TEST_F(KRTrashAddressBookTest, WhereThereIsNoMemoryForTheArchiveTheFileStaysWhole) {
  const auto book = trash();
  book->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
  ASSERT_TRUE(book->saveNow());
  const std::string before = content();
  const auto much = krMake<TooMuch>();
  book->allPersons().append(much.get());
  EXPECT_THROW(static_cast<void>(book->saveNow()), std::bad_alloc);
  EXPECT_EQ(content(), before);
  EXPECT_TRUE(others().empty());
  book->allPersons().remove(much.get());
  book->addPerson(record("UID:bob\r\nN:Lee;Bob;;;\r\n").get());
  ASSERT_TRUE(book->saveNow());
  EXPECT_EQ(trash()->allPersonsCount(), 2U);
}

TEST_F(KRTrashAddressBookTest, AFileOfAnEarlierTimeIsStillRead) {
  const std::string kept = KRTestFolder::contentOf(KR_TEST_DATA_DIR "/trash/trashFile.data");
  putTrash(kept);
  const auto book = trash();
  ASSERT_TRUE(book->load());
  ASSERT_EQ(book->allPersonsCount(), 3U);
  EXPECT_EQ(at(*book, 0)->ID(), "ann"_kr);
  EXPECT_EQ(at(*book, 0)->fromID(), "home"_kr);
  EXPECT_EQ(at(*book, 0)->displayName(), KRObjectPersonName::displayString("Ann", "Mary", "Lee"));
  EXPECT_THAT(book->groupIDs(at(*book, 0)), testing::Optional(testing::ElementsAre("g-1"_kr, "g-2"_kr)));
  const KRRef<ABPerson> back = KRTrashAddressBook::restoredPerson(at(*book, 0));
  EXPECT_NE(back->card().find("X-UNKNOWN;A=b:kept\r\n"), std::string_view::npos);
  EXPECT_FALSE(back->isChanged());
  EXPECT_EQ(at(*book, 1)->ID(), "123"_kr);
  EXPECT_FALSE(at(*book, 1)->card());
  EXPECT_FALSE(book->groupIDs(at(*book, 1)));
  EXPECT_TRUE(KRTrashAddressBook::restoredPerson(at(*book, 2))->isChanged(KROrdinal::Note));
  EXPECT_EQ(KRTrashAddressBook::personsIn(kept)->size(), 3U);
}

// Files that must not be lost.

TEST_F(KRTrashAddressBookTest, ADamagedFileIsSetAsideBeforeTheFirstSave) {
  putTrash("not an archive");
  const auto book = trash();
  EXPECT_EQ(book->allPersonsCount(), 0U);
  const KRResult<void> loaded = book->load();
  ASSERT_FALSE(loaded);
  EXPECT_EQ(loaded.error().code, KRErrorCode::Damaged);
  EXPECT_NE(loaded.error().sentence.find(trashFile()), std::string::npos);
  book->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
  EXPECT_EQ(content(), "not an archive");
  book->save();
  EXPECT_EQ(trash()->allPersonsCount(), 1U);
  ASSERT_EQ(others().size(), 1U);
  EXPECT_TRUE(others()[0].starts_with(trashFile() + ".damaged-20"));
  EXPECT_EQ(KRTestFolder::contentOf(others()[0]), "not an archive");
  EXPECT_TRUE(book->load());
  book->save();
  EXPECT_EQ(others().size(), 1U);
}

TEST_F(KRTrashAddressBookTest, AnArchiveOfAnythingElseIsDamagedToo) {
  const auto mixed = krMake<KRValueList>();
  mixed->values().emplace_back(krMake<KRTempPerson>("t"_kr));
  mixed->values().emplace_back("text"_kr);
  for (const KRValue& root : {KRValue(mixed), KRValue("text"_kr), KRValue(krMake<KRTempPerson>()), KRValue()}) {
    putTrash(KRKeyedArchiver::archivedData(root));
    const auto book = trash();
    EXPECT_EQ(book->allPersonsCount(), 0U);
    EXPECT_FALSE(book->load());
  }
  std::string cut = KRKeyedArchiver::archivedData(KRValue(mixed));
  cut.pop_back();
  putTrash(cut);
  EXPECT_FALSE(trash()->load());
}

TEST_F(KRTrashAddressBookTest, AFileThatCannotBeReadIsSetAsideToo) {
  std::filesystem::create_directories(trashFile());
  const auto book = trash();
  ASSERT_FALSE(book->load());
  EXPECT_EQ(book->load().error().code, KRErrorCode::IsFolder);
  EXPECT_TRUE(book->saveNow());
  EXPECT_EQ(others().size(), 1U);
}

std::vector<std::string> IDsIn(KRTrashAddressBook& trash) {
  std::vector<std::string> IDs;
  for (IKRPerson& person : trash.allPersons()) IDs.emplace_back(person.ID().view());
  return IDs;
}

TEST_F(KRTrashAddressBookTest, WhatTwoProcessesPutIntoItIsAllThereAfterwards) {
  const auto mine = trash();
  const auto theirs = trash();
  theirs->addPerson(record("UID:theirs\r\nN:Lee;Ben;;;\r\n").get());
  EXPECT_TRUE(theirs->saveNow());
  mine->addPerson(record("UID:mine\r\nN:Lee;Ann;;;\r\n").get());
  EXPECT_TRUE(mine->saveNow());
  EXPECT_THAT(IDsIn(*mine), testing::ElementsAre("theirs", "mine"));
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("theirs", "mine"));
  theirs->addPerson(record("UID:last\r\nN:Lee;Ben;;;\r\n").get());
  EXPECT_TRUE(theirs->saveNow());
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("theirs", "mine", "last"));
  EXPECT_TRUE(others().empty());
}

TEST_F(KRTrashAddressBookTest, WhatOneProcessTakesOutStaysOutWhenTheOtherSaves) {
  const auto first = trash();
  for (const char* ID : {"a", "b", "c"}) {
    const std::string lines = "UID:" + std::string(ID) + "\r\nN:Lee;Ann;;;\r\nTEL;TYPE=work:1\r\n";
    first->addPerson(record(lines).get());
  }
  EXPECT_TRUE(first->saveNow());
  const auto mine = trash();
  const auto theirs = trash();
  theirs->removePersons(KRPersonArray(theirs->allPersons().at(0)));
  theirs->addPerson(record("UID:d\r\nN:Lee;Ann;;;\r\n").get());
  EXPECT_TRUE(theirs->saveNow());
  const KRRef<IKRPerson> kept(mine->allPersons().at(1));
  mine->removePersons(KRPersonArray(mine->allPersons().at(2)));
  EXPECT_TRUE(mine->saveNow());
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("b", "d"));
  EXPECT_EQ(mine->allPersons().at(0), kept.get());
}

TEST_F(KRTrashAddressBookTest, AFileThatWasDamagedSinceIsSetAside) {
  const auto book = trash();
  book->addPerson(record("UID:mine\r\nN:Lee;Ann;;;\r\n").get());
  putTrash("not an archive");
  EXPECT_TRUE(book->saveNow());
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("mine"));
  ASSERT_EQ(others().size(), 1U);
  EXPECT_EQ(KRTestFolder::contentOf(others()[0]), "not an archive");
}

TEST_F(KRTrashAddressBookTest, AFileThatWasMendedSinceIsReadAfterAll) {
  const auto good = trash();
  good->addPerson(record("UID:theirs\r\nN:Lee;Ann;;;\r\n").get());
  EXPECT_TRUE(good->saveNow());
  const std::string mended = content();
  putTrash("not an archive");
  const auto book = trash();
  ASSERT_FALSE(book->load());
  book->addPerson(record("UID:mine\r\nN:Lee;Ann;;;\r\n").get());
  putTrash(mended);
  EXPECT_TRUE(book->saveNow());
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("theirs", "mine"));
  EXPECT_TRUE(book->load());
  EXPECT_TRUE(others().empty());
}

TEST_F(KRTrashAddressBookTest, ManyProcessesAtOnceLoseNobody) {
  constexpr int kProcesses = 6;
  constexpr int kSaves = 5;
  std::vector<pid_t> children;
  for (int each = 0; each < kProcesses; ++each) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const auto book = trash();
      bool isGood = true;
      for (int i = 0; i < kSaves; ++i) {
        const std::string ID = std::to_string(each) + "-" + std::to_string(i);
        book->addPerson(record("UID:" + ID + "\r\nN:Lee;Ann;;;\r\n").get());
        isGood = isGood && book->saveNow().isOk();
      }
      _exit(isGood ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  const std::vector<std::string> IDs = IDsIn(*trash());
  EXPECT_EQ(IDs.size(), size_t{kProcesses} * kSaves);
  EXPECT_EQ(std::set<std::string>(IDs.begin(), IDs.end()).size(), IDs.size());
  EXPECT_TRUE(others().empty());
}

TEST_F(KRTrashAddressBookTest, AFileThatMayNotBeReadStaysAsItIs) {
  const auto first = trash();
  first->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
  EXPECT_TRUE(first->saveNow());
  const std::string before = content();
  ASSERT_EQ(chmod(trashFile().c_str(), 0), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // Whom the system lets do everything becomes somebody whom it does not.
    constexpr uid_t kNobody = 65534;
    const bool isPlain =
        geteuid() != 0 ||
        (chmod(folder_.path().c_str(), 0777) == 0 && chown(trashFolder().c_str(), kNobody, kNobody) == 0 &&
         chown(folder_.at("data").c_str(), kNobody, kNobody) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0);
    if (!isPlain) _exit(2);
    const auto book = trash();
    book->addPerson(record("UID:ben\r\nN:Lee;Ben;;;\r\n").get());
    const KRResult<void> saved = book->saveNow();
    const bool isRefused = !saved && saved.error().code == KRErrorCode::NotAllowed &&
                           saved.error().sentence.find(trashFile()) != std::string::npos;
    _exit(isRefused ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(chmod(trashFile().c_str(), 0600), 0);
  EXPECT_EQ(content(), before);
  EXPECT_TRUE(others().empty());
}

TEST_F(KRTrashAddressBookTest, FilesSetAsideInTheSameSecondKeepNamesOfTheirOwn) {
  for (const char* damage : {"one", "two", "three"}) {
    putTrash(damage);
    trash()->save();
  }
  EXPECT_EQ(others().size(), 3U);
}

TEST_F(KRTrashAddressBookTest, AFailedSaveLeavesTheOldFileWholeAndTheNextTriesAgain) {
  const auto book = trash();
  book->save();
  const std::string before = content();
  book->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
  for (const KRFile::Step step :
       {KRFile::Step::CreateTemporary, KRFile::Step::WritePiece, KRFile::Step::FlushTemporary, KRFile::Step::Rename}) {
    KRFile::setFault([step](KRFile::Step each) { return each == step ? ENOSPC : 0; });
    const KRResult<void> saved = book->saveNow();
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, KRErrorCode::NoSpace);
    book->save();
    EXPECT_EQ(content(), before);
    EXPECT_TRUE(others().empty());
  }
  KRFile::setFault({});
  EXPECT_EQ(book->allPersonsCount(), 1U);
  book->save();
  EXPECT_EQ(trash()->allPersonsCount(), 1U);
}

TEST_F(KRTrashAddressBookTest, WithoutAFolderNothingIsSavedAndTheErrorSaysSo) {
  folder_.put("data", "a file where the folder would be");
  const auto book = trash();
  EXPECT_EQ(book->allPersonsCount(), 0U);
  book->save();
  EXPECT_FALSE(book->saveNow());
  EXPECT_EQ(folder_.content("data"), "a file where the folder would be");
}

TEST_F(KRTrashAddressBookTest, InAScopeItIsWrittenByTheCommit) {
  const auto book = trash();
  KRSaveScope scope;
  book->save();
  EXPECT_FALSE(std::filesystem::exists(trashFile()));
  EXPECT_TRUE(scope.commit());
  EXPECT_TRUE(std::filesystem::exists(trashFile()));
}

TEST_F(KRTrashAddressBookTest, ASaveTakesAwayWhatAKilledOneLeftBehind) {
  trash()->save();
  ASSERT_TRUE(krDieBeforeRename([&] { static_cast<void>(trash()->saveNow()); }));
  EXPECT_EQ(others().size(), 1U);
  EXPECT_TRUE(trash()->saveNow());
  EXPECT_TRUE(others().empty());
}

// Books whose save fails after that of the trash.

class KRTrashTakeBackTest : public KRTrashSetting {
 protected:
  static constexpr std::string_view kBook =
      "BEGIN:VCARD\nVERSION:3.0\nUID:ann\nN:Lee;Ann;;;\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:3.0\nUID:ben\nN:Lee;Ben;;;\nEND:VCARD\n";

  KRTrashTakeBackTest() { folder_.put("book.vcf", kBook); }

  KRRef<KRStoredBook> book() const {
    const std::string path = folder_.at("book.vcf");
    return krMake<KRStoredBook>(std::make_unique<KRVCardFileStore>(KRText(std::string_view(path))));
  }
  /// As the handles do it.
  static void trashFirst(KRAddressBook& book, KRTrashAddressBook& trash) {
    const KRRef<IKRPerson> first(book.allPersons().at(0));
    trash.addPerson(first.get());
    trash.save();
    book.removePersons(KRPersonArray(first.get()));
    book.save();
  }
};

TEST_F(KRTrashTakeBackTest, WhatABookKeepsAfterAllIsNotLeftInTheTrash) {
  const auto from = book();
  const auto into = trash();
  ASSERT_TRUE(from->load());
  folder_.put("book.vcf", std::string(kBook) + "\n");
  KRSaveScope scope;
  trashFirst(*from, *into);
  for (int attempt = 0; attempt < 3; ++attempt) {
    const KRResult<void> saved = scope.commit();
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
    EXPECT_THAT(IDsIn(*trash()), testing::IsEmpty());
    EXPECT_THAT(IDsIn(*into), testing::ElementsAre("ann"));
    EXPECT_EQ(scope.gathered().size(), 2U);
  }
  folder_.put("book.vcf", kBook);
  ASSERT_TRUE(scope.commit());
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("ann"));
  EXPECT_EQ(book()->allPersonsCount(), 1U);
}

TEST_F(KRTrashTakeBackTest, WhatWasInTheTrashBeforeStays) {
  const auto into = trash();
  const auto from = book();
  into->addPerson(from->allPersons().at(0));
  EXPECT_TRUE(into->saveNow());
  folder_.put("book.vcf", std::string(kBook) + "\n");
  KRSaveScope scope;
  trashFirst(*from, *into);
  ASSERT_FALSE(scope.commit());
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("ann"));
}

TEST_F(KRTrashTakeBackTest, WhatMayHaveLeftTheBookStaysInTheTrash) {
  for (const KRFile::Step step : {KRFile::Step::Rename, KRFile::Step::FlushFolder}) {
    folder_.put("book.vcf", kBook);
    const auto from = book();
    const auto into = trash();
    into->clear();
    KRSaveScope scope;
    trashFirst(*from, *into);
    int count = 0;
    // The second file is the book's.
    KRFile::setFault([&](KRFile::Step each) { return each == step && ++count == 2 ? EIO : 0; });
    const KRResult<void> saved = scope.commit();
    KRFile::setFault({});
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, KRErrorCode::Failed);
    EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("ann"));
  }
}

TEST_F(KRTrashTakeBackTest, ABookWhoseFolderCannotBeFlushedIsAsItWasAndTheTrashToo) {
  const auto from = book();
  const auto into = trash();
  KRSaveScope scope;
  trashFirst(*from, *into);
  int count = 0;
  KRFile::setFault([&](KRFile::Step each) { return each == KRFile::Step::FlushFolder && ++count == 2 ? ENOSPC : 0; });
  const KRResult<void> saved = scope.commit();
  KRFile::setFault({});
  ASSERT_FALSE(saved);
  EXPECT_EQ(saved.error().code, KRErrorCode::NoSpace);
  EXPECT_EQ(folder_.content("book.vcf"), kBook);
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre());
  EXPECT_TRUE(from->hasChanges());
}

TEST_F(KRTrashTakeBackTest, ATrashWhoseFolderCannotBeFlushedIsAsItWas) {
  {
    const auto into = trash();
    into->addPerson(record("UID:old\r\nN:Lee;Old;;;\r\n").get());
    ASSERT_TRUE(into->saveNow());
  }
  const auto from = book();
  const auto into = trash();
  KRSaveScope scope;
  trashFirst(*from, *into);
  int count = 0;
  KRFile::setFault([&](KRFile::Step each) { return each == KRFile::Step::FlushFolder && ++count == 1 ? EIO : 0; });
  const KRResult<void> saved = scope.commit();
  KRFile::setFault({});
  ASSERT_FALSE(saved);
  EXPECT_EQ(folder_.content("book.vcf"), kBook);
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("old"));
}

TEST_F(KRTrashTakeBackTest, WhatAnotherProcessTrashedOfTheSameBookStays) {
  const auto from = book();
  const auto into = trash();
  ASSERT_TRUE(from->load());
  const auto theirBook = book();
  const auto theirTrash = trash();
  {
    KRSaveScope theirs;
    trashFirst(*theirBook, *theirTrash);
    ASSERT_TRUE(theirs.commit());
  }
  KRSaveScope scope;
  trashFirst(*from, *into);
  into->addPerson(from->allPersons().at(0));
  from->removePersons(KRPersonArray(from->allPersons().at(0)));
  const KRResult<void> saved = scope.commit();
  ASSERT_FALSE(saved);
  EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
  EXPECT_EQ(book()->allPersonsCount(), 1U);
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("ann"));
}

TEST_F(KRTrashTakeBackTest, OfAnotherProgramsTrashNothingIsTaken) {
  const auto from = book();
  const auto into = trash();
  trashFirst(*from, *into);
  const auto theirs = trash();
  theirs->addPerson(record("UID:theirs\r\nN:Lee;Cy;;;\r\n").get());
  EXPECT_TRUE(theirs->saveNow());
  EXPECT_FALSE(into->takeBack(*from));
  EXPECT_THAT(IDsIn(*trash()), testing::ElementsAre("ann", "theirs"));
}

/// A book that could take only one of its persons out.
class HalfSavedBook : public KRAddressBook {
 public:
  HalfSavedBook() : KRAddressBook("half"_kr, "Half"_kr) {}
  KRResult<void> saveNow() override { return KRError{KRErrorCode::NoSpace, "the disk is full"}; }
  KRStringList unsavedIDs() override { return {"ben"_kr}; }
};

TEST_F(KRTrashTakeBackTest, OnlyWhatTheBookStillHasIsTakenBack) {
  const auto from = krMake<HalfSavedBook>();
  const auto other = krMake<KRAddressBook>("other"_kr, "Other"_kr);
  const auto into = trash();
  KRSaveScope scope;
  for (const char* ID : {"ann", "ben"}) {
    for (KRAddressBook* each : {static_cast<KRAddressBook*>(from.get()), other.get()}) {
      const std::string lines = "UID:" + std::string(ID) + "\r\nN:Lee;Ann;;;\r\n";
      const auto person = record(lines);
      each->addPerson(person.get());
      into->addPerson(person.get());
    }
  }
  into->save();
  from->save();
  ASSERT_FALSE(scope.commit());
  const auto now = trash();
  EXPECT_THAT(IDsIn(*now), testing::ElementsAre("ann", "ann", "ben"));
  EXPECT_EQ(at(*now, 2)->fromID(), "other"_kr);
}

// Where a person came from.

TEST_F(KRTrashAddressBookTest, FindsTheBookThatAPersonCameFrom) {
  const auto home = krMake<KRAddressBook>("book of this test"_kr, "Home"_kr);
  const auto gone = krMake<KRAddressBook>("book that is gone"_kr, "Gone"_kr);
  KRAddressBookManager& manager = *KRAddressBookManager::ShareAddressBookManager();
  manager.addAddressBook(home.get());
  const auto book = trash();
  for (const auto& from : {home, gone}) {
    const KRRef<ABPerson> person = record("N:Lee;Ann;;;\r\n");
    from->addPerson(person.get());
    book->addPerson(person.get());
  }
  EXPECT_EQ(book->addressBookofPersonFrom(at(*book, 0)), home.get());
  EXPECT_EQ(book->addressBookofPersonFrom(at(*book, 1)), nullptr);
  EXPECT_EQ(book->addressBookofPersonFrom(krMake<KRTempPerson>().get()), nullptr);
  EXPECT_EQ(book->addressBookofPersonFrom(krMake<KRHostPerson>().get()), nullptr);
  EXPECT_EQ(book->addressBookofPersonFrom(nullptr), nullptr);
  EXPECT_FALSE(book->groupIDs(nullptr));
  EXPECT_FALSE(book->groupIDs(krMake<KRHostPerson>().get()));
}

// Putting back.

/// Cards with lines that no property shows, folds, groups, foreign character sets, and parts beyond the shown ones.
constexpr const char* kOddCards[] = {
    "BEGIN:VCARD\nVERSION:2.1\nN;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller;J=\n=F6rg\nX-A:1\nEND:VCARD\n",
    "BEGIN:VCARD\r\nVERSION:2.1\r\nN:M\xFCller;J\xF6rg\r\nNOTE:gr\xFC\xDF dich\r\nEND:VCARD\r\n",
    "begin:vcard\r\nversion:3.0\r\nitem1.TEL:1\r\nitem1.X-ABLabel:_$!<Lake>!$_\r\nn:Lee;A\r\n nn;;;\r\nend:vcard\r\n",
    "BEGIN:VCARD\r\nVERSION:4.0\r\nUID:urn:uuid:4\r\nFN:A\r\nTEL;VALUE=uri;PREF=1:tel:+1\r\nRELATED:x\r\nEND:VCARD\r\n",
    "BEGIN:VCARD\nVERSION:3.0\nN:Lee;Ann;;;\nPHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgo=\nADR:;;;;;;Utopia\nEND:VCARD",
    "BEGIN:VCARD\rVERSION:3.0\rN:Lee;Ann;;;\rBDAY;X-APPLE-OMIT-YEAR=1604:1604-02-29\rCATEGORIES:a,b\\,c\rEND:VCARD\r",
    "BEGIN:VCARD\nVERSION:2.1\nN:;\nAGENT:\nBEGIN:VCARD\nVERSION:2.1\nN:Inner\nEND:VCARD\nTEL:2\nEND:VCARD\n",
    "BEGIN:VCARD\nVERSION:3.0\nFN:B\nORG:Acme;Lab\nX-ABShowAs:COMPANY\nIMPP;X-SERVICE-TYPE=Jabber:xmpp:a\nEND:VCARD\n",
};

/// Trashes the contacts of a file, and holds what another trash gives back against them. Returns how many there are.
size_t restoreAll(std::string_view bytes, const std::string& name) {
  const auto from = krMake<KRAddressBook>("from"_kr, "From"_kr);
  KRVCardReader::read(bytes, *from);
  const auto book = krMake<KRTrashAddressBook>();
  book->clear();
  for (IKRPerson& person : from->allPersons()) book->addPerson(&person);
  EXPECT_TRUE(book->saveNow());
  const auto next = krMake<KRTrashAddressBook>();
  EXPECT_EQ(next->allPersonsCount(), from->allPersonsCount());
  for (size_t i = 0; i < next->allPersonsCount(); ++i) {
    const auto* before = dynamic_cast<const ABPerson*>(from->allPersons().at(i));
    const KRRef<ABPerson> after = KRTrashAddressBook::restoredPerson(next->allPersons().at(i));
    EXPECT_EQ(after->card(), before->card()) << name;
    EXPECT_FALSE(after->isChanged()) << name;
    EXPECT_EQ(after->ID(), before->ID()) << name;
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      EXPECT_TRUE(krEqualObjects(after->valueByProperty(property).get(), before->valueByProperty(property).get()))
          << name << " " << property->name().view();
    }
  }
  return next->allPersonsCount();
}

TEST_F(KRTrashAddressBookTest, EveryCardComesBackAsItWas) {
  for (const std::string_view card : kOddCards) EXPECT_EQ(restoreAll(card, std::string(card)), 1U) << card;
  size_t cards = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(KR_TEST_DATA_DIR "/vcard")) {
    if (!entry.is_regular_file()) continue;
    cards += restoreAll(KRTestFolder::contentOf(entry.path().string()), entry.path().string());
  }
  EXPECT_GT(cards, 0U);
}

TEST_F(KRTrashAddressBookTest, AnUnchangedPersonComesBackUnchanged) {
  const KRRef<ABPerson> ann = record("UID:ann\r\nN:Lee;Ann;;;\r\nX-UNKNOWN;A=b:kept\r\nTEL;TYPE=work,pref:1\r\n");
  const KRRef<ABPerson> back = KRTrashAddressBook::restoredPerson(trash()->trashPersonWithPerson(ann.get()).get());
  EXPECT_EQ(back->card(), ann->card());
  EXPECT_FALSE(back->isChanged());
  EXPECT_EQ(back->addressBook(), nullptr);
}

TEST_F(KRTrashAddressBookTest, AChangedPersonComesBackWithItsChangesBesideItsCard) {
  const KRRef<ABPerson> ann = record("UID:ann\r\nN:Lee;Ann;;;\r\nNOTE:old\r\nNICKNAME:gone\r\nX-UNKNOWN:kept\r\n");
  ann->setRecordValue("new"_kr, kABNoteProperty);
  ann->setRecordValue({}, kABNicknameProperty);
  trash()->save();
  const auto book = trash();
  book->addPerson(ann.get());
  book->save();
  const KRRef<ABPerson> back = KRTrashAddressBook::restoredPerson(trash()->allPersons().at(0));
  EXPECT_EQ(back->card(), ann->card());
  EXPECT_EQ(back->valueForProperty(kABNoteProperty).text(), "new"_kr);
  EXPECT_FALSE(back->valueByPropertyName(KRProPertyNickname));
  EXPECT_TRUE(back->isChanged(KROrdinal::Note));
  EXPECT_TRUE(back->isChanged(KROrdinal::Nickname));
  EXPECT_FALSE(back->isChanged(KROrdinal::Name));
}

TEST_F(KRTrashAddressBookTest, APersonWithoutACardComesBackFromItsValues) {
  const KRRef<IKRPerson> ann = krPerson<KRTempPerson>({.first = "Ann"_kr, .note = "x"_kr, .phones = {"1"_kr}});
  const KRRef<ABPerson> back = KRTrashAddressBook::restoredPerson(trash()->trashPersonWithPerson(ann.get()).get());
  EXPECT_EQ(back->ID(), "123"_kr);
  EXPECT_EQ(back->displayName(), ann->displayName());
  EXPECT_TRUE(back->mainPhone()->isEqual(ann->mainPhone().get()));
  EXPECT_TRUE(back->card().empty());
  EXPECT_FALSE(KRTrashAddressBook::restoredPerson(nullptr));
  EXPECT_FALSE(KRTrashAddressBook::restoredPerson(krMake<KRHostPerson>().get()));
}

TEST_F(KRTrashAddressBookTest, TheSecondHolderOfAnIdentifierComesBackWithIts) {
  const auto from = krMake<KRAddressBook>("from"_kr, "From"_kr);
  const auto first = record("UID:same\r\nN:Lee;Ann;;;\r\n");
  const auto second = record("UID:same\r\nN:Lee;Ben;;;\r\n");
  from->addPerson(first.get());
  from->addPerson(second.get());
  ASSERT_EQ(second->ID(), "same-2"_kr);
  const auto back = KRTrashAddressBook::restoredPerson(trash()->trashPersonWithPerson(second.get()).get());
  EXPECT_EQ(back->ID(), "same-2"_kr);
}

TEST_F(KRTrashAddressBookTest, TrashingATrashedPersonKeepsItsCard) {
  const auto once = trash()->trashPersonWithPerson(record("UID:a\r\nN:Lee;Ann;;;\r\nX-A:kept\r\n").get());
  const auto twice = trash()->trashPersonWithPerson(once.get());
  ASSERT_TRUE(twice->card());
  EXPECT_TRUE(twice->card()->isEqual(once->card().get()));
  EXPECT_EQ(twice->fromID(), KRTrashAddressBookID);
}

TEST_F(KRTrashAddressBookTest, SavingAndLoadingTakeTimeInStepWithTheSize) {
  const auto seconds = [&](size_t count) {
    const auto book = trash();
    book->clear();
    for (size_t i = 0; i < count; ++i) {
      const std::string number = std::to_string(i);
      book->addPerson(record("UID:" + number + "\r\nN:Lee;Ann" + number + ";;;\r\nTEL:" + number + "\r\n").get());
    }
    const std::clock_t start = std::clock();
    EXPECT_TRUE(book->saveNow());
    EXPECT_EQ(trash()->allPersonsCount(), count);
    return static_cast<double>(std::clock() - start);
  };
  seconds(500);
  // Sixteen times as many: quadratic time would be 256 times as long.
  EXPECT_LT(seconds(16000), 64 * seconds(1000));
}

}  // namespace
