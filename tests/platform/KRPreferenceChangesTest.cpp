#include "platform/KRPreferenceChanges.h"

#include <gtest/gtest.h>

namespace {

KRPreferences::Change adding(const KRString& text) {
  return [text](const KRValue& now) {
    const auto list = krMake<KRValueList>();
    if (const auto* texts = now.as<KRValueList>()) list->values() = texts->values();
    list->values().emplace_back(text);
    return KRValue(list);
  };
}

TEST(KRPreferenceChanges, AreMadeOneAfterTheOtherOfWhatIsThere) {
  KRPreferenceChanges changes;
  changes.update("list", adding("a"_kr));
  changes.update("list", adding("b"_kr));
  ASSERT_NE(changes.find("list"), nullptr);
  EXPECT_FALSE(changes.find("list")->isWhole);
  EXPECT_EQ(changes.find("list")->appliedTo(KRValue()).description(), "(a, b)");
  EXPECT_EQ(changes.find("list")->appliedTo(KRValueList::ofTexts({"x"_kr})).description(), "(x, a, b)");
}

TEST(KRPreferenceChanges, AWholeValueMakesThoseBeforeItVoid) {
  KRPreferenceChanges changes;
  changes.update("list", adding("a"_kr));
  changes.set("list", KRValueList::ofTexts({"b"_kr}));
  changes.update("list", adding("c"_kr));
  EXPECT_TRUE(changes.find("list")->isWhole);
  EXPECT_EQ(changes.find("list")->appliedTo("x"_kr).description(), "(b, c)");
  changes.set("list", KRValue());
  EXPECT_TRUE(changes.find("list")->appliedTo("x"_kr).isNothing());
}

TEST(KRPreferenceChanges, KeepTheOrderInWhichTheirKeysWereFirstChanged) {
  KRPreferenceChanges changes;
  EXPECT_TRUE(changes.isEmpty());
  changes.set("b", "1"_kr);
  changes.set("a", "2"_kr);
  changes.set("b", "3"_kr);
  ASSERT_EQ(changes.entries().size(), 2U);
  EXPECT_EQ(changes.entries()[0].key, "b"_kr);
  EXPECT_EQ(changes.entries()[0].appliedTo(KRValue()).text(), "3"_kr);
  EXPECT_EQ(changes.entries()[1].key, "a"_kr);
  changes.clear();
  EXPECT_TRUE(changes.isEmpty());
}

TEST(KRPreferenceChanges, LeaveOutWhatCannotStandInAPropertyList) {
  KRPreferenceChanges changes;
  changes.set("a", *KRDate::make(std::nullopt, 3, 2));
  changes.set(nullptr, "1"_kr);
  changes.update(nullptr, adding("a"_kr));
  EXPECT_TRUE(changes.isEmpty());
  changes.update("a", [](const KRValue&) { return KRValue(*KRDate::make(std::nullopt, 3, 2)); });
  EXPECT_EQ(changes.find("a")->appliedTo("kept"_kr).text(), "kept"_kr);
}

TEST(KRPreferenceChanges, ShareNoListWithWhoGaveThem) {
  KRPreferenceChanges changes;
  const auto list = krMake<KRValueList>();
  changes.set("a", list);
  changes.update("b", [list](const KRValue&) { return KRValue(list); });
  list->values().emplace_back("late"_kr);
  EXPECT_EQ(changes.find("a")->appliedTo(KRValue()).description(), "()");
  changes.find("b")->appliedTo(KRValue()).as<KRValueList>()->values().clear();
  EXPECT_EQ(list->values().size(), 1U);
}

}  // namespace
