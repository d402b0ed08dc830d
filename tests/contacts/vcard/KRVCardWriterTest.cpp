#include "contacts/vcard/KRVCardWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include "tests/contacts/ModelSamples.h"
#include "tests/contacts/vcard/WrittenPersons.h"
#include "tests/support/KRHostPerson.h"
#include "tests/support/KRPersonSketch.h"

namespace {

constexpr KRVCardVersion kVersions[] = {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40};

std::string card(const IKRPerson& person, KRVCardVersion version) {
  return KRVCardWriter(version).card(person);
}

KRRef<ABPerson> read(std::string_view text) {
  return ABPerson::initWithVCardRepresentation(KRText(text));
}

/// A person with values of multiple properties.
struct Entries {
  KRRef<KRTempPerson> person = krMake<KRTempPerson>("id"_kr);

  Entries& add(KROrdinal property, KRValue value, KRString label = {}) {
    const KRProperty& descriptor = *KRProperty::propertyWithOrdinal(property);
    const auto stored = person->valueByProperty(&descriptor);
    auto multiple = stored ? KRRef<KRMutableMultipleValue>(static_cast<KRMutableMultipleValue*>(stored.get()))
                           : krMake<KRMutableMultipleValue>();
    multiple->addValue(krMake<KRMutableSingleValue>(
        std::move(value), label.isNothing() ? KRRef<KRLabel>() : krMake<KRLabel>(label), descriptor.subValueType()));
    person->setValue(multiple, descriptor.name());
    return *this;
  }
};

/// The lines of the card that begin so, without their line ends.
std::vector<std::string> linesOf(const std::string& card, std::string_view start) {
  std::vector<std::string> lines;
  for (size_t at = 0; at < card.size();) {
    const size_t end = card.find("\r\n", at);
    const std::string line = card.substr(at, end - at);
    if (line.starts_with(start)) lines.push_back(line);
    at = end + 2;
  }
  return lines;
}

TEST(KRVCardWriter, RandomPersonsComeBackTheSameInEachVersion) {
  KRWrittenPersons persons(1);
  for (int i = 0; i < 1500; ++i) {
    const auto person = persons.person();
    for (const KRVCardVersion version : kVersions) {
      const std::string text = card(*person, version);
      const auto back = read(text);
      ASSERT_TRUE(back) << text;
      ASSERT_EQ(krShownByReading(*back), krShownByReading(*person)) << text;
      ASSERT_EQ(krShownByValues(*back), krShownByValues(*person)) << text;
      ASSERT_EQ(krMainEntries(*back), krMainEntries(*person)) << text;
      ASSERT_EQ(back->ID(), person->ID());
      const auto image = person->imageData();
      if (image) ASSERT_EQ(back->imageData()->bytes(), image->bytes());
    }
  }
}

TEST(KRVCardWriter, NoLineIsLongerThanTheFormatWantsAndNoneCutsACharacter) {
  KRWrittenPersons persons(2);
  for (int i = 0; i < 300; ++i) {
    const auto person = persons.person();
    for (const KRVCardVersion version : kVersions) {
      const std::string text = card(*person, version);
      for (const std::string& line : linesOf(text, "")) {
        // The head of a line of version 2.1 cannot be folded.
        if (version != KRVCardVersion::V21) ASSERT_LE(line.size(), 75U) << line;
        ASSERT_TRUE(krIsWellFormed(line)) << line;
      }
    }
  }
}

TEST(KRVCardWriter, NoValueLooksLikeTheEndOfTheCard) {
  KRWrittenPersons persons(3);
  for (int i = 0; i < 300; ++i) {
    const auto person = persons.person();
    for (const KRVCardVersion version : kVersions) {
      const std::string text = card(*person, version);
      ASSERT_EQ(text.find("END:VCARD"), text.size() - 11) << text;
    }
  }
}

TEST(KRVCardWriter, WritesAPersonOfEachKindAlike) {
  const KRPersonSketch sketch{.first = "Ann"_kr, .last = "Lee"_kr, .company = "Acme"_kr, .phones = {"1"_kr, "2"_kr}};
  const auto host = krPerson<KRHostPerson>(sketch);
  const auto temporary = krPerson<KRTempPerson>(sketch);
  const auto record = krPerson<ABPerson>(sketch);
  for (const KRVCardVersion version : kVersions) {
    const std::string text = KRVCardWriter(version).card(*host, "1");
    EXPECT_EQ(KRVCardWriter(version).card(*temporary, "1"), text);
    EXPECT_EQ(KRVCardWriter(version).card(*record, "1"), text);
  }
}

TEST(KRVCardWriter, WritesASmallCardAsOneExpectsIt) {
  const auto person = krPerson<KRTempPerson>({.first = "Jörg"_kr,
                                              .last = "Lee"_kr,
                                              .note = "a, b\nc"_kr,
                                              .company = "Acme; Co"_kr,
                                              .phones = {"030 1"_kr},
                                              .emails = {"a@b.example"_kr}});
  EXPECT_EQ(card(*person, KRVCardVersion::V30),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee;Jörg;;;\r\nFN:Jörg Lee\r\nORG:Acme\\; Co\r\n"
            "TEL;TYPE=HOME:030 1\r\nEMAIL;TYPE=INTERNET;TYPE=HOME:a@b.example\r\nNOTE:a\\, b\\nc\r\nEND:VCARD\r\n");
  EXPECT_EQ(card(*person, KRVCardVersion::V40),
            "BEGIN:VCARD\r\nVERSION:4.0\r\nN:Lee;Jörg;;;\r\nFN:Jörg Lee\r\nORG:Acme\\; Co\r\n"
            "TEL;TYPE=home:030 1\r\nEMAIL;TYPE=home:a@b.example\r\nNOTE:a\\, b\\nc\r\nEND:VCARD\r\n");
  EXPECT_EQ(card(*person, KRVCardVersion::V21),
            "BEGIN:VCARD\r\nVERSION:2.1\r\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Lee;J=C3=B6rg;;;\r\n"
            "FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=B6rg Lee\r\nORG:Acme\\; Co\r\nTEL;HOME:030 1\r\n"
            "EMAIL;INTERNET;HOME:a@b.example\r\nNOTE;ENCODING=QUOTED-PRINTABLE:a, b=0D=0Ac\r\nEND:VCARD\r\n");
}

TEST(KRVCardWriter, WritesDatesWithoutAYearAsEachVersionHasThem) {
  auto person = krMake<KRTempPerson>("id"_kr);
  const KRProperty& birthday = *KRProperty::propertyWithOrdinal(KROrdinal::Birthday);
  person->setValue(krSingleValue(*KRDate::make(std::nullopt, 2, 29), birthday), &birthday);
  EXPECT_EQ(linesOf(card(*person, KRVCardVersion::V21), "BDAY").at(0), "BDAY:--02-29");
  EXPECT_EQ(linesOf(card(*person, KRVCardVersion::V30), "BDAY").at(0), "BDAY;X-APPLE-OMIT-YEAR=1604:1604-02-29");
  EXPECT_EQ(linesOf(card(*person, KRVCardVersion::V40), "BDAY").at(0), "BDAY:--0229");
}

TEST(KRVCardWriter, WritesOneAnniversaryInVersion40) {
  Entries entries;
  entries.add(KROrdinal::OtherDate, *KRDate::make(2001, 5, 6), "anniversary"_kr);
  entries.add(KROrdinal::OtherDate, *KRDate::make(2002, 5, 6), "anniversary"_kr);
  entries.add(KROrdinal::OtherDate, *KRDate::make(2003, 5, 6), "First day"_kr);
  const std::string text = card(*entries.person, KRVCardVersion::V40);
  EXPECT_EQ(linesOf(text, "ANNIVERSARY"), (std::vector<std::string>{"ANNIVERSARY:20010506"}));
  EXPECT_EQ(linesOf(text, "X-ANNIVERSARY"), (std::vector<std::string>{"X-ANNIVERSARY:20020506"}));
  EXPECT_EQ(linesOf(text, "item1."),
            (std::vector<std::string>{"item1.X-ABDATE:20030506", "item1.X-ABLabel:First day"}));
}

TEST(KRVCardWriter, WritesLabelsAsTypesWhereProgramsKnowThem) {
  Entries entries;
  entries.add(KROrdinal::Phone, krMake<KRObjectPhone>("1"_kr), "work fax"_kr);
  entries.add(KROrdinal::Phone, krMake<KRObjectPhone>("2"_kr), "Home"_kr);
  entries.add(KROrdinal::Phone, krMake<KRObjectPhone>("3"_kr), "Ferienhaus"_kr);
  entries.add(KROrdinal::SocialProfile, "https://x.example/ann"_kr, "twitter"_kr);
  const std::string text = card(*entries.person, KRVCardVersion::V30);
  EXPECT_EQ(linesOf(text, "TEL"), (std::vector<std::string>{"TEL;TYPE=WORK,FAX:1"}));
  EXPECT_EQ(linesOf(text, "item1"), (std::vector<std::string>{"item1.TEL:2", "item1.X-ABLabel:_$!<Home>!$_"}));
  EXPECT_EQ(linesOf(text, "item2"), (std::vector<std::string>{"item2.TEL:3", "item2.X-ABLabel:Ferienhaus"}));
  EXPECT_EQ(linesOf(text, "X-SOC"), (std::vector<std::string>{"X-SOCIALPROFILE;TYPE=TWITTER:https://x.example/ann"}));
}

TEST(KRVCardWriter, GivesAnOrganisationNoNameThatItDoesNotHave) {
  const auto named = krPerson<KRTempPerson>({.first = "Ann"_kr, .isOrganization = true});
  const auto companyOnly = krPerson<KRTempPerson>({.company = "Acme Inc"_kr});
  const auto nickname = krPerson<KRTempPerson>({.nickname = "Jo"_kr});
  for (const KRVCardVersion version : kVersions) {
    for (const auto& person : {named, companyOnly, nickname}) {
      EXPECT_EQ(krShownByReading(*read(card(*person, version))), krShownByReading(*person));
    }
  }
}

TEST(KRVCardWriter, LeavesOutTheIdentifierThatSharedPersonsHave) {
  const auto person = krMake<KRTempPerson>();
  EXPECT_TRUE(linesOf(card(*person, KRVCardVersion::V30), "UID").empty());
  EXPECT_EQ(linesOf(KRVCardWriter(KRVCardVersion::V30).card(*person, "new"), "UID").at(0), "UID:new");
}

TEST(KRVCardWriter, LeavesOutWhatNoCardHolds) {
  Entries entries;
  entries.add(KROrdinal::Phone, krMake<KRObjectPhone>(""_kr), "home"_kr);
  entries.add(KROrdinal::Phone, KRValue());
  entries.add(KROrdinal::Address, krMake<KRObjectAddress>(), "home"_kr);
  entries.person->setIsOrganization(false);
  entries.person->setValue(krMake<KRMutableSingleValue>(""_kr, KRRef<KRLabel>(), 0), KRProPertyNote);
  EXPECT_EQ(card(*entries.person, KRVCardVersion::V30),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;;;;\r\nFN:\r\nUID:id\r\nEND:VCARD\r\n");
}

TEST(KRVCardWriter, BringsAllLineBreaksBackAsLineFeeds) {
  const auto person = krPerson<KRTempPerson>({.note = "a\r\nb\rc\nd"_kr});
  for (const KRVCardVersion version : kVersions) {
    EXPECT_EQ(krShownByReading(*read(card(*person, version))), "note: a\\nb\\nc\\nd\n");
  }
}

TEST(KRVCardWriter, EndsTheBase64OfVersion21WithAnEmptyLine) {
  auto person = krMake<KRTempPerson>("id"_kr);
  person->setThumbnail(krMake<KRData>(std::string("\xFF\xD8\xFF") + std::string(100, 'x')));
  const std::string text = card(*person, KRVCardVersion::V21);
  EXPECT_NE(text.find("PHOTO;TYPE=JPEG;ENCODING=BASE64:\r\n /9j/"), std::string::npos) << text;
  EXPECT_NE(text.find("=\r\n\r\nUID:id"), std::string::npos) << text;
}

TEST(KRVCardWriter, SurvivesValuesOfAnyKindUnderAnyProperty) {
  ModelSamples samples(4);
  for (int i = 0; i < 2000; ++i) {
    HostPerson person;
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (samples.chance(3)) person.setValue(samples.anyStored(), property->name());
    }
    for (const KRVCardVersion version : kVersions) ASSERT_TRUE(read(card(person, version)));
  }
}

/// What a card of one version says, written in another.
std::vector<std::string> converted(const std::vector<std::string>& lines, std::string_view from, KRVCardVersion to,
                                   std::string_view start) {
  return linesOf(card(*read(krCard(lines, from)), to), start);
}

TEST(KRVCardWriter, CarriesLinesThatTheModelDoesNotShow) {
  using Lines = std::vector<std::string>;
  const Lines lines = {"N:Lee;;;;", "GEO:1;2",  "X-OWN;A=b;TYPE=HOME:a\\nb\\, c",       "x.X-DATA:d", "x.X-ABLabel:Hut",
                       "NOTE:one",  "NOTE:two", "KEY;ENCODING=b;TYPE=PGP:QUJD\r\n REVG"};
  const auto in = [&](KRVCardVersion version, const char* start) { return converted(lines, "3.0", version, start); };
  EXPECT_EQ(in(KRVCardVersion::V40, "GEO"), (Lines{"GEO:1;2"}));
  EXPECT_EQ(in(KRVCardVersion::V40, "X-OWN"), (Lines{"X-OWN;A=b;TYPE=HOME:a\\nb\\, c"}));
  EXPECT_EQ(in(KRVCardVersion::V21, "X-OWN"), (Lines{"X-OWN;A=b;TYPE=HOME;ENCODING=QUOTED-PRINTABLE:a=0D=0Ab\\, c"}));
  EXPECT_EQ(in(KRVCardVersion::V40, "x."), (Lines{"x.X-DATA:d", "x.X-ABLabel:Hut"}));
  EXPECT_EQ(in(KRVCardVersion::V40, "NOTE"), (Lines{"NOTE:one", "NOTE:two"}));
  EXPECT_EQ(in(KRVCardVersion::V40, "KEY"), (Lines{"KEY:data:application/pgp;base64,QUJDREVG"}));
  EXPECT_EQ(in(KRVCardVersion::V30, "KEY"), (Lines{"KEY;TYPE=PGP;ENCODING=b:QUJDREVG"}));
  EXPECT_EQ(converted({"N:x", "LOGO:data:image/gif;base64,QUJD"}, "4.0", KRVCardVersion::V30, "LOGO"),
            (Lines{"LOGO;TYPE=gif;ENCODING=b:QUJD"}));
}

TEST(KRVCardWriter, CarriesParametersAndPartsOfShownLines) {
  using Lines = std::vector<std::string>;
  const Lines lines = {"N;SORT-AS=\"Lee\":Lee;Ann;;;;x", "FN:Ann \"Bee\" Lee", "ORG:Acme;Sales;West",
                       "ADR;TYPE=HOME;LABEL=\"a, b\";LANGUAGE=en:;;s;c;;;;more"};
  EXPECT_EQ(converted(lines, "4.0", KRVCardVersion::V40, "N"), (Lines{"N;SORT-AS=\"Lee\":Lee;Ann;;;;x"}));
  EXPECT_EQ(converted(lines, "4.0", KRVCardVersion::V30, "N"), (Lines{"N:Lee;Ann;;;;x"}));
  EXPECT_EQ(converted(lines, "4.0", KRVCardVersion::V30, "FN"), (Lines{"FN:Ann \"Bee\" Lee"}));
  EXPECT_EQ(converted(lines, "4.0", KRVCardVersion::V30, "ORG"), (Lines{"ORG:Acme;Sales;West"}));
  EXPECT_EQ(converted(lines, "4.0", KRVCardVersion::V30, "ADR"),
            (Lines{"ADR;TYPE=HOME;LABEL=\"a, b\";LANGUAGE=en:;;s;c;;;;more"}));
}

TEST(KRVCardWriter, RandomCardsShowTheSameInEachVersion) {
  std::mt19937 random(8);
  for (int i = 0; i < 3000; ++i) {
    const std::string text = krRandomCard(random);
    const KRCardsRead cards = krReadCards(text);
    if (cards.count() != 1) continue;
    const ABPerson& person = cards.person(0);
    for (const KRVCardVersion version : kVersions) {
      const std::string written = card(person, version);
      const auto back = read(written);
      ASSERT_TRUE(back) << text << "----\n" << written;
      ASSERT_EQ(krShownByReading(*back), krShownByReading(person)) << text << "----\n" << written;
      ASSERT_EQ(krMainEntries(*back), krMainEntries(person)) << text << "----\n" << written;
    }
  }
}

/// The least processor time that a card of so many labelled phones takes, in groups of their own, to be written anew.
double secondsToWrite(int count) {
  std::vector<std::string> lines{"N:Lee;Ann;;;"};
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    lines.push_back("item" + number + ".TEL:" + number);
    lines.push_back("item" + number + ".X-ABLabel:Desk " + number);
  }
  const auto person = read(krCard(lines));
  double least = 1e9;
  for (int tries = 0; tries < 3; ++tries) {
    const std::clock_t start = std::clock();
    EXPECT_EQ(linesOf(card(*person, KRVCardVersion::V40), "item").size(), 2 * static_cast<size_t>(count));
    least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return least;
}

TEST(KRVCardWriter, ManyValuesOfOneContactTakeTimeInStepWithTheirNumber) {
  // Sixteen times as many: with the line of each value looked for among all lines it would be 256 times the time.
  EXPECT_LT(secondsToWrite(32'000), 100 * std::max(secondsToWrite(2'000), 1e-4));
}

}  // namespace
