#include "detectors/KRIssueFindBlankName.h"

#include <gmock/gmock.h>

#include "platform/KRSupportFuction.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindBlankNameTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindBlankName, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindBlankNameTest, KRPersonKinds);

TYPED_TEST(KRIssueFindBlankNameTest, FindsPersonsWithoutFirstAndLast) {
  const KRScan scan = this->scan(
      {{}, {.hasName = true}, {.middle = "Q"_kr}, {.nickname = "Annie"_kr}, {.first = "Ann"_kr}, {.last = "Lee"_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 2, 3));
}

TYPED_TEST(KRIssueFindBlankNameTest, TakesAnEmptyNameForAName) {
  const KRScan scan = this->scan({{.first = ""_kr, .last = ""_kr}, {.first = ""_kr}, {.last = ""_kr}});
  EXPECT_FALSE(scan.context());
}

TYPED_TEST(KRIssueFindBlankNameTest, FindsOrganisationsWithoutCompanyName) {
  const KRScan scan = this->scan({{.isOrganization = true},
                                  {.company = ""_kr, .isOrganization = true},
                                  {.first = "Ann"_kr, .isOrganization = true},
                                  {.company = "Acme"_kr, .isOrganization = true},
                                  {.company = " "_kr, .isOrganization = true}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 2));
}

TYPED_TEST(KRIssueFindBlankNameTest, DoesNotTakeACompanyForThePersonsName) {
  EXPECT_THAT(this->scan({{.company = "Acme"_kr}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindBlankNameTest, SaysSoInTheUsersLanguageAndCarriesNoValue) {
  const auto finding = this->scan({{}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), KRSupportFuction::loadString("KR_Issue_Info_BlankName"_kr));
  EXPECT_TRUE(finding->info().isNothing());
}

TYPED_TEST(KRIssueFindBlankNameTest, CountsFromZeroAndNeverReachesTheEnd) {
  EXPECT_THAT(this->scan({{}, {}, {}, {.first = "Ann"_kr}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

}  // namespace
