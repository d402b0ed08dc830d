#include "contacts/vcard/KRVCardReadAhead.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/support/KRTestFolder.h"
#include "tests/support/KRTestPaths.h"

// A file that is read ahead is told just as one that is not: by everything that the reader's sinks hear, in order.

namespace {

/// Everything that a reader tells of a file, as text.
class Told {
 public:
  explicit Told(size_t block)
      : reader([this](const KRRef<ABPerson>& person) { tell("contact", *person); },
               [this](const KRVCardNote& note) {
                 text += "note " + std::to_string(static_cast<int>(note.reason)) + " " + std::to_string(note.line) +
                         " " + std::to_string(note.card) + (note.isCardLost ? " lost\n" : "\n");
               },
               block) {
    reader.setGroups([this](const KRRef<ABPerson>& group) { tell("group", *group); });
  }

  std::string end() {
    const KRVCardReader::Counts& counts = reader.counts();
    for (const size_t count : {counts.persons, counts.lostCards, counts.groups, counts.notes}) {
      text += std::to_string(count) + " ";
    }
    return text + std::to_string(static_cast<int>(reader.encoding())) + " " + reader.legacyCharset();
  }

  std::string text;
  KRVCardReader reader;

 private:
  void tell(const char* what, const ABPerson& person) {
    EXPECT_EQ(std::this_thread::get_id(), thread_);
    text.append(what).append("\n").append(person.card()).append(krShownByReading(person));
  }

  std::thread::id thread_ = std::this_thread::get_id();
};

/// Puts the bytes to the room of whoever feeds a reader, and says whether that was all.
template <class Fed>
bool feedNext(Fed& fed, size_t block, std::string_view& bytes) {
  const std::string_view piece = bytes.substr(0, block);
  const auto room = [&] {
    if constexpr (std::is_same_v<Fed, KRVCardReader>) {
      return fed.room(block);
    } else {
      return fed.room();
    }
  }();
  std::copy(piece.begin(), piece.end(), room.begin());
  fed.feedRoom(piece.size());
  bytes.remove_prefix(piece.size());
  return piece.size() < block;
}

std::string told(std::string_view bytes, size_t block) {
  Told told(block);
  while (!feedNext(told.reader, block, bytes)) {
  }
  told.reader.finish();
  return told.end();
}

struct Ahead {
  std::string text;
  size_t taken = 0;
  size_t missed = 0;
};

Ahead toldAhead(std::string_view bytes, size_t block, unsigned processors = 2) {
  Told told(block);
  KRVCardReadAhead ahead(told.reader, processors);
  while (!feedNext(ahead, block, bytes)) {
  }
  ahead.finish();
  return {told.end(), ahead.takenCount(), ahead.missedCount()};
}

/// Cards of many kinds, with other text between them.
std::string mixedFile(std::mt19937& random, size_t cards) {
  const std::string inner = "BEGIN:VCARD\nN:inner\nEND:VCARD\n";
  const std::vector<std::string> others = {"\r\n",
                                           "\n \n",
                                           "junk: x\r\n",
                                           "END:VCARD\r\n",
                                           "BEGIN:VCARD\nN:lost\n",
                                           "begin:vcard\nn:a\\;b\nversion:2.1\nend:vcard\n",
                                           "BEGIN:VCARD\nN:a\nEND:VCARD\n \n",
                                           "BEGIN:VCARD\nN:a\nEND:VCA\n RD\n",
                                           "BEGIN:VCARD\nNOTE;ENCODING=QUOTED-PRINTABLE:x=\nEND:VCARD\n",
                                           "BEGIN:VCARD\nN:outer\nAGENT:\n" + inner + "TEL:1\nEND:VCARD\n",
                                           "BEGIN:VCARD\rN:a\rBDAY:soon\rEND:VCARD\r",
                                           "BEGIN:VCARD\nnothing\nN:a\nNOTE:END:VCARD\nEND:VCARD\n",
                                           krCard({"FN:Team", "KIND:group", "MEMBER:urn:uuid:1"}, "4.0"),
                                           "BEGIN:VCARD\nPHOTO;ENCODING=b:" + std::string(900, 'Q') + "\nEND:VCARD\n"};
  std::string text;
  for (size_t i = 0; i < cards; ++i) {
    text += random() % 4 == 0 ? krRichCard(random() % 2 == 0 ? "2.1" : "3.0") : krRandomCard(random);
    if (random() % 4 == 0) text += others[random() % others.size()];
  }
  return text;
}

std::string plainFile(size_t cards) {
  std::string text;
  for (size_t i = 0; i < cards; ++i) text += krCard({"N:" + std::to_string(i), i % 7 == 0 ? "no colon" : "TEL:1"});
  return text;
}

TEST(KRVCardReadAheadThreads, TellsOfAPlainFileWhatTheReaderDoes) {
  const std::string text = plainFile(2000);
  for (const size_t block : {size_t{300}, size_t{1000}, size_t{4096}, text.size(), text.size() + 1}) {
    const Ahead ahead = toldAhead(text, block);
    EXPECT_EQ(ahead.text, told(text, block)) << block;
    // All blocks but the first and the end.
    const size_t blocks = text.size() / block;
    EXPECT_EQ(ahead.taken, blocks > 0 ? blocks - 1 : 0) << block;
  }
}

TEST(KRVCardReadAheadThreads, TellsOfMixedFilesWhatTheReaderDoes) {
  std::mt19937 random(4);
  size_t taken = 0;
  for (int i = 0; i < 60; ++i) {
    const std::string text = mixedFile(random, 60);
    const size_t block = 100 + random() % 4000;
    const Ahead ahead = toldAhead(text, block);
    ASSERT_EQ(ahead.text, told(text, block)) << "file " << i << ", block " << block;
    taken += ahead.taken;
  }
  EXPECT_GT(taken, 200U);
}

TEST(KRVCardReadAheadThreads, TellsOfFilesCutAndChangedWhatTheReaderDoes) {
  std::mt19937 random(5);
  for (int i = 0; i < 60; ++i) {
    std::string text = mixedFile(random, 30);
    for (size_t change = random() % 20; change != 0; --change) {
      constexpr std::string_view kBytes = "\r\n :;=\\\"\x1B\xE4VCARD";
      text[random() % text.size()] = kBytes[random() % kBytes.size()];
    }
    text.erase(random() % text.size(), random() % 500);
    text.resize(text.size() - random() % 200);
    const size_t block = 50 + random() % 2000;
    ASSERT_EQ(toldAhead(text, block).text, told(text, block)) << "file " << i << ", block " << block;
  }
}

TEST(KRVCardReadAheadThreads, GoesOnWithACharacterSetThatWasGuessedOnTheWay) {
  std::string text = plainFile(100);
  for (int i = 0; i < 400; ++i) {
    text += krCard({"N:M\xFCller;J\xF6rg " + std::to_string(i),
                    "NOTE:Gr\xFC\xDF"
                    "e aus K\xF6ln"});
  }
  for (const size_t block : {size_t{500}, size_t{2000}}) {
    const Ahead ahead = toldAhead(text, block);
    EXPECT_EQ(ahead.text, told(text, block)) << block;
    EXPECT_NE(ahead.text.find("Müller"), std::string::npos);
    // Those that were under way when it was guessed are lost.
    EXPECT_GT(ahead.taken, text.size() / block / 2);
  }
}

TEST(KRVCardReadAheadThreads, ReadsAgainWhatWasReadBeforeACharacterSetWasGuessed) {
  // What follows looks like another character set when it is looked at alone.
  std::string text = plainFile(40) + krCard({"N:M\xFCller;J\xF6rg",
                                             "NOTE:Gr\xFC\xDF"
                                             "e aus K\xF6ln \xE4\xF6\xFC"});
  for (int i = 0; i < 100; ++i) text += krCard({"N:\x8E\x52\x93\x63;\x91\xBE\x98\x59\x82\xB3\x82\xF1"});
  for (size_t block = 400; block < 2600; block += 100) {
    ASSERT_EQ(toldAhead(text, block).text, told(text, block)) << block;
  }
}

TEST(KRVCardReadAheadThreads, TellsOfOtherTextOnceThatRunsThroughSeveralBlocks) {
  std::string text;
  for (int i = 0; i < 400; ++i) text += "other text: " + std::to_string(i) + "\r\n";
  text += plainFile(200);
  for (const size_t block : {size_t{500}, size_t{1000}, size_t{1234}}) {
    EXPECT_EQ(toldAhead(text, block).text, told(text, block)) << block;
  }
}

TEST(KRVCardReadAheadThreads, ReadsFilesOfTestDataAsTheReaderDoes) {
  size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KR_TEST_DATA_DIR) + "/vcard")) {
    const std::string one = KRTestFolder::contentOf(entry.path().string());
    std::string text;
    for (int i = 0; i < 8; ++i) text += one;
    for (size_t block = 16; block < text.size() + 200; block += 97) {
      ASSERT_EQ(toldAhead(text, block).text, told(text, block)) << entry.path() << ", block " << block;
    }
    ++files;
  }
  EXPECT_GE(files, 6U);
}

