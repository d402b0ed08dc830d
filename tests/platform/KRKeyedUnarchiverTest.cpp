#include "platform/KRKeyedUnarchiver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "tests/support/KRArchivedNode.h"
#include "tests/support/KRProcessorTime.h"
#include "tests/support/KRTestFolder.h"
#include "tests/support/KRTestPaths.h"

namespace {

using Node = KRBinaryPlist::Node;

/// Puts archives together piece by piece, good ones and bad ones.
class Builder {
 public:
  Builder() { objects_.push_back(plist_.addText("$null")); }

  uint32_t add(Node node) {
    objects_.push_back(node);
    return static_cast<uint32_t>(objects_.size() - 1);
  }
  Node reference(uint64_t place) { return plist_.addUid(place); }
  Node array(const std::vector<uint32_t>& places) {
    std::vector<Node> nodes;
    for (const uint32_t place : places) nodes.push_back(reference(place));
    return plist_.addArray(nodes);
  }
  uint32_t addClass(const std::vector<const char*>& chain) {
    std::vector<Node> names;
    for (const char* name : chain) names.push_back(plist_.addText(name));
    return add(dictionary({{"$classes", plist_.addArray(names)}, {"$classname", names[0]}}));
  }
  Node dictionary(const std::vector<std::pair<const char*, Node>>& fields) {
    std::vector<Node> keys;
    std::vector<Node> values;
    for (const auto& [key, value] : fields) {
      keys.push_back(plist_.addText(key));
      values.push_back(value);
    }
    return plist_.addDictionary(keys, values);
  }
  uint32_t addRecord(uint32_t recordClass, std::vector<std::pair<const char*, Node>> fields) {
    fields.emplace_back("$class", reference(recordClass));
    return add(dictionary(fields));
  }
  /// An object at this place from now on, whatever stood there.
  void replace(uint32_t place, Node node) { objects_[place] = node; }

  std::string archive(uint32_t root) {
    plist_.setRoot(dictionary({{"$archiver", plist_.addText(archiver)},
                               {"$version", plist_.addInteger(version)},
                               {"$top", dictionary({{"root", reference(root)}})},
                               {"$objects", plist_.addArray(objects_)}}));
    return plist_.write();
  }
  std::optional<KRValue> read(uint32_t root) {
    return KRKeyedUnarchiver::unarchive(archive(root), KRArchivedNode::classes());
  }
  std::string described(uint32_t root) {
    const auto value = read(root);
    return value ? std::string(value->description().view()) : "damaged";
  }

  KRBinaryPlist& plist() { return plist_; }
  KRText archiver = "NSKeyedArchiver";
  int64_t version = 100000;

