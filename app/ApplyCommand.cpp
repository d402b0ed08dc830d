#include "app/ApplyCommand.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "app/DisplayText.h"
#include "app/FixDocument.h"
#include "app/FixReport.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"

namespace {

/// How the plan's book is called: by its ID where it is in the user's list, else by its path.
std::string bookOf(const Plan& plan, const std::string& file, Terminal& terminal) {
  if (UserBooks::find(plan.bookID, terminal) != nullptr) return plan.bookID;
  if (!plan.bookPath.empty()) return plan.bookPath;
  throw Unusable(file + ": /book: there is no book \"" + plan.bookID + "\"; --book BOOK names another one");
}

}  // namespace

ApplyCommand::ApplyCommand(CLI::App& app) : words_(app.add_subcommand("apply")) {
  words_->add_option("PLAN", file_)->required();
  words_->add_option("--book", book_);
  words_->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
  words_->add_flag("--no-progress", noProgress_);
}

bool ApplyCommand::isChosen() const {
  return words_->parsed();
}

int ApplyCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  const Plan plan = Plan::read(file_);
  FixRun run(book_.empty() ? bookOf(plan, file_, terminal) : book_, terminal);
  PlanRun fixes(plan, file_, run);
  json_ ? document(run, fixes, terminal) : report(run, fixes, terminal);
  return ExitCode::Done;
}

void ApplyCommand::report(FixRun& run, PlanRun& fixes, Terminal& terminal) const {
  FixReport report(terminal, dryRun_);
  const auto headingOf = [&](const PlanRun::Group& group) {
    return FixReport::headingOf(group.choice, group.findings, fixes.first(group));
  };
  std::vector<FixAccount> done;
  if (dryRun_) {
    report.printBook(run.book());
    for (const PlanRun::Group& group : fixes.groups()) {
      report.printStart(headingOf(group));
      report.printAccount(fixes.apply(group, [&](const FixEffect& effect) { report.printEffect(effect); }));
    }
  } else {
    for (const PlanRun::Group& group : fixes.groups()) done.push_back(fixes.apply(group, {}));
    run.save();
    report.printBook(run.book());
    for (size_t i = 0; i < done.size(); ++i) {
      report.printStart(headingOf(fixes.groups()[i]));
      report.printAccount(done[i]);
    }
  }
  if (fixes.groups().empty()) terminal.paragraph("There is no fix in the plan.");
  if (fixes.settled() > 0) {
    terminal.line();
    terminal.paragraph(counted(fixes.settled(), "fix", "fixes") + " of the plan " +
                       (fixes.settled() == 1 ? "was" : "were") + " settled by others before");
  }
  if (!dryRun_) return;
  terminal.line();
  terminal.paragraph("Nothing is written: this is a dry run.", Style::Faint);
}

void ApplyCommand::document(FixRun& run, PlanRun& fixes, Terminal& terminal) const {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  FixDocument document(json);
  std::vector<FixAccount> accounts;
  if (!dryRun_) {
    for (const PlanRun::Group& group : fixes.groups()) accounts.push_back(fixes.apply(group, {}));
    run.save();
  }
  document.begin(run.book(), dryRun_);
  for (size_t i = 0; i < fixes.groups().size(); ++i) {
    const PlanRun::Group& group = fixes.groups()[i];
    document.beginFix(group.choice);
    if (dryRun_) {
      document.beginEffects();
      accounts.push_back(fixes.apply(group, [&](const FixEffect& effect) { document.addEffect(effect); }));
      document.endEffects();
    }
    document.endFix(accounts[i]);
  }
  document.end();
}
