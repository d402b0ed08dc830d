#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/contacts/vcard/VCardSamples.h"

// What people's files really hold, one row for each habit of the programs that wrote them.

namespace {

/// Files as bytes, and what all their contacts show, one behind the other.
struct Dialect {
  const char* name;
  std::string bytes;
  std::string shown;
};

void PrintTo(const Dialect& each, std::ostream* stream) {
  *stream << each.name;
}

std::string shownOf(const std::string& bytes) {
  const KRCardsRead read = krReadCards(bytes);
  std::string shown;
  for (size_t i = 0; i < read.count(); ++i) shown += krShownByReading(read.person(i));
  return shown;
}

/// A card of version 3.0 around lines that end in line feeds.
std::string v30(const std::string& lines) {
  return "BEGIN:VCARD\nVERSION:3.0\n" + lines + "END:VCARD\n";
}
std::string v21(const std::string& lines) {
  return "BEGIN:VCARD\nVERSION:2.1\n" + lines + "END:VCARD\n";
}
std::string v40(const std::string& lines) {
  return "BEGIN:VCARD\nVERSION:4.0\n" + lines + "END:VCARD\n";
}
std::string wide(const std::string& ascii, bool isBig) {
  std::string bytes;
  for (const char c : ascii) bytes += isBig ? std::string({'\0', c}) : std::string({c, '\0'});
  return bytes;
}

class KRVCardDialects : public testing::TestWithParam<Dialect> {};

TEST_P(KRVCardDialects, ShowsWhatPeopleSee) {
  EXPECT_EQ(shownOf(GetParam().bytes), GetParam().shown);
}

const Dialect kLines[] = {
    {"MarkOfUTF8", "\xEF\xBB\xBF" + v30("NOTE:a\n"), "note: a\n"},
    {"WideWithoutAMark", wide(v30("NOTE:a\n"), true) + wide(v30("NOTE:b\n"), true), "note: a\nnote: b\n"},
    {"WideTheOtherWayRound", wide(v30("NOTE:a\n"), false), "note: a\n"},
    {"MacintoshCharset", v21("NOTE;CHARSET=MACINTOSH:\x8A\x9A\x9F\n"), "note: äöü\n"},
    {"JapanesePhone", v21("N;CHARSET=SHIFT_JIS:\x8E\x52\x93\x63;\x91\xBE\x98\x59\n"), "last: 山田\nfirst: 太郎\n"},
    {"WesternCharsetUnnamed",
     v30("NOTE:Stra\xDF"
         "e\n"),
     "note: Straße\n"},
    {"CharsetInLaterVersions", v30("NOTE;CHARSET=ISO-8859-1:\xE4\n") + v40("NOTE;CHARSET=iso-8859-1:\xE4\n"),
     "note: ä\nnote: ä\n"},
    {"QuotedPrintableWithoutCharset", v21("NOTE;ENCODING=QUOTED-PRINTABLE:Espa=F1a\n"), "note: España\n"},
    {"MixedLineEnds",
     "BEGIN:VCARD\r\nVERSION:3.0\nNOTE:a\r\nTEL:1\nEND:VCARD\r" + std::string("BEGIN:VCARD\rNOTE:b\rEND:VCARD"),
     "phone: 1\nnote: a\nnote: b\n"},
    {"FoldedBeginAndEnd", "BEGIN:VC\n ARD\nNOTE:a\nEND:\n VCARD\nBEGIN:VCARD\nNOTE:b\nEND:VCARD\n",
     "note: a\nnote: b\n"},
    {"FoldThatLooksLikeTheEnd", v30("NOTE:a\n END:VCARD\nTEL:1\n"), "phone: 1\nnote: aEND:VCARD\n"},
    {"FoldWithATab", v30("NOTE:a\n\tb\n"), "note: ab\n"},
    {"GarbageBetweenCards", "# a comment\n" + v30("NOTE:a\n") + "\n  \n-- \nfoo:bar\n" + v30("NOTE:b\n") + "end\n",
     "note: a\nnote: b\n"},
    {"SomethingBehindTheVersion", "BEGIN:VCARD\nVERSION:3.0\n 1\nNOTE:a\\nb\nEND:VCARD\n", "note: a\\nb\n"},
    {"AnyCase", "begin:vcard\nversion:3.0\nnote:a\nend:vcard\nBEGIN:vCard\nTel:1\nEnd:VCard\n", "note: a\nphone: 1\n"},
    {"VersionMissing", "BEGIN:VCARD\nN:Lee;Ann\nTEL;CELL:1\nEND:VCARD\n", "last: Lee\nfirst: Ann\nphone[mobile]: 1\n"},
    {"VersionLate", "BEGIN:VCARD\nNOTE:C:\\new\nVERSION:2.1\nEND:VCARD\n", "note: C:\\new\n"},
    {"VersionsMixedInAFile", v21("NOTE:a\\nb\n") + v30("NOTE:a\\nb\n"), "note: a\\nb\nnote: a\\nb\n"},
};
INSTANTIATE_TEST_SUITE_P(Lines, KRVCardDialects, testing::ValuesIn(kLines),
                         [](const auto& each) { return std::string(each.param.name); });

const Dialect kOldVersion[] = {
    {"SoftBreaksOfAllKinds", v21("NOTE;ENCODING=QUOTED-PRINTABLE:a=\nb=  \n c=\n\td\n"), "note: ab c\td\n"},
    {"DoubledParameter", v21("NOTE;ENCODING=QUOTED-PRINTABLE;QUOTED-PRINTABLE:=41\n"), "note: A\n"},
    {"BareEncodings", v21("NOTE;QUOTED-PRINTABLE:=41\nPHOTO;BASE64:R0lGOA==\n\n"), "note: A\nthumbnail: 4 bytes\n"},
    {"SeparatorsHiddenInQuotedPrintable", v21("N;ENCODING=QUOTED-PRINTABLE:A=3BB;C\nORG;QUOTED-PRINTABLE:X=3BY;Z\n"),
     "last: A;B\nfirst: C\ncompany: X;Y\ndepartment: Z\n"},
    {"QuotedPrintableInLaterVersions", v30("NOTE;ENCODING=QUOTED-PRINTABLE:=C3=A4=0D=0Ab\n"), "note: ä\\nb\n"},
    {"NoEscapes", v21("NOTE:C:\\temp, all; here\nN:Lee, jun.;Ann\n"),
     "last: Lee, jun.\nfirst: Ann\nnote: C:\\temp, all; here\n"},
    {"NamelessTypes", v21("TEL;CELL;PREF:1\nEMAIL;INTERNET=:a@b\n"), "phone[mobile]: 1\nemail: a@b\n"},
    {"CustomTypes", v21("TEL;X-Jacky:1\nTEL;X-CUSTOM(CHARSET=UTF-8,ENCODING=QUOTED-PRINTABLE,=50=C3=A4):2\n"),
     "phone[Jacky]: 1\nphone[Pä]: 2\n"},
    {"CustomLinesOfPhones",
     v21("X-ANDROID-CUSTOM:vnd.android.cursor.item/nickname;Jo;1;;;;;;;;;;;;;\n"
         "X-ANDROID-CUSTOM;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:vnd.android.cursor.item/relation;=42=65=61;14;;;\n"
         "X-ANDROID-CUSTOM:vnd.android.cursor.item/contact_event;2001-02-03;1;;;;;;;;;;;;;\n"),
     "nickname: Jo\notherDate[anniversary]: 2001-02-03\nrelatedName[spouse]: Bea\n"},
    {"ReadingOfAName", v21("SOUND;X-IRMC-N;CHARSET=SHIFT_JIS:\xD4\xCF;\xC0\xDB;;;\nN:a\n"),
     "last: a\nphoneticFirstName: ﾀﾛ\nphoneticLastName: ﾔﾏ\n"},
    {"CardInsideTheCard",
     v21("NOTE:a\nAGENT:\nBEGIN:VCARD\nVERSION:2.1\nN:in\nTEL:9\nEND:VCARD\nTEL:1\n") +
         v30("AGENT:BEGIN:VCARD\\nN:in\\nEND:VCARD\\n\nNOTE:b\n"),
     "phone: 1\nnote: a\nnote: b\n"},
};
INSTANTIATE_TEST_SUITE_P(OldVersion, KRVCardDialects, testing::ValuesIn(kOldVersion),
                         [](const auto& each) { return std::string(each.param.name); });

const Dialect kPictures[] = {
    {"AllSpellingsOfBase64",
     v30("PHOTO;ENCODING=b:R0lGOA==\n") + v30("PHOTO;ENCODING=B:R0lGOA==\n") + v30("PHOTO;encoding=base64:R0lGOA==\n") +
         v21("PHOTO;BASE64:\n R0lGOA==\n\n"),
     "thumbnail: 4 bytes\nthumbnail: 4 bytes\nthumbnail: 4 bytes\nthumbnail: 4 bytes\n"},
    {"NoEmptyLineBehind", v21("PHOTO;ENCODING=BASE64:R0lG\nOA==\nTEL:1\n"), "phone: 1\nthumbnail: 4 bytes\n"},
    {"WideIndents", v21("PHOTO;ENCODING=BASE64;TYPE=GIF:\n      R0lG\n      OA==\n\nTEL:1\n"),
     "phone: 1\nthumbnail: 4 bytes\n"},
    {"DataURIs", v40("PHOTO:data:image/gif;base64,R0lGOA==\n") + v40("PHOTO:data:image/gif\\;base64\\,R0lGOA==\n"),
     "thumbnail: 4 bytes\nthumbnail: 4 bytes\n"},
    {"AddressesAreNotFetched",
     v30("PHOTO;VALUE=BINARY:http://x.example/y\nNOTE:a\n") + v30("PHOTO;VALUE=https://x.example/y\nNOTE:b\n") +
         v30("PHOTO;VALUE=uri:https://x.example/y\nNOTE:c\n"),
     "note: a\nnote: b\nnote: c\n"},
    {"TypeThatIsWrong", v30("PHOTO;TYPE=PNG;ENCODING=b:R0lGOA==\n"), "thumbnail: 4 bytes\n"},
    {"SignsInsideParameters", v30("PHOTO;X-ABCROP-RECTANGLE=Clip_1&0&0&96==;ENCODING=b:R0lGOA==\n"),
     "thumbnail: 4 bytes\n"},
    {"Megabytes", v30("PHOTO;ENCODING=b:" + std::string(4000000, 'A') + "\nTEL:1\n"),
     "phone: 1\nthumbnail: 3000000 bytes\n"},
    {"QuotedPrintableIsNoBase64", v30("PHOTO;ENCODING=QUOTED-PRINTABLE:R0lGOA=FF\nTEL:1\n"), "phone: 1\n"},
};
INSTANTIATE_TEST_SUITE_P(Pictures, KRVCardDialects, testing::ValuesIn(kPictures),
                         [](const auto& each) { return std::string(each.param.name); });

const Dialect kNames[] = {
    {"NoShownName", v30("N:Lee;Ann;;;\n"), "last: Lee\nfirst: Ann\n"},
    {"EmptyNameWithACompany", v30("FN:\nN:;;;;\nORG:Acme\n"), "company: Acme\n"},
    {"NoNameInParts", v40("FN:Ann Lee\n"), "last: Lee\nfirst: Ann\n"},
    {"NoNameAtAll", v21("TEL:1\n"), "phone: 1\n"},
    {"SeparatorsEscapedToo", v30("N:Lee\\;Ann\\;\\;Dr.\\;\n"), "last: Lee\nfirst: Ann\ntitle: Dr.\n"},
    {"EscapedSemicolonInAPart", v30("N:A\\;B;C;;;\n") + v30("N:A\\;B\n"), "last: A;B\nfirst: C\nlast: A;B\n"},
    {"CommasInParts", v30("N:Smith;John;Paul,Quentin;;Jr.,Ph.D.\n"),
     "last: Smith\nfirst: John\nmiddle: Paul,Quentin\nsuffix: Jr.,Ph.D.\n"},
    {"CompanyWithEmptyUnits", v30("ORG:Acme;;;\nX-ABShowAs:COMPANY\n"), "company: Acme\nisOrganization: YES\n"},
    {"ShownNameIsAnAddress", v30("FN:a@b.example\nEMAIL:\"Ann Lee\" <a@b.example>\n"),
     "first: a@b.example\nemail: \"Ann Lee\" <a@b.example>\n"},
    {"LabelsOfGroups",
     v30("item1.TEL:1\nitem1.X-ABLabel:_$!<Home>!$_\n4L06RU.TEL;TYPE=WORK:2\n4L06RU.X-ABLabel:Hut\nitem3.TEL:3\n"
         "item3.X-ABLabel:\nX-ABLabel:nobody's\n"),
     "phone[Home]: 1\nphone[Hut]: 2\nphone: 3\n"},
    {"GroupsOfTwoCardsAreTheirOwn", v30("item1.TEL:1\nitem1.X-ABLabel:A\n") + v30("item1.TEL:2\nitem1.X-ABLabel:B\n"),
     "phone[A]: 1\nphone[B]: 2\n"},
    {"LinesOfTheDesktop",
     v30("item1.X-ABDATE:2001-02-03\nitem1.X-ABLabel:First day\nX-ABRELATEDNAMES:Bea\nitem2.ADR:;;S;;;;\n"
         "item2.X-ABADR:de\nX-SOCIALPROFILE;type=twitter:http://t.example/a\n"),
     "address: (de) street=S;\notherDate[First day]: 2001-02-03\nrelatedName: Bea\n"
     "socialProfile[twitter]: http://t.example/a\n"},
    {"GroupsAreNoContacts",
     v30("X-ADDRESSBOOKSERVER-KIND:group\nFN:G\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:1\n") + v40("KIND:group\nFN:H\n"),
     ""},
};
INSTANTIATE_TEST_SUITE_P(Names, KRVCardDialects, testing::ValuesIn(kNames),
                         [](const auto& each) { return std::string(each.param.name); });

const Dialect kValues[] = {
    {"BirthdaysWithoutAYear",
     v30("BDAY;X-APPLE-OMIT-YEAR=1604:1604-04-14\n") + v30("BDAY:1604-04-14\n") + v30("BDAY:--0414\n") +
         v40("BDAY:--04-14\n"),
     "birthday: --04-14\nbirthday: --04-14\nbirthday: --04-14\nbirthday: --04-14\n"},
    {"YearFilledInLater", v30("BDAY;X-APPLE-OMIT-YEAR=1604:1980-04-14\n"), "birthday: 1980-04-14\n"},
    {"OtherStandInYear", v30("BDAY;X-APPLE-OMIT-YEAR=1900:1900-04-14\n"), "birthday: --04-14\n"},
    {"BirthdaysInAllForms",
     v30("BDAY:19800414\n") + v30("BDAY:1980-04-14T00:00:00Z\n") + v30("BDAY;VALUE=date:1980-4-14\n") +
         v30("BDAY:1980/04/14\n") + v30("BDAY:1980.4.14\n"),
     "birthday: 1980-04-14\nbirthday: 1980-04-14\nbirthday: 1980-04-14\nbirthday: 1980-04-14\nbirthday: 1980-04-14\n"},
    {"BirthdaysThatAreNone", v40("BDAY;VALUE=text:in spring\nNOTE:a\n") + v30("BDAY:14/04/1980\nNOTE:b\n"),
     "note: a\nnote: b\n"},
    {"AnniversariesUnderManyNames",
     v30("ANNIVERSARY:20010203\nX-ANNIVERSARY:2001-02-04\nX-MS-ANNIVERSARY:20010205\nX-EVOLUTION-ANNIVERSARY:2001-02-"
         "06\n"
         "X-KADDRESSBOOK-X-Anniversary:2001-02-07\n"),
     "otherDate[anniversary]: 2001-02-03\notherDate[anniversary]: 2001-02-04\notherDate[anniversary]: 2001-02-05\n"
     "otherDate[anniversary]: 2001-02-06\notherDate[anniversary]: 2001-02-07\n"},
    {"EscapedColons", v30("URL:http\\://a.example\nNOTE:at 1\\:30pm\n"), "url: http://a.example\nnote: at 1:30pm\n"},
    {"PhonesAsAddresses", v30("TEL;VALUE=uri:tel:+49-30\nTEL;VALUE=UNKNOWN:1,2;3\n"), "phone: +49-30\nphone: 1,2;3\n"},
    {"TypesInAllWays",
     v30("TEL;TYPE=\"WORK,VOICE\":1\nTEL;TYPE=PREF,T-Mobile:2\nTEL;type=HOME;type=FAX:3\n") + v40("TEL;PREF=1:4\n"),
     "phone[work]: 1\nphone[t-mobile]: 2\nphone[home fax]: 3\nphone: 4\n"},
    {"LabelLinesAndDesigns",
     v30("ADR;TYPE=WORK:;;S;C;;;\nLABEL;TYPE=WORK:S\\nC\n"
         "X-MS-OL-DESIGN;CHARSET=utf-8:<card xmlns=\"http://x\" ver=\"1.0\"><img align=\"left\"/></card>\nNOTE:a\n"),
     "address[work]: street=S;city=C;\nnote: a\n"},
    {"ServicesOfOtherPrograms", v30("X-SIP:ann@x.example\nX-MS-IMADDRESS:ann\nX-EVOLUTION-BLOG-URL:http://b.example\n"),
     "instantMessage: sip ann@x.example\ninstantMessage: ann\nurl[blog]: http://b.example\n"},
};
INSTANTIATE_TEST_SUITE_P(Values, KRVCardDialects, testing::ValuesIn(kValues),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(KRVCardDialectsOfIdentifiers, AreTakenAsTheyStandAndMadeUnique) {
  const KRCardsRead read = krReadCards(v30("UID:urn:uuid:1\n") + v30("UID:urn:uuid:1\n") + v30("N:x\n") + v30("N:x\n"));
  ASSERT_EQ(read.count(), 4U);
  EXPECT_EQ(read.person(0).ID(), "urn:uuid:1");
  EXPECT_EQ(read.person(1).ID(), "urn:uuid:1-2");
  EXPECT_FALSE(read.person(2).ID().isEmpty());
  EXPECT_FALSE(read.person(2).ID() == read.person(3).ID());
}

}  // namespace
