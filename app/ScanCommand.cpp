#include "app/ScanCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "app/BookOpener.h"
#include "app/DisplayText.h"
#include "app/IssueNames.h"
#include "app/NearMissReport.h"
#include "app/Remembering.h"
#include "app/ScanDocument.h"
#include "app/ScanReport.h"
#include "app/ScanRun.h"
#include "app/Unusable.h"
#include "detectors/KRNearMissFind.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueManager.h"
#include "platform/KRPreferences.h"
#include "platform/KRPreferencesOverlay.h"

namespace {

constexpr size_t kFindings = 10;

using Issues = std::vector<KRRef<KRIssue>>;

/// Chooses the issues of this run only: the overlay keeps the choice from the user's preferences, so it has to stand
/// before the manager is first asked for.
void chooseForThisRun(const ScanOptions& options, const KRStringList& names) {
  KRPreferences::setStandard(krMake<KRPreferencesOverlay>(KRPreferences::standard()));
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  if (options.allIssues) {
    manager.setUseIssues(&manager.supportIssues());
    return;
  }
  KRIssueList chosen;
  for (const KRString& name : names) chosen.append(manager.supportIssueByName(name));
  manager.setUseIssues(&chosen);
}

/// Those of the used issues that have a detector; the others are named on standard error.
Issues scannableIssues(Terminal& terminal) {
  Issues scannable;
  std::string missing;
  for (KRIssue& issue : KRIssueManager::shareIssueManager().useIssues()) {
    if (KRIssueFind::issueFindWithIssue(&issue)) {
      scannable.emplace_back(&issue);
    } else {
      missing += (missing.empty() ? "" : ", ") + IssueNames::shortName(issue.name());
    }
  }
  if (!missing.empty()) terminal.say("not scanned for, since there is no detector yet: " + missing);
  if (scannable.empty() && missing.empty()) {
    terminal.say("no issue is chosen; \"krcontacts issues\" tells how to choose");
  }
  return scannable;
}

KRStringList namesOf(const Issues& issues) {
  KRStringList names;
  for (const KRRef<KRIssue>& issue : issues) names.push_back(issue->name());
  return names;
}

using NearMisses = std::vector<KRNearMiss>;

/// The near-misses of the issues in their order, narrowed as findings are.
NearMisses nearMissesOf(const Issues& issues, KRAddressBook& book, const PersonFilter& filter, ProgressBar& progress) {
  const auto isMeant = [&](const KRNearMiss& miss) {
    return std::any_of(miss.sides.begin(), miss.sides.end(), [&](const KRNearMiss::Side& side) {
      return std::any_of(side.persons.begin(), side.persons.end(),
                         [&](const IKRPerson* person) { return filter.matches(*person); });
    });
  };
  NearMisses all;
  for (const KRRef<KRIssue>& issue : issues) {
    const auto show = [&](double percent) { progress.show("Explaining", percent); };
    for (KRNearMiss& miss : KRNearMissFind::find(issue->name(), &book.allPersons(), show)) {
      if (!filter.isNarrow() || isMeant(miss)) all.push_back(std::move(miss));
    }
  }
  return all;
}

void printHidden(Terminal& terminal, size_t count) {
  terminal.line();
  terminal.paragraph(counted(count, "ignored finding is", "ignored findings are") + " not shown" +
                         (count > 0 ? "; \"krcontacts ignored\" lists them" : ""),
                     Style::Faint, 2);
}

/// What is wrong with a count of findings as it stands on the command line; nothing when it is one.
std::string checkedCount(const std::string& text) {
  const bool isCount = !text.empty() && text.size() < 19 && text.find_first_not_of("0123456789") == std::string::npos;
  return isCount ? std::string() : "\"" + text + "\" is not a whole number";
}

}  // namespace

ScanCommand::ScanCommand(CLI::App& app) : words_(app.add_subcommand("scan")) {
  words_->add_option("BOOK", options_.files);
  issuesOption_ = words_->add_option("--issues", options_.issues)->allow_extra_args(false);
  words_->add_flag("--all-issues", options_.allIssues)->excludes(issuesOption_);
  words_->add_flag("--json", options_.json);
  auto* events = words_->add_flag("--events", options_.events);
  words_->add_flag("--explain", options_.explain)->excludes(events);
  words_->add_option("--limit", options_.limit)->check(checkedCount);
  words_->add_flag("--verbose", options_.verbose);
  words_->add_flag("--no-progress", options_.noProgress);
  words_->add_flag("--exit-code", options_.exitCode);
  words_->add_flag("--hide-ignored", options_.hideIgnored);
  filter_.addTo(*words_);
  tables_.addTo(*words_);
}

bool ScanCommand::isChosen() const {
  return words_->parsed();
}

int ScanCommand::run(Terminal& terminal) {
  const bool isChoice = options_.allIssues || issuesOption_->count() > 0;
  if (options_.noProgress) terminal.progress().disable();
  tables_.check(options_.files);
  if (isChoice) {
    // Names are looked up first: a mistake in one is told before a large file is read.
    chooseForThisRun(options_, options_.allIssues ? KRStringList() : IssueNames::resolve(options_.issues));
  }
  const KRRef<KRAddressBook> book = BookOpener::open(options_.files, options_.verbose, terminal, tables_);
  filter_.check(*book);
  const Issues issues = scannableIssues(terminal);

  KRRef<KRIssueFindResult> result;
  std::optional<HiddenFindings> hidden;
  if (options_.hideIgnored) hidden = HiddenFindings{Remembering::of(*book)};
  HiddenFindings* const hiding = hidden ? &*hidden : nullptr;
  if (options_.events) {
    result = ScanRun::withEvents(book, namesOf(issues), filter_, terminal.out(), hiding);
  } else {
    result = ScanRun::withProgress(book, filter_, terminal.progress(), hiding);
    NearMisses nearMisses;
    if (options_.explain) nearMisses = nearMissesOf(issues, *book, filter_, terminal.progress());
    terminal.progress().clear();
    if (options_.json) {
      JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
      ScanDocument::write(json, *result, namesOf(issues), options_.explain ? &nearMisses : nullptr,
                          hidden ? &hidden->count : nullptr);
      json.endDocument();
    } else {
      const size_t all = static_cast<size_t>(-1);
      const size_t limit = options_.limit ? static_cast<size_t>(*options_.limit) : options_.verbose ? all : kFindings;
      ScanReport(terminal, issues, limit, options_.verbose, filter_.isNarrow()).print(*result);
      if (hidden) printHidden(terminal, hidden->count);
      if (options_.explain) NearMissReport(terminal, issues, limit, options_.verbose).print(nearMisses);
    }
  }
  return options_.exitCode && !result->contexts().isEmpty() ? ExitCode::Findings : ExitCode::Done;
}
