#include "app/FixKeys.h"

#include <gtest/gtest.h>

#include <set>

#include "app/DisplayText.h"

namespace {

TEST(FixKeys, EachKeyHasItsMeaning) {
  const std::pair<std::string_view, FixAction> rows[] = {
      {"i", FixAction::Ignore},    {"s", FixAction::Skip},      {"b", FixAction::Back},     {"e", FixAction::Edit},
      {"a", FixAction::All},       {"v", FixAction::View},      {"n", FixAction::Further},  {"u", FixAction::Undo},
      {"w", FixAction::Save},      {"q", FixAction::Quit},      {"\x03", FixAction::Quit},  {"\x1b[C", FixAction::Skip},
      {"\x1b[B", FixAction::Skip}, {"\x1b[D", FixAction::Back}, {"\x1b[A", FixAction::Back}};
  for (const auto& [pressed, action] : rows) EXPECT_EQ(FixKeys::of(pressed).action, action) << pressed;
}

TEST(FixKeys, LettersMeanTheSameInEitherCase) {
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    const std::string small(1, letter);
    const std::string large(1, static_cast<char>(letter - 'a' + 'A'));
    EXPECT_EQ(FixKeys::of(small).action, FixKeys::of(large).action) << letter;
  }
  // The sequences of arrows do not: in small letters they are other keys.
  EXPECT_EQ(FixKeys::of("\x1b[c").action, FixAction::None);
}

TEST(FixKeys, DigitsAreTheNumbersOfFixes) {
  for (char digit = '1'; digit <= '9'; ++digit) {
    const FixKey key = FixKeys::of(std::string(1, digit));
    EXPECT_EQ(key.action, FixAction::Fix);
    EXPECT_EQ(key.number, static_cast<size_t>(digit - '0'));
  }
}

TEST(FixKeys, OtherKeysMeanNothing) {
  for (const std::string_view pressed : {"", "0", "12", "ii", " ", "\x1b", "\x1b[", "\x1b[5~", "\r", "é"}) {
    EXPECT_EQ(FixKeys::of(pressed).action, FixAction::None) << pressed;
  }
}

TEST(FixKeys, TheLegendNamesEachActionOfAKeyOnce) {
  std::set<FixAction> told;
  for (const std::string& line : FixKeys::legend(80)) {
    for (size_t start = 0; start < line.size();) {
      const size_t end = std::min(line.find(" · ", start), line.size());
      const std::string entry = line.substr(start, end - start);
      ASSERT_EQ(entry.find(' '), 1U) << entry;
      const FixAction action = FixKeys::of(entry.substr(0, 1)).action;
      EXPECT_NE(action, FixAction::None) << entry;
      EXPECT_TRUE(told.insert(action).second) << entry;
      start = end + std::string_view(" · ").size();
    }
  }
  EXPECT_EQ(told.size(), static_cast<size_t>(FixAction::None) - 1) << "all but the numbers of fixes";
}

TEST(FixKeys, TheLegendBreaksBetweenKeysOnly) {
  for (size_t width = 20; width < 130; ++width) {
    std::string all;
    for (const std::string& line : FixKeys::legend(width)) {
      EXPECT_LE(displayWidth(line), width);
      all += (all.empty() ? "" : " · ") + line;
    }
    EXPECT_EQ(all, FixKeys::legend(1000).front());
  }
  EXPECT_EQ(FixKeys::legend(80).size(), 2U);
}

}  // namespace
