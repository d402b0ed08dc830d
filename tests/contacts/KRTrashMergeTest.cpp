#include "contacts/KRTrashMerge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Persons = KRTrashMerge::Persons;
using Trashed = std::vector<KRRef<KRTempPerson>>;

KRRef<KRTempPerson> person(std::string_view ID, std::string_view card = "card") {
  auto made = krMake<KRTempPerson>(KRString(ID));
  made->setCard(krMake<KRData>(card));
  return made;
}

std::string IDsOf(const Persons& persons) {
  std::string all;
  for (const auto& each : persons) all.append(each->ID().view()).append(" ");
  return all;
}

TEST(KRTrashMerge, OfNothingIsWhatTheFileHas) {
  const Trashed theirs = {person("a"), person("b")};
  const Persons merged = KRTrashMerge::merged({}, {}, theirs);
  ASSERT_EQ(merged.size(), 2U);
  EXPECT_EQ(merged[0].get(), theirs[0].get());
  EXPECT_TRUE(KRTrashMerge::merged({}, {}, {}).empty());
}

TEST(KRTrashMerge, AddsWhatOnlyThisProcessHas) {
  const Persons mine = {person("m")};
  EXPECT_EQ(IDsOf(KRTrashMerge::merged({}, mine, {person("t")})), "t m ");
}

TEST(KRTrashMerge, WhatBothAddedIsThereOnceAsThisProcessHasIt) {
  const Persons mine = {person("same")};
  const Persons merged = KRTrashMerge::merged({}, mine, {person("same"), person("t")});
  EXPECT_EQ(IDsOf(merged), "same t ");
  EXPECT_EQ(merged[0].get(), mine[0].get());
}

TEST(KRTrashMerge, WhoeverIsTrashedTwiceStaysTwice) {
  const Persons before = {person("a"), person("a")};
  EXPECT_EQ(IDsOf(KRTrashMerge::merged(before, before, {person("a"), person("a")})), "a a ");
  const Persons more = {before[0], before[1], person("a")};
  EXPECT_EQ(IDsOf(KRTrashMerge::merged(before, more, {person("a"), person("a")})), "a a a ");
  const Persons fewer = {before[1]};
  EXPECT_EQ(IDsOf(KRTrashMerge::merged(before, fewer, {person("a"), person("a")})), "a ");
}

TEST(KRTrashMerge, LeavesOutWhatEitherTookOut) {
  const Persons before = {person("a"), person("b"), person("c")};
  const Persons mine = {before[1], before[2]};
  EXPECT_EQ(IDsOf(KRTrashMerge::merged(before, mine, {person("a"), person("b")})), "b ");
}

TEST(KRTrashMerge, TakesOutNobodyWhoOnlyHasTheSameIdentifier) {
  const Persons before = {person("a", "old")};
  EXPECT_EQ(IDsOf(KRTrashMerge::merged(before, {}, {person("a", "new")})), "a ");
}

TEST(KRTrashMerge, OfAPersonThatEitherChangedBothVersionsStay) {
  const Persons before = {person("a", "old")};
  const Persons merged = KRTrashMerge::merged(before, before, {person("a", "new")});
  ASSERT_EQ(merged.size(), 2U);
  EXPECT_EQ(merged[1].get(), before[0].get());
}

TEST(KRTrashMerge, TellsPersonsApartByAllThatIsKept) {
  const auto base = person("a");
  EXPECT_TRUE(KRTrashMerge::areSame(*base, *person("a")));
  EXPECT_FALSE(KRTrashMerge::areSame(*base, *person("b")));
  EXPECT_FALSE(KRTrashMerge::areSame(*base, *person("a", "other")));
  auto from = person("a");
  from->setFromID("book"_kr);
  EXPECT_FALSE(KRTrashMerge::areSame(*base, *from));
  auto grouped = person("a");
  grouped->setGroupIDs(KRStringList{"g"_kr});
  EXPECT_FALSE(KRTrashMerge::areSame(*base, *grouped));
  auto noted = person("a");
  noted->setRecordValue("x"_kr, kABNoteProperty);
  EXPECT_FALSE(KRTrashMerge::areSame(*base, *noted));
}

}  // namespace
