#include "platform/KRBytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

TEST(KRBytes, PartsOfWordsHaveZerosBehindThem) {
  const std::string text = "\xFF\xFE\x80\x7F\x01gh\xC3";
  for (size_t count = 0; count <= text.size(); ++count) {
    // In memory of its own, so that a look beyond it would be seen.
    const std::vector<char> part(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count));
    uint64_t expected = 0;
    for (size_t i = 0; i < count; ++i) expected |= uint64_t{static_cast<unsigned char>(text[i])} << (8 * i);
    EXPECT_EQ(krLoadPart(part.data(), count), expected) << count;
  }
  EXPECT_EQ(krLoadPart(text.data(), 100), krLoadWord(text.data()));
}

TEST(KRBytes, ZeroBytesAreMarkedAndNoOthers) {
  EXPECT_EQ(krZeroBytes(0), krWordOf(static_cast<char>(0x80)));
  EXPECT_EQ(krZeroBytes(0x0100FF0080007F01U), 0x0080008000800000U);
  EXPECT_EQ(krZeroBytes(krWordOf(1)), 0U);
}

TEST(KRBytes, EachEqualByteIsVisitedInOrder) {
  std::mt19937 random(1);
  const auto below = [&](size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); };
  for (const char sought : {',', '\0', '\x80', '\xFF'}) {
    const std::string kinds = {sought, static_cast<char>(sought ^ 1), static_cast<char>(sought ^ 0x80), 'a'};
    for (int round = 0; round < 2000; ++round) {
      std::string text(below(40), 'a');
      for (char& byte : text) byte = kinds[below(kinds.size())];
      std::vector<size_t> expected;
      for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == sought) expected.push_back(i);
      }
      std::vector<size_t> found;
      krForEachByte(text, sought, [&](const char* at) { found.push_back(static_cast<size_t>(at - text.data())); });
      ASSERT_EQ(found, expected);
    }
  }
}
