#include "platform/KRHash.h"

#include <gtest/gtest.h>

#include <bit>
#include <set>
#include <string>

#include "platform/KRText.h"

namespace {

/// Puts the process's own seed back, whatever a test does with it.
class SeedKept {
 public:
  SeedKept() = default;
  SeedKept(const SeedKept&) = delete;
  SeedKept& operator=(const SeedKept&) = delete;
  ~SeedKept() { krSetHashSeed(seed_); }

 private:
  uint64_t seed_ = krHashSeed();
};

TEST(KRHash, EqualBytesHashAlikeUnderOneSeed) {
  for (size_t size = 0; size < 100; ++size) {
    const std::string text(size, 'x');
    const std::string copy = text;
    EXPECT_EQ(krHashBytes(text.data(), text.size()), krHashBytes(copy.data(), copy.size()));
  }
}

TEST(KRHash, AnotherSeedGivesOtherHashes) {
  const SeedKept kept;
  krSetHashSeed(1);
  const uint64_t one = KRText("ann@example.com").hash();
  krSetHashSeed(2);
  EXPECT_NE(one, KRText("ann@example.com").hash());
  krSetHashSeed(1);
  EXPECT_EQ(one, KRText("ann@example.com").hash());
}

TEST(KRHash, EveryBitOfEveryByteCounts) {
  for (size_t size = 1; size <= 70; ++size) {
    std::string text(size, 'a');
    std::set<uint64_t> seen{krHashBytes(text.data(), size)};
    for (size_t bit = 0; bit < size * 8; ++bit) {
      text[bit / 8] = static_cast<char>(text[bit / 8] ^ (1 << (bit % 8)));
      EXPECT_TRUE(seen.insert(krHashBytes(text.data(), size)).second) << size << " bytes, bit " << bit;
      text[bit / 8] = 'a';
    }
  }
}

TEST(KRHash, LengthCounts) {
  std::set<uint64_t> seen;
  const std::string zeros(200, '\0');
  for (size_t size = 0; size <= zeros.size(); ++size) seen.insert(krHashBytes(zeros.data(), size));
  EXPECT_EQ(seen.size(), zeros.size() + 1);
}

TEST(KRHash, SpreadsNumberedTextsEvenly) {
  constexpr size_t kBuckets = 1024;
  constexpr size_t kTexts = 100 * kBuckets;
  std::vector<size_t> buckets(kBuckets);
  for (size_t i = 0; i < kTexts; ++i) {
    const std::string text = "contact" + std::to_string(i) + "@example.com";
    ++buckets[krHashBytes(text.data(), text.size()) % kBuckets];
  }
  // A hundred on average; five standard deviations either way.
  for (const size_t count : buckets) EXPECT_TRUE(count > 50 && count < 150) << count;
}

}  // namespace
