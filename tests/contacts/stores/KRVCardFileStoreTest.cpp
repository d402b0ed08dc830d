#include "contacts/stores/KRVCardFileStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "contacts/stores/KRBookPaths.h"
#include "tests/contacts/stores/StoreSamples.h"
#include "tests/support/KRKilledProcess.h"
#include "tests/support/KRTestPaths.h"

namespace {

using People = std::vector<std::string>;

class KRVCardFileStoreTest : public testing::Test {
 protected:
  KRRef<KRStoredBook> open(const std::string& bytes) const {
    folder.put("people.vcf", bytes);
    return reopen();
  }
  KRRef<KRStoredBook> reopen() const {
    const std::string path = folder.at("people.vcf");
    return krMake<KRStoredBook>(std::make_unique<KRVCardFileStore>(krPath(path)));
  }
  std::string bytes() const { return folder.content("people.vcf"); }

  KRTestFolder folder;
};

std::string replaced(std::string text, const std::string& old, const std::string& fresh) {
  const size_t place = text.find(old);
  EXPECT_NE(place, std::string::npos) << old;
  return place == std::string::npos ? text : text.replace(place, old.size(), fresh);
}

/// Contacts, a group, text between, a card that is cut off, and lines as no program of ours would write them.
const std::string& oddFile() {
  static const std::string text =
      "a line before all\r\nBEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee;Ann;;;\r\nX-A;Y=\"q;\":folded \r\n  value\r\n"
      "item1.TEL;type=CELL;x-b=c:123\r\nitem1.X-ABLabel:boat\r\nEND:VCARD\r\n\r\nbetween\n"
      "begin:vcard\nversion:2.1\nn:Ng;Bo\ntel;cell;x-c:456\nnote;encoding=quoted-printable;charset=utf-8:f=C3=BCr=\n "
      "dich\n"
      "end:vcard\n"
      "BEGIN:VCARD\nVERSION:3.0\nN:Friends\nUID:g1\nX-ADDRESSBOOKSERVER-KIND:group\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:3.0\nN:;Cy\nEND:VCARD\nbehind all";
  return text;
}

TEST_F(KRVCardFileStoreTest, ChangesTheLinesOfTheChangedValueOnly) {
  const auto book = open(oddFile());
  ASSERT_EQ(book->allPersonsCount(), 3U);
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNickname, "C");
  krSetText(*krPersonNamed(*book, "Bo Ng"), KRProPertyNote, "plain");
  ASSERT_TRUE(book->saveNow().isOk());
  const std::string expected = replaced(oddFile(), "N:;Cy\n", "N:;Cy\nNICKNAME:C\n");
  EXPECT_EQ(bytes(),
            replaced(expected, "note;encoding=quoted-printable;charset=utf-8:f=C3=BCr=\n dich\n", "note:plain\n"));
}

TEST_F(KRVCardFileStoreTest, TakesNothingButTheRemovedCardAway) {
  const auto book = open(oddFile());
  book->removePersons(KRPersonArray(krPersonNamed(*book, "Bo Ng")));
  ASSERT_TRUE(book->saveNow().isOk());
  const size_t begin = oddFile().find("begin:vcard");
  const size_t end = oddFile().find("end:vcard\n") + 10;
  EXPECT_EQ(bytes(), oddFile().substr(0, begin) + oddFile().substr(end));
}

TEST_F(KRVCardFileStoreTest, LeavesTheBytesAloneWhenTheSameValueIsSet) {
  const auto book = open(oddFile());
  const auto person = krPersonNamed(*book, "Ann Lee");
  person->setValue(person->valueByPropertyName(KRProPertyPhone), KRProPertyPhone);
  EXPECT_TRUE(book->hasChanges());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_FALSE(book->hasChanges());
  EXPECT_EQ(bytes(), oddFile());
}

