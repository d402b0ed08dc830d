#include "contacts/stores/KRVCardGroupEdition.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/contacts/stores/StoreSamples.h"

namespace {

class KRVCardGroupEditionTest : public testing::Test {
 protected:
  KRRef<ABPerson> store(const std::vector<std::string>& lines) {
    stored.push_back({krPersonOf(lines)});
    return stored.back().person;
  }

  std::vector<KRStoredPerson> stored;
  KRStoreChanges changes{stored};
};

TEST_F(KRVCardGroupEditionTest, DoesNothingWhereNoGroupsAreToBeWritten) {
  store({"N:;Ann"});
  EXPECT_TRUE(krNameMembers(changes).empty());
  KRVCardGroupEdition edition(changes);
  const std::vector<KRVCardGroup> groups = {{"Friends"_kr, "g"_kr, {"a"_kr}}};
  edition.consider(groups);
  EXPECT_TRUE(edition.next(groups).isEmpty());
  EXPECT_TRUE(edition.added().empty());
}

TEST_F(KRVCardGroupEditionTest, PutsMembersWithoutAnIdentifierAmongTheChangedInTheirOrder) {
  const auto first = store({"N:;Ann"});
  store({"N:;Bo"});
  const auto third = store({"N:;Cy", "UID:c"});
  const auto fourth = store({"N:;Dee"});
  changes.changed.push_back({2});
  const std::vector<KRStoredGroup> groups = {{krMake<KRGroup>("g"_kr, "Friends"_kr), {fourth, third, first}}};
  changes.groups = &groups;
  const auto UIDs = krNameMembers(changes);
  EXPECT_EQ(UIDs.size(), 2U);
  EXPECT_EQ(UIDs.at(first.get()), first->ID());
  EXPECT_EQ(UIDs.at(fourth.get()), fourth->ID());
  std::vector<size_t> places;
  for (const auto& each : changes.changed) places.push_back(each.index);
  EXPECT_EQ(places, (std::vector<size_t>{0, 2, 3}));
}

TEST_F(KRVCardGroupEditionTest, TellsWhatBecomesOfGroupsInSeveralFiles) {
  store({"N:;Ann", "UID:urn:uuid:a"});
  const auto bo = store({"N:;Bo", "UID:b"});
  const auto cy = store({"N:;Cy", "UID:c"});
  const std::vector<KRStoredGroup> groups = {{krMake<KRGroup>("g"_kr, "Friends"_kr), {bo, cy}},
                                             {krMake<KRGroup>("new"_kr, "New"_kr), {bo}}};
  changes.groups = &groups;
  KRVCardGroupEdition edition(changes);
  const std::vector<KRVCardGroup> one = {{"Gone"_kr, "x"_kr, {}}, {"Friends"_kr, "g"_kr, {"a"_kr, "nobody"_kr}}};
  const std::vector<KRVCardGroup> two = {{"Friends"_kr, "g"_kr, {"urn:uuid:c"_kr}}};
  edition.consider(one);
  edition.consider(two);
  const auto ofOne = edition.next(one);
  EXPECT_EQ(ofOne.removed, std::vector<size_t>{0});
  ASSERT_EQ(ofOne.changed.size(), 1U);
  EXPECT_EQ(ofOne.changed[0].first, 1U);
  EXPECT_EQ(ofOne.changed[0].second.dropped, std::unordered_set<KRString>{"a"_kr});
  EXPECT_EQ(ofOne.changed[0].second.added, KRStringList{"b"_kr});
  EXPECT_TRUE(edition.next(two).isEmpty());
  ASSERT_EQ(edition.added().size(), 1U);
  EXPECT_EQ(edition.added()[0].UID, "new");
  EXPECT_EQ(edition.added()[0].members, KRStringList{"b"_kr});
}

}  // namespace
