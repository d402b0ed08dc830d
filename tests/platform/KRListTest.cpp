#include "platform/KRList.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/KRArray.h"

namespace {

class Item : public KRObject {
 public:
  explicit Item(int number) : number(number) { ++alive; }
  ~Item() override { --alive; }

  const int number;
  static inline int alive = 0;
};

/// Equal to every item of the same number, as a host's own kind of person may be.
class AlikeItem : public Item {
 public:
  using Item::Item;
  bool isEqual(const KRObject* other) const override {
    const auto* item = dynamic_cast<const AlikeItem*>(other);
    return item != nullptr && item->number == number;
  }
  uint64_t hash() const override { return static_cast<uint64_t>(number); }
};

std::vector<int> numbers(const KRList<Item>& list) {
  std::vector<int> result;
  for (const Item& item : list) result.push_back(item.number);
  return result;
}

std::vector<KRRef<Item>> makeItems(int count) {
  std::vector<KRRef<Item>> items;
  for (int i = 0; i < count; ++i) items.push_back(krMake<Item>(i));
  return items;
}

TEST(KRList, KeepsItsElementsAliveAndLetsThemGo) {
  {
    KRList<Item> list;
    list.append(krMake<Item>(1));
    list.append(krMake<Item>(2));
    EXPECT_EQ(Item::alive, 2);
    list.removeAt(0);
    EXPECT_EQ(Item::alive, 1);
  }
  EXPECT_EQ(Item::alive, 0);
}

TEST(KRList, TakesOverAReferenceThatIsGivenUp) {
  {
    KRList<Item> list;
    KRRef<Item> item = krMake<Item>(1);
    list.append(std::move(item));
    list.append(KRRef<Item>());
    EXPECT_EQ(list.count(), 1U);
    EXPECT_EQ(Item::alive, 1);
    KRRef<Item> kept(list.first());
    list.removeAll();
    EXPECT_EQ(Item::alive, 1);
    kept = nullptr;
    EXPECT_EQ(Item::alive, 0);
    list.append(krMake<Item>(2));
    EXPECT_EQ(Item::alive, 1);
  }
  EXPECT_EQ(Item::alive, 0);
}

TEST(KRList, FindsWhatItTookOverInALongList) {
  KRList<Item> list;
  for (int i = 0; i < 40; ++i) list.append(krMake<Item>(i));
  EXPECT_TRUE(list.contains(list.at(30)));
  KRRef<Item> item = krMake<Item>(40);
  const Item* place = item.get();
  list.append(std::move(item));
  EXPECT_TRUE(list.contains(place));
  EXPECT_TRUE(list.remove(place));
  EXPECT_EQ(Item::alive, 40);
}

TEST(KRList, RemovesEveryOccurrence) {
  const auto items = makeItems(2);
  KRList<Item> list;
  for (const int i : {0, 1, 0, 0, 1}) list.append(items[static_cast<size_t>(i)]);
  EXPECT_TRUE(list.remove(items[0].get()));
  EXPECT_EQ(numbers(list), (std::vector<int>{1, 1}));
  EXPECT_FALSE(list.remove(items[0].get()));
  EXPECT_FALSE(list.remove(nullptr));
}

class Owner : public KRGraphNode {
 public:
  KRList<Owner> down{*this};
};

TEST(KRList, RemovesEveryOccurrenceOfANodeAndNoOther) {
  for (const int further : {0, 40}) {
    const auto owner = krMake<Owner>();
    const auto twice = krMake<Owner>();
    const auto once = krMake<Owner>();
    owner->down.append(twice);
    owner->down.append(once);
    for (int i = 0; i < further; ++i) owner->down.append(krMake<Owner>());
    owner->down.append(twice);
    EXPECT_TRUE(owner->down.remove(twice.get()));
    EXPECT_FALSE(owner->down.contains(twice.get()));
    EXPECT_FALSE(twice->isReferredTo());
    EXPECT_TRUE(owner->down.remove(once.get()));
    EXPECT_FALSE(owner->down.remove(once.get()));
    EXPECT_EQ(owner->down.count(), static_cast<size_t>(further));
  }
}

TEST(KRList, LooksAheadOverHolesWithoutMovingAnything) {
  const auto items = makeItems(5);
  KRList<Item> list;
  for (const auto& item : items) list.append(item);
  list.remove(items[0].get());
  list.remove(items[3].get());
  EXPECT_EQ(list.ahead(0), items[1].get());
  EXPECT_EQ(list.ahead(1), items[2].get());
  EXPECT_EQ(list.ahead(2), nullptr) << "taken out";
  EXPECT_EQ(list.ahead(3), items[4].get());
  EXPECT_EQ(list.ahead(4), nullptr) << "behind the end";
  EXPECT_EQ(numbers(list), (std::vector<int>{1, 2, 4}));
  EXPECT_EQ(KRList<Item>().ahead(0), nullptr);
}

TEST(KRList, FindsByTheElementsOwnEquality) {
  KRList<Item> list;
  for (int i = 0; i < 100; ++i) list.append(krMake<AlikeItem>(i % 50));
  const auto probe = krMake<AlikeItem>(7);
  EXPECT_TRUE(list.contains(probe.get()));
  EXPECT_EQ(list.indexOf(probe.get()), 7U);
  EXPECT_TRUE(list.remove(probe.get()));
  EXPECT_EQ(list.count(), 98U);
  EXPECT_FALSE(list.contains(probe.get()));
  EXPECT_EQ(list.indexOf(probe.get()), 98U);
}

TEST(KRList, InsertsBeyondTheEndAtTheEnd) {
  const auto items = makeItems(3);
  KRList<Item> list;
  list.insert(items[0].get(), 99);
  list.insert(items[1].get(), 0);
  list.insert(items[2].get(), 1);
  EXPECT_EQ(numbers(list), (std::vector<int>{1, 2, 0}));
}

TEST(KRList, BehavesAsAPlainVectorWould) {
  std::mt19937 random(20260);
  const auto items = makeItems(60);
  for (int round = 0; round < 300; ++round) {
    KRList<Item> list;
    std::vector<Item*> judge;
    for (int step = 0; step < 400; ++step) {
      Item* item = items[random() % items.size()].get();
      const size_t place = judge.empty() ? 0 : random() % judge.size();
      const auto at = judge.begin() + static_cast<std::ptrdiff_t>(place);
      switch (random() % 10) {
        case 0:
        case 1:
        case 2:
        case 3:
          list.append(item);
          judge.push_back(item);
          break;
        case 4:
          list.insert(item, place);
          judge.insert(at, item);
          break;
        case 5:
          EXPECT_EQ(list.remove(item), std::erase(judge, item) != 0);
          break;
        case 6:
          if (judge.empty()) break;
          list.removeAt(place);
          judge.erase(at);
          break;
        case 7:
          if (judge.empty()) break;
          EXPECT_EQ(list.first(), judge.front());
          list.removeAt(0);
          judge.erase(judge.begin());
          break;
        case 8:
          if (judge.empty()) break;
          EXPECT_EQ(list.at(place), judge[place]);
          list.replace(item, place);
          judge[place] = item;
          break;
        default:
          EXPECT_EQ(list.contains(item), std::find(judge.begin(), judge.end(), item) != judge.end());
          EXPECT_EQ(list.indexOf(item),
                    static_cast<size_t>(std::find(judge.begin(), judge.end(), item) - judge.begin()));
      }
      ASSERT_EQ(list.count(), judge.size());
    }
    std::vector<int> expected;
    for (const Item* item : judge) expected.push_back(item->number);
    ASSERT_EQ(numbers(list), expected);
  }
}

TEST(KRList, ReordersByPlaces) {
  const auto items = makeItems(4);
  KRList<Item> list;
  for (const auto& item : items) list.append(item);
  list.removeAt(1);
  list.reorder({2, 0, 1});
  EXPECT_EQ(numbers(list), (std::vector<int>{3, 0, 2}));
}

TEST(KRList, TakingFromFrontAndMiddleIsLinear) {
  // At a million elements anything quadratic would not come back within the test's time limit.
  constexpr int kCount = 1'000'000;
  const auto items = makeItems(kCount);
  KRList<Item> list;
  for (const auto& item : items) list.append(item);
  std::mt19937 random(7);
  std::vector<size_t> order(kCount);
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), random);
  for (size_t i = 0; i < order.size() / 2; ++i) ASSERT_TRUE(list.remove(items[order[i]].get()));
  while (!list.isEmpty()) list.remove(list.first());
  EXPECT_EQ(list.count(), 0U);
}

