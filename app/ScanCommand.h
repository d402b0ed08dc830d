#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/Command.h"
#include "app/PersonFilter.h"
#include "app/TableOptions.h"

/// What the user asked of a scan.
struct ScanOptions {
  std::vector<std::string> files;
  /// Words for issues as given; only with `--issues`.
  std::vector<std::string> issues;
  bool allIssues = false;
  bool json = false;
  bool events = false;
  bool explain = false;
  bool verbose = false;
  bool noProgress = false;
  bool exitCode = false;
  bool hideIgnored = false;
  std::optional<int64_t> limit;
};

/// `krcontacts scan`: opens files as one address book, runs the find control over it and shows what it found.
class ScanCommand : public Command {
 public:
  explicit ScanCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* words_;
  CLI::Option* issuesOption_;
  ScanOptions options_;
  PersonFilter filter_;
  TableOptions tables_;
};
