#include "contacts/vcard/KRVCardLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// "name|value@number" of each line, or "value@number" for one without a colon.
std::vector<std::string> linesOf(std::string_view text, bool returnsEndLines = true) {
  KRVCardLines lines;
  lines.start(text, true, 1);
  lines.setReturnsEndLines(returnsEndLines);
  std::vector<std::string> shown;
  KRVCardLine line;
  while (lines.next(line) == KRVCardLines::Result::Line) {
    std::string text = line.hasGroup() ? std::string(line.group()) + "." : "";
    if (line.hasName()) text += std::string(line.name()) + "|";
    shown.push_back(text + std::string(line.value) + "@" + std::to_string(line.number));
  }
  return shown;
}

using Lines = std::vector<std::string>;

TEST(KRVCardLines, EndAtEveryKindOfLineEnd) {
  EXPECT_EQ(linesOf("A:1\r\nB:2\nC:3\rD:4"), (Lines{"A|1@1", "B|2@2", "C|3@3", "D|4@4"}));
  EXPECT_EQ(linesOf("A:1\r\r\nB:2\r\r\n"), (Lines{"A|1@1", "B|2@2"}));
  EXPECT_EQ(linesOf("A:1\r\nB:2\r", false), (Lines{"A|1@1", "B|2@2"}));
  EXPECT_EQ(linesOf("\n\nA:1\n\n\nB:2\n"), (Lines{"A|1@3", "B|2@6"}));
  EXPECT_EQ(linesOf(""), Lines());
}

TEST(KRVCardLines, TakeALoneReturnAsTextWhereLinesEndOtherwise) {
  EXPECT_EQ(linesOf("NOTE:one\rtwo\r\nFN:x\r\n", false), (Lines{"NOTE|one\rtwo@1", "FN|x@2"}));
  EXPECT_EQ(linesOf("NOTE:one\rFN:x\r\nitem1.TEL:1\r\n", false), (Lines{"NOTE|one@1", "FN|x@2", "item1.TEL|1@3"}));
}

TEST(KRVCardLines, UndoFoldsByOneBlank) {
  EXPECT_EQ(linesOf("NOTE:a\r\n b\n\tc\r  d\nFN:x"), (Lines{"NOTE|abc d@1", "FN|x@5"}));
  EXPECT_EQ(linesOf("NO\n TE;TY\n PE=x:y\n z"), (Lines{"NOTE|yz@1"}));
  EXPECT_EQ(linesOf("NOTE:a\n \n b\n"), (Lines{"NOTE|ab@1"}));
}

TEST(KRVCardLines, JoinSoftLineBreaks) {
  EXPECT_EQ(linesOf("A;QUOTED-PRINTABLE:x=\ny=\r\nz\nB:1"), (Lines{"A|xyz@1", "B|1@4"}));
  EXPECT_EQ(linesOf("A;ENCODING=QUOTED-PRINTABLE:x=  \n y\n"), (Lines{"A|x y@1"}));
  EXPECT_EQ(linesOf("A;ENCODING=QUOTED-PRINTABLE:x\n y=\nz"), (Lines{"A|xyz@1"}));
  EXPECT_EQ(linesOf("A;ENCODING=QUOTED-PRINTABLE:x=\n\nB:1"), (Lines{"A|x@1", "B|1@3"}));
  EXPECT_EQ(linesOf("A;ENCODING=QUOTED-PRINTABLE:x=\nEND:VCARD\n"), (Lines{"A|x@1", "END|VCARD@2"}));
  EXPECT_EQ(linesOf("URL:http://x/?a=\nB:1"), (Lines{"URL|http://x/?a=@1", "B|1@2"}));
}

TEST(KRVCardLines, KeepBase64WithOrWithoutIndent) {
  KRVCardLines lines;
  KRVCardLine line;
  const std::string text = "PHOTO;BASE64:\r\nQUJD\r\n REVG\r\n\r\nFN:x\r\n";
  lines.start(text, true, 1);
  ASSERT_EQ(lines.next(line), KRVCardLines::Result::Line);
  EXPECT_EQ(line.raw, "\r\nQUJD\r\n REVG");
  ASSERT_EQ(lines.next(line), KRVCardLines::Result::Line);
  EXPECT_EQ(line.name(), "FN");
  EXPECT_EQ(line.number, 5U);
}

TEST(KRVCardLines, EndBase64AtAPropertyWhereTheEmptyLineIsMissing) {
  EXPECT_EQ(linesOf("PHOTO;ENCODING=b:QUJD\nREVG\nTEL:1"), (Lines{"PHOTO|QUJD@1", "TEL|1@3"}));
}

TEST(KRVCardLines, TakeHeadsApart) {
  EXPECT_EQ(linesOf("a.b.TEL;X=\"1:2;3\":4"), Lines{"a.b.TEL|4@1"});
  EXPECT_EQ(linesOf("TEL;X=\"open:4"), Lines{"TEL|4@1"});
  EXPECT_EQ(linesOf("no colon"), Lines{"no colon@1"});
  EXPECT_EQ(linesOf(" TEL : 4"), Lines{"TEL| 4@1"});
  EXPECT_EQ(linesOf(":4"), Lines{"4@1"});
}

TEST(KRVCardLines, AskForMoreRatherThanGuess) {
  for (const std::string text : {"A:1", "A:1\r", "A:1\n", "A:1\n b\n", "A;BASE64:QQ\nQ", "A;QUOTED-PRINTABLE:x=\n"}) {
    KRVCardLines lines;
    KRVCardLine line;
    lines.start(text, false, 1);
    EXPECT_EQ(lines.next(line), KRVCardLines::Result::NeedsMore) << text;
    EXPECT_EQ(lines.position(), text.data());
    lines.start(text, true, 1);
    EXPECT_EQ(lines.next(line), KRVCardLines::Result::Line) << text;
  }
}

TEST(KRVCardLines, TakeManyReturnsInLinearTime) {
  const std::string returns(2'000'000, '\r');
  EXPECT_EQ(linesOf("A:1\n" + returns + "B:2").size(), 2U);
  EXPECT_EQ(linesOf("A:" + returns, false).size(), 1U);
}

}  // namespace
