#include "detectors/KRIssueFindShareEmail.h"

#include <gmock/gmock.h>

#include "tests/support/KRNamedPerson.h"
#include "tests/support/KRRandomSketches.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Sketches = std::vector<KRPersonSketch>;

template <class Person>
class KRIssueFindShareEmailTest : public testing::Test {
 protected:
  static KRScan scan(const Sketches& sketches) { return KRScan::of<KRIssueFindShareEmail, Person>(sketches); }
  static KRScan scan1(const Sketches& sketches) {
    return KRScan::of<Person>(sketches, [](const KRPersonList& persons, const KRProgress& progress) {
      return KRIssueFindShareEmail().find1(&persons, progress);
    });
  }
};
TYPED_TEST_SUITE(KRIssueFindShareEmailTest, KRPersonKinds);

/// The values that findings are about, in their order.
std::vector<KRString> values(const KRScan& scan) {
  std::vector<KRString> values;
  for (const auto& finding : scan.findings()) values.push_back(finding->info().text());
  return values;
}

TYPED_TEST(KRIssueFindShareEmailTest, ListsTheContactsThatHoldAValueInTheirOrder) {
  const KRScan scan = this->scan({{.emails = {"info@allotments.example"_kr}},
                                  {.emails = {"x"_kr}},
                                  {},
                                  {.emails = {"y"_kr, "info@allotments.example"_kr}},
                                  {.emails = {"info@allotments.example"_kr}}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 3, 4)));
  EXPECT_EQ(scan.only()->info().text(), "info@allotments.example");
  EXPECT_EQ(scan.only()->describe(), "Contacts in this list have the same email address \"info@allotments.example\"");
}

TYPED_TEST(KRIssueFindShareEmailTest, ListsValuesInTheOrderInWhichTheyWereFirstMet) {
  const KRScan scan = this->scan(
      {{.emails = {"1"_kr, "2"_kr}}, {.emails = {"3"_kr}}, {.emails = {"3"_kr, "2"_kr}}, {.emails = {"1"_kr}}});
  EXPECT_THAT(values(scan), ElementsAre("1"_kr, "2"_kr, "3"_kr));
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 3), ElementsAre(0, 2), ElementsAre(1, 2)));
}

TYPED_TEST(KRIssueFindShareEmailTest, ComparesExactly) {
  EXPECT_FALSE(
      this->scan({{.emails = {"a@b.example"_kr}}, {.emails = {"A@b.example"_kr}}, {.emails = {"a@b.example "_kr}}})
          .context());
}

TYPED_TEST(KRIssueFindShareEmailTest, ListsAContactOnceThatHoldsTheValueTwice) {
  EXPECT_THAT(this->scan({{.emails = {"1"_kr, "1"_kr, "2"_kr, "1"_kr}}, {.emails = {"1"_kr}}}).groups(),
              ElementsAre(ElementsAre(0, 1)));
  EXPECT_FALSE(this->scan({{.emails = {"1"_kr, "1"_kr}}, {}}).context());
}

TYPED_TEST(KRIssueFindShareEmailTest, KeepsPersonsAndOrganisationsApart) {
  EXPECT_FALSE(this->scan({{.emails = {"1"_kr}}, {.emails = {"1"_kr}, .isOrganization = true}}).context());
  const KRScan scan = this->scan({{.emails = {"1"_kr}, .isOrganization = true},
                                  {.emails = {"1"_kr}},
                                  {.emails = {"1"_kr}, .isOrganization = true}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 2)));
  EXPECT_EQ(scan.only()->info().text(), "1");
  EXPECT_EQ(scan.only()->describe(), "Contacts in this list have the same email address \"1\"");
}

TYPED_TEST(KRIssueFindShareEmailTest, ComparesKeysRatherThanValues) {
  // The mark of organisations within a person's value: the keys are the same text.
  const KRScan scan = this->scan({{.emails = {"1:OrgString##"_kr}}, {.emails = {"1"_kr}, .isOrganization = true}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 1)));
  EXPECT_EQ(scan.only()->info().text(), "1");
  const KRScan inside =
      this->scan({{.emails = {"a:OrgString##b:OrgString##"_kr}}, {.emails = {"a:OrgString##b:OrgString##"_kr}}});
  EXPECT_EQ(inside.only()->info().text(), "ab");
}

TYPED_TEST(KRIssueFindShareEmailTest, PassesEntriesWithoutAValueOverButNotEmptyOnes) {
  EXPECT_FALSE(this->scan({{.emails = {KRString()}}, {.emails = {KRString()}}}).context());
  EXPECT_FALSE(this->scan1({{.emails = {KRString()}}, {.emails = {KRString()}}}).context());
  EXPECT_THAT(values(this->scan({{.emails = {""_kr}}, {.emails = {""_kr}}})), ElementsAre(""_kr));
}

