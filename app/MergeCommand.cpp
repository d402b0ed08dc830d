#include "app/MergeCommand.h"

#include <CLI/CLI.hpp>
#include <unordered_map>

#include "app/DisplayText.h"
#include "app/FixRun.h"
#include "app/JsonWriter.h"
#include "app/PersonDocument.h"
#include "app/PersonText.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueManager.h"

namespace {

/// A finding of contacts with the same name, which is what a merge is for, about these persons. The finding keeps the
/// result alive.
KRRef<KRIssueObject> findingAbout(const std::vector<KRRef<IKRPerson>>& persons, KRStoredBook& book) {
  const auto result = krMake<KRIssueFindResult>();
  result->setAddressBook(KRRef<KRAddressBook>(&book));
  KRIssue* issue = KRIssueManager::shareIssueManager().supportIssueByName(KRIssueDuplicateNames);
  const auto context = krMake<KRIssueContext>(KRRef<KRIssue>(issue));
  auto finding = krMake<KRIssueObject>();
  finding->setPersons(KRPersonArray(persons));
  context->addIssueObject(finding.get());
  result->addContext(context.get());
  return finding;
}

}  // namespace

MergeCommand::MergeCommand(CLI::App& app) : words_(app.add_subcommand("merge")) {
  words_->add_option("BOOK", book_)->required();
  words_->add_option("ID", IDs_)->required();
  words_->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
  words_->add_flag("--no-progress", noProgress_);
}

bool MergeCommand::isChosen() const {
  return words_->parsed();
}

int MergeCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  FixRun run(book_, terminal);
  MergeReport report;
  const std::vector<KRRef<IKRPerson>> persons = chosen(run.book());
  for (const auto& person : persons) report.sources.push_back({person->ID(), personText(*person)});
  const KRRef<KRIssueObject> finding = findingAbout(persons, run.book());
  run.fix(*finding, KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact), FixWatch::Detail::Counts);
  report.merged = KRRef<IKRPerson>(run.book().allPersons().at(run.book().allPersonsCount() - 1));
  report.account = krMergeAccount(KRPersonArray(persons), *report.merged);
  if (!dryRun_) run.save();
  if (json_) {
    write(terminal, run.book(), report);
  } else {
    print(terminal, run.book(), report);
  }
  return ExitCode::Done;
}

/// The contacts of these IDs, in the order of the words: the first one's single values win.
std::vector<KRRef<IKRPerson>> MergeCommand::chosen(KRStoredBook& book) const {
  std::unordered_map<std::string_view, KRRef<IKRPerson>> known;
  for (const std::string& ID : IDs_) {
    if (!known.emplace(ID, nullptr).second) throw Unusable("the ID \"" + ID + "\" is given twice");
  }
  if (IDs_.size() < 2) throw Unusable("a merge takes two contacts or more; name the IDs of those to be merged");
  for (IKRPerson& person : book.allPersons()) {
    const KRString ID = person.ID();
    const auto found = known.find(ID.view());
    if (found != known.end()) found->second = KRRef<IKRPerson>(&person);
  }
  std::vector<KRRef<IKRPerson>> persons;
  for (const std::string& ID : IDs_) {
    persons.push_back(known.at(ID));
    if (!persons.back()) {
      throw Unusable("no contact of " + std::string(book.name().view()) + " has the ID \"" + ID + "\"");
    }
  }
  return persons;
}

void MergeCommand::print(Terminal& terminal, KRStoredBook& book, const MergeReport& report) const {
  report.print(terminal, book.allPersonsCount() - 1);
  terminal.line();
  terminal.paragraph((dryRun_ ? "Would merge " : "Merged ") + std::to_string(report.sources.size()) + " contacts of " +
                     UserBooks::described(book) +
                     (dryRun_ ? "; they would go to the trash" : "; they are in the trash"));
}

void MergeCommand::write(Terminal& terminal, KRStoredBook& book, const MergeReport& report) const {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  json.beginObject();
  PersonDocument::writeBook(json, book);
  json.key("dryRun");
  json.truth(dryRun_);
  report.write(json, book.allPersonsCount() - 1);
  json.endObject();
  json.endDocument();
}
