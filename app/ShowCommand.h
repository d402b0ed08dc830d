#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "app/PersonFilter.h"
#include "app/TableOptions.h"

/// `krcontacts show`: the contacts of files, as cards for people or as one document for programs.
class ShowCommand : public Command {
 public:
  explicit ShowCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* words_;
  std::vector<std::string> files_;
  PersonFilter filter_;
  TableOptions tables_;
  bool json_ = false;
  bool verbose_ = false;
  bool noProgress_ = false;
};
