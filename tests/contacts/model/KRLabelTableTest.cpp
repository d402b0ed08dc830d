#include "contacts/model/KRLabelTable.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

TEST(KRLabelTable, NumbersEachNameOnce) {
  const uint16_t number = KRLabelTable::number("beach house");
  EXPECT_NE(number, 0);
  EXPECT_EQ(KRLabelTable::number(KRText(std::string_view("beach house"))), number);
  EXPECT_EQ(KRLabelTable::name(number), KRText("beach house"));
  EXPECT_EQ(KRLabelTable::label(number).get(), KRLabelTable::label(number).get());
  EXPECT_EQ(KRLabelTable::label(number)->name(), "beach house");
  EXPECT_EQ(KRLabelTable::label(number)->displayName(), "beach house");
}

TEST(KRLabelTable, GivesNoNumberToNothingOrALongName) {
  EXPECT_EQ(KRLabelTable::number(KRText()), 0);
  EXPECT_EQ(KRLabelTable::number(KRText(std::string_view(std::string(KRLabelTable::kLongestName + 1, 'x')))), 0);
  EXPECT_TRUE(KRLabelTable::name(0).isNothing());
  EXPECT_TRUE(KRLabelTable::name(KRLabelTable::kCapacity).isNothing());
  EXPECT_TRUE(KRLabelTable::label(0) == nullptr);
}

TEST(KRLabelTable, AgreesBetweenThreads) {
  std::vector<std::vector<uint16_t>> numbers(4);
  std::vector<std::thread> threads;
  for (auto& each : numbers) {
    threads.emplace_back([&each] {
      for (int i = 0; i < 500; ++i) {
        const std::string name = "thread label " + std::to_string(i);
        each.push_back(KRLabelTable::number(KRText(std::string_view(name))));
        EXPECT_EQ(KRLabelTable::name(each.back()), KRText(std::string_view(name)));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& each : numbers) EXPECT_EQ(each, numbers[0]);
}

}  // namespace
