#include "platform/KRKeyedArchiver.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <algorithm>
#include <random>

#include "tests/support/KRArchivePeer.h"
#include "tests/support/KRArchivedNode.h"
#include "tests/support/KRPlistTrees.h"

namespace {

KRRef<KRValueList> listOf(std::vector<KRValue> values) {
  return krMake<KRValueList>(std::move(values));
}

std::optional<KRValue> again(const KRValue& value) {
  return KRKeyedUnarchiver::unarchive(KRKeyedArchiver::archivedData(value), KRArchivedNode::classes());
}

/// An object that may belong to another, which keeps it.
class Member : public KRObject {
 public:
  KRText archiveClassName() const override { return "Member"; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    if (owner != nullptr) coder.encode(KRRef<Member>(owner), "owner");
    coder.encode(members, "members");
  }
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder) {
    auto member = krMake<Member>();
    coder.setObject(member);
    member->owner = coder.decode("owner").as<Member>();
    member->members = KRRef<KRValueList>(coder.decode("members").as<KRValueList>());
    return member;
  }

  Member* owner = nullptr;
  KRRef<KRValueList> members;
};

TEST(KRKeyedArchiver, WritesEveryKindOfValueSoThatItReadsTheSame) {
  const auto map = krMake<KRValueMap>();
  map->set("phone"_kr, "1"_kr);
  map->set(""_kr, KRValue());
  map->set("$class"_kr, KRValue::whole(1));
  const KRValue values[] = {
      KRValue(),
      ""_kr,
      "$null"_kr,
      "Grüße 李 😀"_kr,
      KRString(std::string_view("a\0b", 3)),
      KRValue::truth(true),
      KRValue::truth(false),
      KRValue::whole(INT64_MIN),
      KRValue::whole(INT64_MAX),
      KRValue::number(0.1),
      KRValue::number(3),
      *KRDate::make(1990, 3, 2),
      *KRDate::make(std::nullopt, 2, 29),
      *KRDate::make(0, 1, 1),
      krMake<KRData>(std::string_view("\0\xFF", 2)),
      krMake<KRData>(""),
      listOf({}),
      listOf({KRValue(), "a"_kr, KRValue::truth(true), listOf({"b"_kr})}),
      map,
      krMake<KRArchivedNode>(),
  };
  for (const KRValue& value : values) {
    const auto read = again(value);
    ASSERT_TRUE(read) << value.description().view();
    EXPECT_TRUE(read->isEqual(value)) << value.description().view() << " became " << read->description().view();
  }
  const auto all = listOf({std::begin(values), std::end(values)});
  const auto read = again(all);
  ASSERT_TRUE(read);
  EXPECT_TRUE(read->isEqual(all));
}

TEST(KRKeyedArchiver, LooksToOtherProgramsLikeAnyKeyedArchive) {
  const auto map = krMake<KRValueMap>();
  map->set("k"_kr, "v"_kr);
  const auto node = krMake<KRArchivedNode>("n"_kr);
  node->number = 7;
  node->weight = 0.5;
  node->value = listOf({KRValue(), node->name, map, krMake<KRData>("d"), *KRDate::make(std::nullopt, 3, 2),
                        KRValue::truth(true), KRValue::whole(7), KRValue::number(0.5)});
  EXPECT_EQ(krSeenByPeer(KRKeyedArchiver::archivedData(listOf({node, node}))),
            "NSMutableArray>NSArray>NSObject{NS.objects=("
            "KRArchivedNode>NSObject{flag=f name=s6e number=i7 value="
            "NSMutableArray>NSArray>NSObject{NS.objects=("
            "null s6e NSMutableDictionary>NSDictionary>NSObject{NS.keys=(s6b) NS.objects=(s76)} x64 "
            "KRDate>NSObject{day=i2 month=i3} t i7 r3fe0000000000000)} weight=r3fe0000000000000} #2)}");
}

