#include "detectors/KRIssueFindDuplicateInfo.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "tests/contacts/ModelSamples.h"
#include "tests/support/KRRandomSketches.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

using Sketches = std::vector<KRPersonSketch>;
using Groups = std::vector<std::vector<size_t>>;

constexpr auto kFind = [](const KRPersonList& persons, const KRProgress& progress) {
  return KRIssueFindDuplicateInfo().find(&persons, progress);
};
constexpr auto kFind2 = [](const KRPersonList& persons, const KRProgress& progress) {
  return KRIssueFindDuplicateInfo().find2(&persons, progress);
};

template <class Person>
class KRIssueFindDuplicateInfoTest : public testing::Test {
 protected:
  static KRScan scan(const Sketches& sketches) { return KRScan::of<Person>(sketches, kFind); }
  static KRScan scan2(const Sketches& sketches) { return KRScan::of<Person>(sketches, kFind2); }
  static KRRef<IKRPerson> withImage(std::string_view image) {
    const KRRef<IKRPerson> person = krPerson<Person>({.first = "Ann"_kr});
    person->setThumbnail(krMake<KRData>(image));
    return person;
  }
};
TYPED_TEST_SUITE(KRIssueFindDuplicateInfoTest, KRPersonKinds);

const KRPersonSketch kAnn{.first = "Ann"_kr, .last = "Lee"_kr, .phones = {"1"_kr, "2"_kr}};

