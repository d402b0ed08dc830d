#include "detectors/KRIssueFindSpacingInFirst.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindSpacingInFirstTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindSpacingInFirst, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindSpacingInFirstTest, KRPersonKinds);

TYPED_TEST(KRIssueFindSpacingInFirstTest, FindsABlankAnywhereInTheFirstName) {
  const KRScan scan = this->scan(
      {{.first = " Ann"_kr}, {.first = "Ann "_kr}, {.first = "Mary Ann"_kr}, {.first = " "_kr, .last = "Lee"_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 2, 3));
}

TYPED_TEST(KRIssueFindSpacingInFirstTest, LeavesFirstNamesWithoutBlanksAlone) {
  const KRScan scan =
      this->scan({{}, {.first = ""_kr}, {.first = "Ann"_kr}, {.last = "van Dam"_kr}, {.middle = "A B"_kr}});
  EXPECT_FALSE(scan.context());
}

TYPED_TEST(KRIssueFindSpacingInFirstTest, CountsNoOtherWhiteSpace) {
  EXPECT_FALSE(
      this->scan({{.first = "Mary\tAnn"_kr}, {.first = "Mary\u00A0Ann"_kr}, {.first = "\u3000"_kr}}).context());
}

TYPED_TEST(KRIssueFindSpacingInFirstTest, PassesOrganisationsOver) {
  EXPECT_FALSE(this->scan({{.first = "Mary Ann"_kr, .isOrganization = true}}).context());
}

TYPED_TEST(KRIssueFindSpacingInFirstTest, SaysWhatIsWrong) {
  const auto finding = this->scan({{.first = "Mary Ann"_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), "This Contact's first name has blank spaces.");
  EXPECT_TRUE(finding->info().isNothing());
}

TYPED_TEST(KRIssueFindSpacingInFirstTest, CountsFromZeroAndNeverReachesTheEnd) {
  EXPECT_THAT(this->scan({{.first = " "_kr}, {}, {}, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

}  // namespace
