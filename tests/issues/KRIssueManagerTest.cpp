#include "issues/KRIssueManager.h"

#include <gtest/gtest.h>

#include <thread>

#include "handles/KRIssueHandle.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"
#include "platform/KRLanguage.h"
#include "platform/KRSupportFuction.h"
#include "tests/support/KRPrivatePreferences.h"

namespace {

constexpr KRString kKey = "KR_ISSUE_MANAGER_USERDEFAULT_KEY"_kr;

struct Row {
  KRString name;
  /// The key of the text, or the text itself when it is not localised.
  const char* text;
  std::vector<KRString> handles;
  bool multiPerson;
};

const std::vector<Row>& rows() {
  static const std::vector<Row> kRows = {
      {KRIssueDuplicateNames, "KRIssueName_Duplicatecontacts", {KRHandleNameEdit, KRHandleNameIgnore}, true},
      {KRIssueDuplicateInfo, "Exact duplicate contacts", {KRHandleNameDeleteDuplicatePerson, KRHandleNameIgnore}, true},
      {KRIssueIncompleteName, "KRIssueName_IncompleteName", {KRHandleNameEdit, KRHandleNameIgnore}, false},
      {KRIssueBlankName,
       "KRIssueName_BlankName",
       {KRHandleNameEdit, KRHandleNameDeleteContact, KRHandleNameIgnore},
       false},
      {KRIssueInvalidCharacters, "KRIssueName_InvalidCharacters", {KRHandleNameEdit, KRHandleNameIgnore}, false},
      {KRIssueDuplicatePhoneNumber,
       "KRIssueName_DuplicatePhoneNumber",
       {KRHandleNameDeleteDublicatProperty, KRHandleNameIgnore},
       false},
      {KRIssueDuplicateEmailAddress,
       "KRIssueName_DuplicateEmailAddress",
       {KRHandleNameDeleteDublicatProperty, KRHandleNameIgnore},
       false},
      {KRIssueDuplicateAddress,
       "KRIssueName_DuplicateAddress",
       {KRHandleNameDeleteDublicatProperty, KRHandleNameIgnore},
       false},
      {KRIssuePhonesDuplicatedAmongMultipleContacts,
       "KRIssueName_PhonesDuplicatedAmongMultipleContacts",
       {KRHandleNameEdit, KRHandleNameIgnore},
       true},
      {KRIssueEmailsDuplicatedAmongMultipleContacts,
       "KRIssueName_EmailsDuplicatedAmongMultipleContacts",
       {KRHandleNameEdit, KRHandleNameIgnore},
       true},
      {KRIssueUnusualTitle,
       "KRIssueName_UnusualTitle",
       {KRHandleNameAddSupport, KRHandleNameDeleteProperty, KRHandleNameIgnore},
       false},
      {KRIssueUnusualSuffix,
       "KRIssueName_UnusualSuffix",
       {KRHandleNameAddSupport, KRHandleNameDeleteProperty, KRHandleNameIgnore},
       false},
      {KRIssueSpacingInTheFirstName,
       "KRIssueName_SpacingInTheFirstName",
       {KRHandleNameRemoveSpace, KRHandleNameIgnore},
       false},
      {KRIssueHasCompanyNameNoTitle, "Has company name but no title", {KRHandleNameEdit, KRHandleNameIgnore}, false},
      {KRIssueNoteWithSpacingOnly, "KRIssueName_NoteWithSpacingOnly", {KRHandleNameEdit, KRHandleNameIgnore}, false},
  };
  return kRows;
}

KRStringList catalogueNames() {
  KRStringList names;
  for (const Row& row : rows()) names.push_back(row.name);
  return names;
}

class KRIssueManagerTest : public testing::Test {
 protected:
  static KRStringList used(KRIssueManager& manager) { return KRIssueManager::issueNamesByIssues(&manager.useIssues()); }

  static void fill(KRIssueList& list, KRIssueManager& manager, const std::vector<size_t>& places) {
    for (const size_t place : places) list.append(manager.supportIssues().at(place));
  }

  /// Puts the archive of a manager with that value under its key into the preferences.
  void store(KRValue names, KRText key = "KR_ISSUE_ABLE_LSIT") {
    class Archived : public KRObject {
     public:
      Archived(KRValue names, KRText key) : names_(std::move(names)), key_(key) {}
      KRText archiveClassName() const override { return "KRIssueManager"; }
      void encodeWithCoder(KRKeyedArchiver& coder) const override { coder.encode(names_, key_); }

     private:
      KRValue names_;
      KRText key_;
    };
    const KRValue root(krMake<Archived>(std::move(names), key));
    preferences_->setValue(krMake<KRData>(KRKeyedArchiver::archivedData(root)), kKey);
    preferences_.reload();
  }

