// Undo of what was written to a book of the desktop, against its real service.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "contacts/model/KRSaveScope.h"
#include "contacts/stores/KRDesktopCard.h"
#include "contacts/stores/KRDesktopService.h"
#include "contacts/stores/KRUndo.h"
#include "contacts/stores/KRUndoCards.h"
#include "contacts/undo/KRUndoPart.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/desktop/DesktopBooks.h"
#include "tests/desktop/DesktopPeer.h"

namespace {

class KRDesktopUndoTest : public KRTrashSetting {
 protected:
  void SetUp() override {
    krStoreKinds().front().make(folder_);
    ASSERT_FALSE(HasFatalFailure());
    peerAdds({"N:Lee;Ann;;;", "FN:Ann Lee", "UID:ann", "X-OWN;X-P=q:kept", "TEL;TYPE=CELL:+44 7700 900001"});
    peerAdds({"N:Lee;Ben;;;", "FN:Ben Lee", "UID:ben", "TEL;TYPE=HOME:123", "TEL;TYPE=WORK:456", "NOTE:tea"});
  }

  static KRRef<KRStoredBook> book() { return krDesktopBook("Personal").value(); }
  static std::vector<KRUndoRecords::Run> runs() { return KRUndoRecords::all().value(); }

  void peerAdds(const std::vector<std::string>& lines) const {
    folder_.put("card.vcf", krCard(lines));
    krPeer({"add", folder_.at("card.vcf")});
  }

  /// Ann goes to the trash, Ben gets another name, and Cim comes.
  static void change() {
    const auto open = book();
    const auto kept = trash();
    KRSaveScope scope;
    const auto ann = krPersonNamed(*open, "Ann Lee");
    kept->addPerson(ann.get());
    open->removePersons(KRPersonArray(ann.get()));
    krSetText(*krPersonNamed(*open, "Ben Lee"), KRProPertyNickname, "Benny");
    open->addPerson(krPersonOf({"N:Lee;Cim;;;", "FN:Cim Lee", "UID:cim"}).get());
    kept->save();
    open->save();
    const KRResult<void> saved = scope.commit();
    EXPECT_TRUE(saved) << saved.error().sentence;
  }
  template <class Job>
  static void recorded(KRText title, const Job& job) {
    const KRUndoRecorder recorder(title);
    job();
  }
  static void noteFor(const char* name, const char* note) {
    const auto open = book();
    krSetText(*krPersonNamed(*open, name), KRProPertyNote, note);
    EXPECT_TRUE(open->saveNow());
  }

  /// The line with its parameters in the order of the alphabet: the service turns them round with every change.
  static std::string inOrder(const std::string& line) {
    std::istringstream head(line.substr(0, line.find(':')));
    std::vector<std::string> words;
    for (std::string word; std::getline(head, word, ';');) words.push_back(word);
    std::sort(words.begin(), words.end());
    std::string text;
    for (const std::string& word : words) text += word + ";";
    return text + line.substr(std::min(line.find(':'), line.size()));
  }

  /// The lines of every card as the other program reads them but for the time of change, which the service sets; and
  /// who is in the trash.
  static std::vector<std::string> seen() {
    std::vector<std::string> lines;
    for (std::string card : krPeersCards()) {
      for (size_t fold = card.find("\r\n "); fold != std::string::npos; fold = card.find("\r\n ")) card.erase(fold, 3);
      const std::string who = card.substr(card.find("UID:"), card.substr(card.find("UID:")).find("\r\n"));
      std::istringstream text(card);
      for (std::string line; std::getline(text, line);) {
        if (line.rfind("REV", 0) != 0) lines.push_back(who + " " + inOrder(line));
      }
    }
    std::sort(lines.begin(), lines.end());
    const auto kept = trash();
    for (const IKRPerson& person : kept->allPersons()) lines.push_back("trash " + std::string(person.ID().view()));
    return lines;
  }

  static void expectRefused(const std::string& why) {
    const auto before = seen();
    const auto done = KRUndo::putBack(runs().front());
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().code, KRErrorCode::Changed);
    EXPECT_NE(done.error().sentence.find(why), std::string::npos) << done.error().sentence;
    EXPECT_EQ(seen(), before);
  }
};

TEST_F(KRDesktopUndoTest, PutsBackTheBookAndTheTrashAndDoesItAgain) {
  const auto before = seen();
  recorded("change", change);
  const auto after = seen();
  ASSERT_NE(before, after);
  recorded("undo", [] {
    const auto done = KRUndo::putBack(runs().front());
    ASSERT_TRUE(done) << done.error().sentence;
    ASSERT_EQ(done->size(), 2U);
    EXPECT_EQ(done->front().kind, "desktop");
    EXPECT_EQ(done->front().place, "Personal (On This Computer)");
    EXPECT_EQ(done->front().changes, 3U);
    EXPECT_EQ(done->back().kind, "file");
  });
  EXPECT_EQ(seen(), before);
  ASSERT_EQ(runs().size(), 2U);
  const auto again = KRUndo::putBack(runs().front());
  ASSERT_TRUE(again) << again.error().sentence;
  EXPECT_EQ(seen(), after);
}

