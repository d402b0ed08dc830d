#include "app/PlanCommand.h"

#include <CLI/CLI.hpp>

#include "app/HandleNames.h"
#include "app/IssueNames.h"
#include "app/JsonWriter.h"
#include "app/PlanValues.h"
#include "app/Unusable.h"
#include "handles/KRHandleNames.h"
#include "issues/KRFindingKey.h"
#include "issues/KRIssueContext.h"

namespace {

void writePersons(JsonWriter& json, const KRIssueObject& finding) {
  json.key("persons");
  json.beginArray();
  const KRPersonArray persons = finding.persons();
  for (const IKRPerson* person : persons) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("id");
    json.textOrNull(person->ID());
    json.key("name");
    json.textOrNull(person->showName());
    json.key("digest");
    json.textOrNull(krPersonDigest(*person));
    json.endObject();
  }
  json.endArray();
}

void writeValue(JsonWriter& json, const nlohmann::ordered_json& value) {
  if (value.is_object()) {
    json.beginObject(JsonWriter::Layout::OneLine);
    for (const auto& [name, member] : value.items()) {
      json.key(name);
      writeValue(json, member);
    }
    json.endObject();
  } else if (value.is_array()) {
    json.beginArray(JsonWriter::Layout::OneLine);
    for (const auto& each : value) writeValue(json, each);
    json.endArray();
  } else if (value.is_string()) {
    json.text(value.get_ref<const std::string&>());
  } else {
    json.null();
  }
}

void writeFinding(JsonWriter& json, const KRIssueObject& finding, const FixChoice& choice) {
  const KRValue info = finding.info();
  json.beginObject();
  json.key("issue");
  json.text(IssueNames::shortName(choice.issue->name()));
  json.key("handle");
  json.text(HandleNames::shortName(choice.handle->name()));
  json.key("describe");
  json.textOrNull(finding.describe());
  json.key("info");
  json.textOrNull(info.isNothing() ? KRString() : info.description());
  writePersons(json, finding);
  const auto properties = PlanValues::editable(choice.issue->name());
  if (sameText(choice.handle->name(), KRHandleNameEdit) && !properties.empty()) {
    json.key("values");
    const KRPersonArray persons = finding.persons();
    writeValue(json, PlanValues::of(*persons.first(), properties));
  }
  json.endObject();
}

void writeBook(JsonWriter& json, const KRAddressBook& book) {
  json.key("book");
  json.beginObject(JsonWriter::Layout::OneLine);
  json.key("id");
  json.textOrNull(book.ID());
  json.key("name");
  json.textOrNull(book.name());
  json.key("path");
  json.textOrNull(book.place());
  json.endObject();
}

}  // namespace

PlanCommand::PlanCommand(CLI::App& app) : words_(app.add_subcommand("plan")) {
  words_->add_option("BOOK", book_);
  words_->add_option("--apply", apply_)->allow_extra_args(false);
  words_->add_flag("--no-progress", noProgress_);
  filter_.addTo(*words_);
}

bool PlanCommand::isChosen() const {
  return words_->parsed();
}

int PlanCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  const std::vector<FixChoice> choices = FixChoices::parse(apply_);
  if (choices.empty()) {
    throw Unusable("which fix for which issue? --apply ISSUE=HANDLE says it; \"krcontacts issues\" shows both");
  }
  FixRun run(book_, terminal);
  run.scan(FixChoices::issuesOf(choices), filter_);
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  json.beginObject();
  json.key("plan");
  json.whole(int64_t{1});
  writeBook(json, run.book());
  json.key("fixes");
  json.beginArray();
  for (const FixChoice& choice : choices) {
    const KRRef<KRIssueContext> context = run.contextOf(*choice.issue);
    if (!context) continue;
    for (const KRIssueObject& finding : context->objects()) {
      if (json.failed()) break;
      writeFinding(json, finding, choice);
    }
  }
  json.endArray();
  json.endObject();
  json.endDocument();
  return ExitCode::Done;
}
