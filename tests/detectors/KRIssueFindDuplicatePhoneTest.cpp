#include "detectors/KRIssueFindDuplicatePhone.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindDuplicatePhoneTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindDuplicatePhone, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindDuplicatePhoneTest, KRPersonKinds);

TYPED_TEST(KRIssueFindDuplicatePhoneTest, FindsContactsThatHoldAValueTwice) {
  const KRScan scan = this->scan({{.phones = {"1"_kr, "2"_kr}},
                                  {.phones = {"1"_kr, "2"_kr, "1"_kr}},
                                  {},
                                  {.phones = {"1"_kr}},
                                  {.phones = {"3"_kr, "3"_kr}, .isOrganization = true}});
  EXPECT_THAT(scan.found(), ElementsAre(1, 4));
  EXPECT_EQ(scan.findings()[0]->describe(), "This Contact has duplicate phone numbers.");
}

TYPED_TEST(KRIssueFindDuplicatePhoneTest, ComparesExactly) {
  for (const KRString& other : {"555 1234"_kr, "5551234"_kr, "555-1234 "_kr}) {
    EXPECT_FALSE(this->scan({{.phones = {"555-1234"_kr, other}}}).context()) << other.view();
  }
}

TYPED_TEST(KRIssueFindDuplicatePhoneTest, PassesEntriesWithoutAValueOverButNotEmptyOnes) {
  EXPECT_FALSE(this->scan({{.phones = {KRString(), KRString(), ""_kr}}}).context());
  EXPECT_THAT(this->scan({{.phones = {""_kr, KRString(), ""_kr}}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindDuplicatePhoneTest, ReportsAfterEachContactFromZero) {
  EXPECT_THAT(this->scan({{.phones = {"1"_kr, "1"_kr}}, {}}).progress(), ElementsAre(0.0, 50.0));
}

TYPED_TEST(KRIssueFindDuplicatePhoneTest, FindsTheOnlyRepetitionAmongThousands) {
  std::vector<KRString> values;
  for (int i = 0; i < 10'000; ++i) values.emplace_back(std::to_string(i));
  EXPECT_FALSE(this->scan({{.phones = values}}).context());
  values[9'999] = "8"_kr;
  EXPECT_THAT(this->scan({{.phones = values}, {.phones = {"8"_kr}}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindDuplicatePhoneTest, ListsEachRepeatedNumberOnceInTheOrderOfRepetition) {
  const auto info = [&](const std::vector<KRString>& phones) {
    return this->scan({{.phones = phones}}).only()->info().description();
  };
  EXPECT_EQ(info({"A"_kr, "B"_kr, "A"_kr, "A"_kr, "B"_kr}), "(A, B)");
  EXPECT_EQ(info({"A"_kr, "B"_kr, "B"_kr, "C"_kr, "A"_kr}), "(B, A)");
  std::vector<KRString> many;
  for (int i = 0; i < 40; ++i) many.emplace_back(std::to_string(i % 20));
  EXPECT_EQ(info(many), "(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19)");
}

}  // namespace