TEST_F(KRDesktopUndoTest, WhatIsPutBackAlreadyIsLeftAlone) {
  recorded("change", change);
  ASSERT_TRUE(KRUndo::putBack(runs().front()));
  const auto cards = krPeersCards();
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_TRUE(done) << done.error().sentence;
  EXPECT_FALSE(done->front().isPutBack);
  EXPECT_EQ(krPeersCards(), cards);
}

TEST_F(KRDesktopUndoTest, RunsAreUndoneFromTheLastToTheFirst) {
  std::vector<std::vector<std::string>> was;
  for (const char* note : {"one", "two", "three"}) {
    was.push_back(seen());
    recorded(note, [&] { noteFor("Ben Lee", note); });
  }
  const auto known = runs();
  ASSERT_EQ(known.size(), 3U);
  const auto early = KRUndo::check(known.back());
  ASSERT_FALSE(early);
  EXPECT_EQ(early.error().code, KRErrorCode::Changed);
  for (size_t i = 0; i < known.size(); ++i) {
    const auto done = KRUndo::putBack(known[i]);
    ASSERT_TRUE(done) << done.error().sentence;
    EXPECT_EQ(seen(), was[was.size() - 1 - i]);
  }
}

TEST_F(KRDesktopUndoTest, SeveralSavesOfOneRunAreOneChange) {
  const auto before = seen();
  recorded("twice", [] {
    change();
    noteFor("Cim Lee", "new");
    noteFor("Ben Lee", "one");
    noteFor("Ben Lee", "two");
  });
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_TRUE(done) << done.error().sentence;
  EXPECT_EQ(done->size(), 2U);
  EXPECT_EQ(seen(), before);
}

TEST_F(KRDesktopUndoTest, RefusesWhatAnotherProgramHasChangedSince) {
  const auto before = seen();
  recorded("change", change);
  krPeer({"replace", "ben", "NOTE:tea", "NOTE:cake"});
  expectRefused("Ben Lee has changed since that run");
  // Changed back it is what the run left: the time of change does not count.
  krPeer({"replace", "ben", "NOTE:cake", "NOTE:tea"});
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_TRUE(done) << done.error().sentence;
  EXPECT_EQ(seen(), before);
}

TEST_F(KRDesktopUndoTest, RefusesWhatAnotherProgramHasRemovedSince) {
  recorded("change", change);
  krPeer({"remove", "ben"});
  expectRefused("Ben Lee has changed since that run");
}

TEST_F(KRDesktopUndoTest, RefusesToRemoveAnAddedContactThatSomeoneHasWrittenIn) {
  recorded("change", change);
  krPeer({"replace", "cim", "END:VCARD", "NOTE:precious\r\nEND:VCARD"});
  expectRefused("Cim Lee has changed since that run");
}

TEST_F(KRDesktopUndoTest, RefusesToOverwriteAContactThatHasTheIdentifierOfARemovedOne) {
  recorded("change", change);
  peerAdds({"N:;Other;;;", "FN:Other", "UID:ann"});
  expectRefused("Ann Lee has changed since that run");
}

TEST_F(KRDesktopUndoTest, OtherContactsOfTheBookMayChange) {
  recorded("change", change);
  peerAdds({"N:Lee;Dot;;;", "FN:Dot Lee", "UID:dot"});
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_TRUE(done) << done.error().sentence;
  EXPECT_EQ(krPeople(*book()), (std::vector<std::string>{"Ann Lee: ", "Ben Lee: tea", "Dot Lee: "}));
}

TEST_F(KRDesktopUndoTest, ListsComeBackWithTheirMembers) {
  peerAdds({"UID:friends", "FN:Friends", "X-EVOLUTION-LIST:TRUE",
            "EMAIL;X-EVOLUTION-DEST-CONTACT-UID=ann;X-EVOLUTION-DEST-EMAIL-NUM=0:ann@example.com",
            "EMAIL:plain@example.com"});
  peerAdds({"UID:gone", "FN:Gone", "X-EVOLUTION-LIST:TRUE", "EMAIL:other@example.com"});
  const auto before = seen();
  recorded("lists", [] {
    const auto open = book();
    open->removeGroup(*open->groupWithID("gone"));
    const auto made = open->addGroup("Made"_kr);
    open->setGroups(*krPersonNamed(*open, "Ben Lee"), {made, open->groupWithID("friends")});
    open->removePersons(KRPersonArray(krPersonNamed(*open, "Ann Lee").get()));
    const auto saved = open->saveNow();
    ASSERT_TRUE(saved) << saved.error().sentence;
  });
  const auto after = seen();
  recorded("undo", [] {
    const auto done = KRUndo::putBack(runs().front());
    ASSERT_TRUE(done) << done.error().sentence;
  });
  EXPECT_EQ(seen(), before);
  const auto again = KRUndo::putBack(runs().front());
  ASSERT_TRUE(again) << again.error().sentence;
  EXPECT_EQ(seen(), after);
}

