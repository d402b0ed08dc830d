#include "platform/KRBinaryPlistBytes.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <string>

#include "platform/KRBinaryPlist.h"
#include "tests/support/KRPlistTrees.h"

namespace {

using Number = KRBinaryPlistBytes::Number;
using KRPlistTrees::textOf;

std::string textOfBytes(std::string_view bytes) {
  const auto list = KRBinaryPlist::read(bytes);
  return list ? textOf(*list) : "damaged";
}

TEST(KRBinaryPlistBytes, ReadsAsTheValuesThatWereAddedForEverySizeOfReferences) {
  for (const unsigned size : {1U, 2U, 4U}) {
    KRBinaryPlistBytes bytes(size);
    const Number key = bytes.addText("k");
    const std::array<Number, 12> elements = {
        bytes.addTruth(true),
        bytes.addTruth(false),
        bytes.addInteger(std::numeric_limits<int64_t>::min()),
        bytes.addInteger(std::numeric_limits<int64_t>::max()),
        bytes.addUnsigned(std::numeric_limits<uint64_t>::max()),
        bytes.addUnsigned(300),
        bytes.addReal(-0.5),
        bytes.addInstant(1),
        bytes.addUid(70000),
        bytes.addText("Grüße 李 😀"),
        bytes.addData(std::string_view("\0k", 2)),
        bytes.addNull(),
    };
    const Number array = bytes.addArray(elements);
    const KRBuffer file = bytes.finish(bytes.addDictionary({&key, 1}, {&array, 1}));
    EXPECT_EQ(textOfBytes(file),
              "{s6b:[t,f,i-9223372036854775808,i9223372036854775807,i18446744073709551615,i300,rbfe0000000000000,"
              "d3ff0000000000000,u70000,s4772c3bcc39f6520e69d8e20f09f9880,x006b,n,],}")
        << size;
  }
}

TEST(KRBinaryPlistBytes, AValueThatIsTakenBackLeavesNothing) {
  KRBinaryPlistBytes bytes(1);
  const std::array<Number, 2> elements = {bytes.addText("same"), bytes.addText("other")};
  const Number again = bytes.addText("same");
  EXPECT_TRUE(bytes.from(elements[0]).starts_with(bytes.from(again)));
  EXPECT_FALSE(bytes.from(elements[1]).starts_with(bytes.from(again)));
  bytes.removeLast();
  EXPECT_EQ(bytes.count(), 2U);
  const Number array = bytes.addArray(elements);
  EXPECT_EQ(array, again);
  EXPECT_EQ(textOfBytes(bytes.finish(array)), "[s73616d65,s6f74686572,]");
}

TEST(KRBinaryPlistBytes, NoValueBeginsWithTheBytesOfAnotherThatDiffers) {
  KRBinaryPlistBytes bytes(1);
  const std::string many(300, 'a');
  const Number values[] = {
      bytes.addText("a"),         bytes.addText("aa"),     bytes.addData("a"),   bytes.addData("aa"),
      bytes.addText(many.data()), bytes.addData(many),     bytes.addInteger(1),  bytes.addInteger(256),
      bytes.addInteger(-1),       bytes.addReal(1),        bytes.addTruth(true), bytes.addTruth(false),
      bytes.addText(""),          bytes.addData(""),       bytes.addText("é"),   bytes.addText("éa"),
      bytes.addText("\u2420"),    bytes.addInteger(65536), bytes.addReal(0),     bytes.addReal(-0.0)};
  for (size_t i = 0; i < std::size(values); ++i) {
    const size_t end = i + 1 < std::size(values) ? bytes.from(values[i + 1]).size() : 0;
    const std::string_view own = bytes.from(values[i]).substr(0, bytes.from(values[i]).size() - end);
    for (size_t other = 0; other < std::size(values); ++other) {
      EXPECT_EQ(bytes.from(values[other]).starts_with(own), other == i) << i << " " << other;
    }
  }
}

TEST(KRBinaryPlistBytes, MoreValuesThanReferencesCanNameAreRefused) {
  for (const auto& [size, most] : {std::pair(1U, 256U), std::pair(2U, 65536U)}) {
    KRBinaryPlistBytes bytes(size);
    for (unsigned i = 0; i < most - 1; ++i) bytes.addInteger(i);
    const std::array<Number, 2> ends = {0, most - 2};
    const Number array = bytes.addArray(ends);
    EXPECT_THROW(bytes.addNull(), std::bad_alloc);
    EXPECT_THROW(bytes.addArray({}), std::bad_alloc);
    EXPECT_EQ(textOfBytes(bytes.finish(array)), "[i0,i" + std::to_string(most - 2) + ",]");
  }
}

TEST(KRBinaryPlistBytes, KnowsTheSmallestReferencesForACountOfValues) {
  EXPECT_EQ(KRBinaryPlistBytes::referenceSizeFor(1), 1U);
  EXPECT_EQ(KRBinaryPlistBytes::referenceSizeFor(256), 1U);
  EXPECT_EQ(KRBinaryPlistBytes::referenceSizeFor(257), 2U);
  EXPECT_EQ(KRBinaryPlistBytes::referenceSizeFor(65536), 2U);
  EXPECT_EQ(KRBinaryPlistBytes::referenceSizeFor(65537), 4U);
}

}  // namespace
