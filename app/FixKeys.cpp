#include "app/FixKeys.h"

namespace {

struct Row {
  std::string_view pressed;
  FixAction action;
  /// In the legend; empty for a second key of the same meaning.
  std::string_view title;
};

constexpr Row kRows[] = {
    {"i", FixAction::Ignore, "Ignore"},
    {"s", FixAction::Skip, "Skip"},
    {"\x1b[C", FixAction::Skip, ""},
    {"\x1b[B", FixAction::Skip, ""},
    {"b", FixAction::Back, "Back"},
    {"\x1b[D", FixAction::Back, ""},
    {"\x1b[A", FixAction::Back, ""},
    {"e", FixAction::Edit, "Edit"},
    {"a", FixAction::All, "All of this issue"},
    {"v", FixAction::View, "View whole"},
    {"n", FixAction::Further, "Next contacts"},
    {"u", FixAction::Undo, "Undo"},
    {"w", FixAction::Save, "Save"},
    {"q", FixAction::Quit, "Quit"},
    // Ctrl-C asks too, as long as the program waits for a key.
    {"\x03", FixAction::Quit, ""},
};

}  // namespace

FixKey FixKeys::of(std::string_view pressed) {
  if (pressed.size() == 1 && pressed.front() >= '1' && pressed.front() <= '9') {
    return {FixAction::Fix, static_cast<size_t>(pressed.front() - '0')};
  }
  std::string lowered(pressed);
  if (pressed.size() == 1 && pressed.front() >= 'A' && pressed.front() <= 'Z') {
    lowered.front() = static_cast<char>(pressed.front() - 'A' + 'a');
  }
  for (const Row& row : kRows) {
    if (row.pressed == lowered) return {row.action, 0};
  }
  return {};
}

std::vector<std::string> FixKeys::legend(size_t width) {
  constexpr std::string_view kBetween = " · ";
  constexpr size_t kBetweenCells = 3;
  std::vector<std::string> lines;
  size_t taken = 0;
  for (const Row& row : kRows) {
    if (row.title.empty()) continue;
    // Keys and titles are of ASCII: a cell for each byte.
    const std::string entry = std::string(row.pressed) + " " + std::string(row.title);
    if (lines.empty() || taken + kBetweenCells + entry.size() > width) {
      lines.push_back(entry);
      taken = entry.size();
    } else {
      lines.back().append(kBetween).append(entry);
      taken += kBetweenCells + entry.size();
    }
  }
  return lines;
}
