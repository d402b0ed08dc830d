#pragma once

#include <string>
#include <vector>

#include "app/Command.h"
#include "app/PlanRun.h"

/// `krcontacts apply`: applies the fixes of a plan, exactly these, to the book that it was made of.
class ApplyCommand : public Command {
 public:
  explicit ApplyCommand(CLI::App& app);

  bool isChosen() const override;
  int run(Terminal& terminal) override;

 private:
  void report(FixRun& run, PlanRun& fixes, Terminal& terminal) const;
  void document(FixRun& run, PlanRun& fixes, Terminal& terminal) const;

  CLI::App* words_;
  std::string file_;
  std::string book_;
  bool dryRun_ = false;
  bool json_ = false;
  bool noProgress_ = false;
};
