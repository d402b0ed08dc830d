#include "issues/KRNameConstraintManager.h"

#include <gtest/gtest.h>

#include "platform/KRFilePreferences.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRLanguage.h"
#include "platform/KRValue.h"
#include "tests/support/KRPrivatePreferences.h"
#include "tests/support/KRProcesses.h"
#include "tests/support/KRTestFolder.h"

namespace {

constexpr KRString kKey = "KR_NAME_CONSTRAIN_MANAGER_KEY"_kr;

/// The words of a text.
KRStringList words(const std::string& text) {
  KRStringList list;
  for (size_t from = 0; from < text.size();) {
    const size_t end = std::min(text.find(' ', from), text.size());
    list.emplace_back(text.substr(from, end - from));
    from = end + 1;
  }
  return list;
}

const KRStringList kEnglishPrefixes = words(
    "1LT 1ST 2LT 2ND 3RD Adm Admiral Cardinal Capt Captain CDR Chief Col Colonel Count Cpt Doctor Dr Gen General LCDR "
    "Lord Lt LTC LTG LTJG Maj Major MG Mr Mrs Ms Pastor Prof Professor Rep Reverend Sen Senator Sir");
const KRStringList kEnglishSuffixes =
    words("2nd 3rd 4th 5th 6th BA DDS ESQ I II III IV IX Jr Junior MA MD MS PhD Sr V VI VII VIII X");
const KRStringList kFrenchPrefixes = words("1er 1re 2d 2de 2e 3e M. Mme Mlle Dr Pr Me Mgr no");
const KRStringList kFrenchSuffixes = words("etc. h s km min al I II III IV IX V VI VII VIII X");

class KRNameConstraintManagerTest : public testing::Test {
 protected:
  KRNameConstraintManagerTest() { speak("en"_kr); }
  ~KRNameConstraintManagerTest() override { speak(language_); }

  /// Another language, seen as by a new process.
  static void speak(const KRString& language) {
    KRLanguage::set(language);
    KRNameConstraintManager::forgetLanguage();
  }

  /// The manager that the preferences hold now.
  KRRef<KRNameConstraintManager> stored() { return KRNameConstraintManager::unarchive(preferences_->bytes(kKey)); }

