#include "detectors/KRSeenValues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "contacts/model/KRStoredReading.h"
#include "tests/contacts/ModelSamples.h"

namespace {

constexpr size_t kNew = KRSeenValues<KRText>::kNew;

TEST(KRSeenValues, TellsThePlaceOfTheFirstEqualValue) {
  KRSeenValues<KRText> seen;
  EXPECT_EQ(seen.placeOrAdd("a"), kNew);
  EXPECT_EQ(seen.placeOrAdd("b"), kNew);
  EXPECT_EQ(seen.placeOrAdd("a"), 0U);
  EXPECT_EQ(seen.placeOrAdd("B"), kNew);
  EXPECT_EQ(seen.placeOrAdd("b"), 1U);
  EXPECT_EQ(seen.placeOrAdd("B"), 2U);
}

TEST(KRSeenValues, ForgetsAll) {
  KRSeenValues<KRText> seen;
  std::vector<std::string> texts;
  for (int i = 0; i < 30; ++i) texts.push_back(std::to_string(i));
  for (const size_t count : {size_t{3}, size_t{30}, size_t{9}, size_t{8}, size_t{30}}) {
    seen.empty();
    for (size_t i = 0; i < count; ++i) EXPECT_EQ(seen.placeOrAdd(KRText(std::string_view(texts[i]))), kNew) << count;
  }
}

TEST(KRSeenValues, AgreesWithLookingThroughAllAtAnyNumber) {
  std::mt19937 random(2);
  KRSeenValues<KRText> seen;
  for (int round = 0; round < 200; ++round) {
    seen.empty();
    std::vector<std::string> all;
    std::vector<std::string> different;
    for (auto i = random() % 60; i > 0; --i) all.push_back(std::to_string(random() % 40));
    for (const std::string& text : all) {
      const auto found = std::find(different.begin(), different.end(), text);
      const size_t place = found == different.end() ? kNew : static_cast<size_t>(found - different.begin());
      EXPECT_EQ(seen.placeOrAdd(KRText(std::string_view(text))), place);
      if (place == kNew) different.push_back(text);
    }
  }
}

// A seed that makes nothing of the first eight bytes of these texts, and by that of the rest.
TEST(KRSeenValues, TellsTextsApartThatHaveTheSameHash) {
  constexpr std::string_view kBlind = "sameHash";
  uint64_t blind = 0;
  std::memcpy(&blind, kBlind.data(), sizeof blind);
  const uint64_t before = krHashSeed();
  krSetHashSeed(blind ^ 0xd6e8feb86659fd93U);
  std::vector<std::string> texts;
  for (int i = 0; i < 300; ++i) texts.push_back(std::string(kBlind) + std::to_string(10'000'000 + i));
  EXPECT_EQ(KRText(std::string_view(texts[0])).hash(), KRText(std::string_view(texts[1])).hash());
  KRSeenValues<KRText> seen;
  for (const std::string& text : texts) EXPECT_EQ(seen.placeOrAdd(KRText(std::string_view(text))), kNew);
  for (size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(seen.placeOrAdd(KRText(std::string_view(texts[i]))), i);
  krSetHashSeed(before);
}

TEST(KRSeenValues, HashesEqualAddressesAlike) {
  ModelSamples samples(9);
  size_t equal = 0;
  std::vector<KRRef<KRObjectAddress>> addresses;
  for (int i = 0; i < 300; ++i) addresses.push_back(samples.address());
  for (const auto& a : addresses) {
    for (const auto& b : addresses) {
      const KRAddressView one = krAddressView(*a);
      const KRAddressView other = krAddressView(*b);
      if (!(one == other)) continue;
      EXPECT_EQ(krValueHash(one), krValueHash(other));
      equal += a == b ? 0 : 1;
    }
  }
  EXPECT_GT(equal, 10U);
}

}  // namespace
