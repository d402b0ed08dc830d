#include "contacts/model/KRObjectPersonName.h"

#include <gtest/gtest.h>

#include "tests/contacts/ModelSamples.h"

namespace {

struct Row {
  const char* why;
  KRString first;
  KRString middle;
  KRString last;
  const char* shown;
};

constexpr Row kRows[] = {
    {"no part", {}, {}, {}, ""},
    {"empty parts", ""_kr, ""_kr, ""_kr, ""},
    {"all parts", "Ann"_kr, "B."_kr, "Lee"_kr, "Ann B. Lee"},
    {"without middle", "Ann"_kr, {}, "Lee"_kr, "Ann Lee"},
    {"empty middle", "Ann"_kr, ""_kr, "Lee"_kr, "Ann Lee"},
    {"first only", "Ann"_kr, {}, {}, "Ann"},
    {"last only", {}, {}, "Lee"_kr, "Lee"},
    {"middle only", {}, "B."_kr, {}, "B."},
    {"spaces are kept", " Ann "_kr, {}, "Lee"_kr, " Ann  Lee"},
    {"Chinese", "小明"_kr, {}, "王"_kr, "王小明"},
    {"Chinese with middle", "明"_kr, "小"_kr, "王"_kr, "王小明"},
    {"Japanese, two scripts", "さくら"_kr, {}, "山口"_kr, "山口さくら"},
    {"katakana with long mark", "ジョー"_kr, {}, "佐々木"_kr, "佐々木ジョー"},
    {"Korean", "지우"_kr, {}, "김"_kr, "김지우"},
    {"Chinese and Latin", "Ming"_kr, {}, "王"_kr, "Ming 王"},
    {"beyond the basic plane", "明"_kr, {}, "𠮷"_kr, "𠮷明"},
    {"Chinese with a space", "小 明"_kr, {}, "王"_kr, "小 明 王"},
    {"Cyrillic", "Анна"_kr, {}, "Ли"_kr, "Анна Ли"},
};

TEST(KRObjectPersonName, ShowsItsParts) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(krMake<KRObjectPersonName>(row.first, row.middle, row.last)->displayString(), row.shown);
  }
}

TEST(KRObjectPersonName, TellsNothingFromAnEmptyPart) {
  const auto none = krMake<KRObjectPersonName>(KRString(), KRString(), "Lee"_kr);
  const auto empty = krMake<KRObjectPersonName>(""_kr, KRString(), "Lee"_kr);
  EXPECT_TRUE(none->first().isNothing());
  EXPECT_FALSE(none->isEqual(empty.get()));
  EXPECT_NE(none->description(), empty->description());
}

TEST(KRObjectPersonName, KeepsTheLawsOfEquality) {
  ModelSamples samples(11);
  size_t equal = 0;
  for (int i = 0; i < 20000; ++i) {
    const auto a = samples.name();
    const auto b = samples.name();
    const bool same = a->first() == b->first() && a->middle() == b->middle() && a->last() == b->last();
    equal += static_cast<size_t>(same);
    ASSERT_EQ(a->isEqual(b.get()), same);
    ASSERT_EQ(a->description() == b->description(), same) << a->description().view();
    if (same) {
      ASSERT_EQ(a->hash(), b->hash());
    }
  }
  EXPECT_GT(equal, 0U);
}

TEST(KRObjectPersonName, EqualsNothingElse) {
  const auto name = krMake<KRObjectPersonName>("A"_kr, KRString(), KRString());
  EXPECT_FALSE(name->isEqual(nullptr));
  EXPECT_FALSE(name->isEqual(krMake<KRLabel>("A"_kr).get()));
}

}  // namespace