 private:
  KRBinaryPlist plist_;
  std::vector<Node> objects_;
};

TEST(KRKeyedUnarchiver, ReadsTheClassesOfOtherPrograms) {
  Builder build;
  const uint32_t text = build.add(build.plist().addText("a"));
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  const auto list = build.addRecord(listClass, {{"NS.objects", build.array({text, 0, text})}});
  const auto subclass = build.addClass({"SomeArray", "NSMutableArray", "NSArray", "NSObject"});
  const auto subList = build.addRecord(subclass, {{"NS.objects", build.array({})}});
  const auto mapClass = build.addClass({"NSDictionary", "NSObject"});
  const auto map = build.addRecord(mapClass, {{"NS.keys", build.array({text})}, {"NS.objects", build.array({list})}});
  const auto dateClass = build.addClass({"NSDate", "NSObject"});
  const auto date = build.addRecord(dateClass, {{"NS.time", build.plist().addReal(-1)}});
  const auto dataClass = build.addClass({"NSMutableData", "NSData", "NSObject"});
  const auto data = build.addRecord(dataClass, {{"NS.data", build.plist().addData("\x01")}});
  const auto textClass = build.addClass({"NSMutableString", "NSString", "NSObject"});
  const auto mutableText = build.addRecord(textClass, {{"NS.string", build.plist().addText("b")}});
  EXPECT_EQ(build.described(0), "(null)");
  EXPECT_EQ(build.described(list), "(a, (null), a)");
  EXPECT_EQ(build.described(subList), "()");
  EXPECT_EQ(build.described(map), "{a = (a, (null), a)}");
  EXPECT_EQ(build.described(date), "2000-12-31");
  EXPECT_EQ(build.described(data), "<01>");
  EXPECT_EQ(build.described(mutableText), "b");
}

TEST(KRKeyedUnarchiver, ReadsFieldsInTheRecordAndByReference) {
  Builder build;
  const auto nodeClass = build.addClass({"KRArchivedNode", "NSObject"});
  const auto five = build.add(build.plist().addInteger(5));
  const auto node = build.addRecord(nodeClass, {{"name", build.plist().addText("inline")},
                                                {"number", build.reference(five)},
                                                {"flag", build.plist().addInteger(1)},
                                                {"weight", build.plist().addInteger(2)},
                                                {"value", build.plist().addReal(0.5)}});
  const auto value = build.read(node);
  ASSERT_TRUE(value);
  const auto* read = value->as<KRArchivedNode>();
  EXPECT_EQ(read->name, "inline"_kr);
  EXPECT_EQ(read->number, 5);
  EXPECT_TRUE(read->flag);
  EXPECT_EQ(read->weight, 2);
  EXPECT_TRUE(read->value.isEqual(KRValue::number(0.5)));
}

TEST(KRKeyedUnarchiver, TellsMissingFieldsFromNothing) {
  static bool containsName = false;
  static bool containsNumber = false;
  static std::optional<int64_t> number;
  static constexpr KRArchiveClass kClasses[] = {{"KRArchivedNode", [](KRKeyedUnarchiver& coder) -> KRRef<KRObject> {
                                                   containsName = coder.contains("name");
                                                   containsNumber = coder.contains("number");
                                                   number = coder.decodeInteger("name");
                                                   EXPECT_TRUE(coder.decode("name").isNothing());
                                                   EXPECT_TRUE(coder.decode("number").isNothing());
                                                   EXPECT_FALSE(coder.decodeBool("name"));
                                                   EXPECT_FALSE(coder.decodeNumber("number"));
                                                   return krMake<KRArchivedNode>();
                                                 }}};
  Builder build;
  const auto nodeClass = build.addClass({"KRArchivedNode", "NSObject"});
  const auto node = build.addRecord(nodeClass, {{"name", build.reference(0)}});
  ASSERT_TRUE(KRKeyedUnarchiver::unarchive(build.archive(node), kClasses));
  EXPECT_TRUE(containsName);
  EXPECT_FALSE(containsNumber);
  EXPECT_FALSE(number);
}

TEST(KRKeyedUnarchiver, RefusesWhatIsNoKeyedArchive) {
  Builder good;
  const auto text = good.add(good.plist().addText("a"));
  EXPECT_EQ(good.described(text), "a");
  EXPECT_EQ(good.described(2), "damaged");
  good.version = 1;
  EXPECT_EQ(good.described(text), "damaged");
  good.version = 100000;
  good.archiver = "SomeArchiver";
  EXPECT_EQ(good.described(text), "damaged");
  good.archiver = "NSKeyedArchiver";
  good.replace(0, good.plist().addText("null"));
  EXPECT_EQ(good.described(text), "damaged");

  KRBinaryPlist plain;
  plain.setRoot(plain.addText("a"));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive(plain.write(), {}));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive("", {}));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive("bplist00", {}));
}

TEST(KRKeyedUnarchiver, RefusesUnknownClassesAndRecordsWithoutAClass) {
  Builder build;
  EXPECT_EQ(build.described(build.addRecord(build.addClass({"NSSet", "NSObject"}), {})), "damaged");
  EXPECT_EQ(build.described(build.addRecord(build.addClass({"NSObject"}), {})), "damaged");
  EXPECT_EQ(build.described(build.addRecord(0, {})), "damaged");
  EXPECT_EQ(build.described(build.addRecord(1000, {})), "damaged");
  EXPECT_EQ(build.described(build.add(build.dictionary({}))), "damaged");
  EXPECT_EQ(build.described(build.add(build.array({}))), "damaged");
  EXPECT_EQ(build.described(build.add(build.reference(1))), "damaged");
  EXPECT_EQ(build.described(build.add(build.plist().addInstant(0))), "damaged");
  EXPECT_EQ(build.described(build.add(build.plist().addNull())), "damaged");
  EXPECT_EQ(build.described(build.add(build.plist().addUnsigned(UINT64_MAX))), "damaged");
  const auto nodeClass = build.addClass({"KRArchivedNode", "NSObject"});
  EXPECT_EQ(build.described(build.addRecord(nodeClass, {{"value", build.array({})}})), "damaged");
}

