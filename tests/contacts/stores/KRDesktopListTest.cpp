#include "contacts/stores/KRDesktopList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contacts/stores/KRDesktopCard.h"
#include "tests/contacts/vcard/VCardSamples.h"

namespace {

using Members = std::vector<KRDesktopMember>;

const std::string kAnn = "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=ann;X-EVOLUTION-DEST-EMAIL-NUM=0:ann@example.com";
const std::string kAnnAgain = "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=\"ann\":ann@example.org";
const std::string kPlain = "EMAIL:plain@example.com";
const std::string kElsewhere = "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=elsewhere:e@example.com";

bool isAnnOrBo(const std::string& UID) {
  return UID == "ann" || UID == "bo";
}

TEST(KRDesktopListTest, NamesEachContactOnce) {
  const KRDesktopList list =
      krReadDesktopList(krCard({"UID:l", "FN:Friends\\; all", "X-EVOLUTION-LIST:TRUE", kAnn, kPlain, kAnnAgain}));
  EXPECT_EQ(list.name, "Friends; all");
  EXPECT_EQ(list.members, std::vector<std::string>{"ann"});
}

TEST(KRDesktopListTest, ReadsBackANewList) {
  const Members members{{"ann", "Ann; \"A\"", "ann@example.com"}, {"bo", "Bo", ""}, {"cy:1", "", "cy@example.com"}};
  const std::string card = krNewDesktopList("l", "Friends, all", members);
  const KRDesktopList list = krReadDesktopList(card);
  EXPECT_EQ(list.name, "Friends, all");
  EXPECT_EQ(list.members, (std::vector<std::string>{"ann", "bo", "cy:1"}));
  const KRDesktopCard read = KRDesktopCardReader().read(card);
  EXPECT_TRUE(read.isList);
  EXPECT_EQ(read.UID, "l");
}

TEST(KRDesktopListTest, WritesNoIdentifierWhereThereIsNone) {
  EXPECT_EQ(krNewDesktopList("", "Friends", {}).find("UID"), std::string::npos);
}

TEST(KRDesktopListTest, IsTheSameCardWhenNothingChanged) {
  const std::string card = krCard({"UID:l", "FN:Friends", "X-EVOLUTION-LIST:TRUE", kAnn, kPlain, kElsewhere, "X-A:b"});
  EXPECT_EQ(krChangedDesktopList(card, {{"ann", "Ann", "new@example.com"}}, isAnnOrBo), card);
}

TEST(KRDesktopListTest, TakesMembersInAndOutAndKeepsWhatIsNotOurs) {
  const std::string card = krCard({"UID:l", "FN:Friends", kAnn, kPlain, kAnnAgain, kElsewhere, "X-A:b"});
  const std::string changed = krChangedDesktopList(card, {{"bo", "Bo", "bo@example.com"}}, isAnnOrBo);
  EXPECT_EQ(changed, krCard({"UID:l", "FN:Friends", kPlain, kElsewhere, "X-A:b",
                             "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=\"bo\";X-EVOLUTION-DEST-NAME=\"Bo\";"
                             "X-EVOLUTION-DEST-EMAIL-NUM=0;X-EVOLUTION-DEST-EMAIL=\"bo@example.com\":\"Bo\" "
                             "<bo@example.com>"}));
}

}  // namespace
