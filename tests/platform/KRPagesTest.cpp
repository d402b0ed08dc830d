#include "platform/KRPages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

constexpr size_t kPiece = size_t{64} << 10U;

TEST(KRPages, BeginAtAMultipleAndWithZeros) {
  for (const size_t alignment : {kPiece, 4 * kPiece, 32 * kPiece}) {
    auto* pages = static_cast<char*>(KRPages::take(3 * kPiece, alignment));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(pages) % alignment, 0U);
    EXPECT_TRUE(std::all_of(pages, pages + 3 * kPiece, [](char byte) { return byte == 0; }));
    std::memset(pages, 'x', 3 * kPiece);
    KRPages::give(pages, 3 * kPiece);
  }
}

TEST(KRPages, GoBackInPieces) {
  auto* pages = static_cast<char*>(KRPages::take(4 * kPiece, kPiece));
  std::memset(pages, 'x', 4 * kPiece);
  KRPages::give(pages + kPiece, kPiece);
  KRPages::give(pages + 3 * kPiece, kPiece);
  EXPECT_EQ(pages[0], 'x');
  EXPECT_EQ(pages[3 * kPiece - 1], 'x');
  KRPages::give(pages, kPiece);
  KRPages::give(pages + 2 * kPiece, kPiece);
}

TEST(KRPages, LaidReadyKeepWhatTheyHold) {
  auto* pages = static_cast<char*>(KRPages::take(2 * kPiece, kPiece));
  pages[5000] = 'x';
  // From the middle of a page to the middle of another, and less than a page.
  KRPages::layReady(pages + 100, kPiece);
  KRPages::layReady(pages + 100, 50);
  EXPECT_EQ(pages[5000], 'x');
  EXPECT_EQ(pages[0], 0);
  KRPages::give(pages, 2 * kPiece);
}

TEST(KRPages, ThrowWhereThereAreNone) {
  EXPECT_THROW(KRPages::take(size_t{1} << 60U, kPiece), std::bad_alloc);
}

}  // namespace
