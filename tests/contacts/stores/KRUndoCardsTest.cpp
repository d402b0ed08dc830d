#include "contacts/stores/KRUndoCards.h"

#include <gtest/gtest.h>

#include "tests/contacts/vcard/VCardSamples.h"

namespace {

uint64_t markOf(const std::vector<std::string>& lines) {
  return KRUndoCards::markOf(krCard(lines));
}

TEST(KRUndoCards, ComeBackFromTheirFields) {
  KRUndoCards done;
  done.ID = "desktop:system"_kr;
  done.name = "Personal"_kr;
  done.place = "Here"_kr;
  done.cards = {{"ann", krCard({"FN:Ann"}), {}}, {"new", {}, 7}};
  const std::string fields = done.fields();
  const auto again = KRUndoCards::read(fields);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->ID, done.ID);
  EXPECT_EQ(again->called(), "Personal (Here)");
  ASSERT_EQ(again->cards.size(), 2U);
  EXPECT_EQ(again->cards[0].UID, "ann");
  EXPECT_EQ(again->cards[0].before, done.cards[0].before);
  EXPECT_EQ(again->cards[0].markBefore(), KRUndoCards::markOf(done.cards[0].before));
  EXPECT_FALSE(again->cards[0].after);
  EXPECT_FALSE(again->cards[1].markBefore());
  EXPECT_EQ(again->cards[1].after, 7U);
  EXPECT_FALSE(KRUndoCards::read(fields.substr(0, fields.size() - 1)));
}

TEST(KRUndoCards, TheMarkLeavesOutWhatTheServiceSetsOfItself) {
  const uint64_t mark = markOf({"FN:Ann", "TEL;TYPE=HOME,CELL:1", "NOTE:x", "UID:ann", "REV:1"});
  EXPECT_EQ(markOf({"UID:other", "NOTE:x", "REV:2", "FN:Ann", "TEL;TYPE=HOME,CELL:1", "PRODID:me"}), mark);
  EXPECT_EQ(markOf({"FN:Ann", "TEL;TYPE=HOME,CELL;X-EVOLUTION-E164=\"1\",\"\":1", "NOTE:x"}), mark);
  EXPECT_EQ(markOf({"FN:Ann", "TEL;TYPE=\"HOME,CELL\":1", "NOTE:x"}), mark);
}

TEST(KRUndoCards, TheMarkChangesWithWhatTheCardSays) {
  const uint64_t mark = markOf({"FN:Ann", "TEL;TYPE=HOME:1", "TEL:2", "PHOTO;ENCODING=b:AAAA"});
  EXPECT_EQ(markOf({"PHOTO;TYPE=JPEG;ENCODING=b:AAAA", "FN:Ann", "TEL;TYPE=HOME:1", "TEL:2"}), mark);
  for (const std::vector<std::string>& other :
       std::vector<std::vector<std::string>>{{"FN:Anne", "TEL;TYPE=HOME:1", "TEL:2", "PHOTO;ENCODING=b:AAAA"},
                                             {"FN:Ann", "TEL;TYPE=WORK:1", "TEL:2", "PHOTO;ENCODING=b:AAAA"},
                                             {"FN:Ann", "TEL:2", "TEL;TYPE=HOME:1", "PHOTO;ENCODING=b:AAAA"},
                                             {"FN:Ann", "TEL;TYPE=HOME:1", "PHOTO;ENCODING=b:AAAA"},
                                             {"FN:Ann", "TEL;TYPE=HOME:1", "TEL:2", "PHOTO;ENCODING=b:AAAB"},
                                             {"FN:Ann", "TEL;TYPE=HOME:1", "TEL:2"}})
    EXPECT_NE(markOf(other), mark);
}

}  // namespace
