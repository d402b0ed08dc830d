#include <gmock/gmock.h>

#include <ctime>
#include <random>
#include <string>

#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRSaveScope.h"
#include "handles/KRIssueHandle.h"
#include "tests/support/KRFindings.h"
#include "tests/support/KRPersonSketch.h"

// How a merge makes one value of those of several persons.

namespace {

using testing::ElementsAre;

KRRef<KRIssueHandle> merge() {
  return KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact);
}

const KRProperty* property(const KRString& name) {
  return KRProperty::propertyWithName(name);
}

KRPersonArray persons(const std::vector<KRRef<IKRPerson>>& all) {
  return KRPersonArray(all);
}

struct Entry {
  const char* label;
  KRValue value;
};

KRRef<KRMutableMultipleValue> entries(const std::vector<Entry>& rows) {
  auto made = krMake<KRMutableMultipleValue>();
  for (const Entry& row : rows) made->addValue(krLabelled(row.value, 0, KRString(row.label)));
  return made;
}

/// Nothing for a null pointer.
KRString textOf(const char* text) {
  return text != nullptr ? KRString(text) : KRString();
}
KRValue phone(const char* number) {
  return krMake<KRObjectPhone>(textOf(number));
}
KRValue email(const char* text) {
  return krMake<KRObjectEmail>(textOf(text));
}
KRValue address(const char* street) {
  auto made = krMake<KRObjectAddress>();
  made->setStringValue(textOf(street), "street"_kr);
  return made;
}
KRValue account(KRString user, KRInstantMessageServer* server) {
  return krMake<KRObjectInstantMessage>(std::move(user), server);
}

/// The entries that a merge makes of lists, one for each person, as "label" texts.
template <class Person>
std::vector<std::string> mergedLabels(const KRString& name, const std::vector<std::vector<Entry>>& lists) {
  std::vector<KRRef<IKRPerson>> all;
  for (const auto& list : lists) {
    all.push_back(krPerson<Person>({}));
    all.back()->setValue(entries(list), name);
  }
  const auto merged = merge()->mergeMultipleValue(property(name), persons(all));
  std::vector<std::string> labels;
  for (size_t i = 0; merged && i < merged->count(); ++i) {
    labels.emplace_back(merged->valueAtIndex(i)->label()->name().view());
  }
  return labels;
}

template <class Person>
class KRMergeValuesTest : public testing::Test {};
TYPED_TEST_SUITE(KRMergeValuesTest, KRPersonKinds);

// Single values.

TYPED_TEST(KRMergeValuesTest, TheFirstPersonWithAValueDecidesAndTheVeryObjectIsHandedOver) {
  const auto none = krPerson<TypeParam>({});
  const auto ann = krPerson<TypeParam>({.first = "Ann"_kr, .company = "Elm"_kr});
  const auto ben = krPerson<TypeParam>({.first = "Ben"_kr, .last = "Fox"_kr});
  const KRProperty* name = property(KRProPertyName);
  const KRPersonArray all = persons({none, ann, ben});
  EXPECT_EQ(merge()->mergeSingleValue(name, all).get(), ann->valueByProperty(name).get());
  EXPECT_EQ(merge()->mergeSingleValue(name, persons({ben, ann})).get(), ben->valueByProperty(name).get());
  EXPECT_EQ(merge()->mergeSingleValue(property(KRProPertyCompany), persons({ben, ann})).get(),
            ann->valueByPropertyName(KRProPertyCompany).get());
}

TYPED_TEST(KRMergeValuesTest, AnEmptyNoteCountsBecauseItIsThere) {
  const auto ann = krPerson<TypeParam>({.note = ""_kr});
  const auto ben = krPerson<TypeParam>({.note = "Likes tea"_kr});
  const auto merged = merge()->mergeSingleValue(property(KRProPertyNote), persons({ann, ben}));
  EXPECT_EQ(dynamic_cast<const KRMutableSingleValue&>(*merged).value().text(), "");
}

TYPED_TEST(KRMergeValuesTest, NobodysValueIsNothing) {
  const KRPersonArray all = persons({krPerson<TypeParam>({}), krPerson<TypeParam>({})});
  for (const KRProperty* each : KRProperty::StandardPropertyArray()) {
    EXPECT_FALSE(merge()->mergeSingleValue(each, all)) << each->name().view();
    EXPECT_FALSE(merge()->mergeMultipleValue(each, all)) << each->name().view();
  }
  EXPECT_FALSE(merge()->mergeSingleValue(property(KRProPertyName), {}));
  EXPECT_FALSE(merge()->mergeSingleValue(nullptr, all));
  EXPECT_FALSE(merge()->mergeMultipleValue(nullptr, all));
}

