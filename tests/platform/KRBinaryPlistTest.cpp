#include "platform/KRBinaryPlist.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/KRPlistTrees.h"

namespace {

using KRPlistTrees::Node;
using KRPlistTrees::textOf;

/// The bytes of a list with the root.
std::string writtenOf(KRBinaryPlist& plist, Node root) {
  plist.setRoot(root);
  return plist.write();
}

/// A file put together by hand: objects in their order, offsets and references of one byte.
std::string fileOf(const std::vector<std::string>& objects, size_t root = 0) {
  std::string file = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(file.size());
    file += object;
  }
  const size_t table = file.size();
  file += offsets + std::string(6, '\0') + "\x01\x01";
  for (const size_t number : {objects.size(), root, table}) file += std::string(7, '\0') + static_cast<char>(number);
  return file;
}

std::string object(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}

TEST(KRBinaryPlist, WritesTheBytesOfTheFormat) {
  KRBinaryPlist plist;
  const Node elements[] = {plist.addInteger(1), plist.addTruth(true), plist.addText("a")};
  EXPECT_EQ(writtenOf(plist, plist.addArray(elements)),
            fileOf({object({0xA3, 1, 2, 3}), object({0x10, 1}), object({0x09}), object({0x51, 'a'})}));
}

TEST(KRBinaryPlist, GivesIntegersTheSmallestSizeOfTheFormat) {
  const struct {
    int64_t value;
    std::string bytes;
  } rows[] = {
      {0, object({0x10, 0})},
      {255, object({0x10, 0xFF})},
      {256, object({0x11, 1, 0})},
      {65536, object({0x12, 0, 1, 0, 0})},
      {int64_t{1} << 32, object({0x13, 0, 0, 0, 1, 0, 0, 0, 0})},
      {-1, object({0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})},
  };
  for (const auto& row : rows) {
    KRBinaryPlist plist;
    EXPECT_EQ(writtenOf(plist, plist.addInteger(row.value)), fileOf({row.bytes})) << row.value;
  }
}

TEST(KRBinaryPlist, ReadsEveryKindThatItWrites) {
  KRBinaryPlist plist;
  const std::vector<Node> values = {
      plist.addNull(),
      plist.addTruth(true),
      plist.addTruth(false),
      plist.addInteger(std::numeric_limits<int64_t>::min()),
      plist.addInteger(std::numeric_limits<int64_t>::max()),
      plist.addUnsigned(std::numeric_limits<uint64_t>::max()),
      plist.addReal(-0.0),
      plist.addReal(std::numeric_limits<double>::quiet_NaN()),
      plist.addReal(1e-310),
      plist.addInstant(-0.25),
      plist.addData(std::string("\0\xFF", 2)),
      plist.addData(""),
      plist.addText(""),
      plist.addText(std::string_view("a\0b", 3)),
      plist.addText("Grüße 李 😀"),
      plist.addUid(0),
      plist.addUid(0x1234567890),
      plist.addArray({}),
      plist.addDictionary({}, {}),
  };
  plist.setRoot(plist.addArray(values));
  const std::string bytes = plist.write();
  const auto read = KRBinaryPlist::read(bytes);
  ASSERT_TRUE(read);
  EXPECT_EQ(textOf(*read), textOf(plist));
}

TEST(KRBinaryPlist, ReadsRandomListsAsTheyWereWritten) {
  for (uint32_t seed = 0; seed < 200; ++seed) {
    const KRBinaryPlist plist = KRPlistTrees::Maker(seed, {}).list();
    const std::string bytes = plist.write();
    const auto read = KRBinaryPlist::read(bytes);
    ASSERT_TRUE(read) << seed;
    EXPECT_EQ(textOf(*read), textOf(plist)) << seed;
    EXPECT_EQ(read->write(), bytes) << seed;
  }
}