TEST(KRKeyedArchiver, CanBeReadAfterAnotherLibraryHasCopiedTheArchive) {
  const auto node = krMake<KRArchivedNode>("Grüße"_kr);
  node->value = listOf({KRValue(), *KRDate::make(1990, 3, 2), krMake<KRData>("d"), KRValue::whole(-7), node->name});
  const std::string archive = KRKeyedArchiver::archivedData(listOf({node, node}));
  plist_t plist = nullptr;
  plist_from_bin(archive.data(), static_cast<uint32_t>(archive.size()), &plist);
  ASSERT_NE(plist, nullptr);
  EXPECT_EQ(plist_get_node_type(plist_access_path(plist, 2, "$top", "root")), PLIST_UID);
  char* bytes = nullptr;
  uint32_t size = 0;
  plist_to_bin(plist, &bytes, &size);
  const auto read = KRKeyedUnarchiver::unarchive({bytes, size}, KRArchivedNode::classes());
  plist_to_bin_free(bytes);
  plist_free(plist);
  ASSERT_TRUE(read);
  EXPECT_TRUE(read->isEqual(listOf({node, node})));
}

TEST(KRKeyedArchiver, WritesTheTopAsTheFormatHasIt) {
  const std::string bytes = KRKeyedArchiver::archivedData("text"_kr);
  const auto plist = KRBinaryPlist::read(bytes);
  ASSERT_TRUE(plist);
  EXPECT_EQ(KRPlistTrees::textOf(*plist),
            "{s" + KRPlistTrees::hex("$archiver") + ":s" + KRPlistTrees::hex("NSKeyedArchiver") + ",s" +
                KRPlistTrees::hex("$objects") + ":[s" + KRPlistTrees::hex("$null") + ",s" + KRPlistTrees::hex("text") +
                ",],s" + KRPlistTrees::hex("$top") + ":{s" + KRPlistTrees::hex("root") + ":u1,},s" +
                KRPlistTrees::hex("$version") + ":i100000,}");
}

TEST(KRKeyedArchiver, WritesAnObjectOnceAndKeepsItShared) {
  const auto shared = krMake<KRArchivedNode>("shared"_kr);
  const auto equal = krMake<KRArchivedNode>("shared"_kr);
  const auto data = krMake<KRData>("data");
  const auto read = again(listOf({shared, shared, equal, data, data}));
  ASSERT_TRUE(read);
  const auto& values = read->as<KRValueList>()->values();
  EXPECT_EQ(values[0].object(), values[1].object());
  EXPECT_NE(values[0].object(), values[2].object());
  EXPECT_EQ(values[3].object(), values[4].object());
}

TEST(KRKeyedArchiver, WritesCyclesAndTheirDecodersCloseThem) {
  const auto owner = krMake<Member>();
  const auto member = krMake<Member>();
  member->owner = owner.get();
  owner->members = listOf({member});
  const std::string archive = KRKeyedArchiver::archivedData(owner);
  static constexpr KRArchiveClass kClasses[] = {{"Member", Member::decode}};
  const auto read = KRKeyedUnarchiver::unarchive(archive, kClasses);
  ASSERT_TRUE(read);
  const auto* readOwner = read->as<Member>();
  ASSERT_NE(readOwner, nullptr);
  EXPECT_EQ(readOwner->members->values()[0].as<Member>()->owner, readOwner);
  EXPECT_EQ(readOwner->owner, nullptr);
}

TEST(KRKeyedArchiver, WritesWhatCannotBeArchivedAsNothing) {
  class Plain : public KRObject {};
  const KRValue plain = krMake<Plain>();
  EXPECT_FALSE(KRKeyedArchiver::canArchive(plain));
  EXPECT_FALSE(KRKeyedArchiver::canArchive(KRValue()));
  EXPECT_TRUE(KRKeyedArchiver::canArchive(""_kr));
  EXPECT_TRUE(KRKeyedArchiver::canArchive(listOf({})));
  EXPECT_TRUE(KRKeyedArchiver::canArchive(krMake<KRArchivedNode>()));
  const auto read = again(listOf({plain, "a"_kr}));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->description(), "((null), a)");
  EXPECT_TRUE(again(plain)->isNothing());
}

