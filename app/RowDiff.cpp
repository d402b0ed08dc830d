#include "app/RowDiff.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "app/DisplayText.h"

namespace {

using Rows = std::vector<PersonRow>;
using Line = RowDiff::Line;
using Sign = RowDiff::Sign;

constexpr size_t kHeadingWidth = 16;
constexpr size_t kLabelWidth = 10;

std::string keyOf(const PersonRow& row) {
  // No text of a contact holds a NUL.
  return row.heading + '\0' + row.label + '\0' + row.text;
}

std::unordered_map<std::string, size_t> counts(const Rows& rows) {
  std::unordered_map<std::string, size_t> result;
  for (const PersonRow& row : rows) ++result[keyOf(row)];
  return result;
}

/// Whether one of the rows that are left to be found is this one; takes it.
bool take(std::unordered_map<std::string, size_t>& left, const PersonRow& row) {
  const auto found = left.find(keyOf(row));
  if (found == left.end() || found->second == 0) return false;
  --found->second;
  return true;
}

size_t endOfProperty(const Rows& rows, size_t start) {
  size_t end = start;
  while (end < rows.size() && rows[end].heading == rows[start].heading) ++end;
  return end;
}

/// Walks both states property by property.
class Comparison {
 public:
  Comparison(const Rows& before, const Rows& after)
      : before_(before), after_(after), leftBefore_(counts(before)), leftAfter_(counts(after)) {
    for (const PersonRow& row : after) headingsAfter_.insert(row.heading);
  }

  std::vector<Line> lines() {
    size_t i = 0;
    size_t j = 0;
    while (i < before_.size() || j < after_.size()) {
      if (i < before_.size() && !headingsAfter_.contains(before_[i].heading)) {
        i = addBefore(i);
      } else if (i < before_.size() && j < after_.size() && before_[i].heading == after_[j].heading) {
        i = addBefore(i);
        j = addAfter(j);
      } else if (j < after_.size()) {
        headingsAfter_.erase(after_[j].heading);
        j = addAfter(j);
      } else {
        i = addBefore(i);
      }
    }
    return std::move(lines_);
  }

 private:
  size_t addBefore(size_t start) {
    const size_t end = endOfProperty(before_, start);
    for (size_t i = start; i < end; ++i) {
      lines_.push_back({take(leftAfter_, before_[i]) ? Sign::Kept : Sign::Removed, before_[i]});
    }
    return end;
  }
  size_t addAfter(size_t start) {
    const size_t end = endOfProperty(after_, start);
    for (size_t j = start; j < end; ++j) {
      if (!take(leftBefore_, after_[j])) lines_.push_back({Sign::Added, after_[j]});
    }
    return end;
  }

  const Rows& before_;
  const Rows& after_;
  std::unordered_map<std::string, size_t> leftBefore_;
  std::unordered_map<std::string, size_t> leftAfter_;
  std::unordered_set<std::string> headingsAfter_;
  std::vector<Line> lines_;
};

/// The text in one line; between quotes where blanks at its ends would not be seen.
std::string visible(const std::string& text) {
  const std::string shown = shownText(text);
  const bool hidesBlanks = shown.empty() || shown.front() == ' ' || shown.back() == ' ';
  return hidesBlanks ? "\"" + shown + "\"" : shown;
}

Style styleOf(Sign sign) {
  switch (sign) {
    case Sign::Removed:
      return Style::Warning;
    case Sign::Added:
      return Style::Good;
    case Sign::Kept:
      break;
  }
  return Style::Plain;
}

}  // namespace

std::vector<Line> RowDiff::of(const Rows& before, const Rows& after) {
  return Comparison(before, after).lines();
}

std::string_view RowDiff::mark(Sign sign) {
  switch (sign) {
    case Sign::Removed:
      return "-";
    case Sign::Added:
      return "+";
    case Sign::Kept:
      break;
  }
  return " ";
}

void RowDiff::print(Terminal& terminal, const std::vector<Line>& lines, size_t indent) {
  const size_t margin = indent + 2 + kHeadingWidth + kLabelWidth;
  for (const Line& line : lines) {
    const std::string heading = fittedText(line.row.heading, kHeadingWidth - 1);
    const std::string label = fittedText(shownText(line.row.label), kLabelWidth - 1);
    std::string start(mark(line.sign));
    start.append(" ").append(heading).append(padding(heading, kHeadingWidth));
    start.append(label).append(padding(label, kLabelWidth));
    for (const std::string& each : wrappedText(visible(line.row.text), terminal.width() - margin)) {
      terminal.line(std::string(indent, ' ') + terminal.styled(styleOf(line.sign), start + each));
      start.assign(margin - indent, ' ');
    }
  }
}
