#include "contacts/undo/KRUndoFields.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

std::string sample() {
  KRUndoWriter fields;
  fields.add("text").add(KRText()).add("").add(int64_t{-7}).addBytes(std::string_view("\0\xFF", 2)).addMark(~0ULL);
  return fields.take();
}

TEST(KRUndoFields, ComeBackAsTheyWere) {
  const std::string bytes = sample();
  KRUndoReader fields(bytes);
  EXPECT_EQ(fields.text(), "text");
  EXPECT_TRUE(fields.text().isNothing());
  const KRText empty = fields.text();
  EXPECT_TRUE(empty.isEmpty() && !empty.isNothing());
  EXPECT_EQ(fields.number(), -7);
  EXPECT_EQ(fields.bytes(), std::string_view("\0\xFF", 2));
  EXPECT_FALSE(fields.isAtEnd());
  EXPECT_EQ(fields.mark(), ~0ULL);
  EXPECT_TRUE(fields.isOk() && fields.isAtEnd());
}

TEST(KRUndoFields, AreNotReadBeyondTheirEnd) {
  const std::string bytes = sample();
  KRUndoReader fields(bytes);
  for (int i = 0; i < 20; ++i) fields.text();
  EXPECT_FALSE(fields.isOk());
  EXPECT_EQ(fields.number(), 0);
  EXPECT_TRUE(fields.text().isNothing());
}

TEST(KRUndoFields, TellDamageAnywhere) {
  const std::string bytes = sample();
  for (size_t i = 0; i < bytes.size(); ++i) {
    std::string changed = bytes;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    EXPECT_FALSE(KRUndoReader(changed).isOk()) << i;
    EXPECT_FALSE(KRUndoReader(std::string_view(bytes).substr(0, i)).isOk()) << i;
  }
  EXPECT_FALSE(KRUndoReader(bytes + "x").isOk());
}

TEST(KRUndoFields, DoNotTrustALength) {
  KRUndoWriter fields;
  fields.add(std::numeric_limits<int64_t>::max()).add(int64_t{9});
  const std::string bytes = fields.take();
  KRUndoReader reader(bytes);
  EXPECT_TRUE(reader.isOk());
  EXPECT_TRUE(reader.text().isNothing());
  EXPECT_FALSE(reader.isOk());
}

}  // namespace
