#include "contacts/vcard/KRVCardGroupRewriter.h"

#include <gtest/gtest.h>

#include <string>

#include "contacts/vcard/KRVCardBook.h"
#include "tests/contacts/vcard/VCardSamples.h"

namespace {

std::string changed(const std::string& card, const KRVCardGroupChange& change) {
  return KRVCardRewriter::applied(card, KRVCardGroupRewriter::edits(card, change));
}

std::string identified(const std::string& card, KRText UID) {
  return KRVCardRewriter::applied(card, KRVCardGroupRewriter::identifyingEdits(card, UID));
}

TEST(KRVCardGroupRewriter, LeavesACardAloneWithoutAChange) {
  const std::string card = krCard({"KIND:group", "FN:x", "MEMBER:a"}, "4.0");
  EXPECT_TRUE(KRVCardGroupRewriter::edits(card, {}).empty());
  EXPECT_TRUE(KRVCardGroupRewriter::edits(card, {{}, {"b"_kr}, {}}).empty());
}

TEST(KRVCardGroupRewriter, CallsNewMembersAsTheCardDoes) {
  const struct {
    std::vector<std::string> lines;
    const char* version;
    const char* line;
  } rows[] = {
      {{"KIND:group"}, "4.0", "MEMBER:urn:uuid:new"},
      {{"X-ADDRESSBOOKSERVER-KIND:group"}, "3.0", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:new"},
      {{"X-ADDRESSBOOKSERVER-KIND:group"}, "2.1", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:new"},
      {{"X-ADDRESSBOOKSERVER-KIND:group"}, "4.0", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:new"},
      {{"KIND:group"}, "3.0", "MEMBER:urn:uuid:new"},
      {{"KIND:group", "X-ADDRESSBOOKSERVER-MEMBER:a"}, "4.0", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:new"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> after = row.lines;
    after.emplace_back(row.line);
    EXPECT_EQ(changed(krCard(row.lines, row.version), {{}, {}, {"new"_kr}}), krCard(after, row.version));
  }
}

TEST(KRVCardGroupRewriter, WritesAnAddressAsItIsInVersion4Only) {
  EXPECT_EQ(changed(krCard({"KIND:group"}, "4.0"), {{}, {}, {"http://a.b/c,d"_kr, "urn:uuid:e"_kr}}),
            krCard({"KIND:group", "MEMBER:http://a.b/c,d", "MEMBER:urn:uuid:e"}, "4.0"));
  EXPECT_EQ(changed(krCard({"X-ADDRESSBOOKSERVER-KIND:group"}), {{}, {}, {"http://a.b/c"_kr, "urn:uuid:e"_kr}}),
            krCard({"X-ADDRESSBOOKSERVER-KIND:group", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:http://a.b/c",
                    "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:e"}));
}

TEST(KRVCardGroupRewriter, DropsEveryLineOfAMemberHoweverItIsWritten) {
  EXPECT_EQ(changed(krCard({"KIND:group", "MEMBER:urn:uuid:a", "MEMBER:b", "member;x=y:URN:UUID:a", "MEMBER:a"}, "4.0"),
                    {{}, {"a"_kr}, {"c"_kr}}),
            krCard({"KIND:group", "MEMBER:b", "MEMBER:urn:uuid:c"}, "4.0"));
}

TEST(KRVCardGroupRewriter, GivesAnIdentifierWhereThereIsNone) {
  EXPECT_EQ(identified(krCard({"N:;Ann"}), "a"), krCard({"N:;Ann", "UID:a"}));
  EXPECT_EQ(identified(krCard({"N:;Ann", "UID:"}), "a"), krCard({"N:;Ann", "UID:", "UID:a"}));
  EXPECT_EQ(identified(krCard({"N:;Ann", "uid:b"}), "a"), krCard({"N:;Ann", "uid:b"}));
  EXPECT_EQ(changed(krCard({"KIND:group"}, "4.0"), {"g"_kr, {}, {}}),
            krCard({"KIND:group", "UID;VALUE=text:g"}, "4.0"));
}

TEST(KRVCardGroupRewriter, WritesCardsThatReadBackAsTheSameGroup) {
  for (const KRVCardVersion version : {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40}) {
    const KRVCardGroup group{"Tea, coffee; Größe"_kr, "g-1"_kr, {"a"_kr, "b;c"_kr}};
    const KRVCardGroup read = KRVCardGroup::read(KRVCardGroupRewriter::card(group, version));
    EXPECT_EQ(read.name, group.name);
    EXPECT_EQ(read.UID, group.UID);
    ASSERT_EQ(read.members.size(), 2U);
    EXPECT_EQ(krPlainUID(read.members[0]), "a");
    EXPECT_EQ(krPlainUID(read.members[1]), "b;c");
  }
}

TEST(KRVCardGroupRewriter, EndsItsLinesAsItIsAskedTo) {
  const std::string card = KRVCardGroupRewriter::card({"x"_kr, "g"_kr, {}}, KRVCardVersion::V40, {"\n", "UTF-8"});
  EXPECT_EQ(card, "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:x\nUID;VALUE=text:g\nEND:VCARD\n");
}

/// The cards of groups in a text.
std::vector<KRRef<ABPerson>> groupsOf(std::string_view text) {
  const auto book = krMake<KRVCardBook>("b"_kr, "b"_kr);
  book->addBytes(text);
  EXPECT_EQ(book->lastSummary().groups, book->groupCards().size());
  return book->groupCards();
}

std::string written(std::string_view text, KRVCardVersion version) {
  std::string card;
  for (const KRRef<ABPerson>& group : groupsOf(text)) card += KRVCardGroupRewriter::card(*group, version);
  return card;
}

constexpr std::string_view kOld =
    "BEGIN:VCARD\nVERSION:3.0\nN:Friends;;;;\nFN:Friends\nX-AddressBookServer-Kind:GROUP\n"
    "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:one\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:\n two\nUID:f\nEND:VCARD\n";
constexpr std::string_view kNew =
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Friends\r\nMEMBER:urn:uuid:one\r\nMEMBER:urn:uuid:two\r\n"
    "UID:f\r\nEND:VCARD\r\n";

TEST(KRVCardGroupRewriter, CardsOfGroupsAreHandedOutByTheReaderAndAreNoContacts) {
  const auto book = krMake<KRVCardBook>("b"_kr, "b"_kr);
  std::string cards(kOld);
  cards.append("BEGIN:VCARD\nFN:Ann\nEND:VCARD\n").append(kNew);
  book->addBytes(cards);
  EXPECT_EQ(book->allPersonsCount(), 1U);
  ASSERT_EQ(book->groupCards().size(), 2U);
  EXPECT_EQ(book->groupCards()[0]->card(), kOld);
  EXPECT_EQ(book->groupCards()[1]->card(), kNew);
  EXPECT_EQ(book->groupCards()[1]->displayName(), "Friends");
  EXPECT_EQ(book->groupCards()[1]->addressBook(), nullptr);
}

TEST(KRVCardGroupRewriter, GivesACardTheLinesThatItsVersionKnows) {
  for (const std::string_view card : {kOld, kNew}) {
    for (const KRVCardVersion version : {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40}) {
      const std::string text = written(card, version);
      const std::string prefix = version == KRVCardVersion::V40 ? "\r\n" : "\r\nX-ADDRESSBOOKSERVER-";
      EXPECT_NE(text.find("\r\nVERSION:" + std::string(krVCardVersionName(version)) + "\r\n"), std::string::npos);
      EXPECT_NE(
          text.find(prefix + "KIND:group" + prefix + "MEMBER:urn:uuid:one" + prefix + "MEMBER:urn:uuid:two\r\nEND"),
          std::string::npos)
          << text;
      EXPECT_NE(text.find("\r\nFN:Friends\r\n"), std::string::npos);
      EXPECT_EQ(written(text, version), text);
    }
  }
}

TEST(KRVCardGroupRewriter, FoldsAMemberThatIsLong) {
  const std::string member(200, 'm');
  const std::string card = "BEGIN:VCARD\nFN:F\nKIND:group\nMEMBER:" + member + "\nUID:f\nEND:VCARD\n";
  const std::string text = written(card, KRVCardVersion::V40);
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find("\r\n", at);
    EXPECT_LE(end - at, 75U);
    at = end + 2;
  }
  EXPECT_EQ(written(text, KRVCardVersion::V40), text);
}

TEST(KRVCardGroupRewriter, WritesMembersOfConvertedCardsAsThoseOfNewOnes) {
  const std::string card =
      krCard({"KIND:group", "FN:x", "UID:g", "MEMBER:plain", "MEMBER:urn:uuid:one", "MEMBER:mailto:a@b.c"}, "4.0");
  const KRVCardGroup group = KRVCardGroup::read(card);
  for (const KRVCardVersion version : {KRVCardVersion::V30, KRVCardVersion::V40}) {
    const std::string expected = KRVCardGroupRewriter::card(group, version);
    const std::string text = written(card, version);
    const size_t members = expected.find("MEMBER:");
    EXPECT_EQ(text.substr(text.find("MEMBER:")), expected.substr(members));
    EXPECT_EQ(text.find("urn:uuid:urn:uuid:"), std::string::npos);
  }
}

}  // namespace
