#include "detectors/KRSharedValues.h"

#include <gmock/gmock.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "detectors/KRIssueFindShareEmail.h"
#include "detectors/KRIssueFindSharePhone.h"
#include "tests/support/KRNamedPerson.h"
#include "tests/support/KRRandomSketches.h"
#include "tests/support/KRScan.h"

// What the detectors of shared e-mail addresses and of shared phone numbers have in common.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Sketch = KRPersonSketch;
using Sketches = std::vector<KRPersonSketch>;

struct Emails {
  using Detector = KRIssueFindShareEmail;
  static constexpr const char* kCalled = "email address";
  static Sketch sketch(std::vector<KRString> values) { return {.emails = std::move(values)}; }
  static void put(IKRPerson& person, const std::vector<KRString>& values) {
    person.setValue(krEntries<KRObjectEmail>(values, KRValueType::Email), KRProPertyEmail);
  }
};

struct Phones {
  using Detector = KRIssueFindSharePhone;
  static constexpr const char* kCalled = "phone number";
  static Sketch sketch(std::vector<KRString> values) { return {.phones = std::move(values)}; }
  static void put(IKRPerson& person, const std::vector<KRString>& values) {
    person.setValue(krEntries<KRObjectPhone>(values, KRValueType::Phone), KRProPertyPhone);
  }
};

template <class Case>
class KRSharedValuesTest : public testing::Test {
 protected:
  using Values = std::tuple_element_t<0, Case>;
  using Person = std::tuple_element_t<1, Case>;
  using Detector = typename Values::Detector;

  static Sketch person(std::vector<KRString> values) { return Values::sketch(std::move(values)); }
  static Sketch company(std::vector<KRString> values) {
    Sketch sketch = person(std::move(values));
    sketch.isOrganization = true;
    return sketch;
  }
  static KRString sentence(const std::string& value) {
    return KRString(std::string("Contacts in this list have the same ") + Values::kCalled + " \"" + value + "\"");
  }
  static KRRef<IKRPerson> samePerson(const char* ID) {
    const KRRef<IKRPerson> made = krMake<KRSamePerson>(KRString(ID));
    Values::put(*made, {"1"_kr});
    return made;
  }
  static KRScan scan(const Sketches& sketches) { return KRScan::of<Detector, Person>(sketches); }
  static KRScan scan1(const Sketches& sketches) {
    return KRScan::of<Person>(sketches, [](const KRPersonList& persons, const KRProgress& progress) {
      return Detector().find1(&persons, progress);
    });
  }
};

using Cases =
    testing::Types<std::tuple<Emails, KRHostPerson>, std::tuple<Emails, KRTempPerson>, std::tuple<Emails, ABPerson>,
                   std::tuple<Phones, KRHostPerson>, std::tuple<Phones, KRTempPerson>, std::tuple<Phones, ABPerson>>;
TYPED_TEST_SUITE(KRSharedValuesTest, Cases);

/// The values that findings are about, in their order.
std::vector<KRString> values(const KRScan& scan) {
  std::vector<KRString> values;
  for (const auto& finding : scan.findings()) values.push_back(finding->info().text());
  return values;
}

TYPED_TEST(KRSharedValuesTest, ListsTheContactsThatHoldAValueInTheirOrder) {
  const KRScan scan = this->scan({this->person({"555-1234@b"_kr}),
                                  this->person({"x"_kr}),
                                  {},
                                  this->person({"y"_kr, "555-1234@b"_kr}),
                                  this->person({"555-1234@b"_kr})});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 3, 4)));
  EXPECT_EQ(scan.only()->info().text(), "555-1234@b");
  EXPECT_EQ(scan.only()->describe(), this->sentence("555-1234@b"));
}

TYPED_TEST(KRSharedValuesTest, ListsValuesInTheOrderInWhichTheyWereFirstMet) {
  const KRScan scan = this->scan(
      {this->person({"1"_kr, "2"_kr}), this->person({"3"_kr}), this->person({"3"_kr, "2"_kr}), this->person({"1"_kr})});
  EXPECT_THAT(values(scan), ElementsAre("1"_kr, "2"_kr, "3"_kr));
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 3), ElementsAre(0, 2), ElementsAre(1, 2)));
}

