#include "platform/KRBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

TEST(KRBuffer, GrowsAndKeepsItsBytesAcrossKindsOfMemory) {
  KRBuffer buffer;
  std::string expected;
  for (int i = 0; expected.size() < (20U << 20U); ++i) {
    const std::string piece(1 + expected.size() / 3, static_cast<char>('a' + i % 26));
    ASSERT_TRUE(buffer.append(piece));
    expected += piece;
  }
  EXPECT_TRUE(buffer.view() == expected);
}

TEST(KRBuffer, MakesRoomForSoManyMoreBytesAndKeepsWhatIsThere) {
  KRBuffer buffer;
  ASSERT_TRUE(buffer.grow(0));
  ASSERT_NE(buffer.data(), nullptr);
  ASSERT_TRUE(buffer.append("kept"));
  for (size_t more = 1; more < (size_t{64} << 20U); more *= 3) {
    ASSERT_TRUE(buffer.grow(more));
    EXPECT_GE(buffer.capacity(), 4 + more);
    EXPECT_EQ(buffer.view(), "kept");
  }
  EXPECT_FALSE(buffer.grow(SIZE_MAX));
  EXPECT_FALSE(buffer.grow(SIZE_MAX / 4));
  EXPECT_EQ(buffer.view(), "kept");
}

TEST(KRBuffer, MovingLeavesTheBytesWhereTheyAre) {
  KRBuffer buffer;
  ASSERT_TRUE(buffer.append("text"));
  const char* place = buffer.data();
  KRBuffer moved = std::move(buffer);
  EXPECT_EQ(moved.data(), place);
  EXPECT_EQ(moved.view(), "text");
  buffer = std::move(moved);
  EXPECT_EQ(buffer.view(), "text");
  buffer = KRBuffer();
  EXPECT_TRUE(buffer.isEmpty());
}

TEST(KRBuffer, MoreThanThereIsMemoryForIsRefused) {
  KRBuffer buffer;
  ASSERT_TRUE(buffer.append("kept"));
  EXPECT_FALSE(buffer.reserve(SIZE_MAX));
  EXPECT_FALSE(buffer.reserve(SIZE_MAX - (SIZE_MAX >> 4U)));
  EXPECT_EQ(buffer.view(), "kept");
}

TEST(KRBuffer, AnEmptyBufferReadsAsNoBytes) {
  KRBuffer buffer;
  ASSERT_TRUE(buffer.append(""));
  EXPECT_EQ(buffer.view(), "");
  ASSERT_TRUE(buffer.reserve(0));
  EXPECT_EQ(buffer.size(), 0U);
}

TEST(KRBufferDeathTest, ASizeBeyondTheCapacityStopsTheProcess) {
  EXPECT_DEATH(KRBuffer().setSize(1), "beyond its capacity");
}

}  // namespace
