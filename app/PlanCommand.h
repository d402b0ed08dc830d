#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "app/FixRun.h"
#include "app/PersonFilter.h"

/// `krcontacts plan`: writes the fixes of chosen issues as a document, to be looked at, edited and applied.
class PlanCommand : public Command {
 public:
  explicit PlanCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* words_;
  std::string book_;
  std::vector<std::string> apply_;
  bool noProgress_ = false;
  PersonFilter filter_;
};
