#include "import/KRCSVReading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/KRCSVTable.h"
#include "tests/support/KRPersonText.h"
#include "tests/support/KRTestFolder.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::vector<std::string> textsOf(std::string_view bytes) {
  std::vector<std::string> texts;
  for (const auto& person : KRCSVPersons::of(bytes).persons) texts.push_back(krPersonText(*person));
  return texts;
}

std::string textOf(std::string_view bytes) {
  const std::vector<std::string> texts = textsOf(bytes);
  return texts.size() == 1 ? texts[0] : std::to_string(texts.size()) + " persons";
}

TEST(KRCSVReading, PutsNamesInTheirNaturalPlaces) {
  EXPECT_EQ(textOf("First Name,Middle Name,Last Name\nAnn,Marie,van Lee"), "name: 'Ann''Marie''van Lee'\n");
  EXPECT_EQ(textOf("Last Name,First Name\nLee,"), "name: --'Lee'\n");
}

TEST(KRCSVReading, FindsTheSeparator) {
  for (const char* text : {"Name,Phone\n\"Lee; Co\",1\n", "Name;Phone\n\"Lee; Co\";1\n",
                           "Name\tPhone\n\"Lee; Co\"\t1\n", "sep=;\nName;Phone\nLee; Co;1;\n"}) {
    EXPECT_NE(krCSVReading(text).marks().separator, 0) << text;
    EXPECT_EQ(krCSVReading(text).mapping().columns().size(), 2U) << text;
  }
  EXPECT_EQ(krCSVReading("a;b,c;d\n1;2,3;4\n").marks().separator, ';');
  EXPECT_EQ(krCSVReading("Name\nLee, Ann\nNg; Bo\n").marks().separator, 0);
  KRCSVDialect dialect = KRCSVDialect::rfc4180();
  dialect.separator = '|';
  EXPECT_EQ(krCSVReading("Name|Phone\nLee|1\n", dialect).mapping().columns().size(), 2U);
}

TEST(KRCSVReading, PassesOverALineThatNamesTheSeparator) {
  for (const std::string text :
       {"sep=;\r\nName;Phone\r\nLee;1\r\n", "\xEF\xBB\xBFSEP=;\nName;Phone\nLee;1", "sep=|\rName|Phone\rLee|1"}) {
    EXPECT_EQ(textOf(text), "name: 'Lee'--\nphone -: '1'\n") << text;
  }
  EXPECT_EQ(krCSVReading("sep=").mapping().columns().size(), 1U);
  EXPECT_TRUE(krCSVReading("sep=;").mapping().columns().empty());
}

// What the files that people have hold.

TEST(KRCSVReading, ReadsNumberedPairsInBothWaysOfNaming) {
  const std::string expected = "name: 'Ann''M''Lee'\nphone 'mobile': '1'\nphone 'Werkstatt': '2'\n";
  EXPECT_EQ(
      textOf("Given Name,Additional Name,Family Name,Phone 1 - Type,Phone 1 - Value,Phone 2 - Type,Phone 2 - Value\n"
             "Ann,M,Lee,Mobile,1,Werkstatt,2"),
      expected);
  EXPECT_EQ(textOf("First Name,Middle Name,Last Name,Phonetic First Name,Phone 1 - Label,Phone 1 - Value,Phone 2 - "
                   "Label,Phone 2 - Value,Labels\nAnn,M,Lee,,Mobile,1,Werkstatt,2,"),
            expected);
}

TEST(KRCSVReading, CutsSeveralValuesInOneCell) {
  EXPECT_EQ(textOf("Name,E-mail 1 - Type,E-mail 1 - Value,Phone 1 - Type,Phone 1 - Value\n"
                   "Ann,* Home,a@x.y ::: b@x.y ::: ,Home ::: Work,1 ::: 2"),
            "name: 'Ann'--\nphone 'home': '1'\nphone 'work': '2'\nemail 'home': 'a@x.y'\nemail 'home': 'b@x.y'\n");
  EXPECT_EQ(textOf("Name,Address 1 - Type,Address 1 - Formatted,Address 1 - Street,Address 1 - City\n"
                   "Ann,Home,whatever,1 Elm St ::: 2 Oak St,Leeds ::: York"),
            "name: 'Ann'--\naddress 'home': ---'1 Elm St''Leeds'----\naddress 'home': ---'2 Oak St''York'----\n");
}

