#include "contacts/vcard/KRVCardRewriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "tests/contacts/vcard/WrittenPersons.h"

namespace {

KRRef<ABPerson> read(std::string_view text) {
  return ABPerson::initWithVCardRepresentation(KRText(text));
}

KRRef<ABPerson> readLines(const std::vector<std::string>& lines, std::string_view version = "3.0") {
  return read(krCard(lines, version));
}

void setText(ABPerson& person, KROrdinal property, const KRString& text) {
  const KRProperty& descriptor = *KRProperty::propertyWithOrdinal(property);
  person.setValue(text.isNothing() ? KRRef<KRMutableSingleValue>() : krSingleValue(text, descriptor), &descriptor);
}

/// A copy of the multiple value, to be changed and set.
KRRef<KRMutableMultipleValue> entries(const ABPerson& person, KROrdinal property) {
  const auto stored = person.valueByProperty(KRProperty::propertyWithOrdinal(property));
  const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
  return multiple != nullptr ? multiple->mutableCopy() : krMake<KRMutableMultipleValue>();
}
void set(ABPerson& person, KROrdinal property, const KRRef<KRMutableMultipleValue>& value) {
  person.setValue(value, KRProperty::propertyWithOrdinal(property));
}
KRRef<KRMutableSingleValue> phone(const char* number, const char* label = nullptr) {
  return krMake<KRMutableSingleValue>(krMake<KRObjectPhone>(KRString(number)),
                                      label != nullptr ? krMake<KRLabel>(KRString(label)) : KRRef<KRLabel>(),
                                      KRValueType::Phone);
}
/// The multiple value with its entry at `index` replaced.
void replaceEntry(ABPerson& person, KROrdinal property, size_t index, const KRRef<KRMutableSingleValue>& entry) {
  const auto before = entries(person, property);
  auto after = krMake<KRMutableMultipleValue>();
  for (size_t i = 0; i < before->count(); ++i) {
    after->addValue(i == index ? entry : KRRef<KRMutableSingleValue>(before->valueAtIndex(i)));
  }
  if (const auto main = before->mainIndex()) after->setMainIndex(*main);
  set(person, property, after);
}

std::vector<std::string> bodyOf(const std::string& card) {
  std::vector<std::string> lines;
  for (size_t at = 0; at < card.size();) {
    const size_t end = card.find("\r\n", at);
    lines.push_back(card.substr(at, end - at));
    at = end + 2;
  }
  return {lines.begin() + 2, lines.end() - 1};
}

std::vector<std::string> rewritten(const ABPerson& person) {
  return bodyOf(KRVCardRewriter::rewritten(person));
}

using Lines = std::vector<std::string>;

TEST(KRVCardRewriter, LeavesACardAloneThatDidNotChange) {
  const std::string card = krRichCard("3.0");
  const auto person = read(card);
  EXPECT_TRUE(KRVCardRewriter::edits(*person).empty());
  EXPECT_EQ(KRVCardRewriter::rewritten(*person), card);
}

TEST(KRVCardRewriter, ChangesTheLineOfAOneTextPropertyAlone) {
  const auto person = readLines({"N:Lee;Ann;;;", "x.note;LANGUAGE=en;CHARSET=UTF-8:a", "X-OWN: b", "TITLE:c"});
  setText(*person, KROrdinal::Note, "new, text"_kr);
  EXPECT_EQ(rewritten(*person), (Lines{"N:Lee;Ann;;;", "x.note;LANGUAGE=en:new\\, text", "X-OWN: b", "TITLE:c"}));
}

TEST(KRVCardRewriter, TakesAllLinesOfAClearedPropertyAway) {
  const auto person = readLines({"NOTE:one", "TITLE:c", "NOTE:two"});
  setText(*person, KROrdinal::Note, {});
  EXPECT_EQ(rewritten(*person), (Lines{"TITLE:c"}));
}

TEST(KRVCardRewriter, PutsANewPropertyBeforeTheEnd) {
  const auto person = readLines({"N:Lee;;;;", "TEL:1"});
  setText(*person, KROrdinal::JobTitle, "Boss"_kr);
  EXPECT_EQ(rewritten(*person), (Lines{"N:Lee;;;;", "TEL:1", "TITLE:Boss"}));
}

TEST(KRVCardRewriter, KeepsLineEndsAndFoldsOfOtherLines) {
  const auto person = read("BEGIN:VCARD\nVERSION:3.0\nN:Lee\n ;Ann\nNOTE:a\n\tb\r\nTEL:1\nEND:VCARD");
  setText(*person, KROrdinal::JobTitle, "Boss"_kr);
  EXPECT_EQ(KRVCardRewriter::rewritten(*person),
            "BEGIN:VCARD\nVERSION:3.0\nN:Lee\n ;Ann\nNOTE:a\n\tb\r\nTEL:1\nTITLE:Boss\nEND:VCARD");
}

TEST(KRVCardRewriter, WritesLoneCarriageReturnsWhereTheCardHasThem) {
  const auto person = read("BEGIN:VCARD\rVERSION:3.0\rN:Lee;;;;\rNOTE:a\rEND:VCARD\r");
  setText(*person, KROrdinal::Note, "b"_kr);
  EXPECT_EQ(KRVCardRewriter::rewritten(*person), "BEGIN:VCARD\rVERSION:3.0\rN:Lee;;;;\rNOTE:b\rEND:VCARD\r");
}

TEST(KRVCardRewriter, KeepsTheLinesOfEntriesThatStay) {
  const auto person = readLines({"tel;type=Home:1", "TEL;TYPE=CELL:2", "X-Y:z", "item1.TEL:3", "item1.X-ABLabel:Hut"});
  auto phones = entries(*person, KROrdinal::Phone);
  phones->removeValueAtIndex(1);
  phones->addValue(phone("4", "work"));
  set(*person, KROrdinal::Phone, phones);
  EXPECT_EQ(rewritten(*person),
            (Lines{"tel;type=Home:1", "X-Y:z", "item1.TEL:3", "item1.X-ABLabel:Hut", "TEL;TYPE=WORK:4"}));
}

TEST(KRVCardRewriter, TakesTheLabelOfARemovedEntryAway) {
  const auto person = readLines({"item1.TEL:1", "item1.X-ABLabel:Hut", "item2.TEL:2", "item2.X-ABLabel:Boat"});
  auto phones = entries(*person, KROrdinal::Phone);
  phones->removeValueAtIndex(0);
  set(*person, KROrdinal::Phone, phones);
  EXPECT_EQ(rewritten(*person), (Lines{"item2.TEL:2", "item2.X-ABLabel:Boat"}));
}

TEST(KRVCardRewriter, LeavesTheLabelOfAGroupThatOthersAreIn) {
  const auto person = readLines({"item1.TEL:1", "item1.X-OWN:x", "item1.X-ABLabel:Hut"});
  set(*person, KROrdinal::Phone, krMake<KRMutableMultipleValue>());
  EXPECT_EQ(rewritten(*person), (Lines{"item1.X-OWN:x", "item1.X-ABLabel:Hut"}));
}

TEST(KRVCardRewriter, ChangesTheValueOfAnEntryOnItsOwnLine) {
  const auto person =
      readLines({"item1.TEL;X-P=1;TYPE=\"HOME,PREF\":1", "item1.X-ABLabel:Hut", "TEL;TYPE=HOME,VOICE:2"});
  replaceEntry(*person, KROrdinal::Phone, 0, phone("+1", "Hut"));
  EXPECT_EQ(rewritten(*person),
            (Lines{"item1.TEL;TYPE=\"HOME\";TYPE=PREF;X-P=1:+1", "item1.X-ABLabel:Hut", "TEL;TYPE=HOME,VOICE:2"}));
  const auto other = readLines({"TEL;TYPE=HOME,VOICE:2", "TEL:3"});
  replaceEntry(*other, KROrdinal::Phone, 0, phone("4", "home"));
  EXPECT_EQ(rewritten(*other), (Lines{"TEL;TYPE=HOME,VOICE:4", "TEL:3"}));
}

TEST(KRVCardRewriter, ChangesTheLabelOfAnEntry) {
  const auto person = readLines({"item1.TEL:1", "item1.X-ABLabel:Hut", "X-A:b", "TEL;TYPE=HOME:2"});
  replaceEntry(*person, KROrdinal::Phone, 0, phone("1", "work"));
  replaceEntry(*person, KROrdinal::Phone, 1, phone("2", "Boat"));
  EXPECT_EQ(rewritten(*person), (Lines{"item1.TEL;TYPE=WORK:1", "X-A:b", "item2.TEL:2", "item2.X-ABLabel:Boat"}));
}

TEST(KRVCardRewriter, MovesAnEntryOutOfASharedGroupWhenItsLabelChanges) {
  const auto person = readLines({"item1.TEL:1", "item1.EMAIL:a@b", "item1.X-ABLabel:Hut"});
  replaceEntry(*person, KROrdinal::Phone, 0, phone("1", "Boat"));
  EXPECT_EQ(rewritten(*person),
            (Lines{"item2.TEL:1", "item2.X-ABLabel:Boat", "item1.EMAIL:a@b", "item1.X-ABLabel:Hut"}));
}

TEST(KRVCardRewriter, KeepsPartsThatTheModelDoesNotShow) {
  const auto person = readLines({"ORG:Acme;Sales;West;Four", "N:Lee;Ann;;;;x;y"});
  setText(*person, KROrdinal::Company, "Other"_kr);
  setText(*person, KROrdinal::Title, "Dr."_kr);
  EXPECT_EQ(rewritten(*person), (Lines{"ORG:Other;Sales;West;Four", "N:Lee;Ann;;Dr.;;x;y"}));
}

TEST(KRVCardRewriter, WritesTheShownNameAgainWithTheName) {
  const auto person = readLines({"FN:Ann Lee", "N:Lee;Ann;;;", "SORT-STRING:Lee"});
  person->setRecordValue("Bea"_kr, kABFirstNameProperty);
  EXPECT_EQ(rewritten(*person), (Lines{"FN:Bea Lee", "N:Lee;Bea;;;", "SORT-STRING:Lee"}));
}

TEST(KRVCardRewriter, GivesANameItsOwnLineBeforeTheShownOneChanges) {
  const auto person = readLines({"FN:Ann Lee", "X-ABShowAs:COMPANY"});
  setText(*person, KROrdinal::Title, "Dr."_kr);
  EXPECT_EQ(krShownByReading(*read(KRVCardRewriter::rewritten(*person))), krShownByReading(*person));
  const auto plain = readLines({"FN:Ann Lee"});
  setText(*plain, KROrdinal::Company, "Ann Lee"_kr);
  EXPECT_EQ(krShownByReading(*read(KRVCardRewriter::rewritten(*plain))), krShownByReading(*plain));
  plain->setIsOrganization(true);
  EXPECT_EQ(krShownByReading(*read(KRVCardRewriter::rewritten(*plain))), krShownByReading(*plain));
}

TEST(KRVCardRewriter, WritesInTheVersionOfTheCard) {
  const auto old = readLines({"N;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:M=C3=BCller;Eva"}, "2.1");
  setText(*old, KROrdinal::Note, "ä"_kr);
  EXPECT_EQ(rewritten(*old), (Lines{"N;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:M=C3=BCller;Eva",
                                    "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=A4"}));
  const auto current = readLines({"BDAY:19800229", "RELATED;TYPE=friend;VALUE=text:Bea"}, "4.0");
  const KRProperty& birthday = *KRProperty::propertyWithOrdinal(KROrdinal::Birthday);
  current->setValue(krSingleValue(*KRDate::make(std::nullopt, 3, 1), birthday), &birthday);
  EXPECT_EQ(rewritten(*current), (Lines{"BDAY:--0301", "RELATED;TYPE=friend;VALUE=text:Bea"}));
}

TEST(KRVCardRewriter, WritesInTheCharacterSetOfTheFileWhatThatHolds) {
  const auto readLegacy = [](const char* note) {
    const std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:M\xFCller;J\xF6rg;;;\r\nNOTE:a\r\nEND:VCARD\r\n";
    const KRCardsRead cards = krReadCards(text);
    auto person = krMake<ABPerson>(cards.person(0).record());
    setText(*person, KROrdinal::Note, KRString(note));
    return person;
  };
  EXPECT_EQ(bodyOf(KRVCardRewriter::rewritten(*readLegacy("\xC3\xA4"), "windows-1252")),
            (Lines{"N:M\xFCller;J\xF6rg;;;", "NOTE:\xE4"}));
  EXPECT_EQ(bodyOf(KRVCardRewriter::rewritten(*readLegacy("\xE7\x8E\x8B"), "windows-1252")),
            (Lines{"N:M\xFCller;J\xF6rg;;;", "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=E7=8E=8B"}));
  // In the character set of the file these bytes would look like another text in UTF-8.
  EXPECT_EQ(bodyOf(KRVCardRewriter::rewritten(*readLegacy("\xC3\x83\xC2\xA4"), "windows-1252")),
            (Lines{"N:M\xFCller;J\xF6rg;;;", "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=83=C2=A4"}));
}

TEST(KRVCardRewriter, MakesAnotherEntryTheMainOne) {
  const auto withMain = [](const std::vector<std::string>& lines, size_t main) {
    const auto person = readLines(lines);
    auto phones = entries(*person, KROrdinal::Phone);
    phones->setMainIndex(main);
    set(*person, KROrdinal::Phone, phones);
    return rewritten(*person);
  };
  EXPECT_EQ(withMain({"TEL;TYPE=PREF:1", "TEL:2", "TEL;PREF=2:3"}, 1),
            (Lines{"TEL:1", "TEL;TYPE=PREF:2", "TEL;PREF=2:3"}));
  // A rank that would win now goes.
  EXPECT_EQ(withMain({"TEL;PREF=1:1", "X-A:b", "TEL;PREF=1;X-P=1:2", "TEL:3"}, 2),
            (Lines{"TEL:1", "X-A:b", "TEL;X-P=1:2", "TEL;TYPE=PREF:3"}));
}

TEST(KRVCardRewriter, KeepsLinesOfTagsThatStillSayTheSame) {
  const auto person = readLines({"CATEGORIES:a,b", "X-Y:z", "CATEGORIES:c,d"});
  person->setTags({"a"_kr, "b"_kr, "d"_kr, "e"_kr});
  EXPECT_EQ(rewritten(*person), (Lines{"CATEGORIES:a,b", "X-Y:z", "CATEGORIES:d,e"}));
  person->setTags({"a"_kr, "b"_kr});
  EXPECT_EQ(rewritten(*person), (Lines{"CATEGORIES:a,b", "X-Y:z"}));
  person->setTags({"a"_kr, "b"_kr, "c"_kr, "d"_kr, "e"_kr});
  EXPECT_EQ(rewritten(*person), (Lines{"CATEGORIES:a,b", "X-Y:z", "CATEGORIES:c,d", "CATEGORIES:e"}));
}

TEST(KRVCardRewriter, ReplacesAPictureWithItsEmptyLine) {
  const auto person = read(
      "BEGIN:VCARD\r\nVERSION:2.1\r\nPHOTO;ENCODING=BASE64;TYPE=PNG:\r\n iVBORw0KGgo=\r\n\r\nTEL:1\r\nEND:VCARD\r\n");
  person->setThumbnail({});
  EXPECT_EQ(rewritten(*person), (Lines{"TEL:1"}));
  person->setThumbnail(krMake<KRData>("GIF8"));
  EXPECT_EQ(rewritten(*person), (Lines{"PHOTO;TYPE=GIF;ENCODING=BASE64:", " R0lGOA==", "", "TEL:1"}));
}

TEST(KRVCardRewriter, LeavesCardsInsideTheCardAlone) {
  const auto person =
      readLines({"NOTE:a", "AGENT:", "BEGIN:VCARD", "VERSION:2.1", "NOTE:x", "END:VCARD", "TEL:1"}, "2.1");
  setText(*person, KROrdinal::Note, "b"_kr);
  EXPECT_EQ(rewritten(*person),
            (Lines{"NOTE:b", "AGENT:", "BEGIN:VCARD", "VERSION:2.1", "NOTE:x", "END:VCARD", "TEL:1"}));
}

/// Whether the parts stand in the text in this order, none over another.
bool standInOrder(const std::vector<std::string>& parts, const std::string& text) {
  size_t at = 0;
  for (const std::string& part : parts) {
    at = text.find(part, at);
    if (at == std::string::npos) return false;
    at += part.size();
  }
  return true;
}

/// Makes random changes to a person, of all kinds that fixes, merges and people make.
void changeAtRandom(ABPerson& person, KRWrittenPersons& random) {
  for (size_t count = 1 + random.below(3); count > 0; --count) {
    const auto& all = KRProperty::StandardPropertyArray();
    const KRProperty& property = *all[random.below(all.size())];
    if (property.isMultiple() && !random.chance(4)) {
      auto multiple = entries(person, property.ordinal());
      if (multiple->count() > 0 && random.chance(2)) multiple->removeValueAtIndex(random.below(multiple->count()));
      if (random.chance(2)) {
        const auto more = random.stored(property);
        multiple->addValue(
            KRRef<KRMutableSingleValue>(static_cast<const KRMutableMultipleValue&>(*more).valueAtIndex(0)));
      }
      if (random.chance(3) && multiple->count() > 0) multiple->setMainIndex(random.below(multiple->count()));
      set(person, property.ordinal(), multiple);
    } else if (random.chance(4)) {
      person.setValue(KRRef<KRStoredValue>(), &property);
    } else {
      person.setValue(random.stored(property), &property);
    }
  }
}

TEST(KRVCardRewriter, RandomChangesComeBackAndLeaveAllOtherLinesAlone) {
  KRWrittenPersons random(5);
  std::mt19937 cards(6);
  int tried = 0;
  for (int i = 0; i < 6000; ++i) {
    std::string card = krRandomCard(cards);
    if (i % 4 == 0) card = KRVCardWriter(static_cast<KRVCardVersion>(i / 4 % 3)).card(*random.person());
    if (i % 40 == 3) card = krRichCard(i % 80 == 3 ? "3.0" : "4.0");
    const auto person = krIsWellFormed(card) ? read(card) : KRRef<ABPerson>();
    if (!person) continue;
    ++tried;
    changeAtRandom(*person, random);
    const std::string after = KRVCardRewriter::rewritten(*person);
    const auto back = read(after);
    ASSERT_TRUE(back) << card << "----\n" << after;
    ASSERT_EQ(krShownByReading(*back), krShownByReading(*person)) << card << "----\n" << after;
    ASSERT_EQ(krMainEntries(*back), krMainEntries(*person)) << card << "----\n" << after;
    std::vector<std::string> kept;
    const KRVCardOutline outline(card);
    for (const KRVCardOutline::Line& line : outline.lines()) {
      const bool isChanged = std::any_of(line.made.begin(), line.made.end(), [&](const KRVCardOutline::Made& made) {
        return made.what >= kKROrdinalCount || person->isChanged(static_cast<KROrdinal>(made.what));
      });
      if (line.meaning == KRVCardMeaning::Unknown ||
          (!line.made.empty() && !isChanged && line.meaning != KRVCardMeaning::Name &&
           line.meaning != KRVCardMeaning::Organisation)) {
        kept.push_back(card.substr(line.offset, line.size));
      }
    }
    ASSERT_TRUE(standInOrder(kept, after)) << card << "----\n" << after;
  }
  EXPECT_GT(tried, 2000);
}

}  // namespace