TEST(KRVCardReadAheadThreads, ReadsNothingAheadOnOneProcessor) {
  const std::string text = plainFile(500);
  const Ahead ahead = toldAhead(text, 1000, 1);
  EXPECT_EQ(ahead.text, told(text, 1000));
  EXPECT_EQ(ahead.taken, 0U);
}

TEST(KRVCardReadAheadThreads, StopsWhereMostIsReadInVain) {
  // What stands between the cards is no part of them, so that none begins where the one before it ends.
  std::string text;
  for (int i = 0; i < 2000; ++i) text += krCard({"N:" + std::to_string(i)}) + "junk\r\n";
  const Ahead ahead = toldAhead(text, 1000);
  EXPECT_EQ(ahead.text, told(text, 1000));
  EXPECT_GT(ahead.missed, 0U);
  EXPECT_LT(ahead.missed, 20U);
}

TEST(KRVCardReadAheadThreads, HandsOutAllThatItWasFedWhenAFileBreaksOff) {
  constexpr size_t kBlock = 1000;
  const std::string text = plainFile(1000);
  for (size_t blocks = 1; blocks < 12; ++blocks) {
    Told plain(kBlock);
    Told told(kBlock);
    KRVCardReadAhead ahead(told.reader, 2);
    std::string_view rest = text;
    std::string_view sameRest = text;
    for (size_t i = 0; i < blocks; ++i) {
      feedNext(plain.reader, kBlock, rest);
      feedNext(ahead, kBlock, sameRest);
    }
    ahead.catchUp();
    EXPECT_EQ(told.end(), plain.end()) << blocks;
  }
}

TEST(KRVCardReadAheadThreads, TellsNothingMoreWhenItGoesInTheMidst) {
  const std::string text = plainFile(1000);
  std::string before;
  Told told(1000);
  {
    KRVCardReadAhead ahead(told.reader, 2);
    std::string_view rest = text;
    for (int i = 0; i < 6; ++i) feedNext(ahead, 1000, rest);
    static_cast<void>(ahead.room());
    before = told.text;
  }
  EXPECT_EQ(told.text, before);
  EXPECT_FALSE(before.empty());
}

}  // namespace
