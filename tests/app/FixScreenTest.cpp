#include "app/FixScreen.h"

#include <gmock/gmock.h>

#include "app/DisplayText.h"
#include "app/FixKeys.h"
#include "tests/app/Walk.h"
#include "tests/support/KRPersonSketch.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class FixScreenTest : public Walk {
 protected:
  static std::vector<std::string> texts(const std::vector<FixScreen::Line>& lines) {
    std::vector<std::string> all;
    for (const FixScreen::Line& line : lines) all.push_back(line.text);
    return all;
  }
  static std::vector<std::string> shown(const FixSession& session, size_t width = 80, size_t height = 24,
                                        size_t first = 0, const std::string& message = {}) {
    return texts(FixScreen("Family", width, height).finding(session, first, message));
  }
  static std::string lineWith(const std::vector<std::string>& lines, std::string_view text) {
    for (const std::string& line : lines) {
      if (line.find(text) != std::string::npos) return line;
    }
    return {};
  }
};

TEST_F(FixScreenTest, ShowsTheContactsSideBySideAndWhatDiffers) {
  add("N:Barrow;Ann;;;\r\nTEL:1\r\nNOTE:tea\r\nUID:a\r\n");
  add("N:Barrow;Ann;;;\r\nTEL:1\r\nNOTE:milk\r\nORG:Elm\r\nUID:b\r\n");
  scan({KRIssueDuplicateNames});
  FixSession session(book(), result());
  const auto lines = shown(session);
  EXPECT_EQ(lines[0], "Family · 1 of 1 finding open");
  EXPECT_THAT(lines[1], HasSubstr("(1 open)"));
  EXPECT_THAT(lines, Contains(HasSubstr("1 Ann Barrow")));
  EXPECT_EQ(lineWith(lines, "1 Ann"), lineWith(lines, "2 Ann"));
  const std::string note = lineWith(lines, "tea");
  EXPECT_TRUE(note.starts_with("≠ Note")) << note;
  EXPECT_THAT(note, HasSubstr("milk"));
  // What only one of them has differs too, and is seen as missing in the other.
  EXPECT_TRUE(lineWith(lines, "Elm").starts_with("≠ ")) << lineWith(lines, "Elm");
  EXPECT_THAT(lineWith(lines, "Elm"), HasSubstr("–"));
  EXPECT_TRUE(lineWith(lines, "Last Name").starts_with("  ")) << lineWith(lines, "Last Name");
  EXPECT_THAT(lines, Contains(testing::StartsWith("1  Merge – ")));
}

TEST_F(FixScreenTest, MarksWhatAContactHasTwice) {
  add("N:Barrow;Ann;;;\r\nTEL;TYPE=HOME:1\r\nTEL;TYPE=WORK:1\r\nUID:a\r\n");
  scan({KRIssueDuplicatePhoneNumber});
  FixSession session(book(), result());
  const auto lines = FixScreen("Family", 80, 24).finding(session, 0, {});
  size_t repeated = 0;
  for (const FixScreen::Line& line : lines) {
    if (!line.text.starts_with("= ")) continue;
    ++repeated;
    EXPECT_EQ(line.style, Style::Warning);
  }
  EXPECT_EQ(repeated, 1U);
  // One contact needs no number.
  EXPECT_THAT(texts(lines), Not(Contains(HasSubstr("1 Ann Barrow"))));
}

TEST_F(FixScreenTest, ShowsALongMessageAsAWhole) {
  for (const auto lines : {kBell, kCole}) add(lines);
  scan({KRIssueSpacingInTheFirstName});
  const FixSession session(book(), result());
  std::string message = "nothing is saved:";
  for (size_t i = 0; i < 40; ++i) message += " reason" + std::to_string(i);
  std::string all;
  for (const std::string& line : shown(session, 80, 24, 0, message)) {
    EXPECT_LE(displayWidth(line), 80U);
    all += line + " ";
  }
  EXPECT_THAT(all, HasSubstr(message));
}

