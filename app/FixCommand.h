#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "app/FixRun.h"
#include "app/PersonFilter.h"
#include "app/Remembering.h"

/// `krcontacts fix`: fixes the findings of chosen issues in one book, all of an issue in one way, or shows what that
/// would change.
class FixCommand : public Command {
 public:
  explicit FixCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  void report(FixRun& run, const std::vector<FixChoice>& choices, Remembering* remembering, Terminal& terminal) const;
  void document(FixRun& run, const std::vector<FixChoice>& choices, Remembering* remembering, Terminal& terminal) const;

  CLI::App* words_;
  std::string book_;
  std::vector<std::string> apply_;
  /// Of the walk through findings: the only issues to look for.
  std::vector<std::string> issues_;
  bool dryRun_ = false;
  bool json_ = false;
  bool noProgress_ = false;
  bool remember_ = false;
  PersonFilter filter_;
};
