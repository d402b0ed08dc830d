#include "import/KRCSVWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "tests/support/KRCSVTable.h"
#include "tests/support/KRPersonText.h"
#include "tests/support/KRTestFolder.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string bytesOf(const std::vector<KRRef<IKRPerson>>& persons, const KRCSVWriter::Options& options = {}) {
  KRCSVWriter writer(options);
  for (const auto& person : persons) writer.measure(*person);
  std::string bytes;
  writer.begin(bytes);
  for (const auto& person : persons) writer.append(*person, bytes);
  return bytes;
}

KRRef<IKRPerson> noted(const char* note) {
  auto person = krMake<KRTempPerson>();
  person->setValue(krSingleValue(KRString(note), *KRProperty::propertyWithName(KRProPertyNote)), KRProPertyNote);
  return person;
}

KRRef<IKRPerson> card(const char* lines) {
  return ABPerson::initWithVCardRepresentation(
      KRString(std::string("BEGIN:VCARD\r\nVERSION:3.0\r\n") + lines + "\r\nEND:VCARD\r\n"));
}

TEST(KRCSVWriter, GuardsCellsThatASpreadsheetWouldRun) {
  const struct {
    const char* note;
    const char* cell;
  } kRows[] = {
      {"=1+1", "'=1+1"},         {"+49 171", "'+49 171"}, {"-5", "'-5"},
      {"@SUM(A1)", "'@SUM(A1)"}, {"'quoted", "''quoted"}, {"\tx", "\"'\tx\""},
      {"\rx", "\"'\rx\""},       {"a=b", "a=b"},          {"", "\"\""},
      {"a,b", "\"a,b\""},        {"a\"b", "\"a\"\"b\""},  {"a\nb", "\"a\nb\""},
      {"=a,b", "\"'=a,b\""},     {" x", "\" x\""},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(bytesOf({noted(row.note)}),
              "First Name,Last Name,Notes,KRAddressBookManagerSDK 1\r\n,," + std::string(row.cell) + ",\r\n");
    const auto back = KRCSVPersons::of(bytesOf({noted(row.note)}));
    ASSERT_EQ(back.persons.size(), 1U);
    EXPECT_EQ(krPersonText(*back.persons[0]), "note: '" + std::string(row.note) + "'\n");
  }
}

TEST(KRCSVWriter, LeavesCellsAloneWhenTold) {
  KRCSVWriter::Options options;
  options.hasRawCells = true;
  const std::string bytes = bytesOf({noted("=1+1"), noted("'x")}, options);
  EXPECT_THAT(bytes, HasSubstr(",,=1+1,\r\n"));
  const auto back = KRCSVPersons::of(bytes);
  EXPECT_EQ(krPersonText(*back.persons.at(0)), "note: '=1+1'\n");
  EXPECT_EQ(krPersonText(*back.persons.at(1)), "note: ''x'\n");
  // The same switch on the way in: a guarded file as it stands.
  KRCSVDialect raw = KRCSVDialect::rfc4180();
  raw.hasRawCells = true;
  EXPECT_EQ(krPersonText(*KRCSVPersons::of(krCSVReading(bytesOf({noted("=1")}), raw)).persons.at(0)), "note: ''=1'\n");
}

TEST(KRCSVWriter, TakesNoApostropheOffTheFilesOfOthers) {
  EXPECT_EQ(krPersonText(*KRCSVPersons::of("Name,Notes\nAnn,'=1\n").persons.at(0)), "name: 'Ann'--\nnote: ''=1'\n");
}

TEST(KRCSVWriter, WritesPairsOfColumnsForEachValue) {
  const std::string bytes =
      bytesOf({card("N:Lee;Ann;;;\r\nTEL;TYPE=HOME:1\r\nTEL;TYPE=CELL:+2\r\nEMAIL:a@x.y"), card("N:Ng;;;;")});
  EXPECT_THAT(
      bytes,
      StartsWith("First Name,Last Name,E-mail 1 - Label,E-mail 1 - Value,Phone 1 - Label,Phone 1 - Value,Phone 2 - "
                 "Label,Phone 2 - Value,KRAddressBookManagerSDK 1\r\n"));
  EXPECT_THAT(bytes, HasSubstr("Ann,Lee,,a@x.y,home,1,mobile,'+2,\r\n"));
  EXPECT_THAT(bytes, EndsWith(",Ng,,,,,,,\r\n"));
}

