#include "contacts/vcard/KRVCardJoiner.h"

#include <gtest/gtest.h>

#include "tests/contacts/vcard/VCardSamples.h"

namespace {

/// The card that is made of the lines of several, without its frame; "" for none. It shows that many values.
std::string joined(const std::vector<std::string>& cards, size_t shown = 0) {
  std::vector<KRRef<ABPerson>> persons;
  std::vector<const ABPerson*> plain;
  for (const std::string& card : cards) {
    persons.push_back(ABPerson::initWithVCardRepresentation(KRText(std::string_view(card))));
    plain.push_back(persons.back().get());
  }
  const KRCardRecord record = krJoinedCard(plain);
  EXPECT_EQ(record.rows().size(), shown);
  std::string card(record.card());
  for (const std::string_view frame : {"BEGIN:VCARD\r\n", "N:;;;;\r\nFN:\r\n", "END:VCARD\r\n"}) {
    const size_t at = card.find(frame);
    EXPECT_TRUE(card.empty() || at != std::string::npos) << frame << card;
    if (at != std::string::npos) card.erase(at, frame.size());
  }
  return card;
}

TEST(KRVCardJoiner, GathersEachDistinctLineOnceInOrder) {
  EXPECT_EQ(joined({krCard({"N:a", "X-B:1", "GEO:1;2", "X-A;X-P=q:x"}), krCard({"N:b", "x-b:1", "X-B:2"}),
                    krCard({"X-A:x", "X-B:2"})}),
            "VERSION:3.0\r\nX-B:1\r\nGEO:1;2\r\nX-A;X-P=q:x\r\nX-B:2\r\nX-A:x\r\n");
}

TEST(KRVCardJoiner, LeavesOutWhatTheModelKnows) {
  EXPECT_EQ(joined({krCard({"N:a", "FN:a", "TEL:1", "NOTE:one", "UID:1", "BDAY:2001-01-01", "REV:2020"})}),
            "VERSION:3.0\r\nREV:2020\r\n");
}

TEST(KRVCardJoiner, FurtherTextsOfTheFirstHolderStandBehindTheOneThatCounts) {
  EXPECT_EQ(joined({krCard({"N:a", "X-A:1"}), krCard({"N:b", "NOTE:one", "NOTE;LANGUAGE=de:zwei", "NOTE:one"}),
                    krCard({"N:c", "NOTE:three", "NOTE:four", "TITLE:boss", "TITLE:owner"})},
                   2),
            "VERSION:3.0\r\nNOTE:one\r\nTITLE:boss\r\nX-A:1\r\nNOTE;LANGUAGE=de:zwei\r\nTITLE:owner\r\n");
}

TEST(KRVCardJoiner, FurtherTextsOfAChangedTextAreLeftOut) {
  const auto person =
      ABPerson::initWithVCardRepresentation(KRText(std::string_view(krCard({"N:a", "NOTE:one", "NOTE:two"}))));
  person->setValue(krSingleValue("other"_kr, *KRProperty::propertyWithName(KRProPertyNote)), KRProPertyNote);
  EXPECT_TRUE(krJoinedCard({person.get()}).card().empty());
}

TEST(KRVCardJoiner, PicturesToBeFetchedAreTakenFromAll) {
  EXPECT_EQ(joined({krCard({"PHOTO;VALUE=uri:http://a.example/1"}), krCard({"PHOTO;VALUE=uri:http://a.example/1"}),
                    krCard({"PHOTO;VALUE=uri:http://b.example/2"})}),
            "VERSION:3.0\r\nPHOTO;VALUE=uri:http://a.example/1\r\nPHOTO;VALUE=uri:http://b.example/2\r\n");
}

TEST(KRVCardJoiner, APictureStandsBeforeThoseToBeFetched) {
  const std::string card =
      joined({krCard({"PHOTO;VALUE=uri:http://a.example/1"}), krCard({"PHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgo="})}, 1);
  const size_t real = card.find("iVBORw0KGgo=");
  ASSERT_NE(real, std::string::npos);
  EXPECT_LT(real, card.find("http://a.example/1"));
}

TEST(KRVCardJoiner, UnshownLinesAreToldInTheWantedVersion) {
  const auto person = ABPerson::initWithVCardRepresentation(KRText(std::string_view(krCard(
      {"N:a", "TEL:1", "item1.X-Skill;HOME;ENCODING=QUOTED-PRINTABLE:=41", "item1.X-ABLabel:l", "NOTE:1", "NOTE:2"},
      "2.1"))));
  EXPECT_EQ(krUnshownLines(*person, KRVCardVersion::V30), (std::vector<std::string>{"x-skill;TYPE=HOME:A", "note:2"}));
  EXPECT_TRUE(krUnshownLines(*krMake<ABPerson>(), KRVCardVersion::V40).empty());
}

TEST(KRVCardJoiner, CardsWithoutSuchLinesMakeNone) {
  EXPECT_EQ(joined({}), "");
  EXPECT_EQ(joined({krCard({"N:a"}), krCard({"N:b", "TEL:1"})}), "");
  EXPECT_TRUE(krJoinedCard({krMake<ABPerson>().get()}).card().empty());
}

TEST(KRVCardJoiner, LinesThatLieOverSeveralAreTakenWhole) {
  EXPECT_EQ(joined({krCard({"N:a", "X-B:ab", " cd"}), krCard({"X-B:a", " bcd"})}), "VERSION:3.0\r\nX-B:abcd\r\n");
}

TEST(KRVCardJoiner, TheFirstCardsVersionIsThatOfAll) {
  EXPECT_EQ(joined({krCard({"N:a", "X-B:1"}, "4.0"), krCard({"N:b", "X-C;HOME;ENCODING=QUOTED-PRINTABLE:=41"}, "2.1")}),
            "VERSION:4.0\r\nX-B:1\r\nX-C;TYPE=HOME:A\r\n");
}

TEST(KRVCardJoiner, KeepsGroupsTogetherAndApart) {
  EXPECT_EQ(joined({krCard({"item1.X-B:1", "item1.X-ABLabel:mine", "item2.TEL:7", "item2.X-ABLabel:phone"}),
                    krCard({"item1.X-B:2", "item1.X-ABLabel:yours"}), krCard({"item9.X-B:1", "item9.X-ABLabel:mine"})}),
            "VERSION:3.0\r\nitem1.X-B:1\r\nitem1.X-ABLabel:mine\r\nitem1-1.X-B:2\r\nitem1-1.X-ABLabel:yours\r\n");
}

}  // namespace
