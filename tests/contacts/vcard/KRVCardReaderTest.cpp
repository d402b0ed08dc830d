#include "contacts/vcard/KRVCardReader.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/contacts/vcard/VCardSamples.h"

namespace {

struct Case {
  const char* name;
  const char* version;
  std::vector<std::string> lines;
  const char* shown;
};

void PrintTo(const Case& each, std::ostream* stream) {
  *stream << each.name;
}

class KRVCardMapping : public testing::TestWithParam<Case> {};

TEST_P(KRVCardMapping, ShowsWhatTheLinesSay) {
  EXPECT_EQ(krShown(GetParam().lines, GetParam().version), GetParam().shown);
}

std::string caseName(const testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

const Case kNames[] = {
    {"NameInParts",
     "3.0",
     {"N:Lee;Ann;Kim;Dr.;jun.", "FN:x"},
     "last: Lee\nfirst: Ann\nmiddle: Kim\ntitle: Dr.\nsuffix: jun.\n"},
    {"EmptyPartsAreAbsent", "3.0", {"N:Lee;;;;"}, "last: Lee\n"},
    {"NothingIsTrimmed", "3.0", {"N: Lee ;Ann;;;"}, "last:  Lee \nfirst: Ann\n"},
    {"NameWithoutSemicolons", "3.0", {"N:Ann Lee", "FN:Ann Lee"}, "last: Ann Lee\n"},
    {"MorePartsThanFive", "3.0", {"N:a;b;c;d;e;f;g"}, "last: a\nfirst: b\nmiddle: c\ntitle: d\nsuffix: e\n"},
    {"SeveralValuesOfAPart", "3.0", {"N:Lee;Ann;Kim,Su;;"}, "last: Lee\nfirst: Ann\nmiddle: Kim,Su\n"},
    {"CommaOf21IsText", "2.1", {"N:Richter,James;James"}, "last: Richter,James\nfirst: James\n"},
    {"EscapedSeparators", "3.0", {"N:O\\;Neil;A\\,nn;;;"}, "last: O;Neil\nfirst: A,nn\n"},
    {"EscapedSeparatorsOf21", "2.1", {"N:O\\;Neil;A\\\\nn;;;"}, "last: O;Neil\nfirst: A\\nn\n"},
    {"OnlyAPrefix", "3.0", {"N:;;;Dr.;", "FN:Dr. Lee"}, "title: Dr.\n"},
    {"OneWord", "3.0", {"FN:Ann"}, "first: Ann\n"},
    {"TwoWords", "3.0", {"N:;;;;", "FN:Ann Lee"}, "last: Lee\nfirst: Ann\n"},
    {"FourWords", "3.0", {"FN:Ann  Kim van Lee"}, "last: van Lee\nfirst: Ann\nmiddle: Kim\n"},
    {"WordsWithWideSpace", "3.0", {"FN:山田　太郎"}, "last: 太郎\nfirst: 山田\n"},
    {"FormattedNameIsTheCompany", "3.0", {"FN:Acme Inc", "ORG:Acme Inc"}, "company: Acme Inc\n"},
    {"NoName", "3.0", {"TEL:1"}, "phone: 1\n"},
    {"BlankFormattedName", "3.0", {"FN: ", "TEL:1"}, "phone: 1\n"},
    {"SecondNameDoesNotCount",
     "4.0",
     {"N;ALTID=1:Lee;Ann", "N;ALTID=1;LANGUAGE=de:Li;Anna"},
     "last: Lee\nfirst: Ann\n"},
    {"PhoneticNames",
     "3.0",
     {"N:山;太", "X-PHONETIC-FIRST-NAME:た", "X-PHONETIC-MIDDLE-NAME:ん", "X-PHONETIC-LAST-NAME:や"},
     "last: 山\nfirst: 太\nphoneticFirstName: た\nphoneticMiddleName: ん\nphoneticLastName: や\n"},
    {"ReadingOfAPhone",
     "2.1",
     {"N:A;B", "SOUND;X-IRMC-N:ｱ;ﾋﾞ;;;"},
     "last: A\nfirst: B\nphoneticFirstName: ﾋﾞ\nphoneticLastName: ｱ\n"},
};
INSTANTIATE_TEST_SUITE_P(Names, KRVCardMapping, testing::ValuesIn(kNames), caseName);

const Case kTexts[] = {
    {"Organisation", "3.0", {"ORG:Acme;Sales;West"}, "company: Acme\ndepartment: Sales\n"},
    {"OrganisationWithTrailingSemicolons", "3.0", {"ORG:Acme;;;"}, "company: Acme\n"},
    {"DepartmentAlone", "3.0", {"ORG:;Sales"}, "department: Sales\n"},
    {"FirstOrganisationCounts", "3.0", {"ORG:", "ORG:Acme", "ORG:Other;X"}, "company: Acme\n"},
    {"CompanyCard", "3.0", {"N:;;;;", "FN:Acme", "X-ABShowAs:COMPANY"}, "company: Acme\nisOrganization: YES\n"},
    {"CompanyCardWithOrg",
     "3.0",
     {"FN:Shop", "ORG:Acme", "X-ABSHOWAS:company"},
     "company: Acme\nisOrganization: YES\n"},
    {"KindOfOrganisation", "4.0", {"KIND:org", "FN:Acme"}, "company: Acme\nisOrganization: YES\n"},
    {"KindOfIndividual", "4.0", {"KIND:individual", "FN:Ann"}, "first: Ann\n"},
    {"Titles", "3.0", {"TITLE:Boss", "TITLE:Other", "ROLE:Lead"}, "jobTitle: Boss\nrole: Lead\n"},
    {"FirstNoteCounts", "3.0", {"NOTE:", "NOTE:one", "NOTE:two"}, "note: one\n"},
    {"NoteOfSpaces", "3.0", {"NOTE:  "}, "note:   \n"},
    {"EmptyNote", "3.0", {"NOTE:"}, ""},
    {"NicknamesOfOneLine", "3.0", {"NICKNAME:Bob,Bobby"}, "nickname: Bob,Bobby\n"},
    {"NicknameOfAPhone",
     "2.1",
     {"X-ANDROID-CUSTOM;CHARSET=UTF-8:vnd.android.cursor.item/nickname;Bob;1;;;;;;;;;;;;;"},
     "nickname: Bob\n"},
    {"Escapes", "3.0", {"NOTE:a\\nb\\Nc\\,d\\;e\\\\nf\\:g"}, "note: a\\nb\\nc,d;e\\nf:g\n"},
    {"BackslashesOf21AreText", "2.1", {"NOTE:C:\\new\\\\x"}, "note: C:\\new\\\\x\n"},
    {"Tags", "3.0", {"CATEGORIES:a,b\\,c,", "CATEGORIES: d"}, "tags: a\ntags: b,c\ntags:  d\n"},
    {"GroupPrefixAndCase", "3.0", {"x1.note:a", "Item2.tItLe:b"}, "jobTitle: b\nnote: a\n"},
    {"LineWithoutColon", "3.0", {"what is this", "NOTE:a"}, "note: a\n"},
    {"CommentLine", "2.1", {"# a comment", "NOTE:a"}, "note: a\n"},
    {"RawXMLInALine",
     "3.0",
     {"X-MS-OL-DESIGN;CHARSET=utf-8:<card xmlns=\"http://x\" ver=\"1.0\"/>", "NOTE:a"},
     "note: a\n"},
    {"LanguageParameter", "2.1", {"N;LANGUAGE=en-us:Lee;Ann"}, "last: Lee\nfirst: Ann\n"},
};
INSTANTIATE_TEST_SUITE_P(Texts, KRVCardMapping, testing::ValuesIn(kTexts), caseName);

const Case kEntries[] = {
    {"PhonesOfAllKinds",
     "3.0",
     {"TEL:1", "TEL;TYPE=CELL,VOICE:2", "TEL;HOME;FAX:3", "TEL;VALUE=uri;TYPE=\"voice,work\":tel:+49-30;ext=5"},
     "phone: 1\nphone[mobile]: 2\nphone[home fax]: 3\nphone[work]: +49-30;ext=5\n"},
    {"PhoneWithPauses", "3.0", {"TEL:030\\,12\\;3 "}, "phone: 030,12;3 \n"},
    {"PhoneAsURIInAnyVersion", "3.0", {"TEL:TEL:%2B49"}, "phone: +49\n"},
    {"EmptyPhone", "3.0", {"TEL:", "TEL:tel:"}, ""},
    {"Emails",
     "3.0",
     {"EMAIL;TYPE=INTERNET,HOME:a@b", "EMAIL;INTERNET:c@d", "EMAIL:mailto:e@f", "EMAIL:\"Ann\" <a@b>"},
     "email[home]: a@b\nemail: c@d\nemail: e@f\nemail: \"Ann\" <a@b>\n"},
    {"CustomLabelWins",
     "3.0",
     {"item1.TEL;TYPE=HOME:1", "item1.X-ABLabel:_$!<Work>!$_", "item2.X-ABLabel:Ferienhaus", "item2.TEL:2"},
     "phone[Work]: 1\nphone[Ferienhaus]: 2\n"},
    {"EmptyCustomLabel", "3.0", {"item1.TEL;TYPE=HOME:1", "item1.X-ABLabel:"}, "phone[home]: 1\n"},
    {"LabelWithoutGroup", "3.0", {"TEL:1", "X-ABLabel:x"}, "phone: 1\n"},
    {"RandomGroupNames", "3.0", {"4L06RU.TEL:1", "4l06ru.X-ABLabel:x"}, "phone[x]: 1\n"},
    {"Address",
     "3.0",
     {"ADR;TYPE=dom,HOME:PO 1;Flat 2;Main St 3\\, rear;Town;State;123;Land"},
     "address[home]: poBox=PO 1;extended=Flat 2;street=Main St 3, "
     "rear;city=Town;region=State;postalCode=123;country=Land;"
     "\n"},
    {"AddressWithCode",
     "3.0",
     {"item1.ADR:;;Main;;;;Germany", "item1.X-ABADR:de"},
     "address: (de) street=Main;country=Germany;\n"},
    {"ShortAddress", "3.0", {"ADR:;;Main"}, "address: street=Main;\n"},
    {"EmptyAddress", "3.0", {"ADR;TYPE=HOME:;;;;;;"}, ""},
    {"LabelOfAnAddressIsNoAddress", "4.0", {"ADR;LABEL=\"a;b:c\":;;Main;;;;"}, "address: street=Main;\n"},
    {"Accounts",
     "3.0",
     {"IMPP;X-SERVICE-TYPE=Skype;TYPE=HOME:skype:ann", "IMPP:xmpp:ann@x", "IMPP;X-SERVICE-TYPE=Facebook:xmpp:ann",
      "IMPP:aim:goim?screenname=a%20b", "IMPP:just me", "IMPP:skype:"},
     "instantMessage[home]: skype ann\ninstantMessage: xmpp ann@x\ninstantMessage: facebook ann\ninstantMessage: aim a "
     "b\ninstantMessage: just me\n"},
    {"LinesOfServices",
     "3.0",
     {"X-AIM;HOME:a", "X-JABBER:b", "X-SKYPE-USERNAME:c", "x-qq:d"},
     "instantMessage[home]: aim a\ninstantMessage: xmpp b\ninstantMessage: skype c\ninstantMessage: qq d\n"},
    {"WebPages", "3.0", {"URL:http\\://x/", "URL;TYPE=WORK:y"}, "url: http://x/\nurl[work]: y\n"},
    {"SocialProfiles",
     "3.0",
     {"X-SOCIALPROFILE;type=twitter;x-user=a:http://t/a"},
     "socialProfile[twitter]: http://t/a\n"},
    {"RelatedNames",
     "4.0",
     {"RELATED;TYPE=friend;VALUE=text:Bob", "X-SPOUSE:Eve", "i.X-ABRELATEDNAMES:Al", "i.X-ABLabel:_$!<Father>!$_",
      "X-ANDROID-CUSTOM:vnd.android.cursor.item/relation;Sue;8;;"},
     "relatedName[friend]: Bob\nrelatedName[spouse]: Eve\nrelatedName[Father]: Al\nrelatedName[mother]: Sue\n"},
};
INSTANTIATE_TEST_SUITE_P(Entries, KRVCardMapping, testing::ValuesIn(kEntries), caseName);

const Case kDates[] = {
    {"Birthday", "3.0", {"BDAY:1990-03-02"}, "birthday: 1990-03-02\n"},
    {"BirthdayWithoutSeparators", "3.0", {"BDAY:19900302"}, "birthday: 1990-03-02\n"},
    {"BirthdayWithTime", "3.0", {"BDAY;VALUE=date-time:1990-03-02T00:00:00Z"}, "birthday: 1990-03-02\n"},
    {"BirthdayWithoutYear", "3.0", {"BDAY:--0302"}, "birthday: --03-02\n"},
    {"BirthdayOf1604", "3.0", {"BDAY:1604-03-02"}, "birthday: --03-02\n"},
    {"BirthdayWithOmittedYear", "3.0", {"BDAY;X-APPLE-OMIT-YEAR=1604:1604-03-02"}, "birthday: --03-02\n"},
    {"TextIsNoBirthday", "4.0", {"BDAY;VALUE=text:circa 1800", "BDAY:1990-03-02"}, "birthday: 1990-03-02\n"},
    {"Anniversaries",
     "3.0",
     {"ANNIVERSARY:19900302", "X-EVOLUTION-ANNIVERSARY:1991-03-02", "item1.X-ABDATE:1992-03-02",
      "item1.X-ABLabel:_$!<Anniversary>!$_", "X-ABDATE:soon",
      "X-ANDROID-CUSTOM:vnd.android.cursor.item/contact_event;1993-03-02;0;Umzug"},
     "otherDate[anniversary]: 1990-03-02\notherDate[anniversary]: 1991-03-02\notherDate[Anniversary]: "
     "1992-03-02\notherDate[Umzug]: 1993-03-02\n"},
};
INSTANTIATE_TEST_SUITE_P(Dates, KRVCardMapping, testing::ValuesIn(kDates), caseName);

const Case kEncodings[] = {
    {"QuotedPrintable", "2.1", {"NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:=C3=A9=0D=0Ab"}, "note: é\\nb\n"},
    {"BareQuotedPrintableIn30", "3.0", {"NOTE;QUOTED-PRINTABLE:=C3=A9"}, "note: é\n"},
    {"QuotedPrintableIsSplitFirst", "2.1", {"N;ENCODING=QUOTED-PRINTABLE:A=3BB;C"}, "last: A;B\nfirst: C\n"},
    {"SoftBreaks", "2.1", {"NOTE;QUOTED-PRINTABLE:a=", "b=", " c"}, "note: ab c\n"},
    {"NamedLegacySet", "2.1", {"NOTE;CHARSET=ISO-8859-1:\xE9"}, "note: é\n"},
    {"NamedLegacySetIn30", "3.0", {"NOTE;CHARSET=windows-1252:\x80"}, "note: €\n"},
    {"NamedSetThatIsNotUsed", "3.0", {"NOTE;CHARSET=ISO-8859-1:é"}, "note: é\n"},
    {"UnnamedLegacySet", "3.0", {"NOTE:\xE9t\xE9"}, "note: été\n"},
    {"QuotedLegacySet", "2.1", {"NOTE;QUOTED-PRINTABLE:Se=F1or"}, "note: Señor\n"},
    {"MacintoshSet", "2.1", {"NOTE;CHARSET=MACINTOSH:\x8E"}, "note: é\n"},
    {"BackslashInsideALetter", "2.1", {"N;CHARSET=SHIFT_JIS:\x95\x5C;\x94\x5C"}, "last: 表\nfirst: 能\n"},
    {"SevenBitJapanese", "2.1", {"NOTE;CHARSET=ISO-2022-JP:\x1B$B;3ED\x1B(B"}, "note: 山田\n"},
    {"UnknownSet", "3.0", {"NOTE;CHARSET=X-NONE:\xE9"}, "note: é\n"},
    {"FoldInsideALetter", "3.0", {"NOTE:\xC3\r\n \xA9"}, "note: é\n"},
    {"FoldInsideAnEscape", "3.0", {"NOTE:a\\\r\n nb"}, "note: a\\nb\n"},
    {"FoldInsideAName", "3.0", {"NO\r\n TE:a"}, "note: a\n"},
    {"EmptyFolds", "3.0", {"NOTE:a\r\n \r\n \r\n\tb"}, "note: ab\n"},
};
INSTANTIATE_TEST_SUITE_P(Encodings, KRVCardMapping, testing::ValuesIn(kEncodings), caseName);

const Case kPhotos[] = {
    {"Base64", "3.0", {"PHOTO;ENCODING=b;TYPE=JPEG:QUJDRA=="}, "thumbnail: 4 bytes\n"},
    {"BareBase64", "2.1", {"PHOTO;JPEG;BASE64:", "  QUJD", "  RA==", "", "NOTE:a"}, "note: a\nthumbnail: 4 bytes\n"},
    {"Base64WithoutIndent", "2.1", {"PHOTO;ENCODING=BASE64:QUJD", "RA==", "NOTE:a"}, "note: a\nthumbnail: 4 bytes\n"},
    {"FoldedBase64", "3.0", {"PHOTO;ENCODING=b:QU\r\n JD\r\n RA=="}, "thumbnail: 4 bytes\n"},
    {"FoldBeforeBase64", "3.0", {"PHOTO;ENCOD\r\n ING=b:QU\r\n JD"}, "thumbnail: 3 bytes\n"},
    {"DataURI", "4.0", {"PHOTO:data:image/png;base64,QU\r\n JDRA=="}, "thumbnail: 4 bytes\n"},
    {"EscapedDataURI", "4.0", {"PHOTO:data:image/png\\;base64\\,QUJD"}, "thumbnail: 3 bytes\n"},
    {"DataURIInPercents", "4.0", {"PHOTO:data:image/svg+xml,%3Csvg%3E"}, "thumbnail: 5 bytes\n"},
    {"AddressesAreNotFetched", "3.0", {"PHOTO;VALUE=uri:http://x/y.png", "PHOTO:https://x/z"}, ""},
    {"AddressSaidToBeBinary", "3.0", {"PHOTO;ENCODING=b;VALUE=BINARY:https://x/z"}, ""},
    {"UndeclaredPicture", "3.0", {"PHOTO;TYPE=PNG:iVBORw0KGgo="}, "thumbnail: 8 bytes\n"},
    {"UndeclaredText", "3.0", {"PHOTO:QUJDRA=="}, ""},
    {"Broken", "3.0", {"PHOTO;ENCODING=b:...", "NOTE:a"}, "note: a\n"},
    {"FirstPictureCounts", "3.0", {"PHOTO;ENCODING=b:QUJD", "PHOTO;ENCODING=b:QQ=="}, "thumbnail: 3 bytes\n"},
    {"EmptyPicture", "3.0", {"PHOTO;ENCODING=b:"}, ""},
    {"CropParameters",
     "3.0",
     {"PHOTO;X-ABCROP-RECTANGLE=ABClipRect_1&0&0&9&+x==;ENCODING=b:QUJD"},
     "thumbnail: 3 bytes\n"},
};
INSTANTIATE_TEST_SUITE_P(Photos, KRVCardMapping, testing::ValuesIn(kPhotos), caseName);

}  // namespace
