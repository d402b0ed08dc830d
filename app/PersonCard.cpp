#include "app/PersonCard.h"

#include <algorithm>
#include <string>
#include <vector>

#include "app/DisplayText.h"
#include "app/PersonRows.h"
#include "app/PersonText.h"

namespace {

constexpr size_t kHeadingWidth = 16;
/// A longer label does not widen the column for all.
constexpr size_t kWidestLabel = 14;

/// The lines of a text of several, escaped.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    std::string_view line = std::string_view(text).substr(at, end - at);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back(shownText(line));
    at = end + 1;
  }
  while (lines.size() > 1 && lines.back().empty()) lines.pop_back();
  return lines;
}

/// The text in lines of at most `width` cells, without spaces at their ends.
std::vector<std::string> wrappedTightly(std::string_view text, size_t width) {
  std::vector<std::string> lines = wrappedText(text, width);
  for (std::string& line : lines) line.erase(line.find_last_not_of(' ') + 1);
  return lines;
}

std::string headline(const IKRPerson& person) {
  if (person.isOrganization() || person.displayName().isEmpty()) return personText(person);
  KRHold hold;
  std::string text;
  const auto add = [&](std::string_view part) {
    if (part.find_first_not_of(' ') != std::string_view::npos) text += (text.empty() ? "" : " ") + shownText(part);
  };
  add(person.readText(KROrdinal::Title, hold).view());
  add(person.showName().view());
  add(person.readText(KROrdinal::Suffix, hold).view());
  return text.empty() ? personText(person) : text;
}

class CardPrinter {
 public:
  CardPrinter(Terminal& terminal, size_t margin, const std::vector<PersonRow>& rows)
      : terminal_(terminal), margin_(margin) {
    for (const PersonRow& row : rows) {
      const size_t width = displayWidth(shownText(row.label));
      if (width <= kWidestLabel) labelWidth_ = std::max(labelWidth_, width);
    }
  }

  void print(const PersonRow& row, bool repeatsHeading) const {
    const std::string heading = repeatsHeading ? std::string() : fittedText(row.heading, kHeadingWidth - 1);
    const std::string label = shownText(row.label);
    // Values with labels stand in a column of their own; those of a property without any need no such room.
    const size_t room = row.label.empty() && !isLabelled_ ? 0 : labelWidth_ + 2;
    const size_t indent = margin_ + kHeadingWidth + room;
    std::string start = std::string(margin_, ' ') + terminal_.styled(Style::Faint, heading);
    start += padding(heading, kHeadingWidth);
    if (displayWidth(label) > labelWidth_) {
      // A label that is too long for its column has lines of its own.
      const size_t margin = margin_ + kHeadingWidth;
      for (const std::string& each : wrappedTightly(label, roomAfter(margin))) {
        terminal_.line(start + terminal_.styled(Style::Faint, each));
        start.assign(margin, ' ');
      }
      start.assign(indent, ' ');
    } else if (room != 0) {
      start += terminal_.styled(Style::Faint, label) + padding(label, labelWidth_) + "  ";
    }
    for (const std::string& line : linesOf(row.text)) {
      for (const std::string& each : wrappedTightly(line, roomAfter(indent))) {
        // An empty line of a note leaves no spaces behind.
        const bool isNothing = each.empty() && start.find_first_not_of(' ') == std::string::npos;
        terminal_.line(isNothing ? std::string() : start + each);
        start.assign(indent, ' ');
      }
    }
  }

  /// Whether the rows that follow belong to a property some of whose values have labels.
  void setLabelled(bool isLabelled) { isLabelled_ = isLabelled; }

 private:
  size_t roomAfter(size_t indent) const { return terminal_.width() - std::min(terminal_.width() - 8, indent); }

  Terminal& terminal_;
  size_t margin_;
  size_t labelWidth_ = 0;
  bool isLabelled_ = false;
};

}  // namespace

void PersonCard::print(Terminal& terminal, const IKRPerson& person, size_t number, size_t digits) {
  const std::string figure = std::to_string(number);
  const size_t margin = digits + 2;
  std::string start = std::string(digits - std::min(digits, figure.size()), ' ') + figure + "  ";
  start = terminal.styled(Style::Faint, start);
  const std::string mark = person.isOrganization() ? terminal.styled(Style::Faint, "  company") : std::string();
  const std::vector<std::string> title = wrappedTightly(headline(person), terminal.width() - margin - 9);
  for (const std::string& line : title) {
    terminal.line(start + terminal.styled(Style::Strong, line) + (&line == &title.back() ? mark : std::string()));
    start = std::string(margin, ' ');
  }
  const std::vector<PersonRow> all = PersonRows::ofCard(person);
  CardPrinter printer(terminal, margin, all);
  for (auto row = all.begin(); row != all.end(); ++row) {
    const bool isRepeated = row != all.begin() && std::prev(row)->heading == row->heading;
    if (!isRepeated) {
      printer.setLabelled(std::any_of(
          row, all.end(), [&](const PersonRow& each) { return each.heading == row->heading && !each.label.empty(); }));
    }
    printer.print(*row, isRepeated);
  }
}
