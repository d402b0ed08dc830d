#include "contacts/model/KRMutableSingleValue.h"

#include <gtest/gtest.h>

#include "tests/contacts/ModelSamples.h"

namespace {

TEST(KRLabel, SetsBothNamesToTheSameText) {
  const KRLabel* plain = krMake<KRLabel>("home"_kr).detach();
  EXPECT_EQ(plain->name(), "home");
  EXPECT_EQ(plain->displayName(), "home");
  plain->release();
  const auto empty = krMake<KRLabel>();
  EXPECT_TRUE(empty->name().isNothing());
  EXPECT_TRUE(empty->displayName().isNothing());
}

TEST(KRLabel, IsEqualByNameAlone) {
  const auto a = krMake<KRLabel>("home"_kr);
  const auto b = krMake<KRLabel>("home"_kr);
  b->setDisplayName("Zuhause"_kr);
  EXPECT_TRUE(a->isEqual(b.get()));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqual(krMake<KRLabel>("Home"_kr).get()));
  EXPECT_FALSE(krMake<KRLabel>()->isEqual(krMake<KRLabel>(""_kr).get()));
}

TEST(KRMutableSingleValue, HoldsNothingUntilSet) {
  const auto single = krMake<KRMutableSingleValue>();
  EXPECT_TRUE(single->value().isNothing());
  EXPECT_EQ(single->label(), nullptr);
  EXPECT_EQ(single->type(), 0);
}

TEST(KRMutableSingleValue, KeepsTheVeryObjects) {
  const auto phone = krMake<KRObjectPhone>("1"_kr);
  const auto label = krMake<KRLabel>("home"_kr);
  auto single = krMake<KRMutableSingleValue>();
  single->setLabel(label);
  single->setValue(phone);
  single->setType(KRValueType::Phone);
  EXPECT_EQ(single->value().as<KRObjectPhone>(), phone.get());
  EXPECT_EQ(single->label().get(), label.get());
  EXPECT_EQ(single->type(), 6);
}

TEST(KRMutableSingleValue, DiffersByLabelValueOrType) {
  const auto value = [](const char* text, const char* label, int32_t type) {
    return krMake<KRMutableSingleValue>(KRString(text), krMake<KRLabel>(KRString(label)), type);
  };
  const auto base = value("x", "home", 0);
  EXPECT_TRUE(base->isEqual(value("x", "home", 0).get()));
  EXPECT_FALSE(base->isEqual(value("y", "home", 0).get()));
  EXPECT_FALSE(base->isEqual(value("x", "work", 0).get()));
  EXPECT_FALSE(base->isEqual(value("x", "home", 1).get()));
  EXPECT_FALSE(base->isEqual(krMake<KRMutableSingleValue>("x"_kr, KRRef<KRLabel>(), 0).get()));
  EXPECT_FALSE(base->isEqual(krMake<KRObjectPhone>("x"_kr).get()));
}

TEST(KRStoredValue, KeepsTheLawsOfEqualityWhateverItHolds) {
  ModelSamples samples(31);
  std::vector<KRRef<KRStoredValue>> values;
  for (int i = 0; i < 700; ++i) values.push_back(samples.anyStored());
  size_t equal = 0;
  for (const auto& a : values) {
    EXPECT_TRUE(a->isEqual(a.get()));
    for (const auto& b : values) {
      ASSERT_EQ(a->isEqual(b.get()), b->isEqual(a.get()));
      if (a == b || !a->isEqual(b.get())) continue;
      ++equal;
      ASSERT_EQ(a->hash(), b->hash()) << a->description().view();
      ASSERT_EQ(a->description(), b->description());
    }
  }
  EXPECT_GT(equal, 0U);
}

TEST(KRSingleValue, IsNamedAfterItsProperty) {
  const KRProperty* property = KRProperty::propertyWithName(KRProPertyBirthday);
  const auto single = krSingleValue(*KRDate::make(1990, 3, 2), *property);
  ASSERT_NE(single, nullptr);
  EXPECT_EQ(single->label()->name(), property->displayName());
  EXPECT_EQ(single->label()->displayName(), property->displayName());
  EXPECT_EQ(single->type(), KRValueType::Date);
  EXPECT_EQ(single->value().description(), "1990-03-02");
}

TEST(KRSingleValue, IsNotMadeOfNothing) {
  EXPECT_EQ(krSingleValue(KRValue(), *KRProperty::propertyWithName(KRProPertyNote)), nullptr);
  EXPECT_NE(krSingleValue(""_kr, *KRProperty::propertyWithName(KRProPertyNote)), nullptr);
}

}  // namespace
