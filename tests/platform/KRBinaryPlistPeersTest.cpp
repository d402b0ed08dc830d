// Property lists of ours in other programs, and theirs in ours.
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdlib>
#include <memory>

#include "tests/support/KRPlistTrees.h"
#include "tests/support/KRTestFolder.h"
#include "tests/support/KRTestPaths.h"

namespace {

using KRPlistTrees::Choice;
using KRPlistTrees::Kind;
using KRPlistTrees::Maker;
using KRPlistTrees::Node;
using KRPlistTrees::textOf;

constexpr uint32_t kLists = 150;

int peer(const std::string& arguments) {
  return std::system(("python3 '" KR_SOURCE_DIR "/tests/platform/plist_peer.py' " + arguments).c_str());
}

std::string textOfBytes(const std::string& bytes) {
  const auto plist = KRBinaryPlist::read(bytes);
  return plist ? textOf(*plist) : "damaged";
}

TEST(KRBinaryPlistPeers, PythonReadsWhatWeWriteAndWeReadItsCopy) {
  const KRTestFolder folder;
  std::vector<std::string> texts;
  for (uint32_t seed = 0; seed < kLists; ++seed) {
    const KRBinaryPlist plist = Maker(seed, {}).list();
    folder.put(std::to_string(seed) + ".plist", plist.write());
    texts.push_back(textOf(plist));
  }
  ASSERT_EQ(peer("copy '" + folder.path() + "'"), 0);
  for (uint32_t seed = 0; seed < kLists; ++seed) {
    EXPECT_EQ(folder.content(std::to_string(seed) + ".text"), texts[seed]) << seed;
    EXPECT_EQ(textOfBytes(folder.content(std::to_string(seed) + ".copy")), texts[seed]) << seed;
  }
}

TEST(KRBinaryPlistPeers, WeReadWhatPythonMakes) {
  const KRTestFolder folder;
  ASSERT_EQ(peer("make '" + folder.path() + "' 4 " + std::to_string(kLists)), 0);
  for (uint32_t i = 0; i < kLists; ++i) {
    const std::string bytes = folder.content(std::to_string(i) + ".plist");
    const std::string text = folder.content(std::to_string(i) + ".text");
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(textOfBytes(bytes), text) << i;
    EXPECT_EQ(textOfBytes(KRBinaryPlist::read(bytes)->write()), text) << i;
  }
}

struct FreePlist {
  void operator()(void* plist) const { plist_free(plist); }
};
using Peer = std::unique_ptr<void, FreePlist>;

struct FreeMemory {
  void operator()(char* memory) const { plist_to_bin_free(memory); }
};

Peer read(const std::string& bytes) {
  plist_t plist = nullptr;
  plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &plist);
  return Peer(plist);
}

std::string write(plist_t plist) {
  char* bytes = nullptr;
  uint32_t size = 0;
  plist_to_bin(plist, &bytes, &size);
  const std::unique_ptr<char, FreeMemory> owner(bytes);
  return {bytes, size};
}

/// The same value in the other library.
plist_t peerOf(const KRBinaryPlist& plist, Node node) {
  switch (plist.kind(node)) {
    case Kind::Null:
      return nullptr;
    case Kind::Truth:
      return plist_new_bool(plist.truth(node) ? 1 : 0);
    case Kind::Integer:
    case Kind::Unsigned:
      return plist_new_uint(plist.unsignedInteger(node));
    case Kind::Real:
      return plist_new_real(plist.real(node));
    case Kind::Instant:
      return plist_new_date(static_cast<int32_t>(plist.instant(node)), 0);
    case Kind::Data:
      return plist_new_data(plist.data(node).data(), plist.data(node).size());
    case Kind::Text:
      return plist_new_string(std::string(plist.text(node).view()).c_str());
    case Kind::Uid:
      return plist_new_uid(plist.uid(node));
    case Kind::Array: {
      plist_t array = plist_new_array();
      for (const Node element : plist.elements(node)) plist_array_append_item(array, peerOf(plist, element));
      return array;
    }
    case Kind::Dictionary: {
      plist_t dictionary = plist_new_dict();
      for (size_t i = 0; i < plist.keys(node).size(); ++i) {
        const std::string key(plist.text(plist.keys(node)[i]).view());
        plist_dict_set_item(dictionary, key.c_str(), peerOf(plist, plist.values(node)[i]));
      }
      return dictionary;
    }
  }
  return nullptr;
}

/// What can be made with the other library: it has no null and no sign, writes the largest integers as negative ones,
/// and its texts end at a zero byte.
constexpr Choice kCommon = {.withNull = false, .withNegative = false, .withUnsigned = false, .withZeroBytes = false};

TEST(KRBinaryPlistPeers, LibplistReadsWhatWeWriteAndWeReadItsCopy) {
  for (uint32_t seed = 0; seed < kLists; ++seed) {
    const KRBinaryPlist plist = Maker(seed, {.withNull = false, .withZeroBytes = false}).list();
    const Peer other = read(plist.write());
    ASSERT_TRUE(other) << seed;
    EXPECT_EQ(textOfBytes(write(other.get())), textOf(plist)) << seed;
  }
}

TEST(KRBinaryPlistPeers, WeReadWhatLibplistMakes) {
  for (uint32_t seed = 1000; seed < 1000 + kLists; ++seed) {
    const KRBinaryPlist plist = Maker(seed, kCommon).list();
    const Peer other(peerOf(plist, plist.root()));
    EXPECT_EQ(textOfBytes(write(other.get())), textOf(plist)) << seed;
  }
}

}  // namespace
