#include "import/KRPersonCSVLoad.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "contacts/model/KRObjectPersonName.h"
#include "import/KRCSVReading.h"
#include "platform/KRLanguage.h"
#include "tests/support/KRLoadRun.h"
#include "tests/support/KRTestFolder.h"

namespace {

using Load = KRPersonCSVLoad;

class KRPersonCSVLoadTest : public testing::Test {
 protected:
  void SetUp() override { KRLanguage::set("en"_kr); }

  KRRef<KRPersonLoad> loader(std::string_view content, const std::string& name = "a.csv") const {
    folder_.put(name, content);
    return KRPersonLoad::loadWithFile(KRString(folder_.at(name)));
  }
  std::vector<KRRef<IKRPerson>> persons(std::string_view content) const {
    return KRLoadRun::of(*loader(content))->persons;
  }
  KRRef<IKRPerson> person(std::string_view content) const { return persons(content).at(0); }

  KRTestFolder folder_;
};

std::string partText(const KRString& part) {
  return part.isNothing() ? "-" : std::string(part.view());
}

/// "first|middle|last", "-" for a part that is nothing.
std::string nameOf(const IKRPerson& person) {
  const auto stored = person.valueByPropertyName(KRProPertyName);
  const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get());
  const auto* name = single != nullptr ? single->value().as<KRObjectPersonName>() : nullptr;
  if (name == nullptr) return "no name";
  return partText(name->first()) + "|" + partText(name->middle()) + "|" + partText(name->last());
}

/// "label=value" of each entry.
std::vector<std::string> entriesOf(const IKRPerson& person, const KRString& name) {
  std::vector<std::string> list;
  const auto stored = person.valueByPropertyName(name);
  const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
  if (multiple == nullptr) return {"no value"};
  for (size_t i = 0; i < multiple->count(); ++i) {
    const KRMutableSingleValue* entry = multiple->valueAtIndex(i);
    list.push_back(partText(entry->label()->name()) + "=" + std::string(entry->value().description().view()));
  }
  return list;
}

KRValue singleOf(const IKRPerson& person, const KRString& name) {
  const auto stored = person.valueByPropertyName(name);
  const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get());
  return single != nullptr ? single->value() : KRValue();
}

using Texts = std::vector<std::string>;

TEST_F(KRPersonCSVLoadTest, IsMadeForTheExtensionInAnyCase) {
  EXPECT_TRUE(KRPersonLoad::isSupportFile("x/A.CSV"_kr));
  const auto made = loader("A,B\n1,2", "UPPER.CSV");
  ASSERT_TRUE(made);
  EXPECT_NE(dynamic_cast<Load*>(made.get()), nullptr);
  EXPECT_EQ(made->state(), 0);
  EXPECT_FALSE(Load::initWithFile(KRString(folder_.at("missing.csv"))));
  EXPECT_FALSE(Load::initWithFile(KRString(folder_.path())));
  EXPECT_FALSE(Load::initWithFile(KRString()));
}

TEST_F(KRPersonCSVLoadTest, CrossesLastAndMiddleNames) {
  EXPECT_EQ(nameOf(*person("First Name,Last Name\nAnn,Lee")), "Ann|Lee|-");
  EXPECT_EQ(nameOf(*person("first_name,MIDDLE,Last\nAnn,Marie,Lee")), "Ann|Lee|Marie");
}

