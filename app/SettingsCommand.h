#pragma once

#include <string>
#include <vector>

#include "app/Command.h"

/// `krcontacts settings`: which name parts are compared, and which prefixes and suffixes count as usual.
class SettingsCommand : public Command {
 public:
  explicit SettingsCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  CLI::App* addVerb(const char* name, bool needsWhat, bool takesValues);
  void show(Terminal& terminal) const;
  void change();

  CLI::App* words_;
  CLI::App* show_;
  CLI::App* set_;
  CLI::App* add_;
  CLI::App* remove_;
  CLI::App* reset_;
  CLI::App* export_;
  CLI::App* import_;
  std::string what_;
  std::vector<std::string> values_;
  std::string file_ = "-";
  bool json_ = false;
};
