#include "detectors/KRIssueFindIncompleteName.h"

#include <gmock/gmock.h>

#include "handles/KRIssueHandle.h"
#include "platform/KRSupportFuction.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindIncompleteNameTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindIncompleteName, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindIncompleteNameTest, KRPersonKinds);

TYPED_TEST(KRIssueFindIncompleteNameTest, FindsExactlyOneOfFirstAndLast) {
  const KRScan scan = this->scan({{.first = "Ann"_kr},
                                  {.last = "Lee"_kr},
                                  {.first = "Ann"_kr, .last = "Lee"_kr},
                                  {.middle = "Q"_kr},
                                  {.first = "Ann"_kr, .middle = "Q"_kr},
                                  {}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 4));
}

TYPED_TEST(KRIssueFindIncompleteNameTest, TakesAnEmptyPartForNone) {
  const KRScan scan = this->scan({{.first = ""_kr, .last = ""_kr},
                                  {.first = "Ann"_kr, .last = ""_kr},
                                  {.first = ""_kr, .last = "Lee"_kr},
                                  {.hasName = true}});
  EXPECT_THAT(scan.found(), ElementsAre(1, 2));
}

TYPED_TEST(KRIssueFindIncompleteNameTest, TakesABlankForAPart) {
  EXPECT_THAT(this->scan({{.first = " "_kr}, {.first = " "_kr, .last = "Lee"_kr}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindIncompleteNameTest, PassesOrganisationsOver) {
  EXPECT_FALSE(this->scan({{.first = "Ann"_kr, .isOrganization = true}}).context());
}

TYPED_TEST(KRIssueFindIncompleteNameTest, SaysSoInTheUsersLanguageAndCarriesNoValue) {
  const auto finding = this->scan({{.first = "Ann"_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), KRSupportFuction::loadString("KR_Issue_Info_IncompleteName"_kr));
  EXPECT_TRUE(finding->info().isNothing());
  EXPECT_FALSE(finding->handle());
}

TYPED_TEST(KRIssueFindIncompleteNameTest, CountsFromZeroAndNeverReachesTheEnd) {
  const std::vector<KRPersonSketch> four{{.first = "Ann"_kr}, {}, {.first = "Bo"_kr, .isOrganization = true}, {}};
  EXPECT_THAT(this->scan(four).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

}  // namespace
