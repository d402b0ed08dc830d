#include "detectors/KRIssueFindSharePhone.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

using Sketches = std::vector<KRPersonSketch>;

template <class Person>
class KRIssueFindSharePhoneTest : public testing::Test {
 protected:
  static KRScan scan(const Sketches& sketches) { return KRScan::of<KRIssueFindSharePhone, Person>(sketches); }
};
TYPED_TEST_SUITE(KRIssueFindSharePhoneTest, KRPersonKinds);

TYPED_TEST(KRIssueFindSharePhoneTest, ComparesExactly) {
  EXPECT_THAT(this->scan({{.phones = {"555-1234"_kr}},
                          {.phones = {"5551234"_kr}},
                          {.phones = {"555-1234"_kr}},
                          {.phones = {"555 1234"_kr}}})
                  .groups(),
              ElementsAre(ElementsAre(0, 2)));
}

TYPED_TEST(KRIssueFindSharePhoneTest, ReportsUpToSeventyForContactsAndThenForNumbers) {
  const KRScan scan = this->scan({{.phones = {"1"_kr, "2"_kr}}, {.phones = {"1"_kr, "3"_kr}}, {}});
  EXPECT_THAT(
      scan.progress(),
      ElementsAre(0.0, static_cast<double>(1.0F / 3.0F * 70.0F), static_cast<double>(2.0F / 3.0F * 70.0F), 70.0,
                  static_cast<double>(70.0F + 1.0F / 3.0F * 30.0F), static_cast<double>(70.0F + 2.0F / 3.0F * 30.0F)));
  EXPECT_THAT(this->scan({{.phones = {"1"_kr, "2"_kr}}, {}}).progress(), ElementsAre(0.0, 35.0, 70.0, 85.0));
  EXPECT_THAT(this->scan({{}, {}}).progress(), ElementsAre(0.0, 35.0));
}

TYPED_TEST(KRIssueFindSharePhoneTest, TellsWhetherAPersonHoldsANumberOrIsListedWithIt) {
  const KRIssueFindSharePhone detector;
  const auto person = krPerson<TypeParam>({.phones = {"1"_kr, "2"_kr}});
  EXPECT_TRUE(detector.personHasPhone(person.get(), "2"_kr));
  EXPECT_FALSE(detector.personHasPhone(person.get(), "2 "_kr));
  EXPECT_FALSE(detector.personHasPhone(person.get(), {}));
  EXPECT_FALSE(detector.personHasPhone(nullptr, "2"_kr));
  const auto other = krPerson<TypeParam>({});
  const auto context = krMake<KRIssueContext>(krIssueNamed("an issue of this test"_kr));
  EXPECT_FALSE(detector.existPerson(person.get(), context.get(), "1"_kr));
  context->addIssueObject(detector.objectForPersons(KRPersonArray(person), "1"_kr).get());
  EXPECT_TRUE(detector.existPerson(person.get(), context.get(), "1"_kr));
  EXPECT_FALSE(detector.existPerson(person.get(), context.get(), "2"_kr));
  EXPECT_FALSE(detector.existPerson(other.get(), context.get(), "1"_kr));
  EXPECT_FALSE(detector.existPerson(person.get(), nullptr, "1"_kr));
}

}  // namespace