TEST(KRKeyedUnarchiver, RefusesDamagedRecordsOfTheFormatsOwnClasses) {
  Builder build;
  auto& plist = build.plist();
  const auto list = build.addClass({"NSArray", "NSObject"});
  const auto map = build.addClass({"NSDictionary", "NSObject"});
  const auto date = build.addClass({"NSDate", "NSObject"});
  const auto data = build.addClass({"NSData", "NSObject"});
  const auto text = build.addClass({"NSString", "NSObject"});
  const auto calendar = build.addClass({"KRDate", "NSObject"});
  const auto a = build.add(plist.addText("a"));
  const auto number = build.add(plist.addInteger(1));
  const uint32_t rows[] = {
      build.addRecord(list, {}),
      build.addRecord(list, {{"NS.objects", plist.addText("a")}}),
      build.addRecord(list, {{"NS.objects", build.array({1000})}}),
      build.addRecord(map, {{"NS.keys", build.array({})}}),
      build.addRecord(map, {{"NS.keys", build.array({a})}, {"NS.objects", build.array({})}}),
      build.addRecord(map, {{"NS.keys", build.array({number})}, {"NS.objects", build.array({a})}}),
      build.addRecord(map, {{"NS.keys", build.array({0})}, {"NS.objects", build.array({a})}}),
      build.addRecord(map, {{"NS.keys", build.array({a, a})}, {"NS.objects", build.array({a, a})}}),
      build.addRecord(date, {}),
      build.addRecord(date, {{"NS.time", plist.addText("a")}}),
      build.addRecord(date, {{"NS.time", plist.addReal(1e300)}}),
      build.addRecord(date, {{"NS.time", plist.addReal(std::numeric_limits<double>::quiet_NaN())}}),
      build.addRecord(data, {{"NS.data", plist.addText("a")}}),
      build.addRecord(text, {{"NS.string", plist.addData("a")}}),
      build.addRecord(text, {}),
      build.addRecord(calendar, {{"month", plist.addInteger(2)}}),
      build.addRecord(calendar, {{"month", plist.addInteger(2)}, {"day", plist.addInteger(30)}}),
      build.addRecord(calendar, {{"month", plist.addInteger(1)}, {"day", plist.addInteger((int64_t{1} << 32) + 1)}}),
      build.addRecord(calendar,
                      {{"year", plist.addInteger(-5)}, {"month", plist.addInteger(1)}, {"day", plist.addInteger(1)}}),
      build.addRecord(calendar,
                      {{"year", plist.addText("a")}, {"month", plist.addInteger(1)}, {"day", plist.addInteger(1)}}),
  };
  for (const uint32_t row : rows) EXPECT_EQ(build.described(row), "damaged") << row;
}

TEST(KRKeyedUnarchiver, RefusesTheWholeArchiveWhenADecoderRefusesOneRecord) {
  static constexpr KRArchiveClass kRefusing[] = {
      {"KRArchivedNode", [](KRKeyedUnarchiver&) { return KRRef<KRObject>(); }}};
  static constexpr KRArchiveClass kFailing[] = {{"KRArchivedNode", [](KRKeyedUnarchiver& coder) -> KRRef<KRObject> {
                                                   coder.fail();
                                                   return krMake<KRArchivedNode>();
                                                 }}};
  static constexpr KRArchiveClass kWithout[] = {{"KRArchivedNode", nullptr}};
  const auto list = krMake<KRValueList>();
  list->values().push_back(krMake<KRArchivedNode>());
  const std::string archive = KRKeyedArchiver::archivedData(list);
  EXPECT_TRUE(KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes()));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive(archive, kRefusing));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive(archive, kFailing));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive(archive, kWithout));
  EXPECT_FALSE(KRKeyedUnarchiver::unarchive(archive, {}));
}

TEST(KRKeyedUnarchiver, RefusesCyclesThatNoDecoderCloses) {
  Builder build;
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  const auto list = build.addRecord(listClass, {{"NS.objects", build.array({2})}});
  ASSERT_EQ(list, 2U);
  EXPECT_EQ(build.described(list), "damaged");
  const auto nodeClass = build.addClass({"KRArchivedNode", "NSObject"});
  const auto node = build.addRecord(nodeClass, {{"value", build.reference(4)}});
  ASSERT_EQ(node, 4U);
  EXPECT_EQ(build.described(node), "damaged");
}

