#include "app/IssuesCommand.h"

#include <CLI/CLI.hpp>

#include "app/DisplayText.h"
#include "app/HandleNames.h"
#include "app/IssueNames.h"
#include "app/JsonWriter.h"
#include "app/SampleFinding.h"
#include "app/StoredChoice.h"
#include "app/Unusable.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueManager.h"
#include "issues/KRIssueObject.h"

namespace {

using Layout = JsonWriter::Layout;

void writeIssue(JsonWriter& json, KRIssue& issue, bool isUsed) {
  json.beginObject();
  json.key("issue");
  json.text(issue.name().view());
  json.key("constant");
  json.text(IssueNames::constantName(issue.name()));
  json.key("shortName");
  json.text(IssueNames::shortName(issue.name()));
  json.key("displayName");
  json.text(issue.displayName().view());
  json.key("describe");
  json.text(issue.describe().view());
  json.key("multiPerson");
  json.truth(issue.multiPerson());
  json.key("used");
  json.truth(isUsed);
  json.key("handles");
  json.beginArray();
  const SampleFinding sample(issue);
  for (const KRIssueHandle& handle : issue.handles()) {
    json.beginObject(Layout::OneLine);
    json.key("name");
    json.text(handle.name().view());
    json.key("shortName");
    json.text(HandleNames::shortName(handle.name()));
    json.key("title");
    json.text(handle.title(sample.get()).view());
    json.key("info");
    json.text(handle.resultInfo(sample.get()).view());
    json.endObject();
  }
  json.endArray();
  json.endObject();
}

void writeDocument(Output& out, KRIssueManager& manager) {
  JsonWriter json(out, Layout::Lines);
  json.beginObject();
  json.key("issues");
  json.beginArray();
  for (KRIssue& issue : manager.supportIssues()) writeIssue(json, issue, manager.isUseIssue(&issue));
  json.endArray();
  json.endObject();
  json.endDocument();
}

/// The title at the left and the short name at the right end of a line; below them the fixes, each with its short name.
void printIssue(Terminal& terminal, KRIssue& issue, bool isUsed) {
  const std::string mark = isUsed ? "[x] " : "[ ] ";
  const std::string name = IssueNames::shortName(issue.name());
  const size_t room = terminal.width() - mark.size() - name.size() - 2;
  const std::string title = fittedText(shownText(issue.displayName().view()), room);
  terminal.line(terminal.styled(isUsed ? Style::Good : Style::Faint, mark) + terminal.styled(Style::Strong, title) +
                padding(title, room) + "  " + name);
  const SampleFinding sample(issue);
  std::string fixes;
  for (const KRIssueHandle& handle : issue.handles()) {
    fixes += (fixes.empty() ? "" : " · ") + shownText(handle.title(sample.get()).view()) + " (" +
             HandleNames::shortName(handle.name()) + ")";
  }
  terminal.paragraph(fixes, Style::Faint, mark.size());
}

void printList(Terminal& terminal, KRIssueManager& manager) {
  for (KRIssue& issue : manager.supportIssues()) printIssue(terminal, issue, manager.isUseIssue(&issue));
  terminal.line();
  terminal.paragraph("A scan looks for the issues marked [x]: " + std::to_string(manager.useIssues().count()) + " of " +
                     std::to_string(manager.supportIssues().count()) + ".");
}

void addNamed(const std::vector<std::string>& words, const KRIssueManager& manager, KRIssueList& issues) {
  for (const KRString& name : IssueNames::resolve(words)) issues.append(manager.supportIssueByName(name));
}

void printChoice(Terminal& terminal, KRIssueManager& manager) {
  std::string names;
  for (const KRIssue& issue : manager.useIssues()) {
    names += (names.empty() ? "" : ", ") + IssueNames::shortName(issue.name());
  }
  terminal.paragraph("A scan now looks for: " + (names.empty() ? "nothing" : names), Style::Plain, 0, 2);
}

}  // namespace

IssuesCommand::IssuesCommand(CLI::App& app)
    : words_(app.add_subcommand("issues")),
      use_(words_->add_subcommand("use")),
      drop_(words_->add_subcommand("drop")),
      reset_(words_->add_subcommand("reset")) {
  words_->add_flag("--json", json_);
  words_->require_subcommand(0, 1);
  use_->add_option("NAME", names_)->required();
  drop_->add_option("NAME", names_)->required();
}

bool IssuesCommand::isChosen() const {
  return words_->parsed();
}

int IssuesCommand::run(Terminal& terminal) {
  KRIssueManager& manager = KRIssueManager::shareIssueManager();
  const bool isChange = use_->parsed() || drop_->parsed() || reset_->parsed();
  KRIssueList named;
  if (use_->parsed() || drop_->parsed()) addNamed(names_, manager, named);
  if (use_->parsed()) {
    manager.addUseIssues(&named);
  } else if (drop_->parsed()) {
    manager.removeUseIssues(&named);
  } else if (reset_->parsed()) {
    manager.setUseIssues(&manager.supportIssues());
  }
  if (isChange) keepPreferences();

  if (json_) {
    writeDocument(terminal.out(), manager);
  } else if (isChange) {
    printChoice(terminal, manager);
  } else {
    printList(terminal, manager);
  }
  return ExitCode::Done;
}
