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

void expectSame(const KRVCardScan& scan, const KRVCardScan& expected, const std::string& text) {
  ASSERT_EQ(scan.end - text.data(), expected.end - text.data()) << text;
  ASSERT_EQ(scan.colon == nullptr, expected.colon == nullptr) << text;
  if (scan.colon != nullptr) ASSERT_EQ(scan.colon - text.data(), expected.colon - text.data()) << text;
  ASSERT_EQ(scan.flags, expected.flags) << text;
}

TEST(KRVCardScan, FindsWhatALookAtEachByteFinds) {
  std::mt19937 random(1);
  const auto below = [&](size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); };
  const std::string special = ":\\\"\x1B\r\n\xC3\xFF";
  for (int round = 0; round < 20'000; ++round) {
    std::string text(below(140), 'a');
    for (size_t changes = below(5); changes > 0 && !text.empty(); --changes) {
      text[below(text.size())] = special[below(special.size())];
    }
    const char* begin = text.data();
    const char* end = begin + text.size();
    const KRVCardScan expected = slowScan(begin, end);
    expectSame(krScanLine(begin, end), expected, text);
    for (const KRVCardScanner scanner : krLineScanners()) expectSame(scanner(begin, end), expected, text);
  }
}

TEST(KRVCardScan, FindsEachByteWhereverItStands) {
  for (size_t size = 0; size < 100; ++size) {
    for (int byte = 0; byte < 256; ++byte) {
      // In memory of its own size, so that a look beyond the end would be seen.
      std::string text(size, 'a');
      text.push_back(static_cast<char>(byte));
      text += "\"\n";
      text.shrink_to_fit();
      const KRVCardScan expected = slowScan(text.data(), text.data() + text.size());
      for (const KRVCardScanner scanner : krLineScanners()) {
        expectSame(scanner(text.data(), text.data() + text.size()), expected, text);
      }
    }
  }
}

TEST(KRVCardScan, HasAWayThatEveryProcessorKnows) {
  ASSERT_FALSE(krLineScanners().empty());
}

}  // namespace
