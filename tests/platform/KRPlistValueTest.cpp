#include "platform/KRPlistValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/KRPlistTrees.h"

namespace {

TEST(KRPlistValue, PutsInstantsOnTheirUtcDay) {
  const struct {
    double seconds;
    const char* day;
  } rows[] = {
      {0, "2001-01-01"},         {86399.9, "2001-01-01"},    {86400, "2001-01-02"},        {-0.1, "2000-12-31"},
      {-31622400, "2000-01-01"}, {-978307200, "1970-01-01"}, {252423993599, "9999-12-31"}, {-63145526400, "0000-01-01"},
  };
  for (const auto& row : rows) {
    const auto date = krDateOfInstant(row.seconds);
    ASSERT_TRUE(date) << row.day;
    EXPECT_EQ(date->description(), row.day);
  }
  EXPECT_FALSE(krDateOfInstant(252423993600));
  EXPECT_FALSE(krDateOfInstant(-63145526401));
  EXPECT_FALSE(krDateOfInstant(1e300));
  EXPECT_FALSE(krDateOfInstant(-std::numeric_limits<double>::infinity()));
  EXPECT_FALSE(krDateOfInstant(std::numeric_limits<double>::quiet_NaN()));
}

TEST(KRPlistValue, WritesADateAsTheBeginningOfItsDay) {
  KRBinaryPlist plist;
  const auto node = krAddToPlist(plist, *KRDate::make(2001, 1, 3));
  ASSERT_TRUE(node);
  EXPECT_EQ(plist.instant(*node), 2 * 86400.0);
  for (int year = 0; year <= 9999; year += 7) {
    const KRValue date = *KRDate::make(year, 12, 31);
    EXPECT_TRUE(krCopyThroughPlist(date).isEqual(date)) << year;
  }
}

TEST(KRPlistValue, CopiesAreTheSameAndShareNoContainers) {
  const auto inner = krMake<KRValueList>();
  inner->values().push_back(KRValue::whole(1));
  const auto map = krMake<KRValueMap>();
  map->set("a"_kr, inner);
  map->set("b"_kr, inner);
  const KRValue copy = krCopyThroughPlist(map);
  EXPECT_TRUE(copy.isEqual(map));
  EXPECT_NE(copy.object(), map.get());
  EXPECT_NE(copy.as<KRValueMap>()->find("a")->object(), copy.as<KRValueMap>()->find("b")->object());
}

TEST(KRPlistValue, RefusesWhatIsTooDeepOrTooLarge) {
  auto deep = krMake<KRValueList>();
  for (int i = 0; i < kKRDeepestPlistValue; ++i) {
    const auto outer = krMake<KRValueList>();
    outer->values().push_back(deep);
    deep = outer;
  }
  EXPECT_FALSE(krCopyThroughPlist(deep).isNothing());
  const auto tooDeep = krMake<KRValueList>();
  tooDeep->values().push_back(deep);
  EXPECT_TRUE(krCopyThroughPlist(tooDeep).isNothing());

  // Sixty lists of which each holds the next one twice, in memory and in a file.
  KRBinaryPlist plist;
  auto node = plist.addArray({});
  auto list = krMake<KRValueList>();
  for (int i = 0; i < 60; ++i) {
    const KRBinaryPlist::Node twice[] = {node, node};
    node = plist.addArray(twice);
    const auto outer = krMake<KRValueList>();
    outer->values() = {list, list};
    list = outer;
  }
  EXPECT_TRUE(krValueOfPlist(plist, node).isNothing());
  KRBinaryPlist other;
  EXPECT_FALSE(krAddToPlist(other, list));
}

TEST(KRPlistValue, CountsTheDepthOfSharedArraysWhereTheyStand) {
  // The first element is just within the limit; the second holds it a hundred arrays deeper.
  KRBinaryPlist plist;
  auto node = plist.addArray({});
  for (int i = 2; i < kKRDeepestPlistValue; ++i) node = plist.addArray({&node, 1});
  auto deeper = node;
  for (int i = 0; i < 100; ++i) deeper = plist.addArray({&deeper, 1});
  const KRBinaryPlist::Node both[] = {node, deeper};
  EXPECT_FALSE(krValueOfPlist(plist, plist.addArray({both, 1})).isNothing());
  EXPECT_TRUE(krValueOfPlist(plist, plist.addArray(both)).isNothing());
}

TEST(KRPlistValue, ReadsTheFirstOfEqualKeys) {
  KRBinaryPlist plist;
  const KRBinaryPlist::Node keys[] = {plist.addText("k"), plist.addText("k")};
  const KRBinaryPlist::Node values[] = {plist.addInteger(1), plist.addInteger(2)};
  EXPECT_EQ(krValueOfPlist(plist, plist.addDictionary(keys, values)).description(), "{k = 1}");
}

TEST(KRPlistValue, HasNoValuesForReferencesAndNull) {
  KRBinaryPlist plist;
  EXPECT_TRUE(krValueOfPlist(plist, plist.addUid(1)).isNothing());
  EXPECT_TRUE(krValueOfPlist(plist, plist.addNull()).isNothing());
  const KRBinaryPlist::Node elements[] = {plist.addInteger(1), plist.addNull()};
  EXPECT_TRUE(krValueOfPlist(plist, plist.addArray(elements)).isNothing());
  EXPECT_TRUE(krValueOfPlist(plist, KRBinaryPlist::kNone).isNothing());
}

}  // namespace
