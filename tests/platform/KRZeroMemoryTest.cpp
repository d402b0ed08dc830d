#include "platform/KRZeroMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

bool isZero(const KRZeroMemory& memory) {
  const auto* bytes = static_cast<const unsigned char*>(memory.data());
  return std::all_of(bytes, bytes + memory.size(), [](unsigned char byte) { return byte == 0; });
}

/// Writes to every byte, as a table that is full.
void use(const KRZeroMemory& memory) {
  std::fill_n(static_cast<unsigned char*>(memory.data()), memory.size(), static_cast<unsigned char>(0xFF));
}

TEST(KRZeroMemory, BeginsAsZerosInEverySize) {
  for (const size_t size :
       {size_t{1}, size_t{4096}, (size_t{4} << 20U) - 1, size_t{4} << 20U, (size_t{9} << 20U) + 5}) {
    // Twice, so that memory that was used before comes back.
    for (int round = 0; round < 2; ++round) {
      const KRZeroMemory memory(size);
      ASSERT_NE(memory.data(), nullptr);
      EXPECT_EQ(memory.size(), size);
      EXPECT_TRUE(isZero(memory)) << size;
      use(memory);
    }
  }
}

TEST(KRZeroMemory, ComesBackAsZerosWhereALargerOneWas) {
  constexpr size_t kLarge = size_t{9} << 20U;
  constexpr size_t kSmall = size_t{5} << 20U;
  KRZeroMemory::giveBackSpare();
  const void* place = nullptr;
  {
    const KRZeroMemory large(kLarge);
    place = large.data();
    use(large);
  }
  {
    const KRZeroMemory small(kSmall);
    EXPECT_EQ(small.data(), place);
    EXPECT_TRUE(isZero(small));
    use(small);
    EXPECT_TRUE(isZero(KRZeroMemory(kLarge)));
  }
  KRZeroMemory::giveBackSpare();
  KRZeroMemory::giveBackSpare();
  EXPECT_TRUE(isZero(KRZeroMemory(kLarge)));
}

TEST(KRZeroMemory, ServesALargerOneWithTheMemoryOfASmallerOne) {
  constexpr size_t kSmall = size_t{5} << 20U;
  constexpr size_t kLargest = size_t{64} << 20U;
  KRZeroMemory::giveBackSpare();
  const void* place = nullptr;
  {
    const KRZeroMemory small(kSmall);
    place = small.data();
    use(small);
  }
  const KRZeroMemory large(kLargest);
  EXPECT_EQ(large.data(), place);
  EXPECT_TRUE(isZero(large));
  // What is larger than all that is kept is neither taken from it nor kept.
  EXPECT_TRUE(isZero(KRZeroMemory(kLargest + 1)));
  EXPECT_TRUE(isZero(KRZeroMemory(kSmall)));
}

/// Of how many pages the system has something.
size_t pagesThere(const void* from, size_t size) {
  std::vector<unsigned char> pages(size / 4096);
  if (mincore(const_cast<void*>(from), size, pages.data()) != 0) return 0;
  return static_cast<size_t>(
      std::count_if(pages.begin(), pages.end(), [](unsigned char page) { return page % 2 == 1; }));
}

TEST(KRZeroMemory, ASmallerOneHoldsNoPagesOfALargerOneBehindIt) {
  constexpr size_t kSmall = size_t{6} << 20U;
  constexpr size_t kLarge = size_t{40} << 20U;
  KRZeroMemory::giveBackSpare();
  {
    const KRZeroMemory large(kLarge);
    use(large);
    EXPECT_EQ(pagesThere(large.data(), kLarge), kLarge / 4096);
  }
  const KRZeroMemory small(kSmall);
  // The rest of a large page may be there, too.
  EXPECT_LE(pagesThere(small.data(), kLarge), (kSmall + (size_t{2} << 20U)) / 4096);
}

TEST(KRZeroMemory, HasNoneWithoutASize) {
  EXPECT_EQ(KRZeroMemory().data(), nullptr);
  EXPECT_EQ(KRZeroMemory(0).data(), nullptr);
  EXPECT_EQ(KRZeroMemory().size(), 0U);
}

TEST(KRZeroMemory, MovesWithItsContent) {
  KRZeroMemory memory(100);
  static_cast<char*>(memory.data())[99] = 'x';
  const void* place = memory.data();
  KRZeroMemory other(std::move(memory));
  EXPECT_EQ(other.data(), place);
  KRZeroMemory third(7);
  third = std::move(other);
  EXPECT_EQ(third.data(), place);
  EXPECT_EQ(third.size(), 100U);
  EXPECT_EQ(static_cast<const char*>(third.data())[99], 'x');
}

}  // namespace