TYPED_TEST(KRIssueFindDuplicateInfoTest, GroupsPersonsThatAreTheSameInEverything) {
  const KRScan scan = this->scan({kAnn, {.first = "Ann"_kr}, kAnn, kAnn});
  EXPECT_THAT(scan.groups(), ElementsAre(ElementsAre(0, 2, 3)));
  EXPECT_EQ(scan.only()->describe(), "Contacts in this list have duplicates in all fields.");
  EXPECT_TRUE(scan.only()->info().isNothing());
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, OrdersGroupsByTheirSecondPersons) {
  const KRPersonSketch bob{.first = "Bob"_kr};
  EXPECT_THAT(this->scan({kAnn, bob, bob, kAnn}).groups(), ElementsAre(ElementsAre(1, 2), ElementsAre(0, 3)));
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, TellsApartWhatDiffersInAnything) {
  KRPersonSketch otherOrder = kAnn;
  otherOrder.phones = {"2"_kr, "1"_kr};
  KRPersonSketch emptyMiddle = kAnn;
  emptyMiddle.middle = ""_kr;
  KRPersonSketch withNote = kAnn;
  withNote.note = "x"_kr;
  KRPersonSketch company = kAnn;
  company.isOrganization = true;
  KRPersonSketch lower = kAnn;
  lower.first = "ann"_kr;
  EXPECT_FALSE(this->scan({kAnn, otherOrder, emptyMiddle, withNote, company, lower, {}}).context());
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, TellsLabelsApart) {
  const auto first = krPerson<TypeParam>(kAnn);
  const auto second = krPerson<TypeParam>(kAnn);
  auto phones = krMake<KRMutableMultipleValue>();
  phones->addValue(krLabelled(krMake<KRObjectPhone>("1"_kr), KRValueType::Phone, "work"_kr));
  phones->addValue(krLabelled(krMake<KRObjectPhone>("2"_kr), KRValueType::Phone));
  second->setValue(phones, KRProPertyPhone);
  EXPECT_FALSE(KRScan({first, second}, kFind).context());
  EXPECT_FALSE(KRScan({first, second}, kFind2).context());
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, GroupsPersonsThatHoldNothing) {
  EXPECT_THAT(this->scan({{}, kAnn, {}}).groups(), ElementsAre(ElementsAre(0, 2)));
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, TellsImagesApart) {
  std::vector<KRRef<IKRPerson>> persons;
  for (const char* image : {"a", "b", "a", "", "b", "b", ""}) persons.push_back(this->withImage(image));
  persons.push_back(krPerson<TypeParam>({.first = "Ann"_kr}));
  persons.push_back(this->withImage("c"));
  // Still by the place of the second one: 2, 4, 6.
  EXPECT_THAT(KRScan(persons, kFind).groups(), ElementsAre(ElementsAre(0, 2), ElementsAre(1, 4, 5), ElementsAre(3, 6)));
  EXPECT_THAT(KRScan(persons, kFind2).groups(),
              ElementsAre(ElementsAre(2, 0), ElementsAre(4, 5, 1), ElementsAre(6, 3)));
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, ReportsBeforeEachPersonFromZero) {
  EXPECT_THAT(this->scan({kAnn, {}, kAnn, {}}).progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, InPairsPutsTheFirstPersonLast) {
  EXPECT_THAT(this->scan2({kAnn, {}, kAnn, kAnn, {}}).groups(), ElementsAre(ElementsAre(2, 3, 0), ElementsAre(4, 1)));
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, InPairsReportsEachComparisonAndEachPass) {
  EXPECT_THAT(this->scan2({kAnn, {}, {.first = "Bob"_kr}}).progress(),
              ElementsAre(0.5 * 100.0 / 3.0, 1.0 * 100.0 / 3.0, static_cast<double>(100.0F / 3.0F),
                          (1.0 + 1.0) * 100.0 / 3.0, static_cast<double>(200.0F / 3.0F), 100.0));
  EXPECT_THAT(this->scan2({kAnn, kAnn}).progress(), ElementsAre(50.0, 50.0));
}

/// Groups as sets: both strategies agree on them, and on nothing of their order.
Groups sorted(Groups groups) {
  for (auto& group : groups) std::sort(group.begin(), group.end());
  std::sort(groups.begin(), groups.end());
  return groups;
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, FindsTheSameGroupsByKeyAndInPairs) {
  KRRandomSketches random(31);
  size_t found = 0;
  for (int round = 0; round < 30; ++round) {
    const Sketches sketches = random.list(50);
    const Groups grouped = this->scan(sketches).groups();
    Groups paired = this->scan2(sketches).groups();
    EXPECT_EQ(sorted(grouped), sorted(paired)) << round;
    // In pairs the first person stands last; put in front again, every group is in the order of the list.
    for (auto& group : paired) std::rotate(group.begin(), group.end() - 1, group.end());
    for (const auto& group : paired) EXPECT_TRUE(std::is_sorted(group.begin(), group.end()));
    for (const auto& group : grouped) EXPECT_TRUE(std::is_sorted(group.begin(), group.end()));
    EXPECT_TRUE(std::is_sorted(paired.begin(), paired.end()));
    EXPECT_TRUE(
        std::is_sorted(grouped.begin(), grouped.end(), [](const auto& a, const auto& b) { return a[1] < b[1]; }));
    found += grouped.size();
  }
  EXPECT_GT(found, 100U);
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, GroupsByThePersonKey) {
  ModelSamples samples(3);
  const KRIssueFindDuplicateInfo detector;
  size_t found = 0;
  for (int round = 0; round < 20; ++round) {
    std::vector<KRRef<IKRPerson>> persons;
    std::map<std::string, std::vector<size_t>> byKey;
    for (size_t i = 0; i < 60; ++i) {
      persons.push_back(krMake<TypeParam>());
      for (size_t n = samples.upTo(1); n > 0; --n) {
        const auto& all = KRProperty::StandardPropertyArray();
        const KRProperty& property = *all[samples.upTo(all.size() - 1)];
        persons.back()->setValue(samples.stored(property), &property);
      }
      byKey[std::string(detector.personKey(persons.back().get()).view())].push_back(i);
    }
    Groups groups;
    for (const auto& [key, places] : byKey) {
      if (places.size() > 1) groups.push_back(places);
    }
    EXPECT_EQ(sorted(groups), sorted(KRScan(persons, kFind).groups())) << round;
    found += groups.size();
  }
  EXPECT_GT(found, 40U);
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, KeepsTextsThatReadAlikeApartInPairsOnly) {
  // "(null)" as a name, and no name: one text, two things.
  const Sketches sketches{{.first = "(null)"_kr, .last = "Lee"_kr}, {.last = "Lee"_kr}};
  EXPECT_TRUE(this->scan(sketches).context());
  EXPECT_FALSE(this->scan2(sketches).context());
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, PutsTheDigestOfTheImageIntoTheKey) {
  const KRIssueFindDuplicateInfo detector;
  EXPECT_EQ(detector.personKey(this->withImage("abc").get()),
            "name:fisrt:Ann\tmiddle:(null)\tlast:(null)\t900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(detector.personKey(krPerson<TypeParam>({.company = "A"_kr, .isOrganization = true}).get()),
            "company:AisOrganization:YES:OrgString##");
  EXPECT_TRUE(detector.personKey(nullptr).isNothing());
}

std::string bytes(std::string_view hex) {
  std::string bytes;
  for (size_t i = 0; i < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

TYPED_TEST(KRIssueFindDuplicateInfoTest, ComparesImagesThatHaveTheSameDigest) {
  // The well-known pair of blocks of the same MD5 digest.
  const std::string start = "d131dd02c5e6eec4693d9a0698aff95c2fcab5";
  const std::string one = bytes(start +
                                "8712467eab4004583eb8fb7f8955ad340609f4b30283e488832571415a085125e8f7cdc99fd91d"
                                "bdf280373c5bd8823e3156348f5bae6dacd436c919c6dd53e2b487da03fd02396306d248cda0e99f33420f"
                                "577ee8ce54b67080a80d1ec69821bcb6a8839396f9652b6ff72a70");
  const std::string other = bytes(start +
                                  "0712467eab4004583eb8fb7f8955ad340609f4b30283e4888325f1415a085125e8f7cdc99fd9"
                                  "1dbd7280373c5bd8823e3156348f5bae6dacd436c919c6dd53e23487da03fd02396306d248cda0e99f3"
                                  "3420f577ee8ce54b67080280d1ec69821bcb6a8839396f965ab6ff72a70");
  const KRIssueFindDuplicateInfo detector;
  const std::vector<KRRef<IKRPerson>> persons{this->withImage(one), this->withImage(other), this->withImage(other)};
  ASSERT_NE(one, other);
  ASSERT_EQ(detector.personKey(persons[0].get()), detector.personKey(persons[1].get()));
  EXPECT_THAT(KRScan(persons, kFind).groups(), ElementsAre(ElementsAre(1, 2)));
}

const KRProperty& property(KROrdinal ordinal) {
  return *KRProperty::propertyWithOrdinal(ordinal);
}

TEST(KRIssueFindDuplicateInfoTexts, WritesTheTextOfOneValue) {
  const KRIssueFindDuplicateInfo detector;
  const auto note = krLabelled("x"_kr, KRValueType::Text);
  EXPECT_EQ(detector.singValueString(note.get(), property(KROrdinal::Note)), "note:x");
  EXPECT_EQ(detector.valueString(note.get(), property(KROrdinal::Note)), "note:x");
  const auto phones = krEntries<KRObjectPhone>({"1"_kr, "2"_kr}, KRValueType::Phone);
  EXPECT_EQ(detector.mulitipleValueString(phones.get(), property(KROrdinal::Phone)), "phone:home:1\thome:2\t");
  EXPECT_EQ(detector.valueString(phones.get(), property(KROrdinal::Phone)), "phone:home:1\thome:2\t");
  EXPECT_EQ(detector.mulitipleSubValueString(phones->valueAtIndex(1), property(KROrdinal::Phone)), "home:2\t");
  EXPECT_TRUE(detector.valueString(nullptr, property(KROrdinal::Phone)).isNothing());
  EXPECT_TRUE(detector.mulitipleSubValueString(nullptr, property(KROrdinal::Phone)).isNothing());
}

TEST(KRIssueFindDuplicateInfoTexts, DigestsData) {
  const KRIssueFindDuplicateInfo detector;
  EXPECT_EQ(detector.HashValueByData(krMake<KRData>("").get()), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_TRUE(detector.HashValueByData(nullptr).isNothing());
}

bool singleEqual(KRValue a, KRValue b, KROrdinal ordinal) {
  const int32_t type = property(ordinal).valueType();
  return KRIssueFindDuplicateInfo().value(krLabelled(std::move(a), type).get(),
                                          krLabelled(std::move(b), type, "other label"_kr).get(), property(ordinal));
}

TEST(KRIssueFindDuplicateInfoEquality, ComparesSingleValuesByTheirKind) {
  const auto name = [](KRString first, KRString last) -> KRValue {
    return krMake<KRObjectPersonName>(std::move(first), KRString(), std::move(last));
  };
  EXPECT_TRUE(singleEqual(name("A"_kr, {}), name("A"_kr, {}), KROrdinal::Name));
  EXPECT_FALSE(singleEqual(name("A"_kr, {}), name("A"_kr, ""_kr), KROrdinal::Name));
  EXPECT_TRUE(singleEqual(*KRDate::make(1990, 3, 2), *KRDate::make(1990, 3, 2), KROrdinal::Birthday));
  EXPECT_FALSE(singleEqual(*KRDate::make(1990, 3, 2), *KRDate::make({}, 3, 2), KROrdinal::Birthday));
  EXPECT_TRUE(
      singleEqual(KRValueList::ofTexts({"a"_kr, "b"_kr}), KRValueList::ofTexts({"a"_kr, "b"_kr}), KROrdinal::Tags));
  EXPECT_FALSE(
      singleEqual(KRValueList::ofTexts({"a"_kr, "b"_kr}), KRValueList::ofTexts({"b"_kr, "a"_kr}), KROrdinal::Tags));
  EXPECT_TRUE(singleEqual(krMake<KRData>("x"), krMake<KRData>("x"), KROrdinal::Thumbnail));
  EXPECT_FALSE(singleEqual(krMake<KRData>("x"), krMake<KRData>("y"), KROrdinal::Thumbnail));
  EXPECT_TRUE(singleEqual("a"_kr, "a"_kr, KROrdinal::Note));
  EXPECT_FALSE(singleEqual("a"_kr, "A"_kr, KROrdinal::Note));
  EXPECT_FALSE(singleEqual({}, {}, KROrdinal::Note)) << "texts that are both absent";
}

bool entriesEqual(KRValue a, KRValue b, KROrdinal ordinal) {
  const KRProperty& holder = property(ordinal);
  const auto of = [&](KRValue value) {
    auto multiple = krMake<KRMutableMultipleValue>();
    multiple->addValue(krLabelled(std::move(value), holder.subValueType()));
    return multiple;
  };
  return KRIssueFindDuplicateInfo().value(of(std::move(a)).get(), of(std::move(b)).get(), holder);
}

TEST(KRIssueFindDuplicateInfoEquality, ComparesEntriesByTheirKind) {
  const auto phone = [](const char* text) -> KRValue { return krMake<KRObjectPhone>(KRString(text)); };
  EXPECT_TRUE(entriesEqual(phone("1"), phone("1"), KROrdinal::Phone));
  EXPECT_FALSE(entriesEqual(phone("1"), phone("1 "), KROrdinal::Phone));
  auto* xmpp = KRInstantMessageServer::serverWithName("xmpp");
  const auto account = [](const char* name, KRInstantMessageServer* server) -> KRValue {
    return krMake<KRObjectInstantMessage>(name != nullptr ? KRString(name) : KRString(), server);
  };
  EXPECT_TRUE(entriesEqual(account("ann", xmpp), account("ann", xmpp), KROrdinal::InstantMessage));
  EXPECT_TRUE(entriesEqual(account(nullptr, nullptr), account(nullptr, nullptr), KROrdinal::InstantMessage));
  // The very same service counts, not one of the same name.
  const auto twin = krMake<KRInstantMessageServer>(xmpp->name(), xmpp->displayName());
  EXPECT_FALSE(entriesEqual(account("ann", xmpp), account("ann", twin.get()), KROrdinal::InstantMessage));
  const auto address = [](const char* city) -> KRValue {
    auto made = krMake<KRObjectAddress>();
    made->setStringValue(KRString(city), "city"_kr);
    return made;
  };
  EXPECT_TRUE(entriesEqual(address("Exeter"), address("Exeter"), KROrdinal::Address));
  EXPECT_FALSE(entriesEqual(address("Exeter"), address("exeter"), KROrdinal::Address));
  EXPECT_TRUE(entriesEqual("x"_kr, "x"_kr, KROrdinal::Other));
}

TEST(KRIssueFindDuplicateInfoEquality, CountsLabelsOrderAndNumberOfEntries) {
  const KRIssueFindDuplicateInfo detector;
  const KRProperty& phone = property(KROrdinal::Phone);
  const auto of = [](const std::vector<KRString>& texts) {
    return krEntries<KRObjectPhone>(texts, KRValueType::Phone);
  };
  EXPECT_TRUE(detector.mulitipleValue(of({}).get(), of({}).get(), phone));
  EXPECT_TRUE(detector.mulitipleValue(of({"1"_kr, "2"_kr}).get(), of({"1"_kr, "2"_kr}).get(), phone));
  EXPECT_FALSE(detector.mulitipleValue(of({"1"_kr, "2"_kr}).get(), of({"2"_kr, "1"_kr}).get(), phone));
  EXPECT_FALSE(detector.mulitipleValue(of({"1"_kr}).get(), of({"1"_kr, "1"_kr}).get(), phone));
  const auto entry = [](const char* label) {
    auto made = krLabelled("x"_kr, KRValueType::Text, label != nullptr ? KRString(label) : KRString());
    if (label == nullptr) made->setLabel({});
    return made;
  };
  EXPECT_TRUE(detector.mulitipleSubValue(entry(nullptr).get(), entry(nullptr).get(), phone));
  EXPECT_FALSE(detector.mulitipleSubValue(entry(nullptr).get(), entry("").get(), phone));
  EXPECT_FALSE(detector.mulitipleSubValue(entry("home").get(), entry("Home").get(), phone));
  EXPECT_FALSE(detector.mulitipleSubValue(entry("home").get(), nullptr, phone));
  EXPECT_FALSE(detector.value(nullptr, nullptr, phone));
}

TEST(KRIssueFindDuplicateInfoEquality, ComparesWhichPropertiesAreThere) {
  const KRIssueFindDuplicateInfo detector;
  const auto ann = krPerson<ABPerson>({.first = "Ann"_kr});
  const auto noted = krPerson<ABPerson>({.first = "Ann"_kr, .note = ""_kr});
  EXPECT_FALSE(detector.person(ann.get(), noted.get()));
  EXPECT_TRUE(detector.person(ann.get(), krPerson<KRHostPerson>({.first = "Ann"_kr}).get()));
  EXPECT_FALSE(detector.person(ann.get(), nullptr));
}

TEST(KRIssueFindDuplicateInfoRuns, AnswersNothingForNoPersons) {
  KRIssueFindDuplicateInfo detector;
  const auto never = [](double) { ADD_FAILURE() << "nothing to report"; };
  const KRPersonList empty;
  EXPECT_FALSE(detector.find(nullptr, never));
  EXPECT_FALSE(detector.find(&empty, never));
  EXPECT_FALSE(detector.find2(nullptr, never));
  EXPECT_FALSE(detector.find2(&empty, never));
}

}  // namespace
