// Archives of more values than references of two bytes can name, and those of fewer.
#include <gtest/gtest.h>

#include "platform/KRBinaryPlist.h"
#include "tests/support/KRArchivePeer.h"
#include "tests/support/KRArchivedNode.h"
#include "tests/support/KRPlistTrees.h"

namespace {

std::optional<KRValue> again(const KRValue& value) {
  return KRKeyedUnarchiver::unarchive(KRKeyedArchiver::archivedData(value), KRArchivedNode::classes());
}

unsigned referenceSizeOf(std::string_view archive) {
  return static_cast<unsigned char>(archive[archive.size() - 25]);
}

/// A shared node, then so many nodes with texts of their own that refer to it, then the values.
KRRef<KRValueList> manyNodes(int64_t count, const std::vector<KRValue>& values) {
  const auto shared = krMake<KRArchivedNode>("name"_kr);
  const auto list = krMake<KRValueList>(std::vector<KRValue>{shared});
  for (int64_t i = 0; i < count; ++i) {
    const auto node = krMake<KRArchivedNode>(KRString("名 " + std::to_string(i)));
    node->number = i;
    node->value = shared;
    list->values().push_back(node);
  }
  list->values().insert(list->values().end(), values.begin(), values.end());
  return list;
}

std::vector<KRValue> valuesThatAreEasilyMixedUp() {
  return {"name"_kr,
          "NS.objects"_kr,
          "$null"_kr,
          "root"_kr,
          "a"_kr,
          "é"_kr,
          krMake<KRData>("a"),
          krMake<KRData>("name"),
          krMake<KRData>("a"),
          KRValue::whole(0),
          KRValue::truth(false),
          KRValue::number(0),
          KRValue::whole(INT64_MIN),
          KRValue::whole(INT64_MAX),
          *KRDate::make(1990, 3, 2),
          KRValue()};
}

TEST(KRKeyedArchiverSize, WritesLargeArchivesSoThatTheyReadTheSame) {
  const auto list = manyNodes(20000, valuesThatAreEasilyMixedUp());
  const KRBuffer archive = KRKeyedArchiver::archive(list);
  EXPECT_EQ(referenceSizeOf(archive), 4U);
  const auto read = KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes());
  ASSERT_TRUE(read);
  EXPECT_TRUE(read->isEqual(list));
  const auto& values = read->as<KRValueList>()->values();
  size_t apart = 0;
  for (size_t i = 1; i <= 20000; ++i) {
    apart += values[i].as<KRArchivedNode>()->value.object() == values[0].object() ? 0 : 1;
  }
  EXPECT_EQ(apart, 0U);
  const std::string second = KRKeyedArchiver::archivedData(*read);
  EXPECT_TRUE(KRKeyedArchiver::archivedData(*again(*read)) == second);
}

TEST(KRKeyedArchiverSize, WritesLargeArchivesThatOtherProgramsRead) {
  const auto node = [](const std::string& name, int number, const std::string& value) {
    return "KRArchivedNode>NSObject{flag=f name=s" + KRPlistTrees::hex(name) + " number=i" + std::to_string(number) +
           value + " weight=r0000000000000000}";
  };
  std::string expected = "NSMutableArray>NSArray>NSObject{NS.objects=(" + node("name", 0, "");
  for (int i = 0; i < 20000; ++i) expected += " " + node("名 " + std::to_string(i), i, " value=#2");
  for (const char* text : {"name", "NS.objects", "$null", "root", "a", "é"}) expected += " s" + KRPlistTrees::hex(text);
  expected +=
      " x61 x6e616d65 x61 i0 f r0000000000000000 i-9223372036854775808 i9223372036854775807"
      " KRDate>NSObject{day=i2 month=i3 year=i1990} null)}";
  const std::string archive = KRKeyedArchiver::archivedData(manyNodes(20000, valuesThatAreEasilyMixedUp()));
  ASSERT_EQ(referenceSizeOf(archive), 4U);
  EXPECT_TRUE(krSeenByPeer(archive) == expected);
}

TEST(KRKeyedArchiverSize, WritesEqualTextsNumbersAndDataOnceInLargeArchivesToo) {
  const auto list = manyNodes(20000, valuesThatAreEasilyMixedUp());
  const KRBuffer archive = KRKeyedArchiver::archive(list);
  const auto plist = KRBinaryPlist::read(archive);
  ASSERT_TRUE(plist);
  const auto smallest = KRBinaryPlist::read(archive)->write();
  const auto again = KRBinaryPlist::read(smallest);
  ASSERT_TRUE(again);
  // The general writer writes equal ones once; it finds none here that were not.
  EXPECT_EQ(plist->count(), again->count());
  EXPECT_EQ(archive.size(), smallest.size());
}

TEST(KRKeyedArchiverSize, BringsArchivesOfFewValuesIntoTheirSmallestForm) {
  const auto texts = [](size_t count) {
    const auto list = krMake<KRValueList>();
    for (size_t i = 0; i < count; ++i) list->values().push_back(KRString(std::to_string(i)));
    return list;
  };
  const auto countOf = [](const KRBuffer& archive) { return KRBinaryPlist::read(archive)->count(); };
  // A text more is two values more: itself and the reference to it.
  const size_t others = countOf(KRKeyedArchiver::archive(texts(10))) - 20;
  for (const size_t most : {size_t{256}, size_t{65536}}) {
    const size_t fitting = (most - others) / 2;
    const KRBuffer small = KRKeyedArchiver::archive(texts(fitting));
    const KRBuffer large = KRKeyedArchiver::archive(texts(fitting + 1));
    EXPECT_LE(countOf(small), most);
    EXPECT_GT(countOf(large), most);
    EXPECT_EQ(referenceSizeOf(small), most == 256 ? 1U : 2U);
    EXPECT_EQ(referenceSizeOf(large), most == 256 ? 2U : 4U);
    EXPECT_TRUE(KRBinaryPlist::read(small)->write() == small.view());
    EXPECT_TRUE(again(texts(fitting + 1))->isEqual(texts(fitting + 1)));
  }
}

}  // namespace
