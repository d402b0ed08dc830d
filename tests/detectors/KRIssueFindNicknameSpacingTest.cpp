#include "detectors/KRIssueFindNicknameSpacing.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindNicknameSpacingTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindNicknameSpacing, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindNicknameSpacingTest, KRPersonKinds);

TYPED_TEST(KRIssueFindNicknameSpacingTest, FindsNicknamesOfBlanksOnly) {
  const KRScan scan = this->scan({{.nickname = " "_kr}, {.nickname = "   "_kr}, {.nickname = "  "_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 2));
}

TYPED_TEST(KRIssueFindNicknameSpacingTest, LeavesAbsentEmptyAndOtherNicknamesAlone) {
  const KRScan scan =
      this->scan({{}, {.nickname = ""_kr}, {.nickname = " a"_kr}, {.nickname = "a "_kr}, {.nickname = "a"_kr}});
  EXPECT_FALSE(scan.context());
}

TYPED_TEST(KRIssueFindNicknameSpacingTest, CountsNoOtherWhiteSpace) {
  const KRScan scan = this->scan({{.nickname = "\t"_kr},
                                  {.nickname = " \n"_kr},
                                  {.nickname = "\u00A0"_kr},
                                  {.nickname = " \u3000"_kr},
                                  {.nickname = "\u2003"_kr}});
  EXPECT_FALSE(scan.context());
}

TYPED_TEST(KRIssueFindNicknameSpacingTest, LooksAtOrganisationsToo) {
  EXPECT_THAT(this->scan({{.nickname = " "_kr, .isOrganization = true}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindNicknameSpacingTest, SaysWhatIsWrong) {
  const auto finding = this->scan({{.nickname = " "_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), "The nickname of this contact only has spaces. It should be removed.");
  EXPECT_TRUE(finding->info().isNothing());
}

TYPED_TEST(KRIssueFindNicknameSpacingTest, CountsFromZeroAndNeverReachesTheEnd) {
  EXPECT_THAT(this->scan({{}, {.nickname = " "_kr}, {}, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

}  // namespace
