#include "detectors/KRLikelyEqual.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "platform/KRHash.h"

namespace {

uint64_t hashOf(uint64_t value) {
  return krHashMix(krHashSeed(), value);
}

std::vector<uint32_t> likelyEqual(const std::vector<uint64_t>& values) {
  KRLikelyEqual likely(values.size());
  for (uint32_t place = 0; place < values.size(); ++place) likely.add(place, hashOf(values[place]));
  return likely.places();
}

TEST(KRLikelyEqual, NamesNobodyWhereAllDiffer) {
  EXPECT_EQ(likelyEqual({}), std::vector<uint32_t>());
  EXPECT_EQ(likelyEqual({7}), std::vector<uint32_t>());
  EXPECT_EQ(likelyEqual({1, 2, 3}), std::vector<uint32_t>());
}

TEST(KRLikelyEqual, NamesAllOfEachKindInOrder) {
  EXPECT_EQ(likelyEqual({5, 1, 5, 2, 1, 5}), (std::vector<uint32_t>{0, 1, 2, 4, 5}));
}

TEST(KRLikelyEqual, MissesNoneWhereverTheyStand) {
  std::mt19937 random(3);
  // Places are taken some dozens at a time: around the borders nothing may differ.
  for (const size_t count : {63U, 64U, 65U, 128U, 129U, 1000U}) {
    std::vector<uint64_t> values(count);
    for (uint64_t& value : values) value = random() % count;
    std::map<uint64_t, int> times;
    for (const uint64_t value : values) ++times[value];
    std::vector<uint32_t> expected;
    for (uint32_t place = 0; place < count; ++place) {
      if (times[values[place]] > 1) expected.push_back(place);
    }
    EXPECT_EQ(likelyEqual(values), expected) << count;
  }
}

TEST(KRLikelyEqual, PlacesMayBeLeftOut) {
  KRLikelyEqual likely(10);
  likely.add(3, hashOf(1));
  likely.add(8, hashOf(1));
  EXPECT_EQ(likely.places(), (std::vector<uint32_t>{3, 8}));
}

}  // namespace
