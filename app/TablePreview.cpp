#include "app/TablePreview.h"

#include <algorithm>
#include <string>
#include <vector>

#include "app/DisplayText.h"
#include "app/PersonCard.h"
#include "app/PersonDocument.h"
#include "app/Table.h"

namespace {

constexpr size_t kFirstContacts = 5;
constexpr size_t kNumberDigits = 2;
constexpr size_t kIndent = 2;
constexpr size_t kGap = 2;
/// The first values of a column, and where a terminal is too narrow for them.
constexpr size_t kValueCells = 24;
constexpr size_t kFewValueCells = 14;
constexpr size_t kWhyCells = 14;
constexpr size_t kLabelCells = 16;
constexpr size_t kShownLines = 10;

using Persons = std::vector<KRRef<IKRPerson>>;

/// What a run over the file gave.
struct Found {
  size_t count = 0;
  Persons first;
  /// The lines of rows that are dropped.
  std::vector<size_t> dropped;
};

Found contactsOf(TableFile& table) {
  Found found;
  table.read(
      [&](const KRRef<IKRPerson>& person, double) {
        if (found.count++ < kFirstContacts) found.first.push_back(person);
      },
      [&](const KRPersonLoadNote& note) {
        if (note.isPersonLost) found.dropped.push_back(note.line);
      });
  return found;
}

std::string listOf(const std::vector<size_t>& lines) {
  std::string list;
  for (size_t i = 0; i < std::min(lines.size(), kShownLines); ++i) {
    list += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
  }
  return lines.size() > kShownLines ? list + " and " + std::to_string(lines.size() - kShownLines) + " more" : list;
}

std::string cell(const KRString& text, size_t width) {
  return fittedText(shownText(text.view()), width);
}

std::string valuesCell(const KRStringList& values, size_t width) {
  std::string joined;
  for (const KRString& value : values) joined += (joined.empty() ? "" : " | ") + shownText(value.view());
  return fittedText(joined, width);
}

using Row = std::vector<std::string>;

/// The table's headings and its rows.
std::vector<Row> rowsOf(const std::vector<TableFile::Column>& columns, size_t valueCells) {
  std::vector<Row> rows = {{"column", "heading", "first values", "property", "label", "why"}};
  for (size_t i = 0; i < columns.size(); ++i) {
    const TableFile::Column& each = columns[i];
    rows.push_back({std::to_string(i + 1), shownText(each.heading.view()), valuesCell(each.firstValues, valueCells),
                    shownText(each.property.view()), cell(each.label, kLabelCells), shownText(each.why.view())});
  }
  return rows;
}

/// How wide the first `count` columns are, with the gaps behind them.
size_t widthOf(const std::vector<Row>& rows, size_t count) {
  size_t whole = 0;
  for (size_t i = 0; i < count; ++i) {
    size_t widest = 0;
    for (const Row& row : rows) widest = std::max(widest, displayWidth(row[i]));
    whole += widest + kGap;
  }
  return whole;
}

/// In a narrow terminal fewer of the values are shown, and the reason goes on below itself.
void printColumns(Terminal& terminal, const std::vector<TableFile::Column>& columns) {
  const size_t room = terminal.width() - std::min(terminal.width(), kIndent);
  std::vector<Row> rows = rowsOf(columns, kValueCells);
  const size_t last = rows.front().size() - 1;
  if (widthOf(rows, last + 1) > room + kGap) {
    for (size_t cells = kValueCells; cells > kFewValueCells && widthOf(rows, last) + kWhyCells > room; --cells) {
      rows = rowsOf(columns, cells - 1);
    }
  }
  const size_t others = widthOf(rows, last);
  const size_t whyCells = room > others + kWhyCells ? room - others : kWhyCells;
  Table table(rows.front(), Table::Cells::Words);
  for (size_t i = 1; i < rows.size(); ++i) {
    const std::vector<std::string> why = wrappedText(rows[i][last], whyCells);
    rows[i][last] = why.front();
    table.addRow(rows[i]);
    for (size_t line = 1; line < why.size(); ++line) {
      Row further(last + 1);
      further[last] = why[line];
      table.addRow(std::move(further));
    }
  }
  table.print(terminal, kIndent);
}

std::string_view dialectName(const TableFile& table) {
  return table.isStrict() ? "strict" : "rfc4180";
}

}  // namespace

void TablePreview::print(Terminal& terminal, TableFile& table) {
  const std::vector<TableFile::Column> columns = table.columns();
  const Found found = contactsOf(table);
  terminal.paragraph(terminal.styled(Style::Strong, shownText(table.file())) + " · " +
                     counted(found.count, "contact", "contacts") + " · dialect " + std::string(dialectName(table)));
  terminal.line();
  printColumns(terminal, columns);
  for (size_t i = 0; i < found.first.size(); ++i) {
    terminal.line();
    PersonCard::print(terminal, *found.first[i], i + 1, kNumberDigits);
  }
  if (found.dropped.empty()) return;
  terminal.line();
  terminal.paragraph(counted(found.dropped.size(), "row", "rows") + " cannot be read; on line " +
                     listOf(found.dropped));
}

void TablePreview::write(JsonWriter& json, TableFile& table) {
  const Found found = contactsOf(table);
  json.beginObject();
  json.key("file");
  json.text(table.file());
  json.key("dialect");
  json.text(dialectName(table));
  json.key("contacts");
  json.whole(found.count);
  json.key("dropped");
  json.beginArray(JsonWriter::Layout::OneLine);
  for (const size_t line : found.dropped) json.whole(line);
  json.endArray();
  json.key("columns");
  json.beginArray();
  for (const TableFile::Column& each : table.columns()) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("heading");
    json.textOrNull(each.heading);
    json.key("firstValues");
    json.beginArray(JsonWriter::Layout::OneLine);
    for (const KRString& value : each.firstValues) json.textOrNull(value);
    json.endArray();
    json.key("property");
    json.textOrNull(each.property);
    json.key("label");
    json.textOrNull(each.label);
    json.key("why");
    json.textOrNull(each.why);
    json.endObject();
  }
  json.endArray();
  json.key("persons");
  json.beginArray();
  for (size_t i = 0; i < found.first.size(); ++i) PersonDocument::write(json, *found.first[i], i);
  json.endArray();
  json.endObject();
}