// Tags.

KRRef<KRStoredValue> tagsOf(const KRStringList& tags) {
  return krLabelled(KRValueList::ofTexts(tags), KRValueType::TextList);
}

template <class Person>
KRStringList mergedTags(const std::vector<KRStringList>& lists) {
  std::vector<KRRef<IKRPerson>> all;
  for (const KRStringList& list : lists) {
    all.push_back(krPerson<Person>({}));
    all.back()->setValue(tagsOf(list), KRProPertyTags);
  }
  const auto merged = merge()->mergeSingleValue(property(KRProPertyTags), persons(all));
  if (!merged) return {};
  return dynamic_cast<const KRMutableSingleValue&>(*merged).value().template as<KRValueList>()->texts();
}

TYPED_TEST(KRMergeValuesTest, TagsAreJoinedInTheirOrder) {
  EXPECT_THAT(mergedTags<TypeParam>({{"t1"_kr, "t2"_kr}, {"t2"_kr, "t3"_kr}}), ElementsAre("t1"_kr, "t2"_kr, "t3"_kr));
  EXPECT_THAT(mergedTags<TypeParam>({{"b"_kr}, {}, {"a"_kr, "B"_kr, "b"_kr}, {"a"_kr}}),
              ElementsAre("b"_kr, "a"_kr, "B"_kr));
}

TYPED_TEST(KRMergeValuesTest, ATagThatOnePersonListsTwiceStaysTwice) {
  EXPECT_THAT(mergedTags<TypeParam>({{"a"_kr}, {"b"_kr, "a"_kr, "b"_kr}, {"b"_kr}}),
              ElementsAre("a"_kr, "b"_kr, "b"_kr));
}

TYPED_TEST(KRMergeValuesTest, EmptyTagListsMergeToNothing) {
  const auto ann = krPerson<TypeParam>({});
  ann->setValue(tagsOf({}), KRProPertyTags);
  EXPECT_FALSE(merge()->mergeSingleValue(property(KRProPertyTags), persons({ann})));
}

TYPED_TEST(KRMergeValuesTest, JoiningTagsChangesNobodysList) {
  const auto ann = krPerson<TypeParam>({});
  ann->setValue(tagsOf({"a"_kr}), KRProPertyTags);
  const auto ben = krPerson<TypeParam>({});
  ben->setValue(tagsOf({"b"_kr}), KRProPertyTags);
  const auto merged = merge()->mergeSingleValue(property(KRProPertyTags), persons({ann, ben}));
  const auto& value = dynamic_cast<const KRMutableSingleValue&>(*merged);
  EXPECT_FALSE(value.label());
  EXPECT_NE(merged, ann->valueByPropertyName(KRProPertyTags));
  const auto held = ann->valueByPropertyName(KRProPertyTags);
  EXPECT_THAT(dynamic_cast<const KRMutableSingleValue&>(*held).value().template as<KRValueList>()->texts(),
              ElementsAre("a"_kr));
}

// Multiple values.

TYPED_TEST(KRMergeValuesTest, EachDistinctPhoneOnceWithItsFirstLabel) {
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyPhone,
                                      {{{"home", phone("1")}}, {{"work", phone("1")}, {"mobile", phone("2")}}}),
              ElementsAre("home", "mobile"));
  EXPECT_THAT(
      mergedLabels<TypeParam>(KRProPertyPhone,
                              {{}, {{"a", phone("1")}, {"b", phone("1 ")}, {"c", phone("1")}}, {{"d", phone("")}}}),
      ElementsAre("a", "b", "d"));
}

TYPED_TEST(KRMergeValuesTest, EmailsThatDifferInCaseAreBothKept) {
  EXPECT_THAT(
      mergedLabels<TypeParam>(KRProPertyEmail, {{{"a", email("x@y")}}, {{"b", email("X@y")}, {"c", email("x@y")}}}),
      ElementsAre("a", "b"));
}

TYPED_TEST(KRMergeValuesTest, PhonesAndEmailsWithoutTextAreAllKept) {
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyPhone, {{{"a", phone(nullptr)}}, {{"b", phone(nullptr)}, {"c", {}}}}),
              ElementsAre("a", "b", "c"));
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyEmail, {{{"a", email(nullptr)}}, {{"b", email(nullptr)}}}),
              ElementsAre("a", "b"));
}

