#include "app/DisplayText.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "app/DisplayWidthTable.h"
#include "platform/KRString.h"
#include "platform/KRText.h"

namespace {

bool holds(const CodePointRange* first, const CodePointRange* last, char32_t point) {
  const auto* range = std::upper_bound(first, last, point,
                                       [](char32_t value, const CodePointRange& each) { return value < each.first; });
  return range != first && point <= std::prev(range)->last;
}

size_t pointWidth(char32_t point) {
  if (point < 0x300) return 1;
  if (holds(std::begin(kWideRanges), std::end(kWideRanges), point)) return 2;
  return holds(std::begin(kZeroWidthRanges), std::end(kZeroWidthRanges), point) ? 0 : 1;
}

bool isDangerous(char32_t point) {
  return point < 0x20 || (point >= 0x7F && point < 0xA0) || (point >= 0x202A && point <= 0x202E) ||
         (point >= 0x2066 && point <= 0x2069) || point == 0x2028 || point == 0x2029 || point == 0x200E ||
         point == 0x200F || point == 0x061C || point == 0xFEFF;
}

std::string escaped(char32_t point) {
  if (point == '\n') return "\\n";
  if (point == '\r') return "\\r";
  if (point == '\t') return "\\t";
  char form[16];
  std::snprintf(form, sizeof form, point < 0x100 ? "\\x%02X" : "\\u%04X", static_cast<unsigned>(point));
  return form;
}

}  // namespace

size_t displayWidth(std::string_view text) {
  size_t width = 0;
  for (size_t position = 0; position < text.size();) width += pointWidth(krNextCodePoint(text, position));
  return width;
}

std::string shownText(std::string_view given) {
  // Names of files and words of the command line are bytes that may be anything.
  const std::string wellFormed = krIsWellFormed(given) ? std::string() : krWellFormed(given);
  const std::string_view text = wellFormed.empty() ? given : std::string_view(wellFormed);
  std::string result;
  result.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    const size_t start = position;
    const char32_t point = krNextCodePoint(text, position);
    if (isDangerous(point)) {
      result += escaped(point);
    } else {
      result.append(text.substr(start, position - start));
    }
  }
  return result;
}

std::string fittedText(std::string_view text, size_t width) {
  if (displayWidth(text) <= width) return std::string(text);
  size_t used = 0;
  size_t end = 0;
  for (size_t position = 0; position < text.size();) {
    used += pointWidth(krNextCodePoint(text, position));
    if (used + 1 > width) break;
    end = position;
  }
  return std::string(text.substr(0, end)) + "…";
}

std::string shortenedText(std::string_view text, size_t width) {
  const size_t all = displayWidth(text);
  if (all <= width) return std::string(text);
  const size_t atEnd = (width - std::min<size_t>(width, 1)) / 2;
  size_t used = 0;
  size_t start = 0;
  while (start < text.size() && all - used > atEnd) used += pointWidth(krNextCodePoint(text, start));
  return fittedText(text, width - atEnd) + std::string(text.substr(start));
}

std::vector<std::string> wrappedText(std::string_view text, size_t width) {
  width = std::max<size_t>(width, 8);
  std::vector<std::string> lines;
  size_t lineStart = 0;
  size_t used = 0;
  // Where the line could end and the next one begin; the spaces between them are dropped.
  size_t breakEnd = 0;
  size_t breakNext = 0;
  for (size_t position = 0; position < text.size();) {
    const size_t start = position;
    const char32_t point = krNextCodePoint(text, position);
    const size_t cells = pointWidth(point);
    if (point == ' ') {
      if (start == 0 || text[start - 1] != ' ') breakEnd = start;
      breakNext = position;
    } else if (cells == 2 && start > breakNext) {
      breakEnd = breakNext = start;
    }
    used += cells;
    if (used <= width || point == ' ') continue;
    if (breakNext <= lineStart || breakEnd <= lineStart) breakEnd = breakNext = start;
    lines.emplace_back(text.substr(lineStart, breakEnd - lineStart));
    lineStart = breakNext;
    used = displayWidth(text.substr(lineStart, position - lineStart));
  }
  if (lineStart < text.size() || lines.empty()) lines.emplace_back(text.substr(lineStart));
  for (std::string& line : lines) {
    // Trailing spaces are no ink; they would only leave the line too wide.
    while (displayWidth(line) > width && line.back() == ' ') line.pop_back();
  }
  return lines;
}

std::string counted(size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::string padding(std::string_view text, size_t width) {
  const size_t used = displayWidth(text);
  return std::string(used < width ? width - used : 0, ' ');
}
