#include "contacts/stores/KRDesktopCard.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/contacts/stores/StoreSamples.h"

namespace {

KRDesktopCard read(const std::string& card) {
  return KRDesktopCardReader().read(card);
}

TEST(KRDesktopCardTest, KnowsIdentifierAndKind) {
  const KRDesktopCard person = read(krCard({"UID:a\\,b", "FN:Ann", "X-EVOLUTION-LIST:FALSE"}));
  EXPECT_EQ(person.UID, "a,b");
  EXPECT_FALSE(person.isList);
  EXPECT_TRUE(read(krCard({"UID:l", "FN:Friends", "x-evolution-list:true"})).isList);
  EXPECT_EQ(read("").UID, "");
}

TEST(KRDesktopCardTest, LeavesAllOtherBytesAsTheyAre) {
  const std::string card = krCard({"UID:a", "FN:A", " nn", "X-A;B=\"c:d\":e", "TEL;TYPE=HOME:1", "no colon"});
  EXPECT_EQ(read(card).text, card);
  EXPECT_EQ(read(krCard({"UID:a", "TEL;X-EVOLUTION-E164=123,;TYPE=HOME:1", "FN:A"})).text,
            krCard({"UID:a", "TEL;TYPE=HOME:1", "FN:A"}));
}

TEST(KRDesktopCardTest, HasAnotherStampWhenItSaysAnotherThing) {
  const int64_t stamp = read(krCard({"UID:a", "FN:Ann", "TEL;TYPE=HOME:1"})).stamp;
  EXPECT_EQ(read(krCard({"UID:a", "FN:A", " nn", "TEL;X-EVOLUTION-E164=1;TYPE=HOME:1"})).stamp, stamp);
  EXPECT_NE(read(krCard({"UID:a", "FN:Ann", "TEL;TYPE=WORK:1"})).stamp, stamp);
  EXPECT_NE(read(krCard({"UID:a", "FN:Ann"})).stamp, stamp);
}

TEST(KRDesktopCardTest, PutsAPictureOfAFileIntoTheCard) {
  const KRTestFolder folder;
  const std::string picture = "\x89PNG\r\n\x1A\n and more";
  const std::string photos = folder.at("evolution/addressbook/system/photos");
  std::filesystem::create_directories(photos);
  folder.put("evolution/addressbook/system/photos/a b.png", picture);
  const std::string file = "file://" + photos + "/a%20b.png";
  const auto person = ABPerson::initWithVCardRepresentation(
      krPath(read(krCard({"UID:a", "FN:Ann", "PHOTO;TYPE=png;VALUE=uri:" + file, "NOTE:x"})).text));
  ASSERT_TRUE(person);
  ASSERT_TRUE(person->imageData());
  EXPECT_EQ(person->imageData()->bytes(), picture);
  EXPECT_NE(person->card().find("TYPE=png"), std::string_view::npos);
  EXPECT_EQ(read(krCard({"UID:a", "LOGO;VALUE=uri:" + file})).text.find("file:"), std::string::npos);
}

TEST(KRDesktopCardTest, OfTheServicesFilesThoseAmongItsPicturesArePicturesOfAnyFormat) {
  const KRTestFolder folder;
  const std::string book = folder.at("evolution/addressbook/system");
  const std::string content = "a format that nobody here knows";
  std::filesystem::create_directories(book + "/photos");
  folder.put("evolution/addressbook/system/photos/ann", content);
  folder.put("evolution/addressbook/system/contacts.db", content);
  const auto cardWith = [&](const std::string& path) {
    return krCard({"UID:a", "FN:Ann", "PHOTO;VALUE=uri:file://" + book + path});
  };
  const auto person = ABPerson::initWithVCardRepresentation(krPath(read(cardWith("/photos/ann")).text));
  ASSERT_TRUE(person->imageData());
  EXPECT_EQ(person->imageData()->bytes(), content);
  for (const char* path : {"/contacts.db", "/photos/../contacts.db", "/photos"}) {
    EXPECT_EQ(read(cardWith(path)).text, cardWith(path));
  }
}

TEST(KRDesktopCardTest, LeavesThePlaceOfAPictureThatIsNotTheServicesOwn) {
  const KRTestFolder folder;
  folder.put("text.png", "no picture at all");
  for (const std::string& place :
       {"file://" + folder.path() + "/missing.png", "file://" + folder.path(), "file://" + folder.path() + "/text.png",
        std::string("file://host/a.png"), std::string("https://example.com/a.png"), std::string("file:///dev/zero")}) {
    const std::string card = krCard({"UID:a", "FN:Ann", "PHOTO;VALUE=uri:" + place});
    EXPECT_EQ(read(card).text, card);
  }
}

TEST(KRDesktopCardTest, SendsAnUnchangedCardOfTheServicesVersionAsItIs) {
  const auto person = krPersonOf({"N:;Ann;;;", "FN:Ann", "UID:a", "X-OWN;A=b:c", "TEL:1"});
  EXPECT_EQ(krCardForDesktop(*person, "a"), person->card());
  EXPECT_NE(krCardForDesktop(*person, "other").find("UID:other\r\n"), std::string::npos);
  EXPECT_EQ(krCardForDesktop(*person, "").find("UID"), std::string::npos);
}

TEST(KRDesktopCardTest, RewritesOnlyTheLinesOfChangedValues) {
  const auto person = krPersonOf({"N:;Ann;;;", "FN:Ann", "X-OWN;A=b:c", "UID:a", "item1.X-MORE:d", "TEL;X-E=f:1"});
  krSetText(*person, KRProPertyNote, "new");
  EXPECT_EQ(krCardForDesktop(*person, "a"),
            krCard({"N:;Ann;;;", "FN:Ann", "X-OWN;A=b:c", "UID:a", "item1.X-MORE:d", "TEL;X-E=f:1", "NOTE:new"}));
}

TEST(KRDesktopCardTest, SendsAnyOtherPersonInTheServicesVersion) {
  for (const char* version : {"2.1", "4.0"}) {
    const std::string card = krRichCard(version);
    const auto person = ABPerson::initWithVCardRepresentation(krPath(card));
    const std::string sent = krCardForDesktop(*person, person->ID());
    EXPECT_NE(sent.find("VERSION:3.0\r\n"), std::string::npos) << sent;
    const auto read = ABPerson::initWithVCardRepresentation(krPath(sent));
    ASSERT_TRUE(read);
    EXPECT_EQ(krShownByReading(*read), krShownByReading(*person));
  }
}

TEST(KRDesktopCardTest, TakesTheTimeOfChangeOfAnotherCard) {
  const std::string old = krCard({"UID:a", "REV:1", "FN:Ann"});
  EXPECT_EQ(krWithRevisionOf(old, krCard({"rev;x=y:2", "FN:Other"})), krCard({"UID:a", "FN:Ann", "rev;x=y:2"}));
  EXPECT_EQ(krWithRevisionOf(old, krCard({"FN:Other"})), krCard({"UID:a", "FN:Ann"}));
}

}  // namespace