TEST_F(KRVCardFileStoreTest, KeepsTheEncodingOfTheFile) {
  for (const char* name :
       {"utf16.vcf", "latin1.vcf", "phone_2.1.vcf", "returns.vcf", "apple_3.0.vcf", "plain_4.0.vcf"}) {
    const std::string before = KRTestFolder::contentOf(std::string(KR_TEST_DATA_DIR) + "/vcard/" + name);
    const auto book = open(before);
    ASSERT_GT(book->allPersonsCount(), 0U) << name;
    IKRPerson& last = *book->allPersons().at(book->allPersonsCount() - 1);
    std::vector<std::string> others;
    for (size_t i = 0; i + 1 < book->allPersonsCount(); ++i) {
      others.push_back(krShownByReading(*book->allPersons().at(i)));
    }
    krSetText(last, KRProPertyNickname, "Zoë");
    book->addPerson(krPersonOf(krNoted("Dee", "größer")).get());
    const std::string changed = krShownByReading(last);
    const auto saved = book->saveNow();
    ASSERT_TRUE(saved.isOk()) << name << ": " << saved.error().sentence;
    const auto again = reopen();
    ASSERT_EQ(again->allPersonsCount(), others.size() + 2) << name;
    for (size_t i = 0; i < others.size(); ++i) EXPECT_EQ(krShownByReading(*again->allPersons().at(i)), others[i]);
    EXPECT_EQ(krShownByReading(*again->allPersons().at(others.size())), changed) << name;
    EXPECT_EQ(krPeople(*again).size(), others.size() + 2);
    KRHold hold;
    EXPECT_EQ(krPersonNamed(*again, "Dee")->readText(KROrdinal::Note, hold), "größer") << name;
    EXPECT_EQ(bytes().substr(0, 20), before.substr(0, 20)) << name;
  }
}

