#include "contacts/vcard/KRVCardHeads.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "contacts/model/KRLabelTable.h"

namespace {

/// Looks for a head that is the whole text.
const KRVCardHead& find(KRVCardHeads& heads, std::string_view text) {
  return heads.find(text, text.data() + text.size());
}

std::string group(const KRVCardHead& head, const std::string& text) {
  return std::string(head.group.of(text.data()));
}

std::string name(const KRVCardHead& head, const std::string& text) {
  return std::string(head.name.of(text.data()));
}

std::string parameters(const KRVCardHead& head, const std::string& text) {
  return std::string(head.parameterText.of(text.data()));
}

}  // namespace

TEST(KRVCardHeads, TellGroupNameAndParametersApart) {
  const struct {
    const char* text;
    const char* group;
    const char* name;
    const char* parameters;
    KRVCardMeaning meaning;
  } kRows[] = {
      {"", "", "", "", KRVCardMeaning::Unknown},
      {"TEL", "", "TEL", "", KRVCardMeaning::Phone},
      {"tel;TYPE=home", "", "tel", ";TYPE=home", KRVCardMeaning::Phone},
      {"item1.X-ABLabel", "item1", "X-ABLabel", "", KRVCardMeaning::GroupLabel},
      {" a.b . EMAIL\t;PREF=1", "a.b", "EMAIL", ";PREF=1", KRVCardMeaning::Email},
      {".ADR", "", "ADR", "", KRVCardMeaning::Address},
      {"TEL;X=\"a.b:c\"", "", "TEL", ";X=\"a.b:c\"", KRVCardMeaning::Phone},
      {"item1.;TYPE=home", "item1", "", ";TYPE=home", KRVCardMeaning::Unknown},
  };
  KRVCardHeads heads;
  for (int round = 0; round < 2; ++round) {
    for (const auto& row : kRows) {
      const std::string text = row.text;
      const KRVCardHead& head = find(heads, text);
      EXPECT_EQ(group(head, text), row.group) << text;
      EXPECT_EQ(name(head, text), row.name) << text;
      EXPECT_EQ(parameters(head, text), row.parameters) << text;
      ASSERT_NE(head.property, nullptr);
      EXPECT_EQ(head.property->meaning, row.meaning) << text;
    }
  }
}

TEST(KRVCardHeads, AreNotMistakenForOthersHoweverManyThereAre) {
  KRVCardHeads heads;
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 3000; ++i) {
      const std::string text = "TEL;TYPE=t" + std::to_string(i);
      ASSERT_EQ(KRLabelTable::name(find(heads, text).parameters.label), KRText(std::string_view(text).substr(9)));
      // One that is in use stays.
      ASSERT_EQ(name(find(heads, "EMAIL"), "EMAIL"), "EMAIL");
    }
  }
}

/// Of so many heads, each looked for in turn and then again, how many were read anew the second time.
template <class HeadOf>
int countReadAgain(int count, HeadOf headOf) {
  KRVCardHeads heads;
  // A head that is read again gets its text elsewhere.
  const auto placeOf = [&](int i) { return find(heads, headOf(i)).parameters.types.data(); };
  std::vector<const char*> places;
  for (int i = 0; i < count; ++i) places.push_back(placeOf(i));
  int moved = 0;
  for (int i = 0; i < count; ++i) moved += placeOf(i) != places[static_cast<size_t>(i)] ? 1 : 0;
  return moved;
}

TEST(KRVCardHeads, OfAFileAreNearlyAllRememberedAtOnce) {
  const auto headOf = [](int i) { return "item" + std::to_string(i) + ".TEL;TYPE=a-type-of-some-length"; };
  // Three heads may have to share the places of two; two never have to share one.
  EXPECT_LE(countReadAgain(100, headOf), 8);
}

TEST(KRVCardHeads, ThatDifferLateAreRememberedAtOnce) {
  const auto headOf = [](int i) {
    return "ADR;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE;TYPE=a-long-one-" + std::to_string(100 + i);
  };
  EXPECT_LE(countReadAgain(30, headOf), 3);
}

TEST(KRVCardHeads, AreToldApartByEachByte) {
  KRVCardHeads heads;
  for (size_t size = 1; size < 200; ++size) {
    std::string text = "TEL;X=" + std::string(size, 'a');
    ASSERT_EQ(parameters(find(heads, text), text).size(), size + 3);
    // The same but for the last byte, and a head that ends there.
    text.back() = ';';
    ASSERT_EQ(parameters(find(heads, text), text).back(), ';');
    text = std::string(size, 'b');
    ASSERT_EQ(name(find(heads, text), text), text);
    text.back() = '.';
    ASSERT_EQ(name(find(heads, text), text), "");
  }
}

TEST(KRVCardHeads, AreTheSameWhateverStandsBehindThem) {
  KRVCardHeads heads;
  for (size_t size = 0; size < 120; ++size) {
    const std::string head = "TEL" + std::string(size, 'x');
    const std::string text = head + ":+1 555 0100" + std::string(60, '\xFF');
    const KRVCardHead* const found =
        &heads.find(std::string_view(text).substr(0, head.size()), text.data() + text.size());
    ASSERT_EQ(name(*found, text), head);
    // Each in memory of its own size, so that a look beyond the end would be seen.
    for (size_t behind = 0; behind < 48; ++behind) {
      std::vector<char> bytes(head.begin(), head.end());
      bytes.resize(head.size() + behind, 'x');
      bytes.shrink_to_fit();
      ASSERT_EQ(&heads.find({bytes.data(), head.size()}, bytes.data() + bytes.size()), found) << size << ' ' << behind;
    }
  }
}

TEST(KRVCardHeads, WithZerosInThemAreNotShorterOnes) {
  KRVCardHeads heads;
  const std::string text("TEL\0", 4);
  EXPECT_EQ(find(heads, "TEL").property->meaning, KRVCardMeaning::Phone);
  EXPECT_EQ(find(heads, text).property->meaning, KRVCardMeaning::Unknown);
  EXPECT_EQ(find(heads, "TEL").property->meaning, KRVCardMeaning::Phone);
  const std::string behind = text + std::string(60, 'x');
  for (const auto& [size, meaning] : {std::pair(3U, KRVCardMeaning::Phone), std::pair(4U, KRVCardMeaning::Unknown)}) {
    const std::string_view head = std::string_view(behind).substr(0, size);
    EXPECT_EQ(heads.find(head, behind.data() + behind.size()).property->meaning, meaning);
  }
}
