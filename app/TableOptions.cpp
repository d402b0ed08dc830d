#include "app/TableOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include "app/Unusable.h"
#include "platform/KRASCII.h"

namespace {

/// The separator that the word means: its name, or itself.
char separatorNamed(const std::string& word) {
  constexpr std::pair<std::string_view, char> kNames[] = {
      {"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"\\t", '\t'}, {"pipe", '|'}};
  for (const auto& [name, separator] : kNames) {
    if (word == name) return separator;
  }
  // Neither what encloses cells, nor what ends rows, nor a part of a character.
  const bool isOne = word.size() == 1 && static_cast<unsigned char>(word.front()) < 0x80;
  if (isOne && word.find_first_of("\"\r\n") == std::string::npos) return word.front();
  throw Unusable("--separator is comma, semicolon, tab, pipe, or one other ASCII character");
}

}  // namespace

void TableOptions::addTo(CLI::App& words) {
  words.add_option("--dialect", dialect_)->check(CLI::IsMember({"strict", "rfc4180"}));
  words.add_option("--separator", separator_);
  words.add_option("--day-order", dayOrder_)->check(CLI::IsMember({"day-first", "month-first"}));
  words.add_option("--map", maps_)->allow_extra_args(false);
  words.add_option("--use-map", useMap_);
  words.add_flag("--raw-cells", rawCells_);
}

void TableOptions::addSavingTo(CLI::App& words) {
  words.add_option("--save-map", saveMap_);
}

bool TableOptions::isTable(const std::string& file) {
  return krEqualsIgnoringCase(std::filesystem::path(file).extension().string(), ".csv");
}

void TableOptions::check(const std::vector<std::string>& files) const {
  if (!isDialectNamed() && !needsQuoting()) return;
  const auto tables = std::count_if(files.begin(), files.end(), isTable);
  if (tables == 0) throw Unusable("--dialect, --map and the like are about delimited files, named .csv");
  if (dialect_ == "strict" && needsQuoting()) {
    throw Unusable("in the strict dialect the headings alone decide; --map and the like need --dialect rfc4180");
  }
  static_cast<void>(dialect());
  if (!saveMap_.empty() && tables > 1) throw Unusable("--save-map keeps the mapping of one file; there are several");
}

void TableOptions::check(const std::string& file, bool writesTable) const {
  const bool isOnlyRaw = rawCells_ && !isDialectNamed() && !isAboutMapping() && separator_.empty() && dayOrder_.empty();
  if (!isOnlyRaw || !writesTable) check({file});
}

KRCSVDialect TableOptions::dialect() const {
  const bool isPlain = dialect_ == "strict" || (dialect_.empty() && !needsQuoting());
  if (isPlain) return KRCSVDialect::strict();
  KRCSVDialect dialect = KRCSVDialect::rfc4180();
  dialect.hasRawCells = rawCells_;
  if (!separator_.empty()) dialect.separator = separatorNamed(separator_);
  if (!dayOrder_.empty()) dialect.isDayFirst = dayOrder_ == "day-first";
  return dialect;
}

void TableOptions::apply(const std::string& file, KRCSVMapping& mapping) const {
  const auto require = [&](const KRResult<void>& done) {
    if (!done) throw Unusable(file + ": " + done.error().sentence);
  };
  if (!useMap_.empty()) require(mapping.use(KRString(useMap_)));
  for (const std::string& map : maps_) require(mapping.set(std::string_view(map)));
}

void TableOptions::save(const KRCSVMapping& mapping) const {
  if (saveMap_.empty()) return;
  if (const KRResult<void> saved = mapping.save(KRString(saveMap_)); !saved) throw Unusable(saved.error().sentence);
}
