#include "import/KRCSVPlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "tests/support/KRProcessorTime.h"

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

TEST(KRCSVPlan, RepeatedValuesOfOneNumberStandForThemselves) {
  const KRCSVPlan plan = planOf({"Phone 1 - Value"_kr, "Phone 1 - Label"_kr, "Phone 1 - Value"_kr});
  ASSERT_EQ(plan.entries().size(), 2U);
  EXPECT_EQ(plan.entries()[0].labels, 1U);
  EXPECT_EQ(plan.entries()[1].values, Columns{2});
}

/// The columns of each value, one list behind the other, as looking at all values before tells them.
std::vector<Columns> slowlyPlanned(const KRCSVMapping& mapping) {
  using Part = KRCSVTarget::Part;
  struct Entry {
    const KRCSVColumn* first;
    KRString label;
    bool hasValue = false;
    bool hasLabels = false;
    Columns columns{};
  };
  std::vector<Entry> entries;
  for (size_t i = 0; i < mapping.columns().size(); ++i) {
    const KRCSVColumn& column = mapping.columns()[i];
    const Part part = column.target.part;
    if (column.target.isIgnored() || !KRProperty::propertyWithOrdinal(column.target.property)->isMultiple()) continue;
    const bool isField = part >= Part::PostOfficeBox && part <= Part::CountryCode;
    const bool isPart = isField || part == Part::Year || part == Part::Month || part == Part::Day ||
                        column.target.property == KROrdinal::Address;
    const bool isBeside = part == Part::Label || part == Part::Service || part == Part::Main;
    auto found = std::find_if(entries.rbegin(), entries.rend(), [&](const Entry& each) {
      const bool isOne = each.first->target.property == column.target.property && each.first->number == column.number;
      const bool isSame = each.label == column.label || each.label.isNothing() || column.label.isNothing();
      if (!isOne || isBeside) return isOne;
      if (isPart) return isSame;
      return !each.hasValue && (column.number == 0 ? each.hasLabels : isSame);
    });
    if (found == entries.rend()) {
      entries.push_back({&column, {}});
      found = entries.rbegin();
    }
    if (found->label.isNothing()) found->label = column.label;
    found->hasLabels = found->hasLabels || part == Part::Label;
    found->hasValue =
        found->hasValue || (!isBeside && !isField && part != Part::Year && part != Part::Month && part != Part::Day);
    found->columns.push_back(i);
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.first->target.property < b.first->target.property; });
  std::vector<Columns> lists;
  for (const Entry& each : entries) lists.push_back(each.columns);
  return lists;
}

/// All of the columns of a value, in ascending order.
Columns columnsOf(const KRCSVPlan::Entry& entry) {
  Columns columns = entry.values;
  for (const Columns& field : entry.fields) columns.insert(columns.end(), field.begin(), field.end());
  for (const size_t each :
       {entry.labels, entry.service, entry.main, entry.countryCode, entry.year, entry.month, entry.day}) {
    if (each != KRCSVPlan::kNone) columns.push_back(each);
  }
  std::sort(columns.begin(), columns.end());
  return columns;
}

TEST(KRCSVPlan, PutsColumnsTogetherAsLookingAtAllValuesDoes) {
  constexpr const char* kHeadings[] = {"Phone",
                                       "Phone 1 - Value",
                                       "Phone 1 - Label",
                                       "Phone 2 - Value",
                                       "Phone - Type",
                                       "Home Phone",
                                       "E-mail Address",
                                       "E-mail 1 - Value",
                                       "Home Street",
                                       "Business Street",
                                       "Home City",
                                       "Street",
                                       "Anniversary",
                                       "Address 1 - Street",
                                       "Shoe",
                                       "Address 2 - City",
                                       "Home Address",
                                       "Address 1 - Formatted"};
  std::mt19937 random(7);
  for (int run = 0; run < 500; ++run) {
    KRStringList headings;
    for (int i = 0; i < 12; ++i) headings.push_back(KRString(std::string(kHeadings[random() % std::size(kHeadings)])));
    const KRCSVMapping mapping = KRCSVMapping::of(headings, {});
    const KRCSVPlan plan(mapping);
    std::vector<Columns> expected = slowlyPlanned(mapping);
    ASSERT_EQ(plan.entries().size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
      // Of two columns of what there is once, such as a label, the last counts.
      const Columns columns = columnsOf(plan.entries()[i]);
      EXPECT_TRUE(std::includes(expected[i].begin(), expected[i].end(), columns.begin(), columns.end()));
      EXPECT_EQ(columns.back(), expected[i].back());
    }
  }
}

TEST(KRCSVPlan, TakesTimeInProportionToTheColumns) {
  const auto secondsFor = [](int values) {
    KRStringList headings;
    for (int i = 1; i <= values; ++i) {
      headings.push_back(KRString("Phone " + std::to_string(i) + " - Label"));
      headings.push_back(KRString("Phone " + std::to_string(i) + " - Value"));
    }
    const KRCSVMapping mapping = KRCSVMapping::of(headings, {});
    return krBestSeconds([&] { EXPECT_EQ(KRCSVPlan(mapping).entries().size(), static_cast<size_t>(values)); });
  };
  const double few = secondsFor(10000);
  const double many = secondsFor(40000);
  // A quadratic step would cost sixteen times as much.
  EXPECT_LT(many / few, 10) << few << " " << many;
}

}  // namespace