TEST(KRCSVReading, TakesStarsOffGroupsAndLabels) {
  EXPECT_EQ(textOf("Name,Group Membership,Phone 1 - Type,Phone 1 - Value\nAnn,* My Contacts ::: Chor,* Home,1"),
            "name: 'Ann'--\nphone 'home': '1'\ntags -: 'My Contacts'\ntags -: 'Chor'\n");
}

TEST(KRCSVReading, ReadsLabelsOfEachRow) {
  const auto texts = textsOf("Name,Phone 1 - Type,Phone 1 - Value\nAnn,Home,1\nBo,Work,2\nCy,,3");
  EXPECT_EQ(texts[0], "name: 'Ann'--\nphone 'home': '1'\n");
  EXPECT_EQ(texts[1], "name: 'Bo'--\nphone 'work': '2'\n");
  EXPECT_EQ(texts[2], "name: 'Cy'--\nphone -: '3'\n");
}

TEST(KRCSVReading, KeepsShortAndLongRows) {
  const auto all = KRCSVPersons::of("First,Last,Phone,\nAnn\nBo,Ng,1,,extra,\nCy,Orr,2,\n");
  ASSERT_EQ(all.persons.size(), 3U);
  EXPECT_EQ(krPersonText(*all.persons[0]), "name: 'Ann'--\n");
  EXPECT_EQ(krPersonText(*all.persons[1]), "name: 'Bo'-'Ng'\nphone -: '1'\nother 'Column 5': 'extra'\n");
  EXPECT_EQ(krPersonText(*all.persons[2]), "name: 'Cy'-'Orr'\nphone -: '2'\n");
}

TEST(KRCSVReading, KeepsLineBreaksInCells) {
  EXPECT_EQ(textOf("Name,Notes,Street\r\nAnn,\"one\r\ntwo\n\"\"three\"\"\",\"1 Elm St\r\nFlat 2\"\r\n"),
            "name: 'Ann'--\naddress -: ---'1 Elm St\nFlat 2'-----\nnote: 'one\ntwo\n\"three\"'\n");
}

TEST(KRCSVReading, ReadsRowsOfNothingButANumber) {
  EXPECT_EQ(textOf("\xEF\xBB\xBF"
                   "First Name,Last Name,Mobile Phone\n,,0171 5550100"),
            "phone 'mobile': '0171 5550100'\n");
}

TEST(KRCSVReading, ReadsTranslatedHeadingsWithoutSwappingLookAlikes) {
  EXPECT_EQ(textOf("Anrede;Vorname;Nachname;Straße geschäftlich;Ort geschäftlich;Region geschäftlich;Postleitzahl "
                   "geschäftlich;Land/Region geschäftlich;E-Mail 2: Adresse;Geburtstag\n"
                   "Frau;Anke;Groß;Ring 1;Ulm;BW;89073;Deutschland;a@x.example;8.7.1965"),
            "name: 'Anke'-'Groß'\nemail -: 'a@x.example'\naddress 'work': ---'Ring "
            "1''Ulm''BW''89073''Deutschland'-\ntitle: 'Frau'\nbirthday: '1965-07-08'\n");
}

TEST(KRCSVReading, ReadsATitleBesideAJobTitleAsWhatStandsBeforeTheName) {
  EXPECT_EQ(textOf("Title,First Name,Job Title\nDr.,Ann,Head"), "name: 'Ann'--\njobTitle: 'Head'\ntitle: 'Dr.'\n");
  EXPECT_EQ(textOf("First Name,Title\nAnn,Head"), "name: 'Ann'--\njobTitle: 'Head'\n");
  EXPECT_EQ(textOf("Titre;Prénom;Nom;Société;Titre\nMme;Anne;Roy;SARL;Chef"),
            "name: 'Anne'-'Roy'\ncompany: 'SARL'\njobTitle: 'Chef'\ntitle: 'Mme'\n");
}

TEST(KRCSVReading, PassesOverWhatExportersWriteByThemselves) {
  EXPECT_EQ(textOf("First Name,Birthday,Anniversary,Gender,Priority,Private,E-mail Type,Categories\n"
                   "Ann,0/0/00,0000-00-00,Unspecified,Normal,False,SMTP,Chor;Verein"),
            "name: 'Ann'--\ntags -: 'Chor'\ntags -: 'Verein'\n");
  EXPECT_THAT(textOf("First Name,Gender\nAnn,female"), HasSubstr("other 'Gender': 'female'"));
}

