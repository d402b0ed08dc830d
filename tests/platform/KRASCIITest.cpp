#include "platform/KRASCII.h"

#include <gtest/gtest.h>

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
