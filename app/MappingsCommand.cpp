#include "app/MappingsCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/Unusable.h"
#include "import/KRCSVMapping.h"

namespace {

std::string columnText(const KRCSVColumn& column) {
  const std::string label = shownText(column.label.view());
  return shownText(column.heading.view()) + " = " + shownText(column.target.name().view()) +
         (label.empty() ? "" : ":" + label);
}

}  // namespace

MappingsCommand::MappingsCommand(CLI::App& app)
    : words_(app.add_subcommand("mappings")), remove_(words_->add_subcommand("remove")) {
  words_->add_subcommand("list")->fallthrough();
  remove_->fallthrough();
  remove_->add_option("NAME", names_)->required();
  words_->add_flag("--json", json_);
  words_->require_subcommand(0, 1);
}

bool MappingsCommand::isChosen() const {
  return words_->parsed();
}

int MappingsCommand::run(Terminal& terminal) {
  if (remove_->parsed()) {
    remove(terminal);
  } else if (json_) {
    write(terminal);
  } else {
    print(terminal);
  }
  return ExitCode::Done;
}

void MappingsCommand::print(Terminal& terminal) const {
  const KRStringList names = KRCSVMapping::savedNames();
  if (names.empty()) {
    terminal.paragraph("No mapping is kept; \"krcontacts import FILE.csv --save-map NAME\" keeps one.");
  }
  for (const KRString& name : names) {
    if (&name != &names.front()) terminal.line();
    const std::vector<KRCSVColumn> columns = KRCSVMapping::savedColumns(name);
    terminal.paragraph(shownText(name.view()) + " · " + counted(columns.size(), "column", "columns"), Style::Strong);
    for (const KRCSVColumn& column : columns) terminal.paragraph(columnText(column), Style::Plain, 2, 2);
  }
}

void MappingsCommand::write(Terminal& terminal) const {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  json.beginObject();
  json.key("mappings");
  json.beginArray();
  for (const KRString& name : KRCSVMapping::savedNames()) {
    json.beginObject();
    json.key("name");
    json.textOrNull(name);
    json.key("columns");
    json.beginArray();
    for (const KRCSVColumn& column : KRCSVMapping::savedColumns(name)) {
      json.beginObject(JsonWriter::Layout::OneLine);
      json.key("heading");
      json.textOrNull(column.heading);
      json.key("property");
      json.textOrNull(column.target.name());
      json.key("label");
      json.textOrNull(column.label);
      json.endObject();
    }
    json.endArray();
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endDocument();
}

void MappingsCommand::remove(Terminal& terminal) const {
  const KRStringList known = KRCSVMapping::savedNames();
  for (const std::string& name : names_) {
    if (std::find(known.begin(), known.end(), KRString(name)) == known.end()) {
      throw Unusable("there is no mapping \"" + name + "\"; \"krcontacts mappings\" shows those there are");
    }
  }
  for (const std::string& name : names_) {
    if (const KRResult<void> removed = KRCSVMapping::removeSaved(KRString(name)); !removed) {
      throw Unusable("the mapping \"" + name + "\" is not removed: " + removed.error().sentence);
    }
    terminal.paragraph("Removed the mapping " + shownText(name));
  }
}