TEST_F(FixScreenTest, TellsTheLastStepAndWhatCanBeTakenBack) {
  for (const auto lines : {kBell, kCole}) add(lines);
  scan({KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  session.fix(session.fixes().front());
  const auto lines = shown(session, 80, 24, 0, "Done: this");
  EXPECT_EQ(lines[0], "Family · 1 of 2 findings open · 1 step not saved");
  EXPECT_EQ(lines.back(), "Done: this");
  EXPECT_EQ(lines[lines.size() - 2], "u takes back: Remove the space: Mary Jane Bell");
}

TEST_F(FixScreenTest, FitsAnyTerminal) {
  for (int i = 0; i < 5; ++i) {
    std::string lines = "N:Barrow;Ann;;;\r\nNOTE:" + std::string(300, 'x') + std::to_string(i) + "\r\n";
    for (int phone = 0; phone < 30; ++phone) lines += "TEL:" + std::to_string(i * 100 + phone) + "\r\n";
    add(lines + "UID:" + std::to_string(i) + "\r\n");
  }
  add("N:王;小明;;;\r\nNOTE:很长的文字很长的文字很长的文字\r\nUID:w1\r\n");
  add("N:王;小明;;;\r\nUID:w2\r\n");
  scan({KRIssueDuplicateNames});
  FixSession session(book(), result());
  for (; session.current() != nullptr; session.skip()) {
    for (const size_t width : {40U, 80U, 120U}) {
      const FixScreen screen("Family", width, 24);
      for (size_t first = 0; first < session.current()->persons().count(); first += screen.columns()) {
        const auto lines = texts(screen.finding(session, first, std::string(200, 'm')));
        for (const std::string& line : lines) EXPECT_LE(displayWidth(line), width) << line;
        // The narrowest needs more lines for the keys than there are.
        if (width >= 80) EXPECT_LT(lines.size(), 24U);
      }
    }
  }
}

TEST_F(FixScreenTest, ManyContactsAreShownInTurn) {
  for (const auto lines : {kAnn1, kAnn2, kAnn3}) add(lines);
  scan({KRIssueDuplicateNames});
  FixSession session(book(), result());
  EXPECT_EQ(FixScreen("Family", 40, 24).columns(), 1U);
  EXPECT_EQ(FixScreen("Family", 80, 24).columns(), 3U);
  const auto first = shown(session, 60, 24);
  EXPECT_THAT(first, Contains(HasSubstr("of 3 contacts; n shows others")));
  EXPECT_THAT(first, Not(Contains(HasSubstr("3 Ann"))));
  EXPECT_THAT(shown(session, 60, 24, 2), Contains(HasSubstr("3 Ann Barrow")));
  EXPECT_THAT(shown(session, 80, 24), Not(Contains(HasSubstr("n shows others"))));
}

TEST_F(FixScreenTest, WhereThereIsNoRoomWhatIsTheSameGoesFirst) {
  std::string same = "N:Barrow;Ann;;;\r\n";
  for (int i = 0; i < 20; ++i) same += "TEL:555" + std::to_string(100 + i) + "\r\n";
  add(same + "NOTE:tea\r\nUID:a\r\n");
  add(same + "NOTE:milk\r\nUID:b\r\n");
  scan({KRIssueDuplicateNames});
  FixSession session(book(), result());
  const auto lines = shown(session);
  EXPECT_THAT(lines, Contains(HasSubstr("milk")));
  EXPECT_THAT(lines, Contains(testing::ContainsRegex("and [0-9]+ more lines; v shows all")));
  EXPECT_THAT(shown(session, 80, 60), Not(Contains(HasSubstr("v shows all"))));
}

TEST_F(FixScreenTest, ControlCharactersOfAContactAreEscaped) {
  const auto bell = add(kBell);
  bell->setValue(
      krLabelled(krMake<KRObjectPersonName>("Mary\x1b[2J Jane"_kr, KRString(), "Bell"_kr), KRValueType::PersonName),
      KRProPertyName);
  scan({KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  ASSERT_NE(session.current(), nullptr);
  const auto lines = shown(session);
  EXPECT_THAT(lines, Contains(HasSubstr("Mary\\x1B[2J Jane")));
  for (const std::string& line : lines) EXPECT_EQ(line.find('\x1b'), std::string::npos) << line;
}

TEST_F(FixScreenTest, TheEndTellsWhatIsLeft) {
  const FixScreen screen("Family", 80, 24);
  FixSession nothing(book(), result());
  EXPECT_THAT(texts(screen.end(nothing, {})), Contains("Nothing to clean up."));
  for (const auto lines : {kBell, kCole}) add(lines);
  scan({KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  session.skip();
  session.skip();
  EXPECT_THAT(texts(screen.end(session, {})), Contains(HasSubstr("2 findings were left for later")));
  session.restart();
  session.ignore();
  session.ignore();
  const auto lines = texts(screen.end(session, "Done"));
  EXPECT_THAT(lines, Contains("Every finding is settled."));
  EXPECT_EQ(lines.back(), "Done");
}

}  // namespace
