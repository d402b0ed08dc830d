#include "contacts/model/KRObjectAddress.h"

#include <gtest/gtest.h>

#include "contacts/model/KRAddressFormater.h"
#include "contacts/model/KRStoredReading.h"
#include "tests/contacts/ModelSamples.h"

namespace {

TEST(KRObjectAddress, KeepsStandardAndFurtherFields) {
  auto address = krMake<KRObjectAddress>();
  address->setStringValue("1 Main Road"_kr, "street"_kr);
  address->setStringValue("Zone 9"_kr, "zone"_kr);
  address->setStringValue("Block 4"_kr, "block"_kr);
  EXPECT_EQ(address->stringValue("street"), "1 Main Road");
  EXPECT_EQ(address->stringValue("zone"), "Zone 9");
  EXPECT_TRUE(address->stringValue("city").isNothing());
  EXPECT_TRUE(address->stringValue("area").isNothing());
  ASSERT_EQ(address->furtherFields().size(), 2U);
  EXPECT_EQ(address->furtherFields()[0].name, "block");
  EXPECT_EQ(address->standardFields()[static_cast<size_t>(KRAddressField::Street)], "1 Main Road");
}

TEST(KRObjectAddress, RemovesAFieldThatIsSetToNothing) {
  for (const char* name : {"city", "zone"}) {
    for (const KRString& nothing : {KRString(), ""_kr}) {
      auto address = krMake<KRObjectAddress>();
      address->setStringValue("x"_kr, KRString(name));
      address->setStringValue("y"_kr, KRString(name));
      EXPECT_EQ(address->stringValue(name), "y");
      address->setStringValue(nothing, KRString(name));
      EXPECT_TRUE(address->stringValue(name).isNothing());
      EXPECT_TRUE(address->isequalToAddress(krMake<KRObjectAddress>().get()));
    }
  }
}

TEST(KRObjectAddress, IgnoresAFieldWithoutName) {
  auto address = krMake<KRObjectAddress>();
  address->setStringValue("x"_kr, KRString());
  EXPECT_TRUE(address->isequalToAddress(krMake<KRObjectAddress>().get()));
}

TEST(KRObjectAddress, IsNotEqualToNothing) {
  const auto address = krMake<KRObjectAddress>();
  EXPECT_FALSE(address->isequalToAddress(nullptr));
  EXPECT_FALSE(address->isEqual(krMake<KRLabel>().get()));
}

TEST(KRObjectAddress, SeesTheCountryAsWrittenBesideItsCode) {
  auto german = krMake<KRObjectAddress>();
  german->setCountryCode("DE"_kr);
  german->setStringValue("Germany"_kr, "country"_kr);
  auto deutsch = krMake<KRObjectAddress>();
  deutsch->setCountryCode("DE"_kr);
  deutsch->setStringValue("Deutschland"_kr, "country"_kr);
  EXPECT_FALSE(german->isequalToAddress(deutsch.get()));
  deutsch->setStringValue("Germany"_kr, "country"_kr);
  EXPECT_TRUE(german->isequalToAddress(deutsch.get()));
  deutsch->setCountryCode("de"_kr);
  EXPECT_FALSE(german->isequalToAddress(deutsch.get()));
}

/// The slow, obvious judge: all that an address answers, field by field.
bool sameFields(const KRObjectAddress& a, const KRObjectAddress& b) {
  for (size_t i = 0; i < kKRAddressFieldCount; ++i) {
    if (!(a.stringValue(kKRAddressFieldNames[i]) == b.stringValue(kKRAddressFieldNames[i]))) return false;
  }
  if (a.furtherFields().size() != b.furtherFields().size()) return false;
  for (const KRObjectAddress::Field& field : a.furtherFields()) {
    if (!(b.stringValue(field.name) == field.value)) return false;
  }
  return true;
}

TEST(KRObjectAddress, KeepsTheLawsOfEquality) {
  ModelSamples samples(23);
  size_t equal = 0;
  for (int i = 0; i < 40000; ++i) {
    const auto a = samples.address();
    const auto b = samples.address();
    const bool fields = sameFields(*a, *b);
    const bool same = fields && a->countryCode() == b->countryCode();
    equal += static_cast<size_t>(same);
    ASSERT_EQ(a->isequalToAddress(b.get()), same);
    ASSERT_EQ(a->isEqual(b.get()), same);
    ASSERT_EQ(krAddressView(*a) == krAddressView(*b), same);
    ASSERT_EQ(a->description() == b->description(), same) << a->description().view() << b->description().view();
    ASSERT_EQ(KRAddressFormater(a.get()).formatString() == KRAddressFormater(b.get()).formatString(), fields)
        << KRAddressFormater(a.get()).formatString().view();
    if (same) {
      ASSERT_EQ(a->hash(), b->hash());
    }
  }
  EXPECT_GT(equal, 100U);
}

TEST(KRAddressView, CountsAnEmptyFieldAsAbsent) {
  KRAddressView none;
  KRAddressView empty;
  empty.fields[0] = "";
  const std::vector<KRObjectAddress::Field> noFields;
  empty.further = &noFields;
  EXPECT_TRUE(none == empty);
  empty.countryCode = "";
  EXPECT_FALSE(none == empty);
}

}  // namespace
