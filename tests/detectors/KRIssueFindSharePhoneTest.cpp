#include "detectors/KRIssueFindSharePhone.h"

#include <gmock/gmock.h>

#include "tests/support/KRNamedPerson.h"
#include "tests/support/KRRandomSketches.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Sketches = std::vector<KRPersonSketch>;

template <class Person>
class KRIssueFindSharePhoneTest : public testing::Test {
 protected:
  static KRScan scan(const Sketches& sketches) { return KRScan::of<KRIssueFindSharePhone, Person>(sketches); }
  static KRScan scan1(const Sketches& sketches) {
    return KRScan::of<Person>(sketches, [](const KRPersonList& persons, const KRProgress& progress) {
      return KRIssueFindSharePhone().find1(&persons, progress);
    });
  }
};
TYPED_TEST_SUITE(KRIssueFindSharePhoneTest, KRPersonKinds);

/// The values that findings are about, in their order.
std::vector<KRString> values(const KRScan& scan) {
  std::vector<KRString> values;
  for (const auto& finding : scan.findings()) values.push_back(finding->info().text());
  return values;
}

TYPED_TEST(KRIssueFindSharePhoneTest, ListsTheContactsThatHoldAValueInTheirOrder) {
  const KRScan scan = this->scan({{.phones = {"555-1234"_kr}},
                                  {.phones = {"x"_kr}},
                                  {},
                                  {.phones = {"y"_kr, "555-1234"_kr}},
                                  {.phones = {"555-1234"_kr}}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 3, 4)));
  EXPECT_EQ(scan.only()->info().text(), "555-1234");
  EXPECT_EQ(scan.only()->describe(), "Contacts in this list have the same phone number \"555-1234\"");
}

TYPED_TEST(KRIssueFindSharePhoneTest, ListsValuesInTheOrderInWhichTheyWereFirstMet) {
  const KRScan scan = this->scan(
      {{.phones = {"1"_kr, "2"_kr}}, {.phones = {"3"_kr}}, {.phones = {"3"_kr, "2"_kr}}, {.phones = {"1"_kr}}});
  EXPECT_THAT(values(scan), ElementsAre("1"_kr, "2"_kr, "3"_kr));
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 3), ElementsAre(0, 2), ElementsAre(1, 2)));
}

TYPED_TEST(KRIssueFindSharePhoneTest, ComparesExactly) {
  EXPECT_THAT(this->scan({{.phones = {"555-1234"_kr}},
                          {.phones = {"5551234"_kr}},
                          {.phones = {"555-1234"_kr}},
                          {.phones = {"555 1234"_kr}}})
                  .groups(),
              ElementsAre(ElementsAre(0, 2)));
}

TYPED_TEST(KRIssueFindSharePhoneTest, ListsAContactOnceThatHoldsTheValueTwice) {
  EXPECT_THAT(this->scan({{.phones = {"1"_kr, "1"_kr, "2"_kr, "1"_kr}}, {.phones = {"1"_kr}}}).groups(),
              ElementsAre(ElementsAre(0, 1)));
  EXPECT_FALSE(this->scan({{.phones = {"1"_kr, "1"_kr}}, {}}).context());
}

TYPED_TEST(KRIssueFindSharePhoneTest, KeepsPersonsAndOrganisationsApart) {
  EXPECT_FALSE(this->scan({{.phones = {"1"_kr}}, {.phones = {"1"_kr}, .isOrganization = true}}).context());
  const KRScan scan = this->scan({{.phones = {"1"_kr}, .isOrganization = true},
                                  {.phones = {"1"_kr}},
                                  {.phones = {"1"_kr}, .isOrganization = true}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 2)));
  EXPECT_EQ(scan.only()->info().text(), "1");
  EXPECT_EQ(scan.only()->describe(), "Contacts in this list have the same phone number \"1\"");
}

TYPED_TEST(KRIssueFindSharePhoneTest, ComparesKeysRatherThanValues) {
  // The mark of organisations within a person's value: the keys are the same text.
  const KRScan scan = this->scan({{.phones = {"1:OrgString##"_kr}}, {.phones = {"1"_kr}, .isOrganization = true}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 1)));
  EXPECT_EQ(scan.only()->info().text(), "1");
  const KRScan inside =
      this->scan({{.phones = {"a:OrgString##b:OrgString##"_kr}}, {.phones = {"a:OrgString##b:OrgString##"_kr}}});
  EXPECT_EQ(inside.only()->info().text(), "ab");
}

TYPED_TEST(KRIssueFindSharePhoneTest, PassesEntriesWithoutAValueOverButNotEmptyOnes) {
  EXPECT_FALSE(this->scan({{.phones = {KRString()}}, {.phones = {KRString()}}}).context());
  EXPECT_FALSE(this->scan1({{.phones = {KRString()}}, {.phones = {KRString()}}}).context());
  EXPECT_THAT(values(this->scan({{.phones = {""_kr}}, {.phones = {""_kr}}})), ElementsAre(""_kr));
}