TYPED_TEST(KRIssueFindShareEmailTest, ReportsUpToSeventyAndStaysThere) {
  const KRScan scan = this->scan({{.emails = {"1"_kr, "2"_kr}}, {.emails = {"1"_kr}}, {}});
  EXPECT_THAT(scan.progress(), ElementsAre(0.0, static_cast<double>(1.0F / 3.0F * 70.0F),
                                           static_cast<double>(2.0F / 3.0F * 70.0F), 70.0, 70.0));
  EXPECT_THAT(this->scan({{.emails = {"1"_kr}}, {}}).progress(), ElementsAre(0.0, 35.0, 70.0));
  EXPECT_THAT(this->scan({{}, {}}).progress(), ElementsAre(0.0, 35.0));
}

TYPED_TEST(KRIssueFindShareEmailTest, FindsTheSamePersonsByGroupingAndInPairs) {
  KRRandomSketches random(23);
  size_t found = 0;
  for (int round = 0; round < 40; ++round) {
    const Sketches sketches = random.list(40, false);
    const KRScan grouped = this->scan(sketches);
    const KRScan paired = this->scan1(sketches);
    EXPECT_EQ(values(grouped), values(paired)) << round;
    EXPECT_EQ(grouped.groups(), paired.groups()) << round;
    found += grouped.groups().size();
  }
  EXPECT_GT(found, 200U);
}

TYPED_TEST(KRIssueFindShareEmailTest, InPairsTakesNoNoticeOfOrganisations) {
  KRRandomSketches random(29);
  size_t differing = 0;
  for (int round = 0; round < 20; ++round) {
    Sketches sketches = random.list(40);
    const KRScan paired = this->scan1(sketches);
    differing += this->scan(sketches).groups() != paired.groups() ? 1 : 0;
    for (KRPersonSketch& sketch : sketches) sketch.isOrganization = false;
    EXPECT_EQ(paired.groups(), this->scan(sketches).groups()) << round;
    EXPECT_EQ(values(paired), values(this->scan(sketches))) << round;
  }
  EXPECT_GT(differing, 10U);
}

TYPED_TEST(KRIssueFindShareEmailTest, InPairsReportsAfterEachContactFromZero) {
  EXPECT_THAT(this->scan1({{.emails = {"1"_kr}}, {.emails = {"1"_kr}}, {}, {}}).progress(),
              ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TYPED_TEST(KRIssueFindShareEmailTest, MarksKeysOfOrganisations) {
  const KRIssueFindShareEmail detector;
  const auto person = krPerson<TypeParam>({});
  const auto company = krPerson<TypeParam>({.isOrganization = true});
  EXPECT_EQ(detector.KeyString("info@allotments.example"_kr, person.get()), "info@allotments.example");
  EXPECT_EQ(detector.KeyString("info@allotments.example"_kr, company.get()), "info@allotments.example:OrgString##");
  EXPECT_EQ(detector.KeyString("info@allotments.example"_kr, nullptr), "info@allotments.example");
  EXPECT_TRUE(detector.KeyString({}, company.get()).isNothing());
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

KRRef<IKRPerson> samePerson(const char* ID) {
  const KRRef<IKRPerson> person = krMake<KRSamePerson>(KRString(ID));
  person->setValue(krEntries<KRObjectEmail>({"1"_kr}, KRValueType::Email), KRProPertyEmail);
  return person;
}

TEST(KRIssueFindShareEmailRepeats, ListsContactsThatCountAsTheSameOnce) {
  const auto find = [](const KRPersonList& persons, const KRProgress& progress) {
    return KRIssueFindShareEmail().find(&persons, progress);
  };
  const auto ann = samePerson("ann");
  EXPECT_THAT(KRScan({ann, ann}, find).groups(), IsEmpty());
  EXPECT_THAT(KRScan({ann, samePerson("bob"), samePerson("ann"), ann}, find).groups(), ElementsAre(ElementsAre(0, 1)));
  std::vector<KRRef<IKRPerson>> many;
  std::vector<size_t> once;
  for (size_t i = 0; i < 30; ++i) {
    many.push_back(samePerson(("p" + std::to_string(i % 20)).c_str()));
    if (i < 20) once.push_back(i);
  }
  EXPECT_THAT(KRScan(many, find).groups(), ElementsAre(once));
}

TEST(KRIssueFindShareEmailRepeats, AnswersNothingForNoPersons) {
  KRIssueFindShareEmail detector;
  const auto never = [](double) { ADD_FAILURE() << "nothing to report"; };
  const KRPersonList empty;
  EXPECT_FALSE(detector.find(nullptr, never));
  EXPECT_FALSE(detector.find(&empty, never));
  EXPECT_FALSE(detector.find1(nullptr, never));
  EXPECT_FALSE(detector.find1(&empty, never));
}

}  // namespace
