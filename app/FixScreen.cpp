#include "app/FixScreen.h"

#include <algorithm>
#include <utility>

#include "app/DisplayText.h"
#include "app/FixKeys.h"
#include "app/PersonText.h"
#include "issues/KRIssueContext.h"

namespace {

using Line = FixScreen::Line;
using Row = ContactColumns::Row;
using Mark = ContactColumns::Mark;

/// In front of the values: a mark and the property's name.
constexpr size_t kHeading = 16;
/// A column that is narrower tells nothing.
constexpr size_t kColumn = 20;
/// Values are shown however low the screen is.
constexpr size_t kFewestRows = 4;
/// Lines that the sentence of a finding may take.
constexpr size_t kSentence = 3;

std::string markOf(Mark mark) {
  switch (mark) {
    case Mark::Differs:
      return "≠ ";
    case Mark::Repeated:
      return "= ";
    case Mark::None:
      break;
  }
  return "  ";
}

std::string withoutBlanksBehind(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

/// As many rows as there is room for: what is the same in all contacts goes first, from the end. How many went.
size_t shorten(std::vector<Row>& rows, size_t room) {
  const size_t before = rows.size();
  if (before <= room) return 0;
  // A line is needed for telling that some are missing.
  const size_t kept = room - 1;
  for (auto row = rows.end(); rows.size() > kept && row != rows.begin();) {
    --row;
    if (row->mark == Mark::None) row = rows.erase(row);
  }
  if (rows.size() > kept) rows.resize(kept);
  return before - rows.size();
}

}  // namespace

FixScreen::FixScreen(std::string book, size_t width, size_t height)
    : book_(std::move(book)), width_(width), height_(height) {}

size_t FixScreen::columns() const noexcept {
  return std::max<size_t>((width_ - kHeading) / (kColumn + 1), 1);
}

void FixScreen::addText(std::vector<Line>& lines, const std::string& text, Style style, size_t indent) const {
  for (const std::string& each : wrappedText(text, width_ - indent)) {
    lines.push_back({std::string(indent, ' ') + each, style});
  }
}

void FixScreen::addHead(std::vector<Line>& lines, const FixSession& session) const {
  std::string text = book_ + " · " + std::to_string(session.openCount()) + " of " +
                     counted(session.count(), "finding", "findings") + " open";
  if (session.unsavedCount() > 0) text += " · " + counted(session.unsavedCount(), "step", "steps") + " not saved";
  lines.push_back({fittedText(text, width_), Style::Faint});
}

std::string FixScreen::cells(const std::vector<std::string>& texts) const {
  const size_t count = std::min(texts.size(), columns());
  const size_t each = (width_ - kHeading) / std::max<size_t>(count, 1) - 1;
  std::string line;
  for (const std::string& text : texts) {
    const std::string cell = fittedText(text, each);
    line += cell + padding(cell, each + 1);
  }
  return line;
}

void FixScreen::addContacts(std::vector<Line>& lines, const KRPersonArray& persons, size_t first, size_t room) const {
  const size_t end = std::min(persons.count(), first + columns());
  std::vector<std::vector<PersonRow>> contacts;
  std::vector<std::string> names;
  for (size_t i = first; i < end; ++i) {
    contacts.push_back(PersonRows::whole(*persons.at(i)));
    const std::string number = persons.count() > 1 ? std::to_string(i + 1) + " " : std::string();
    names.push_back(number + personText(*persons.at(i)));
  }
  lines.push_back({withoutBlanksBehind(std::string(kHeading, ' ') + cells(names)), Style::Strong});
  if (end - first < persons.count()) {
    const std::string count = "of " + std::to_string(persons.count()) + " contacts; n shows others";
    lines.push_back({std::string(kHeading, ' ') + fittedText(count, width_ - kHeading), Style::Faint});
  }
  std::vector<Row> rows = ContactColumns::of(contacts);
  const size_t missing = shorten(rows, std::max(room, kFewestRows));
  const std::string* heading = nullptr;
  for (Row& row : rows) {
    const bool isRepeated = heading != nullptr && *heading == row.heading;
    heading = &row.heading;
    const std::string title = isRepeated ? std::string() : fittedText(row.heading, kHeading - 3);
    // A value that only others have is seen as missing.
    for (std::string& cell : row.cells) cell = cell.empty() ? "–" : cell;
    lines.push_back({withoutBlanksBehind(markOf(row.mark) + title + padding(title, kHeading - 2) + cells(row.cells)),
                     row.mark == Mark::None ? Style::Plain : Style::Warning});
  }
  if (missing > 0) {
    const std::string count = "and " + counted(missing, "more line", "more lines") + "; v shows all";
    lines.push_back({std::string(kHeading, ' ') + fittedText(count, width_ - kHeading), Style::Faint});
  }
}

std::vector<Line> FixScreen::foot(const FixSession& session, const std::string& message) const {
  std::vector<Line> lines;
  lines.push_back({});
  KRIssueObject* finding = session.current();
  size_t number = 0;
  for (const auto& handle : session.fixes()) {
    std::string text = std::to_string(++number) + "  " + shownText(handle->title(finding).view());
    const std::string info = shownText(handle->resultInfo(finding).view());
    if (!info.empty()) text += " – " + info;
    bool isFirst = true;
    for (const std::string& each : wrappedText(text, width_ - 3)) {
      lines.push_back({(isFirst ? "" : "   ") + each, Style::Plain});
      isFirst = false;
    }
  }
  for (std::string& keys : FixKeys::legend(width_)) lines.push_back({std::move(keys), Style::Faint});
  if (!session.undoable().empty()) {
    lines.push_back({fittedText("u takes back: " + shownText(session.undoable()), width_), Style::Faint});
  }
  // As a whole: it may be the reason why nothing could be saved.
  if (!message.empty()) addText(lines, message, Style::Strong);
  return lines;
}

std::vector<Line> FixScreen::finding(const FixSession& session, size_t first, const std::string& message) const {
  const KRIssueObject& finding = *session.current();
  std::vector<Line> lines;
  addHead(lines, session);
  const std::string title = shownText(finding.issue()->displayName().view());
  lines.push_back(
      {fittedText(title + " (" + std::to_string(session.openCountOfIssue()) + " open)", width_), Style::Heading});
  std::vector<Line> sentence;
  addText(sentence, shownText(finding.describe().view()), Style::Plain);
  if (sentence.size() > kSentence) sentence.resize(kSentence);
  lines.insert(lines.end(), sentence.begin(), sentence.end());
  lines.push_back({});
  const std::vector<Line> last = foot(session, message);
  // The names, and the line of the prompt.
  const size_t taken = lines.size() + last.size() + 3;
  addContacts(lines, finding.persons(), first, height_ - std::min(height_, taken));
  lines.insert(lines.end(), last.begin(), last.end());
  return lines;
}

std::vector<Line> FixScreen::end(const FixSession& session, const std::string& message) const {
  std::vector<Line> lines;
  addHead(lines, session);
  lines.push_back({});
  if (session.count() == 0) {
    lines.push_back({"Nothing to clean up.", Style::Good});
  } else if (session.openCount() == 0) {
    lines.push_back({"Every finding is settled.", Style::Good});
  } else {
    addText(lines,
            "This was the last one; " + counted(session.openCount(), "finding was", "findings were") +
                " left for later (b goes back to them).",
            Style::Plain);
  }
  const std::vector<Line> last = foot(session, message);
  lines.insert(lines.end(), last.begin(), last.end());
  return lines;
}
