#pragma once

#include <string>
#include <vector>

#include "app/Command.h"

/// `krcontacts issues`: the catalogue, and the user's choice of what a scan looks for.
class IssuesCommand : public Command {
 public:
  explicit IssuesCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* words_;
  CLI::App* use_;
  CLI::App* drop_;
  CLI::App* reset_;
  std::vector<std::string> names_;
  bool json_ = false;
};
