#include "app/ScanReport.h"

#include <algorithm>
#include <string>
#include <unordered_set>

#include "app/DisplayText.h"
#include "app/PersonText.h"
#include "app/Table.h"
#include "contacts/model/KRAddressBook.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueObject.h"

namespace {

/// Names of a finding that are shown before the rest is only counted.
constexpr size_t kNames = 8;

using PersonSet = std::unordered_set<const IKRPerson*>;

void addPersons(const KRIssueContext& context, PersonSet& persons) {
  for (const KRIssueObject& finding : context.objects()) {
    const KRPersonArray each = finding.persons();
    persons.insert(each.begin(), each.end());
  }
}

std::string title(const KRIssue& issue) {
  const KRString name = issue.displayName();
  return shownText(name.isEmpty() ? issue.name().view() : name.view());
}

std::string fixTitles(KRIssueObject& finding, const KRIssue& issue) {
  std::string titles;
  for (const KRIssueHandle& handle : issue.handles()) {
    titles += (titles.empty() ? "" : " · ") + shownText(handle.title(&finding).view());
  }
  return titles;
}

}  // namespace

void ScanReport::print(KRIssueFindResult& result) const {
  const KRRef<KRAddressBook> book = result.addressBook();
  terminal_.paragraph(terminal_.styled(Style::Strong, shownText(book->name().view())) + " · " +
                      counted(book->allPersonsCount(), "contact", "contacts"));
  terminal_.line();
  if (scanned_.empty()) return;
  printSummary(result);
  for (KRIssueContext& context : result.contexts()) {
    if (limit_ == 0 || terminal_.out().failed()) break;
    printContext(context);
  }
}

void ScanReport::printSummary(KRIssueFindResult& result) const {
  Table table({"Issue", "Findings", "Contacts"}, Table::Cells::Figures);
  table.addRule();
  size_t findings = 0;
  PersonSet touched;
  for (const KRRef<KRIssue>& issue : scanned_) {
    size_t count = 0;
    PersonSet persons;
    for (const KRIssueContext& context : result.contexts()) {
      if (context.issue() != issue) continue;
      count += context.objects().count();
      addPersons(context, persons);
    }
    findings += count;
    touched.insert(persons.begin(), persons.end());
    table.addRow(
        {title(*issue), count == 0 ? "-" : std::to_string(count), count == 0 ? "-" : std::to_string(persons.size())},
        count == 0 ? Style::Faint : Style::Plain);
  }
  table.addRule();
  table.addRow({"All together", std::to_string(findings), std::to_string(touched.size())}, Style::Strong);
  table.print(terminal_, 2);
  if (findings == 0) {
    terminal_.line();
    const char* const text = isNarrow_ ? "Nothing to clean up in the contacts asked for." : "Nothing to clean up.";
    terminal_.line("  " + terminal_.styled(Style::Good, text));
  }
}

void ScanReport::printContext(const KRIssueContext& context) const {
  const KRRef<KRIssue> issue = context.issue();
  const size_t count = context.objects().count();
  terminal_.line();
  terminal_.paragraph(title(*issue) + " (" + std::to_string(count) + ")", Style::Heading);
  size_t number = 0;
  for (KRIssueObject& finding : context.objects()) {
    if (number == limit_ || terminal_.out().failed()) break;
    printFinding(finding, *issue, ++number);
  }
  if (count > limit_) {
    terminal_.line();
    terminal_.paragraph("and " + counted(count - limit_, "more finding", "more findings") + "; --verbose shows all",
                        Style::Faint, 5);
  }
}

void ScanReport::printFinding(KRIssueObject& finding, const KRIssue& issue, size_t number) const {
  const KRPersonArray persons = finding.persons();
  const size_t shown = wholeGroups_ || persons.count() <= kNames ? persons.count() : kNames - 1;
  std::string names;
  for (size_t i = 0; i < shown; ++i) names += (i == 0 ? "" : ", ") + personText(*persons.at(i));
  if (shown < persons.count()) names += " and " + std::to_string(persons.count() - shown) + " more";

  const std::string figure = std::to_string(number);
  const std::string start = padding(figure, 3) + figure + "  ";
  bool isFirst = true;
  for (const std::string& line : wrappedText(names, terminal_.width() - 5)) {
    terminal_.line((isFirst ? terminal_.styled(Style::Faint, start) : std::string(5, ' ')) +
                   terminal_.styled(Style::Strong, line));
    isFirst = false;
  }
  terminal_.paragraph(shownText(finding.describe().view()), Style::Plain, 5);
  terminal_.paragraph("Fix: " + fixTitles(finding, issue), Style::Faint, 5, 5);
}
