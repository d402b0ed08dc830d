#include "import/KRCSVPlan.h"

#include <gtest/gtest.h>

namespace {

using Columns = std::vector<size_t>;

KRCSVPlan planOf(const KRStringList& headings) {
  return KRCSVPlan(KRCSVMapping::of(headings, {}));
}

TEST(KRCSVPlan, PartsOfTheNameHaveColumnsOfTheirOwn) {
  const KRCSVPlan plan = planOf({"Last Name"_kr, "First Name"_kr, "Middle Name"_kr});
  EXPECT_EQ(plan.name().last, Columns{0});
  EXPECT_EQ(plan.name().first, Columns{1});
  EXPECT_EQ(plan.name().middle, Columns{2});
  EXPECT_TRUE(plan.name().whole.empty());
}

TEST(KRCSVPlan, SingleValuesStandInStandardOrder) {
  KRCSVMapping mapping = KRCSVMapping::of({"A"_kr, "B"_kr, "C"_kr}, {});
  ASSERT_TRUE(mapping.set("A=note"));
  ASSERT_TRUE(mapping.set("B=company"));
  ASSERT_TRUE(mapping.set("C=note"));
  const KRCSVPlan plan(mapping);
  ASSERT_EQ(plan.singles().size(), 2U);
  EXPECT_EQ(plan.singles()[0].property->ordinal(), KROrdinal::Company);
  EXPECT_EQ(plan.singles()[1].columns, (Columns{0, 2}));
}

TEST(KRCSVPlan, NumberedPairsMakeOneValue) {
  const KRCSVPlan plan =
      planOf({"Phone 1 - Label"_kr, "Phone 1 - Value"_kr, "Phone 2 - Label"_kr, "Phone 2 - Value"_kr});
  ASSERT_EQ(plan.entries().size(), 2U);
  EXPECT_EQ(plan.entries()[1].labels, 2U);
  EXPECT_EQ(plan.entries()[1].values, Columns{3});
}

TEST(KRCSVPlan, PartsOfAnAddressMakeOneAddressOfEachLabel) {
  const KRCSVPlan plan = planOf({"Home Street"_kr, "Home City"_kr, "Business Street"_kr});
  ASSERT_EQ(plan.entries().size(), 2U);
  EXPECT_EQ(plan.entries()[0].label, "home");
  EXPECT_EQ(plan.entries()[0].fields[static_cast<size_t>(KRAddressField::City)], Columns{1});
  EXPECT_EQ(plan.entries()[1].fields[static_cast<size_t>(KRAddressField::Street)], Columns{2});
}

TEST(KRCSVPlan, BirthdaysStandWholeOrInParts) {
  EXPECT_EQ(planOf({"Birthday"_kr}).dateColumns(), Columns{0});
  const KRCSVPlan parts = planOf({"Birth Day"_kr, "Birth Month"_kr, "Birth Year"_kr});
  EXPECT_EQ(parts.birthdayParts(), (std::array<size_t, 3>{2, 1, 0}));
  EXPECT_TRUE(parts.dateColumns().empty());
}

TEST(KRCSVPlan, IgnoredColumnsFeedNothing) {
  KRCSVMapping mapping = KRCSVMapping::of({"Phone"_kr}, {});
  ASSERT_TRUE(mapping.set("Phone=ignore"));
  EXPECT_TRUE(KRCSVPlan(mapping).entries().empty());
}

}  // namespace
