#include "import/KRCSVTarget.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(KRCSVTarget, IsFoundByEachOfItsNamesInAnyCase) {
  std::set<std::string> seen;
  for (const KRString& name : KRCSVTarget::names()) {
    const auto target = KRCSVTarget::named(name);
    ASSERT_TRUE(target) << name.view();
    EXPECT_EQ(target->name(), name);
    EXPECT_TRUE(seen.insert(std::string(name.view())).second) << name.view();
  }
  EXPECT_EQ(KRCSVTarget::named("FIRSTNAME")->part, KRCSVTarget::Part::First);
  EXPECT_FALSE(KRCSVTarget::named("first name"));
  EXPECT_FALSE(KRCSVTarget::named(KRText()));
}

TEST(KRCSVTarget, HasANameForEveryStandardProperty) {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const auto target = KRCSVTarget::named(property->name());
    ASSERT_TRUE(target) << property->name().view();
    EXPECT_EQ(target->property, property->ordinal());
    EXPECT_EQ(target->part, KRCSVTarget::Part::Whole);
  }
}

}  // namespace
