#include "platform/KRCellPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

constexpr size_t kSize = 64;
// The first is the head.
constexpr size_t kInBlock = (size_t{64} << 10U) / kSize - 1;

TEST(KRCellPool, GivesCellsOneBehindTheOther) {
  KRCellPool pool(kSize);
  std::vector<char*> cells;
  for (int i = 0; i < 100; ++i) cells.push_back(static_cast<char*>(pool.take()));
  for (size_t i = 1; i < cells.size(); ++i) EXPECT_EQ(cells[i], cells[i - 1] + kSize);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(cells[0]) % kSize, 0U);
  for (char* cell : cells) pool.give(cell);
}

TEST(KRCellPool, GivesLargerObjectsWholeLines) {
  KRCellPool pool(100);
  std::vector<char*> cells;
  for (int i = 0; i < 2000; ++i) cells.push_back(static_cast<char*>(pool.take()));
  for (char* cell : cells) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(cell) % KRCellPool::kLine, 0U);
    std::memset(cell, 'x', 100);
  }
  std::sort(cells.begin(), cells.end());
  for (size_t i = 1; i < cells.size(); ++i) EXPECT_GE(cells[i] - cells[i - 1], 128);
  EXPECT_EQ(pool.blockCount(), 4U);
  for (char* cell : cells) pool.give(cell);
  EXPECT_EQ(pool.blockCount(), 1U);
}

TEST(KRCellPool, GivesEachCellToOneAtATime) {
  KRCellPool pool(kSize);
  std::mt19937 random(3);
  std::vector<unsigned char*> held;
  std::set<unsigned char*> known;
  for (int round = 0; round < 20000; ++round) {
    if (held.empty() || random() % 5 < 3) {
      auto* cell = static_cast<unsigned char*>(pool.take());
      ASSERT_TRUE(known.insert(cell).second) << "a cell was given twice";
      std::memset(cell, static_cast<int>(known.size() % 251), kSize);
      held.push_back(cell);
    } else {
      std::swap(held[random() % held.size()], held.back());
      const unsigned char* cell = held.back();
      // Nobody else wrote into it.
      ASSERT_TRUE(std::all_of(cell, cell + kSize, [&](unsigned char byte) { return byte == *cell; }));
      known.erase(held.back());
      pool.give(held.back());
      held.pop_back();
    }
  }
  EXPECT_LE(pool.blockCount(), 20000 / kInBlock + 1);
  for (unsigned char* cell : held) pool.give(cell);
}

TEST(KRCellPool, GivesEmptyBlocksBackButOne) {
  KRCellPool pool(kSize);
  std::vector<void*> cells;
  for (size_t i = 0; i < 5 * kInBlock; ++i) cells.push_back(pool.take());
  EXPECT_EQ(pool.blockCount(), 5U);
  std::shuffle(cells.begin(), cells.end(), std::mt19937(7));
  for (void* cell : cells) pool.give(cell);
  EXPECT_EQ(pool.blockCount(), 1U);
}

TEST(KRCellPool, UsesTheOneBlockAgainForWhoTakesOneAtATime) {
  KRCellPool pool(kSize);
  void* first = pool.take();
  pool.give(first);
  for (size_t i = 0; i < 3 * kInBlock; ++i) {
    void* cell = pool.take();
    EXPECT_EQ(cell, first);
    pool.give(cell);
  }
  EXPECT_EQ(pool.blockCount(), 1U);
}

TEST(KRCellPoolThreads, TakesBackOnOneThreadWhatAnotherTook) {
  KRCellPool pool(kSize);
  const auto work = [&pool](std::vector<void*>& cells) {
    for (int round = 0; round < 3000; ++round) {
      for (int i = 0; i < 4; ++i) cells.push_back(pool.take());
      for (int i = 0; i < 3; ++i) {
        pool.give(cells.back());
        cells.pop_back();
      }
    }
  };
  std::vector<void*> first;
  std::vector<void*> second;
  std::thread other([&] { work(first); });
  work(second);
  other.join();
  std::set<void*> all(first.begin(), first.end());
  all.insert(second.begin(), second.end());
  EXPECT_EQ(all.size(), 6000U);
  for (void* cell : all) pool.give(cell);
  EXPECT_EQ(pool.blockCount(), 1U);
}

}  // namespace
