#include "platform/KRPreferences.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/KRFilePreferences.h"
#include "platform/KRPreferencesOverlay.h"

namespace {

TEST(KRPreferences, AreTheHostsFileUnlessAnotherStoreIsSet) {
  KRPreferences::setStandard(nullptr);
  const auto standard = KRPreferences::standard();
  const auto* file = dynamic_cast<KRFilePreferences*>(standard.get());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->path(), KRFilePreferences::pathForHost());
  EXPECT_EQ(KRPreferences::standard(), standard);

  const auto overlay = krMake<KRPreferencesOverlay>(standard);
  KRPreferences::setStandard(overlay);
  EXPECT_EQ(KRPreferences::standard(), overlay);
  KRPreferences::standard()->setValue("1"_kr, "KRPreferencesTest");
  EXPECT_TRUE(standard->value("KRPreferencesTest").isNothing());
  EXPECT_TRUE(overlay->commit());
  EXPECT_EQ(standard->value("KRPreferencesTest").text(), "1"_kr);

  KRPreferences::setStandard(nullptr);
  EXPECT_NE(KRPreferences::standard(), overlay);
  EXPECT_EQ(KRPreferences::standard()->value("KRPreferencesTest").text(), "1"_kr);
  KRPreferences::standard()->remove("KRPreferencesTest");
}

TEST(KRPreferences, CanBeReplacedWhileOtherThreadsAsk) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 3; ++thread) {
    threads.emplace_back([] {
      for (int i = 0; i < 200; ++i) EXPECT_TRUE(KRPreferences::standard()->value("KRPreferencesTest").isNothing());
    });
  }
  for (int i = 0; i < 200; ++i) KRPreferences::setStandard(krMake<KRPreferencesOverlay>(nullptr));
  for (std::thread& thread : threads) thread.join();
  KRPreferences::setStandard(nullptr);
}

}  // namespace
