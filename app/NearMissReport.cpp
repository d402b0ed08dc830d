#include "app/NearMissReport.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "app/DisplayText.h"
#include "app/PersonText.h"

namespace {

/// Names of a side, and sides, that are shown before the rest is only counted.
constexpr size_t kShown = 8;
/// Keys of so few parts are shown whole: names and values. Of whole contacts only what differs is.
constexpr size_t kAllParts = 3;
/// Cells of a long text that are shown, and bytes of it before the place where the sides part.
constexpr size_t kExcerpt = 160;
constexpr size_t kLead = 40;

struct Words {
  std::string_view name;
  std::string_view shown;
};

// In the order of the reasons.
constexpr std::array<Words, 7> kWords = {{{"absent", "is missing in one"},
                                          {"case", "upper and lower case"},
                                          {"marks", "accents"},
                                          {"spaces", "spaces"},
                                          {"punctuation", "punctuation"},
                                          {"prefix", "digits before the last nine"},
                                          {"form", "other characters that look alike"}}};

const Words& wordsOf(KRNearMissReason reason) {
  return kWords.at(static_cast<size_t>(reason));
}

bool differsIn(const KRNearMiss& miss, KRText part) {
  return std::any_of(miss.differences.begin(), miss.differences.end(),
                     [&](const KRNearMiss::Difference& each) { return each.part == part; });
}

std::string differences(const KRNearMiss& miss) {
  std::string text;
  for (const KRNearMiss::Difference& difference : miss.differences) {
    text += (text.empty() ? "" : "; ") + shownText(difference.part.view()) + ": ";
    bool isFirst = true;
    for (const KRNearMissReason reason : difference.reasons) {
      text.append(isFirst ? "" : ", ").append(wordsOf(reason).shown);
      isFirst = false;
    }
  }
  return text;
}

std::string names(const KRPersonArray& persons, bool isWhole) {
  const size_t shown = isWhole || persons.count() <= kShown ? persons.count() : kShown - 1;
  std::string text;
  for (size_t i = 0; i < shown; ++i) text += (i == 0 ? "" : ", ") + personText(*persons.at(i));
  if (shown < persons.count()) text += " and " + std::to_string(persons.count() - shown) + " more";
  return text;
}

/// How many bytes the texts of the part have in common on all sides, from their start on.
size_t commonStart(const KRNearMiss& miss, KRText part) {
  std::optional<std::string_view> common;
  for (const KRNearMiss::Side& side : miss.sides) {
    for (const KRNearMiss::Part& each : side.parts) {
      if (each.name != part) continue;
      const std::string_view text = each.text.view();
      const std::string_view known = common.value_or(text);
      const auto parted = std::mismatch(known.begin(), known.end(), text.begin(), text.end());
      common = known.substr(0, static_cast<size_t>(parted.first - known.begin()));
    }
  }
  return common.value_or(std::string_view()).size();
}

/// The text around the place where it is another than on the other sides.
std::string excerpt(std::string_view text, size_t common) {
  std::string whole = shownText(text);
  if (displayWidth(whole) <= kExcerpt) return whole;
  const auto isInside = [&](size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80; };
  size_t start = common > kLead ? common - kLead : 0;
  while (start > 0 && isInside(start)) --start;
  return (start > 0 ? "…" : "") + fittedText(shownText(text.substr(start)), kExcerpt);
}

}  // namespace

std::string_view NearMissReport::nameOf(KRNearMissReason reason) {
  return wordsOf(reason).name;
}

void NearMissReport::print(const std::vector<KRNearMiss>& misses) const {
  bool isExplained = false;
  for (const KRRef<KRIssue>& issue : scanned_) {
    if (!KRNearMissFind::canExplain(issue->name())) continue;
    isExplained = true;
    printIssue(*issue, misses);
  }
  if (isExplained && !misses.empty()) return;
  terminal_.line();
  terminal_.paragraph(isExplained ? "Nothing is nearly the same."
                                  : "None of these issues compares contacts; there is nothing to explain.",
                      Style::Faint);
}

void NearMissReport::printIssue(const KRIssue& issue, const std::vector<KRNearMiss>& misses) const {
  const KRString name = issue.name();
  const auto isMine = [&](const KRNearMiss& miss) { return sameText(miss.issueName, name); };
  const auto count = static_cast<size_t>(std::count_if(misses.begin(), misses.end(), isMine));
  if (count == 0 || limit_ == 0) return;
  const KRString title = issue.displayName();
  terminal_.line();
  terminal_.paragraph(
      "Nearly: " + shownText(title.isEmpty() ? name.view() : title.view()) + " (" + std::to_string(count) + ")",
      Style::Heading);
  size_t number = 0;
  for (const KRNearMiss& miss : misses) {
    if (!isMine(miss)) continue;
    if (number == limit_ || terminal_.out().failed()) break;
    printMiss(miss, ++number);
  }
  if (count <= limit_) return;
  terminal_.line();
  terminal_.paragraph("and " + std::to_string(count - limit_) + " more; --verbose shows all", Style::Faint, 5);
}

void NearMissReport::printMiss(const KRNearMiss& miss, size_t number) const {
  const std::string figure = std::to_string(number);
  terminal_.paragraph(figure + "  " + "Not the same, " + differences(miss), Style::Plain, 2, figure.size() + 2);
  const size_t shown = isWhole_ || miss.sides.size() <= kShown ? miss.sides.size() : kShown - 1;
  for (size_t i = 0; i < shown; ++i) printSide(miss, miss.sides[i]);
  if (shown < miss.sides.size()) {
    terminal_.paragraph("and " + std::to_string(miss.sides.size() - shown) + " more", Style::Faint, 5);
  }
}

void NearMissReport::printSide(const KRNearMiss& miss, const KRNearMiss::Side& side) const {
  terminal_.paragraph(names(side.persons, isWhole_), Style::Strong, 5, 2);
  std::string parts;
  for (const KRNearMiss::Part& part : side.parts) {
    if (side.parts.size() > kAllParts && !differsIn(miss, part.name)) continue;
    const std::string text =
        isWhole_ ? shownText(part.text.view()) : excerpt(part.text.view(), commonStart(miss, part.name.text()));
    parts += (parts.empty() ? "" : ", ") + shownText(part.name.view()) + " \"" + text + "\"";
  }
  if (!parts.empty()) terminal_.paragraph(parts, Style::Plain, 7, 2);
}