TYPED_TEST(KRMergeValuesTest, AddressesGoByTheirOwnEquality) {
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyAddress, {{{"a", address("Elm")}, {"b", address("Oak")}},
                                                          {{"c", address("Oak")}, {"d", address("oak")}}}),
              ElementsAre("a", "b", "d"));
}

TYPED_TEST(KRMergeValuesTest, AccountsGoByTheVeryServiceAndTheUserName) {
  KRInstantMessageServer* jabber = KRInstantMessageServer::serverWithDisplayName("Jabber");
  KRInstantMessageServer* icq = KRInstantMessageServer::serverWithDisplayName("ICQ");
  ASSERT_NE(jabber, icq);
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyInstantMessage,
                                      {{{"a", account("ann"_kr, jabber)}},
                                       {{"b", account("ann"_kr, icq)}, {"c", account("ann"_kr, jabber)}},
                                       {{"d", account("Ann"_kr, jabber)}}}),
              ElementsAre("a", "b", "d"));
  EXPECT_THAT(
      mergedLabels<TypeParam>(
          KRProPertyInstantMessage,
          {{{"a", account("ann"_kr, nullptr)}},
           {{"b", account("ann"_kr, nullptr)}, {"c", account(nullptr, jabber)}, {"d", account(nullptr, jabber)}}}),
      ElementsAre("a", "c"));
}

TYPED_TEST(KRMergeValuesTest, OtherEntriesGoByGeneralEquality) {
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyURL, {{{"a", KRString("http://x")}, {"b", KRString("http://y")}},
                                                      {{"c", KRString("http://y")}, {"d", KRString("http://X")}}}),
              ElementsAre("a", "b", "d"));
  EXPECT_THAT(mergedLabels<TypeParam>(KRProPertyRelatedName, {{{"a", {}}}, {{"b", {}}}}), ElementsAre("a", "b"));
}

TYPED_TEST(KRMergeValuesTest, TheMainEntryOfTheFirstListStaysTheMainOne) {
  const auto ann = krPerson<TypeParam>({});
  const auto list = entries({{"a", phone("1")}, {"b", phone("2")}});
  list->setMainIndex(1);
  ann->setValue(list, KRProPertyPhone);
  const auto ben = krPerson<TypeParam>({.phones = {"3"_kr}});
  const KRProperty* phones = property(KRProPertyPhone);
  const auto first = merge()->mergeMultipleValue(phones, persons({krPerson<TypeParam>({}), ann, ben}));
  EXPECT_EQ(first->mainValue()->label()->name(), "b");
  const auto last = merge()->mergeMultipleValue(phones, persons({ben, ann}));
  EXPECT_EQ(last->mainValue(), last->valueAtIndex(0));
}

TYPED_TEST(KRMergeValuesTest, TheMergedListIsNewAndTheEntriesAreShared) {
  const auto ann = krPerson<TypeParam>({.phones = {"1"_kr}});
  const auto held = ann->valueByPropertyName(KRProPertyPhone);
  const auto merged = merge()->mergeMultipleValue(property(KRProPertyPhone), persons({ann}));
  EXPECT_NE(merged, held);
  EXPECT_EQ(merged->valueAtIndex(0), dynamic_cast<const KRMutableMultipleValue&>(*held).valueAtIndex(0));
}

