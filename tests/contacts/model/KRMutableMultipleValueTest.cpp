#include "contacts/model/KRMutableMultipleValue.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/contacts/ModelSamples.h"

namespace {

KRRef<KRMutableSingleValue> phone(const char* number) {
  return krMake<KRMutableSingleValue>(krMake<KRObjectPhone>(KRString(number)), krMake<KRLabel>("home"_kr),
                                      KRValueType::Phone);
}

TEST(KRMutableMultipleValue, IsEmptyWhenNew) {
  const auto values = krMake<KRMutableMultipleValue>();
  EXPECT_EQ(values->type(), 12);
  EXPECT_EQ(values->count(), 0U);
  EXPECT_EQ(values->mainValue(), nullptr);
  EXPECT_EQ(values->valueAtIndex(0), nullptr);
}

TEST(KRMutableMultipleValue, KeepsTheVeryEntriesInOrder) {
  auto values = krMake<KRMutableMultipleValue>();
  const auto first = phone("1");
  const auto second = phone("2");
  values->addValue(first);
  values->addValue(KRRef<KRMutableSingleValue>());
  values->addValue(second);
  ASSERT_EQ(values->count(), 2U);
  EXPECT_EQ(values->valueAtIndex(0), first.get());
  EXPECT_EQ(values->valueAtIndex(1), second.get());
  EXPECT_EQ(values->valueAtIndex(2), nullptr);
}

TEST(KRMutableMultipleValue, LeavesTheSourceOfACopyAlone) {
  auto values = krMake<KRMutableMultipleValue>();
  values->addValue(phone("1"));
  const auto copy = values->mutableCopy();
  EXPECT_EQ(copy->valueAtIndex(0), values->valueAtIndex(0));
  copy->removeValueAtIndex(0);
  EXPECT_EQ(copy->count(), 0U);
  EXPECT_EQ(values->count(), 1U);
  copy->addValue(phone("2"));
  copy->addValue(phone("3"));
  EXPECT_EQ(values->count(), 1U);
}

TEST(KRMutableMultipleValue, PassesOverARemovalOutOfRange) {
  auto values = krMake<KRMutableMultipleValue>();
  values->addValue(phone("1"));
  values->removeValueAtIndex(1);
  values->removeValueAtIndex(static_cast<size_t>(-1));
  EXPECT_EQ(values->count(), 1U);
}

TEST(KRMutableMultipleValue, AnswersTheMarkedEntryElseTheFirst) {
  auto values = krMake<KRMutableMultipleValue>();
  for (const char* number : {"1", "2", "3"}) values->addValue(phone(number));
  EXPECT_EQ(values->mainValue(), values->valueAtIndex(0));
  values->setMainIndex(2);
  EXPECT_EQ(values->mainValue(), values->valueAtIndex(2));
  EXPECT_EQ(values->mutableCopy()->mainValue(), values->valueAtIndex(2));
  values->setMainIndex(3);
  EXPECT_EQ(values->mainValue(), values->valueAtIndex(0));
}

TEST(KRMutableMultipleValue, MovesTheMarkAlongWithItsEntry) {
  ModelSamples samples(5);
  for (int round = 0; round < 2000; ++round) {
    auto values = krMake<KRMutableMultipleValue>();
    std::vector<KRRef<KRMutableSingleValue>> judge;
    for (size_t i = samples.upTo(5); i > 0; --i) {
      judge.push_back(phone("1"));
      values->addValue(judge.back());
    }
    const size_t mark = samples.upTo(6);
    values->setMainIndex(mark);
    const KRMutableSingleValue* marked = mark < judge.size() ? judge[mark].get() : nullptr;
    while (!judge.empty()) {
      const size_t gone = samples.upTo(judge.size() - 1);
      if (judge[gone].get() == marked) marked = nullptr;
      judge.erase(judge.begin() + static_cast<ptrdiff_t>(gone));
      values->removeValueAtIndex(gone);
      ASSERT_EQ(values->count(), judge.size());
      const KRMutableSingleValue* expected = judge.empty() ? nullptr : marked != nullptr ? marked : judge[0].get();
      ASSERT_EQ(values->mainValue(), expected);
    }
  }
}

TEST(KRMutableMultipleValue, IsEqualByEntriesInTheirOrder) {
  auto a = krMake<KRMutableMultipleValue>();
  auto b = krMake<KRMutableMultipleValue>();
  EXPECT_TRUE(a->isEqual(b.get()));
  a->addValue(phone("1"));
  a->addValue(phone("2"));
  b->addValue(phone("2"));
  EXPECT_FALSE(a->isEqual(b.get()));
  b->addValue(phone("1"));
  EXPECT_FALSE(a->isEqual(b.get()));
  b->removeValueAtIndex(0);
  b->addValue(phone("2"));
  EXPECT_TRUE(a->isEqual(b.get()));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_EQ(a->description(), b->description());
}

}  // namespace