TEST_F(KRPersonCSVLoadTest, SplitsAWholeNameAtSingleSpaces) {
  const struct {
    const char* name;
    const char* parts;
  } kRows[] = {
      {"Ann Marie van Lee", "Ann|Marie|vanLee"},
      {"Ann", "Ann|-|-"},
      {"Ann Lee", "Ann|-|Lee"},
      {"Ann  Lee", "Ann|-|Lee"},
      {" Ann Lee", "-|Ann|Lee"},
      {"Ann ", "Ann|-|-"},
      {"Ann Lee  ", "Ann|Lee|-"},
      {"Ann M ", "Ann|M|-"},
      {" ", "-|-|-"},
      {"Ann M a b  c", "Ann|M|abc"},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(nameOf(*person(std::string("Name,Note\n") + row.name + ",x")), row.parts) << row.name;
}

TEST_F(KRPersonCSVLoadTest, LetsLaterNameColumnsOverwriteEarlierOnes) {
  EXPECT_EQ(nameOf(*person("First,First,x\nAnn,Bo,")), "Bo|-|-");
  EXPECT_EQ(nameOf(*person("First,First,x\nAnn,,")), "Ann|-|-");
  EXPECT_EQ(nameOf(*person("Last,Name\nNg,Ann Lee")), "Ann|Ng|Lee");
  EXPECT_EQ(nameOf(*person("First,Name\nBo, Lee")), "-|-|Lee");
}

TEST_F(KRPersonCSVLoadTest, GivesEveryPersonAName) {
  EXPECT_EQ(nameOf(*person("First,Note\n,x")), "-|-|-");
  EXPECT_EQ(nameOf(*person("Note,Phone\nx,1")), "no name");
}

TEST_F(KRPersonCSVLoadTest, FillsPhonesFromTheTablesHeadings) {
  const auto ann = person("iPhone,Mobile,phone\n1,2,");
  EXPECT_EQ(entriesOf(*ann, KRProPertyPhone), (Texts{"iPhone=1", "Mobile=2"}));
  const auto stored = ann->valueByPropertyName(KRProPertyPhone);
  const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
  EXPECT_EQ(multiple->valueAtIndex(0)->type(), KRValueType::Phone);
  EXPECT_EQ(multiple->valueAtIndex(0)->label()->displayName(), "iPhone");
}

TEST_F(KRPersonCSVLoadTest, StoresAMultipleValueAlsoWhenItStaysEmpty) {
  EXPECT_TRUE(entriesOf(*person("Name,Phone\nAnn,"), KRProPertyPhone).empty());
}

TEST_F(KRPersonCSVLoadTest, MapsHeadingsToStandardProperties) {
  const struct {
    KRString heading;
    KRString first;
    KRString property;
  } kRows[] = {
      {"Job Title"_kr, "x"_kr, KRProPertyJobTitle},
      {"JOBTITLE"_kr, "x"_kr, KRProPertyJobTitle},
      {"Prefix"_kr, "x"_kr, KRProPertyTitle},
      {"nickname"_kr, "x"_kr, KRProPertyNickname},
      {"Web Page"_kr, "x"_kr, KRProPertyURL},
      // Contained names: the first in standard order.
      {"Telephone"_kr, "x"_kr, KRProPertyPhone},
      {"Home Phone 2"_kr, "x"_kr, KRProPertyPhone},
      {"Work E-mail"_kr, "x"_kr, KRProPertyEmail},
      {"My company"_kr, "x"_kr, KRProPertyCompany},
      {"Email address"_kr, "x"_kr, KRProPertyEmail},
      // Name, other and photo are no candidates.
      {"Thumbnail"_kr, "x"_kr, KRProPertyOther},
      {"Photo"_kr, "x"_kr, KRProPertyOther},
      {"Other"_kr, "x"_kr, KRProPertyOther},
      {"Full name"_kr, "x"_kr, KRProPertyOther},
      // The first value decides where the heading does not.
      {"X"_kr, "a.b@c"_kr, KRProPertyEmail},
      {"X"_kr, "+1 (2)-3"_kr, KRProPertyPhone},
      {"X"_kr, ""_kr, KRProPertyPhone},
      {"X"_kr, KRString(), KRProPertyPhone},
      {""_kr, "x"_kr, KRProPertyOther},
      {"X"_kr, "12x"_kr, KRProPertyOther},
      {" phone "_kr, "x"_kr, KRProPertyPhone},
      {" first"_kr, "x"_kr, KRProPertyOther},
  };
  for (const auto& row : kRows) {
    KRString label;
    EXPECT_EQ(Load::propertyNameByHeadItemName(row.heading, &label, row.first), row.property) << row.heading.view();
    EXPECT_EQ(label, row.heading);
    EXPECT_EQ(Load::propertyNameByHeadItemName(row.heading, nullptr, row.first), row.property);
  }
}

TEST_F(KRPersonCSVLoadTest, NamesThePartsOfTheNameByLabel) {
  const struct {
    KRString heading;
    KRString label;
  } kRows[] = {
      {"First"_kr, "First"_kr}, {"FIRST NAME"_kr, "First"_kr}, {"first_name"_kr, "First"_kr},
      {"Last"_kr, "Middle"_kr}, {"Last Name"_kr, "Middle"_kr}, {"LAST_NAME"_kr, "Middle"_kr},
      {"Middle"_kr, "Last"_kr}, {"middle name"_kr, "Last"_kr}, {"Middle_Name"_kr, "Last"_kr},
      {"Name"_kr, KRString()},
  };
  for (const auto& row : kRows) {
    KRString label;
    EXPECT_EQ(Load::propertyNameByHeadItemName(row.heading, &label, "x"_kr), KRProPertyName);
    EXPECT_EQ(label, row.label) << row.heading.view();
    label = "x"_kr;
    EXPECT_EQ(Load::propertyNameByHeadItemName(row.heading, &label), KRProPertyName);
    EXPECT_EQ(label, row.label) << row.heading.view();
  }
}

TEST_F(KRPersonCSVLoadTest, KeepsTheOlderMappingForCallersWithoutData) {
  const struct {
    KRString heading;
    KRString property;
  } kRows[] = {
      {"phone"_kr, KRProPertyPhone},
      {"Mobile"_kr, KRProPertyPhone},
      {"iPhone"_kr, KRProPertyPhone},  // through the name contained in it
      {"Web Page"_kr, KRProPertyURL},
      {"X"_kr, KRProPertyOther},
      {""_kr, KRProPertyOther},
      // One pass: a contained name of an earlier property wins over an equal one of a later.
      {"Shown as Company"_kr, KRProPertyCompany},
      {"Phonetic First Name"_kr, KRProPertyPhoneticFirstName},
      {"Nickname"_kr, KRProPertyNickname},
  };
  for (const auto& row : kRows) {
    KRString label;
    EXPECT_EQ(Load::propertyNameByHeadItemName(row.heading, &label), row.property) << row.heading.view();
    EXPECT_EQ(label, row.heading);
  }
}

TEST_F(KRPersonCSVLoadTest, GathersColumnsByProperty) {
  const KRStringList heads = {"Phone"_kr, "First"_kr, "Mobile"_kr, "X"_kr};
  const auto mapping = Load::propertyByHeadItemArray(heads, {"1"_kr, "Ann"_kr});
  ASSERT_EQ(mapping.size(), 2U);
  EXPECT_EQ(mapping[0].first, KRProPertyPhone);
  ASSERT_EQ(mapping[0].second.size(), 3U);
  EXPECT_EQ(mapping[0].second[0]->index(), 0);
  EXPECT_EQ(mapping[0].second[1]->index(), 2);
  EXPECT_EQ(mapping[0].second[1]->label(), "Mobile");
  // The row is shorter than the headings: an empty first value, so a phone.
  EXPECT_EQ(mapping[0].second[2]->index(), 3);
  EXPECT_EQ(mapping[1].first, KRProPertyName);
  EXPECT_EQ(mapping[1].second[0]->label(), "First");
  const auto older = Load::propertyByHeadItemArray(heads);
  ASSERT_EQ(older.size(), 3U);
  EXPECT_EQ(older[2].first, KRProPertyOther);
}

TEST_F(KRPersonCSVLoadTest, TestsPhonesByTheLowByteOfEachUnit) {
  for (const char* phone : {"", " ", "0123456789", "+1 (23)-4", "1\u00A02", "\u0130", "İ", "丰", "\u2030"}) {
    EXPECT_TRUE(Load::isPhoneByValue(phone)) << phone;
  }
  for (const char* other : {"a", "1.2", "1/2", "#", "*", "٣", "😀", "1\t2", "1\n", "\u013A"}) {
    EXPECT_FALSE(Load::isPhoneByValue(other)) << other;
  }
}

TEST_F(KRPersonCSVLoadTest, TestsEmailsByTwoCharacters) {
  EXPECT_TRUE(Load::isEmailByValue("a@b.c"));
  EXPECT_TRUE(Load::isEmailByValue(".@"));
  EXPECT_FALSE(Load::isEmailByValue("a@b"));
  EXPECT_FALSE(Load::isEmailByValue("a.b"));
  EXPECT_FALSE(Load::isEmailByValue(KRText()));
}

TEST_F(KRPersonCSVLoadTest, MakesFurtherColumnsWithUnknownHeadingsByTheFirstRow) {
  const auto all = persons("Name,a,b,c,d\nAnn,x@y.z,123,,text\nBo,1,2,3,4");
  EXPECT_EQ(entriesOf(*all[1], KRProPertyEmail), (Texts{"a=1"}));
  EXPECT_EQ(entriesOf(*all[1], KRProPertyPhone), (Texts{"b=2", "c=3"}));
  EXPECT_EQ(entriesOf(*all[1], KRProPertyOther), (Texts{"d=4"}));
}

TEST_F(KRPersonCSVLoadTest, ReadsDatesOfOnePatternOnly) {
  EXPECT_EQ(*Load::dateWithString("1990/03/02"), *KRDate::make(1990, 3, 2));
  for (const char* other : {"02/03/1990", "1990-03-02", "1990/3/2", "1990/02/30", "1990/03/02 ", "", "90/03/02",
                            "1990/ 3/02", "١٩٩٠/03/02"}) {
    EXPECT_FALSE(Load::dateWithString(other)) << other;
  }
  EXPECT_FALSE(Load::dateWithString(KRText()));
  EXPECT_EQ(singleOf(*person("Name,Birthday\nAnn,1990/03/02"), KRProPertyBirthday).description(), "1990-03-02");
  const auto bo = person("Name,Birthday\nBo,02/03/1990");
  EXPECT_FALSE(bo->valueByPropertyName(KRProPertyBirthday));
  EXPECT_EQ(nameOf(*bo), "Bo|-|-");
  const auto dates = person("Name,Other Date,Other Date\nAnn,1990/03/02,bad");
  EXPECT_EQ(entriesOf(*dates, KRProPertyOtherDate), (Texts{"Other Date=1990-03-02"}));
}

TEST_F(KRPersonCSVLoadTest, SplitsListsAtCommasWithoutTrimming) {
  EXPECT_EQ(Load::arrayValueWithString("a, b,,c"_kr)->texts(), (KRStringList{"a"_kr, " b"_kr, ""_kr, "c"_kr}));
  EXPECT_TRUE(Load::arrayValueWithString(KRString())->values().empty());
  const auto ann = person("Name\tTags\nAnn\ta, b");
  EXPECT_EQ(singleOf(*ann, KRProPertyTags).description(), "(a,  b)");
}

TEST_F(KRPersonCSVLoadTest, FillsAddressFieldsWordByWord) {
  const std::string before = std::getenv("LC_ALL") != nullptr ? std::getenv("LC_ALL") : "";
  setenv("LC_ALL", "en_GB.UTF-8", 1);
  const auto address = Load::addressValueWithString("a b c d e f g h i"_kr);
  const auto gap = Load::addressValueWithString("a  c"_kr);
  const auto none = Load::addressValueWithString(KRString());
  const auto ann = person("Name,Address\nAnn,Street Extra");
  if (before.empty()) {
    unsetenv("LC_ALL");
  } else {
    setenv("LC_ALL", before.c_str(), 1);
  }
  EXPECT_EQ(address->countryCode(), "GB");
  EXPECT_EQ(address->stringValue("street"), "a");
  EXPECT_EQ(address->stringValue("extended"), "b");
  EXPECT_EQ(address->stringValue("poBox"), "c");
  EXPECT_EQ(address->stringValue("city"), "d");
  EXPECT_EQ(address->stringValue("region"), "e");
  EXPECT_EQ(address->stringValue("postalCode"), "f");
  EXPECT_EQ(address->stringValue("country"), "i");
  EXPECT_EQ(gap->stringValue("street"), "a");
  EXPECT_TRUE(gap->stringValue("extended").isNothing());
  EXPECT_EQ(gap->stringValue("poBox"), "c");
  EXPECT_EQ(none->countryCode(), "GB");
  ASSERT_EQ(entriesOf(*ann, KRProPertyAddress).size(), 1U);
}

TEST_F(KRPersonCSVLoadTest, ReadsTheServiceFromTheFirstWordOfAnAccount) {
  const auto account = Load::instantMessageValue("Skype ann lee"_kr);
  EXPECT_EQ(account->userName(), "ann lee");
  EXPECT_EQ(account->server()->name(), "skype");
  EXPECT_EQ(Load::instantMessageValue("Nobody ann"_kr)->server(), nullptr);
  EXPECT_FALSE(Load::instantMessageValue("Skype"_kr));
  EXPECT_FALSE(Load::instantMessageValue(""_kr));
  EXPECT_FALSE(Load::instantMessageValue(KRString()));
  // Every occurrence of the word before a space goes.
  EXPECT_EQ(Load::instantMessageValue("a ba a c"_kr)->userName(), "bc");
  EXPECT_EQ(Load::instantMessageValue(" ann"_kr)->userName(), "ann");
  EXPECT_EQ(entriesOf(*person("Name,Instant Message\nAnn,Skype"), KRProPertyInstantMessage), Texts{});
}

TEST_F(KRPersonCSVLoadTest, ReadsOnlyTheFirstColumnOfASingleValue) {
  EXPECT_EQ(singleOf(*person("Company,Company\nAcme,Globex"), KRProPertyCompany).text(), "Acme");
  EXPECT_FALSE(person("Company,Company\n,Globex")->valueByPropertyName(KRProPertyCompany));
  const auto stored = person("Company,x\nAcme,")->valueByPropertyName(KRProPertyCompany);
  const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get());
  EXPECT_EQ(single->label()->name(), "Company");
  EXPECT_EQ(single->type(), KRValueType::Text);
}