uint32_t addNested(Builder& build, int depth) {
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  uint32_t list = build.addRecord(listClass, {{"NS.objects", build.array({})}});
  for (int i = 1; i < depth; ++i) list = build.addRecord(listClass, {{"NS.objects", build.array({list})}});
  return list;
}

TEST(KRKeyedUnarchiver, ReadsNestingUpToItsLimit) {
  Builder build;
  EXPECT_NE(build.described(addNested(build, KRKeyedUnarchiver::kDeepest)), "damaged");
  EXPECT_EQ(build.described(addNested(build, KRKeyedUnarchiver::kDeepest + 1)), "damaged");
  EXPECT_EQ(build.described(addNested(build, 100000)), "damaged");
}

TEST(KRKeyedUnarchiver, CountsTheDepthOfSharedListsWhereTheyStand) {
  // Each chain ends in the one before, which was decoded at the root: none is deep by itself, together they are.
  Builder build;
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  std::vector<uint32_t> chains = {addNested(build, 300)};
  const auto chainUpon = [&](uint32_t list) {
    for (int i = 0; i < 300; ++i) list = build.addRecord(listClass, {{"NS.objects", build.array({list})}});
    return list;
  };
  for (int i = 0; i < 300; ++i) chains.push_back(chainUpon(chains.back()));
  EXPECT_NE(build.described(build.addRecord(listClass, {{"NS.objects", build.array({chains[0], chains[0]})}})),
            "damaged");
  EXPECT_EQ(build.described(build.addRecord(listClass, {{"NS.objects", build.array(chains)}})), "damaged");
}

TEST(KRKeyedUnarchiver, RefusesListsThatWouldBeHugeWhenWrittenOut) {
  // Each list holds the next one twice: sixty of them would be 2^60 values for whoever compares or describes them.
  Builder build;
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  uint32_t list = build.addRecord(listClass, {{"NS.objects", build.array({})}});
  for (int i = 0; i < 20; ++i) list = build.addRecord(listClass, {{"NS.objects", build.array({list, list})}});
  EXPECT_TRUE(build.read(list));
  for (int i = 0; i < 40; ++i) list = build.addRecord(listClass, {{"NS.objects", build.array({list, list})}});
  EXPECT_EQ(build.described(list), "damaged");
}

TEST(KRKeyedUnarchiver, RefusesArraysThatManyRecordsShare) {
  // Ten thousand records over one array of ten thousand elements: a hundred million from a file of less than a
  // megabyte.
  Builder build;
  const auto text = build.add(build.plist().addText("a"));
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  const Node shared = build.array(std::vector<uint32_t>(10000, text));
  std::vector<uint32_t> lists;
  for (int i = 0; i < 10000; ++i) lists.push_back(build.addRecord(listClass, {{"NS.objects", shared}}));
  const auto all = build.addRecord(listClass, {{"NS.objects", build.array(lists)}});
  EXPECT_EQ(build.described(all), "damaged");
}

/// So many maps of one entry, whose key is one text of a megabyte that all share.
std::optional<KRValue> mapsWithOneKey(int count) {
  Builder build;
  const std::string longText(1U << 20U, 'k');
  const auto key = build.add(build.plist().addText(std::string_view(longText)));
  const auto mapClass = build.addClass({"NSDictionary", "NSObject"});
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  std::vector<uint32_t> maps;
  for (int i = 0; i < count; ++i) {
    maps.push_back(build.addRecord(mapClass, {{"NS.keys", build.array({key})}, {"NS.objects", build.array({0})}}));
  }
  return build.read(build.addRecord(listClass, {{"NS.objects", build.array(maps)}}));
}

TEST(KRKeyedUnarchiver, RefusesLongKeysThatManyMapsShare) {
  const auto few = mapsWithOneKey(100);
  ASSERT_TRUE(few);
  EXPECT_EQ(few->as<KRValueList>()->values().size(), 100U);
  EXPECT_FALSE(mapsWithOneKey(4000));
}

