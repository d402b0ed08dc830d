#include "app/FixCommand.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <utility>

#include "app/FixDialog.h"
#include "app/FixDocument.h"
#include "app/FixReport.h"
#include "app/IssueNames.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "issues/KRIssueContext.h"

FixCommand::FixCommand(CLI::App& app) : words_(app.add_subcommand("fix")) {
  words_->add_option("BOOK", book_);
  words_->add_option("--apply", apply_)->allow_extra_args(false);
  words_->add_option("--issues", issues_)->allow_extra_args(false);
  words_->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
  words_->add_flag("--remember", remember_);
  words_->add_flag("--no-progress", noProgress_);
  filter_.addTo(*words_);
}

bool FixCommand::isChosen() const {
  return words_->parsed();
}

int FixCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  // Told before a large book is read.
  const std::vector<FixChoice> choices = FixChoices::parse(apply_);
  const bool isDialog = choices.empty();
  if (isDialog && (dryRun_ || json_ || !Terminal::canShowScreens())) {
    throw Unusable(std::string(dryRun_ || json_ ? "nothing is chosen" : "there is no terminal to ask on") +
                   "; --apply ISSUE=HANDLE says which fix an issue gets, and \"krcontacts issues\" shows both");
  }
  if (remember_ && !isDialog && !Remembering::isMeant(choices)) {
    throw Unusable("--remember is for findings that are ignored: --apply ISSUE=ignore");
  }
  if (!isDialog && !issues_.empty()) throw Unusable("--issues is for the walk through findings; --apply names its own");
  const KRStringList only = issues_.empty() ? KRStringList() : IssueNames::resolve(issues_);
  FixRun run(book_, terminal);
  if (isDialog) {
    only.empty() ? run.scanUsed(filter_) : run.scan(only, filter_);
    std::optional<KRIgnoredFindings> remembered;
    if (remember_) remembered = Remembering::of(run.book());
    FixDialog(run, terminal, remembered ? &*remembered : nullptr).run();
    return ExitCode::Done;
  }
  run.scan(FixChoices::issuesOf(choices), filter_);
  std::optional<Remembering> remembering;
  if (remember_) remembering.emplace(run, choices);
  Remembering* const kept = remembering ? &*remembering : nullptr;
  json_ ? document(run, choices, kept, terminal) : report(run, choices, kept, terminal);
  return ExitCode::Done;
}

void FixCommand::report(FixRun& run, const std::vector<FixChoice>& choices, Remembering* remembering,
                        Terminal& terminal) const {
  FixReport report(terminal, dryRun_);
  std::vector<std::pair<std::string, FixAccount>> done;
  if (dryRun_) report.printBook(run.book());
  for (const FixChoice& choice : choices) {
    std::string heading = FixReport::headingOf(choice, run.contextOf(*choice.issue));
    if (dryRun_) {
      report.printStart(heading);
      report.printAccount(run.fixAll(choice, [&](const FixEffect& effect) { report.printEffect(effect); }));
    } else {
      done.emplace_back(std::move(heading), run.fixAll(choice, {}));
    }
  }
  if (dryRun_) {
    if (remembering != nullptr) remembering->print(terminal, true);
    terminal.line();
    terminal.paragraph("Nothing is written: this is a dry run.", Style::Faint);
    return;
  }
  // Told when it is so.
  run.save();
  if (remembering != nullptr) remembering->save();
  report.printBook(run.book());
  for (const auto& [heading, account] : done) {
    report.printStart(heading);
    report.printAccount(account);
  }
  if (remembering != nullptr) remembering->print(terminal, false);
}

void FixCommand::document(FixRun& run, const std::vector<FixChoice>& choices, Remembering* remembering,
                          Terminal& terminal) const {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  FixDocument document(json);
  std::vector<FixAccount> accounts;
  if (!dryRun_) {
    for (const FixChoice& choice : choices) accounts.push_back(run.fixAll(choice, {}));
    run.save();
    if (remembering != nullptr) remembering->save();
  }
  document.begin(run.book(), dryRun_);
  for (size_t i = 0; i < choices.size(); ++i) {
    document.beginFix(choices[i]);
    if (dryRun_) {
      document.beginEffects();
      accounts.push_back(run.fixAll(choices[i], [&](const FixEffect& effect) { document.addEffect(effect); }));
      document.endEffects();
    }
    document.endFix(accounts[i]);
  }
  document.end(remembering != nullptr ? std::optional<size_t>(remembering->count()) : std::nullopt);
}