TEST_F(KRPersonCSVLoadTest, SendsStartAndEndOnlyForAFileWithoutRows) {
  for (const char* content : {"First,Last\n", "", "\n\n"}) {
    const auto made = loader(content);
    const auto run = KRLoadRun::of(*made);
    EXPECT_EQ(run->events, (Texts{"start", "end"})) << content;
    EXPECT_EQ(run->stateAtEnd, 2);
  }
}

TEST_F(KRPersonCSVLoadTest, TellsTotalAndProgressInSinglePrecision) {
  const auto run = KRLoadRun::of(*loader("A,B\n1,2\nx\n3,4\n5,6"));
  EXPECT_EQ(run->events, (Texts{"start", "number 3", "end"}));
  EXPECT_EQ(run->progresses, (std::vector<double>{50.0, 75.0, 100.0}));
  const auto third = KRLoadRun::of(*loader("A,B\n1,2\n3,4"));
  EXPECT_EQ(third->progresses, (std::vector<double>{static_cast<double>(200.0F / 3.0F), 100.0}));
  EXPECT_EQ(run->persons[0]->ID(), "123");
  EXPECT_EQ(run->persons[2]->ID(), "123");
}

TEST_F(KRPersonCSVLoadTest, RunsToTheLastRowAlthoughStopped) {
  const auto made = loader("Name,x\nA,\nB,\nC,\n");
  auto run = std::make_shared<KRLoadRun>();
  run->onPerson = [](KRPersonLoad& each) { each.stop(); };
  made->setDelegate(run);
  made->start();
  run->wait();
  EXPECT_EQ(run->persons.size(), 3U);
  EXPECT_EQ(run->events, (Texts{"start", "number 3", "end"}));
}