TEST(KRKeyedUnarchiver, TakesNoTimeForLongNamesThatManyClassesShare) {
  Builder build;
  const std::string longName(1U << 20U, 'n');
  const Node name = build.plist().addText(std::string_view(longName));
  std::vector<Node> names(16, name);
  names.push_back(build.plist().addText("NSArray"));
  const Node chain = build.plist().addArray(names);
  std::vector<uint32_t> lists;
  for (int i = 0; i < 1000; ++i) {
    const auto own = build.add(build.dictionary({{"$classes", chain}, {"$classname", name}}));
    lists.push_back(build.addRecord(own, {{"NS.objects", build.array({})}}));
  }
  const auto listClass = build.addClass({"NSArray", "NSObject"});
  const std::string archive = build.archive(build.addRecord(listClass, {{"NS.objects", build.array(lists)}}));
  const double start = krProcessorSeconds();
  const auto read = KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes());
  // Seventeen gigabytes of names take longer than a second.
  EXPECT_LT(krProcessorSeconds() - start, 0.5);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->as<KRValueList>()->values().size(), 1000U);
}

TEST(KRKeyedUnarchiver, DecodesARecordOnceHoweverManyPlacesNameIt) {
  static int decoded = 0;
  static constexpr KRArchiveClass kClasses[] = {{"KRArchivedNode", [](KRKeyedUnarchiver&) -> KRRef<KRObject> {
                                                   ++decoded;
                                                   return krMake<KRArchivedNode>();
                                                 }}};
  Builder build;
  const auto nodeClass = build.addClass({"KRArchivedNode", "NSObject"});
  const Node record = build.dictionary({{"$class", build.reference(nodeClass)}});
  std::vector<uint32_t> places;
  for (int i = 0; i < 100; ++i) places.push_back(build.add(record));
  const auto list = build.addRecord(build.addClass({"NSArray", "NSObject"}), {{"NS.objects", build.array(places)}});
  const auto value = KRKeyedUnarchiver::unarchive(build.archive(list), kClasses);
  ASSERT_TRUE(value);
  EXPECT_EQ(value->as<KRValueList>()->values().size(), 100U);
  EXPECT_EQ(decoded, 1);
}

TEST(KRKeyedUnarchiver, SurvivesEveryCutAndEveryFlippedBit) {
  const auto map = krMake<KRValueMap>();
  map->set("k"_kr, "é"_kr);
  const auto list = krMake<KRValueList>();
  const auto node = krMake<KRArchivedNode>("n"_kr);
  node->value = map;
  list->values() = {node, *KRDate::make(1990, 3, 2), krMake<KRData>("data"), KRValue::truth(true), node};
  const std::string whole = KRKeyedArchiver::archivedData(list);
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(KRKeyedUnarchiver::unarchive(whole.substr(0, size), KRArchivedNode::classes())) << size;
  }
  size_t good = 0;
  for (size_t i = 0; i < whole.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string damaged = whole;
      damaged[i] = static_cast<char>(static_cast<unsigned char>(damaged[i]) ^ (1U << bit));
      const std::vector<char> exact(damaged.begin(), damaged.end());
      const auto value = KRKeyedUnarchiver::unarchive({exact.data(), exact.size()}, KRArchivedNode::classes());
      if (value) {
        ++good;
        EXPECT_FALSE(value->description().isNothing());
        EXPECT_TRUE(KRKeyedUnarchiver::unarchive(KRKeyedArchiver::archivedData(*value), KRArchivedNode::classes()));
      }
    }
  }
  // A flipped bit inside a text or a number makes another good archive; most others are seen.
  EXPECT_GT(good, 0U);
  EXPECT_LT(good, whole.size() * 4);
}

/// An archive of the test data, the text of what is in it beside it where it is a good one.
class KRKeyedUnarchiverData : public testing::TestWithParam<std::string> {};

std::vector<std::string> archivesOfTheData() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(KR_TEST_DATA_DIR "/archive")) {
    if (entry.path().extension() == ".plist") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST_P(KRKeyedUnarchiverData, ReadsAsItsNameAndItsTextSay) {
  const std::string path = KR_TEST_DATA_DIR "/archive/" + GetParam();
  const std::string archive = KRTestFolder::contentOf(path + ".plist");
  const auto value = KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes());
  if (GetParam().starts_with("damaged-")) {
    EXPECT_FALSE(value);
    return;
  }
  ASSERT_TRUE(value);
  EXPECT_EQ(std::string(value->description().view()) + "\n", KRTestFolder::contentOf(path + ".txt"));
  // What we wrote once, we write again byte for byte.
  if (GetParam() == "good-every-kind") {
    EXPECT_TRUE(KRKeyedArchiver::archivedData(*value) == archive);
  }
}

INSTANTIATE_TEST_SUITE_P(Data, KRKeyedUnarchiverData, testing::ValuesIn(archivesOfTheData()), [](const auto& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

}  // namespace