/// Encodes whatever it is given.
class Encoder : public KRObject {
 public:
  explicit Encoder(void (*encode)(KRKeyedArchiver&)) : encode_(encode) {}
  KRText archiveClassName() const override { return "Encoder"; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override { encode_(coder); }

 private:
  void (*encode_)(KRKeyedArchiver&);
};

TEST(KRKeyedArchiver, EscapesKeysThatAreTheFormatsOwn) {
  const std::string archive = KRKeyedArchiver::archivedData(krMake<Encoder>([](KRKeyedArchiver& coder) {
    coder.encode("mine"_kr, "$class");
    coder.encodeInteger(4, "$$");
  }));
  EXPECT_EQ(krSeenByPeer(archive), "Encoder>NSObject{$$$=i4 $$class=s" + KRPlistTrees::hex("mine") + "}");
  static constexpr KRArchiveClass kClasses[] = {{"Encoder", [](KRKeyedUnarchiver& coder) -> KRRef<KRObject> {
                                                   EXPECT_TRUE(coder.contains("$$"));
                                                   EXPECT_FALSE(coder.contains("$"));
                                                   EXPECT_EQ(coder.decodeInteger("$$"), 4);
                                                   return krMake<KRArchivedNode>(coder.decode("$class").text());
                                                 }}};
  const auto read = KRKeyedUnarchiver::unarchive(archive, kClasses);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->as<KRArchivedNode>()->name, "mine"_kr);
}

TEST(KRKeyedArchiver, LetsTheLastValueOfAKeyCount) {
  EXPECT_EQ(krSeenByPeer(KRKeyedArchiver::archivedData(krMake<Encoder>([](KRKeyedArchiver& coder) {
              coder.encodeInteger(1, "a");
              coder.encodeInteger(2, "b");
              coder.encodeBool(true, "a");
            }))),
            "Encoder>NSObject{a=t b=i2}");
}

TEST(KRKeyedArchiver, KeepsObjectsApartThatOnlyLiveWhileTheyAreEncoded) {
  // Every body makes a list that nobody else keeps; none may be taken for an earlier one at the same address.
  std::vector<KRValue> values;
  for (int i = 0; i < 100; ++i) {
    values.push_back(krMake<Encoder>([](KRKeyedArchiver& coder) {
      static int64_t number = 0;
      const auto list = krMake<KRValueList>();
      list->values().push_back(KRValue::whole(number++));
      coder.encode(list, "list");
    }));
  }
  static constexpr KRArchiveClass kClasses[] = {
      {"Encoder", [](KRKeyedUnarchiver& coder) { return KRRef<KRObject>(coder.decode("list").object()); }}};
  const auto read = KRKeyedUnarchiver::unarchive(KRKeyedArchiver::archivedData(listOf(values)), kClasses);
  ASSERT_TRUE(read);
  for (size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(*read->as<KRValueList>()->values()[i].as<KRValueList>()->values()[0].asWhole(), static_cast<int64_t>(i));
  }
}

TEST(KRKeyedArchiver, WritesNestingOfAnyDepth) {
  auto list = krMake<KRValueList>();
  for (int i = 0; i < 10000; ++i) {
    const auto outer = krMake<KRValueList>();
    outer->values().push_back(list);
    list = outer;
  }
  const std::string archive = KRKeyedArchiver::archivedData(list);
  const auto plist = KRBinaryPlist::read(archive);
  ASSERT_TRUE(plist);
  // "$null", the lists, and their class.
  EXPECT_EQ(plist->elements(plist->find(plist->root(), "$objects")).size(), 1U + 10001 + 1);
}

KRValue randomValue(std::mt19937& random, std::vector<KRValue>& objects, int depth) {
  const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  if (!objects.empty() && below(6) == 0) return objects[below(static_cast<uint32_t>(objects.size()))];
  KRValue made;
  switch (below(depth > 0 ? 11 : 8)) {
    case 0:
      return {};
    case 1:
      return KRString(std::string(below(20), 'a')) == ""_kr ? KRValue("é"_kr)
                                                            : KRValue(KRString(std::string(below(20), 'b')));
    case 2:
      return *KRDate::make(below(2) == 0 ? std::optional<int>(below(10000)) : std::nullopt,
                           1 + static_cast<int>(below(12)), 28);
    case 3:
      return KRValue::truth(below(2) == 0);
    case 4:
      return KRValue::whole(static_cast<int64_t>(random()) - 2000000000);
    case 5:
      return KRValue::number(static_cast<double>(random()) / 7);
    case 6:
    case 7:
      made = krMake<KRData>(std::string(below(30), 'x'));
      break;
    case 8: {
      const auto list = listOf({});
      for (uint32_t i = below(6); i > 0; --i) list->values().push_back(randomValue(random, objects, depth - 1));
      made = list;
      break;
    }
    case 9: {
      const auto map = krMake<KRValueMap>();
      for (uint32_t i = below(6); i > 0; --i)
        map->set(KRString(std::to_string(i)), randomValue(random, objects, depth - 1));
      made = map;
      break;
    }
    default: {
      const auto node = krMake<KRArchivedNode>(KRString(std::to_string(below(5))));
      node->value = randomValue(random, objects, depth - 1);
      made = node;
    }
  }
  objects.push_back(made);
  return made;
}

