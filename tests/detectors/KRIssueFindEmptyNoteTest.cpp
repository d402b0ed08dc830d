#include "detectors/KRIssueFindEmptyNote.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindEmptyNoteTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindEmptyNote, Person>(sketches);
  }
};
TYPED_TEST_SUITE(KRIssueFindEmptyNoteTest, KRPersonKinds);

TYPED_TEST(KRIssueFindEmptyNoteTest, FindsAbsentAndEmptyNotes) {
  EXPECT_THAT(this->scan({{}, {.note = ""_kr}, {.note = "x"_kr}}).found(), ElementsAre(0, 1));
}

TYPED_TEST(KRIssueFindEmptyNoteTest, TakesANoteOfSpacesForANote) {
  EXPECT_FALSE(this->scan({{.note = " "_kr}, {.note = "\n"_kr}, {.note = "   "_kr}}).context());
}

TYPED_TEST(KRIssueFindEmptyNoteTest, LooksAtOrganisationsToo) {
  EXPECT_THAT(this->scan({{.company = "Acme"_kr, .isOrganization = true}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindEmptyNoteTest, SaysWhatIsWrong) {
  const auto finding = this->scan({{}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), "This Contact's notes is empty.");
  EXPECT_TRUE(finding->info().isNothing());
}

TYPED_TEST(KRIssueFindEmptyNoteTest, CountsFromZeroAndNeverReachesTheEnd) {
  EXPECT_THAT(this->scan({{}, {.note = "x"_kr}, {}, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

}  // namespace