TYPED_TEST(KRIssueFindSharePhoneTest, ReportsUpToSeventyForContactsAndThenForNumbers) {
  const KRScan scan = this->scan({{.phones = {"1"_kr, "2"_kr}}, {.phones = {"1"_kr, "3"_kr}}, {}});
  EXPECT_THAT(
      scan.progress(),
      ElementsAre(0.0, static_cast<double>(1.0F / 3.0F * 70.0F), static_cast<double>(2.0F / 3.0F * 70.0F), 70.0,
                  static_cast<double>(70.0F + 1.0F / 3.0F * 30.0F), static_cast<double>(70.0F + 2.0F / 3.0F * 30.0F)));
  EXPECT_THAT(this->scan({{.phones = {"1"_kr, "2"_kr}}, {}}).progress(), ElementsAre(0.0, 35.0, 70.0, 85.0));
  EXPECT_THAT(this->scan({{}, {}}).progress(), ElementsAre(0.0, 35.0));
}

TYPED_TEST(KRIssueFindSharePhoneTest, FindsTheSamePersonsByGroupingAndInPairs) {
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

TYPED_TEST(KRIssueFindSharePhoneTest, InPairsTakesNoNoticeOfOrganisations) {
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

TYPED_TEST(KRIssueFindSharePhoneTest, InPairsReportsAfterEachContactFromZero) {
  EXPECT_THAT(this->scan1({{.phones = {"1"_kr}}, {.phones = {"1"_kr}}, {}, {}}).progress(),
              ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TYPED_TEST(KRIssueFindSharePhoneTest, MarksKeysOfOrganisations) {
  const KRIssueFindSharePhone detector;
  const auto person = krPerson<TypeParam>({});
  const auto company = krPerson<TypeParam>({.isOrganization = true});
  EXPECT_EQ(detector.KeyString("555-1234"_kr, person.get()), "555-1234");
  EXPECT_EQ(detector.KeyString("555-1234"_kr, company.get()), "555-1234:OrgString##");
  EXPECT_EQ(detector.KeyString("555-1234"_kr, nullptr), "555-1234");
  EXPECT_TRUE(detector.KeyString({}, company.get()).isNothing());
}

TYPED_TEST(KRIssueFindSharePhoneTest, TellsWhetherAPersonHoldsANumberOrIsListedWithIt) {
  const KRIssueFindSharePhone detector;
  const auto person = krPerson<TypeParam>({.phones = {"1"_kr, "2"_kr}});
  EXPECT_TRUE(detector.personHasPhone(person.get(), "2"_kr));
  EXPECT_FALSE(detector.personHasPhone(person.get(), "2 "_kr));
  EXPECT_FALSE(detector.personHasPhone(person.get(), {}));
  EXPECT_FALSE(detector.personHasPhone(nullptr, "2"_kr));
  const auto other = krPerson<TypeParam>({});
  const auto context = krMake<KRIssueContext>(krIssueNamed("an issue of this test"_kr));
  EXPECT_FALSE(detector.existPerson(person.get(), context.get(), "1"_kr));
  context->addIssueObject(detector.objectForPersons(KRPersonArray(person), "1"_kr).get());
  EXPECT_TRUE(detector.existPerson(person.get(), context.get(), "1"_kr));
  EXPECT_FALSE(detector.existPerson(person.get(), context.get(), "2"_kr));
  EXPECT_FALSE(detector.existPerson(other.get(), context.get(), "1"_kr));
  EXPECT_FALSE(detector.existPerson(person.get(), nullptr, "1"_kr));
}

KRRef<IKRPerson> samePerson(const char* ID) {
  const KRRef<IKRPerson> person = krMake<KRSamePerson>(KRString(ID));
  person->setValue(krEntries<KRObjectPhone>({"1"_kr}, KRValueType::Phone), KRProPertyPhone);
  return person;
}

TEST(KRIssueFindSharePhoneRepeats, ListsContactsThatCountAsTheSameOnce) {
  const auto find = [](const KRPersonList& persons, const KRProgress& progress) {
    return KRIssueFindSharePhone().find(&persons, progress);
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

TEST(KRIssueFindSharePhoneRepeats, AnswersNothingForNoPersons) {
  KRIssueFindSharePhone detector;
  const auto never = [](double) { ADD_FAILURE() << "nothing to report"; };
  const KRPersonList empty;
  EXPECT_FALSE(detector.find(nullptr, never));
  EXPECT_FALSE(detector.find(&empty, never));
  EXPECT_FALSE(detector.find1(nullptr, never));
  EXPECT_FALSE(detector.find1(&empty, never));
}

}  // namespace