TEST(KRCSVWriter, ComesBackFromCards) {
  const std::vector<KRRef<IKRPerson>> persons = {
      card("N:Lee;Ann;M.;Dr.;Jr.\r\nNICKNAME:Annie\r\nORG:Acme, Inc.;R&D\r\nTITLE:Head\r\nROLE:Boss\r\nBDAY:--0302\r\n"
           "NOTE:one\\ntwo \\, three\r\nCATEGORIES:a,b c\r\nURL:http://x.y\r\nPHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgo="),
      card("FN:Acme\r\nORG:Acme\r\nX-ABSHOWAS:COMPANY\r\nADR;TYPE=WORK:PO 1;Floor 2;1 Elm St\\nRear;Leeds;;LS1;UK\r\n"
           "ADR:;;;York;;;\r\nIMPP:xmpp:ann@x.y\r\nX-SOCIALPROFILE;TYPE=x:http://x/ann\r\nX-ANNIVERSARY:2001-02-03"),
      card("N:;;;;\r\nTEL;TYPE=HOME:1\r\nTEL;TYPE=PREF:2\r\nRELATED;TYPE=spouse;VALUE=text:Bo"),
      krMake<KRTempPerson>(),
  };
  const auto back = KRCSVPersons::of(bytesOf(persons));
  ASSERT_EQ(back.persons.size(), persons.size());
  for (size_t i = 0; i < persons.size(); ++i) EXPECT_EQ(krPersonText(*back.persons[i]), krPersonText(*persons[i]));
  EXPECT_EQ(back.persons[2]->mainPhone()->phoneNumber(), persons[2]->mainPhone()->phoneNumber());
  EXPECT_TRUE(back.notes.empty());
}

TEST(KRCSVWriter, LeavesPicturesOutWhenTold) {
  KRCSVWriter::Options options;
  options.hasPictures = false;
  const auto person = card("N:Lee;;;;\r\nPHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgo=");
  EXPECT_THAT(bytesOf({person}), HasSubstr("Photo"));
  EXPECT_THAT(bytesOf({person}, options), testing::Not(HasSubstr("Photo")));
}

TEST(KRCSVWriter, PutsAFileAtThePathWholeOrNotAtAll) {
  const KRTestFolder folder;
  KRPersonList persons;
  persons.append(noted("x").get());
  const KRString path(folder.at("out.csv"));
  ASSERT_TRUE(KRCSVWriter::write(persons, path, {}));
  EXPECT_EQ(folder.content("out.csv"), KRCSVWriter::bytes(persons));
  EXPECT_EQ(KRCSVWriter::write(persons, "/nowhere/out.csv", {}).error().code, KRErrorCode::NotFound);
}

/// Persons of random values, odd ones among them.
class Random {
 public:
  explicit Random(unsigned seed) : random_(seed) {}

