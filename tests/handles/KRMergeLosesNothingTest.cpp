// Merging random persons loses nothing: each entry stands in the merged person, each person whole in the trash.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/contacts/vcard/WrittenPersons.h"
#include "tests/support/KRBookFixture.h"

namespace {

/// The values of one property in plain texts, without labels: one for a single value, one for each entry, one for each
/// tag. Texts are equal exactly when the values are for the rules of merging.
std::vector<std::string> values(const IKRPerson& person, const KRProperty& property) {
  std::vector<std::string> texts;
  const KRRef<KRStoredValue> stored = person.valueByProperty(&property);
  if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get())) {
    for (size_t i = 0; i < multiple->count(); ++i) {
      texts.emplace_back(multiple->valueAtIndex(i)->value().description().view());
    }
  } else if (const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get())) {
    if (property.ordinal() == KROrdinal::Tags) {
      for (const KRString& tag : single->value().as<KRValueList>()->texts()) texts.emplace_back(tag.view());
    } else {
      texts.emplace_back(single->value().description().view());
    }
  }
  return texts;
}

using Values = std::vector<std::vector<std::string>>;

/// The values of each standard property, in standard order.
Values allValues(const IKRPerson& person) {
  Values all;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) all.push_back(values(person, *property));
  return all;
}

bool isJoined(const KRProperty& property) {
  return property.isMultiple() || property.ordinal() == KROrdinal::Tags;
}

class KRMergeLosesNothingTest : public KRBookFixture {
 protected:
  /// Fills the book with random persons who have some values in common.
  void fillAtRandom(KRWrittenPersons& random, size_t count) {
    fill(std::vector<KRPersonSketch>(count, KRPersonSketch{.first = "x"_kr}));
    std::vector<KRRef<KRTempPerson>> made;
    for (size_t i = 0; i < count; ++i) {
      made.push_back(random.person());
      for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
        if (i != 0 && random.chance(3)) mix(*made[i], *made[random.below(i)], *property, random);
        if (const auto value = made[i]->valueByProperty(property)) person(i)->setValue(value, property);
      }
    }
    expectKept();
  }

  static void expectAllKept(const std::vector<Values>& before, const Values& merged) {
    const auto& properties = KRProperty::StandardPropertyArray();
    for (size_t p = 0; p < properties.size(); ++p) {
      std::vector<std::string> expected;
      for (const Values& person : before) {
        for (const std::string& value : person[p]) {
          if (std::find(expected.begin(), expected.end(), value) == expected.end()) expected.push_back(value);
        }
        // Of single values the first one wins.
        if (!isJoined(*properties[p]) && !expected.empty()) break;
      }
      // A tag may stand twice.
      std::vector<std::string> kept;
      for (const std::string& value : merged[p]) {
        if (std::find(kept.begin(), kept.end(), value) == kept.end()) kept.push_back(value);
      }
      ASSERT_EQ(kept, expected) << properties[p]->name().view();
      if (properties[p]->isMultiple()) ASSERT_EQ(kept.size(), merged[p].size());
    }
  }

 private:
  /// Takes over some of the other's entries of the property.
  static void mix(KRTempPerson& into, const KRTempPerson& from, const KRProperty& property, KRWrittenPersons& random) {
    const auto other = from.valueByProperty(&property);
    const auto own = into.valueByProperty(&property);
    const auto* entries = dynamic_cast<const KRMutableMultipleValue*>(other.get());
    const auto* present = dynamic_cast<const KRMutableMultipleValue*>(own.get());
    if (entries == nullptr || present == nullptr) {
      into.setValue(other, &property);
      return;
    }
    const auto mixed = present->mutableCopy();
    for (size_t i = 0; i < entries->count(); ++i) {
      if (random.chance(2)) mixed->addValue(KRRef<KRMutableSingleValue>(entries->valueAtIndex(i)));
    }
    into.setValue(mixed, &property);
  }
};
INSTANTIATE_TEST_SUITE_P(Books, KRMergeLosesNothingTest, testing::ValuesIn(krBookMakers()),
                         testing::PrintToStringParamName());

TEST_P(KRMergeLosesNothingTest, EveryDistinctEntryStandsInTheMergedPersonAndEveryPersonInTheTrash) {
  KRWrittenPersons random(20241121);
  for (int round = 0; round < GetParam().rounds; ++round) {
    const size_t count = 1 + random.below(4);
    fillAtRandom(random, count);
    std::vector<Values> before;
    std::vector<size_t> places;
    for (size_t i = 0; i < count; ++i) {
      before.push_back(allValues(*person(i)));
      places.push_back(i);
    }
    const auto whole = shown(book());
    fix(KRHandleNameMergeContact, KRIssueDuplicateNames, places);
    ASSERT_EQ(book().allPersonsCount(), 1U);
    ASSERT_NO_FATAL_FAILURE(expectAllKept(before, allValues(*person(0)))) << round;
    ASSERT_EQ(shown(*trashBook()), whole);
    const auto saved = trash();
    ASSERT_EQ(shown(*saved), whole);
    // What was saved shows the same once more.
    expectKept();
    if (GetParam().keeps) {
      const auto again = GetParam().open(folder_);
      ASSERT_NO_FATAL_FAILURE(expectAllKept(before, allValues(*again->allPersons().first()))) << round;
      again->removePersons(KRPersonArray(again->allPersons().first()));
      ASSERT_TRUE(again->saveNow());
    }
    trashBook()->clear();
  }
}

}  // namespace
