#include "platform/KRString.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(KRString, NothingDiffersFromEmpty) {
  const KRString nothing;
  const KRString empty("");
  EXPECT_TRUE(nothing.isNothing());
  EXPECT_FALSE(empty.isNothing());
  EXPECT_TRUE(nothing.isEmpty());
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_FALSE(nothing == empty);
  EXPECT_TRUE(nothing == KRString());
  EXPECT_TRUE(empty == ""_kr);
  EXPECT_TRUE(KRString(KRText()).isNothing());
  EXPECT_FALSE(KRString(KRText("")).isNothing());
}

TEST(KRString, ContractComparisonIsFalseForNothing) {
  EXPECT_FALSE(sameText(KRText(), KRText()));
  EXPECT_FALSE(sameText(KRText(), ""));
  EXPECT_TRUE(sameText("", ""));
  EXPECT_TRUE(sameText("Ann", KRString("Ann")));
  EXPECT_FALSE(sameText("Ann", "ann"));
}

TEST(KRString, LiteralsNeedNoMemoryAndAreConstant) {
  static constexpr KRString kName = "KRIssueBlankName"_kr;
  static_assert(kName.size() == 16);
  static_assert(kName == "KRIssueBlankName"_kr);
  const KRString copy = kName;
  EXPECT_EQ(copy.view().data(), kName.view().data());
}

TEST(KRString, CopiesAndMovesKeepTheText) {
  KRString text("a text longer than any small buffer would be");
  KRString copy = text;
  EXPECT_EQ(copy.view().data(), text.view().data());
  KRString moved = std::move(text);
  EXPECT_EQ(moved, copy);
  text = "literal"_kr;
  EXPECT_EQ(text, "literal");
  std::swap(text, moved);
  EXPECT_EQ(moved, "literal");
  EXPECT_EQ(text, copy);
  copy = *&copy;
  EXPECT_EQ(copy, text);
}

TEST(KRString, SlicesShareTheirBlock) {
  KRSlab* slab = KRSlab::create(16);
  std::copy_n("firstsecond", 11, slab->bytes());
  const KRString first = KRString::slice(slab, 0, 5);
  const KRString second = KRString::slice(slab, 5, 6);
  slab->release();
  EXPECT_EQ(first, "first");
  EXPECT_EQ(second, "second");
}

TEST(KRString, LengthCountsUTF16Units) {
  struct Row {
    const char* text;
    size_t length;
  };
  const Row rows[] = {{"", 0}, {"Ann", 3}, {"é", 1}, {"丰", 1}, {"\xF0\x9F\x98\x80", 2}, {"a\xF0\x9F\x98\x80z", 4}};
  for (const Row& row : rows) EXPECT_EQ(KRString(row.text).length(), row.length) << row.text;
  EXPECT_EQ(KRString().length(), 0U);
}

TEST(KRText, HandsOutUTF16UnitsInOrder) {
  std::u16string units;
  EXPECT_TRUE(KRText("a丰\xF0\x9F\x98\x80").allUnits([&](char16_t unit) {
    units += unit;
    return true;
  }));
  EXPECT_EQ(units, u"a丰\U0001F600");
}

TEST(KRText, StopsAtTheFirstUnitThatIsRefused) {
  int seen = 0;
  EXPECT_FALSE(KRText("abc").allUnits([&](char16_t unit) { return ++seen, unit != u'b'; }));
  EXPECT_EQ(seen, 2);
}