TEST(KRBinaryPlist, WritesEqualScalarsOnceAndKeepsSharedContainersShared) {
  KRBinaryPlist plist;
  const Node inner[] = {plist.addText("x"), plist.addText("x"), plist.addInteger(7), plist.addInteger(7),
                        plist.addReal(7),   plist.addUid(7),    plist.addData("x")};
  const Node shared = plist.addArray(inner);
  const Node outer[] = {shared, shared, plist.addText("x")};
  plist.setRoot(plist.addArray(outer));
  const std::string bytes = plist.write();
  const auto read = KRBinaryPlist::read(bytes);
  ASSERT_TRUE(read);
  // The two arrays, "x", 7, 7.0, reference 7 and the byte x.
  EXPECT_EQ(read->count(), 7U);
  EXPECT_EQ(read->elements(read->root())[0], read->elements(read->root())[1]);
}

TEST(KRBinaryPlist, WritesOnlyWhatTheRootLeadsTo) {
  KRBinaryPlist plist;
  plist.addText("never used");
  EXPECT_EQ(plist.write(), "");
  EXPECT_EQ(writtenOf(plist, plist.addTruth(false)), fileOf({object({0x08})}));
}

TEST(KRBinaryPlist, TakesValuesIntoAListThatWasRead) {
  const std::string bytes = fileOf({object({0xA1, 1}), object({0x51, 'a'})});
  auto plist = KRBinaryPlist::read(bytes);
  ASSERT_TRUE(plist);
  const Node elements[] = {plist->elements(plist->root())[0], plist->addText("b")};
  plist->setRoot(plist->addArray(elements));
  EXPECT_EQ(textOf(*plist), "[s61,s62,]");
  EXPECT_EQ(plist->write(), fileOf({object({0xA2, 1, 2}), object({0x51, 'a'}), object({0x51, 'b'})}));
}

TEST(KRBinaryPlist, FindsTheFirstOfEqualKeysAndAnswersNothingForOtherKinds) {
  const std::string bytes =
      fileOf({object({0xD2, 1, 1, 2, 3}), object({0x51, 'k'}), object({0x10, 5}), object({0x10, 6})});
  const auto plist = KRBinaryPlist::read(bytes);
  ASSERT_TRUE(plist);
  const Node root = plist->root();
  EXPECT_EQ(plist->integer(plist->find(root, "k")), 5);
  EXPECT_EQ(plist->find(root, "other"), KRBinaryPlist::kNone);
  EXPECT_EQ(plist->find(root, nullptr), KRBinaryPlist::kNone);
  EXPECT_TRUE(plist->text(root).isNothing());
  EXPECT_TRUE(plist->elements(root).empty());
  EXPECT_EQ(plist->integer(KRBinaryPlist::kNone), 0);
  EXPECT_EQ(plist->kind(KRBinaryPlist::kNone), KRBinaryPlist::Kind::Null);
}

TEST(KRBinaryPlist, ReadsSizesThatItDoesNotWriteItself) {
  const struct {
    std::string bytes;
    std::string text;
  } rows[] = {
      {object({0x22, 0x3F, 0xC0, 0, 0}), "r3ff8000000000000"},
      {object({0x13, 0, 0, 0, 0, 0, 0, 0, 5}), "i5"},
      {object({0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5}), "i5"},
      {object({0x14, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}),
       "i-2"},
      {object({0x82, 1, 0, 0}), "u65536"},
      {object({0x5F, 0x10, 2, 'h', 'i'}), "s6869"},
      {object({0x61, 0, 'h'}), "s68"},
      // Halves of a pair that are alone become U+FFFD.
      {object({0x62, 0xD8, 0x3D, 0, 'h'}), "sefbfbd68"},
      {object({0x61, 0xDE, 0x00}), "sefbfbd"},
  };
  for (const auto& row : rows) {
    const std::string file = fileOf({row.bytes});
    const auto plist = KRBinaryPlist::read(file);
    ASSERT_TRUE(plist) << row.text;
    EXPECT_EQ(textOf(*plist), row.text);
  }
}

}  // namespace
