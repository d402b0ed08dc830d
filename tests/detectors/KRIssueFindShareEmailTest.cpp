#include "detectors/KRIssueFindShareEmail.h"

#include <gmock/gmock.h>

#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

using Sketches = std::vector<KRPersonSketch>;

template <class Person>
class KRIssueFindShareEmailTest : public testing::Test {
 protected:
  static KRScan scan(const Sketches& sketches) { return KRScan::of<KRIssueFindShareEmail, Person>(sketches); }
};
TYPED_TEST_SUITE(KRIssueFindShareEmailTest, KRPersonKinds);

TYPED_TEST(KRIssueFindShareEmailTest, ComparesExactly) {
  EXPECT_FALSE(
      this->scan({{.emails = {"a@b.example"_kr}}, {.emails = {"A@b.example"_kr}}, {.emails = {"a@b.example "_kr}}})
          .context());
}

TYPED_TEST(KRIssueFindShareEmailTest, ReportsUpToSeventyAndStaysThere) {
  const KRScan scan = this->scan({{.emails = {"1"_kr, "2"_kr}}, {.emails = {"1"_kr}}, {}});
  EXPECT_THAT(scan.progress(), ElementsAre(0.0, static_cast<double>(1.0F / 3.0F * 70.0F),
                                           static_cast<double>(2.0F / 3.0F * 70.0F), 70.0, 70.0));
  EXPECT_THAT(this->scan({{.emails = {"1"_kr}}, {}}).progress(), ElementsAre(0.0, 35.0, 70.0));
  EXPECT_THAT(this->scan({{}, {}}).progress(), ElementsAre(0.0, 35.0));
}

TYPED_TEST(KRIssueFindShareEmailTest, TellsWhetherAPersonNeedsNoFurtherLook) {
  const KRIssueFindShareEmail detector;
  const auto has = [&](const std::vector<KRString>& emails, const KRStringList& done) {
    bool needRemove = false;
    const auto person = krPerson<TypeParam>({.emails = emails});
    const bool found = detector.personHasEmail(person.get(), "e"_kr, done, needRemove);
    return std::make_pair(found, needRemove);
  };
  EXPECT_EQ(has({"e"_kr}, {}), std::make_pair(true, true));
  EXPECT_EQ(has({"e"_kr, "f"_kr}, {}), std::make_pair(true, false));
  EXPECT_EQ(has({"e"_kr, "f"_kr}, {"f"_kr}), std::make_pair(true, true));
  EXPECT_EQ(has({"e"_kr, "e"_kr}, {}), std::make_pair(true, false)) << "the second one is not counted";
  EXPECT_EQ(has({"e"_kr}, {"e"_kr}), std::make_pair(false, true)) << "done with before it is looked for";
  EXPECT_EQ(has({"f"_kr}, {"f"_kr}), std::make_pair(false, true));
  EXPECT_EQ(has({"E"_kr}, {}), std::make_pair(false, false));
  EXPECT_EQ(has({}, {}), std::make_pair(false, true));
  bool asBefore = true;
  EXPECT_FALSE(detector.personHasEmail(krPerson<TypeParam>({.emails = {"x"_kr}}).get(), "e"_kr, {}, asBefore));
  EXPECT_TRUE(asBefore);
}

}  // namespace