// The search by hash against the test of the written rule, entry by entry.
TYPED_TEST(KRMergeValuesTest, AgreesWithTheSlowWalkOnRandomEntries) {
  const auto handle = merge();
  std::mt19937 random(20241105);
  KRInstantMessageServer* const servers[] = {nullptr, KRInstantMessageServer::serverWithDisplayName("Jabber"),
                                             KRInstantMessageServer::serverWithDisplayName("ICQ")};
  const char* const texts[] = {nullptr, "", "a", "A", "b", "c"};
  const auto text = [&] { return texts[random() % std::size(texts)]; };
  for (int round = 0; round < 300; ++round) {
    const KRString name = std::vector<KRString>{KRProPertyPhone, KRProPertyEmail, KRProPertyAddress,
                                                KRProPertyInstantMessage, KRProPertyURL}[random() % 5];
    const auto value = [&]() -> KRValue {
      if (random() % 10 == 0) return {};
      if (name == KRProPertyPhone) return phone(text());
      if (name == KRProPertyEmail) return email(text());
      if (name == KRProPertyAddress) return address(text());
      if (name == KRProPertyInstantMessage) return account(textOf(text()), servers[random() % 3]);
      return textOf(text());
    };
    std::vector<KRRef<IKRPerson>> all;
    const auto expected = krMake<KRMutableMultipleValue>();
    for (size_t i = random() % 4; i != 0; --i) {
      const auto list = krMake<KRMutableMultipleValue>();
      for (size_t j = random() % 6; j != 0; --j) list->addValue(krLabelled(value(), 0));
      for (size_t j = 0; j < list->count(); ++j) {
        KRMutableSingleValue* entry = list->valueAtIndex(j);
        if (!handle->isMulitipleValue(expected.get(), entry, property(name))) {
          expected->addValue(KRRef<KRMutableSingleValue>(entry));
        }
      }
      all.push_back(krPerson<TypeParam>({}));
      all.back()->setValue(list, name);
    }
    const auto merged = handle->mergeMultipleValue(property(name), persons(all));
    ASSERT_EQ(merged ? merged->count() : 0, expected->count());
    for (size_t i = 0; i < expected->count(); ++i) ASSERT_EQ(merged->valueAtIndex(i), expected->valueAtIndex(i));
  }
}

TEST(KRMergeValues, TestsTheEntriesByTheRuleOfTheProperty) {
  const auto handle = merge();
  const auto list = entries({{"a", phone("1")}});
  const auto same = krLabelled(phone("1"), 0, "other"_kr);
  const auto other = krLabelled(phone("2"), 0);
  EXPECT_TRUE(handle->isMulitipleValue(list.get(), same.get(), property(KRProPertyPhone)));
  EXPECT_FALSE(handle->isMulitipleValue(list.get(), other.get(), property(KRProPertyPhone)));
  EXPECT_FALSE(handle->isMulitipleValue(list.get(), same.get(), property(KRProPertyEmail)));
  EXPECT_TRUE(handle->isMulitipleValue(list.get(), same.get(), property(KRProPertyURL)));
  EXPECT_FALSE(handle->isMulitipleValue(entries({}).get(), same.get(), property(KRProPertyPhone)));
  EXPECT_FALSE(handle->isMulitipleValue(nullptr, same.get(), property(KRProPertyPhone)));
  EXPECT_FALSE(handle->isMulitipleValue(list.get(), nullptr, property(KRProPertyPhone)));
}

// Cost.

/// Processor time of merging two lists of `count` phones each, the least of a few tries.
double secondsToMerge(size_t count, bool isAlike) {
  std::vector<KRRef<IKRPerson>> all;
  for (size_t i = 0; i < 2; ++i) {
    const auto list = krMake<KRMutableMultipleValue>();
    for (size_t j = 0; j < count; ++j) {
      const std::string number = isAlike ? std::string() : std::to_string(j);
      list->addValue(krLabelled(isAlike ? phone(nullptr) : phone(number.c_str()), KRValueType::Phone));
    }
    all.push_back(krPerson<KRTempPerson>({}));
    all.back()->setValue(list, KRProPertyPhone);
  }
  double least = 1e9;
  for (int tries = 0; tries < 5; ++tries) {
    const std::clock_t start = std::clock();
    const auto merged = merge()->mergeMultipleValue(property(KRProPertyPhone), persons(all));
    EXPECT_EQ(merged->count(), isAlike ? 2 * count : count);
    least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return least;
}

TEST(KRMergeValues, ManyEntriesTakeTimeInStepWithTheirNumber) {
  for (const bool isAlike : {false, true}) {
    const double few = secondsToMerge(2'500, isAlike);
    const double many = secondsToMerge(40'000, isAlike);
    // Sixteen times as many: in linear time some 16 times as long, with every entry compared with each other 256.
    EXPECT_LT(many, 100 * std::max(few, 1e-4));
  }
}

TEST(KRMerge, WithoutABookThePersonsStillGoToTheTrash) {
  KRTrashAddressBook* trash = KRTrashAddressBook::ShareTrashAddressBook();
  trash->clear();
  const KRSaveScope unwritten;
  const auto finding = krFinding({krNamed("Ann"), krNamed("Ann")});
  const auto merge = KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact);
  EXPECT_FALSE(merge->indirectFix(finding.get()));
  EXPECT_FALSE(merge->indirectFix(nullptr));
  merge->fix(finding.get());
  merge->fix(nullptr);
  EXPECT_EQ(trash->allPersonsCount(), 2U);
  trash->clear();
}

}  // namespace
