#include "platform/KRValue.h"

#include <gtest/gtest.h>

#include <random>

namespace {

KRValue randomValue(std::mt19937& random, int depth) {
  switch (random() % (depth > 0 ? 9 : 7)) {
    case 0:
      return {};
    case 1:
      return KRString(std::string(random() % 3, static_cast<char>('a' + random() % 2)));
    case 2:
      return *KRDate::make(random() % 2 == 0 ? std::optional<int>(2000) : std::nullopt,
                           1 + static_cast<int>(random() % 2), 1);
    case 3:
      return KRValue::truth(random() % 2 == 0);
    case 4:
      return KRValue::whole(static_cast<int64_t>(random() % 3));
    case 5:
      return KRValue::number(static_cast<double>(random() % 3) / 2 * (random() % 2 == 0 ? 1 : -1));
    case 6:
      return krMake<KRData>(std::string(random() % 2, 'x'));
    case 7: {
      auto list = krMake<KRValueList>();
      for (size_t i = random() % 3; i > 0; --i) list->values().push_back(randomValue(random, depth - 1));
      return list;
    }
    default: {
      auto map = krMake<KRValueMap>();
      for (size_t i = random() % 3; i > 0; --i) {
        map->set(random() % 2 == 0 ? "email"_kr : "phone"_kr, randomValue(random, depth - 1));
      }
      return map;
    }
  }
}

TEST(KRValue, EqualValuesHashAndReadAlike) {
  std::mt19937 random(99);
  std::vector<KRValue> values;
  for (int i = 0; i < 400; ++i) values.push_back(randomValue(random, 2));
  size_t equalPairs = 0;
  for (const KRValue& a : values) {
    EXPECT_TRUE(a.isEqual(a));
    for (const KRValue& b : values) {
      ASSERT_EQ(a.isEqual(b), b.isEqual(a));
      if (!a.isEqual(b)) continue;
      ++equalPairs;
      ASSERT_EQ(a.hash(), b.hash()) << a.description().view();
      // The two zeros are equal numbers of different text; everything else reads alike.
      if (a.asNumber() == nullptr && a.object() == nullptr) ASSERT_EQ(a.description(), b.description());
    }
  }
  EXPECT_GT(equalPairs, values.size());
}

TEST(KRValue, NothingInAnyFormIsNothing) {
  EXPECT_TRUE(KRValue().isNothing());
  EXPECT_TRUE(KRValue(nullptr).isNothing());
  EXPECT_TRUE(KRValue(KRString()).isNothing());
  EXPECT_TRUE(KRValue(KRRef<KRData>()).isNothing());
  EXPECT_FALSE(KRValue(""_kr).isNothing());
  EXPECT_EQ(KRValue().description(), "(null)");
}

TEST(KRValue, KindsAreToldApart) {
  EXPECT_FALSE(KRValue::truth(true).isEqual(KRValue::whole(1)));
  EXPECT_FALSE(KRValue("1"_kr).isEqual(KRValue::whole(1)));
  EXPECT_EQ(KRValue("Ann"_kr).text(), "Ann");
  EXPECT_TRUE(KRValue::whole(1).text().isNothing());
  EXPECT_NE(KRValue(krMake<KRData>("x")).as<KRData>(), nullptr);
  EXPECT_EQ(KRValue(krMake<KRData>("x")).as<KRValueList>(), nullptr);
  EXPECT_EQ(KRValue("x"_kr).as<KRData>(), nullptr);
}

TEST(KRValueMap, KeepsTheOrderOfItsKeysAndComparesWithoutIt) {
  KRValueMap a;
  a.set("email"_kr, "x"_kr);
  a.set("phone"_kr, "y"_kr);
  KRValueMap b;
  b.set("phone"_kr, "z"_kr);
  b.set("email"_kr, "x"_kr);
  EXPECT_FALSE(a.isEqual(&b));
  b.set("phone"_kr, "y"_kr);
  EXPECT_EQ(b.entries().front().key, "phone");
  EXPECT_TRUE(a.isEqual(&b));
  EXPECT_EQ(a.hash(), b.hash());
  EXPECT_EQ(a.description(), b.description());
  EXPECT_EQ(a.find("fax"), nullptr);
}

TEST(KRDate, KnowsTheCalendar) {
  EXPECT_TRUE(KRDate::make(2024, 2, 29));
  EXPECT_FALSE(KRDate::make(2023, 2, 29));
  EXPECT_FALSE(KRDate::make(1900, 2, 29));
  EXPECT_TRUE(KRDate::make(2000, 2, 29));
  EXPECT_TRUE(KRDate::make(std::nullopt, 2, 29));
  EXPECT_FALSE(KRDate::make(2024, 4, 31));
  EXPECT_FALSE(KRDate::make(2024, 13, 1));
  EXPECT_FALSE(KRDate::make(2024, 0, 1));
  EXPECT_FALSE(KRDate::make(2024, 1, 0));
  EXPECT_FALSE(KRDate::make(10000, 1, 1));
}

TEST(KRDate, ADateWithoutAYearIsItsOwnCase) {
  const KRDate without = *KRDate::make(std::nullopt, 3, 2);
  const KRDate with = *KRDate::make(1604, 3, 2);
  EXPECT_FALSE(without == with);
  EXPECT_FALSE(without.year());
  EXPECT_EQ(without.description(), "--03-02");
  EXPECT_EQ(with.description(), "1604-03-02");
  EXPECT_EQ(KRDate::make(0, 1, 1)->description(), "0000-01-01");
}

}  // namespace
