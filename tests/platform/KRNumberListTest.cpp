#include "platform/KRNumberList.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

TEST(KRNumberList, KeepsItsNumbersWhileItGrowsLarge) {
  constexpr uint32_t kCount = 5000000;
  KRNumberList list;
  for (uint32_t i = 0; i < kCount; ++i) list.append(i * 7);
  ASSERT_EQ(list.count(), kCount);
  uint32_t wrong = 0;
  for (uint32_t i = 0; i < kCount; ++i) wrong += list[i] != i * 7 ? 1 : 0;
  EXPECT_EQ(wrong, 0U);
}

TEST(KRNumberList, ChangesAndRemovesNumbers) {
  KRNumberList list;
  EXPECT_TRUE(list.all().empty());
  for (const uint32_t number : {1U, 2U, 3U}) list.append(number);
  list.set(0, 9);
  list.removeLast();
  EXPECT_EQ(std::vector<uint32_t>(list.all().begin(), list.all().end()), (std::vector<uint32_t>{9, 2}));
  const KRNumberList moved = std::move(list);
  EXPECT_EQ(moved.count(), 2U);
}

}  // namespace