TEST_F(KRVCardFileStoreTest, FindsTheMembersOfGroups) {
  const auto book =
      open(krCard({"N:;Ann", "UID:urn:uuid:a"}) + krCard({"N:;Bo", "UID:b"}) + krCard({"N:;Cy", "UID:c"}) +
           krCard({"FN:New way", "KIND:group", "UID:urn:uuid:g1", "MEMBER:urn:uuid:a", "MEMBER:b", "MEMBER:a"}, "4.0") +
           krCard({"N:Old way", "FN:Old way", "X-ADDRESSBOOKSERVER-KIND:group", "UID:g2",
                   "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:b", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:nobody"}) +
           krCard({"FN:No identifier", "KIND:group"}, "4.0"));
  EXPECT_EQ(book->allPersonsCount(), 3U);
  ASSERT_EQ(book->rootGroupsCount(), 3U);
  EXPECT_EQ(book->rootGroups()[0]->name(), "New way");
  EXPECT_EQ(book->rootGroups()[0]->uniqueId(), "urn:uuid:g1");
  EXPECT_FALSE(book->rootGroups()[2]->uniqueId().isEmpty());
  const auto namesOf = [&](const char* person) {
    std::vector<std::string> names;
    for (const auto& group : krPersonNamed(*book, person)->parentGroups()) names.emplace_back(group->name().view());
    return names;
  };
  EXPECT_EQ(namesOf("Ann"), (People{"New way"}));
  EXPECT_EQ(namesOf("Bo"), (People{"New way", "Old way"}));
  EXPECT_EQ(namesOf("Cy"), People{});
}

/// Puts a person into groups of the book by their names, and takes it out of all others.
void setGroups(KRStoredBook& book, const char* person, const std::vector<std::string>& names) {
  std::vector<KRRef<KRGroup>> groups;
  for (const KRRef<KRGroup>& each : book.rootGroups()) {
    if (std::count(names.begin(), names.end(), std::string(each->name().view())) != 0) groups.push_back(each);
  }
  ASSERT_EQ(groups.size(), names.size());
  book.setGroups(*krPersonNamed(book, person), groups);
}

std::vector<std::string> groupsOf(KRStoredBook& book, const char* person) {
  std::vector<std::string> names;
  for (const auto& group : krPersonNamed(book, person)->parentGroups()) names.emplace_back(group->name().view());
  return names;
}

TEST_F(KRVCardFileStoreTest, WritesTheLinesOfMembersThatComeAndGoAndNoOthers) {
  const std::string before =
      "first\r\n" + krCard({"N:;Ann", "UID:urn:uuid:a"}) + krCard({"N:;Bo", "UID:b"}) +
      "begin:vcard\nversion:3.0\nx-addressbookserver-kind:group\nn:Friends\nfn:Frie\n nds\nuid:g\nX-COLOR;A=b:red\n"
      "x-addressbookserver-member:urn:uuid:nobody\nX-ADDRESSBOOKSERVER-MEMBER:urn:uu\n id:a\nNOTE:kept\nend:vcard\n" +
      "between\n" + krCard({"KIND:group", "FN:Work", "UID:w", "NOTE:empty"}, "4.0") + krCard({"N:;Cy", "UID:c"}) +
      "behind";
  const auto book = open(before);
  setGroups(*book, "Ann", {"Work"});
  setGroups(*book, "Bo", {"Friends", "Work"});
  setGroups(*book, "Cy", {"Friends"});
  const auto saved = book->saveNow();
  ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
  const std::string friends =
      replaced(before, "X-ADDRESSBOOKSERVER-MEMBER:urn:uu\n id:a\n",
               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:b\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:c\n");
  EXPECT_EQ(bytes(), replaced(friends, "NOTE:empty\r\n", "NOTE:empty\r\nMEMBER:urn:uuid:a\r\nMEMBER:urn:uuid:b\r\n"));
  const auto again = reopen();
  EXPECT_EQ(groupsOf(*again, "Ann"), (People{"Work"}));
  EXPECT_EQ(groupsOf(*again, "Bo"), (People{"Friends", "Work"}));
  EXPECT_EQ(groupsOf(*again, "Cy"), (People{"Friends"}));
}

TEST_F(KRVCardFileStoreTest, TakesNothingButTheCardOfARemovedGroupAway) {
  const auto book = open(oddFile());
  book->removeGroup(*book->rootGroups().front());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(bytes(),
            replaced(oddFile(),
                     "BEGIN:VCARD\nVERSION:3.0\nN:Friends\nUID:g1\nX-ADDRESSBOOKSERVER-KIND:group\nEND:VCARD\n", ""));
}

TEST_F(KRVCardFileStoreTest, MakesTheCardOfANewGroupLikeItsNeighbours) {
  const struct {
    const char* version;
    const char* card;
  } rows[] = {
      {"2.1",
       "X-ADDRESSBOOKSERVER-KIND:group\r\nN:Tea\\; or not;;;;\r\nFN:Tea; or not\r\nUID:g\r\n"
       "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a\r\n"},
      {"3.0",
       "X-ADDRESSBOOKSERVER-KIND:group\r\nN:Tea\\; or not;;;;\r\nFN:Tea\\; or not\r\nUID:g\r\n"
       "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a\r\n"},
      {"4.0", "KIND:group\r\nFN:Tea\\; or not\r\nUID;VALUE=text:g\r\nMEMBER:urn:uuid:a\r\n"},
  };
  for (const auto& row : rows) {
    const std::string before = krCard({"N:;Ann", "UID:a"}, row.version);
    const auto book = open(before);
    book->setGroups(*krPersonNamed(*book, "Ann"), {book->addGroup("Tea; or not"_kr, "g"_kr)});
    ASSERT_TRUE(book->saveNow().isOk()) << row.version;
    EXPECT_EQ(bytes(),
              before + "BEGIN:VCARD\r\nVERSION:" + row.version + "\r\n" + std::string(row.card) + "END:VCARD\r\n");
    const auto again = reopen();
    EXPECT_EQ(groupsOf(*again, "Ann"), (People{"Tea; or not"})) << row.version;
    EXPECT_EQ(again->rootGroups().front()->uniqueId(), "g") << row.version;
  }
}

TEST_F(KRVCardFileStoreTest, NamesMembersThatHaveNoIdentifier) {
  const std::string twin = krCard({"N:;Twin"});
  const std::string stays = krCard({"N:;Bo"});
  const std::string group = krCard({"FN:Friends", "KIND:group"}, "4.0");
  const auto book = open(twin + twin + stays + group + krCard({"N:;Cy"}));
  const auto friends = book->rootGroups().front();
  const KRString groupID = friends->uniqueId();
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, "changed");
  std::vector<std::string> IDs;
  for (IKRPerson& person : book->allPersons()) {
    if (person.showName() == "Bo") continue;
    IDs.emplace_back(person.ID().view());
    book->setGroups(dynamic_cast<ABPerson&>(person), {friends});
  }
  book->addPerson(krPersonOf({"N:;Dee", "X-KEPT:yes"}).get());
  const auto dee = krPersonNamed(*book, "Dee");
  IDs.emplace_back(dee->ID().view());
  book->setGroups(*dee, {friends});
  for (int round = 0; round < 2; ++round) {
    const auto saved = book->saveNow();
    ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
    EXPECT_FALSE(book->hasChanges());
    const auto again = reopen();
    std::vector<std::string> found;
    for (IKRPerson& person : again->allPersons()) {
      if (person.showName() == "Bo") continue;
      found.emplace_back(person.ID().view());
      EXPECT_EQ(dynamic_cast<ABPerson&>(person).parentGroups().size(), 1U) << person.ID().view();
    }
    EXPECT_EQ(found, IDs);
    EXPECT_EQ(again->rootGroups().front()->uniqueId(), groupID);
    EXPECT_EQ(again->rootGroupsCount(), 1U);
    EXPECT_NE(bytes().find(stays + "BEGIN"), std::string::npos);
    // What was given an identifier can be changed and saved again.
    krSetText(*krPersonNamed(*book, "Twin"), KRProPertyNote, "later");
  }
  EXPECT_EQ(krPeople(*reopen()), (People{"Bo: ", "Cy: changed", "Dee: ", "Twin: ", "Twin: later"}));
}

TEST_F(KRVCardFileStoreTest, KeepsMembersWhoseIdentifiersAreOdd) {
  const std::vector<std::string> identifiers = {"A1:ABPerson",   "http://a.b/c,d;e",    "x\\\\y\\;z",
                                                "M\xC3\xBCller", std::string(200, 'l'), "urn:other:1"};
  for (const char* version : {"2.1", "3.0", "4.0"}) {
    for (const std::string& UID : identifiers) {
      const auto book = open(krCard({"N:;Ann", "UID:" + UID}, version));
      book->setGroups(*krPersonNamed(*book, "Ann"), {book->addGroup("New"_kr)});
      ASSERT_TRUE(book->saveNow().isOk());
      const auto again = reopen();
      EXPECT_EQ(groupsOf(*again, "Ann"), (People{"New"})) << version << " " << UID;
      again->setGroups(*krPersonNamed(*again, "Ann"), {});
      ASSERT_TRUE(again->saveNow().isOk());
      EXPECT_EQ(bytes().find("MEMBER"), std::string::npos) << version << " " << UID;
      EXPECT_EQ(reopen()->rootGroupsCount(), 1U);
    }
  }
}

TEST_F(KRVCardFileStoreTest, WritesOnlyTheFirstOfTwoCardsOfOneGroup) {
  const std::string second = krCard({"FN:Friends too", "KIND:group", "UID:g", "MEMBER:b"}, "4.0");
  const std::string people = krCard({"N:;Ann", "UID:a"}) + krCard({"N:;Bo", "UID:b"});
  const std::string first = krCard({"FN:Friends", "KIND:group", "UID:g"}, "4.0");
  const auto book = open(people + first + second);
  EXPECT_EQ(groupsOf(*book, "Bo"), (People{"Friends"}));
  setGroups(*book, "Ann", {"Friends"});
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(bytes(), people + replaced(first, "UID:g\r\n", "UID:g\r\nMEMBER:urn:uuid:a\r\n") + second);
}

TEST_F(KRVCardFileStoreTest, WritesGroupsInTheEncodingOfTheFile) {
  for (const char* name : {"utf16.vcf", "latin1.vcf", "phone_2.1.vcf", "returns.vcf"}) {
    const auto book = open(KRTestFolder::contentOf(std::string(KR_TEST_DATA_DIR) + "/vcard/" + name));
    const size_t count = book->allPersonsCount();
    const auto group = book->addGroup("Größer"_kr);
    auto& last = dynamic_cast<ABPerson&>(*book->allPersons().at(count - 1));
    book->setGroups(last, {group});
    for (int round = 0; round < 2; ++round) {
      const auto saved = book->saveNow();
      ASSERT_TRUE(saved.isOk()) << name << ": " << saved.error().sentence;
      const auto again = reopen();
      ASSERT_EQ(again->allPersonsCount(), count) << name;
      const auto found = again->groupWithID(group->uniqueId());
      ASSERT_TRUE(found) << name;
      EXPECT_EQ(found->name(), "Größer") << name;
      const auto groups = dynamic_cast<ABPerson&>(*again->allPersons().at(count - 1)).parentGroups();
      EXPECT_EQ(std::count(groups.begin(), groups.end(), found), 1) << name;
      auto& first = dynamic_cast<ABPerson&>(*book->allPersons().at(0));
      book->setGroups(first, {group});
    }
  }
}

TEST_F(KRVCardFileStoreTest, WritesNothingIntoAFileThatHoldsNoCards) {
  const std::string before = "name,phone\nAnn,1\n";
  const auto book = open(before);
  EXPECT_EQ(book->load().error().code, KRErrorCode::InvalidArgument);
  book->addPerson(krPersonOf({"N:;Ann"}).get());
  EXPECT_EQ(book->saveNow().error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(bytes(), before);
}

TEST_F(KRVCardFileStoreTest, TellsThatTheFileWentAway) {
  const auto book = open(oddFile());
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, "x");
  std::filesystem::remove(folder.at("people.vcf"));
  EXPECT_EQ(book->saveNow().error().code, KRErrorCode::Changed);
  EXPECT_FALSE(std::filesystem::exists(folder.at("people.vcf")));
  EXPECT_EQ(reopen()->load().error().code, KRErrorCode::NotFound);
}

TEST_F(KRVCardFileStoreTest, LeavesAReadOnlyFileAlone) {
  const auto book = open(oddFile());
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, "x");
  namespace fs = std::filesystem;
  fs::permissions(folder.at("people.vcf"), fs::perms(0444));
  const auto saved = book->saveNow();
  ASSERT_FALSE(saved.isOk());
  EXPECT_EQ(saved.error().code, KRErrorCode::NotAllowed);
  EXPECT_NE(saved.error().sentence.find("people.vcf: the file is read-only"), std::string::npos);
  EXPECT_EQ(bytes(), oddFile());
  EXPECT_TRUE(book->hasChanges());
  fs::permissions(folder.at("people.vcf"), fs::perms(0644));
  EXPECT_TRUE(book->saveNow().isOk());
}

TEST_F(KRVCardFileStoreTest, TakesAwayWhatAKilledSaveLeftBehind) {
  const auto book = open(oddFile());
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, "x");
  ASSERT_TRUE(krDieBeforeRename([&] { static_cast<void>(book->saveNow()); }));
  const auto entries = [&] {
    return std::distance(std::filesystem::directory_iterator(folder.path()), std::filesystem::directory_iterator());
  };
  EXPECT_EQ(entries(), 2);
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(entries(), 1);
}

