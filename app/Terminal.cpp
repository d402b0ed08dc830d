#include "app/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "app/DisplayText.h"

namespace {

constexpr size_t kFallbackWidth = 80;
constexpr size_t kFallbackHeight = 24;
/// What is told is to be read: longer paths and identifiers are shortened, and longer lists.
constexpr size_t kLongestWord = 300;
constexpr size_t kLongestLine = 4000;

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

bool isDumb() {
  return environment("TERM") == "dumb";
}

/// Whether people read what goes there. What shows the output may say so where the system has no terminals to lend, as
/// in a bare root without them: KRCONTACTS_TERMINAL is "output" for standard output, "all" for standard error too.
bool isTerminal(int descriptor) {
  const std::string_view told = environment("KRCONTACTS_TERMINAL");
  if (told == "all" || (told == "output" && descriptor == STDOUT_FILENO)) return true;
  return ::isatty(descriptor) == 1;
}

/// What the terminal, else the environment says of a side of the screen.
size_t cells(int descriptor, unsigned short winsize::*side, const char* variable, size_t fallback) {
  winsize size{};
  if (::isatty(descriptor) == 1 && ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.*side > 0) {
    return size.*side;
  }
  const std::string_view text = environment(variable);
  size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value > 0 ? value : fallback;
}

size_t lineWidth(int descriptor) {
  return std::clamp<size_t>(cells(descriptor, &winsize::ws_col, "COLUMNS", kFallbackWidth), 40, 120);
}

std::string_view sequence(Style style) {
  switch (style) {
    case Style::Strong:
      return "\x1b[1m";
    case Style::Faint:
      return "\x1b[2m";
    case Style::Heading:
      return "\x1b[1;36m";
    case Style::Good:
      return "\x1b[32m";
    case Style::Warning:
      return "\x1b[33m";
    case Style::Plain:
      break;
  }
  return {};
}

/// The line, which is well-formed, at a length that can be read.
std::string readable(std::string_view line) {
  std::string text;
  while (!line.empty()) {
    const size_t end = std::min(line.find(' '), line.size());
    text += shortenedText(line.substr(0, end), kLongestWord);
    const size_t next = std::min(line.find_first_not_of(' ', end), line.size());
    text += line.substr(end, next - end);
    line.remove_prefix(next);
  }
  return shortenedText(text, kLongestLine);
}

}  // namespace

Terminal::Terminal()
    : out_(STDOUT_FILENO),
      progress_(STDERR_FILENO, isTerminal(STDERR_FILENO) && !isDumb()),
      width_(lineWidth(STDOUT_FILENO)),
      height_(std::clamp<size_t>(cells(STDOUT_FILENO, &winsize::ws_row, "LINES", kFallbackHeight), 12, 200)),
      hasScreen_(isTerminal(STDOUT_FILENO) && !isDumb()),
      colours_(isTerminal(STDOUT_FILENO) && environment("NO_COLOR").empty() && !isDumb()) {}

bool Terminal::canAsk() {
  return isTerminal(STDIN_FILENO) && isTerminal(STDERR_FILENO);
}

bool Terminal::canShowScreens() {
  return isTerminal(STDIN_FILENO) && isTerminal(STDOUT_FILENO);
}

void Terminal::clearScreen() {
  out_.write(hasScreen_ ? "\x1b[H\x1b[2J" : "\n");
}

std::string Terminal::styled(Style style, std::string_view text) const {
  if (!colours_ || style == Style::Plain || text.empty()) return std::string(text);
  std::string result(sequence(style));
  result += text;
  result += "\x1b[0m";
  return result;
}

void Terminal::paragraph(std::string_view text, Style style, size_t indent, size_t hanging) {
  // Every line is wrapped to the width of the hanging ones: a ragged first line would look like a mistake.
  size_t margin = indent;
  for (const std::string& each : wrappedText(text, width_ - std::min(width_ - 8, indent + hanging))) {
    out_.write(std::string(margin, ' '));
    line(styled(style, each));
    margin = indent + hanging;
  }
}

void Terminal::line(std::string_view text) {
  out_.write(text);
  out_.write('\n');
}

void Terminal::say(std::string_view line) {
  progress_.clear();
  const std::string whole = "krcontacts: " + readable(shownText(line));
  if (!isTerminal(STDERR_FILENO)) {
    writeAll(STDERR_FILENO, whole + "\n");
    return;
  }
  constexpr std::string_view kHanging = "  ";
  std::string text;
  for (const std::string& each : wrappedText(whole, lineWidth(STDERR_FILENO) - kHanging.size())) {
    text.append(text.empty() ? "" : kHanging).append(each).append("\n");
  }
  writeAll(STDERR_FILENO, text);
}