  /// The names that the preferences hold now, read by a manager of their own.
  KRStringList stored() {
    const auto manager = KRIssueManager::unarchive(preferences_->bytes(kKey));
    return manager ? used(*manager) : KRStringList{"nothing"_kr};
  }

  KRPrivatePreferences preferences_;
};

TEST_F(KRIssueManagerTest, TheCatalogueStandsInItsOrderWithItsHandles) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  ASSERT_EQ(manager.supportIssues().count(), rows().size());
  for (size_t i = 0; i < rows().size(); ++i) {
    const KRIssue& issue = *manager.supportIssues().at(i);
    const Row& row = rows()[i];
    EXPECT_EQ(issue.name(), row.name);
    EXPECT_EQ(issue.describe(), KRSupportFuction::loadString(KRString(row.text)));
    EXPECT_EQ(issue.displayName(), issue.describe());
    EXPECT_EQ(issue.multiPerson(), row.multiPerson) << row.name.view();
    std::vector<KRString> handles;
    for (const KRIssueHandle& handle : issue.handles()) {
      handles.push_back(handle.name());
      EXPECT_TRUE(handle.info().isNothing());
    }
    EXPECT_EQ(handles, row.handles) << row.name.view();
  }
}

TEST_F(KRIssueManagerTest, EveryLocalisedTitleHasAText) {
  for (const Row& row : rows()) {
    const KRString text = KRSupportFuction::loadString(KRString(row.text));
    EXPECT_EQ(text == row.text, !KRString(row.text).view().starts_with("KRIssueName_")) << row.text;
  }
}

TEST_F(KRIssueManagerTest, TwoTitlesAreTheSameInEveryLanguage) {
  const KRString before = KRLanguage::current();
  for (const KRString& language : {"fr"_kr, "en"_kr}) {
    KRLanguage::set(language);
    const auto manager = KRIssueManager::init();
    for (const char* text : {"Exact duplicate contacts", "Has company name but no title"}) {
      const size_t place = text[0] == 'E' ? 1 : 13;
      EXPECT_EQ(manager->supportIssues().at(place)->describe(), text);
      EXPECT_EQ(manager->supportIssues().at(place)->displayName(), text);
    }
  }
  KRLanguage::set(before);
}

TEST_F(KRIssueManagerTest, HandlesAndIssuesBelongToOneManager) {
  const auto one = KRIssueManager::init();
  const auto other = KRIssueManager::init();
  for (size_t i = 0; i < one->supportIssues().count(); ++i) {
    KRIssue* issue = one->supportIssues().at(i);
    EXPECT_FALSE(other->supportIssues().contains(issue));
    for (const KRIssueHandle& handle : issue->handles()) {
      size_t owners = 0;
      for (KRIssue& each : one->supportIssues()) owners += each.handles().contains(&handle) ? 1U : 0U;
      EXPECT_EQ(owners, 1U);
    }
  }
}

TEST_F(KRIssueManagerTest, TheFirstUseUsesAllAndSavesAtOnce) {
  EXPECT_TRUE(preferences_->value(kKey).isNothing());
  EXPECT_EQ(used(KRIssueManager::shareIssueManager()), catalogueNames());
  EXPECT_EQ(stored(), catalogueNames());
  EXPECT_EQ(preferences_->writes(), 1);
  EXPECT_EQ(preferences_->flushes(), 0);
}

TEST_F(KRIssueManagerTest, TheChoiceIsThereAgainInTheNextRun) {
  KRIssueManager& before = KRIssueManager::shareIssueManager();
  KRIssueList chosen;
  fill(chosen, before, {3, 0});
  before.setUseIssues(&chosen);
  preferences_.reload();
  KRIssueManager& after = KRIssueManager::shareIssueManager();
  EXPECT_NE(&after, &before);
  EXPECT_EQ(used(after), (KRStringList{KRIssueDuplicateNames, KRIssueBlankName}));
  EXPECT_TRUE(after.isUseIssue(after.supportIssues().at(0)));
  EXPECT_FALSE(after.isUseIssue(before.supportIssues().at(0)));
}

TEST_F(KRIssueManagerTest, AnUnknownStoredNameUsesAllAndIsNotWrittenBack) {
  store(KRValueList::ofTexts({"KRIssueBlankName"_kr, "KRIssueNicknameWithSpacingOnly"_kr}));
  const int writes = preferences_->writes();
  EXPECT_EQ(used(KRIssueManager::shareIssueManager()), catalogueNames());
  EXPECT_EQ(preferences_->writes(), writes);
}