TEST_F(KRPersonCSVLoadTest, NotesRowsThatAreDropped) {
  const auto made = loader("A,B\n1,2\nx\n\n3,4\ny\n");
  std::vector<size_t> lines;
  made->setNotes([&](const KRPersonLoadNote& note) {
    EXPECT_TRUE(note.isPersonLost);
    EXPECT_EQ(note.record, note.line == 3 ? "x" : "y");
    lines.push_back(note.line);
  });
  KRLoadRun::of(*made);
  EXPECT_EQ(lines, (std::vector<size_t>{3, 6}));
}

TEST_F(KRPersonCSVLoadTest, MakesSingleValuesAsPersonsDo) {
  EXPECT_FALSE(Load::singleValueByValue(KRValue(), KRProperty::propertyWithName(KRProPertyNote)));
  const auto single = Load::singleValueByValue("x"_kr, KRProperty::propertyWithName(KRProPertyNote));
  EXPECT_EQ(single->label()->name(), "Note");
  EXPECT_EQ(Load::singleValueByValue("x"_kr, krMake<KRLabel>("l"_kr), 6)->type(), 6);
}

TEST_F(KRPersonCSVLoadTest, ReadsInTheDialectThatTheHostChooses) {
  const auto made = loader("First Name,Last Name,Notes\nAnn,Lee,\"a, b\"\nBo,Ng,\n\nCy,Orr,x\n");
  auto& csv = dynamic_cast<Load&>(*made);
  EXPECT_EQ(csv.dialect().kind, KRCSVDialect::Kind::Strict);
  csv.setDialect(*KRCSVDialect::named("rfc4180"));
  const auto run = KRLoadRun::of(csv);
  EXPECT_EQ(run->events, (Texts{"start", "number 3", "end"}));
  EXPECT_EQ(run->progresses, (std::vector<double>{50.0, 75.0, 100.0}));
  EXPECT_EQ(nameOf(*run->persons[0]), "Ann|-|Lee");
  EXPECT_EQ(singleOf(*run->persons[0], KRProPertyNote).text(), "a, b");
  EXPECT_EQ(run->persons[0]->ID(), "123");
  csv.setDialect(*KRCSVDialect::named("strict"));
  EXPECT_EQ(nameOf(*KRLoadRun::of(csv)->persons[0]), "Ann|Lee|-");
  EXPECT_FALSE(KRCSVDialect::named("excel"));
}

