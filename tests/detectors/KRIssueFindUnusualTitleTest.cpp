#include "detectors/KRIssueFindUnusualTitle.h"

#include <gmock/gmock.h>

#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindUnusualTitleTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindUnusualTitle, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindUnusualTitleTest, KRPersonKinds);

TYPED_TEST(KRIssueFindUnusualTitleTest, FindsWhatIsNotAllowed) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}});
  const KRScan scan = this->scan({{.title = "Dr."_kr}, {.title = "Count"_kr}, {.first = "Ann"_kr}, {.title = ""_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(1));
}

TYPED_TEST(KRIssueFindUnusualTitleTest, ComparesExactly) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}});
  const KRScan scan = this->scan({{.title = "dr."_kr}, {.title = "Dr. "_kr}, {.title = " Dr."_kr}, {.title = " "_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 1, 2, 3));
}

TYPED_TEST(KRIssueFindUnusualTitleTest, FindsEveryTextWhenNothingIsAllowed) {
  const KRAllowedLists lists({});
  EXPECT_THAT(this->scan({{.title = "Dr."_kr}, {}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindUnusualTitleTest, DoesNotMixTheTwoLists) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}, .suffixes = {"Jr."_kr}});
  const KRScan scan = this->scan({{.title = "Dr."_kr, .suffix = "Jr."_kr}, {.title = "Jr."_kr, .suffix = "Dr."_kr}});
  EXPECT_THAT(scan.found(), ElementsAre(1));
}

TYPED_TEST(KRIssueFindUnusualTitleTest, PassesOrganisationsOver) {
  const KRAllowedLists lists({});
  EXPECT_FALSE(this->scan({{.title = "Count"_kr, .isOrganization = true}}).context());
}

TYPED_TEST(KRIssueFindUnusualTitleTest, CarriesTheTextAndQuotesIt) {
  const KRAllowedLists lists({});
  const auto finding = this->scan({{.title = "%@ \"x\""_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), "The prefix \"%@ \"x\"\" of this Contact is invalid.");
  EXPECT_EQ(finding->info().text(), "%@ \"x\"");
}

TYPED_TEST(KRIssueFindUnusualTitleTest, CountsFromZeroAndNeverReachesTheEnd) {
  const KRAllowedLists lists({});
  EXPECT_THAT(this->scan({{}, {.title = "Count"_kr}, {}, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TEST(KRIssueFindUnusualTitleBuilder, MakesAFindingAboutOnePerson) {
  const KRIssueFindUnusualTitle detector;
  const auto person = krPerson<KRHostPerson>({});
  const auto finding = detector.objectForPerson(person.get(), "Count"_kr);
  ASSERT_EQ(finding->persons().count(), 1U);
  EXPECT_EQ(finding->persons().first(), person.get());
  EXPECT_EQ(finding->describe(), "The prefix \"Count\" of this Contact is invalid.");
  EXPECT_EQ(finding->info().text(), "Count");
}

}  // namespace
