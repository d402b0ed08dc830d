#include "platform/KRPieces.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

/// Takes so many pieces and fills each with a byte of its own.
std::vector<char*> taken(size_t count) {
  std::vector<char*> pieces;
  for (size_t i = 0; i < count; ++i) {
    pieces.push_back(static_cast<char*>(KRPieces::take()));
    std::memset(pieces.back(), static_cast<int>(i % 251), KRPieces::kSize);
  }
  return pieces;
}

void giveAll(const std::vector<char*>& pieces) {
  for (char* piece : pieces) KRPieces::give(piece);
}

// Those of several regions, and more than are kept.
constexpr size_t kMany = 400;

TEST(KRPieces, AreApartAndBeginAtMultiples) {
  const std::vector<char*> pieces = taken(kMany);
  EXPECT_EQ(std::set<char*>(pieces.begin(), pieces.end()).size(), kMany);
  for (size_t i = 0; i < pieces.size(); ++i) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(pieces[i]) % KRPieces::kSize, 0U);
    const auto byte = static_cast<char>(i % 251);
    ASSERT_EQ(pieces[i][0], byte);
    ASSERT_EQ(std::memcmp(pieces[i], pieces[i] + 1, KRPieces::kSize - 1), 0) << "another piece was written into it";
  }
  giveAll(pieces);
}

TEST(KRPieces, OneThatWasGivenBackIsTakenAgain) {
  void* piece = KRPieces::take();
  KRPieces::give(piece);
  EXPECT_EQ(KRPieces::take(), piece);
  KRPieces::give(piece);
}

TEST(KRPieces, GivenBackInAnyOrderLeaveTheOthersAlone) {
  std::vector<char*> pieces = taken(kMany);
  std::vector<char*> left;
  for (size_t i = 0; i < pieces.size(); ++i) {
    if (i % 3 == 0) {
      left.push_back(pieces[i]);
    } else {
      KRPieces::give(pieces[i]);
    }
  }
  for (size_t i = 0; i < left.size(); ++i) ASSERT_EQ(left[i][KRPieces::kSize - 1], static_cast<char>(i * 3 % 251));
  giveAll(taken(kMany));
  for (size_t i = 0; i < left.size(); ++i) ASSERT_EQ(left[i][0], static_cast<char>(i * 3 % 251));
  giveAll(left);
}

TEST(KRPiecesThreads, AreTakenAndGivenByTwo) {
  const auto work = [] {
    for (int round = 0; round < 50; ++round) giveAll(taken(40));
  };
  std::thread other(work);
  work();
  other.join();
}

}  // namespace