TEST_F(KRPersonCSVLoadTest, ReadsByTheMappingThatTheHostChooses) {
  const auto made = loader("A,B\nAnn,Lee\n");
  auto& csv = dynamic_cast<Load&>(*made);
  csv.setDialect(KRCSVDialect::rfc4180());
  KRCSVMapping mapping = KRCSVReading::open(csv.filePath(), csv.dialect())->mapping();
  ASSERT_TRUE(mapping.set("A=lastName"));
  ASSERT_TRUE(mapping.set("B=firstName"));
  csv.setMapping(mapping);
  EXPECT_EQ(nameOf(*KRLoadRun::of(csv)->persons[0]), "Lee|-|Ann");
  folder_.put("a.csv", "First Name,Last Name,Phone\nAnn,Lee,1\n");
  std::vector<std::string> notes;
  csv.setNotes([&](const KRPersonLoadNote& note) { notes.emplace_back(note.sentence.view()); });
  EXPECT_EQ(nameOf(*KRLoadRun::of(csv)->persons[0]), "Ann|-|Lee");
  EXPECT_EQ(notes.size(), 1U);
}

TEST_F(KRPersonCSVLoadTest, EndsARunOfTheOtherDialectWhenStopped) {
  const auto made = loader("Name,x\nA,\nB,\nC,\n");
  dynamic_cast<Load&>(*made).setDialect(KRCSVDialect::rfc4180());
  auto run = std::make_shared<KRLoadRun>();
  run->onPerson = [](KRPersonLoad& each) { each.stop(); };
  made->setDelegate(run);
  made->start();
  run->wait();
  EXPECT_EQ(run->persons.size(), 1U);
  EXPECT_EQ(run->events, (Texts{"start", "number 3", "end"}));
}

}  // namespace