using KRListDeathTest = ::testing::Test;

TEST(KRListDeathTest, AChangeUnderAWalkStopsTheProcess) {
  KRList<Item> list;
  for (int i = 0; i < 3; ++i) list.append(krMake<Item>(i));
  const auto walkAndRemove = [&] {
    for (Item& item : list) list.remove(&item);
  };
  EXPECT_DEATH(walkAndRemove(), "changed while it was being walked");
  const auto walkAndAppend = [&] {
    for (Item& item : list) list.append(&item);
  };
  EXPECT_DEATH(walkAndAppend(), "changed while it was being walked");
}

TEST(KRListDeathTest, ReadingOutOfRangeStopsTheProcess) {
  KRList<Item> list;
  EXPECT_DEATH(list.at(0), "out of the range");
  list.append(krMake<Item>(1));
  EXPECT_DEATH(list.at(1), "out of the range");
  EXPECT_DEATH(list.removeAt(1), "out of the range");
}

TEST(KRArray, HoldsNoneOneOrMany) {
  {
    const KRArray<Item> none;
    EXPECT_TRUE(none.isEmpty());
    EXPECT_EQ(none.begin(), none.end());
    const auto items = makeItems(3);
    const KRArray<Item> one(items[0]);
    EXPECT_EQ(one.count(), 1U);
    EXPECT_EQ(one.first(), items[0].get());
    KRArray<Item> many(items);
    const KRArray<Item> copy = many;
    many = one;
    EXPECT_EQ(copy.count(), 3U);
    EXPECT_EQ(copy.at(2), items[2].get());
    EXPECT_EQ(many.count(), 1U);
    many = *&many;
    EXPECT_EQ(many.first(), items[0].get());
  }
  EXPECT_EQ(Item::alive, 0);
}

TEST(KRArray, WithoutDropsEveryOccurrence) {
  const auto items = makeItems(2);
  const KRArray<Item> array(std::vector<KRRef<Item>>{items[0], items[1], items[0]});
  const KRArray<Item> rest = array.without(items[0].get());
  EXPECT_EQ(rest.count(), 1U);
  EXPECT_EQ(rest.first(), items[1].get());
  EXPECT_TRUE(rest.without(items[1].get()).isEmpty());
  EXPECT_TRUE(array.contains(items[0].get()));
  EXPECT_FALSE(rest.contains(items[0].get()));
}

}  // namespace
