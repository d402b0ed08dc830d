#include "contacts/vcard/KRVCardText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(KRVCardText, ReadsDatesInEveryForm) {
  struct {
    const char* text;
    const char* date;
  } const cases[] = {
      {"1990-03-02", "1990-03-02"},
      {"19900302", "1990-03-02"},
      {"1990-03-02T10:20:30Z", "1990-03-02"},
      {"19900302T102030", "1990-03-02"},
      {"1990-03-02 10:20", "1990-03-02"},
      {" 1990-03-02 ", "1990-03-02"},
      {"--03-02", "--03-02"},
      {"--0302", "--03-02"},
      {"--0229", "--02-29"},
      {"1604-03-02", "--03-02"},
      {"0000-03-02", "--03-02"},
      {"00000302", "--03-02"},
      {"2000-02-29", "2000-02-29"},
      {"1999-02-29", ""},
      {"1990-13-02", ""},
      {"1990-03", ""},
      {"1990", ""},
      {"---02", ""},
      {"--03", ""},
      {"02.03.1990", ""},
      {"circa 1800", ""},
      {"1990-03-0", ""},
      {"1990-03-02x", ""},
      {"", ""},
      {"--", ""},
  };
  for (const auto& each : cases) {
    const std::optional<KRDate> date = krParseCardDate(each.text);
    EXPECT_EQ(date ? std::string(date->description().view()) : "", each.date) << each.text;
  }
}

TEST(KRVCardText, UndoesEscapesInOnePass) {
  EXPECT_EQ(krUndoEscapes(R"(a\,b\;c\:d\\ne\nf\Ng)", KREscapes::Full), "a,b;c:d\\ne\nf\ng");
  EXPECT_EQ(krUndoEscapes(R"(\\\\n)", KREscapes::Full), R"(\\n)");
  EXPECT_EQ(krUndoEscapes(R"(C:\temp\)", KREscapes::Full), R"(C:\temp\)");
  EXPECT_EQ(krUndoEscapes(R"(\\;\n)", KREscapes::Text21), R"(\;\n)");
  EXPECT_EQ(krUndoEscapes(R"(\\;\n)", KREscapes::Structured21), R"(\;\n)");
  EXPECT_EQ(krUndoEscapes(R"(a\\b)", KREscapes::Structured21), R"(a\b)");
  EXPECT_EQ(krUndoEscapes(R"(a\\b)", KREscapes::Text21), R"(a\\b)");
  EXPECT_EQ(krUndoEscapes("", KREscapes::Full), "");
}

TEST(KRVCardText, FindsSeparatorsThatAreNotEscaped) {
  EXPECT_EQ(krFindUnescaped(R"(a\;b;c)", ';', 0), 4U);
  EXPECT_EQ(krFindUnescaped(R"(a\\;c)", ';', 0), 3U);
  EXPECT_EQ(krFindUnescaped("abc", ';', 0), 3U);
  EXPECT_EQ(krFindUnescaped("abc\\", ';', 0), 4U);
}

TEST(KRVCardText, KeepsBrokenQuotedPrintable) {
  EXPECT_EQ(krDecodeQuotedPrintable("=41=c3=A4"), "A\xC3\xA4");
  EXPECT_EQ(krDecodeQuotedPrintable("a=b=4"), "a=b=4");
  EXPECT_EQ(krDecodeQuotedPrintable("=4G=="), "=4G==");
}

TEST(KRVCardText, DecodesBase64OfEveryLength) {
  EXPECT_EQ(krDecodeBase64("QQ=="), "A");
  EXPECT_EQ(krDecodeBase64("QUI="), "AB");
  EXPECT_EQ(krDecodeBase64("QUJD"), "ABC");
  EXPECT_EQ(krDecodeBase64(" QU\r\n\tJD "), "ABC");
  EXPECT_EQ(krDecodeBase64("QUJDRA"), "ABCD");
  EXPECT_EQ(krDecodeBase64("-_8="), "\xFB\xFF");
}

TEST(KRVCardText, TellsWhatIsNoBase64) {
  for (const char* text : {"", "=", "Q", "QUJD*", "http://example.org/a", "..."}) {
    EXPECT_FALSE(krIsBase64(text)) << text;
    EXPECT_EQ(krDecodeBase64(text), "") << text;
  }
}

TEST(KRVCardText, DecodesPercentPairs) {
  EXPECT_EQ(krDecodePercent("a%20b%C3%a4"), "a b\xC3\xA4");
  EXPECT_EQ(krDecodePercent("100%"), "100%");
}

TEST(KRVCardText, TrimsBlanks) {
  EXPECT_EQ(krTrimmedBlanks(" \ta b\t "), "a b");
}

}  // namespace