TEST_F(KRIssueManagerTest, AStoredEmptyListOrNoneUsesNothing) {
  store(krMake<KRValueList>());
  EXPECT_TRUE(KRIssueManager::shareIssueManager().useIssues().isEmpty());
  store(KRValueList::ofTexts({"KRIssueBlankName"_kr}), "another key");
  EXPECT_TRUE(KRIssueManager::shareIssueManager().useIssues().isEmpty());
  store("KRIssueBlankName"_kr);
  EXPECT_TRUE(KRIssueManager::shareIssueManager().useIssues().isEmpty());
}

TEST_F(KRIssueManagerTest, AStoredListIsNeitherSortedNorRidOfRepeats) {
  store(KRValueList::ofTexts({KRIssueBlankName, KRIssueDuplicateNames, KRIssueBlankName}));
  EXPECT_EQ(used(KRIssueManager::shareIssueManager()),
            (KRStringList{KRIssueBlankName, KRIssueDuplicateNames, KRIssueBlankName}));
}

TEST_F(KRIssueManagerTest, AStoredEntryThatIsNoTextIsAnUnknownName) {
  store(krMake<KRValueList>(std::vector<KRValue>{KRValue(KRIssueBlankName), KRValue::whole(7)}));
  EXPECT_EQ(used(KRIssueManager::shareIssueManager()), catalogueNames());
}

TEST_F(KRIssueManagerTest, ADamagedValueCountsAsNone) {
  const std::string whole = [&] {
    KRIssueManager::shareIssueManager().clearUseIssue();
    return preferences_->bytes(kKey);
  }();
  for (const KRValue& value :
       {KRValue(krMake<KRData>("no archive")), KRValue(krMake<KRData>(whole.substr(0, whole.size() / 2))),
        KRValue("text"_kr), KRValue(krMake<KRData>(KRKeyedArchiver::archivedData(KRValue("text"_kr))))}) {
    preferences_->setValue(value, kKey);
    preferences_.reload();
    EXPECT_EQ(used(KRIssueManager::shareIssueManager()), catalogueNames());
    EXPECT_EQ(stored(), catalogueNames());
  }
}

TEST_F(KRIssueManagerTest, SetUseIssuesSortsAndDropsRepeats) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  KRIssueList chosen;
  fill(chosen, manager, {14, 0, 0});
  manager.setUseIssues(&chosen);
  const KRStringList expected = {KRIssueDuplicateNames, KRIssueNoteWithSpacingOnly};
  EXPECT_EQ(used(manager), expected);
  EXPECT_EQ(stored(), expected);
}

TEST_F(KRIssueManagerTest, IssuesMadeOutsideTheCatalogueAreLeftOut) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  const auto stranger = krMake<KRIssue>(KRIssueBlankName, ""_kr);
  KRIssueList chosen;
  chosen.append(stranger);
  manager.setUseIssues(&chosen);
  EXPECT_TRUE(manager.useIssues().isEmpty());
  manager.addUseIssue(stranger.get());
  manager.addUseIssues(&chosen);
  EXPECT_TRUE(manager.useIssues().isEmpty());
  EXPECT_FALSE(manager.isUseIssue(stranger.get()));
}

TEST_F(KRIssueManagerTest, SetUseIssuesTakesNothingAndItsOwnList) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  manager.setUseIssues(&manager.useIssues());
  EXPECT_EQ(used(manager), catalogueNames());
  manager.setUseIssues(nullptr);
  EXPECT_TRUE(manager.useIssues().isEmpty());
  EXPECT_TRUE(stored().empty());
}

TEST_F(KRIssueManagerTest, AddUseIssueOfAUsedOneWritesNothing) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  const int writes = preferences_->writes();
  manager.addUseIssue(manager.supportIssues().at(4));
  manager.addUseIssue(nullptr);
  EXPECT_EQ(used(manager), catalogueNames());
  EXPECT_EQ(preferences_->writes(), writes);
}

TEST_F(KRIssueManagerTest, AddedIssuesComeIntoCatalogueOrderAndAreSaved) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  manager.clearUseIssue();
  EXPECT_TRUE(stored().empty());
  manager.addUseIssue(manager.supportIssues().at(4));
  manager.addUseIssue(manager.supportIssues().at(2));
  EXPECT_EQ(stored(), (KRStringList{KRIssueIncompleteName, KRIssueInvalidCharacters}));
  KRIssueList more;
  fill(more, manager, {4, 3, 3});
  const int writes = preferences_->writes();
  manager.addUseIssues(&more);
  EXPECT_EQ(used(manager), (KRStringList{KRIssueIncompleteName, KRIssueBlankName, KRIssueInvalidCharacters}));
  manager.addUseIssues(&more);
  EXPECT_EQ(preferences_->writes(), writes + 2);
  manager.addUseIssues(nullptr);
  EXPECT_EQ(preferences_->writes(), writes + 2);
}