TEST_F(KRVCardFileStoreTest, NoticesAChangeThatLeavesSizeAndTime) {
  const auto book = open(oddFile());
  krSetText(*krPersonNamed(*book, "Cy"), KRProPertyNote, "x");
  const auto time = std::filesystem::last_write_time(folder.at("people.vcf"));
  const std::string theirs = replaced(oddFile(), "N:Lee;Ann", "N:Lee;Amy");
  folder.put("people.vcf", theirs);
  std::filesystem::last_write_time(folder.at("people.vcf"), time);
  EXPECT_EQ(book->saveNow().error().code, KRErrorCode::Changed);
  EXPECT_EQ(bytes(), theirs);
}

TEST(KRBookPaths, OpensWhatIsAtAPath) {
  const KRTestFolder folder;
  folder.put("people.vcf", krCard({"N:;Ann"}));
  const struct {
    std::string path;
    const char* kind;
  } rows[] = {{folder.at("people.vcf"), "vcard"}, {folder.path(), "folder"}};
  for (const auto& row : rows) {
    const auto sources = krBooksAtPath(krPath(row.path));
    ASSERT_EQ(sources.size(), 1U) << row.kind;
    EXPECT_EQ(sources[0].kind, row.kind);
    const auto book = sources[0].open();
    ASSERT_TRUE(book.isOk()) << row.kind;
    EXPECT_EQ((*book)->ID(), sources[0].ID);
    EXPECT_EQ((*book)->name(), sources[0].name);
    EXPECT_EQ((*book)->allPersonsCount(), 1U);
  }
  EXPECT_EQ(krBooksAtPath(krPath(folder.at("missing"))).front().open().error().code, KRErrorCode::NotFound);
}

}  // namespace
