#include <gtest/gtest.h>
#include <sys/resource.h>

#include <new>
#include <vector>

#include "contacts/vcard/KRCardDraft.h"
#include "platform/KRPieces.h"

namespace {

TEST(KRCardSlabs, GiveRoomsApartFromEachOther) {
  KRCardSlabs slabs;
  const KRCardSlabs::Room first = slabs.take(100);
  const KRCardSlabs::Room second = slabs.take(50);
  EXPECT_EQ(first.slab, second.slab);
  EXPECT_GE(second.offset, first.offset + 100);
  const KRCardSlabs::Room large = slabs.take(KRSlab::kSharedCapacity);
  EXPECT_NE(large.slab, first.slab);
  EXPECT_EQ(large.offset, 0U);
  for (const KRCardSlabs::Room& room : {first, second, large}) room.slab->release();
}

TEST(KRCardSlabs, HaveReferencesForTheSmallestRooms) {
  std::vector<KRSlab*> taken;
  {
    KRCardSlabs slabs;
    for (uint32_t i = 0; i < KRSlab::kSharedCapacity / 4; ++i) taken.push_back(slabs.take(1).slab);
  }
  EXPECT_NE(taken.front(), taken.back());
  for (KRSlab* slab : taken) {
    *slab->bytes() = 'x';
    slab->release();
  }
}

/// While it lives, the system gives this process no memory any more.
class NoMoreMemory {
 public:
  NoMoreMemory() {
    getrlimit(RLIMIT_AS, &before_);
    const rlimit none{1, before_.rlim_max};
    setrlimit(RLIMIT_AS, &none);
  }
  ~NoMoreMemory() { setrlimit(RLIMIT_AS, &before_); }
  NoMoreMemory(const NoMoreMemory&) = delete;
  NoMoreMemory& operator=(const NoMoreMemory&) = delete;

 private:
  rlimit before_{};
};

/// Takes rooms that fill a block each until there is no memory for another; whether that came.
bool takeAll(KRCardSlabs& slabs, std::vector<KRSlab*>& taken) {
  const NoMoreMemory no;
  try {
    while (taken.size() < taken.capacity()) taken.push_back(slabs.take(KRSlab::kSharedCapacity / 4 - 8).slab);
  } catch (const std::bad_alloc&) {
    return true;
  }
  return false;
}

// The address sanitizer's own allocator ends the process where there is no memory.
TEST(KRCardSlabs, WithoutMemoryTheLastBlockStaysWhole) {
  if constexpr (!KRPieces::kAreUsed) return;
  std::vector<KRSlab*> taken;
  taken.reserve(100'000);
  {
    KRCardSlabs slabs;
    taken.push_back(slabs.take(1000).slab);
    ASSERT_TRUE(takeAll(slabs, taken));
  }
  // All that is left of the last block is the one reference of whoever took a room in it.
  KRSlab* last = taken.back();
  taken.pop_back();
  for (KRSlab* slab : taken) {
    if (slab == last) slab->release();
  }
  void* piece = KRPieces::take();
  EXPECT_NE(piece, static_cast<void*>(last)) << "the block was given away while somebody had it";
  KRPieces::give(piece);
  last->release();
  for (KRSlab* slab : taken) {
    if (slab != last) slab->release();
  }
}

}  // namespace