  const KRString language_ = KRLanguage::current();
  KRPrivatePreferences preferences_;
};

TEST_F(KRNameConstraintManagerTest, BeginsWithTheDefaultsAndSavesThemAtOnce) {
  KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
  EXPECT_EQ(manager.prefixItemArray().size(), 40U);
  EXPECT_EQ(manager.suffixItemArray().size(), 25U);
  EXPECT_EQ(manager.prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(manager.suffixItemArray(), kEnglishSuffixes);
  EXPECT_EQ(preferences_->writes(), 1);
  EXPECT_EQ(preferences_->flushes(), 0);
  ASSERT_TRUE(stored());
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(stored()->suffixItemArray(), kEnglishSuffixes);
}

TEST_F(KRNameConstraintManagerTest, BeginsWithTheFrenchDefaultsInFrench) {
  speak("fr"_kr);
  EXPECT_TRUE(KRNameConstraintManager::isFrenchLanguage());
  const auto manager = KRNameConstraintManager::init();
  EXPECT_EQ(manager->prefixItemArray().size(), 14U);
  EXPECT_EQ(manager->suffixItemArray().size(), 16U);
  EXPECT_EQ(manager->prefixItemArray(), kFrenchPrefixes);
  EXPECT_EQ(manager->suffixItemArray(), kFrenchSuffixes);
}

TEST_F(KRNameConstraintManagerTest, AChangeOfLanguageIsNotSeenInTheSameRun) {
  EXPECT_FALSE(KRNameConstraintManager::isFrenchLanguage());
  KRLanguage::set("fr"_kr);
  EXPECT_FALSE(KRNameConstraintManager::isFrenchLanguage());
  KRNameConstraintManager::forgetLanguage();
  EXPECT_TRUE(KRNameConstraintManager::isFrenchLanguage());
}

TEST_F(KRNameConstraintManagerTest, AppendingTheDefaultsNeitherEmptiesNorSaves) {
  const auto manager = KRNameConstraintManager::init();
  const int writes = preferences_->writes();
  manager->setDefaultPrefixValue();
  manager->setDefaultSuffixValue();
  KRStringList twice = kEnglishPrefixes;
  twice.insert(twice.end(), kEnglishPrefixes.begin(), kEnglishPrefixes.end());
  EXPECT_EQ(manager->prefixItemArray(), twice);
  EXPECT_EQ(manager->suffixItemArray().size(), 50U);
  EXPECT_EQ(preferences_->writes(), writes);
}

TEST_F(KRNameConstraintManagerTest, SettingAListReplacesItsContentAndSaves) {
  const auto manager = KRNameConstraintManager::init();
  const KRStringList* list = &manager->prefixItemArray();
  const KRStringList items = {"Dame"_kr, "Dame"_kr, "Abbé"_kr};
  manager->setPrefixItemArray(&items);
  EXPECT_EQ(manager->prefixItemArray(), items);
  EXPECT_EQ(&manager->prefixItemArray(), list);
  EXPECT_EQ(stored()->prefixItemArray(), items);
  manager->setSuffixItemArray(&items);
  EXPECT_EQ(stored()->suffixItemArray(), items);
  EXPECT_EQ(preferences_->writes(), 3);
}

TEST_F(KRNameConstraintManagerTest, SettingNothingEmptiesTheListAndSaves) {
  const auto manager = KRNameConstraintManager::init();
  manager->setPrefixItemArray(nullptr);
  EXPECT_TRUE(manager->prefixItemArray().empty());
  EXPECT_TRUE(stored()->prefixItemArray().empty());
  EXPECT_EQ(stored()->suffixItemArray(), kEnglishSuffixes);
  manager->setSuffixItemArray(nullptr);
  EXPECT_TRUE(stored()->suffixItemArray().empty());
}

TEST_F(KRNameConstraintManagerTest, AListMayBeSetToItself) {
  const auto manager = KRNameConstraintManager::init();
  manager->prefixItemArray().push_back("Dame"_kr);
  manager->setPrefixItemArray(&manager->prefixItemArray());
  EXPECT_EQ(manager->prefixItemArray().size(), 41U);
  EXPECT_EQ(stored()->prefixItemArray().back(), "Dame");
}

TEST_F(KRNameConstraintManagerTest, ResetsOneListOrBothAndSavesOnce) {
  const auto manager = KRNameConstraintManager::init();
  const KRStringList items = {"Dame"_kr};
  const auto change = [&] {
    manager->setPrefixItemArray(&items);
    manager->setSuffixItemArray(&items);
    return preferences_->writes();
  };
  int writes = change();
  manager->resetPrefixItemArray();
  EXPECT_EQ(preferences_->writes(), writes + 1);
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(stored()->suffixItemArray(), items);
  writes = change();
  manager->resetSuffixItemArray();
  EXPECT_EQ(preferences_->writes(), writes + 1);
  EXPECT_EQ(stored()->prefixItemArray(), items);
  EXPECT_EQ(stored()->suffixItemArray(), kEnglishSuffixes);
  writes = change();
  manager->resetAll();
  EXPECT_EQ(preferences_->writes(), writes + 1);
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(stored()->suffixItemArray(), kEnglishSuffixes);
}

TEST_F(KRNameConstraintManagerTest, TheListsAreThereAgainInTheNextRun) {
  const KRStringList items = {"Dame"_kr};
  KRNameConstraintManager::ShareNameConstrainManager().setSuffixItemArray(&items);
  const int writes = preferences_->writes();
  preferences_.reload();
  KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
  EXPECT_EQ(manager.prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(manager.suffixItemArray(), items);
  EXPECT_EQ(preferences_->writes(), writes);
}

TEST_F(KRNameConstraintManagerTest, AListThatTheArchiveLacksIsEmpty) {
  class Archived : public KRObject {
   public:
    KRText archiveClassName() const override { return "KRNameConstraintManager"; }
    void encodeWithCoder(KRKeyedArchiver& coder) const override {
      coder.encode(KRValueList::ofTexts({"Dame"_kr}), "KR_PREFIX_CONSTRAIN_KEY");
    }
  };
  const auto manager = KRNameConstraintManager::unarchive(KRKeyedArchiver::archivedData(KRValue(krMake<Archived>())));
  ASSERT_TRUE(manager);
  EXPECT_EQ(manager->prefixItemArray(), KRStringList{"Dame"_kr});
  EXPECT_TRUE(manager->suffixItemArray().empty());
}

TEST_F(KRNameConstraintManagerTest, ADamagedValueCountsAsNone) {
  preferences_->setValue(krMake<KRData>("no archive"), kKey);
  preferences_.reload();
  EXPECT_EQ(KRNameConstraintManager::ShareNameConstrainManager().prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
}

/// A process of its own: the lists as they are stored, in the manager that `Other` puts aside and brings back.
class Other {
 public:
  Other() { KRNameConstraintManager::reloadShared(); }
  KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();

  void add(const KRString& prefix, const KRString& suffix) const {
    KRStringList prefixes = manager.prefixItemArray();
    prefixes.push_back(prefix);
    manager.setPrefixItemArray(&prefixes);
    KRStringList suffixes = manager.suffixItemArray();
    suffixes.push_back(suffix);
    manager.setSuffixItemArray(&suffixes);
  }
};

KRStringList with(KRStringList list, const KRStringList& more) {
  list.insert(list.end(), more.begin(), more.end());
  return list;
}

TEST_F(KRNameConstraintManagerTest, WhatAnotherProcessAddsStays) {
  const Other ours;
  const Other theirs;
  theirs.add("Rabbi"_kr, "OBE"_kr);
  ours.add("Dean"_kr, "KC"_kr);
  theirs.add("Abbot"_kr, "CH"_kr);
  EXPECT_EQ(stored()->prefixItemArray(), with(kEnglishPrefixes, {"Rabbi"_kr, "Dean"_kr, "Abbot"_kr}));
  EXPECT_EQ(stored()->suffixItemArray(), with(kEnglishSuffixes, {"OBE"_kr, "KC"_kr, "CH"_kr}));
}

TEST_F(KRNameConstraintManagerTest, WhatIsTakenAwayGoesAndNothingElse) {
  const Other ours;
  const Other theirs;
  ours.add("Dean"_kr, "KC"_kr);
  theirs.add("Rabbi"_kr, "OBE"_kr);
  KRStringList prefixes = kEnglishPrefixes;
  prefixes.erase(prefixes.begin());
  ours.manager.setPrefixItemArray(&prefixes);
  KRStringList expected = with(prefixes, {"Rabbi"_kr});
  EXPECT_EQ(stored()->prefixItemArray(), expected);
  EXPECT_EQ(stored()->suffixItemArray(), with(kEnglishSuffixes, {"KC"_kr, "OBE"_kr}));
}

TEST_F(KRNameConstraintManagerTest, AResetReplacesItsListAndNoOther) {
  const Other ours;
  const Other theirs;
  theirs.add("Rabbi"_kr, "OBE"_kr);
  ours.manager.resetPrefixItemArray();
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
  EXPECT_EQ(stored()->suffixItemArray(), with(kEnglishSuffixes, {"OBE"_kr}));
  ours.manager.resetAll();
  EXPECT_EQ(stored()->suffixItemArray(), kEnglishSuffixes);
}

TEST_F(KRNameConstraintManagerTest, AManagerOfItsOwnReplacesAll) {
  const Other theirs;
  theirs.add("Rabbi"_kr, "OBE"_kr);
  const auto own = KRNameConstraintManager::init();
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
  theirs.add("Abbot"_kr, "CH"_kr);
  own->setSuffixItemArray(nullptr);
  EXPECT_EQ(stored()->prefixItemArray(), kEnglishPrefixes);
  EXPECT_TRUE(stored()->suffixItemArray().empty());
}

TEST_F(KRNameConstraintManagerTest, ManyProcessesThatBeginAtOnceLoseNothing) {
  constexpr int kProcesses = 6;
  constexpr int kEach = 5;
  const KRTestFolder folder;
  const KRString path(folder.at("settings.plist"));
  krRunInProcesses(kProcesses, [&](int number) {
    KRPreferences::setStandard(krMake<KRFilePreferences>(path));
    const Other mine;
    for (int i = 0; i < kEach; ++i) {
      const std::string name = std::to_string(number) + "." + std::to_string(i);
      mine.add(KRString("P" + name), KRString("S" + name));
    }
    return static_cast<bool>(KRPreferences::standard()->flush());
  });
  const KRValue value = krMake<KRFilePreferences>(path)->value(kKey);
  ASSERT_NE(value.as<KRData>(), nullptr);
  const auto all = KRNameConstraintManager::unarchive(value.as<KRData>()->bytes());
  ASSERT_TRUE(all);
  EXPECT_EQ(all->prefixItemArray().size(), kEnglishPrefixes.size() + size_t{kProcesses} * kEach);
  EXPECT_EQ(all->suffixItemArray().size(), kEnglishSuffixes.size() + size_t{kProcesses} * kEach);
}

}  // namespace
