#include "contacts/vcard/KRVCardParameters.h"

#include <gtest/gtest.h>

#include <string>

#include "contacts/model/KRLabelTable.h"

namespace {

std::string labelOf(std::string_view text) {
  const KRVCardParameters parameters = krParseParameters(text);
  return std::string(parameters.label != 0 ? KRLabelTable::name(parameters.label).view() : parameters.labelText.view());
}

TEST(KRVCardParameters, NameLabels) {
  struct {
    const char* text;
    const char* label;
  } const cases[] = {
      {"", ""},
      {";TYPE=HOME", "home"},
      {";HOME", "home"},
      {";type=CELL;type=VOICE;type=pref", "mobile"},
      {";TYPE=WORK,FAX", "work fax"},
      {";TYPE=FAX,WORK", "work fax"},
      {";FAX;WORK;PREF", "work fax"},
      {";TYPE=\"WORK,VOICE\"", "work"},
      {";TYPE=\"WORK\",\"CELL\"", "work mobile"},
      {";TYPE=home;TYPE=Home", "home"},
      {";TYPE=VOICE", "voice"},
      {";TYPE=INTERNET", ""},
      {";TYPE=INTERNET,HOME", "home"},
      {";INTERNET=", ""},
      {";PREF", ""},
      {";TYPE=PREF,T-Mobile", "t-mobile"},
      {";X-Ferienhaus", "Ferienhaus"},
      {";DOM;PARCEL;HOME", "home"},
      {";X-CUSTOM(CHARSET=UTF-8,ENCODING=QUOTED-PRINTABLE,=42=C3=BCro)", "B\xC3\xBCro"},
      {";ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8;WORK", "work"},
      {";;TYPE=;", ""},
      {";TYPE=\"COMMA,DOT:X\",PREF:1", "comma dot:x pref:1"},
  };
  for (const auto& each : cases) EXPECT_EQ(labelOf(each.text), each.label) << each.text;
}

TEST(KRVCardParameters, KeepLongLabelsAsText) {
  const std::string name(KRLabelTable::kLongestName + 1, 'x');
  const KRVCardParameters parameters = krParseParameters(";TYPE=" + name);
  EXPECT_EQ(parameters.label, 0);
  EXPECT_EQ(parameters.labelText, KRText(std::string_view(name)));
}

TEST(KRVCardParameters, RankPreferences) {
  EXPECT_EQ(krParseParameters(";TYPE=home").preference, 0);
  EXPECT_EQ(krParseParameters(";TYPE=pref").preference, 1);
  EXPECT_EQ(krParseParameters(";PREF=7;TYPE=pref").preference, 7);
  EXPECT_EQ(krParseParameters(";PREF=99999").preference, 100);
  EXPECT_EQ(krParseParameters(";PREF=x").preference, 0);
}

TEST(KRVCardParameters, TellEncodings) {
  using P = KRVCardParameters;
  EXPECT_EQ(krParseParameters(";ENCODING=b").encoding, P::Base64);
  EXPECT_EQ(krParseParameters(";encoding=\"BASE64\"").encoding, P::Base64);
  EXPECT_EQ(krParseParameters(";BASE64").encoding, P::Base64);
  EXPECT_EQ(krParseParameters(";QUOTED-PRINTABLE;QUOTED-PRINTABLE").encoding, P::QuotedPrintable);
  EXPECT_EQ(krParseParameters(";ENCODING=8BIT").encoding, P::None);
  EXPECT_EQ(krParseParameters(";CHARSET=\"ISO-8859-1\"").charset, "ISO-8859-1");
  EXPECT_TRUE(krParseParameters(";VALUE=uri").isURI);
  EXPECT_EQ(krParseParameters(";X-APPLE-OMIT-YEAR=1604").omittedYear, 1604);
  EXPECT_EQ(krParseParameters(";X-APPLE-OMIT-YEAR=").omittedYear, -1);
}

TEST(KRVCardParameters, TakeManyTypesInLinearTime) {
  std::string text = ";TYPE=a";
  for (int i = 0; i < 200'000; ++i) text += ",t" + std::to_string(i);
  EXPECT_FALSE(labelOf(text).empty());
}

}  // namespace
