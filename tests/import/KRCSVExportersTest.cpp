// Files under the headings that common programs write, made for these tests: what share of the cells finds its place.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/KRCSVTable.h"
#include "tests/support/KRPersonText.h"
#include "tests/support/KRTestPaths.h"

namespace {

/// A column: its heading, the cell, and the line of the person's text that the cell must lead to; "" for a cell that is
/// rightly passed over.
struct Column {
  std::string heading;
  std::string cell;
  std::string line;
};

struct Exporter {
  std::string name;
  char separator;
  std::vector<Column> columns;
  /// Lines to which several cells lead together.
  std::vector<std::string> lines;
};

std::vector<Exporter> exporters() {
  std::ifstream file(KR_TEST_DATA_DIR "/exporters.json");
  std::vector<Exporter> all;
  for (const auto& each : nlohmann::json::parse(file)) {
    all.push_back({each["name"], each["separator"].get<std::string>().front(), {}, each["lines"]});
    for (const auto& column : each["columns"]) all.back().columns.push_back({column[0], column[1], column[2]});
  }
  return all;
}

std::string quoted(const std::string& text, char separator) {
  if (text.find_first_of(std::string("\"\n") + separator) == std::string::npos) return text;
  return "\"" + text + "\"";
}

std::string fileOf(const Exporter& exporter) {
  std::string headings;
  std::string cells;
  for (const Column& column : exporter.columns) {
    if (!headings.empty()) {
      headings += exporter.separator;
      cells += exporter.separator;
    }
    headings += column.heading;
    cells += quoted(column.cell, exporter.separator);
  }
  return headings + "\r\n" + cells + "\r\n";
}

TEST(KRCSVExporters, PutEveryCellInItsPlace) {
  ASSERT_GE(exporters().size(), 6U);
  size_t allCells = 0;
  size_t allPlaced = 0;
  for (const Exporter& exporter : exporters()) {
    const auto persons = KRCSVPersons::of(fileOf(exporter)).persons;
    ASSERT_EQ(persons.size(), 1U) << exporter.name;
    const std::string text = "\n" + krPersonText(*persons[0]);
    size_t cells = 0;
    size_t placed = 0;
    const auto holds = [&](const std::string& line) { return text.find("\n" + line + "\n") != std::string::npos; };
    for (const Column& column : exporter.columns) {
      if (column.cell.empty() || column.line.empty()) continue;
      ++cells;
      if (holds(column.line)) ++placed;
      EXPECT_TRUE(holds(column.line)) << exporter.name << ": " << column.heading << "\n" << text;
    }
    for (const std::string& line : exporter.lines)
      EXPECT_TRUE(holds(line)) << exporter.name << ": " << line << "\n" << text;
    std::printf("%-22s %zu of %zu cells in their place\n", exporter.name.c_str(), placed, cells);
    allCells += cells;
    allPlaced += placed;
  }
  std::printf("%-22s %zu of %zu (%.1f %%)\n", "all", allPlaced, allCells,
              100.0 * static_cast<double>(allPlaced) / static_cast<double>(allCells));
  EXPECT_EQ(allPlaced, allCells);
}

}  // namespace