TYPED_TEST(KRSharedValuesTest, ListsAContactOnceThatHoldsTheValueTwice) {
  EXPECT_THAT(this->scan({this->person({"1"_kr, "1"_kr, "2"_kr, "1"_kr}), this->person({"1"_kr})}).groups(),
              ElementsAre(ElementsAre(0, 1)));
  EXPECT_FALSE(this->scan({this->person({"1"_kr, "1"_kr}), {}}).context());
}

TYPED_TEST(KRSharedValuesTest, KeepsPersonsAndOrganisationsApart) {
  EXPECT_FALSE(this->scan({this->person({"1"_kr}), this->company({"1"_kr})}).context());
  const KRScan scan = this->scan({this->company({"1"_kr}), this->person({"1"_kr}), this->company({"1"_kr})});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 2)));
  EXPECT_EQ(scan.only()->info().text(), "1");
  EXPECT_EQ(scan.only()->describe(), this->sentence("1"));
}

TYPED_TEST(KRSharedValuesTest, ComparesKeysRatherThanValues) {
  // The mark of organisations within a person's value: the keys are the same text.
  const KRScan scan = this->scan({this->person({"1:OrgString##"_kr}), this->company({"1"_kr})});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 1)));
  EXPECT_EQ(scan.only()->info().text(), "1");
  const KRScan inside =
      this->scan({this->person({"a:OrgString##b:OrgString##"_kr}), this->person({"a:OrgString##b:OrgString##"_kr})});
  EXPECT_EQ(inside.only()->info().text(), "ab");
}

TYPED_TEST(KRSharedValuesTest, PassesEntriesWithoutAValueOverButNotEmptyOnes) {
  EXPECT_FALSE(this->scan({this->person({KRString()}), this->person({KRString()})}).context());
  EXPECT_FALSE(this->scan1({this->person({KRString()}), this->person({KRString()})}).context());
  EXPECT_THAT(values(this->scan({this->person({""_kr}), this->person({""_kr})})), ElementsAre(""_kr));
}

TYPED_TEST(KRSharedValuesTest, FindsTheSamePersonsByGroupingAndInPairs) {
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

TYPED_TEST(KRSharedValuesTest, InPairsTakesNoNoticeOfOrganisations) {
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

TYPED_TEST(KRSharedValuesTest, InPairsReportsAfterEachContactFromZero) {
  EXPECT_THAT(this->scan1({this->person({"1"_kr}), this->person({"1"_kr}), {}, {}}).progress(),
              ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TYPED_TEST(KRSharedValuesTest, MarksKeysOfOrganisations) {
  const typename TestFixture::Detector detector;
  const auto person = krPerson<typename TestFixture::Person>({});
  const auto company = krPerson<typename TestFixture::Person>({.isOrganization = true});
  EXPECT_EQ(detector.KeyString("555-1234@b"_kr, person.get()), "555-1234@b");
  EXPECT_EQ(detector.KeyString("555-1234@b"_kr, company.get()), "555-1234@b:OrgString##");
  EXPECT_EQ(detector.KeyString("555-1234@b"_kr, nullptr), "555-1234@b");
  EXPECT_TRUE(detector.KeyString({}, company.get()).isNothing());
}

TYPED_TEST(KRSharedValuesTest, ListsContactsThatCountAsTheSameOnce) {
  const auto find = [](const KRPersonList& persons, const KRProgress& progress) {
    return typename TestFixture::Detector().find(&persons, progress);
  };
  const auto ann = this->samePerson("ann");
  EXPECT_THAT(KRScan({ann, ann}, find).groups(), IsEmpty());
  EXPECT_THAT(KRScan({ann, this->samePerson("bob"), this->samePerson("ann"), ann}, find).groups(),
              ElementsAre(ElementsAre(0, 1)));
  std::vector<KRRef<IKRPerson>> many;
  std::vector<size_t> once;
  for (size_t i = 0; i < 30; ++i) {
    many.push_back(this->samePerson(("p" + std::to_string(i % 20)).c_str()));
    if (i < 20) once.push_back(i);
  }
  EXPECT_THAT(KRScan(many, find).groups(), ElementsAre(once));
}

TYPED_TEST(KRSharedValuesTest, AnswersNothingForNoPersons) {
  typename TestFixture::Detector detector;
  const auto never = [](double) { ADD_FAILURE() << "nothing to report"; };
  const KRPersonList empty;
  EXPECT_FALSE(detector.find(nullptr, never));
  EXPECT_FALSE(detector.find(&empty, never));
  EXPECT_FALSE(detector.find1(nullptr, never));
  EXPECT_FALSE(detector.find1(&empty, never));
}

}  // namespace
