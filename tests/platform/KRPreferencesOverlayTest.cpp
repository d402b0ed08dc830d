#include "platform/KRPreferencesOverlay.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/KRFilePreferences.h"
#include "tests/support/KRTestFolder.h"

namespace {

TEST(KRPreferencesOverlay, AnswersWhatIsUnderItExceptForItsChanges) {
  const auto under = krMake<KRPreferencesOverlay>(nullptr);
  under->setValue("1"_kr, "a");
  under->setValue("2"_kr, "b");
  under->setValue("3"_kr, "c");
  const auto overlay = krMake<KRPreferencesOverlay>(under);
  EXPECT_FALSE(overlay->hasChanges());
  overlay->setValue("new"_kr, "a");
  overlay->remove("b");
  overlay->setValue(KRValue(), "c");
  EXPECT_TRUE(overlay->hasChanges());
  EXPECT_EQ(overlay->value("a").text(), "new"_kr);
  EXPECT_TRUE(overlay->value("b").isNothing());
  EXPECT_TRUE(overlay->value("c").isNothing());
  EXPECT_TRUE(overlay->flush());
  EXPECT_EQ(under->value("a").text(), "1"_kr);
  EXPECT_EQ(under->value("b").text(), "2"_kr);
  under->setValue("later"_kr, "d");
  EXPECT_EQ(overlay->value("d").text(), "later"_kr);
}

TEST(KRPreferencesOverlay, CommitsOrForgetsItsChanges) {
  const auto under = krMake<KRPreferencesOverlay>(nullptr);
  under->setValue("1"_kr, "a");
  const auto overlay = krMake<KRPreferencesOverlay>(under);
  overlay->setValue("x"_kr, "b");
  overlay->remove("a");
  overlay->forget();
  EXPECT_FALSE(overlay->hasChanges());
  EXPECT_EQ(overlay->value("a").text(), "1"_kr);
  EXPECT_TRUE(overlay->value("b").isNothing());

  overlay->setValue("y"_kr, "b");
  overlay->remove("a");
  EXPECT_TRUE(overlay->commit());
  EXPECT_FALSE(overlay->hasChanges());
  EXPECT_EQ(under->value("b").text(), "y"_kr);
  EXPECT_TRUE(under->value("a").isNothing());
}

TEST(KRPreferencesOverlay, WritesNothingUntilItIsCommitted) {
  const KRTestFolder folder;
  const auto file = krMake<KRFilePreferences>(KRString(folder.at("settings.plist")));
  file->setValue("1"_kr, "a");
  const std::string before = folder.content("settings.plist");
  const auto overlay = krMake<KRPreferencesOverlay>(file);
  overlay->setValue("2"_kr, "a");
  overlay->remove("a");
  overlay->setValue("3"_kr, "a");
  EXPECT_TRUE(overlay->flush());
  EXPECT_EQ(folder.content("settings.plist"), before);
  EXPECT_TRUE(overlay->commit());
  EXPECT_EQ(file->value("a").text(), "3"_kr);
}

TEST(KRPreferencesOverlay, TellsWhenWhatItCommitsIsNotOnDisk) {
  const auto overlay = krMake<KRPreferencesOverlay>(krMake<KRFilePreferences>(KRString()));
  overlay->setValue("1"_kr, "a");
  const auto failed = overlay->commit();
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(overlay->value("a").text(), "1"_kr);
}

TEST(KRPreferencesOverlay, KeepsItsChangesWhenThereIsNothingUnderIt) {
  const auto overlay = krMake<KRPreferencesOverlay>(nullptr);
  overlay->setValue("1"_kr, "a");
  EXPECT_TRUE(overlay->commit());
  EXPECT_EQ(overlay->value("a").text(), "1"_kr);
}

TEST(KRPreferencesOverlay, CommitsAnUpdateOfWhatIsThereByThen) {
  const auto adding = [](const char* text) {
    return [text](const KRValue& now) { return KRValue(krConcat({now.text(), text})); };
  };
  const auto under = krMake<KRPreferencesOverlay>(nullptr);
  under->setValue("a"_kr, "text");
  const auto overlay = krMake<KRPreferencesOverlay>(under);
  overlay->update("text", adding("b"));
  overlay->update("text", adding("c"));
  EXPECT_EQ(overlay->value("text").text(), "abc"_kr);
  EXPECT_EQ(under->value("text").text(), "a"_kr);
  under->setValue("theirs "_kr, "text");
  EXPECT_EQ(overlay->value("text").text(), "theirs bc"_kr);
  EXPECT_TRUE(overlay->commit());
  EXPECT_EQ(under->value("text").text(), "theirs bc"_kr);
}

TEST(KRPreferencesOverlay, AChangeThatChangesNothingIsNone) {
  const auto under = krMake<KRPreferencesOverlay>(krMake<KRFilePreferences>(KRString()));
  under->setValue("1"_kr, "a");
  const auto overlay = krMake<KRPreferencesOverlay>(under);
  overlay->setValue("1"_kr, "a");
  overlay->remove("b");
  overlay->update("a", [](const KRValue& now) { return now; });
  EXPECT_FALSE(overlay->hasChanges());
  overlay->setValue("2"_kr, "a");
  EXPECT_TRUE(overlay->hasChanges());
  overlay->setValue("1"_kr, "a");
  EXPECT_FALSE(overlay->hasChanges());
}

TEST(KRPreferencesOverlay, CopiesListsAndIgnoresWhatCannotBeStored) {
  const auto overlay = krMake<KRPreferencesOverlay>(nullptr);
  const auto list = krMake<KRValueList>();
  overlay->setValue(list, "a");
  list->values().push_back("late"_kr);
  EXPECT_EQ(overlay->value("a").description(), "()");
  overlay->value("a").as<KRValueList>()->values().push_back("late"_kr);
  EXPECT_EQ(overlay->value("a").description(), "()");
  overlay->setValue(*KRDate::make(std::nullopt, 1, 1), "a");
  EXPECT_EQ(overlay->value("a").description(), "()");
  overlay->setValue("x"_kr, nullptr);
  EXPECT_TRUE(overlay->value(nullptr).isNothing());
}

TEST(KRPreferencesOverlay, IsSafeForManyThreads) {
  const auto overlay = krMake<KRPreferencesOverlay>(krMake<KRPreferencesOverlay>(nullptr));
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      const KRString key(std::to_string(thread));
      for (int i = 0; i < 200; ++i) {
        overlay->setValue(KRValue::whole(i), key);
        EXPECT_TRUE(overlay->value(key).isEqual(KRValue::whole(i)));
        if (i % 50 == 0) {
          EXPECT_TRUE(overlay->commit());
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(overlay->value("3").isEqual(KRValue::whole(199)));
}

}  // namespace
