#include "detectors/KRIssueFindCompanyNoTitle.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindCompanyNoTitleTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindCompanyNoTitle, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindCompanyNoTitleTest, KRPersonKinds);

TYPED_TEST(KRIssueFindCompanyNoTitleTest, FindsACompanyNameWithoutJobTitle) {
  const KRScan scan = this->scan({{.company = "Acme"_kr},
                                  {.company = "Acme"_kr, .jobTitle = ""_kr},
                                  {.company = "Acme"_kr, .jobTitle = "Clerk"_kr},
                                  {.company = "Acme"_kr, .jobTitle = " "_kr},
                                  {.company = " "_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 4));
}

TYPED_TEST(KRIssueFindCompanyNoTitleTest, LeavesPersonsWithoutCompanyAlone) {
  EXPECT_FALSE(this->scan({{}, {.company = ""_kr}, {.jobTitle = "Clerk"_kr}}).context());
}

TYPED_TEST(KRIssueFindCompanyNoTitleTest, PassesOrganisationsOver) {
  EXPECT_FALSE(this->scan({{.company = "Acme"_kr, .isOrganization = true}}).context());
}

TYPED_TEST(KRIssueFindCompanyNoTitleTest, TakesTheNamePrefixForNoJobTitle) {
  EXPECT_THAT(this->scan({{.title = "Dr."_kr, .company = "Acme"_kr}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindCompanyNoTitleTest, AnswersCompanyAndJobTitleOfAPerson) {
  const KRIssueFindCompanyNoTitle detector;
  const auto full = krPerson<TypeParam>({.company = "Acme"_kr, .jobTitle = "Clerk"_kr});
  EXPECT_EQ(detector.companyNameForPerson(full.get()), "Acme");
  EXPECT_EQ(detector.jobTitleForPerson(full.get()), "Clerk");
  const auto empty = krPerson<TypeParam>({.company = ""_kr, .jobTitle = ""_kr});
  EXPECT_TRUE(detector.companyNameForPerson(empty.get()).isNothing());
  EXPECT_TRUE(detector.jobTitleForPerson(empty.get()).isNothing());
  const auto none = krPerson<TypeParam>({});
  EXPECT_TRUE(detector.companyNameForPerson(none.get()).isNothing());
  EXPECT_TRUE(detector.jobTitleForPerson(none.get()).isNothing());
  EXPECT_TRUE(detector.companyNameForPerson(nullptr).isNothing());
  EXPECT_TRUE(detector.jobTitleForPerson(nullptr).isNothing());
}

TYPED_TEST(KRIssueFindCompanyNoTitleTest, SaysWhatIsWrongWithItsBlankAtTheEnd) {
  const auto finding = this->scan({{.company = "Acme"_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), "This Contact has company name, but haven't set a job title. ");
  EXPECT_TRUE(finding->info().isNothing());
}

TYPED_TEST(KRIssueFindCompanyNoTitleTest, CountsFromZeroAndNeverReachesTheEnd) {
  EXPECT_THAT(this->scan({{}, {.company = "Acme"_kr}, {}, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

}  // namespace