TEST(KRString, IllFormedBytesBecomeReplacementCharacters) {
  const std::string r = "\xEF\xBF\xBD";
  struct Row {
    const char* name;
    std::string bytes;
    std::string text;
  };
  // One replacement for each maximal part of a sequence, as in table 3-8 of the Unicode standard.
  const Row rows[] = {
      {"plain", "Ann", "Ann"},
      {"a NUL is a character", std::string("a\0b", 3), std::string("a\0b", 3)},
      {"lone continuation", "a\x80z", "a" + r + "z"},
      {"overlong two", "\xC0\xAF", r + r},
      {"overlong three", "\xE0\x80\xAF", r + r + r},
      {"surrogate", "\xED\xA0\x80", r + r + r},
      {"beyond the last", "\xF4\x90\x80\x80", r + r + r + r},
      {"never a lead", "\xFE\xFF", r + r},
      {"cut short inside", "\xE4\xB8z", r + "z"},
      {"cut short at the end", "\xF0\x9F\x98", r},
      {"mixed", "a\xF1\x80\x80\xE1\x80\xC2z", "a" + r + r + r + "z"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(std::string(KRString(row.bytes).view()), row.text) << row.name;
    EXPECT_EQ(krIsWellFormed(row.bytes), row.bytes == row.text) << row.name;
    EXPECT_TRUE(krIsWellFormed(row.text)) << row.name;
  }
}

TEST(KRString, EveryCodePointSurvives) {
  for (char32_t point = 0; point <= 0x10FFFF; ++point) {
    if (point >= 0xD800 && point < 0xE000) continue;
    std::string bytes;
    if (point < 0x80) {
      bytes = {static_cast<char>(point)};
    } else if (point < 0x800) {
      bytes = {static_cast<char>(0xC0 | (point >> 6U)), static_cast<char>(0x80 | (point & 0x3F))};
    } else if (point < 0x10000) {
      bytes = {static_cast<char>(0xE0 | (point >> 12U)), static_cast<char>(0x80 | ((point >> 6U) & 0x3F)),
               static_cast<char>(0x80 | (point & 0x3F))};
    } else {
      bytes = {static_cast<char>(0xF0 | (point >> 18U)), static_cast<char>(0x80 | ((point >> 12U) & 0x3F)),
               static_cast<char>(0x80 | ((point >> 6U) & 0x3F)), static_cast<char>(0x80 | (point & 0x3F))};
    }
    ASSERT_TRUE(krIsWellFormed(bytes)) << static_cast<uint32_t>(point);
    size_t position = 0;
    ASSERT_EQ(krNextCodePoint(bytes, position), point);
    ASSERT_EQ(position, bytes.size());
  }
}

TEST(KRString, AgreesWithIcuOnWhatIsWellFormed) {
  std::mt19937 random(5);
  constexpr unsigned char kEdges[] = {'a',  0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF,
                                      0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
  size_t wellFormed = 0;
  for (int round = 0; round < 300000; ++round) {
    std::string bytes;
    for (size_t length = random() % 8; length > 0; --length)
      bytes += static_cast<char>(kEdges[random() % std::size(kEdges)]);
    // Behind a full word of plain text, the other way through.
    if (round % 3 == 0) bytes.insert(0, "plain text");
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, nullptr, bytes.data(), static_cast<int32_t>(bytes.size()), &status);
    const bool expected = status != U_INVALID_CHAR_FOUND;
    ASSERT_EQ(krIsWellFormed(bytes), expected) << testing::PrintToString(bytes);
    ASSERT_TRUE(krIsWellFormed(krWellFormed(bytes)));
    ASSERT_EQ(krWellFormed(bytes) == bytes, expected);
    wellFormed += expected ? 1 : 0;
  }
  EXPECT_GT(wellFormed, 30000U);
}

TEST(KRString, FormatsOnePlace) {
  EXPECT_EQ(krFormat("The prefix \"%@\" of this", "dr."), "The prefix \"dr.\" of this");
  EXPECT_EQ(krFormat("no place", "x"), "no place");
  EXPECT_EQ(krFormat("%@:", KRText()), "(null):");
  // What stands in the argument is never taken for a place.
  EXPECT_EQ(krFormat("%@", "%@"), "%@");
}

TEST(KRString, ConcatenatesWhatIsThere) {
  EXPECT_EQ(krConcat({"first:", KRText(), "Ann", ""}), "first:Ann");
  EXPECT_EQ(krConcat({}), "");
}

TEST(KRString, IsSharedBetweenThreads) {
  const KRString text("a text that two threads copy and drop");
  auto copyAndDrop = [&] {
    for (int i = 0; i < 20000; ++i) {
      const KRString copy = text;
      ASSERT_EQ(copy.size(), text.size());
    }
  };
  std::thread other(copyAndDrop);
  copyAndDrop();
  other.join();
}

}  // namespace