  KRRef<KRTempPerson> person() {
    auto person = krMake<KRTempPerson>();
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (chance(2)) continue;
      if (property->isMultiple()) {
        auto values = krMake<KRMutableMultipleValue>();
        for (size_t left = 1 + below(3); left > 0; --left) {
          values->addValue(krMake<KRMutableSingleValue>(entry(*property), label(), property->subValueType()));
        }
        if (chance(3)) values->setMainIndex(below(3));
        person->setValue(values, property->name());
      } else if (KRValue value = single(*property); !value.isNothing()) {
        person->setValue(krSingleValue(std::move(value), *property), property->name());
      }
    }
    return person;
  }

 private:
  size_t below(size_t count) { return random_() % count; }
  bool chance(size_t of) { return below(of) == 0; }
  KRString text() {
    constexpr std::string_view kPieces[] = {
        "a",  "Ä", "'",   "=",     "+",   "-",        "@",     "\t",    "\r",   "\n",   ",",  ";",
        "\"", " ", ":::", " ::: ", "\\n", "\xC2\xA0", "sep=;", "1/2/3", "日本", "E+11", "* ", "4.9"};
    std::string made;
    for (size_t left = below(4); left > 0; --left) made += kPieces[below(std::size(kPieces))];
    return KRString(made);
  }
  KRRef<KRLabel> label() { return chance(3) ? KRRef<KRLabel>() : krMake<KRLabel>(text()); }
  KRDate date() {
    const bool hasYear = !chance(3);
    return *KRDate::make(hasYear ? std::optional(static_cast<int>(1700 + below(400))) : std::nullopt,
                         static_cast<int>(1 + below(12)), static_cast<int>(1 + below(28)));
  }
  KRValue single(const KRProperty& property) {
    switch (property.valueType()) {
      case KRValueType::PersonName:
        // One part at least: a name of no parts is no name.
        return krMake<KRObjectPersonName>(text(), chance(2) ? text() : KRString(), chance(2) ? text() : KRString());
      case KRValueType::Date:
        return date();
      case KRValueType::Data:
        return krMake<KRData>("\x89PNG\r\n" + std::to_string(below(1000)));
      case KRValueType::TextList: {
        auto list = krMake<KRValueList>();
        for (size_t left = 1 + below(3); left > 0; --left) list->values().emplace_back(chance(2) ? "a"_kr : text());
        return list;
      }
      default:
        return text();
    }
  }
  KRValue entry(const KRProperty& property) {
    switch (property.subValueType()) {
      case KRValueType::Phone:
        return krMake<KRObjectPhone>(text());
      case KRValueType::Email:
        return krMake<KRObjectEmail>(text());
      case KRValueType::Date:
        return date();
      case KRValueType::InstantMessage:
        return krMake<KRObjectInstantMessage>(
            text(), chance(2) ? nullptr : KRInstantMessageServer::serverWithName(chance(2) ? "xmpp" : "own server"));
      case KRValueType::Address: {
        auto address = krMake<KRObjectAddress>();
        address->setStringValue("x"_kr, kKRAddressFieldNames[below(kKRAddressFieldCount)]);
        for (const KRString& field : kKRAddressFieldNames) {
          if (chance(2)) address->setStringValue(text(), field);
        }
        if (address->stringValue("city").isNothing()) address->setStringValue("Leeds"_kr, "city"_kr);
        if (chance(2)) address->setCountryCode("DE"_kr);
        return address;
      }
      default:
        return text();
    }
  }

  std::mt19937 random_;
};

TEST(KRCSVWriter, ComesBackAsTheSameContactsWhateverTheyHold) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    Random random(seed);
    std::vector<KRRef<IKRPerson>> persons;
    for (unsigned count = seed % 5 + 1; count > 0; --count) persons.push_back(random.person());
    KRCSVWriter::Options options;
    options.hasRawCells = seed % 2 == 0;
    const std::string bytes = bytesOf(persons, options);
    const auto back = KRCSVPersons::of(bytes);
    ASSERT_EQ(back.persons.size(), persons.size()) << "seed " << seed << "\n" << bytes;
    for (size_t i = 0; i < persons.size(); ++i) {
      ASSERT_EQ(krPersonText(*back.persons[i]), krPersonText(*persons[i])) << "seed " << seed << "\n" << bytes;
      ASSERT_TRUE(krEqualObjects(back.persons[i]->mainPhone().get(), persons[i]->mainPhone().get())) << bytes;
      ASSERT_TRUE(krEqualObjects(back.persons[i]->mainEmail().get(), persons[i]->mainEmail().get())) << bytes;
    }
    // No cell begins as a formula does.
    if (options.hasRawCells) continue;
    KRCSVSplitter splitter(KRCSVMarks{}, [](const KRCSVRow& row) {
      for (size_t i = 0; i < row.count(); ++i) {
        const std::string_view cell = row.view(i);
        EXPECT_TRUE(cell.empty() || std::string_view("=+-@\t\r").find(cell.front()) == std::string_view::npos) << cell;
      }
      return true;
    });
    splitter.feed(bytes);
    splitter.finish();
  }
}

}  // namespace
