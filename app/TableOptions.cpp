#include "app/TableOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "app/Unusable.h"
#include "platform/KRASCII.h"

void TableOptions::addTo(CLI::App& words) {
  words.add_option("--dialect", dialect_)->check(CLI::IsMember({"strict", "rfc4180"}));
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
  if (!isDialectNamed() && !isAboutMapping() && !rawCells_) return;
  const auto tables = std::count_if(files.begin(), files.end(), isTable);
  if (tables == 0) throw Unusable("--dialect, --map and the like are about delimited files, named .csv");
  if (dialect_ == "strict" && (isAboutMapping() || rawCells_)) {
    throw Unusable("in the strict dialect the headings alone decide; --map and the like need --dialect rfc4180");
  }
  if (!saveMap_.empty() && tables > 1) throw Unusable("--save-map keeps the mapping of one file; there are several");
}

void TableOptions::check(const std::string& file, bool writesTable) const {
  const bool isOnlyRaw = rawCells_ && !isDialectNamed() && !isAboutMapping();
  if (!isOnlyRaw || !writesTable) check({file});
}

KRCSVDialect TableOptions::dialect() const {
  const bool isPlain = dialect_ == "strict" || (dialect_.empty() && !isAboutMapping() && !rawCells_);
  if (isPlain) return KRCSVDialect::strict();
  KRCSVDialect dialect = KRCSVDialect::rfc4180();
  dialect.hasRawCells = rawCells_;
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