TEST_F(KRIssueManagerTest, RemoveUseIssuesWritesAlsoWhenNoneWasUsed) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  manager.removeUseIssue(manager.supportIssues().at(0));
  KRIssueList removed;
  fill(removed, manager, {0});
  const int writes = preferences_->writes();
  manager.removeUseIssues(&removed);
  EXPECT_EQ(preferences_->writes(), writes + 1);
  EXPECT_EQ(manager.useIssues().count(), 14U);
  manager.removeUseIssues(nullptr);
  EXPECT_EQ(preferences_->writes(), writes + 1);
}

TEST_F(KRIssueManagerTest, RemoveUseIssueWritesOnlyWhenItWasUsed) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  const int writes = preferences_->writes();
  manager.removeUseIssue(manager.supportIssues().at(0));
  EXPECT_EQ(preferences_->writes(), writes + 1);
  EXPECT_EQ(stored().front(), KRIssueDuplicateInfo);
  manager.removeUseIssue(manager.supportIssues().at(0));
  manager.removeUseIssue(nullptr);
  EXPECT_EQ(preferences_->writes(), writes + 1);
}

TEST_F(KRIssueManagerTest, FindsIssuesByTheirValueOnly) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  EXPECT_EQ(manager.supportIssueByName("Duplicate Info"), manager.supportIssues().at(1));
  EXPECT_EQ(manager.supportIssueByName("KRIssueDuplicateInfo"), nullptr);
  EXPECT_EQ(manager.supportIssueByName("duplicate info"), nullptr);
  EXPECT_EQ(manager.supportIssueByName(nullptr), nullptr);
}

TEST_F(KRIssueManagerTest, NamesOfNoneAndAnEmptyListOfNamesChangeNothing) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  EXPECT_TRUE(KRIssueManager::issueNamesByIssues(nullptr).empty());
  manager.initCurIssuesWithNames({});
  EXPECT_EQ(used(manager), catalogueNames());
}

TEST_F(KRIssueManagerTest, TheArchiveHoldsTheNamesUnderTheirKey) {
  const auto manager = KRIssueManager::init();
  const std::string archive = KRKeyedArchiver::archivedData(KRValue(manager));
  for (const char* text : {"KR_ISSUE_ABLE_LSIT", "KRIssueManager", "KRIssueHasCompanyNameNoTitle", "NSKeyedArchiver"}) {
    EXPECT_NE(archive.find(text), std::string::npos) << text;
  }
}

TEST_F(KRIssueManagerTest, ThreadsThatRaceForTheFirstUseGetTheSameManager) {
  std::vector<std::thread> threads;
  std::vector<KRIssueManager*> seen(8);
  for (auto& each : seen) threads.emplace_back([&each] { each = &KRIssueManager::shareIssueManager(); });
  for (auto& thread : threads) thread.join();
  for (const auto* each : seen) EXPECT_EQ(each, seen[0]);
  EXPECT_EQ(preferences_->writes(), 1);
}

TEST_F(KRIssueManagerTest, WhatAnotherProcessChoosesStays) {
  KRIssueManager& theirs = KRIssueManager::shareIssueManager();
  preferences_.reload();
  KRIssueManager& ours = KRIssueManager::shareIssueManager();
  theirs.removeUseIssue(theirs.supportIssues().at(0));
  ours.removeUseIssue(ours.supportIssues().at(2));
  KRStringList expected = catalogueNames();
  expected.erase(expected.begin() + 2);
  expected.erase(expected.begin());
  EXPECT_EQ(stored(), expected);
  ours.addUseIssue(ours.supportIssues().at(2));
  expected.insert(expected.begin() + 1, KRIssueIncompleteName);
  EXPECT_EQ(stored(), expected);
}

TEST_F(KRIssueManagerTest, AWholeChoiceReplacesThatOfAnotherProcess) {
  KRIssueManager& theirs = KRIssueManager::shareIssueManager();
  preferences_.reload();
  KRIssueManager& ours = KRIssueManager::shareIssueManager();
  KRIssueList chosen;
  fill(chosen, ours, {1, 3});
  for (size_t i = 0; i < 2; ++i) {
    theirs.removeUseIssue(theirs.supportIssues().at(i));
    ours.setUseIssues(&chosen);
    EXPECT_EQ(stored(), (KRStringList{KRIssueDuplicateInfo, KRIssueBlankName}));
  }
  theirs.removeUseIssue(theirs.supportIssues().at(3));
  ours.clearUseIssue();
  EXPECT_TRUE(stored().empty());
}

}  // namespace
