// What is the desktop's own among stores, against its real service. The suite of all stores runs here too.

#include "contacts/stores/KRDesktopBookStore.h"

#include <gtest/gtest.h>

#include <map>

#include "contacts/stores/KRDesktopBooks.h"
#include "contacts/stores/KRDesktopCard.h"
#include "detectors/KRIssueFindSpacingInFirst.h"
#include "handles/KRHandleRemoveSpace.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "tests/desktop/DesktopBooks.h"
#include "tests/desktop/DesktopPeer.h"

namespace {

class KRDesktopBookStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    krStoreKinds().front().make(folder);
    ASSERT_FALSE(HasFatalFailure());
  }

  KRRef<KRStoredBook> open() const { return krStoreKinds().front().opened(folder); }
  /// Lets another program add a card.
  void peerAdds(const std::vector<std::string>& lines) const {
    folder.put("card.vcf", krCard(lines));
    krPeer({"add", folder.at("card.vcf")});
  }
  /// The card of that identifier as the other program reads it.
  static std::string peersCard(const std::string& UID) {
    for (const std::string& card : krPeersCards()) {
      if (card.find("UID:" + UID + "\r\n") != std::string::npos) return card;
    }
    return {};
  }

  KRTestFolder folder;
};

using Shown = std::map<std::string, std::string>;

Shown shownOf(KRStoredBook& book) {
  Shown shown;
  for (const IKRPerson& person : book.allPersons()) shown[std::string(person.ID().view())] = krShownByReading(person);
  return shown;
}

/// What the other program's cards show, read by this library without the store.
Shown shownToPeer() {
  Shown shown;
  for (const std::string& card : krPeersCards()) {
    if (const auto person = ABPerson::initWithVCardRepresentation(krPath(card)))
      shown[std::string(person->ID().view())] = krShownByReading(*person);
  }
  return shown;
}

TEST_F(KRDesktopBookStoreTest, ShowsAnotherProgramTheSameThousandContactsAfterAScanAndItsFixes) {
  constexpr int kCount = 1000;
  const auto book = open();
  for (int i = 0; i < kCount; ++i) {
    const std::string number = std::to_string(i);
    const std::string first = i % 10 == 0 ? "Mary Ann" : "J\u00fcrgen";
    book->addPerson(krPersonOf({"N:Doe" + number + ";" + first + ";;;", "FN:" + first + " Doe" + number,
                                "UID:person-" + number, "TEL;TYPE=CELL:+44 7700 " + std::to_string(900000 + i),
                                "EMAIL;TYPE=HOME:p" + number + "@example.com",
                                "ADR;TYPE=WORK:;;" + number + " High Street;Town;;AB1 2CD;United Kingdom",
                                "NOTE:line one\\nline\\, two", "BDAY:1980-02-03", "X-OWN;X-P=q:kept " + number})
                        .get());
  }
  ASSERT_TRUE(book->saveNow().isOk());

  const auto detector = krMake<KRIssueFindSpacingInFirst>();
  detector->setIssue(krMake<KRIssue>(KRIssueSpacingInTheFirstName, "what this test is about"_kr));
  const auto found = detector->find(&book->allPersons(), [](double) {});
  ASSERT_TRUE(found);
  const auto findings = found->issueObjects().copy();
  ASSERT_EQ(findings.size(), static_cast<size_t>(kCount / 10));
  for (const auto& finding : findings) krMake<KRHandleRemoveSpace>()->fix(finding.get());
  ASSERT_TRUE(book->saveNow().isOk());

  const Shown ours = shownOf(*book);
  ASSERT_EQ(ours.size(), static_cast<size_t>(kCount));
  EXPECT_NE(ours.at("person-20").find("MaryAnn"), std::string::npos) << ours.at("person-20");
  EXPECT_EQ(shownToPeer(), ours);
  EXPECT_EQ(shownOf(*open()), ours);
  for (const std::string& card : krPeersCards()) EXPECT_NE(card.find("X-OWN;X-P=q:kept "), std::string::npos) << card;
}

