#pragma once

#include <string>

#include "app/Command.h"
#include "app/TableOptions.h"

/// `krcontacts load`: the person file loader as a host sees it, one JSON line for each call that the listener gets.
class LoadCommand : public Command {
 public:
  explicit LoadCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* words_;
  std::string file_;
  TableOptions tables_;
  bool notes_ = false;
};
