#include "app/TablePreview.h"

#include <algorithm>
#include <array>
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

std::string valuesCell(const KRStringList& values, size_t width) {
  std::string joined;
  for (const KRString& value : values) joined += (joined.empty() ? "" : " | ") + shownText(value.view());
  return fittedText(joined, width);
}

/// The table's columns.
enum At : size_t { Number, Heading, Values, Property, Label, Why, All };
using Row = std::array<std::string, All>;
using Widths = std::array<size_t, All>;

/// Wider cells of these are cut in any terminal.
constexpr size_t kValueCells = 24;
constexpr size_t kLabelCells = 16;

/// What gives way in a narrow terminal, one after the other, as far as it must: cells of that column get no narrower
/// than this for the sake of the others.
struct Narrowing {
  At column;
  size_t cells;
};
constexpr Narrowing kNarrowings[] = {{Why, 14},    {Values, 14},  {Heading, 16}, {Label, 8},
                                     {Values, 10}, {Heading, 12}, {Why, 12},     {Label, 5}};

std::vector<Row> rowsOf(const std::vector<TableFile::Column>& columns) {
  std::vector<Row> rows = {{"column", "heading", "first values", "property", "label", "why"}};
  for (size_t i = 0; i < columns.size(); ++i) {
    const TableFile::Column& each = columns[i];
    rows.push_back({std::to_string(i + 1), shownText(each.heading.view()), valuesCell(each.firstValues, kValueCells),
                    shownText(each.property.view()), fittedText(shownText(each.label.view()), kLabelCells),
                    shownText(each.why.view())});
  }
  return rows;
}

/// How wide each column is where the whole table has that much room.
Widths widthsOf(const std::vector<Row>& rows, size_t room) {
  Widths widths{};
  size_t whole = (All - 1) * kGap;
  for (size_t column = 0; column < All; ++column) {
    for (const Row& row : rows) widths[column] = std::max(widths[column], displayWidth(row[column]));
    whole += widths[column];
  }
  for (const Narrowing& each : kNarrowings) {
    size_t& width = widths[each.column];
    const size_t less = std::min(whole - std::min(whole, room), width - std::min(width, each.cells));
    width -= less;
    whole -= less;
  }
  return widths;
}

/// In a narrow terminal less of values and labels is shown, and headings and reasons go on below themselves.
void printColumns(Terminal& terminal, const std::vector<TableFile::Column>& columns) {
  const std::vector<Row> rows = rowsOf(columns);
  const Widths widths = widthsOf(rows, terminal.width() - std::min(terminal.width(), kIndent));
  const auto fitted = [&](const Row& row) {
    std::vector<std::string> cells(row.begin(), row.end());
    for (const At column : {Values, Label}) cells[column] = fittedText(row[column], widths[column]);
    return cells;
  };
  Table table(fitted(rows.front()), Table::Cells::Words);
  for (auto row = rows.begin() + 1; row != rows.end(); ++row) {
    const std::vector<std::string> heading = wrappedText((*row)[Heading], widths[Heading]);
    const std::vector<std::string> why = wrappedText((*row)[Why], widths[Why]);
    std::vector<std::string> cells = fitted(*row);
    for (size_t line = 0; line < std::max({heading.size(), why.size(), size_t{1}}); ++line) {
      if (line > 0) cells.assign(All, std::string());
      cells[Heading] = line < heading.size() ? heading[line] : std::string();
      cells[Why] = line < why.size() ? why[line] : std::string();
      table.addRow(cells);
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
