#include "issues/KRFindingPersons.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/KRFindings.h"

namespace {

std::vector<KRRef<IKRPerson>> people(size_t count) {
  std::vector<KRRef<IKRPerson>> made;
  for (size_t i = 0; i < count; ++i) made.push_back(krMake<KRHostPerson>());
  return made;
}

TEST(KRFindingPersons, IsMadeEmpty) {
  KRFindingPersons persons;
  EXPECT_TRUE(persons.get().isEmpty());
  EXPECT_EQ(persons.count(), 0U);
  EXPECT_FALSE(persons.contains(nullptr));
  persons.remove(krNamed("Ann").get());
  EXPECT_TRUE(persons.get().isEmpty());
}

TEST(KRFindingPersons, AnArrayThatWasHandedOutStaysAsItIs) {
  for (const size_t count : {2U, 500U}) {
    const auto all = people(count);
    KRFindingPersons persons;
    persons.set(KRPersonArray(all));
    const KRPersonArray before = persons.get();
    persons.remove(all.front().get());
    EXPECT_EQ(before.count(), count);
    EXPECT_EQ(persons.get().count(), count - 1);
  }
}

TEST(KRFindingPersons, ALongListThatLosesEverybodyIsEmpty) {
  const auto all = people(100);
  KRFindingPersons persons;
  persons.set(KRPersonArray(all));
  for (const auto& person : all) persons.remove(person.get());
  EXPECT_EQ(persons.count(), 0U);
  EXPECT_TRUE(persons.get().isEmpty());
}

TEST(KRFindingPersons, ALongListCanBeReplaced) {
  const auto all = people(100);
  const auto ann = krNamed("Ann");
  KRFindingPersons persons;
  persons.set(KRPersonArray(all));
  persons.remove(all[7].get());
  persons.set(KRPersonArray(ann));
  EXPECT_EQ(krPlain(persons.get()), std::vector<IKRPerson*>{ann.get()});
  EXPECT_FALSE(persons.contains(all[8].get()));
}

// Against a plain vector: persons listed several times, persons equal to one another, lists short and long.
TEST(KRFindingPersons, AgreesWithAPlainList) {
  std::mt19937 random(20240911);
  for (int round = 0; round < 100; ++round) {
    std::vector<KRRef<IKRPerson>> known = people(random() % 60);
    for (size_t i = random() % 60; i != 0; --i) {
      known.push_back(krMake<KRSamePerson>(KRString(std::to_string(random() % 30))));
    }
    if (known.empty()) continue;
    const auto any = [&] { return known[random() % known.size()]; };
    std::vector<KRRef<IKRPerson>> plain;
    for (size_t i = random() % 150; i != 0; --i) plain.push_back(any());
    KRFindingPersons persons;
    persons.set(KRPersonArray(plain));
    for (int step = 0; step < 80; ++step) {
      const auto person = any();
      const auto isSame = [&](const auto& each) { return each->isEqual(person.get()); };
      ASSERT_EQ(persons.contains(person.get()), std::any_of(plain.begin(), plain.end(), isSame));
      if (random() % 2 == 0) {
        persons.remove(person.get());
        std::erase_if(plain, isSame);
      }
      ASSERT_EQ(persons.count(), plain.size());
      if (random() % 8 == 0) ASSERT_EQ(krPlain(persons.get()), krPlain(KRPersonArray(plain)));
    }
    ASSERT_EQ(krPlain(persons.get()), krPlain(KRPersonArray(plain)));
  }
}

}  // namespace
