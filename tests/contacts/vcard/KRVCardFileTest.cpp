#include "contacts/vcard/KRVCardFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "contacts/vcard/KRVCardWriter.h"
#include "tests/contacts/vcard/WrittenPersons.h"
#include "tests/support/KRTestFolder.h"
#include "tests/support/KRTestPaths.h"

namespace {

using Kind = KRVCardPlace::Kind;

std::string small(const std::string& name, const std::string& more = "") {
  return "BEGIN:VCARD\nVERSION:3.0\nN:" + name + ";;;;\n" + more + "END:VCARD\n";
}

void setNote(ABPerson& person, const char* text) {
  person.setValue(krSingleValue(KRString(text), *KRProperty::propertyWithName(KRProPertyNote)), KRProPertyNote);
}

std::vector<std::string> bytesOfCards(const KRVCardFile& file) {
  std::vector<std::string> cards;
  for (const KRVCardFile::Card& card : file.cards()) cards.emplace_back(file.bytesOf(card));
  return cards;
}

std::string wide(const std::string& text, const char* charset, const std::string& mark) {
  return mark + *krEncodeWith(KRText(std::string_view(text)), charset);
}

TEST(KRVCardFile, KnowsWhereEachCardStands) {
  const std::string group = small("Friends", "X-ADDRESSBOOKSERVER-KIND:group\n");
  const std::string nested = small("A", "AGENT:\nBEGIN:VCARD\nN:inner\nEND:VCARD\nTEL:1\n");
  const std::string open = "BEGIN:VCARD\nN:open\n";
  const std::string text =
      "\xEF\xBB\xBFjunk\n\n" + small("B") + group + "# more\n" + nested + open + small("C") + "tail";
  const KRVCardFile file = KRVCardFile::read(text);
  EXPECT_EQ(bytesOfCards(file), (std::vector<std::string>{small("B"), group, nested, open, small("C")}));
  EXPECT_EQ(file.contactCount(), 3U);
  std::vector<Kind> kinds;
  std::vector<size_t> lines;
  for (const KRVCardFile::Card& card : file.cards()) {
    kinds.push_back(card.kind);
    lines.push_back(card.line);
    EXPECT_EQ(card.person != nullptr, card.kind == Kind::Contact);
  }
  EXPECT_EQ(kinds, (std::vector<Kind>{Kind::Contact, Kind::Group, Kind::Contact, Kind::Lost, Kind::Contact}));
  EXPECT_EQ(lines, (std::vector<size_t>{3, 7, 13, 22, 24}));
  EXPECT_EQ(file.bytes(), text);
}

TEST(KRVCardFile, ChangesRemovesAndAddsAndLeavesTheRestAlone) {
  const KRVCardFile file = KRVCardFile::read("a\n" + small("A") + "b\n" + small("B") + "c\n" + small("C") + "d");
  ABPerson& changed = *file.cards()[2].person;
  setNote(changed, "new");
  const auto added = krMake<KRTempPerson>("id"_kr);
  const auto after = file.with({{{2, &changed}}, {1}, {added.get()}});
  ASSERT_TRUE(after) << after.error().sentence;
  EXPECT_EQ(after->bytes(), "a\n" + small("A") + "b\nc\n" + small("C", "NOTE:new\n") +
                                "d\r\nBEGIN:VCARD\nVERSION:3.0\nN:;;;;\nFN:\nUID:id\nEND:VCARD\n");
  EXPECT_EQ(after->cards().size(), 3U);
  EXPECT_EQ(file.with({})->bytes(), file.bytes());
}

TEST(KRVCardFile, AddsToAFileWithoutCards) {
  const auto added = krMake<KRTempPerson>("id"_kr);
  for (const std::string before : {"", "\xEF\xBB\xBF", "no card\n"}) {
    const auto after = KRVCardFile::read(before).with({{}, {}, {added.get(), added.get()}});
    ASSERT_TRUE(after);
    EXPECT_EQ(after->contactCount(), 2U);
    EXPECT_TRUE(after->bytes().starts_with(before + "BEGIN:VCARD\r\nVERSION:3.0\r\n"));
  }
}

TEST(KRVCardFile, AddsBeforeACardThatHasNoEnd) {
  const auto added = krMake<KRTempPerson>("id"_kr);
  const std::string open = "BEGIN:VCARD\nN:x\nAGENT:";
  const auto after = KRVCardFile::read(small("A") + open).with({{}, {}, {added.get()}});
  ASSERT_TRUE(after);
  EXPECT_EQ(after->contactCount(), 2U);
  EXPECT_TRUE(after->bytes().ends_with(open));
}

TEST(KRVCardFile, KeepsTheCardOfAnAddedContact) {
  const auto person = ABPerson::initWithVCardRepresentation("BEGIN:VCARD\nN:x\nX-OWN;A=b:c\nEND:VCARD");
  const auto after = KRVCardFile::read(small("A")).with({{}, {}, {person.get()}});
  ASSERT_TRUE(after);
  EXPECT_EQ(after->bytes(), small("A") + "BEGIN:VCARD\nN:x\nX-OWN;A=b:c\nEND:VCARD\n");
}

TEST(KRVCardFile, KeepsTheEncodingAndItsMark) {
  const std::string text =
      "\xF0\x9F\x98\x80\n" + small("J\xC3\xB6rg", "NOTE:\xF0\x9F\x98\x80\n") + "\xE7\x8E\x8B\n" + small("B");
  struct Form {
    const char* charset;
    std::string mark;
  };
  const std::vector<Form> forms = {{"UTF-16LE", "\xFF\xFE"},
                                   {"UTF-16BE", "\xFE\xFF"},
                                   {"UTF-16BE", ""},
                                   {"UTF-32LE", std::string("\xFF\xFE\0\0", 4)},
                                   {"UTF-32BE", std::string("\0\0\xFE\xFF", 4)}};
  for (const Form& form : forms) {
    // Without a mark the file must begin as cards do.
    const std::string whole = form.mark.empty() ? text.substr(5) : text;
    const KRVCardFile file = KRVCardFile::read(wide(whole, form.charset, form.mark));
    ASSERT_EQ(file.cards().size(), 2U) << form.charset;
    EXPECT_EQ(file.bytesOf(file.cards()[1]), wide(small("B"), form.charset, ""));
    setNote(*file.cards()[1].person, "\xF0\x9F\x98\x80");
    const auto added = krMake<KRTempPerson>("id"_kr);
    const auto after = file.with({{{1, file.cards()[1].person.get()}}, {}, {added.get()}});
    ASSERT_TRUE(after) << after.error().sentence;
    std::string expected = whole;
    expected.insert(expected.size() - 10, "NOTE:\xF0\x9F\x98\x80\n");
    expected += "BEGIN:VCARD\nVERSION:3.0\nN:;;;;\nFN:\nUID:id\nEND:VCARD\n";
    EXPECT_EQ(after->bytes(), wide(expected, form.charset, form.mark)) << form.charset;
  }
}

TEST(KRVCardFile, LeavesBrokenTextOfAWideFileAsItIs) {
  std::string bytes = wide(small("Ax") + small("B"), "UTF-16LE", "\xFF\xFE");
  // Half of a character of two units.
  const size_t place = bytes.find(std::string("A\0x\0", 4));
  bytes[place] = '\x3D';
  bytes[place + 1] = '\xD8';
  const KRVCardFile file = KRVCardFile::read(bytes);
  ASSERT_EQ(file.cards().size(), 2U);
  setNote(*file.cards()[0].person, "n");
  const auto after = file.with({{{0, file.cards()[0].person.get()}}, {1}, {}});
  ASSERT_TRUE(after) << after.error().sentence;
  std::string expected = bytes.substr(0, 2 + 2 * small("Ax").size());
  expected.insert(expected.size() - 20, wide("NOTE:n\n", "UTF-16LE", ""));
  EXPECT_EQ(after->bytes(), expected);
  // Half of a unit at the end.
  const KRVCardFile odd = KRVCardFile::read(bytes + "x");
  EXPECT_EQ(odd.bytes(), bytes + "x");
  const KRVCardFile cut = KRVCardFile::read(bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(cut.cards()[1].offset + cut.cards()[1].size, bytes.size() - 1);
  const auto refused = odd.with({{}, {0}, {}});
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, KRErrorCode::Damaged);
}

TEST(KRVCardFile, KeepsALegacyCharacterSet) {
  const std::string text = small("J\xF6rg M\xFCller") +
                           small(
                               "Stra\xDF"
                               "e") +
                           small("B");
  const KRVCardFile file = KRVCardFile::read(text);
  EXPECT_EQ(file.encoding(), KRTextEncoding::Other);
  EXPECT_EQ(file.charset(), "windows-1252");
  setNote(*file.cards()[2].person, "\xC3\xA4 \xE2\x82\xAC");
  const auto after = file.with({{{2, file.cards()[2].person.get()}}, {}, {file.cards()[0].person.get()}});
  ASSERT_TRUE(after) << after.error().sentence;
  EXPECT_TRUE(after->bytes().starts_with(small("J\xF6rg M\xFCller") +
                                         small("Stra\xDF"
                                               "e") +
                                         small("B", "NOTE:\xE4 \x80\n") +
                                         "BEGIN:VCARD\nVERSION:3.0\nN:J\xF6rg M\xFCller;;;;\n"))
      << after->bytes();
  EXPECT_EQ(krShownByReading(*after->cards()[2].person), krShownByReading(*file.cards()[2].person));
}

TEST(KRVCardFile, RefusesWhatIsNotItsOwn) {
  const KRVCardFile file = KRVCardFile::read(small("A") + small("B") + "BEGIN:VCARD\nKIND:group\nEND:VCARD\n");
  const ABPerson* first = file.cards()[0].person.get();
  const auto code = [&](const KRVCardFile::Changes& changes) {
    const auto after = file.with(changes);
    return after ? KRErrorCode::Failed : after.error().code;
  };
  EXPECT_EQ(code({{}, {3}, {}}), KRErrorCode::InvalidArgument);
  EXPECT_EQ(code({{}, {1, 1}, {}}), KRErrorCode::InvalidArgument);
  EXPECT_EQ(code({{{2, first}}, {}, {}}), KRErrorCode::InvalidArgument);
  EXPECT_EQ(code({{{0, nullptr}}, {}, {}}), KRErrorCode::InvalidArgument);
  EXPECT_EQ(code({{{1, first}}, {}, {}}), KRErrorCode::Changed);
}

TEST(KRVCardFile, HandsOutGroups) {
  const KRVCardFile file = KRVCardFile::read(
      "BEGIN:VCARD\nVERSION:3.0\nN:Fr\xC3\xA4unde\nFN:Fr\xC3\xA4unde\\, alte\nX-ADDRESSBOOKSERVER-KIND:group\n"
      "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:1-2\nX-ADDRESSBOOKSERVER-MEMBER:3\nUID:9\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nN:Family;;;;\nMEMBER:mailto:a@b.example\nEND:VCARD\n" +
      small("A"));
  ASSERT_EQ(file.cards().size(), 3U);
  const KRVCardGroup first = file.groupOf(file.cards()[0]);
  EXPECT_EQ(first.name, "Fr\xC3\xA4unde, alte");
  EXPECT_EQ(first.UID, "9");
  EXPECT_EQ(first.members, (KRStringList{"urn:uuid:1-2"_kr, "3"_kr}));
  const KRVCardGroup second = file.groupOf(file.cards()[1]);
  EXPECT_EQ(second.name, "Family");
  EXPECT_TRUE(second.UID.isNothing());
  EXPECT_EQ(second.members, (KRStringList{"mailto:a@b.example"_kr}));
  EXPECT_TRUE(file.groupOf(file.cards()[2]).name.isNothing());
  EXPECT_EQ(krPlainUID("URN:UUID:1-2"), "1-2");
  EXPECT_EQ(krPlainUID("1-2"), "1-2");
}

TEST(KRVCardFile, OpensFilesAndSaysWhyNot) {
  const KRTestFolder folder;
  folder.put("a.vcf", small("A"));
  const KRString path(folder.at("a.vcf"));
  EXPECT_EQ(KRVCardFile::open(path)->contactCount(), 1U);
  const auto none = KRVCardFile::open(KRString(folder.at("b.vcf")));
  ASSERT_FALSE(none);
  EXPECT_EQ(none.error().code, KRErrorCode::NotFound);
}

TEST(KRVCardFile, TellsTheSameCardsAsTheReader) {
  std::mt19937 random(11);
  for (int i = 0; i < 300; ++i) {
    std::string text;
    for (size_t count = random() % 5; count > 0; --count) {
      std::string card = krRandomCard(random);
      if (random() % 4 == 0) card.resize(random() % card.size());
      text += card;
      if (random() % 4 == 0) text += "junk\r\n";
    }
    const KRVCardFile file = KRVCardFile::read(text);
    const KRCardsRead read = krReadCards(text);
    ASSERT_EQ(file.contactCount(), read.count());
    size_t index = 0;
    for (const KRVCardFile::Card& card : file.cards()) {
      if (card.kind != Kind::Contact) continue;
      ASSERT_EQ(file.bytesOf(card), read.person(index++).card());
    }
  }
}

/// Every file of the test data: no change keeps all bytes, and each contact written in each version shows the same.
TEST(KRVCardFile, WritesTheTestDataWholeAndInEachVersion) {
  size_t contacts = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KR_TEST_DATA_DIR) + "/vcard")) {
    if (entry.path().extension() != ".vcf") continue;
    const std::string bytes = KRTestFolder::contentOf(entry.path().string());
    const KRVCardFile file = KRVCardFile::read(bytes);
    ASSERT_EQ(file.with({})->bytes(), bytes) << entry.path();
    for (const KRVCardFile::Card& card : file.cards()) {
      if (!card.person) continue;
      ++contacts;
      for (const KRVCardVersion version : {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40}) {
        const std::string text = KRVCardWriter(version).card(*card.person);
        const auto back = ABPerson::initWithVCardRepresentation(KRText(text));
        ASSERT_TRUE(back) << text;
        EXPECT_EQ(krShownByReading(*back), krShownByReading(*card.person)) << entry.path() << "\n" << text;
        EXPECT_EQ(krMainEntries(*back), krMainEntries(*card.person)) << entry.path();
        EXPECT_EQ(back->ID(), card.person->baseID()) << entry.path();
      }
    }
  }
  EXPECT_GT(contacts, 5U);
}

}  // namespace