TEST(KRKeyedArchiver, WritesRandomGraphsSoThatTheyReadTheSame) {
  for (uint32_t seed = 0; seed < 300; ++seed) {
    std::mt19937 random(seed);
    std::vector<KRValue> objects;
    const auto list = listOf({});
    for (int i = 0; i < 6; ++i) list->values().push_back(randomValue(random, objects, 5));
    const std::string archive = KRKeyedArchiver::archivedData(list);
    const auto read = KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes());
    ASSERT_TRUE(read) << seed;
    EXPECT_TRUE(read->isEqual(list)) << seed;
    // What is shared stays shared, so the archive of what was read is the same. Only equal data, which nobody can
    // change, may come back as one object, and then stays one.
    const std::string second = KRKeyedArchiver::archivedData(*read);
    EXPECT_LE(second.size(), archive.size()) << seed;
    EXPECT_TRUE(KRKeyedArchiver::archivedData(*again(*read)) == second) << seed;
    if (seed < 5) {
      EXPECT_NE(krSeenByPeer(archive), "refused") << seed;
    }
  }
}

/// Encodes a list that nobody else has, with the next link in it.
class Link : public KRObject {
 public:
  class Passing : public KRValueList {
   public:
    explicit Passing(std::vector<KRValue> values) : KRValueList(std::move(values)) { ++there; }
    ~Passing() override { --there; }
    static inline int there = 0;
  };

  explicit Link(int left) : left_(left) {}
  KRText archiveClassName() const override { return "Link"; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    most = std::max(most, Passing::there);
    if (left_ > 0) coder.encode(krMake<Passing>(std::vector<KRValue>{krMake<Link>(left_ - 1)}), "next");
  }
  static inline int most = 0;

 private:
  int left_;
};

TEST(KRKeyedArchiver, LetsGoOfListsThatNobodyElseHasAndTakesNoLaterOneForThem) {
  constexpr int kLinks = 1000;
  const std::string archive = KRKeyedArchiver::archivedData(krMake<Link>(kLinks));
  EXPECT_LE(Link::most, 1);
  EXPECT_EQ(Link::Passing::there, 0);
  const auto plist = KRBinaryPlist::read(archive);
  ASSERT_TRUE(plist);
  // "$null", the links and their lists, and both classes.
  EXPECT_EQ(plist->elements(plist->find(plist->root(), "$objects")).size(), 1U + (kLinks + 1) + kLinks + 2);
}

TEST(KRKeyedArchiver, TakesAKeyThatIsNothingForTheEmptyOne) {
  EXPECT_EQ(krSeenByPeer(KRKeyedArchiver::archivedData(krMake<Encoder>([](KRKeyedArchiver& coder) {
              coder.encodeInteger(1, "");
              coder.encodeInteger(2, nullptr);
            }))),
            "Encoder>NSObject{=i2}");
}

TEST(KRKeyedArchiver, TellsKeysApartThatStandAtTheSameAddressOneAfterTheOther) {
  EXPECT_EQ(krSeenByPeer(KRKeyedArchiver::archivedData(krMake<Encoder>([](KRKeyedArchiver& coder) {
              std::string key = "a";
              for (; key[0] < 'd'; ++key[0]) coder.encodeInteger(key[0], std::string_view(key));
            }))),
            "Encoder>NSObject{a=i97 b=i98 c=i99}");
}

}  // namespace
