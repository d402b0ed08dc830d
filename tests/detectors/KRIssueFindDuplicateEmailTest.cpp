#include "detectors/KRIssueFindDuplicateEmail.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindDuplicateEmailTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindDuplicateEmail, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindDuplicateEmailTest, KRPersonKinds);

TYPED_TEST(KRIssueFindDuplicateEmailTest, FindsContactsThatHoldAValueTwice) {
  const KRScan scan = this->scan({{.emails = {"1"_kr, "2"_kr}},
                                  {.emails = {"1"_kr, "2"_kr, "1"_kr}},
                                  {},
                                  {.emails = {"1"_kr}},
                                  {.emails = {"3"_kr, "3"_kr}, .isOrganization = true}});
  EXPECT_THAT(scan.found(), ElementsAre(1, 4));
  EXPECT_EQ(scan.findings()[0]->describe(), "This Contact has duplicate email addresses.");
}

TYPED_TEST(KRIssueFindDuplicateEmailTest, ComparesExactly) {
  for (const KRString& other : {"A@b.example"_kr, "a@b.example "_kr}) {
    EXPECT_FALSE(this->scan({{.emails = {"a@b.example"_kr, other}}}).context()) << other.view();
  }
}

TYPED_TEST(KRIssueFindDuplicateEmailTest, PassesEntriesWithoutAValueOverButNotEmptyOnes) {
  EXPECT_FALSE(this->scan({{.emails = {KRString(), KRString(), ""_kr}}}).context());
  EXPECT_THAT(this->scan({{.emails = {""_kr, KRString(), ""_kr}}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindDuplicateEmailTest, ReportsAfterEachContactFromZero) {
  EXPECT_THAT(this->scan({{.emails = {"1"_kr, "1"_kr}}, {}}).progress(), ElementsAre(0.0, 50.0));
}

TYPED_TEST(KRIssueFindDuplicateEmailTest, FindsTheOnlyRepetitionAmongThousands) {
  std::vector<KRString> values;
  for (int i = 0; i < 10'000; ++i) values.emplace_back(std::to_string(i));
  EXPECT_FALSE(this->scan({{.emails = values}}).context());
  values[9'999] = "8"_kr;
  EXPECT_THAT(this->scan({{.emails = values}, {.emails = {"8"_kr}}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindDuplicateEmailTest, CarriesNoInfo) {
  EXPECT_TRUE(this->scan({{.emails = {"a"_kr, "b"_kr, "a"_kr, "b"_kr}}}).only()->info().isNothing());
}

}  // namespace
