#include "detectors/KRIssueFindUnusualSuffix.h"

#include <gmock/gmock.h>

#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindUnusualSuffixTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindUnusualSuffix, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindUnusualSuffixTest, KRPersonKinds);

TYPED_TEST(KRIssueFindUnusualSuffixTest, FindsWhatIsNotAllowed) {
  const KRAllowedLists lists({.suffixes = {"Jr."_kr}});
  const KRScan scan = this->scan({{.suffix = "Jr."_kr}, {.suffix = "III"_kr}, {.first = "Ann"_kr}, {.suffix = ""_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(1));
}

TYPED_TEST(KRIssueFindUnusualSuffixTest, ComparesExactly) {
  const KRAllowedLists lists({.suffixes = {"Jr."_kr}});
  const KRScan scan =
      this->scan({{.suffix = "jr."_kr}, {.suffix = "Jr. "_kr}, {.suffix = " Jr."_kr}, {.suffix = " "_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 2, 3));
}

TYPED_TEST(KRIssueFindUnusualSuffixTest, FindsEveryTextWhenNothingIsAllowed) {
  const KRAllowedLists lists({});
  EXPECT_THAT(this->scan({{.suffix = "Jr."_kr}, {}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindUnusualSuffixTest, DoesNotMixTheTwoLists) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}, .suffixes = {"Jr."_kr}});
  const KRScan scan = this->scan({{.title = "Dr."_kr, .suffix = "Jr."_kr}, {.title = "Jr."_kr, .suffix = "Dr."_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(1));
}

TYPED_TEST(KRIssueFindUnusualSuffixTest, PassesOrganisationsOver) {
  const KRAllowedLists lists({});
  EXPECT_FALSE(this->scan({{.suffix = "III"_kr, .isOrganization = true}}).context());
}

TYPED_TEST(KRIssueFindUnusualSuffixTest, CarriesTheTextAndQuotesIt) {
  const KRAllowedLists lists({});
  const auto finding = this->scan({{.suffix = "%@ \"x\""_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), "The suffix \"%@ \"x\"\" of this Contact is invalid.");
  EXPECT_EQ(finding->info().text(), "%@ \"x\"");
}

TYPED_TEST(KRIssueFindUnusualSuffixTest, CountsFromZeroAndNeverReachesTheEnd) {
  const KRAllowedLists lists({});
  EXPECT_THAT(this->scan({{}, {.suffix = "III"_kr}, {}, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TEST(KRIssueFindUnusualSuffixBuilder, MakesAFindingAboutOnePerson) {
  const KRIssueFindUnusualSuffix detector;
  const auto person = krPerson<KRHostPerson>({});
  const auto finding = detector.objectForPerson(person.get(), "III"_kr);
  ASSERT_EQ(finding->persons().count(), 1U);
  EXPECT_EQ(finding->persons().first(), person.get());
  EXPECT_EQ(finding->describe(), "The suffix \"III\" of this Contact is invalid.");
  EXPECT_EQ(finding->info().text(), "III");
}

}  // namespace