TEST_F(KRDesktopBookStoreTest, KeepsLinesThatTheModelDoesNotKnowInAChangedContact) {
  peerAdds({"N:;Ann;;;", "FN:Ann", "UID:ann", "X-OWN;X-P=q:kept", "item7.X-SECOND:too", "TEL;TYPE=CELL:123"});
  const auto book = open();
  krSetText(*krPersonNamed(*book, "Ann"), KRProPertyNote, "new");
  ASSERT_TRUE(book->saveNow().isOk());
  const std::string card = peersCard("ann");
  for (const char* line : {"X-OWN;X-P=q:kept\r\n", "item7.X-SECOND:too\r\n", "NOTE:new\r\n", ":123\r\n"})
    EXPECT_NE(card.find(line), std::string::npos) << line << "\n" << card;
  const std::string again(krPersonNamed(*book, "Ann")->card());
  EXPECT_EQ(again.find("X-EVOLUTION-E164"), std::string::npos) << again;
}

TEST_F(KRDesktopBookStoreTest, SeesWhatAnotherProgramChangedEvenInTheSameMoment) {
  peerAdds({"N:;Ann;;;", "FN:Ann", "UID:ann", "TEL;TYPE=HOME:123", "REV:2020-01-01T00:00:00Z"});
  const auto book = open();
  krSetText(*krPersonNamed(*book, "Ann"), KRProPertyNote, "mine");
  krPeer({"replace", "ann", "HOME", "WORK"});
  const auto saved = book->saveNow();
  ASSERT_FALSE(saved.isOk());
  EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
  EXPECT_NE(saved.error().sentence.find("Ann was changed by another program"), std::string::npos)
      << saved.error().sentence;
  EXPECT_NE(peersCard("ann").find("WORK"), std::string::npos);
  EXPECT_TRUE(book->hasChanges());
}

TEST_F(KRDesktopBookStoreTest, KeepsPicturesAsTheContactsOwn) {
  const std::string picture = "\xFF\xD8\xFF\xE0" + std::string(3000, 'p');
  const auto book = open();
  const auto person = krPersonOf({"N:;Ann;;;", "FN:Ann", "UID:ann"});
  person->setThumbnail(krMake<KRData>(std::string_view(picture)));
  book->addPerson(person.get());
  ASSERT_TRUE(book->saveNow().isOk());
  // The service keeps the picture in a file of its own, and the card names it.
  EXPECT_NE(peersCard("ann").find("file:"), std::string::npos);
  for (const char* note : {"one", "two"}) {
    const auto again = open();
    const auto ann = krPersonNamed(*again, "Ann");
    ASSERT_TRUE(ann->imageData());
    EXPECT_EQ(ann->imageData()->bytes(), picture);
    krSetText(*ann, KRProPertyNote, note);
    ASSERT_TRUE(again->saveNow().isOk());
  }
  // A contact that was taken out still has its picture.
  const auto last = open();
  const auto ann = krPersonNamed(*last, "Ann");
  last->removePersons(KRPersonArray(ann));
  ASSERT_TRUE(last->saveNow().isOk());
  ASSERT_TRUE(ann->imageData());
  EXPECT_EQ(ann->imageData()->bytes(), picture);
}

// Contact lists

TEST_F(KRDesktopBookStoreTest, KeepsMembersOfAListThatAreNoContacts) {
  peerAdds({"N:;Ann;;;", "FN:Ann", "UID:ann", "EMAIL:ann@example.com"});
  peerAdds({"N:;Bo;;;", "FN:Bo", "UID:bo"});
  peerAdds({"UID:list", "FN:Friends\\, all", "X-EVOLUTION-LIST:TRUE",
            "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=ann;X-EVOLUTION-DEST-EMAIL-NUM=0:ann@example.com",
            "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=elsewhere:else@example.com", "EMAIL:plain@example.com"});
  const auto book = open();
  EXPECT_EQ(book->allPersonsCount(), 2U);
  EXPECT_EQ(krPeople(*book), (std::vector<std::string>{"Ann: ", "Bo: "}));
  ASSERT_EQ(book->rootGroupsCount(), 1U);
  const auto group = book->rootGroups().front();
  EXPECT_EQ(group->name(), "Friends, all");
  EXPECT_EQ(group->uniqueId(), "list");
  EXPECT_EQ(krPersonNamed(*book, "Ann")->parentGroups().size(), 1U);
  EXPECT_TRUE(krPersonNamed(*book, "Bo")->parentGroups().empty());

  book->setGroups(*krPersonNamed(*book, "Ann"), {});
  book->setGroups(*krPersonNamed(*book, "Bo"), {group});
  ASSERT_TRUE(book->saveNow().isOk());
  const std::string list = peersCard("list");
  EXPECT_EQ(list.find("ann@example.com"), std::string::npos) << list;
  for (const char* text : {"else@example.com", "plain@example.com", "X-EVOLUTION-DEST-CONTACT-UID=bo"})
    EXPECT_NE(list.find(text), std::string::npos) << text << "\n" << list;
}

