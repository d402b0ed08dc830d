#pragma once

#include "app/Command.h"

/// `krcontacts properties`: the standard properties, and the fields of an address.
class PropertiesCommand : public Command {
 public:
  explicit PropertiesCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* words_;
  bool json_ = false;
};
