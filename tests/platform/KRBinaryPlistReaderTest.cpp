#include "platform/KRBinaryPlistReader.h"

#include <gtest/gtest.h>

#include "tests/support/KRPlistTrees.h"

namespace {

constexpr size_t kTrailer = 32;

std::string object(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}

void appendNumber(std::string& file, uint64_t number, int size) {
  for (int i = size - 1; i >= 0; --i) file += static_cast<char>((number >> (8 * i)) & 0xFFU);
}

/// A file with references of two bytes and offsets of four, of objects and of the places that the table gives.
std::string fileOf(const std::string& objects, const std::vector<uint32_t>& offsets, uint64_t root = 0) {
  std::string file = "bplist00" + objects;
  const size_t table = file.size();
  for (const uint32_t offset : offsets) appendNumber(file, offset, 4);
  file += std::string(6, '\0') + "\x04\x02";
  for (const uint64_t number : {uint64_t{offsets.size()}, root, uint64_t{table}}) appendNumber(file, number, 8);
  return file;
}

std::string fileOfOne(const std::string& bytes) {
  return fileOf(bytes, {8});
}

bool isGood(const std::string& file) {
  // A copy without room behind it, so that the address checker sees the first byte read too far.
  const std::vector<char> exact(file.begin(), file.end());
  return KRBinaryPlistReader({exact.data(), exact.size()}).read().has_value();
}

TEST(KRBinaryPlistReader, RefusesWhatIsNoObject) {
  EXPECT_TRUE(isGood(fileOfOne(object({0x09}))));
  const std::string rows[] = {
      object({0x01}), object({0x0C}), object({0x0F}), object({0x21, 0}), object({0x32, 0, 0, 0, 0}),
      object({0x34, 0, 0, 0, 0, 0, 0, 0, 0}), object({0x70}), object({0x90}), object({0xB0}), object({0xC0}),
      object({0xE0}), object({0xF0}), object({0x15}), object({0x88, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
      // A byte beyond ASCII, numbers beyond 64 bits, and counts that are no numbers.
      object({0x51, 0x80}), object({0x14, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}),
      object({0x14, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 1}), object({0x5F, 0x51, 'a'}),
      object({0x4F, 0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})};
  for (const std::string& row : rows) EXPECT_FALSE(isGood(fileOfOne(row))) << KRPlistTrees::hex(row);
}

TEST(KRBinaryPlistReader, RefusesCountsBeyondTheFile) {
  for (const int marker : {0x4F, 0x5F, 0x6F, 0xAF, 0xDF}) {
    for (const uint64_t count :
         {uint64_t{3}, uint64_t{0x7FFFFFFFFFFFFFFF}, uint64_t{0x8000000000000000}, UINT64_MAX / 2 + 2, UINT64_MAX}) {
      std::string bytes = object({marker, 0x13});
      appendNumber(bytes, count, 8);
      EXPECT_FALSE(isGood(fileOfOne(bytes + "ab"))) << marker << " " << count;
    }
  }
  EXPECT_FALSE(isGood(fileOfOne(object({0x5F}))));
  EXPECT_FALSE(isGood(fileOfOne(object({0x5F, 0x13, 0}))));
}

TEST(KRBinaryPlistReader, RefusesTablesAndTrailersThatPointOutside) {
  const std::string good = fileOfOne(object({0x09}));
  EXPECT_FALSE(isGood(""));
  EXPECT_FALSE(isGood("bplist00"));
  EXPECT_FALSE(isGood("bplist10" + good.substr(8)));
  EXPECT_FALSE(isGood(fileOf(object({0x09}), {7})));
  EXPECT_FALSE(isGood(fileOf(object({0x09}), {9})));
  EXPECT_FALSE(isGood(fileOf(object({0x09}), {0xFFFFFFFF})));
  EXPECT_FALSE(isGood(fileOf(object({0x09}), {8}, 1)));
  EXPECT_FALSE(isGood(fileOf(object({0x09}), {})));
  for (const size_t size : {size_t{6}, size_t{7}}) {
    for (const char value : {'\0', '\x09', '\xFF'}) {
      std::string file = good;
      file[file.size() - kTrailer + size] = value;
      EXPECT_FALSE(isGood(file)) << size;
    }
  }
  for (const size_t number : {size_t{8}, size_t{16}, size_t{24}}) {
    for (const uint64_t value : {uint64_t{2}, uint64_t{0xFFFFFFFF}, uint64_t{1} << 32U, UINT64_MAX - 7, UINT64_MAX}) {
      std::string file = good.substr(0, good.size() - kTrailer + number);
      appendNumber(file, value, 8);
      file += good.substr(file.size());
      EXPECT_FALSE(isGood(file)) << number << " " << value;
    }
  }
}

TEST(KRBinaryPlistReader, RefusesReferencesToNoObjectAndKeysThatAreNoTexts) {
  EXPECT_TRUE(isGood(fileOf(object({0xA1, 0, 1, 0x09}), {8, 11})));
  EXPECT_FALSE(isGood(fileOf(object({0xA1, 0, 2, 0x09}), {8, 11})));
  EXPECT_TRUE(isGood(fileOf(object({0xD1, 0, 1, 0, 2, 0x51, 'k', 0x09}), {8, 13, 15})));
  EXPECT_FALSE(isGood(fileOf(object({0xD1, 0, 2, 0, 1, 0x51, 'k', 0x09}), {8, 13, 15})));
}

/// ["a", {"k": true}], with offsets and references of the sizes; `high` is added to the reference to "a".
std::string fileWithSizes(int offsetSize, int referenceSize, uint64_t high = 0) {
  std::string file = "bplist00";
  std::vector<uint64_t> offsets;
  const auto begin = [&](const std::string& bytes) {
    offsets.push_back(file.size());
    file += bytes;
  };
  begin("\xA2");
  appendNumber(file, high + 1, referenceSize);
  appendNumber(file, 2, referenceSize);
  begin(
      "\x51"
      "a");
  begin("\xD1");
  appendNumber(file, 3, referenceSize);
  appendNumber(file, 4, referenceSize);
  begin(
      "\x51"
      "k");
  begin("\x09");
  const size_t table = file.size();
  for (const uint64_t offset : offsets) appendNumber(file, offset, offsetSize);
  file += std::string(6, '\0') + static_cast<char>(offsetSize) + static_cast<char>(referenceSize);
  for (const uint64_t number : {uint64_t{offsets.size()}, uint64_t{0}, uint64_t{table}}) appendNumber(file, number, 8);
  return file;
}

TEST(KRBinaryPlistReader, ReadsOffsetsAndReferencesOfEverySize) {
  for (int offsetSize = 1; offsetSize <= 8; ++offsetSize) {
    for (int referenceSize = 1; referenceSize <= 8; ++referenceSize) {
      const std::string file = fileWithSizes(offsetSize, referenceSize);
      const auto plist = KRBinaryPlist::read(file);
      ASSERT_TRUE(plist) << offsetSize << " " << referenceSize;
      EXPECT_EQ(KRPlistTrees::textOf(*plist), "[s61,{s6b:t,},]") << offsetSize << " " << referenceSize;
    }
  }
}

TEST(KRBinaryPlistReader, RefusesReferencesWhoseLowBytesAloneNameAnObject) {
  for (int size = 2; size <= 8; ++size) {
    EXPECT_FALSE(isGood(fileWithSizes(1, size, uint64_t{1} << (8 * (size - 1))))) << size;
  }
}

TEST(KRBinaryPlistReader, RefusesContainersThatHoldThemselves) {
  EXPECT_FALSE(isGood(fileOf(object({0xA1, 0, 0}), {8})));
  EXPECT_FALSE(isGood(fileOf(object({0xA1, 0, 1, 0xA1, 0, 0}), {8, 11})));
  // Also where the root does not lead.
  EXPECT_FALSE(isGood(fileOf(object({0x09, 0xA1, 0, 1}), {8, 9})));
}

TEST(KRBinaryPlistReader, RefusesObjectsThatOverlap) {
  // A thousand places of one array of a thousand elements: a file of ten thousand bytes that claims a million.
  std::string array = object({0xAF, 0x11, 0x03, 0xE8});
  for (int i = 0; i < 1000; ++i) array += object({0x03, 0xE8});
  std::vector<uint32_t> offsets(1000, 8);
  offsets.push_back(8 + static_cast<uint32_t>(array.size()));
  EXPECT_FALSE(isGood(fileOf(array + '\x09', offsets)));
  // A text that begins inside another.
  EXPECT_FALSE(isGood(fileOf(object({0x53, 0x52, 'a', 'b'}), {8, 9})));
}

TEST(KRBinaryPlistReader, KeepsListsSmallThatWouldBeHugeWhenWrittenOut) {
  // Each of sixty arrays holds the next one twice: 2^60 values for who writes them out.
  std::string objects;
  std::vector<uint32_t> offsets;
  for (int i = 1; i <= 60; ++i) {
    offsets.push_back(8 + static_cast<uint32_t>(objects.size()));
    objects += object({0xA2, 0, i, 0, i});
  }
  offsets.push_back(8 + static_cast<uint32_t>(objects.size()));
  const std::string file = fileOf(objects + '\x09', offsets);
  const auto plist = KRBinaryPlist::read(file);
  ASSERT_TRUE(plist);
  EXPECT_EQ(plist->count(), 61U);
  // Numbers are smaller here, so the file is, too.
  EXPECT_LT(plist->write().size(), file.size());
}

TEST(KRBinaryPlistReader, TakesNestingOfAnyDepth) {
  std::string objects;
  std::vector<uint32_t> offsets;
  for (int i = 1; i <= 60000; ++i) {
    offsets.push_back(8 + static_cast<uint32_t>(objects.size()));
    objects += object({0xA1, i >> 8, i & 0xFF});
  }
  offsets.push_back(8 + static_cast<uint32_t>(objects.size()));
  const std::string file = fileOf(objects + '\x09', offsets);
  const auto plist = KRBinaryPlist::read(file);
  ASSERT_TRUE(plist);
  EXPECT_EQ(KRBinaryPlist::read(plist->write())->count(), 60001U);
}

TEST(KRBinaryPlistReader, SurvivesEveryCutAndEveryFlippedBit) {
  std::string whole;
  for (uint32_t seed = 0; whole.size() < 300 || whole.size() > 1500; ++seed) {
    whole = KRPlistTrees::Maker(seed, {}).list().write();
  }
  for (size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(isGood(whole.substr(0, size))) << size;
  for (size_t i = 0; i < whole.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string damaged = whole;
      damaged[i] = static_cast<char>(static_cast<unsigned char>(damaged[i]) ^ (1U << bit));
      const std::vector<char> exact(damaged.begin(), damaged.end());
      const auto plist = KRBinaryPlist::read({exact.data(), exact.size()});
      // What is still a list is one through and through: it can be written and read again.
      if (plist) {
        const std::string again = plist->write();
        ASSERT_TRUE(KRBinaryPlist::read(again)) << i << " " << bit;
      }
    }
  }
}

}  // namespace
