#include "detectors/KRIssueFindDuplicatecontacts.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>

#include "issues/KRIssueConfig.h"
#include "platform/KRHash.h"
#include "platform/KRSupportFuction.h"
#include "tests/support/KRPrivatePreferences.h"
#include "tests/support/KRRandomSketches.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Sketches = std::vector<KRPersonSketch>;

void compare(int64_t setting) {
  KRIssueConfig::shareObject().setDuplicateNameScanSetting(setting);
}

template <class Person>
class KRIssueFindDuplicatecontactsTest : public testing::Test {
 protected:
  static KRScan scan(const Sketches& sketches) { return KRScan::of<KRIssueFindDuplicatecontacts, Person>(sketches); }
  static KRScan scan2(const Sketches& sketches) {
    return KRScan::of<Person>(sketches, [](const KRPersonList& persons, const KRProgress& progress) {
      return KRIssueFindDuplicatecontacts().find2(&persons, progress);
    });
  }
  static KRString key(const KRPersonSketch& sketch) {
    return KRIssueFindDuplicatecontacts().keyNameForPerson(krPerson<Person>(sketch).get());
  }

 private:
  KRPrivatePreferences preferences_;
};
TYPED_TEST_SUITE(KRIssueFindDuplicatecontactsTest, KRPersonKinds);