TEST(KRCSVReading, ReadsABirthdayFromThreeColumns) {
  EXPECT_EQ(textOf("First Name,Primary Email,Birth Year,Birth Month,Birth Day\nAnn,a@x.y,1972,1,31"),
            "name: 'Ann'--\nemail -: 'a@x.y'\nbirthday: '1972-01-31'\n");
  EXPECT_EQ(textOf("Vorname,Geburtsjahr,Geburtsmonat,Geburtstag\nAnke,,1,31"), "name: 'Anke'--\nbirthday: '--01-31'\n");
  // One that does not exist is kept as it stands.
  const auto all = KRCSVPersons::of("First Name,Birth Year,Birth Month,Birth Day\nAnn,1977,2,31");
  EXPECT_EQ(krPersonText(*all.persons[0]),
            "name: 'Ann'--\nother 'Birth Year': '1977'\nother 'Birth Month': '2'\nother 'Birth Day': '31'\n");
  ASSERT_EQ(all.notes.size(), 1U);
  EXPECT_EQ(all.notes[0].line, 2U);
  EXPECT_FALSE(all.notes[0].isPersonLost);
}

TEST(KRCSVReading, TrimsHeadingsAndIgnoresTheirCase) {
  EXPECT_EQ(textOf("FIRST name , last NAME,\"E-Mail Address \"\nAnn,Lee,a@x.y"),
            "name: 'Ann'-'Lee'\nemail -: 'a@x.y'\n");
}

TEST(KRCSVReading, ReadsOlderCodePages) {
  EXPECT_EQ(textOf("Vorname;Nachname;Notizen\r\n\xDCmit;\xD6zg\xFCr;f\xFCr die Stra\xDF"
                   "e nach K\xF6ln und M\xFCnchen\r\n"),
            "name: 'Ümit'-'Özgür'\nnote: 'für die Straße nach Köln und München'\n");
}

TEST(KRCSVReading, ReadsAShortFileOfADesktopProgramAsSuch) {
  const std::string_view bytes =
      "Vorname;Nachname;Ort gesch\xE4"
      "ftlich\r\nZo\xEB;N\xFA\xF1"
      "ez;K\xF6ln\r\n";
  EXPECT_EQ(textOf(bytes), "name: 'Zoë'-'Núñez'\naddress 'work': ----'Köln'----\n");
  const KRTestFolder folder;
  folder.put("a.csv", bytes);
  EXPECT_EQ(KRCSVReading::open(std::string_view(folder.at("a.csv")), KRCSVDialect::rfc4180())->charset(),
            "windows-1252");
}

TEST(KRCSVReading, ReadsUTF16WithTabs) {
  std::string text("\xFF\xFE", 2);
  for (const char c : std::string_view("First Name\tLast Name\r\nAnn\t\"L\tee\"\r\n")) text += {c, '\0'};
  EXPECT_EQ(textOf(text), "name: 'Ann'-'L\tee'\n");
}

TEST(KRCSVReading, FindsSingleQuotesAndTakesNone) {
  EXPECT_EQ(textOf("'Name','Notes'\n'O''Hara','a, b'"), "name: 'O'Hara'--\nnote: 'a, b'\n");
  EXPECT_EQ(textOf("Name,Notes\n'Ann',it's"), "name: ''Ann''--\nnote: 'it's'\n");
  KRCSVDialect dialect = KRCSVDialect::rfc4180();
  dialect.quote = '\0';
  EXPECT_EQ(krPersonText(*KRCSVPersons::of(krCSVReading("Name,Notes\nAnn,\"x", dialect)).persons.at(0)),
            "name: 'Ann'--\nnote: '\"x'\n");
}

TEST(KRCSVReading, MakesLineBreaksOfABackslashAndAnN) {
  EXPECT_EQ(textOf("Name,Notes,Address\nAnn,one\\ntwo,1 Elm St\\nLeeds"),
            "name: 'Ann'--\naddress -: ---'1 Elm St\nLeeds'-----\nnote: 'one\ntwo'\n");
}

TEST(KRCSVReading, TrimsBlanksAroundMailAddressesOnly) {
  EXPECT_EQ(textOf("First Name,Email,Phone\n Ann ,\u00A0 a@x.y \u00A0, 1 "),
            "name: ' Ann '--\nphone -: ' 1 '\nemail -: 'a@x.y'\n");
}

