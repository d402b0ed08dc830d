#include "app/PropertiesCommand.h"

#include <CLI/CLI.hpp>

#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/Table.h"
#include "app/Unusable.h"
#include "contacts/model/KRAddressFormater.h"
#include "contacts/model/KRCountry.h"
#include "contacts/model/KRProperty.h"

namespace {

std::string typeName(int32_t type) {
  switch (type) {
    case KRValueType::Text:
      return "text";
    case KRValueType::Date:
      return "date";
    case KRValueType::PersonName:
      return "name";
    case KRValueType::Phone:
      return "phone";
    case KRValueType::Email:
      return "e-mail";
    case KRValueType::Address:
      return "address";
    case KRValueType::TextList:
      return "texts";
    case KRValueType::Data:
      return "picture";
    case KRValueType::InstantMessage:
      return "account";
    default:
      return std::to_string(type);
  }
}

void writeDocument(Output& out) {
  JsonWriter json(out, JsonWriter::Layout::Lines);
  json.beginObject();
  json.key("properties");
  json.beginArray();
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("constant");
    json.text(property->constantName().view());
    json.key("name");
    json.text(property->name().view());
    json.key("displayName");
    json.text(property->displayName().view());
    json.key("valueType");
    json.whole(static_cast<int64_t>(property->valueType()));
    json.key("subValueType");
    json.whole(static_cast<int64_t>(property->subValueType()));
    json.endObject();
  }
  json.endArray();
  json.key("addressFields");
  json.beginArray(JsonWriter::Layout::OneLine);
  for (const KRAddressFieldItem* field : KRAddressFormater::fieldArrayLocal()) json.text(field->name().view());
  json.endArray();
  json.key("countryCode");
  json.text(KRCountry::local()->code().view());
  json.endObject();
  json.endDocument();
}

void printTable(Terminal& terminal) {
  Table table({"Property", "Name", "Holds"}, Table::Cells::Words);
  table.addRule();
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    table.addRow({shownText(property->displayName().view()), std::string(property->name().view()),
                  property->isMultiple() ? typeName(property->subValueType()) + ", any number"
                                         : typeName(property->valueType())});
  }
  table.print(terminal);
  std::string fields;
  for (const KRAddressFieldItem* field : KRAddressFormater::fieldArrayLocal()) {
    fields += (fields.empty() ? "" : ", ") + std::string(field->name().view());
  }
  terminal.line();
  terminal.paragraph("Fields of an address in " + std::string(KRCountry::local()->code().view()) + ": " + fields,
                     Style::Plain, 0, 2);
}

}  // namespace

PropertiesCommand::PropertiesCommand(CLI::App& app) : words_(app.add_subcommand("properties")) {
  words_->add_flag("--json", json_);
}

bool PropertiesCommand::isChosen() const {
  return words_->parsed();
}

int PropertiesCommand::run(Terminal& terminal) {
  if (json_) {
    writeDocument(terminal.out());
  } else {
    printTable(terminal);
  }
  return ExitCode::Done;
}