TYPED_TEST(KRIssueFindDuplicatecontactsTest, GroupsPersonsOfTheSameNameInTheirOrder) {
  const Sketches sketches{{.first = "Ann"_kr, .last = "Smith"_kr},
                          {.first = "Bob"_kr, .last = "Smith"_kr},
                          {.first = "Ann"_kr, .last = "Smith"_kr},
                          {.first = "Ann"_kr, .last = "Smith"_kr}};
  EXPECT_THAT(this->scan(sketches).groups(), ElementsAre(ElementsAre(0, 2, 3)));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, ListsGroupsInTheOrderOfTheirFirstPersons) {
  const Sketches sketches{{.first = "Ann"_kr}, {.first = "Bob"_kr}, {.first = "Cleo"_kr},
                          {.first = "Bob"_kr}, {.first = "Ann"_kr}, {.first = "Cleo"_kr}};
  EXPECT_THAT(this->scan(sketches).groups(), ElementsAre(ElementsAre(0, 4), ElementsAre(1, 3), ElementsAre(2, 5)));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, ComparesThePartsThatTheSettingChooses) {
  const Sketches sketches{{.first = "Ann"_kr, .last = "Smith"_kr},
                          {.first = "Ann"_kr, .middle = "Lee"_kr, .last = "Smith"_kr},
                          {.first = "Bob"_kr, .middle = "Lee"_kr, .last = "Smith"_kr},
                          {.first = "Ann"_kr, .middle = "Lee"_kr, .last = "Jones"_kr}};
  const std::vector<std::vector<std::vector<size_t>>> groups{{{0, 1, 3}}, {{1, 2, 3}}, {{1, 3}}, {{0, 1, 2}},
                                                             {{0, 1}},    {{1, 2}},    {}};
  for (int64_t setting = 1; setting <= 7; ++setting) {
    compare(setting);
    EXPECT_EQ(this->scan(sketches).groups(), groups[static_cast<size_t>(setting) - 1]) << setting;
    EXPECT_EQ(this->scan2(sketches).groups(), groups[static_cast<size_t>(setting) - 1]) << setting;
  }
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, IgnoresHigherBitsOfTheSetting) {
  compare(8 + 4);
  EXPECT_EQ(this->key({.first = "Ann"_kr, .middle = "Lee"_kr, .last = "Smith"_kr}), "lasst:Smith");
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, WritesKeysOfLabelsAndTextsWithNothingBetween) {
  EXPECT_EQ(this->key({.first = "Ann"_kr, .middle = "Lee"_kr, .last = "Smith"_kr}), "first:Annmiddle:Leelasst:Smith");
  EXPECT_EQ(this->key({.first = "Ann"_kr}), "first:Ann");
  EXPECT_EQ(this->key({.first = ""_kr, .last = ""_kr}), "first:lasst:");
  EXPECT_EQ(this->key({.company = "Acme"_kr, .isOrganization = true}), "organization:Acme");
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, TellsNoKeyFromAnEmptyOne) {
  EXPECT_TRUE(this->key({}).isNothing());
  EXPECT_TRUE(this->key({.first = "Ann"_kr, .isOrganization = true}).isNothing());
  EXPECT_TRUE(this->key({.company = ""_kr, .isOrganization = true}).isNothing());
  EXPECT_TRUE(KRIssueFindDuplicatecontacts().keyNameForPerson(nullptr).isNothing());
  compare(2);
  EXPECT_EQ(this->key({.first = "Ann"_kr}), "");
  EXPECT_EQ(this->key({.hasName = true}), "");
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, LeavesPersonsWithoutAnyPartOut) {
  EXPECT_FALSE(this->scan({{}, {}, {.hasName = true}, {.hasName = true}, {.note = "x"_kr}}).context());
  compare(4);
  EXPECT_FALSE(this->scan({{.first = "Ann"_kr}, {.first = "Ann"_kr}}).context());
  EXPECT_FALSE(this->scan2({{.first = "Ann"_kr}, {.first = "Ann"_kr}}).context());
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, GroupsPersonsWhosePartsAreThereAndEmpty) {
  compare(1);
  EXPECT_THAT(this->scan({{.first = ""_kr}, {.last = "Lee"_kr}, {.first = ""_kr}}).groups(),
              ElementsAre(ElementsAre(0, 2)));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, GroupsOrganisationsByTheirCompanyAlone) {
  const Sketches sketches{{.first = "Ann"_kr, .company = "Acme"_kr, .isOrganization = true},
                          {.first = "Ann"_kr, .company = "Acme"_kr},
                          {.first = "Bob"_kr, .company = "Acme"_kr, .isOrganization = true},
                          {.company = ""_kr, .isOrganization = true},
                          {.company = ""_kr, .isOrganization = true},
                          {.first = "Ann"_kr, .company = "Globex"_kr, .isOrganization = true}};
  EXPECT_THAT(this->scan(sketches).groups(), ElementsAre(ElementsAre(0, 2)));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, ComparesCharacterByCharacter) {
  EXPECT_FALSE(this->scan({{.first = "Ann"_kr},
                           {.first = "ann"_kr},
                           {.first = "Ann "_kr},
                           {.first = "A\u0301nn"_kr},
                           {.first = "\u00C1nn"_kr}})
                   .context());
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, ComparesKeysRatherThanParts) {
  // Labels within a name: the keys are the same text, so the names count as the same.
  compare(5);
  EXPECT_THAT(this->scan({{.first = "Annlasst:Lee"_kr}, {.first = "Ann"_kr, .last = "Lee"_kr}}).groups(),
              ElementsAre(ElementsAre(0, 1)));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, DescribesTheGroup) {
  const auto finding = this->scan({{.first = "Ann"_kr}, {.first = "Ann"_kr}}).only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(), KRSupportFuction::loadString("KR_Issue_Info_Duplicatecontacts"_kr));
  EXPECT_TRUE(finding->info().isNothing());
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, ReportsBeforeEachPersonFromZero) {
  EXPECT_THAT(this->scan({{.first = "Ann"_kr}, {}, {.first = "Ann"_kr}, {}}).progress(),
              ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, ComparesPairwiseWithTheShareThatIsDone) {
  const KRScan scan = this->scan2({{.first = "Ann"_kr}, {.first = "Bob"_kr}, {.first = "Ann"_kr}, {}});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 2)));
  EXPECT_THAT(scan.progress(), ElementsAre(50.0, 75.0, 100.0));
  const KRScan three = this->scan2({{.first = "Ann"_kr}, {}, {}});
  EXPECT_EQ(three.progress()[0], static_cast<double>(100.0F - 200.0F / 3.0F));
}

