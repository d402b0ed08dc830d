#include "app/FixReport.h"

#include <algorithm>

#include "app/DisplayText.h"
#include "app/PersonText.h"
#include "app/RowDiff.h"
#include "app/SampleFinding.h"
#include "app/UserBooks.h"
#include "issues/KRIssueContext.h"

namespace {

/// Contacts of a finding that are named before the rest is only counted.
constexpr size_t kNames = 8;
constexpr size_t kIndent = 5;

std::string listOf(const std::vector<std::string>& names) {
  const size_t shown = names.size() <= kNames ? names.size() : kNames - 1;
  std::string list;
  for (size_t i = 0; i < shown; ++i) list += (i == 0 ? "" : ", ") + names[i];
  if (shown < names.size()) list += " and " + std::to_string(names.size() - shown) + " more";
  return list;
}

}  // namespace

void FixReport::printBook(KRAddressBook& book) {
  terminal_.paragraph(terminal_.styled(Style::Strong, shownText(book.name().view())) + " · " +
                      counted(book.allPersonsCount(), "contact", "contacts"));
}

std::string FixReport::headingOf(const FixChoice& choice, const KRRef<KRIssueContext>& context) {
  const size_t count = context ? context->objects().count() : 0;
  return headingOf(choice, count, count > 0 ? context->objects().first() : nullptr);
}

std::string FixReport::headingOf(const FixChoice& choice, size_t count, KRIssueObject* finding) {
  const SampleFinding sample(*choice.issue);
  const std::string fix = shownText(choice.handle->title(finding != nullptr ? finding : sample.get()).view());
  return shownText(choice.issue->displayName().view()) + " · " + fix + " (" + std::to_string(count) + ")";
}

void FixReport::printStart(const std::string& heading) {
  number_ = 0;
  terminal_.line();
  terminal_.paragraph(heading, Style::Heading);
}

void FixReport::printEffect(const FixEffect& effect) {
  if (terminal_.out().failed()) return;
  const std::string figure = std::to_string(++number_);
  std::string start = padding(figure, 3) + figure + "  ";
  for (const std::string& line : wrappedText(listOf(effect.names), terminal_.width() - kIndent)) {
    terminal_.line(terminal_.styled(Style::Faint, start) + terminal_.styled(Style::Strong, line));
    start.assign(kIndent, ' ');
  }
  std::vector<RowDiff::Line> lines = RowDiff::of(effect.before, effect.after);
  const bool isMerge = effect.kind == FixKind::Merge;
  if (!isMerge) std::erase_if(lines, [](const RowDiff::Line& each) { return each.sign == RowDiff::Sign::Kept; });
  RowDiff::print(terminal_, lines, kIndent);
  if (isMerge) {
    terminal_.paragraph("one new contact; " + counted(effect.trashed.size(), "contact", "contacts") + " to the trash",
                        Style::Faint, kIndent);
  } else if (!effect.trashed.empty()) {
    // Names of contacts that are gone from their book stay as they were.
    std::vector<std::string> names;
    for (const auto& person : effect.trashed) names.push_back(personText(*person));
    terminal_.paragraph("- to the trash: " + listOf(names), Style::Warning, kIndent, 2);
  } else if (!effect.allowed.empty()) {
    terminal_.paragraph("+ counts as usual: " + shownText(effect.allowed), Style::Good, kIndent, 2);
  } else if (lines.empty()) {
    terminal_.paragraph("nothing changes", Style::Faint, kIndent);
  }
}

void FixReport::printAccount(const FixAccount& account) {
  if (account.findings == 0) {
    terminal_.paragraph("nothing to fix", Style::Faint, 2);
    return;
  }
  std::string line = counted(account.findings, "finding", "findings") + (isDryRun_ ? " would be fixed" : " fixed");
  const auto add = [&](size_t count, const char* what) {
    if (count > 0) line += "; " + counted(count, "contact", "contacts") + " " + what;
  };
  add(account.changed, "changed");
  add(account.made, "made by merging");
  add(account.trashed, "moved to the trash");
  if (!account.allowed.empty()) {
    std::vector<std::string> texts;
    for (const std::string& text : account.allowed) texts.push_back("\"" + shownText(text) + "\"");
    line += "; counts as usual now: " + listOf(texts);
  }
  const bool isNothing = account.changed + account.made + account.trashed + account.allowed.size() == 0;
  if (isNothing) line += "; nothing is changed by that";
  terminal_.paragraph(line, Style::Plain, 2, 2);
}
