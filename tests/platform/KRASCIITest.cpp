#include "platform/KRASCII.h"

#include <gtest/gtest.h>

#include <string>

TEST(KRASCII, LettersOnlyAreLowered) {
  EXPECT_EQ(krLowerASCII('Q'), 'q');
  EXPECT_EQ(krLowerASCII("AZ@[`{09"), "az@[`{09");
  EXPECT_EQ(krLowerASCII("ÄBc"), "Äbc");
  EXPECT_EQ(krLowerASCII(""), "");
}

TEST(KRASCII, CaseOfOtherThanLettersCounts) {
  EXPECT_TRUE(krEqualsIgnoringCase("VCard", "vCARD"));
  EXPECT_TRUE(krEqualsIgnoringCase("", ""));
  EXPECT_FALSE(krEqualsIgnoringCase("VCard", "VCards"));
  EXPECT_FALSE(krEqualsIgnoringCase("[", "{"));
  EXPECT_FALSE(krEqualsIgnoringCase("Ä", "ä"));
}

TEST(KRASCII, ComparesEachByteAsTheByteAloneIsCompared) {
  for (size_t size = 1; size < 20; ++size) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string a(size, 'k');
      a[byte % size] = static_cast<char>(byte);
      for (int difference : {0, 0x20, 0x80, 1}) {
        std::string b(size, 'K');
        b[byte % size] = static_cast<char>(byte ^ difference);
        const bool isSame = krLowerASCII(a) == krLowerASCII(b);
        ASSERT_EQ(krEqualsIgnoringCase(a, b), isSame) << size << " " << byte << " " << difference;
      }
    }
  }
}
