#pragma once

#include <string>
#include <vector>

#include "import/KRCSVDialect.h"
#include "import/KRCSVMapping.h"

namespace CLI {
class App;
}  // namespace CLI

/// The options that say how delimited files (.csv) are read.
class TableOptions {
 public:
  /// Declares `--dialect`, `--separator`, `--day-order`, `--map`, `--use-map` and `--raw-cells`.
  void addTo(CLI::App& words);
  /// Declares `--save-map`.
  void addSavingTo(CLI::App& words);

  /// Throws `Unusable` when the options contradict each other, or are about delimited files and there is none.
  void check(const std::vector<std::string>& files) const;
  /// The same for a command that reads a file and writes one, to which `--raw-cells` applies too.
  void check(const std::string& file, bool writesTable) const;

  /// Whether the file is a delimited one: by its name.
  static bool isTable(const std::string& file);

  /// The dialect that was named; else that of RFC 4180 where another option is about it, and the strict one elsewhere.
  KRCSVDialect dialect() const;
  bool hasRawCells() const noexcept { return rawCells_; }
  bool isDialectNamed() const noexcept { return !dialect_.empty(); }

  /// Changes what the columns feed as the options say. Throws `Unusable` for a heading, a property or a saved mapping
  /// that there is not; the line lists those that there are.
  void apply(const std::string& file, KRCSVMapping& mapping) const;
  /// Keeps the mapping under the name given with `--save-map`, if one was.
  void save(const KRCSVMapping& mapping) const;

 private:
  bool isAboutMapping() const noexcept { return !maps_.empty() || !useMap_.empty() || !saveMap_.empty(); }

  /// Whether an option is given that only the dialect of RFC 4180 knows.
  bool needsQuoting() const noexcept {
    return isAboutMapping() || rawCells_ || !separator_.empty() || !dayOrder_.empty();
  }

  std::string dialect_;
  std::string separator_;
  std::string dayOrder_;
  std::vector<std::string> maps_;
  std::string useMap_;
  std::string saveMap_;
  bool rawCells_ = false;
};
