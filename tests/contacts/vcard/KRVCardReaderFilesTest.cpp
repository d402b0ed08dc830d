#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "contacts/vcard/KRVCardReader.h"
#include "tests/contacts/vcard/VCardSamples.h"

// Whole files: where cards begin and end, what is told about the rest, and what broken input does.

namespace {

std::string cardNamed(const std::string& name) {
  return krCard({"N:" + name});
}

std::vector<std::string> namesIn(std::string_view bytes) {
  const KRCardsRead read = krReadCards(bytes);
  std::vector<std::string> names;
  for (size_t i = 0; i < read.count(); ++i) names.emplace_back(read.person(i).displayName().view());
  return names;
}

using Names = std::vector<std::string>;

std::string withLineEnds(std::string text, const std::string& lineEnd) {
  std::string result;
  for (const char c : text) {
    if (c == '\n') result += lineEnd;
    if (c != '\n' && c != '\r') result += c;
  }
  return result;
}

std::string utf16(std::string_view text, bool isBig, bool hasMark) {
  std::u16string units = hasMark ? u"\uFEFF" : u"";
  for (size_t i = 0; i < text.size();) units.push_back(static_cast<char16_t>(krNextCodePoint(text, i)));
  std::string bytes;
  for (const char16_t unit : units) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += isBig ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

TEST(KRVCardReaderFiles, ReadsCardsOneAfterTheOther) {
  EXPECT_EQ(namesIn(cardNamed("a") + cardNamed("b") + cardNamed("c")), (Names{"a", "b", "c"}));
  EXPECT_EQ(namesIn(""), Names());
}

TEST(KRVCardReaderFiles, ReadsEveryKindOfLineEnd) {
  const std::string text = krRichCard("3.0") + cardNamed("b");
  const KRCardsRead expected = krReadCards(text);
  ASSERT_EQ(expected.count(), 2U);
  for (const std::string lineEnd : {"\n", "\r\n", "\r", "\r\r\n"}) {
    const KRCardsRead read = krReadCards(withLineEnds(text, lineEnd));
    ASSERT_EQ(read.count(), 2U);
    EXPECT_EQ(krShownByReading(read.person(0)), krShownByReading(expected.person(0)));
  }
  EXPECT_EQ(namesIn(withLineEnds(cardNamed("a"), "\r") + withLineEnds(cardNamed("b"), "\n") + cardNamed("c")),
            (Names{"a", "b", "c"}));
}

TEST(KRVCardReaderFiles, KeepsALoneReturnInsideAValue) {
  const KRCardsRead read = krReadCards("BEGIN:VCARD\r\nNOTE:one\rtwo\r\nEND:VCARD\r\n");
  EXPECT_EQ(krShownByReading(read.person(0)), "note: one\rtwo\n");
}

TEST(KRVCardReaderFiles, FindsCardsInAnyCaseAndDress) {
  EXPECT_EQ(namesIn("begin:vcard\nn:a\nend:vcard\nBEGIN:vCard\nN:b\nEnd:VCard"), (Names{"a", "b"}));
  EXPECT_EQ(namesIn("x.BEGIN:VCARD\nx.N:a\nx.END:VCARD\n"), Names{"a"});
  EXPECT_EQ(namesIn("BEGIN:VC\n ARD\nN:a\nEND:VCA\n RD\n"), Names{"a"});
  EXPECT_EQ(namesIn("BEGIN:VCARD \nN:a\nEND:VCARD\t\n"), Names{"a"});
}

TEST(KRVCardReaderFiles, PassesOverJunkBetweenCards) {
  EXPECT_EQ(namesIn("junk\n\n# more\n" + cardNamed("a") + "\n\njunk: x\n" + cardNamed("b") + "tail"),
            (Names{"a", "b"}));
  EXPECT_EQ(namesIn("\xEF\xBB\xBF" + cardNamed("a") + "\xEF\xBB\xBF" + cardNamed("b")), (Names{"a", "b"}));
  EXPECT_EQ(namesIn("say BEGIN:VCARD\nN:a\nEND:VCARD"), Names{"a"});
}

TEST(KRVCardReaderFiles, TellsWhatItPassedOver) {
  const KRCardsRead read = krReadCards(
      "junk\nmore junk\nBEGIN:VCARD\nN:a\nno colon\nBDAY:soon\nEND:VCARD\nBEGIN:VCARD\nN:b\nBEGIN:VCARD\nN:c\nEND:"
      "VCARD\nBEGIN:VCARD\nN:d\n");
  ASSERT_EQ(read.notes.size(), 5U);
  const auto expect = [&](size_t i, KRVCardReason reason, size_t line, size_t card, bool isCardLost) {
    EXPECT_EQ(read.notes[i].reason, reason) << i;
    EXPECT_EQ(read.notes[i].line, line) << i;
    EXPECT_EQ(read.notes[i].card, card) << i;
    EXPECT_EQ(read.notes[i].isCardLost, isCardLost) << i;
    EXPECT_FALSE(read.notes[i].sentence().isEmpty());
  };
  expect(0, KRVCardReason::Junk, 1, 0, false);
  expect(1, KRVCardReason::NoColon, 5, 1, false);
  expect(2, KRVCardReason::BadDate, 6, 1, false);
  expect(3, KRVCardReason::CutOff, 8, 2, true);
  expect(4, KRVCardReason::CutOff, 13, 4, true);
  EXPECT_EQ(read.count(), 2U);
  EXPECT_EQ(read.summary.lostCards, 2U);
  EXPECT_EQ(read.summary.notes, 5U);
}

TEST(KRVCardReaderFiles, SaysNothingOfBlankLines) {
  EXPECT_TRUE(krReadCards(" \n\t\n" + cardNamed("a") + "\n \n\n" + cardNamed("b") + " \n").notes.empty());
}

TEST(KRVCardReaderFiles, KeepsCardsInsideCardsOut) {
  const std::string inner = "BEGIN:VCARD\nN:inner\nTEL:2\nEND:VCARD\n";
  const std::vector<std::string> agents = {"AGENT:\n" + inner, "AGENT:BEGIN:VCARD\nN:inner\nTEL:2\nEND:VCARD\n",
                                           "AGENT:BEGIN:VCARD\\nN:inner\\nTEL:2\\nEND:VCARD\n",
                                           "AGENT:\nBEGIN:VCARD\nAGENT:\n" + inner + "END:VCARD\n"};
  for (const std::string& agent : agents) {
    const KRCardsRead read = krReadCards("BEGIN:VCARD\nN:outer\n" + agent + "TEL:1\nEND:VCARD\n" + cardNamed("b"));
    ASSERT_EQ(read.count(), 2U) << agent;
    EXPECT_EQ(krShownByReading(read.person(0)), "last: outer\nphone: 1\n");
  }
}

TEST(KRVCardReaderFiles, TellsGroupsFromContacts) {
  const KRCardsRead read = krReadCards(cardNamed("a") + krCard({"KIND:group", "FN:all", "MEMBER:urn:uuid:1"}, "4.0") +
                                       krCard({"N:all", "X-ADDRESSBOOKSERVER-KIND:group"}));
  EXPECT_EQ(read.count(), 1U);
  EXPECT_EQ(read.summary.groups, 2U);
  EXPECT_TRUE(read.notes.empty());
}

TEST(KRVCardReaderFiles, ReadsUTF16WithAndWithoutMark) {
  const std::string text = krCard({"N:Müller;王", "NOTE:two\\nlines"}) + cardNamed("b");
  for (const bool isBig : {false, true}) {
    for (const bool hasMark : {false, true}) {
      const KRCardsRead read = krReadCards(utf16(text, isBig, hasMark));
      ASSERT_EQ(read.count(), 2U) << isBig << hasMark;
      EXPECT_EQ(krShownByReading(read.person(0)), "last: Müller\nfirst: 王\nnote: two\\nlines\n");
    }
  }
}

TEST(KRVCardReaderFiles, GuessesOneCharacterSetForTheWholeFile) {
  // Cyrillic in windows-1251, of which one value alone says too little.
  const std::string text = krCard({"N:\xC8\xE2\xE0\xED\xEE\xE2;\xC8\xE2\xE0\xED",
                                   "NOTE:\xCF\xF0\xE8\xE2\xE5\xF2, \xEA\xE0\xEA \xE4\xE5\xEB\xE0? "
                                   "\xDD\xF2\xEE \xEF\xF0\xEE\xF1\xF2\xEE \xE7\xE0\xEC\xE5\xF2\xEA\xE0."});
  const KRCardsRead read = krReadCards(text);
  EXPECT_EQ(krShownByReading(read.person(0)),
            "last: Иванов\nfirst: Иван\nnote: Привет, как дела? Это просто заметка.\n");
  EXPECT_EQ(read.summary.legacyCharset, "windows-1251");
}

TEST(KRVCardReaderFiles, KeepsTheCardsOwnBytes) {
  const std::string first = "begin:vcard\r\nX-A:\xFF\x01\r\nFN:a\r\n  b\r\nend:vcard\r\n";
  const KRCardsRead read = krReadCards("junk\n" + first + "\n" + krRichCard("4.0"));
  EXPECT_EQ(read.person(0).card(), first);
  EXPECT_EQ(read.person(1).card(), krRichCard("4.0"));
}

TEST(KRVCardReaderFiles, DoesNotDependOnThePiecesItIsFed) {
  std::mt19937 random(7);
  std::string text = krRichCard("2.1") + "junk\r\n" + krRichCard("3.0");
  for (int i = 0; i < 20; ++i) text += krRandomCard(random);
  text += withLineEnds(krRichCard("4.0"), "\r") + "BEGIN:VCARD\nN:lost";
  const KRCardsRead expected = krReadCards(text);
  for (const size_t block : {1U, 2U, 3U, 7U, 50U, 1000U}) {
    std::vector<KRRef<ABPerson>> persons;
    std::vector<KRVCardNote> notes;
    KRVCardReader reader([&](KRRef<ABPerson> person) { persons.push_back(std::move(person)); },
                         [&](const KRVCardNote& note) { notes.push_back(note); }, block);
    for (size_t at = 0; at < text.size(); at += block) reader.feed(std::string_view(text).substr(at, block));
    reader.finish();
    ASSERT_EQ(persons.size(), expected.count()) << block;
    for (size_t i = 0; i < persons.size(); ++i) {
      ASSERT_EQ(persons[i]->card(), expected.person(i).card()) << block;
    }
    ASSERT_EQ(notes.size(), expected.notes.size()) << block;
    for (size_t i = 0; i < notes.size(); ++i) {
      EXPECT_EQ(notes[i].line, expected.notes[i].line);
      EXPECT_EQ(notes[i].card, expected.notes[i].card);
      EXPECT_EQ(notes[i].reason, expected.notes[i].reason);
    }
  }
}

TEST(KRVCardReaderFiles, StartsAnewAfterTheEndOfAFile) {
  std::vector<std::string> names;
  KRVCardReader reader([&](KRRef<ABPerson> person) { names.emplace_back(person->displayName().view()); });
  reader.feed("BEGIN:VCARD\nN:a");
  reader.finish();
  reader.feed(cardNamed("b"));
  reader.finish();
  EXPECT_EQ(names, Names{"b"});
  EXPECT_EQ(reader.counts().lostCards, 1U);
}

TEST(KRVCardReaderFiles, SurvivesEveryTruncationOfARichCard) {
  for (const char* version : {"2.1", "3.0", "4.0"}) {
    const std::string text = krRichCard(version);
    for (size_t size = 0; size <= text.size(); ++size) {
      const KRCardsRead read = krReadCards(std::string_view(text).substr(0, size));
      EXPECT_LE(read.count(), 1U);
      // The line end behind the last line may be missing.
      EXPECT_EQ(read.count(), size >= text.size() - 2 ? 1U : 0U) << size;
    }
  }
}

TEST(KRVCardReaderFiles, SurvivesRandomChanges) {
  std::mt19937 random(3);
  const std::string text = krRichCard("2.1") + krRichCard("3.0") + krRichCard("4.0");
  for (int round = 0; round < 1500; ++round) {
    std::string changed = text;
    for (int changes = 0; changes < 6; ++changes) {
      const size_t at = std::uniform_int_distribution<size_t>(0, changed.size() - 1)(random);
      changed[at] = static_cast<char>(std::uniform_int_distribution<int>(0, 255)(random));
    }
    const KRCardsRead read = krReadCards(changed);
    EXPECT_LE(read.count(), 3U);
    for (size_t i = 0; i < read.count(); ++i) {
      EXPECT_EQ(krShownByReading(read.person(i)), krShownByValues(read.person(i)));
    }
  }
}

TEST(KRVCardReaderFiles, ShowsWellFormedTextWhateverTheBytes) {
  std::mt19937 random(11);
  for (int round = 0; round < 300; ++round) {
    std::string bytes = "BEGIN:VCARD\n";
    for (const char* head :
         {"N:", "NOTE;QUOTED-PRINTABLE:", "TEL;TYPE=", "item1.X-ABLabel:", "ORG;CHARSET=SHIFT_JIS:"}) {
      bytes += head;
      for (int i = 0; i < 20; ++i) {
        const int byte = std::uniform_int_distribution<int>(0, 255)(random);
        if (byte != '\n' && byte != '\r') bytes += static_cast<char>(byte);
      }
      bytes += "\n";
    }
    const KRCardsRead read = krReadCards(bytes + "END:VCARD\n");
    ASSERT_EQ(read.count(), 1U);
    EXPECT_TRUE(krIsWellFormed(krShownByReading(read.person(0))));
  }
}

TEST(KRVCardReaderFiles, TakesManyGroupsInLinearTime) {
  std::vector<std::string> lines;
  for (int i = 0; i < 30'000; ++i) {
    lines.push_back("g" + std::to_string(i) + ".TEL:" + std::to_string(i));
    lines.push_back("g" + std::to_string(i) + ".X-ABLabel:" + std::string(100, 'x'));
  }
  const KRCardsRead read = krReadCards(krCard(lines));
  EXPECT_EQ(read.person(0).entryCount(KROrdinal::Phone), 30'000U);
}

TEST(KRVCardReaderFiles, ReadsWhatIsPutIntoItsRoom) {
  std::mt19937 random(8);
  std::string text = krRichCard("2.1") + "junk\r\n";
  for (int i = 0; i < 20; ++i) text += krRandomCard(random);
  text += "BEGIN:VCARD\nN:lost";
  for (const std::string& file : {text, "\xEF\xBB\xBF" + text, std::string()}) {
    const KRCardsRead expected = krReadCards(file);
    for (const size_t piece : {size_t{1}, size_t{100}, size_t{5000}, file.size() + 1}) {
      std::vector<KRRef<ABPerson>> persons;
      KRVCardReader reader([&](KRRef<ABPerson> person) { persons.push_back(std::move(person)); }, {}, 1000);
      for (size_t at = 0; at < file.size(); at += piece) {
        const std::string_view bytes = std::string_view(file).substr(at, piece);
        const std::span<char> room = reader.room(piece);
        ASSERT_GE(room.size(), piece);
        std::copy(bytes.begin(), bytes.end(), room.begin());
        reader.feedRoom(bytes.size());
      }
      reader.finish();
      ASSERT_EQ(persons.size(), expected.count()) << piece;
      for (size_t i = 0; i < persons.size(); ++i) ASSERT_EQ(persons[i]->card(), expected.person(i).card()) << piece;
      EXPECT_EQ(reader.counts().lostCards, expected.summary.lostCards);
    }
  }
}

}  // namespace
