#include "app/ScanCommand.h"

#include <CLI/CLI.hpp>

#include "app/BookOpener.h"
#include "app/IssueNames.h"
#include "app/ScanDocument.h"
#include "app/ScanReport.h"
#include "app/ScanRun.h"
#include "app/Unusable.h"
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

/// What is wrong with a count of findings as it stands on the command line; nothing when it is one.
std::string checkedCount(const std::string& text) {
  const bool isCount = !text.empty() && text.size() < 19 && text.find_first_not_of("0123456789") == std::string::npos;
  return isCount ? std::string() : "\"" + text + "\" is not a whole number";
}

}  // namespace

ScanCommand::ScanCommand(CLI::App& app) : words_(app.add_subcommand("scan")) {
  words_->add_option("FILE", options_.files)->required();
  issuesOption_ = words_->add_option("--issues", options_.issues)->allow_extra_args(false);
  words_->add_flag("--all-issues", options_.allIssues)->excludes(issuesOption_);
  words_->add_flag("--json", options_.json);
  words_->add_flag("--events", options_.events);
  words_->add_option("--limit", options_.limit)->check(checkedCount);
  words_->add_flag("--verbose", options_.verbose);
  words_->add_flag("--no-progress", options_.noProgress);
  words_->add_flag("--exit-code", options_.exitCode);
}

bool ScanCommand::isChosen() const {
  return words_->parsed();
}

int ScanCommand::run(Terminal& terminal) {
  const bool isChoice = options_.allIssues || issuesOption_->count() > 0;
  if (options_.noProgress) terminal.progress().disable();
  if (isChoice) {
    // Names are looked up first: a mistake in one is told before a large file is read.
    chooseForThisRun(options_, options_.allIssues ? KRStringList() : IssueNames::resolve(options_.issues));
  }
  const KRRef<KRAddressBook> book = BookOpener::open(options_.files, options_.verbose, terminal);
  const Issues issues = scannableIssues(terminal);

  KRRef<KRIssueFindResult> result;
  if (options_.events) {
    result = ScanRun::withEvents(book, namesOf(issues), terminal.out());
  } else {
    result = ScanRun::withProgress(book, terminal.progress());
    terminal.progress().clear();
    if (options_.json) {
      JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
      ScanDocument::write(json, *result, namesOf(issues));
      json.endDocument();
    } else {
      const size_t all = static_cast<size_t>(-1);
      const size_t limit = options_.limit ? static_cast<size_t>(*options_.limit) : options_.verbose ? all : kFindings;
      ScanReport(terminal, issues, limit, options_.verbose).print(*result);
    }
  }
  return options_.exitCode && !result->contexts().isEmpty() ? ExitCode::Findings : ExitCode::Done;
}