TEST_F(KRDesktopUndoTest, PicturesComeBack) {
  const std::string picture = "\xFF\xD8\xFF\xE0" + std::string(3000, 'p');
  {
    const auto open = book();
    krPersonNamed(*open, "Ann Lee")->setThumbnail(krMake<KRData>(std::string_view(picture)));
    ASSERT_TRUE(open->saveNow());
  }
  // The service takes the file of a picture away together with the contact.
  recorded("change", change);
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_TRUE(done) << done.error().sentence;
  const auto open = book();
  const auto ann = krPersonNamed(*open, "Ann Lee");
  ASSERT_TRUE(ann->imageData());
  EXPECT_EQ(ann->imageData()->bytes(), picture);
}

TEST_F(KRDesktopUndoTest, MoreContactsThanTheServiceTakesAtOnceGoAndCome) {
  static constexpr size_t kMany = KRDesktopBook::kBatch + 50;
  const auto before = seen();
  recorded("many", [] {
    const auto open = book();
    for (size_t i = 0; i < kMany; ++i) {
      const std::string number = std::to_string(i);
      open->addPerson(krPersonOf({"N:;P" + number + ";;;", "FN:P" + number, "UID:p" + number}).get());
    }
    ASSERT_TRUE(open->saveNow());
  });
  const auto after = seen();
  for (const auto* wanted : {&before, &after}) {
    recorded("undo", [] {
      const auto done = KRUndo::putBack(runs().front());
      ASSERT_TRUE(done) << done.error().sentence;
      ASSERT_EQ(done->size(), 1U);
      EXPECT_EQ(done->front().changes, kMany);
    });
    EXPECT_EQ(seen(), *wanted);
  }
}

// Runs that do not come to their end

TEST_F(KRDesktopUndoTest, ASaveThatWasRefusedLeavesNoRecord) {
  recorded("conflict", [] {
    const auto open = book();
    krSetText(*krPersonNamed(*open, "Ben Lee"), KRProPertyNickname, "mine");
    krPeer({"replace", "ben", "NOTE:tea", "NOTE:cake"});
    const auto saved = open->saveNow();
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, KRErrorCode::Changed);
  });
  EXPECT_TRUE(runs().empty());
}

TEST_F(KRDesktopUndoTest, WhatTheServiceDidForARunThatWasStoppedBeforeItsAnswerIsUndone) {
  const auto before = seen();
  const auto dot =
      krPersonOf({"N:Lee;Dot;;;", "FN:Dot Lee", "UID:dot", "TEL;TYPE=CELL:+44 7700 900002", "NOTE:a\\, b"});
  const std::string sent = krCardForDesktop(*dot, "dot");
  recorded("stopped", [&] {
    KRUndoCards done;
    done.ID = book()->store().ID();
    done.cards.push_back({"dot", {}, KRUndoCards::markOf(sent)});
    done.cards.push_back({"never", {}, KRUndoCards::markOf(sent)});
    KRResult<KRUndoNote> note = KRUndoRecorder::record(KRUndoPart::kCards, done.fields(), done.changes());
    ASSERT_TRUE(note);
    note->keep();
  });
  folder_.put("card.vcf", sent);
  krPeer({"add", folder_.at("card.vcf")});
  ASSERT_NE(seen(), before);
  const auto done = KRUndo::putBack(runs().front());
  ASSERT_TRUE(done) << done.error().sentence;
  EXPECT_EQ(seen(), before);
}

TEST_F(KRDesktopUndoTest, AServiceThatDoesNotAnswerIsNamedAndNothingIsTouched) {
  const auto before = seen();
  recorded("change", change);
  ASSERT_TRUE(KRDesktopBooks::setTimeLimit(std::chrono::milliseconds(300)));
  krSignalService(SIGSTOP);
  const auto none = KRUndo::putBack(runs().front());
  krSignalService(SIGCONT);
  ASSERT_TRUE(KRDesktopBooks::setTimeLimit(KRDesktopService::kTimeLimit));
  ASSERT_FALSE(none);
  EXPECT_EQ(none.error().code, KRErrorCode::Busy);
  EXPECT_EQ(trash()->allPersonsCount(), 1U);
  ASSERT_TRUE(KRUndo::putBack(runs().front()));
  EXPECT_EQ(seen(), before);
}

TEST_F(KRDesktopUndoTest, ABookThatIsNotThereAnyMoreIsNamed) {
  const std::string ID = krPeer({"new-book", "Short"});
  recorded("add", [] {
    const auto open = krDesktopBook("Short").value();
    open->addPerson(krPersonOf({"N:;Eve;;;", "FN:Eve", "UID:eve"}).get());
    ASSERT_TRUE(open->saveNow());
  });
  krPeer({"remove-book", ID});
  const auto done = KRUndo::check(runs().front());
  ASSERT_FALSE(done);
  EXPECT_EQ(done.error().code, KRErrorCode::NotFound);
  EXPECT_NE(done.error().sentence.find("Short"), std::string::npos) << done.error().sentence;
}

}  // namespace
