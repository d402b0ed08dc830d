#include "contacts/vcard/KRVCardScan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

/// The same, looked at byte by byte.
KRVCardScan slowScan(const char* begin, const char* end) {
  KRVCardScan scan{end, nullptr, 0};
  for (const char* at = begin; at != end; ++at) {
    if (*at == '\n' || *at == '\r') {
      scan.end = at;
      break;
    }
    if (*at == ':' && scan.colon == nullptr) scan.colon = at;
    if ((*at & 0x80) != 0) scan.flags |= KRVCardScan::High;
    if (*at == '\\') scan.flags |= KRVCardScan::Backslash;
    if (*at == 0x1B) scan.flags |= KRVCardScan::Escape;
    if (*at == '"') scan.flags |= KRVCardScan::Quote;
  }
  return scan;
}

TEST(KRVCardScan, FindsWhatALookAtEachByteFinds) {
  std::mt19937 random(1);
  const auto below = [&](size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); };
  const std::string special = ":\\\"\x1B\r\n\xC3\xFF";
  for (int round = 0; round < 20'000; ++round) {
    std::string text(below(70), 'a');
    for (size_t changes = below(5); changes > 0 && !text.empty(); --changes) {
      text[below(text.size())] = special[below(special.size())];
    }
    const char* begin = text.data();
    const char* end = begin + text.size();
    const KRVCardScan scan = krScanLine(begin, end);
    const KRVCardScan expected = slowScan(begin, end);
    ASSERT_EQ(scan.end - begin, expected.end - begin) << text;
    ASSERT_EQ(scan.colon == nullptr, expected.colon == nullptr) << text;
    if (scan.colon != nullptr) ASSERT_EQ(scan.colon - begin, expected.colon - begin) << text;
    ASSERT_EQ(scan.flags, expected.flags) << text;
  }
}

}  // namespace