TEST_F(KRDesktopBookStoreTest, DoesNotOverwriteAListThatAnotherProgramChanged) {
  peerAdds({"N:;Ann;;;", "FN:Ann", "UID:ann"});
  peerAdds({"UID:list", "FN:Friends", "X-EVOLUTION-LIST:TRUE", "EMAIL:plain@example.com"});
  const auto book = open();
  book->setGroups(*krPersonNamed(*book, "Ann"), {book->rootGroups().front()});
  krPeer({"replace", "list", "plain", "other"});
  const auto saved = book->saveNow();
  ASSERT_FALSE(saved.isOk());
  EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
  EXPECT_NE(saved.error().sentence.find("the list Friends"), std::string::npos) << saved.error().sentence;
  EXPECT_NE(peersCard("list").find("other@example.com"), std::string::npos);
}

TEST_F(KRDesktopBookStoreTest, LetsTheServiceNameAContactWhoseIdentifierAListHas) {
  peerAdds({"UID:taken", "FN:Friends", "X-EVOLUTION-LIST:TRUE"});
  const auto book = open();
  ASSERT_EQ(book->allPersonsCount(), 0U);
  static_cast<void>(book->allPersons());
  book->addPerson(krPersonOf({"N:;Ann;;;", "FN:Ann", "UID:taken"}).get());
  ASSERT_TRUE(book->saveNow().isOk());
  krSetText(*krPersonNamed(*book, "Ann"), KRProPertyNote, "changed");
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(krPeople(*open()), std::vector<std::string>{"Ann: changed"});
  EXPECT_EQ(krPeersCards().size(), 2U);
}

// A service that does not do its part

TEST_F(KRDesktopBookStoreTest, WaitsForAServiceThatHangsNoLongerThanTheTimeLimit) {
  peerAdds({"N:;Ann;;;", "FN:Ann", "UID:ann"});
  const auto book = open();
  krSetText(*krPersonNamed(*book, "Ann"), KRProPertyNote, "mine");
  const auto unread = open();
  ASSERT_TRUE(KRDesktopBooks::setTimeLimit(std::chrono::milliseconds(300)).isOk());
  krSignalService(SIGSTOP);
  const auto saved = book->saveNow();
  const auto loaded = unread->load();
  krSignalService(SIGCONT);
  ASSERT_TRUE(KRDesktopBooks::setTimeLimit(KRDesktopService::kTimeLimit).isOk());
  ASSERT_FALSE(saved.isOk());
  EXPECT_EQ(saved.error().code, KRErrorCode::Busy);
  EXPECT_NE(saved.error().sentence.find("does not answer"), std::string::npos) << saved.error().sentence;
  ASSERT_FALSE(loaded.isOk());
  EXPECT_EQ(loaded.error().code, KRErrorCode::Busy);
  // The changes are still there, and nothing has to be opened again.
  EXPECT_TRUE(book->hasChanges());
  ASSERT_TRUE(book->saveNow().isOk());
  EXPECT_EQ(krPeople(*open()), std::vector<std::string>{"Ann: mine"});
}

TEST_F(KRDesktopBookStoreTest, SaysThatTheServiceHasGoneAndKeepsTheChanges) {
  peerAdds({"N:;Ann;;;", "FN:Ann", "UID:ann"});
  const auto book = open();
  krSetText(*krPersonNamed(*book, "Ann"), KRProPertyNote, "mine");
  krSignalService(SIGKILL);
  const auto saved = book->saveNow();
  ASSERT_FALSE(saved.isOk());
  EXPECT_NE(saved.error().sentence.find("Personal"), std::string::npos) << saved.error().sentence;
  EXPECT_TRUE(book->hasChanges());
  EXPECT_EQ(krPeople(*book), std::vector<std::string>{"Ann: mine"});
  // The bus starts it again for the next one who asks.
  EXPECT_EQ(krPeople(*open()), std::vector<std::string>{"Ann: "});
}

}  // namespace
