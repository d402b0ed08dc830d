#pragma once

#include <string>
#include <vector>

#include "app/Command.h"

/// `krcontacts mappings`: the mappings of delimited files that were kept under names, and the way to be rid of them.
class MappingsCommand : public Command {
 public:
  explicit MappingsCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  void print(Terminal& terminal) const;
  void write(Terminal& terminal) const;
  void remove(Terminal& terminal) const;

  CLI::App* words_;
  CLI::App* remove_;
  std::vector<std::string> names_;
  bool json_ = false;
};