TEST(KRCSVReading, SplitsOneColumnOfNames) {
  const struct {
    const char* name;
    const char* parts;
  } kRows[] = {
      {"Ann", "'Ann'--"},
      {"Ann Lee", "'Ann'-'Lee'"},
      {"Ann Marie van Lee", "'Ann''Marie van''Lee'"},
      {"\"Lee, Ann\"", "'Ann'-'Lee'"},
      {"\"van Lee, Ann Marie\"", "'Ann''Marie''van Lee'"},
      {"Ann  Lee", "'Ann'-'Lee'"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(textOf(std::string("Name,Notes\n") + row.name + ",x"),
              std::string("name: ") + row.parts + "\nnote: 'x'\n");
  }
  KRCSVDialect dialect = KRCSVDialect::rfc4180();
  dialect.isLastNameFirst = true;
  EXPECT_EQ(krPersonText(*KRCSVPersons::of(krCSVReading("Name,Notes\nLEE Ann Marie,", dialect)).persons.at(0)),
            "name: 'Ann''Marie''LEE'\n");
}

TEST(KRCSVReading, KeepsAWholeNameOnlyWhenItSaysMore) {
  EXPECT_EQ(textOf("Display Name,First Name,Last Name,Suffix\n\"Lee, Ann Jr.\",Ann,Lee,Jr"),
            "name: 'Ann'-'Lee'\nsuffix: 'Jr'\n");
  EXPECT_EQ(textOf("Display Name,First Name,Last Name\nBoss,Ann,Lee"),
            "name: 'Ann'-'Lee'\nother 'Display Name': 'Boss'\n");
}

TEST(KRCSVReading, TakesARowNamedAsItsCompanyForOne) {
  const std::string text = textOf("Display Name,Organization,Phone\nAcme Inc.,Acme Inc.,1");
  EXPECT_THAT(text, HasSubstr("isOrganization: 'YES'"));
  EXPECT_THAT(text, Not(HasSubstr("name:")));
}

TEST(KRCSVReading, ReadsRepeatedHeadings) {
  EXPECT_EQ(textOf("Name,Phone,Phone,Company,Company\nAnn,1,2,Acme,Globex"),
            "name: 'Ann'--\nphone -: '1'\nphone -: '2'\ncompany: 'Acme'\nother 'Company': 'Globex'\n");
}

TEST(KRCSVReading, ReadsFilesWithoutHeadings) {
  const KRCSVReading reading = krCSVReading("Ann,Lee,a@x.y,0171 555010\nBo,Ng,b@x.y,\n");
  EXPECT_FALSE(reading.hasHeadings());
  EXPECT_EQ(
      textsOf("Ann,Lee,a@x.y,0171 555010\nBo,Ng,b@x.y,\n").at(0),
      "phone 'Column 4': '0171 555010'\nemail 'Column 3': 'a@x.y'\nother 'Column 1': 'Ann'\nother 'Column 2': 'Lee'\n");
  KRCSVDialect dialect = KRCSVDialect::rfc4180();
  dialect.hasHeadings = true;
  EXPECT_EQ(krCSVReading("Ann,a@x.y\nBo,b@x.y\n", dialect).mapping().columns()[1].heading, "a@x.y");
}

TEST(KRCSVReading, TellsOfNumbersThatASpreadsheetHasSpoiled) {
  const auto all = KRCSVPersons::of("Name,Phone\nAnn,4.91512E+11\nBo,0171");
  ASSERT_EQ(all.notes.size(), 1U);
  EXPECT_EQ(all.notes[0].line, 2U);
  EXPECT_EQ(all.notes[0].card, 1U);
  EXPECT_THAT(krPersonText(*all.persons[0]), HasSubstr("4.91512E+11"));
}

TEST(KRCSVReading, LearnsTheOrderOfDatesFromTheWholeColumn) {
  std::string text = "Name,Birthday\n";
  for (int i = 0; i < 200; ++i) text += "Ann,1/2/1990\n";
  const auto monthFirst = textsOf(text + "Bo,1/20/1990\n");
  EXPECT_EQ(monthFirst[0], "name: 'Ann'--\nbirthday: '1990-01-02'\n");
  const auto dayFirst = textsOf(text + "Bo,20/1/1990\n");
  EXPECT_EQ(dayFirst[0], "name: 'Ann'--\nbirthday: '1990-02-01'\n");
}

TEST(KRCSVReading, KeepsADateThatIsNone) {
  const auto all = KRCSVPersons::of("Name,Birthday,Anniversary\nAnn,soon,31.2.1990");
  EXPECT_EQ(krPersonText(*all.persons.at(0)),
            "name: 'Ann'--\nother 'Birthday': 'soon'\nother 'Anniversary': '31.2.1990'\n");
  EXPECT_EQ(all.notes.size(), 2U);
}

TEST(KRCSVReading, KeepsColumnsThatNobodyKnows) {
  EXPECT_EQ(textOf("Name,Hobby,Shoe size\nAnn,chess,"), "name: 'Ann'--\nother 'Hobby': 'chess'\n");
}

TEST(KRCSVReading, GuessesUnknownColumnsByAllFirstRows) {
  const auto texts = textsOf("Name,a,b\nAnn,,x@y.z\nBo,0171 55501,q@y.z\n");
  EXPECT_EQ(texts[1], "name: 'Bo'--\nphone 'a': '0171 55501'\nemail 'b': 'q@y.z'\n");
}

TEST(KRCSVReading, SurvivesAQuoteThatNothingCloses) {
  const auto all = KRCSVPersons::of("Name,Notes\nAnn,\"5\"\" nail\"\nBo,\"6 nail\nCy,x\nDi,y\n");
  ASSERT_EQ(all.persons.size(), 4U);
  EXPECT_EQ(krPersonText(*all.persons[0]), "name: 'Ann'--\nnote: '5\" nail'\n");
  EXPECT_EQ(krPersonText(*all.persons[2]), "name: 'Cy'--\nnote: 'x'\n");
  ASSERT_EQ(all.notes.size(), 1U);
  EXPECT_EQ(all.notes[0].line, 3U);
}

TEST(KRCSVReading, HasNoPersonsInAnEmptyFile) {
  for (const char* text : {"", "\n\n", "Name,Phone\n", "\xEF\xBB\xBF", ",,,\n,,\n", "\"", "'"}) {
    EXPECT_TRUE(KRCSVPersons::of(text).persons.empty()) << text;
  }
}

TEST(KRCSVReading, PassesOverBlankRowsAndCountsTheOthers) {
  KRCSVReading reading = krCSVReading("Name,Phone\nAnn,1\n,\n\n , \nBo,2\n");
  EXPECT_EQ(reading.personCount(), 2U);
  EXPECT_EQ(KRCSVPersons::of(std::move(reading)).persons.size(), 2U);
}

TEST(KRCSVReading, CountsARowOfAZeroByteInASingleColumn) {
  KRCSVReading reading = krCSVReading(std::string_view("x\n\0\n\0", 5));
  EXPECT_EQ(reading.personCount(), 2U);
  EXPECT_EQ(KRCSVPersons::of(std::move(reading)).persons.size(), 2U);
}

TEST(KRCSVReading, GivesTheFileSystemsErrors) {
  EXPECT_EQ(KRCSVReading::open("/nowhere/a.csv", KRCSVDialect::rfc4180()).error().code, KRErrorCode::NotFound);
}

TEST(KRCSVReading, ReadsHeadingsThatAreLongerThanASample) {
  std::string headings = "First Name";
  std::string row = "Ann";
  constexpr size_t kPhones = 20000;
  for (size_t i = 1; i <= kPhones; ++i) {
    headings += ",Phone " + std::to_string(i) + " - Value";
    row += ",0171 " + std::to_string(i);
  }
  ASSERT_GT(headings.size(), size_t{256} << 10U);
  const auto persons = KRCSVPersons::of(krCSVReading(headings + "\n" + row + "\n")).persons;
  ASSERT_EQ(persons.size(), 1U);
  const std::string text = krPersonText(*persons[0]);
  EXPECT_EQ(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')), kPhones + 1) << "a name, and each phone";
  EXPECT_THAT(text, HasSubstr("'0171 20000'\n"));
}

TEST(KRCSVReading, ReadsSoManyHeadingsAndTakesFurtherCellsForOnesWithoutAny) {
  const std::string wide(KRCSVReading::kMostColumns + 10, ',');
  KRCSVReading reading = krCSVReading("First Name" + wide + "x\nAnn" + wide + "y\n");
  const std::string last = "'Column " + std::to_string(wide.size() + 1) + "': 'y'\n";
  EXPECT_LE(reading.mapping().columns().size(), KRCSVReading::kMostColumns);
  const auto persons = KRCSVPersons::of(std::move(reading)).persons;
  ASSERT_EQ(persons.size(), 1U);
  EXPECT_EQ(krPersonText(*persons[0]), "name: 'Ann'--\nother " + last);
}

}  // namespace