TYPED_TEST(KRIssueFindDuplicatecontactsTest, FindsTheSameByGroupingAndInPairs) {
  KRRandomSketches random(11);
  size_t found = 0;
  for (int round = 0; round < 40; ++round) {
    compare(1 + round % 7);
    const Sketches sketches = random.list(60);
    const auto groups = this->scan(sketches).groups();
    EXPECT_EQ(groups, this->scan2(sketches).groups()) << round;
    found += groups.size();
  }
  EXPECT_GT(found, 100U);
}

TEST(KRIssueFindDuplicatecontactsRepeats, GroupsAPersonThatIsListedTwiceWithItself) {
  const auto ann = krPerson<ABPerson>({.first = "Ann"_kr});
  const auto grouped = [](const KRPersonList& persons, const KRProgress& progress) {
    return KRIssueFindDuplicatecontacts().find(&persons, progress);
  };
  const auto paired = [](const KRPersonList& persons, const KRProgress& progress) {
    return KRIssueFindDuplicatecontacts().find2(&persons, progress);
  };
  EXPECT_THAT(KRScan({ann, ann}, grouped).groups(), ElementsAre(ElementsAre(0, 0)));
  EXPECT_THAT(KRScan({ann, ann}, paired).groups(), IsEmpty());
}

TEST(KRIssueFindDuplicatecontactsRepeats, AnswersNothingForNoPersons) {
  KRIssueFindDuplicatecontacts detector;
  const auto never = [](double) { ADD_FAILURE() << "nothing to report"; };
  const KRPersonList empty;
  EXPECT_FALSE(detector.find(nullptr, never));
  EXPECT_FALSE(detector.find(&empty, never));
  EXPECT_FALSE(detector.find2(nullptr, never));
  EXPECT_FALSE(detector.find2(&empty, never));
}

/// A person that counts how often its name is read: once for its own key, and once more for each comparison that is not
/// spared.
class CountedPerson : public KRHostPerson {
 public:
  explicit CountedPerson(KRString company) : company_(std::move(company)) {}
  bool isOrganization() const override { return true; }
  KRString companyName() const override {
    ++reads;
    return company_;
  }
  static inline size_t reads = 0;

 private:
  KRString company_;
};

/// Names that one seed gives the same hash to: within the last sixteen bytes of a text, the first eight are made
/// nothing of by that seed, and the rest are multiplied with it.
struct Collision {
  static constexpr std::string_view kBlind = "sameHash";
  static uint64_t seed() {
    uint64_t blind = 0;
    std::memcpy(&blind, kBlind.data(), sizeof blind);
    return blind ^ 0xd6e8feb86659fd93U;
  }
  static KRString name(int number) {
    // "organization:" and three letters fill sixteen bytes, which only the seed mixes in; the next sixteen count.
    char text[40];
    std::snprintf(text, sizeof text, "abc%s%08d", kBlind.data(), number);
    return KRString(text);
  }
};

TEST(KRIssueFindDuplicatecontactsSeed, StaysLinearWithNamesThatCollideUnderAnotherSeed) {
  constexpr int kNames = 1000;
  const uint64_t before = krHashSeed();
  const auto run = [&](uint64_t seed) {
    krSetHashSeed(seed);
    KRPersonList persons;
    for (int i = 0; i < kNames; ++i) persons.append(krMake<CountedPerson>(Collision::name(i % (kNames - 1))));
    KRIssueFindDuplicatecontacts detector;
    CountedPerson::reads = 0;
    const auto context = detector.find(&persons, [](double) {});
    const size_t reads = CountedPerson::reads;
    EXPECT_TRUE(context);
    if (context) {
      EXPECT_EQ(context->issueObjects().count(), 1U);
      EXPECT_EQ(context->issueObjects().first()->persons().first(), persons.first());
      EXPECT_EQ(context->issueObjects().first()->persons().at(1), persons.at(kNames - 1));
    }
    return reads;
  };
  const size_t colliding = run(Collision::seed());
  const size_t other = run(Collision::seed() + 1);
  krSetHashSeed(before);
  EXPECT_GT(colliding, kNames * kNames / 4U) << "the names must collide for the test to say something";
  EXPECT_LT(other, kNames * 2U);
}

}  // namespace
