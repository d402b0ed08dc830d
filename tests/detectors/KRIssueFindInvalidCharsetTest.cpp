#include "detectors/KRIssueFindInvalidCharset.h"

#include <gmock/gmock.h>

#include "platform/KRSupportFuction.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

template <class Person>
class KRIssueFindInvalidCharsetTest : public testing::Test {
 protected:
  static KRScan scan(const std::vector<KRPersonSketch>& sketches) {
    return KRScan::of<KRIssueFindInvalidCharset, Person>(sketches);
  }

  static bool findsPhone(const KRString& phone) { return scan({{.phones = {phone}}}).context() != nullptr; }
  static bool findsEmail(const KRString& email) { return scan({{.emails = {email}}}).context() != nullptr; }
};
TYPED_TEST_SUITE(KRIssueFindInvalidCharsetTest, KRPersonKinds);

/// The texts under a key of a finding's map; nothing there reads as no texts.
KRStringList textsUnder(const KRIssueObject& finding, KRText key) {
  const KRValue info = finding.info();
  const auto* map = info.as<KRValueMap>();
  const KRValue* value = map != nullptr ? map->find(key) : nullptr;
  const auto* list = value != nullptr ? value->as<KRValueList>() : nullptr;
  return list != nullptr ? list->texts() : KRStringList();
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, AllowsDigitsBlanksAndFourSignsInPhones) {
  EXPECT_FALSE(this->findsPhone("+1 (555) 123-4567"_kr));
  EXPECT_FALSE(this->findsPhone("0123456789 ()+-"_kr));
  EXPECT_FALSE(this->findsPhone("+33\u00A01\u00A040"_kr));
  EXPECT_FALSE(this->findsPhone(" "_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, FindsAnythingElseInPhones) {
  EXPECT_TRUE(this->findsPhone("555.1234"_kr));
  EXPECT_TRUE(this->findsPhone("555/1234"_kr));
  EXPECT_TRUE(this->findsPhone("12a"_kr));
  EXPECT_TRUE(this->findsPhone("*31#555"_kr));
  EXPECT_TRUE(this->findsPhone("555,1"_kr));
  EXPECT_TRUE(this->findsPhone("555\t1"_kr));
  EXPECT_TRUE(this->findsPhone("555\n"_kr));
  EXPECT_TRUE(this->findsPhone("\u00E9"_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, LooksOnlyAtTheLowByteOfEachCodeUnit) {
  EXPECT_FALSE(this->findsPhone("\u4E30"_kr)) << "low byte 0x30, a nought";
  EXPECT_FALSE(this->findsPhone("555\u2028"_kr)) << "low byte 0x28, a parenthesis";
  EXPECT_FALSE(this->findsPhone("555\u01A0"_kr)) << "low byte 0xA0, a no-break space";
  EXPECT_TRUE(this->findsPhone("\u4E2F"_kr)) << "low byte 0x2F";
  EXPECT_TRUE(this->findsPhone("\u4E3A"_kr)) << "low byte 0x3A";
  EXPECT_TRUE(this->findsPhone("\uFF15\uFF15\uFF15"_kr)) << "full-width digits: low byte 0x15";
  EXPECT_TRUE(this->findsPhone("555\u202F1"_kr)) << "narrow no-break space: low byte 0x2F";
  EXPECT_TRUE(this->findsPhone("555\u200E"_kr)) << "left-to-right mark: low byte 0x0E";
  EXPECT_TRUE(this->findsPhone("1\u4E30x"_kr)) << "a letter behind";
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, LooksAtBothHalvesOfACharacterBeyondTheFirstPlane) {
  // U+1C030 is D830 DC30: both low bytes are a nought. U+1C13A is D830 DD3A.
  EXPECT_FALSE(this->findsPhone("\U0001C030"_kr));
  EXPECT_TRUE(this->findsPhone("\U0001C13A"_kr));
  EXPECT_TRUE(this->findsPhone("\U0001F600"_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, IgnoresEmptyPhones) {
  EXPECT_FALSE(this->findsPhone(""_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, FindsEmailsWithoutAtSign) {
  EXPECT_TRUE(this->findsEmail("bob"_kr));
  EXPECT_TRUE(this->findsEmail("bob.example.org"_kr));
  EXPECT_TRUE(this->findsEmail("bob\uFF20example.org"_kr));
  EXPECT_TRUE(this->findsEmail(""_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, LeavesEmailsWithOneOrMoreAtSignsAlone) {
  EXPECT_FALSE(this->findsEmail("bob@example.org"_kr));
  EXPECT_FALSE(this->findsEmail("bob@home@example.org"_kr));
  EXPECT_FALSE(this->findsEmail("@"_kr));
  EXPECT_FALSE(this->findsEmail("b b\u00E9 @"_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, LeavesContactsWithoutEitherAlone) {
  EXPECT_FALSE(this->scan({{}, {.first = "12a"_kr}}).context());
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, PassesEntriesWithoutAValueOver) {
  EXPECT_FALSE(this->scan({{.phones = {KRString()}, .emails = {KRString()}}}).context());
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, LooksAtOrganisationsToo) {
  EXPECT_THAT(this->scan({{.phones = {"12a"_kr}, .isOrganization = true}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, ListsPhonesWithCommaAndEmailsWithIdeographicComma) {
  const KRScan scan = this->scan({{.phones = {"12a"_kr, "555"_kr, "x9"_kr}, .emails = {"bob"_kr, "a@b"_kr, "eve"_kr}}});
  const auto finding = scan.only();
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->describe(),
            "This Contact's phone number \"12a\", \"x9\" and email address \"bob\"\u3001\"eve\" includes invalid "
            "characters.");
  EXPECT_THAT(textsUnder(*finding, "phone"), ElementsAre("12a"_kr, "x9"_kr));
  EXPECT_THAT(textsUnder(*finding, "email"), ElementsAre("bob"_kr, "eve"_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, CarriesOnlyTheKeysOfInvalidValues) {
  const auto phone = this->scan({{.phones = {"12a"_kr}, .emails = {"a@b"_kr}}}).only();
  ASSERT_TRUE(phone);
  EXPECT_EQ(phone->describe(), "This Contact's phone number \"12a\" includes invalid characters.");
  EXPECT_EQ(phone->info().description(), "{phone = (12a)}");
  const auto email = this->scan({{.phones = {"12"_kr}, .emails = {""_kr}}}).only();
  ASSERT_TRUE(email);
  EXPECT_EQ(email->describe(), "This Contact's email address \"\" includes invalid characters.");
  EXPECT_EQ(email->info().description(), "{email = ()}");
  EXPECT_THAT(textsUnder(*email, "email"), ElementsAre(""_kr));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, MakesOneFindingAContact) {
  const KRScan scan = this->scan({{.phones = {"a"_kr, "b"_kr}, .emails = {"c"_kr}}, {}, {.phones = {"a"_kr}}});
  EXPECT_THAT(scan.found(), ElementsAre(0, 2));
}

TYPED_TEST(KRIssueFindInvalidCharsetTest, CountsFromOneUpToTheEnd) {
  const std::vector<KRPersonSketch> four{{}, {.phones = {"a"_kr}}, {}, {}};
  EXPECT_THAT(this->scan(four).progress(), ElementsAre(25.0, 50.0, 75.0, 100.0));
}

TEST(KRIssueFindInvalidCharsetTexts, DescribesEitherListAlone) {
  const KRIssueFindInvalidCharset detector;
  EXPECT_EQ(detector.describeString({"12a"_kr, "x9"_kr}, {"bob"_kr}),
            "This Contact's phone number \"12a\", \"x9\" and email address \"bob\" includes invalid characters.");
  EXPECT_EQ(detector.describeString({"1a"_kr}, {}), "This Contact's phone number \"1a\" includes invalid characters.");
  EXPECT_EQ(detector.describeString({}, {"a"_kr, "b"_kr}),
            "This Contact's email address \"a\"\u3001\"b\" includes invalid characters.");
  EXPECT_EQ(detector.describeString({}, {}), "This Contact's  includes invalid characters.");
}

TEST(KRIssueFindInvalidCharsetTexts, StartsAFindingWithTheGeneralSentence) {
  const KRIssueFindInvalidCharset detector;
  const auto person = krPerson<KRHostPerson>({});
  const auto finding = detector.objectForPerson(person.get());
  EXPECT_EQ(finding->describe(), KRSupportFuction::loadString("KR_Issue_Info_InvalidCharset"_kr));
  ASSERT_EQ(finding->persons().count(), 1U);
  EXPECT_EQ(finding->persons().first(), person.get());
  EXPECT_TRUE(finding->info().isNothing());
}

// Every code unit of the first plane against the rule written out.
TEST(KRIssueFindInvalidCharsetUnits, AgreesWithTheRuleOnEveryCharacter) {
  KRIssueFindInvalidCharset detector;
  detector.setIssue(krIssueNamed("an issue of this test"_kr));
  const std::string_view allowed = "0123456789 ()+-\xA0";
  for (char32_t point = 1; point < 0x10000; ++point) {
    if (point >= 0xD800 && point < 0xE000) continue;
    std::string phone = "5";
    if (point < 0x80) {
      phone += static_cast<char>(point);
    } else if (point < 0x800) {
      phone += static_cast<char>(0xC0 | (point >> 6));
      phone += static_cast<char>(0x80 | (point & 0x3F));
    } else {
      phone += static_cast<char>(0xE0 | (point >> 12));
      phone += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
      phone += static_cast<char>(0x80 | (point & 0x3F));
    }
    KRPersonList persons;
    persons.append(krPerson<KRHostPerson>({.phones = {KRString(phone)}}));
    const bool found = detector.find(&persons, [](double) {}) != nullptr;
    const bool valid = allowed.find(static_cast<char>(point & 0xFF)) != std::string_view::npos;
    ASSERT_EQ(found, !valid) << "U+" << std::hex << static_cast<uint32_t>(point);
  }
}

}  // namespace
