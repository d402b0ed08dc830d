#include "platform/KRHashIndex.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

#include "platform/KRHash.h"

namespace {

TEST(KRHashIndex, FindsNothingWhereNothingWasAdded) {
  KRHashIndex index;
  const auto never = [](uint32_t) { return ADD_FAILURE() << "nothing to compare with", true; };
  EXPECT_EQ(index.find(5, never), KRHashIndex::kNone);
  EXPECT_EQ(index.likely(5), KRHashIndex::kNone);
  index.prefetch(5);
  index.reserve(1000);
  EXPECT_EQ(index.find(5, never), KRHashIndex::kNone);
  index.prefetch(5);
}

TEST(KRHashIndex, TellsNumbersOfOneHashApartByComparing) {
  KRHashIndex index;
  for (uint32_t number = 0; number < 500; ++number) index.add(7, number);
  for (uint32_t number = 0; number < 500; ++number) {
    EXPECT_EQ(index.find(7, [&](uint32_t each) { return each == number; }), number);
  }
  EXPECT_EQ(index.find(7, [](uint32_t) { return false; }), KRHashIndex::kNone);
  EXPECT_EQ(index.likely(7), 0U);
}

TEST(KRHashIndex, KeepsTheSmallestAndTheLargestNumber) {
  KRHashIndex index;
  index.add(1, 0);
  index.add(2, KRHashIndex::kNone - 1);
  EXPECT_EQ(index.likely(uint64_t{1}), 0U);
  EXPECT_EQ(index.find(2, [](uint32_t each) { return each == KRHashIndex::kNone - 1; }), KRHashIndex::kNone - 1);
}

void expectToAgreeWithAMap(KRHashIndex::Fill fill) {
  std::mt19937_64 random(3);
  for (const size_t reserved : {size_t{0}, size_t{10}, size_t{5000}}) {
    KRHashIndex index(fill);
    index.reserve(reserved);
    std::map<uint64_t, uint32_t> expected;
    std::vector<uint64_t> values;
    for (int i = 0; i < 4000; ++i) {
      const uint64_t value = random() % 3000;
      const uint32_t found = index.find(krHashMix(1, value), [&](uint32_t each) { return values[each] == value; });
      const auto known = expected.find(value);
      ASSERT_EQ(found, known == expected.end() ? KRHashIndex::kNone : known->second);
      if (found != KRHashIndex::kNone) continue;
      index.add(krHashMix(1, value), static_cast<uint32_t>(values.size()));
      expected.emplace(value, static_cast<uint32_t>(values.size()));
      values.push_back(value);
    }
  }
}

TEST(KRHashIndex, AgreesWithAMapWhetherRoomWasMadeOrNot) {
  expectToAgreeWithAMap(KRHashIndex::Fill::Half);
  expectToAgreeWithAMap(KRHashIndex::Fill::ThreeQuarters);
}

TEST(KRHashIndex, MovesAndCanBeUsedAnew) {
  KRHashIndex index;
  index.add(9, 4);
  KRHashIndex moved(std::move(index));
  EXPECT_EQ(moved.likely(9), 4U);
  moved = {};
  EXPECT_EQ(moved.likely(9), KRHashIndex::kNone);
  moved.add(9, 5);
  EXPECT_EQ(moved.likely(9), 5U);
}

}  // namespace
